#include "preview/Image_Writer.h"

#include <algorithm>

#include "platform/SystemError.h"
#include "platform/win32.h"

Image_Writer::~Image_Writer() = default;

void Image_Writer::SetSize(const AString& name, int width, int height) {
    name_ = name;
    width_ = std::max(width, 0);
    height_ = std::max(height, 0);
}

bool Image_Writer::OpenFile() {
    failure_ = {};
    ForgetSystemError();
    file_ = name_.empty() ? nullptr : OpenStream(name_.c_str(), "wb");
    if (file_ == nullptr) failure_ = {"the preview cannot be created", LastSystemError()};
    ForgetSystemError();
    return file_ != nullptr;
}

void Image_Writer::Write(const void* bytes, std::size_t count) {
    if (failure_.isWriteFailure || count == 0) return;
    if (std::fwrite(bytes, 1, count, file_.get()) != count) FailWrite();
}

void Image_Writer::CloseFile() {
    if (std::fclose(file_.release()) != 0) FailWrite();
    // What remains would pass for a picture.
    if (failure_.isWriteFailure && DeleteFileA(name_.c_str()) == FALSE)
        Fail("the preview cannot be written, and what is there of it cannot be removed");
}

void Image_Writer::FailWrite() {
    if (!failure_.isWriteFailure)
        failure_ = {"the preview cannot be written", LastSystemError(), true};
}

void Image_Writer::Create(const AString& name, int width, int height) {
    SetSize(name, width, height);
    rows_.assign(static_cast<std::size_t>(height_),
                 std::vector<uint32_t>(static_cast<std::size_t>(width_)));
}

void Image_Writer::SetPixel(int x, int y, unsigned char r, unsigned char g, unsigned char b) {
    if (!IsInside(x, y)) return;
    rows_[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)] =
        static_cast<uint32_t>(r << 16 | g << 8 | b);
}

int Image_Writer::Save() {
    if (!OpenFile()) return 0;
    for (const std::vector<uint32_t>& row : rows_)
        Write(row.data(), sizeof(uint32_t) * row.size());
    CloseFile();
    return 1;
}
