#pragma once

#include <string>
#include <vector>

namespace quillon::agent {

/// The end of the names of shared libraries: ".so" or ".dll".
extern const char* const kSharedLibraryEnd;

/// Loads a shared library from its file, a library path in UTF-8, together with everything that it
/// needs, and returns the address of a function that it exports. Libraries that it needs are looked for
/// in the agent's directory, its own and the system's, never in the working directory. On failure returns
/// null, and `fault` says why to people. What is no regular file, and one for which FindForeignWriter() has
/// something to tell, is a failure.
/// The library is first loaded in another process, a child on Linux and a process of the same program on
/// Windows, so its static constructors run twice: those that throw, crash or take more than 30 seconds are a
/// failure too.
///
/// What was loaded stays loaded until the process ends: a thread or a text of it may outlive its user.
void* LoadFunction(const std::string& path, const char* name, std::string& fault);

/// Returns who but the agent's account, the system and its administrators can change the file or
/// directory, or put another one in its place, as a text for people; empty for nobody. What cannot be
/// looked at counts as a fault, which the text tells.
std::string FindForeignWriter(const std::string& path);

/// Does what LoadFunction() starts another process of this program for on Windows: when the arguments are its
/// sub-command and a library, loads the library and ends the process. The program calls it first. It returns
/// for other arguments, and always on Linux.
void TryLibraryIfAsked(const std::vector<std::string>& arguments);

}  // namespace quillon::agent
