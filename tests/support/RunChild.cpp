#include "support/RunChild.h"

#include <cstdlib>

#include "support/ChildMain.h"
#include "support/TempDir.h"

namespace quillon::test {

ChildOutput RunChild(const std::string& mode, const std::vector<std::string>& arguments) {
    const TempDir dir;
    std::string command = ChildCommand(mode);
    for (const std::string& argument : arguments)
        command += " \"" + argument + '"';  // backslashes pass both shells
    command += " >" + dir.Native("out").string() + " 2>" + dir.Native("err").string();
    ChildOutput result;
    result.succeeded = std::system(command.c_str()) == 0;
    result.out = dir.Read("out");
    result.err = dir.Read("err");
    std::erase(result.out, '\r');
    std::erase(result.err, '\r');
    return result;
}

}  // namespace quillon::test
