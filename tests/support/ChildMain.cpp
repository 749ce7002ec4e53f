#include "support/ChildMain.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <map>

namespace quillon::test {

namespace {

std::map<std::string, ChildMode::Main>& Modes() {
    static std::map<std::string, ChildMode::Main> modes;
    return modes;
}

std::string g_program;

std::string Quoted(const std::string& text) {
    return text.empty() || text.find(' ') != std::string::npos ? '"' + text + '"' : text;
}

int RunChild(const std::string& mode, const std::vector<std::string>& arguments) {
    const auto found = Modes().find(mode);
    if (found != Modes().end()) return found->second(arguments);
    std::fprintf(stderr, "unknown child mode '%s'\n", mode.c_str());
    return 99;
}

}  // namespace

ChildMode::ChildMode(const char* mode, Main main) { Modes()[mode] = main; }

std::string ChildCommand(const std::string& mode, const std::vector<std::string>& arguments) {
    std::string command = Quoted(g_program) + " --child " + Quoted(mode);
    for (const std::string& argument : arguments) command += ' ' + Quoted(argument);
    return command;
}

std::filesystem::path ProgramFolder() { return std::filesystem::path(g_program).parent_path(); }

}  // namespace quillon::test

int main(int argc, char** argv) {
    using namespace quillon::test;
    g_program = std::filesystem::absolute(argv[0]).string();
    if (argc >= 3 && std::string(argv[1]) == "--child") return RunChild(argv[2], {argv + 3, argv + argc});
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
