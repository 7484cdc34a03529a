#include "platform/ChildProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

namespace {

/// What a shell answers for a program that a signal ended.
constexpr int kSignalResult = 128;

std::vector<std::string> ChangedEnvironment(
    const std::vector<std::pair<std::string, std::string>>& changes) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        bool replaced = false;
        for (const auto& change : changes)
            replaced = replaced || text.substr(0, text.find('=')) == change.first;
        if (!replaced) result.emplace_back(text);
    }
    for (const auto& [name, value] : changes)
        if (!value.empty()) result.emplace_back(name).append(1, '=').append(value);
    return result;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    result.reserve(texts.size() + 1);
    for (std::string& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

struct FileActions {
    posix_spawn_file_actions_t Value;
    FileActions() { posix_spawn_file_actions_init(&Value); }
    ~FileActions() { posix_spawn_file_actions_destroy(&Value); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
};

struct Attributes {
    posix_spawnattr_t Value;
    Attributes() { posix_spawnattr_init(&Value); }
    ~Attributes() { posix_spawnattr_destroy(&Value); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
};

}  // namespace

bool ChildProcess::Launch(const ChildProgram& program) {
    Kill();
    FileActions actions;
    posix_spawn_file_actions_addopen(&actions.Value, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions.Value, STDOUT_FILENO, program.OutputFile.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC | O_APPEND, 0600);
    posix_spawn_file_actions_adddup2(&actions.Value, STDOUT_FILENO, STDERR_FILENO);
    posix_spawn_file_actions_addchdir_np(&actions.Value, program.WorkFolder.c_str());

    // The signals that this program handles or ignores mean to the child what they mean to any.
    Attributes attributes;
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&attributes.Value, &signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ})
        sigaddset(&signals, signal);
    posix_spawnattr_setsigdefault(&attributes.Value, &signals);
    posix_spawnattr_setpgroup(&attributes.Value, 0);
    posix_spawnattr_setflags(
        &attributes.Value, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);

    std::vector<std::string> arguments = program.Arguments;
    std::vector<std::string> environment = ChangedEnvironment(program.Environment);
    pid_t process = 0;
    if (posix_spawnp(&process, arguments.front().c_str(), &actions.Value, &attributes.Value,
                     Pointers(arguments).data(), Pointers(environment).data()) != 0)
        return false;
    process_ = process;
    return true;
}

bool ChildProcess::HasEnded() {
    if (process_ == 0) return true;
    int status = 0;
    const pid_t ended = waitpid(static_cast<pid_t>(process_), &status, WNOHANG);
    if (ended == 0 || (ended < 0 && errno == EINTR)) return false;
    result_ = ended > 0 && WIFEXITED(status)     ? WEXITSTATUS(status)
              : ended > 0 && WIFSIGNALED(status) ? kSignalResult + WTERMSIG(status)
                                                 : kSignalResult;
    process_ = 0;
    return true;
}

void ChildProcess::Kill() {
    if (process_ == 0) return;
    const pid_t process = static_cast<pid_t>(process_);
    kill(-process, SIGKILL);
    while (waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
    }
    result_ = kSignalResult + SIGKILL;
    process_ = 0;
}
