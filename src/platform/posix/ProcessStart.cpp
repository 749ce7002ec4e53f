#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <new>
#include <string_view>
#include <vector>

#include "base/CommandLine.h"
#include "base/ErrorCodes.h"
#include "base/InterpreterLine.h"
#include "platform/ErrorText.h"
#include "platform/ProcessApi.h"
#include "platform/native/NativePath.h"
#include "platform/posix/Children.h"
#include "platform/posix/Errno.h"
#include "platform/posix/Spawn.h"

namespace quillon::platform {

namespace {

constexpr std::string_view kMarkVariable = "QUILLON_COMMAND=";

bool IsProgram(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && ::access(path.c_str(), X_OK) == 0;
}

std::vector<std::string> ArgumentsOf(const std::string& command) {
    const auto isProgram = [](std::string_view path) {
        const auto native = NativePath(std::string(path));
        return native && IsProgram(*native);
    };
    if (auto script = base::InterpreterScript(command, isProgram))
        return {"/bin/sh", "-c", *std::move(script)};
    std::vector<std::string> arguments = base::SplitCommandLine(command);
    if (!arguments.empty()) arguments[0] = NativePath(arguments[0]).value_or("");
    return arguments;
}

/// Returns where the system looks for a program.
std::vector<std::string> PlacesOf(const std::string& program) {
    if (program.find('/') != std::string::npos) return {program};
    const char* const variable = std::getenv("PATH");
    std::string_view path = variable == nullptr ? "/bin:/usr/bin" : variable;
    std::vector<std::string> places;
    for (;;) {
        const std::size_t end = std::min(path.find(':'), path.size());
        const std::string folder(path.substr(0, end));
        places.push_back((folder.empty() ? "." : folder) + '/' + program);
        if (end == path.size()) return places;
        path.remove_prefix(end + 1);
    }
}

/// Returns a mark for the environment, by which even a daemon is found that has left its group and lost
/// its parents.
std::string NewTreeMark() {
    static std::atomic<unsigned> count{0};
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    return '<' + std::to_string(::getpid()) + '.' + std::to_string(now) + '.' + std::to_string(++count) + '>';
}

/// The marks of the commands that this process itself is part of: they nest.
std::string InheritedMarks() {
    const char* const marks = std::getenv("QUILLON_COMMAND");
    return marks == nullptr ? std::string() : marks;
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
    if (treeMark.empty()) return variables;
    std::erase_if(variables, [](const std::string& text) { return text.starts_with(kMarkVariable); });
    variables.push_back(std::string(kMarkVariable) + InheritedMarks() + treeMark);
    return variables;
}

/// Gives the descriptor of a handle, out of the way of the three that the child gets; -1 for the null
/// handle. False when there is none to be had.
bool ClearOfStandard(const FileHandle* file, FileHandle& duplicate, int& descriptor) {
    descriptor = file == nullptr ? -1 : file->Get();
    if (file == nullptr || descriptor > STDERR_FILENO) return true;
    duplicate.Reset(::fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    descriptor = duplicate.Get();
    return duplicate || FailWithErrno();
}

bool IsDirectory(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

/// Null, with the reason recorded, when the program cannot be started.
std::shared_ptr<ChildProcess::State> StartChild(const ProcessRequest& request, SpawnPlan& plan) {
    FileHandle spareInput;
    FileHandle spareOutput;
    if (!ClearOfStandard(request.input, spareInput, plan.input) ||
        !ClearOfStandard(request.output, spareOutput, plan.output)) {
        return nullptr;
    }
    std::string treeMark = request.killableAsTree ? NewTreeMark() : std::string();
    plan.environment = EnvironmentOf(request, treeMark);
    plan.programs = PlacesOf(plan.arguments[0]);
    plan.isGroupLeader = request.killableAsTree;
    plan.endsWithThread = request.endsWithUs;
    auto group = request.killableAsTree ? CommandGroup::Make() : nullptr;
    if (group) plan.group = group->Descriptor();
    // Before the start, after which nothing may fail: the process would be nobody's.
    auto child = std::make_shared<ChildProcess::State>(std::move(treeMark), std::move(group));
    int descriptor = -1;
    child->id = Spawn(plan, descriptor);
    if (child->id == 0) {
        FailWithErrno();
        return nullptr;
    }
    child->descriptor.Reset(descriptor < 0 ? OpenProcessDescriptor(child->id) : descriptor);
    return child;
}

/// Has the child found by its identifier. It is ended when there is no memory for that.
void Enter(ChildTable& table, const std::shared_ptr<ChildProcess::State>& child,
           const ChildProcess& process) {
    try {
        const std::lock_guard lock(table.mutex);
        table.children.insert_or_assign(child->id, child);
    } catch (const std::bad_alloc&) {
        static_cast<void>(process.Kill({1, KillScope::Process, std::chrono::milliseconds(0)}));
        throw;
    }
}

}  // namespace

std::optional<ChildProcess> ChildProcess::Start(const ProcessRequest& request) {
    const std::optional<std::string> directory = NativePath(request.workingDirectory);
    if (!directory) {
        FailWithErrno();
        return std::nullopt;
    }
    SpawnPlan plan;
    plan.arguments = ArgumentsOf(request.command);
    plan.directory = *directory;
    if (plan.arguments.empty() || plan.arguments[0].empty()) {
        SetLastErrorCode(base::kInvalidParameter);
        return std::nullopt;
    }
    if (!plan.directory.empty() && !IsDirectory(plan.directory)) {
        SetLastErrorCode(base::kInvalidDirectory);
        return std::nullopt;
    }
    ChildTable& table = Children();
    const auto child = StartChild(request, plan);
    if (!child) return std::nullopt;
    ChildProcess process(static_cast<std::uint32_t>(child->id), child);
    Enter(table, child, process);
    return process;
}

}  // namespace quillon::platform
