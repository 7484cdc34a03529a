#include "platform/Program.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace {

volatile sig_atomic_t interruptNoted = 0;

void NoteInterrupt(int) {
    interruptNoted = 1;
}

}  // namespace

std::string ProgramFolder() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string() : program.parent_path().string();
}

std::string ModuleFolder() {
    Dl_info info = {};
    if (dladdr(reinterpret_cast<const void*>(&ModuleFolder), &info) == 0) return {};
    std::error_code error;
    const std::filesystem::path module = std::filesystem::absolute(info.dli_fname, error);
    return error ? std::string() : module.parent_path().string();
}

void SetEnvironment(const char* name, const char* value) {
    setenv(name, value, 1);
}

std::string CreatePrivateFolder(const std::string& prefix) {
    std::string path = prefix + "XXXXXX";
    return mkdtemp(path.data()) == nullptr ? std::string() : path;
}

void HoldStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) >= 0) continue;
        // The lowest free number is the stream's own. What is written there fails, as it should.
        [[maybe_unused]] const int held = open("/dev/null", O_RDONLY);
    }
}

bool IsTerminal(std::FILE* stream) {
    return isatty(fileno(stream)) != 0;
}

void NoteInterrupts() {
    struct sigaction action = {};
    action.sa_handler = NoteInterrupt;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signal, &action, nullptr);
    action.sa_handler = SIG_IGN;
    sigaction(SIGXFSZ, &action, nullptr);
}

bool InterruptNoted() {
    return interruptNoted != 0;
}
