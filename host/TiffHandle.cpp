#include "host/TiffHandle.h"

#include <algorithm>
#include <limits>

namespace {

TiffClient& Client(thandle_t handle) noexcept {
    return *static_cast<TiffClient*>(handle);
}

tmsize_t ReadClient(thandle_t handle, void* data, tmsize_t count) noexcept {
    return Client(handle).Read(data, count);
}

tmsize_t WriteClient(thandle_t handle, void* data, tmsize_t count) noexcept {
    return Client(handle).Write(data, count);
}

toff_t SeekClient(thandle_t handle, toff_t offset, int origin) noexcept {
    return Client(handle).Seek(offset, origin);
}

int CloseClient(thandle_t /*handle*/) noexcept {
    return 0;
}

toff_t ClientSize(thandle_t handle) noexcept {
    return Client(handle).Size();
}

struct FreeOptions {
    void operator()(TIFFOpenOptions* options) const { TIFFOpenOptionsFree(options); }
};

}  // namespace

int NoteComplaint(TIFF* /*tiff*/, void* client, const char* /*module*/, const char* /*format*/,
                  va_list /*arguments*/) noexcept {
    static_cast<TiffClient*>(client)->hasComplained_ = true;
    return 1;  // done with: the global handlers are not called
}

TiffHandle OpenTiff(TiffClient& client, const char* mode, std::uint64_t mostAllocation) {
    const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(TIFFOpenOptionsAlloc());
    if (options == nullptr) return nullptr;
    const auto largest = static_cast<std::uint64_t>(std::numeric_limits<tmsize_t>::max());
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(),
                                        static_cast<tmsize_t>(std::min(mostAllocation, largest)));
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), NoteComplaint, &client);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), NoteComplaint, &client);
    return TiffHandle(TIFFClientOpenExt("", mode, &client, ReadClient, WriteClient, SeekClient,
                                        CloseClient, ClientSize, nullptr, nullptr, options.get()));
}
