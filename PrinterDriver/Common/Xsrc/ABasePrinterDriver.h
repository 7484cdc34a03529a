#pragma once

#include <cstdint>
#include <vector>

#include "host/Records.h"
#include "platform/win32.h"

/// An argument whose meaning is the host's alone: pointer-sized, passed on unchanged.
using HostArgument = void*;

/// A growable list of the host whose items the operation does not look at.
using HostList = std::vector<uint8_t>;

/// The interface that the host drives every job through. The host calls the operations by their
/// position, so their order is fixed and new ones may only follow at the end. Texts are
/// NUL-terminated, in the host's code page; names go out to 256 bytes. Results are 1 and 0, -1
/// where an identifier or position is answered and there is none. The meaning of the Reserved
/// operations is the host's.
class ABasePrinterDriver {
  public:
    virtual ~ABasePrinterDriver();
    virtual int32_t OpenJob(JobStatusRecord* status, HostOutput* output) = 0;
    virtual int32_t ProcessJobStep() = 0;
    virtual int32_t AbortJob() = 0;
    virtual int32_t ReservedQuery1();
    virtual int32_t ReservedQuery2();
    virtual int32_t ReservedQuery3() = 0;
    virtual int32_t ShowDriverOptions(DriverOptionBlock* options, int32_t mode,
                                      PrintSettings* settings, HWND parent);
    virtual int32_t ReservedQuery4();
    virtual int32_t DecodeDriverOptions(const char* text, DriverOptionBlock* options,
                                        PrintSettings* settings) = 0;
    virtual int32_t GetDriverId();
    virtual int32_t ReservedQuery5() = 0;
    virtual float GetDriverValue();
    virtual int32_t ReservedQuery6() = 0;
    virtual int32_t ReservedQuery7();
    virtual int32_t IsColorModeAllowed(int32_t position, int32_t* allowed, char* name,
                                       PrintSettings* settings) = 0;
    virtual int32_t FindColorModeID(const char* name) = 0;
    virtual int32_t GetColorantList(int32_t position, ColorantInfoList* list) = 0;
    virtual int32_t GetScreeningParams(ScreeningParams* parameters, PrintSettings* settings) = 0;
    virtual int32_t GetDefaultColorMode(char* name, PrintSettings* settings) = 0;
    virtual int32_t OpenPort(const char* folder, const char* sourceName) = 0;
    virtual int32_t ReservedQuery8() = 0;
    virtual int32_t ReservedQuery9() = 0;
    virtual int32_t GetMediaList(PrintSettings* settings, CapabilityList* list,
                                 int32_t* defaultMedia) = 0;
    virtual int32_t GetPrintModeList(PrintSettings* settings, CapabilityItem* media,
                                     CapabilityList* list, int32_t* defaultPosition) = 0;
    virtual int32_t GetResolutionList(PrintSettings* settings, CapabilityItem* media,
                                      CapabilityItem* printMode, ResolutionList* list,
                                      HostArgument further) = 0;
    virtual int32_t ReservedMediaQuery1(PrintSettings* settings, CapabilityItem* media,
                                        HostArgument a, HostArgument b, HostArgument c,
                                        HostArgument d) = 0;
    virtual int32_t ReservedQuery10();
    virtual int32_t ReservedQuery11();
    virtual int32_t ReservedList1(HostList* list);
    virtual int32_t ReservedList2(HostList* list);
    virtual int32_t ReservedList3(HostList* list);
    virtual int32_t ReservedList4(HostList* list);
    virtual int32_t ReservedQuery12() = 0;
    virtual int32_t ReservedQuery13() = 0;
    virtual int32_t ReservedMediaQuery2(PrintSettings* settings, CapabilityItem* media,
                                        HostArgument a, int32_t value, int32_t* out) = 0;
    virtual int32_t ReservedQuery14() = 0;
    virtual int32_t ReservedQuery15() = 0;
    virtual int32_t AreOptionsDifferent(DriverOptionBlock* a, DriverOptionBlock* b) = 0;
    virtual int32_t ReservedQuery16() = 0;
    virtual int32_t ReservedQuery17() = 0;
    virtual int32_t EnsureDriverOptions(DriverOptionBlock* options) = 0;
    virtual int32_t ReservedQuery18(HostArgument a, int32_t* b) = 0;
    virtual int32_t ReservedQuery19() = 0;
    virtual int32_t ReservedQuery20() = 0;
    virtual int32_t ReservedQuery21(HostArgument a, int32_t value, int32_t* out) = 0;
    virtual int32_t ReservedQuery22() = 0;
    virtual int32_t ReservedQuery23() = 0;
    virtual int32_t ReservedQuery24() = 0;
    virtual int32_t GetDitherParams(const char* modelName, const char* manufacturerName,
                                    PrintSettings* settings, DitherParams* parameters) = 0;
    virtual int32_t ReservedMediaQuery3(PrintSettings* settings, CapabilityItem* media,
                                        HostArgument c, HostArgument d, HostArgument e,
                                        HostArgument f, HostArgument g) = 0;
    /// GetColorantList once more.
    virtual int32_t GetColorantListAgain(int32_t position, ColorantInfoList* list);
    virtual int32_t ReservedQuery25();
    /// GetDitherParams without the fourth argument.
    virtual int32_t GetDitherParamsEx(const char* modelName, const char* manufacturerName,
                                      PrintSettings* settings, HostArgument dropped,
                                      DitherParams* parameters);
    virtual int32_t ReservedQuery26() = 0;
    virtual int32_t SetPrintSettings(PrintSettings* settings) = 0;
};
