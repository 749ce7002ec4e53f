#include "support/ChildMain.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <thread>

#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace fs = std::filesystem;

namespace quillon::test {

namespace {

std::map<std::string, ChildMode::Main>& Modes() {
    static std::map<std::string, ChildMode::Main> modes;
    return modes;
}

int RunMode(const std::string& mode, const std::vector<std::string>& arguments) {
    const auto found = Modes().find(mode);
    if (found != Modes().end()) return found->second(arguments);
    std::fprintf(stderr, "unknown child mode '%s'\n", mode.c_str());
    return 99;
}

std::string g_program;

std::string Quoted(const std::string& text) {
    return text.empty() || text.find(' ') != std::string::npos ? '"' + text + '"' : text;
}

using Arguments = std::vector<std::string>;

/// print TEXT CODE [TIMES]: prints TEXT, "|" being a line feed and "~" the UTF-8 of U+00E9. -1 is for ever.
const ChildMode print("print", [](const Arguments& a) {
    std::string text;
    for (const char c : a[0]) text += c == '|' ? "\n" : c == '~' ? "\xC3\xA9" : std::string(1, c);
    for (int left = a.size() > 2 ? std::atoi(a[2].c_str()) : 1; left != 0; --left)
        if (std::fputs(text.c_str(), stdout) < 0) return 1;
    return std::atoi(a[1].c_str());
});

/// copy: prints the beginning of its standard input, then its length.
const ChildMode copy("copy", [](const Arguments&) {
    const std::string input((std::istreambuf_iterator<char>(std::cin)), {});
    std::cout << input.substr(0, 20) << '|' << input.size();
    return 0;
});

/// getenv NAME: prints a variable.
const ChildMode variable("getenv", [](const Arguments& a) {
    const char* value = std::getenv(a[0].c_str());
    std::fputs(value == nullptr ? "(none)" : value, stdout);
    return 0;
});

/// await STARTED GO: makes and holds the file STARTED, with its identifier; ignores requests to end,
/// and ends with 7 once GO exists.
const ChildMode await("await", [](const Arguments& a) {
    std::signal(SIGTERM, SIG_IGN);
    std::signal(SIGINT, SIG_IGN);
    std::fputs("ready", stdout);
    std::fflush(stdout);
    std::ofstream started(a[0]);
    started << ::getpid() << std::flush;
    return AwaitFile(a[1]) ? 7 : 8;
});

/// leave STARTED GO: starts "await" as a tree of its own and ends without it.
const ChildMode leave("leave", [](const Arguments& a) {
    static RecordingLogger& log = *new RecordingLogger;  // the worker left behind may still use it
    const Monitor monitor([&a] { return fs::exists(a[0]); });
    const auto props = CommandOf(ChildCommand("await", a), log);
    props->captureOutput = false;
    props->killTree = true;
    return ProcessUtils::RunCliCommand(props) == -6 ? 0 : 1;
});

/// share STARTED GO: starts "await", which inherits the output, and ends without it.
const ChildMode share("share", [](const Arguments& a) {
    const std::string child = ChildCommand("await", a);
    const std::string line = kWindows ? "start \"\" /b " + child : child + " &";
    return std::system(line.c_str()) == 0 && AwaitFile(a[0]) ? 0 : 1;
});

/// overflow STARTED GO DONE: starts "pour" with the same output and ends without it.
const ChildMode overflow("overflow", [](const Arguments& a) {
    const std::string child = ChildCommand("pour", a);
    const std::string line = kWindows ? "start \"\" /b " + child : child + " &";
    std::fputs("before", stdout);
    std::fflush(stdout);
    return std::system(line.c_str()) == 0 && AwaitFile(a[0]) ? 0 : 1;
});

/// pour STARTED GO DONE: makes STARTED, writes a megabyte once GO exists, and makes DONE when all of it
/// could be written.
const ChildMode pour("pour", [](const Arguments& a) {
    std::ofstream(a[0]) << ::getpid() << std::flush;
    if (!AwaitFile(a[1])) return 1;
    const std::string piece(1000, 'x');
    for (int i = 0; i < 1000; ++i)
        if (std::fwrite(piece.data(), 1, piece.size(), stdout) != piece.size()) return 1;
    if (std::fflush(stdout) != 0) return 1;
    std::ofstream(a[2]) << "done";
    return 0;
});

/// starved: runs commands with 0, 1, 2 ... free descriptors, and prints their codes (Linux).
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

ChildMode::ChildMode(const char* mode, Main main) {
    if (Modes().emplace(mode, main).second) return;
    std::fprintf(stderr, "child mode '%s' is registered twice\n", mode);
    std::abort();
}

std::string ChildCommand(const std::string& mode, const std::vector<std::string>& arguments) {
    std::string command = Quoted(g_program) + " --child " + mode;
    for (const std::string& argument : arguments) command += ' ' + Quoted(argument);
    return command;
}

ChildOutput RunChild(const std::string& mode, const std::vector<std::string>& arguments) {
    const TempDir dir;
    std::string command = ChildCommand(mode);
    for (const std::string& argument : arguments)
        command += " \"" + argument + '"';  // backslashes pass both shells
    command += " >" + dir.Native("out").string() + " 2>" + dir.Native("err").string();
    ChildOutput result{std::system(command.c_str()) == 0, dir.Read("out"), dir.Read("err")};
    std::erase(result.out, '\r');
    std::erase(result.err, '\r');
    return result;
}

std::shared_ptr<ProcessUtils::CmdProperties> CommandOf(const std::string& command, ICLogger& logger) {
    auto props = std::make_shared<ProcessUtils::CmdProperties>();
    props->command = command;
    props->logger = &logger;
    props->captureOutput = true;
    return props;
}

bool AwaitFile(const fs::path& path) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!fs::exists(path)) {
        if (std::chrono::steady_clock::now() > deadline || !fs::exists(path.parent_path())) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}

fs::path ProgramFolder() { return fs::path(g_program).parent_path(); }

}  // namespace quillon::test

int main(int argc, char** argv) {
    using namespace quillon::test;
    g_program = fs::absolute(argv[0]).string();
    if (argc >= 3 && std::string(argv[1]) == "--child") return RunMode(argv[2], {argv + 3, argv + argc});
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
