#pragma once

#include <cstdint>

#include "host/Records.h"

/// The driver as the plug-in hands it over: its operations by position. Only the order counts;
/// operations that this host never calls are declared as what stands between the others.
class DriverInterface {
  public:
    virtual ~DriverInterface() = default;
    virtual int32_t OpenJob(JobStatusRecord* status, HostOutput* output) = 0;
    virtual int32_t ProcessJobStep() = 0;
    virtual int32_t AbortJob() = 0;
    virtual int32_t ReservedQuery1() = 0;
    virtual int32_t ReservedQuery2() = 0;
    virtual int32_t ReservedQuery3() = 0;
    virtual int32_t ShowDriverOptions(DriverOptionBlock* options, int32_t mode,
                                      PrintSettings* settings, void* parent) = 0;
    virtual int32_t ReservedQuery4() = 0;
    virtual int32_t DecodeDriverOptions(const char* text, DriverOptionBlock* options,
                                        PrintSettings* settings) = 0;
    virtual int32_t GetDriverId() = 0;
    virtual int32_t ReservedQuery5() = 0;
    virtual float GetDriverValue() = 0;
    virtual int32_t ReservedQuery6() = 0;
    virtual int32_t ReservedQuery7() = 0;
    virtual int32_t IsColorModeAllowed(int32_t position, int32_t* allowed, char* name,
                                       PrintSettings* settings) = 0;
    virtual int32_t FindColorModeID(const char* name) = 0;
    virtual int32_t GetColorantList(int32_t colorMode, ColorantInfoList* list) = 0;
    virtual int32_t GetScreeningParams(ScreeningParams* params, PrintSettings* settings) = 0;
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
                                      void* unused) = 0;
    virtual int32_t ReservedMediaQuery1(PrintSettings* settings, CapabilityItem* media, void* a,
                                        void* b, void* c, void* d) = 0;
    virtual int32_t ReservedQuery10() = 0;
    virtual int32_t ReservedQuery11() = 0;
    virtual int32_t ReservedList1(void* list) = 0;
    virtual int32_t ReservedList2(void* list) = 0;
    virtual int32_t ReservedList3(void* list) = 0;
    virtual int32_t ReservedList4(void* list) = 0;
    virtual int32_t ReservedQuery12() = 0;
    virtual int32_t ReservedQuery13() = 0;
    virtual int32_t ReservedMediaQuery2(PrintSettings* settings, CapabilityItem* media, void* a,
                                        int32_t value, void* out) = 0;
    virtual int32_t ReservedQuery14() = 0;
    virtual int32_t ReservedQuery15() = 0;
    virtual int32_t AreOptionsDifferent(DriverOptionBlock* a, DriverOptionBlock* b) = 0;
    virtual int32_t ReservedQuery16() = 0;
    virtual int32_t ReservedQuery17() = 0;
    virtual int32_t EnsureDriverOptions(DriverOptionBlock* options) = 0;
    virtual int32_t ReservedQuery18(void* a, int32_t* b) = 0;
    virtual int32_t ReservedQuery19() = 0;
    virtual int32_t ReservedQuery20() = 0;
    virtual int32_t ReservedQuery21(void* a, int32_t value, void* out) = 0;
    virtual int32_t ReservedQuery22() = 0;
    virtual int32_t ReservedQuery23() = 0;
    virtual int32_t ReservedQuery24() = 0;
    virtual int32_t GetDitherParams(const char* model, const char* manufacturer,
                                    PrintSettings* settings, DitherParams* params) = 0;
    virtual int32_t ReservedMediaQuery3() = 0;
    virtual int32_t GetColorantListAgain(int32_t colorMode, ColorantInfoList* list) = 0;
    virtual int32_t ReservedQuery25() = 0;
    virtual int32_t GetDitherParamsEx(const char* model, const char* manufacturer,
                                      PrintSettings* settings, void* dropped,
                                      DitherParams* params) = 0;
    virtual int32_t ReservedQuery26() = 0;
    virtual int32_t SetPrintSettings(PrintSettings* settings) = 0;
    virtual int32_t ReservedQuery27() = 0;
    virtual int32_t GetWriterDriverId() = 0;
    virtual int32_t ReadJobHeader() = 0;
};
