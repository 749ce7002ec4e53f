#pragma once

#include <string>
#include <vector>

namespace quillon::test {

struct ChildOutput {
    bool succeeded = false;
    std::string out, err;  ///< line ends as LF
};

/// Runs this program in a mode (see ChildMain.h) by the system's shell and waits for its
/// end. Arguments must not hold quotes or shell expansions, nor end in a backslash.
ChildOutput RunChild(const std::string& mode, const std::vector<std::string>& arguments = {});

}  // namespace quillon::test
