#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

#include "platform/win32.h"

/// The PNG library's entry points that a picture needs, bound by name at run time. Errors of the
/// library arrive as C++ exceptions.
class PngLibrary {
  public:
    using Write = void;  ///< the library's write structure, opaque
    using Info = void;   ///< its info structure
    using StatusCallback = void (*)(Write*, uint32_t row, int pass);

    PngLibrary() = default;
    ~PngLibrary();
    PngLibrary(const PngLibrary&) = delete;
    PngLibrary& operator=(const PngLibrary&) = delete;

    /// Loads the library from this module's folder and binds it. False after a message for the
    /// library or for each entry point that is missing.
    bool Open();

    Write* (*CreateWriteStruct)(const char* version, void* errorPointer, void* errorHandler,
                                void* warningHandler) = nullptr;
    Info* (*CreateInfoStruct)(Write*) = nullptr;
    void (*DestroyWriteStruct)(Write**, Info**) = nullptr;
    void (*InitIo)(Write*, std::FILE*) = nullptr;
    void (*SetWriteStatusFn)(Write*, StatusCallback) = nullptr;
    void (*SetIhdr)(Write*, Info*, uint32_t width, uint32_t height, int bitDepth, int colorType,
                    int interlace, int compression, int filter) = nullptr;
    void (*WriteRow)(Write*, const uint8_t* row) = nullptr;
    void (*WriteEnd)(Write*, Info*) = nullptr;
    void (*WriteInfo)(Write*, const Info*) = nullptr;

  private:
    template <class Function>
    bool Bind(Function*& function, const char* name);

    HMODULE library_ = nullptr;
};
