#include "BoundaryHost.h"

#include <dlfcn.h>

#include <stdexcept>

Plugin::Plugin() : library_(dlopen(Path(), RTLD_NOW | RTLD_LOCAL)) {
    if (library_ == nullptr) throw std::runtime_error(dlerror());
}

Plugin::~Plugin() {
    dlclose(library_);
}

const char* Plugin::Path() {
    return OUTPUT_DRIVER_LIBRARY;
}

void* Plugin::Symbol(const char* name) const {
    return dlsym(library_, name);
}

Driver::Driver() : object_(plugin_.Export<void*()>("createNewPrinterDriver")()) {
    if (object_ == nullptr) throw std::runtime_error("no driver object");
}

Driver::~Driver() {
    Call<void>(1);
}

int32_t OutputSink::Write(const void* /*data*/, int32_t count, int64_t /*value*/) {
    BytesTaken += count;
    return count;
}

PrintSettings Settings(const std::string& model, int32_t media, int32_t printMode,
                       int32_t resolution, int32_t colorMode) {
    PrintSettings settings;
    SetText(settings.ModelName, model);
    settings.MediaIndex = media;
    settings.PrintModeIndex = printMode;
    settings.ResolutionIndex = resolution;
    settings.ColorModeIndex = colorMode;
    return settings;
}
