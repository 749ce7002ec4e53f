#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <vector>

#include "base/Characters.h"
#include "base/CommandLine.h"
#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"
#include "platform/ProcessApi.h"
#include "platform/native/NativePath.h"
#include "platform/posix/Children.h"
#include "platform/posix/Errno.h"

namespace quillon::platform {

namespace {

class FileActions {
public:
    FileActions() { ::posix_spawn_file_actions_init(&m_actions); }
    ~FileActions() { ::posix_spawn_file_actions_destroy(&m_actions); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    posix_spawn_file_actions_t* Get() { return &m_actions; }

private:
    posix_spawn_file_actions_t m_actions{};
};

class Attributes {
public:
    explicit Attributes(bool newGroup) {
        ::posix_spawnattr_init(&m_attributes);
        sigset_t signals;
        ::sigemptyset(&signals);
        ::posix_spawnattr_setsigmask(&m_attributes, &signals);
        ::sigfillset(&signals);
        ::posix_spawnattr_setsigdefault(&m_attributes, &signals);
        const int group = newGroup ? POSIX_SPAWN_SETPGROUP : 0;
        ::posix_spawnattr_setflags(
            &m_attributes, static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | group));
    }
    ~Attributes() { ::posix_spawnattr_destroy(&m_attributes); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    const posix_spawnattr_t* Get() const { return &m_attributes; }

private:
    posix_spawnattr_t m_attributes{};
};

/// Strings as the null-terminated array that exec takes.
class Vector {
public:
    explicit Vector(std::vector<std::string> strings) : m_strings(std::move(strings)) {
        for (std::string& text : m_strings) m_pointers.push_back(text.data());
        m_pointers.push_back(nullptr);
    }
    char* const* Get() const { return m_pointers.data(); }

private:
    std::vector<std::string> m_strings;
    std::vector<char*> m_pointers;
};

/// Returns the text after the switch of "cmd /c", as it is written.
std::string AfterSwitch(const std::string& command) {
    auto rest = command.find_first_of("cC", command.find('/')) + 1;
    if (rest < command.size() && command[rest] == '"') ++rest;
    rest = command.find_first_not_of(" \t", rest);
    return rest == std::string::npos ? std::string() : command.substr(rest);
}

std::vector<std::string> ArgumentsOf(const std::string& command) {
    std::vector<std::string> arguments = base::SplitCommandLine(command);
    const bool isShell = arguments.size() > 1 &&
                         (base::EqualIgnoringCase<char>(arguments[0], "cmd") ||
                          base::EqualIgnoringCase<char>(arguments[0], "cmd.exe")) &&
                         base::EqualIgnoringCase<char>(arguments[1], "/c");
    if (isShell) return {"/bin/sh", "-c", AfterSwitch(command)};
    if (!arguments.empty()) arguments[0] = NativePath(arguments[0]).value_or("");
    return arguments;
}

/// Returns a mark for the environment, by which even a daemon is found that has left its group and lost
/// its parents.
std::string NewTreeMark() {
    static std::atomic<unsigned> count{0};
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return "QUILLON_COMMAND=" + std::to_string(::getpid()) + '.' + std::to_string(now) + '.' +
           std::to_string(++count);
}

std::vector<std::string> EnvironmentOf(const ProcessRequest& request, const std::string& treeMark) {
    std::vector<std::string> variables;
    if (request.environment != nullptr) {
        for (const auto& [name, value] : *request.environment) variables.push_back(name + '=' + value);
    } else {
        for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
            variables.emplace_back(*variable);
        }
    }
    if (!treeMark.empty()) variables.push_back(treeMark);
    return variables;
}

/// The descriptor of a handle, out of the way of the three that the child gets; the
/// null handle gives -1.
int ClearOfStandard(const FileHandle* file, FileHandle& duplicate) {
    if (file == nullptr || file->Get() > STDERR_FILENO) return file == nullptr ? -1 : file->Get();
    duplicate.Reset(::fcntl(file->Get(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    return duplicate.Get();
}

/// Standard handles first, everything else closed, then the working directory.
void AddActions(FileActions& actions, int input, int output, const std::string& directory) {
    const auto redirect = [&actions](int from, int to, int mode) {
        if (from >= 0) {
            ::posix_spawn_file_actions_adddup2(actions.Get(), from, to);
        } else {
            ::posix_spawn_file_actions_addopen(actions.Get(), to, "/dev/null", mode, 0);
        }
    };
    redirect(input, STDIN_FILENO, O_RDONLY);
    redirect(output, STDOUT_FILENO, O_WRONLY);
    redirect(output, STDERR_FILENO, O_WRONLY);
    ::posix_spawn_file_actions_addclosefrom_np(actions.Get(), STDERR_FILENO + 1);
    if (!directory.empty()) ::posix_spawn_file_actions_addchdir_np(actions.Get(), directory.c_str());
}

bool IsDirectory(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// 0, with the reason recorded, when the program cannot be started.
pid_t Spawn(const ProcessRequest& request, const std::vector<std::string>& arguments,
            const std::string& directory, const std::string& treeMark) {
    FileHandle spareInput;
    FileHandle spareOutput;
    const int input = ClearOfStandard(request.input, spareInput);
    const int output = ClearOfStandard(request.output, spareOutput);
    FileActions actions;
    AddActions(actions, input, output, directory);
    const Attributes attributes(request.killableAsTree);
    const Vector argumentVector(arguments);
    const Vector environment(EnvironmentOf(request, treeMark));
    pid_t child = 0;
    errno = ::posix_spawnp(&child, arguments[0].c_str(), actions.Get(), attributes.Get(),
                           argumentVector.Get(), environment.Get());
    if (errno == 0) return child;
    FailWithErrno();
    return 0;
}

}  // namespace

std::optional<ChildProcess> ChildProcess::Start(const ProcessRequest& request) {
    const std::vector<std::string> arguments = ArgumentsOf(request.command);
    const std::optional<std::string> native = NativePath(request.workingDirectory);
    if (!native) {
        FailWithErrno();
        return std::nullopt;
    }
    const std::string& directory = *native;
    if (arguments.empty() || arguments[0].empty()) {
        SetLastErrorCode(base::kInvalidParameter);
        return std::nullopt;
    }
    if (!directory.empty() && !IsDirectory(directory)) {
        SetLastErrorCode(base::kInvalidDirectory);
        return std::nullopt;
    }
    std::string treeMark = request.killableAsTree ? NewTreeMark() : std::string();
    const pid_t child = Spawn(request, arguments, directory, treeMark);
    if (child == 0) return std::nullopt;
    ChildTable& table = Children();
    const std::lock_guard lock(table.mutex);
    table.children.insert_or_assign(child, ChildTable::Child{std::move(treeMark), false, {}});
    return ChildProcess(static_cast<std::uint32_t>(child), OpenProcessDescriptor(child));
}

}  // namespace quillon::platform
