#include "BoundaryHost.h"

#include <gtest/gtest.h>

#include <stdexcept>

Driver::Driver(const char* library) : library_(dlopen(library, RTLD_NOW | RTLD_LOCAL)) {
    if (library_ == nullptr) throw std::runtime_error(dlerror());
    object_ = Export<void*()>("createNewPrinterDriver")();
    if (object_ == nullptr) throw std::runtime_error("no driver object");
}

Driver::~Driver() {
    Call<void>(1);
    dlclose(library_);
}

int32_t OutputSink::Write(const void* /*data*/, int32_t count, int64_t /*value*/) {
    ADD_FAILURE() << count << " bytes are streamed";
    return count;
}

PrintSettings Settings(const std::string& model, int32_t media, int32_t printMode,
                       int32_t resolution) {
    PrintSettings settings;
    SetText(settings.ModelName, model);
    settings.MediaIndex = media;
    settings.PrintModeIndex = printMode;
    settings.ResolutionIndex = resolution;
    return settings;
}
