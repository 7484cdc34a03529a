#pragma once

#include <dlfcn.h>

#include <cstdint>
#include <string>

#include "host/Records.h"

/// Entries of the driver's table of virtual operations. Entries 0 and 1 are the destructor; the
/// reserved operations between these are called by their number.
enum Operation : int {
    kOpenJob = 2,
    kProcessJobStep = 3,
    kAbortJob = 4,
    kShowDriverOptions = 8,
    kDecodeDriverOptions = 10,
    kGetDriverId = 11,
    kGetDriverValue = 13,
    kIsColorModeAllowed = 16,
    kFindColorModeID = 17,
    kGetColorantList = 18,
    kGetScreeningParams = 19,
    kGetDefaultColorMode = 20,
    kOpenPort = 21,
    kGetMediaList = 24,
    kGetPrintModeList = 25,
    kGetResolutionList = 26,
    kReservedMediaQuery1 = 27,
    kReservedMediaQuery2 = 36,
    kAreOptionsDifferent = 39,
    kEnsureDriverOptions = 42,
    kReservedQuery18 = 43,
    kReservedQuery21 = 46,
    kGetDitherParams = 50,
    kReservedMediaQuery3 = 51,
    kGetColorantListAgain = 52,
    kGetDitherParamsEx = 54,
    kSetPrintSettings = 56,
    kReadJobHeader = 59,
};

/// One driver object, called by position as a host does, and the built library that it is from,
/// loaded for as long as this lives.
class Driver {
  public:
    explicit Driver(const char* library = OUTPUT_DRIVER_LIBRARY);
    ~Driver();
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    /// An export by its name; null when the library has none of that name.
    template <class Function>
    Function* Export(const char* name) const {
        return reinterpret_cast<Function*>(dlsym(library_, name));
    }
    template <class Result = int32_t, class... Arguments>
    Result Call(int entry, Arguments... arguments) const {
        using Function = Result (*)(void*, Arguments...);
        const auto* table = *static_cast<void* const* const*>(object_);
        return reinterpret_cast<Function>(table[entry])(object_, arguments...);
    }

  private:
    void* library_;
    void* object_;
};

/// A host's output object. The driver writes files and streams nothing to it.
class OutputSink final : public HostOutput {
  public:
    virtual ~OutputSink() = default;
    int32_t Reserved() override { return 0; }
    int32_t Write(const void* data, int32_t count, int64_t value) override;
};

/// Settings of a model with its choices. The model's name is cut to fit.
PrintSettings Settings(const std::string& model, int32_t media = 0, int32_t printMode = 0,
                       int32_t resolution = 0);

/// Copies text into a record's field, zero behind it, cut with room for the NUL.
template <std::size_t size>
void SetText(char (&field)[size], const std::string& text) {
    std::memset(field, 0, size);
    text.copy(field, size - 1);
}
