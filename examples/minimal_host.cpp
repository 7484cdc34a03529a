// The smallest host: prints one job through the built library, knowing only its binary boundary.
//
//     minimal_host LIBRARY BASE JOB FOLDER
//
// BASE is the base folder with the models; JOB is a job file with its container beside it, as
// `driverhost make-job` makes them.

#include <dlfcn.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

// Positions in the driver's table of operations.
enum Operation { kDelete = 1, kOpenJob = 2, kProcessJobStep = 3, kOpenPort = 21 };

// Offsets in the job status record, which the host owns.
enum Field { kJobFilePath = 0, kJobState = 2060, kStatusText = 2064 };

constexpr int32_t kFilePort = 256;
constexpr int32_t kJobEnded = -1;

/// Takes what a driver streams to the host itself; this one writes files, so nothing comes.
struct Output {
    virtual int32_t Reserved() { return 0; }
    virtual int32_t Write(const void* /*data*/, int32_t count, int64_t /*value*/) { return count; }
};

template <class Function>
Function OperationOf(void* driver, Operation position) {
    void** const table = *static_cast<void***>(driver);
    return reinterpret_cast<Function>(table[position]);
}

int32_t JobState(const std::vector<char>& status) {
    int32_t state = 0;
    std::memcpy(&state, status.data() + kJobState, sizeof state);
    return state;
}

int32_t Print(void* driver, const char* job, const char* folder) {
    const auto openJob = OperationOf<int32_t (*)(void*, void*, Output*)>(driver, kOpenJob);
    const auto openPort =
        OperationOf<int32_t (*)(void*, const char*, const char*)>(driver, kOpenPort);
    const auto step = OperationOf<int32_t (*)(void*)>(driver, kProcessJobStep);

    std::vector<char> status(4096);
    std::strncpy(status.data() + kJobFilePath, job, 511);
    std::memcpy(status.data() + kJobState, &kFilePort, sizeof kFilePort);
    Output output;
    if (openJob(driver, status.data(), &output) == 0) return 0;
    // Its answer tells nothing; the state tells whether the folder can be written to.
    openPort(driver, folder, "artwork.pdf");
    if (JobState(status) == kJobEnded) return 0;
    while (JobState(status) != kJobEnded) {
        if (step(driver) == 0) return 0;
        std::printf("%s\n", status.data() + kStatusText);
    }
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) return 2;
    setenv("QL_BASE_FOLDER", argv[2], 1);
    void* const library = dlopen(argv[1], RTLD_NOW);
    if (library == nullptr) return 1;
    const auto create = reinterpret_cast<void* (*)()>(dlsym(library, "createNewPrinterDriver"));
    void* const driver = create();
    const int32_t printed = Print(driver, argv[3], argv[4]);
    OperationOf<void (*)(void*)>(driver, kDelete)(driver);
    dlclose(library);
    return printed != 0 ? 0 : 1;
}
