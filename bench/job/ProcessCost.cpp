#include "ProcessCost.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <stdexcept>

namespace {

constexpr int64_t kMaxRssUnit = 1024;  // ru_maxrss counts kibibytes (getrusage(2))
constexpr int kNotStarted = 127;       // as a shell answers

double Seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

/// The system counts a program's peak from that of the process that becomes it. A forked one starts
/// without the files that this program has mapped, so that it is far below any program's own.
pid_t Start(const std::vector<std::string>& arguments) {
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));  // never written to
    }
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("cannot start " + arguments[0]);
    if (child == 0) {
        const int nowhere = open("/dev/null", O_WRONLY);
        if (nowhere >= 0) dup2(nowhere, STDOUT_FILENO);
        execvp(argv[0], argv.data());
        _exit(kNotStarted);
    }
    return child;
}

}  // namespace

ProcessCost MeasureProcess(const std::vector<std::string>& arguments) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point start = Clock::now();
    const pid_t child = Start(arguments);
    int status = 0;
    rusage usage = {};
    while (wait4(child, &status, 0, &usage) < 0) {
        if (errno != EINTR) throw std::runtime_error("cannot wait for " + arguments[0]);
    }
    const std::chrono::duration<double> elapsed = Clock::now() - start;
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw std::runtime_error(arguments[0] + " failed");
    }
    return {Seconds(usage.ru_utime) + Seconds(usage.ru_stime), elapsed.count(),
            usage.ru_maxrss * kMaxRssUnit};
}
