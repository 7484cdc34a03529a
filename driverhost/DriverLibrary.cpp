#include "driverhost/DriverLibrary.h"

#include <fmt/format.h>

#include "driverhost/HostError.h"
#include "platform/PathRules.h"
#include "platform/Program.h"

DriverLibrary::DriverLibrary() {
    const std::string path = fmt::format("{}{}{}OutputDriver{}", ProgramFolder(), kPathSeparator,
                                         kLibraryPrefix, kLibrarySuffix);
    library_ = LoadLibraryA(path.c_str());
    if (library_ == nullptr)
        throw HostError(kFailed, fmt::format("cannot load the driver {}", path));
    createDriver_ = GetProcAddress(library_, "createNewPrinterDriver");
    if (createDriver_ == nullptr) {
        FreeLibrary(library_);
        throw HostError(kFailed, fmt::format("{} is no output driver", path));
    }
}

DriverLibrary::~DriverLibrary() {
    FreeLibrary(library_);
}

std::unique_ptr<DriverInterface> DriverLibrary::CreateDriver() const {
    const auto create = reinterpret_cast<DriverInterface* (*)()>(createDriver_);
    std::unique_ptr<DriverInterface> driver(create());
    if (!driver) throw HostError(kFailed, "the driver cannot be created");
    return driver;
}

void* DriverLibrary::CreatePage(DriverOptionBlock& block, PrintSettings& settings) const {
    const auto create = reinterpret_cast<void* (*)(DriverOptionBlock*, PrintSettings*)>(
        GetProcAddress(library_, "createDriverPage"));
    void* const page = create == nullptr ? nullptr : create(&block, &settings);
    if (page == nullptr) throw HostError(kFailed, "the driver has no options page");
    return page;
}
