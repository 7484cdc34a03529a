#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/Records.h"

/// Entries of the driver's table of virtual operations. Entries 0 and 1 are the destructor.
enum Operation : int {
    kOpenJob = 2,
    kProcessJobStep,
    kAbortJob,
    kReservedQuery1,
    kReservedQuery2,
    kReservedQuery3,
    kShowDriverOptions,
    kReservedQuery4,
    kDecodeDriverOptions,
    kGetDriverId,
    kReservedQuery5,
    kGetDriverValue,
    kReservedQuery6,
    kReservedQuery7,
    kIsColorModeAllowed,
    kFindColorModeID,
    kGetColorantList,
    kGetScreeningParams,
    kGetDefaultColorMode,
    kOpenPort,
    kReservedQuery8,
    kReservedQuery9,
    kGetMediaList,
    kGetPrintModeList,
    kGetResolutionList,
    kReservedMediaQuery1,
    kReservedQuery10,
    kReservedQuery11,
    kReservedList1,
    kReservedList2,
    kReservedList3,
    kReservedList4,
    kReservedQuery12,
    kReservedQuery13,
    kReservedMediaQuery2,
    kReservedQuery14,
    kReservedQuery15,
    kAreOptionsDifferent,
    kReservedQuery16,
    kReservedQuery17,
    kEnsureDriverOptions,
    kReservedQuery18,
    kReservedQuery19,
    kReservedQuery20,
    kReservedQuery21,
    kReservedQuery22,
    kReservedQuery23,
    kReservedQuery24,
    kGetDitherParams,
    kReservedMediaQuery3,
    kGetColorantListAgain,
    kReservedQuery25,
    kGetDitherParamsEx,
    kReservedQuery26,
    kSetPrintSettings,
    kReservedQuery27,
    kGetWriterDriverId,
    kReadJobHeader,
};
static_assert(kReadJobHeader == 59);

/// The built library, loaded for as long as this lives.
class Plugin {
  public:
    Plugin();
    ~Plugin();
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;

    /// Path of the library file.
    static const char* Path();

    /// An export by its name; null when the library has none of that name.
    template <class Function>
    Function* Export(const char* name) const {
        return reinterpret_cast<Function*>(Symbol(name));
    }

  private:
    void* Symbol(const char* name) const;

    void* library_;
};

/// One driver object, called by position as a host does.
class Driver {
  public:
    Driver();
    ~Driver();
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    template <class Result = int32_t, class... Arguments>
    Result Call(int entry, Arguments... arguments) const {
        using Function = Result (*)(void*, Arguments...);
        const auto* table = *static_cast<void* const* const*>(object_);
        return reinterpret_cast<Function>(table[entry])(object_, arguments...);
    }

  private:
    Plugin plugin_;
    void* object_;
};

/// A host's output object that counts what it takes.
class OutputSink final : public HostOutput {
  public:
    virtual ~OutputSink() = default;
    int32_t Reserved() override { return 0; }
    int32_t Write(const void* data, int32_t count, int64_t value) override;

    int64_t BytesTaken = 0;
};

/// Settings of a model with its choices. The model's name is cut to fit.
PrintSettings Settings(const std::string& model, int32_t media = 0, int32_t printMode = 0,
                       int32_t resolution = 0, int32_t colorMode = 0);

/// Copies text into a record's field, zero behind it, cut with room for the NUL.
template <std::size_t size>
void SetText(char (&field)[size], const std::string& text) {
    std::memset(field, 0, size);
    text.copy(field, size - 1);
}
