#include "PrinterDriver/Common/Xsrc/ABasePrinterDriver.h"

namespace {

int32_t EmptyList(HostList* list) {
    if (list == nullptr) return 0;
    list->clear();
    return 1;
}

}  // namespace

ABasePrinterDriver::~ABasePrinterDriver() = default;

int32_t ABasePrinterDriver::ReservedQuery1() {
    return 0;
}
int32_t ABasePrinterDriver::ReservedQuery2() {
    return 0;
}

int32_t ABasePrinterDriver::ShowDriverOptions(DriverOptionBlock* /*options*/, int32_t /*mode*/,
                                              PrintSettings* /*settings*/, HWND /*parent*/) {
    return 0;
}

int32_t ABasePrinterDriver::ReservedQuery4() {
    return 0;
}
int32_t ABasePrinterDriver::GetDriverId() {
    return -1;
}
float ABasePrinterDriver::GetDriverValue() {
    return 1.0F;
}
int32_t ABasePrinterDriver::ReservedQuery7() {
    return 1;
}
int32_t ABasePrinterDriver::ReservedQuery10() {
    return 0;
}
int32_t ABasePrinterDriver::ReservedQuery11() {
    return 0;
}
int32_t ABasePrinterDriver::ReservedList1(HostList* list) {
    return EmptyList(list);
}
int32_t ABasePrinterDriver::ReservedList2(HostList* list) {
    return EmptyList(list);
}
int32_t ABasePrinterDriver::ReservedList3(HostList* list) {
    return EmptyList(list);
}
int32_t ABasePrinterDriver::ReservedList4(HostList* list) {
    return EmptyList(list);
}

int32_t ABasePrinterDriver::GetColorantListAgain(int32_t position, ColorantInfoList* list) {
    return GetColorantList(position, list);
}

int32_t ABasePrinterDriver::ReservedQuery25() {
    return 0;
}

int32_t ABasePrinterDriver::GetDitherParamsEx(const char* modelName, const char* manufacturerName,
                                              PrintSettings* settings, HostArgument /*dropped*/,
                                              DitherParams* parameters) {
    return GetDitherParams(modelName, manufacturerName, settings, parameters);
}
