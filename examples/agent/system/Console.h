#pragma once

#include <cstddef>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace quillon::agent {

/// The operations that the agent needs of the system itself; implemented once in posix/ and once in
/// win32/.

/// Returns the arguments after the program's name, in UTF-8 whatever the system's code page.
std::vector<std::string> GetArguments(int argc, char** argv);

/// Opens the null device in place of each standard stream that the process was started without, so that no
/// other file takes its place, and has writes fail, not the process end, when nobody reads its output or a
/// file has reached the size that it may have.
void SecureStandardStreams();

/// Takes the process's standard output away from everybody else: the stream
/// returned writes there, byte for byte, and is not inherited by child processes;
/// what the process writes to its standard output from now on goes to standard
/// error. Null on failure, see errno. The caller closes the stream.
std::FILE* TakeStandardOutput();

/// Returns how many characters a line of the stream's terminal has; 0 when it is none.
std::size_t TerminalWidth(std::FILE* stream);

/// Returns whether standard error is a terminal.
bool IsErrorTerminal();

/// Called at each request to end the process: Ctrl-C, or the system's other ways
/// to ask for it. False ends the process at once. It may interrupt any code at any
/// point, so it must restrict itself to lock-free atomics.
using InterruptHandler = bool (*)();
void OnInterrupt(InterruptHandler handler);

/// Has `task` called on a thread of the agent's, once the handler has answered true; there a task may do
/// what it likes. To be called once, before OnInterrupt().
void AfterInterrupt(std::function<void()> task);

}  // namespace quillon::agent
