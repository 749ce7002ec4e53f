#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "quillon/IShutdownMonitor.h"
#include "quillon/ProcessUtils.h"
#include "quillon/ServiceLocator.h"

namespace quillon::test {

/// The test program as its own child: "<program> --child MODE ARGUMENTS..." runs a
/// mode instead of the tests. Modes are registered at start-up, those that several
/// tests use in ChildMain.cpp:
///   static const ChildMode echo("echo", [](const std::vector<std::string>& a) { ...; return 0; });
class ChildMode {
public:
    using Main = int (*)(const std::vector<std::string>& arguments);
    ChildMode(const char* mode, Main main);
};

/// The command line that runs this program in a mode; each argument is quoted
/// when it holds a blank (arguments must not hold quotes or end in a backslash).
std::string ChildCommand(const std::string& mode, const std::vector<std::string>& arguments = {});

struct ChildOutput {
    bool succeeded = false;
    std::string out, err;  ///< line ends as LF
};

/// Runs this program in a mode by the system's shell and waits for its end.
/// Arguments must not hold quotes or shell expansions, nor end in a backslash.
ChildOutput RunChild(const std::string& mode, const std::vector<std::string>& arguments = {});

/// Properties that capture, with a logger.
std::shared_ptr<ProcessUtils::CmdProperties> CommandOf(const std::string& command, ICLogger& logger);

/// Answers by a function; registered for its life.
class Monitor final : public IShutdownMonitor {
public:
    explicit Monitor(std::function<bool()> answer) : m_answer(std::move(answer)) {
        ServiceLocator::Put<IShutdownMonitor>(this);
    }
    ~Monitor() override { ServiceLocator::Remove<IShutdownMonitor>(); }
    void RequestShutdown() override {}
    bool IsShutdownRequested() override { return m_answer(); }

private:
    std::function<bool()> m_answer;
};

/// True within a minute, unless the file's folder goes.
bool AwaitFile(const std::filesystem::path& path);

/// Where this program is, and what was built beside it.
std::filesystem::path ProgramFolder();

}  // namespace quillon::test
