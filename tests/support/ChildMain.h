#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace quillon::test {

/// The test program as its own child: "<program> --child MODE ARGUMENTS..." runs a
/// mode instead of the tests. Modes are registered at start-up:
///   static const ChildMode echo("echo", [](const std::vector<std::string>& a) { ...; return 0; });
class ChildMode {
public:
    using Main = int (*)(const std::vector<std::string>& arguments);
    ChildMode(const char* mode, Main main);
};

/// The command line that runs this program in a mode; each argument is quoted
/// when it holds a blank (arguments must not hold quotes or end in a backslash).
std::string ChildCommand(const std::string& mode, const std::vector<std::string>& arguments = {});

/// Where this program is, and what was built beside it.
std::filesystem::path ProgramFolder();

}  // namespace quillon::test
