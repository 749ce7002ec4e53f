#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "quillon/ProcessUtils.h"

namespace quillon::test {

// Child modes for tests of the command runner:
//   print TEXT CODE       prints TEXT, "|" being a line feed, "~" the UTF-8 of U+00E9
//   long COUNT CHAR       prints one line of COUNT bytes
//   flood                 prints for ever
//   copy                  prints its standard input, then its length
//   getenv NAME           prints a variable
//   where                 prints its working directory
//   await STARTED GO      makes and holds the file STARTED, ignores requests to end, and ends
//                         with 7 once GO exists (or after half a minute)
//   parent STARTED GO     starts "await STARTED GO" as a process of its own, writes
//                         its identifier into STARTED.id, and awaits GO too
//   leave STARTED GO      the same, but ends at once
//   descriptors           prints how many descriptors above 2 are open (Linux)
//   starved               runs commands with 0, 1, 2 ... free descriptors, and prints
//                         their codes (Linux)

/// True within half a minute.
bool AwaitFile(const std::filesystem::path& path);

/// Properties that capture, with a logger.
std::shared_ptr<ProcessUtils::CmdProperties> CommandOf(const std::string& command, ICLogger& logger);

}  // namespace quillon::test
