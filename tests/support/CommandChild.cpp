#include "support/CommandChild.h"

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <thread>

#include "quillon/IShutdownMonitor.h"
#include "quillon/ServiceLocator.h"
#include "support/ChildMain.h"
#include "support/RecordingLogger.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

using Arguments = std::vector<std::string>;

class FileMonitor final : public IShutdownMonitor {
public:
    explicit FileMonitor(fs::path path) : m_path(std::move(path)) {}
    void RequestShutdown() override {}
    bool IsShutdownRequested() override { return fs::exists(m_path); }

private:
    fs::path m_path;
};

/// Runs "await" and leaves it running as soon as it has started.
int StartAwait(const Arguments& a) {
    static RecordingLogger& log = *new RecordingLogger;  // the worker left behind may still use it
    FileMonitor monitor(a[0]);
    ServiceLocator::Put<IShutdownMonitor>(&monitor);
    auto props = std::make_shared<ProcessUtils::CmdProperties>();
    props->logger = &log;
    props->killTree = true;  // a group, or a job, of its own
    props->command = ChildCommand("await", {a[0], a[1]});
    ProcessUtils::RunCliCommand(props);
    ServiceLocator::Clear();
    std::ofstream(a[0] + ".part") << std::atomic_ref(props->processId).load();
    fs::rename(a[0] + ".part", a[0] + ".id");
    return 0;
}

const ChildMode print("print", [](const Arguments& a) {
    for (const char c : a[0])
        std::fputs(c == '|' ? "\n" : c == '~' ? "\xC3\xA9" : std::string(1, c).c_str(), stdout);
    return std::atoi(a[1].c_str());
});
const ChildMode longLine("long", [](const Arguments& a) {
    const std::string piece(1000, a[1][0]);
    for (long left = std::atol(a[0].c_str()); left > 0; left -= 1000) std::fputs(piece.c_str(), stdout);
    return 0;
});
const ChildMode flood("flood", [](const Arguments&) {
    while (std::fputs("round and round\n", stdout) >= 0) {
    }
    return 1;
});
const ChildMode copy("copy", [](const Arguments&) {
    const std::string input((std::istreambuf_iterator<char>(std::cin)), {});
    std::cout << input.substr(0, 20) << '\n' << input.size();
    return 0;
});
const ChildMode variable("getenv", [](const Arguments& a) {
    const char* value = std::getenv(a[0].c_str());
    std::fputs(value == nullptr ? "(none)" : value, stdout);
    return 0;
});
const ChildMode where("where", [](const Arguments&) {
    std::fputs(fs::current_path().string().c_str(), stdout);
    return 0;
});
const ChildMode await("await", [](const Arguments& a) {
    std::signal(SIGTERM, SIG_IGN);
    std::signal(SIGINT, SIG_IGN);
    std::fputs("ready", stdout);
    std::fflush(stdout);
    std::ofstream started(a[0]);
    started << "started" << std::flush;
    return AwaitFile(a[1]) ? 7 : 8;
});
const ChildMode parent("parent", [](const Arguments& a) {
    StartAwait(a);
    return AwaitFile(a[1]) ? 7 : 8;
});
const ChildMode leave("leave", StartAwait);
const ChildMode descriptors("descriptors", [](const Arguments&) {
    int count = 0;
    for (const auto& entry : fs::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const fs::path target = fs::read_symlink(entry.path(), error);
        if (std::stoi(entry.path().filename().string()) > 2 &&
            target.string().find("/fd") == std::string::npos)
            ++count;
    }
    std::printf("%d", count);
    return 0;
});
const ChildMode starved("starved", [](const Arguments&) {
    RecordingLogger log;
    std::vector<std::ifstream> files;
    while (files.emplace_back("/dev/null")) {
    }
    files.pop_back();
    for (int free = 0; free < 12; ++free) {
        std::printf("%d ", ProcessUtils::RunCliCommand(CommandOf(ChildCommand("print", {"x", "0"}), log)));
        files.pop_back();
    }
    return 0;
});

}  // namespace

bool AwaitFile(const fs::path& path) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!fs::exists(path)) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

std::shared_ptr<ProcessUtils::CmdProperties> CommandOf(const std::string& command, ICLogger& logger) {
    auto props = std::make_shared<ProcessUtils::CmdProperties>();
    props->command = command;
    props->logger = &logger;
    props->captureOutput = true;
    return props;
}

}  // namespace quillon::test
