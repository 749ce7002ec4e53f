#pragma once

#include <string>
#include <vector>

namespace quillon::agent {

/// A file's name as a content list gives it, with '\' or '/' between directories.
struct RemoteName {
    std::vector<std::string> components;
    const char* fault = "";  ///< what is wrong with the name; empty when nothing is
};

/// Takes only names that are those of a plain file below a directory on Windows and on
/// Linux, whichever runs: nothing absolute, with a drive, a stream, a device, "..",
/// a wildcard or a control character, or that a system would trim. Nothing is logged but
/// an Error entry of what is not UTF-8.
RemoteName ReadRemoteName(const std::string& name);

/// Returns a text that is equal for all names of one file on a system whose file names are case-insensitive.
std::string KeyOf(const RemoteName& name);

}  // namespace quillon::agent
