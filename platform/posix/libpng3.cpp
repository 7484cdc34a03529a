// The PNG library as the preview binds it: under the name libpng3, with the version and the entry
// points of that time. Each hands its call to the installed libpng. An error of libpng returns by
// longjmp to the call's own frame here, which holds no destructors, and is thrown from there.

#include <dlfcn.h>
#include <png.h>

#include <cstring>
#include <stdexcept>

#include "platform/Export.h"

namespace {

/// The installed library's entry point of the same name, which this one hides.
template <class Function>
Function* Installed(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

constexpr const char* kKnownVersion = "1.2.34";
constexpr int kFastCompression = 3;

void JumpOut(png_structp png, png_const_charp /*text*/) {
    png_longjmp(png, 1);
}
void IgnoreWarning(png_structp /*png*/, png_const_charp /*text*/) {}

/// Runs a call of the installed library; false when it ended in an error. Nothing here has a
/// destructor, so that the jump is as good as a return.
template <class Call>
bool Run(png_structp png, const Call& call) {
    if (setjmp(png_jmpbuf(png)) != 0) return false;
    call();
    return true;
}

template <class Call>
void RunOrThrow(png_structp png, const Call& call) {
    if (!Run(png, call)) throw std::runtime_error("the PNG library reports an error");
}

}  // namespace

// The signatures are png.h's own; the structures pass through as they are.
extern "C" {

PLATFORM_EXPORT png_structp PNGAPI png_create_write_struct(png_const_charp version,
                                                           png_voidp /*errorPointer*/,
                                                           png_error_ptr /*errorHandler*/,
                                                           png_error_ptr /*warningHandler*/) {
    if (std::strcmp(version, kKnownVersion) != 0) return nullptr;
    static const auto create =
        Installed<png_structp(png_const_charp, png_voidp, png_error_ptr, png_error_ptr)>(
            "png_create_write_struct");
    png_structp png = create(PNG_LIBPNG_VER_STRING, nullptr, &JumpOut, &IgnoreWarning);
    if (png == nullptr) return nullptr;
    // A preview of halftoned ink is noise, on which libpng's own choices take longer than all else
    // that a page's preview costs, for files that are hardly smaller.
    const bool isSet = Run(png, [&] {
        png_set_compression_level(png, kFastCompression);
        png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_UP);
    });
    if (isSet) return png;
    png_destroy_write_struct(&png, nullptr);
    return nullptr;
}

PLATFORM_EXPORT png_infop PNGAPI png_create_info_struct(png_const_structrp png) {
    static const auto create = Installed<png_infop(png_const_structrp)>("png_create_info_struct");
    return create(png);
}

PLATFORM_EXPORT void PNGAPI png_destroy_write_struct(png_structpp png, png_infopp info) {
    static const auto destroy =
        Installed<void(png_structpp, png_infopp)>("png_destroy_write_struct");
    destroy(png, info);
}

PLATFORM_EXPORT void PNGAPI png_init_io(png_structrp png, png_FILE_p file) {
    static const auto init = Installed<void(png_structrp, png_FILE_p)>("png_init_io");
    RunOrThrow(png, [&] { init(png, file); });
}

PLATFORM_EXPORT void PNGAPI png_set_write_status_fn(png_structrp png,
                                                    png_write_status_ptr callback) {
    static const auto set =
        Installed<void(png_structrp, png_write_status_ptr)>("png_set_write_status_fn");
    RunOrThrow(png, [&] { set(png, callback); });
}

PLATFORM_EXPORT void PNGAPI png_set_IHDR(png_const_structrp png, png_inforp info, png_uint_32 width,
                                         png_uint_32 height, int bitDepth, int colorType,
                                         int interlace, int compression, int filter) {
    static const auto set = Installed<void(png_const_structrp, png_inforp, png_uint_32, png_uint_32,
                                           int, int, int, int, int)>("png_set_IHDR");
    RunOrThrow(const_cast<png_structp>(png), [&] {
        set(png, info, width, height, bitDepth, colorType, interlace, compression, filter);
    });
}

PLATFORM_EXPORT void PNGAPI png_write_info(png_structrp png, png_const_inforp info) {
    static const auto write = Installed<void(png_structrp, png_const_inforp)>("png_write_info");
    RunOrThrow(png, [&] { write(png, info); });
}

PLATFORM_EXPORT void PNGAPI png_write_row(png_structrp png, png_const_bytep row) {
    static const auto write = Installed<void(png_structrp, png_const_bytep)>("png_write_row");
    RunOrThrow(png, [&] { write(png, row); });
}

PLATFORM_EXPORT void PNGAPI png_write_end(png_structrp png, png_inforp info) {
    static const auto write = Installed<void(png_structrp, png_inforp)>("png_write_end");
    RunOrThrow(png, [&] { write(png, info); });
}
}
