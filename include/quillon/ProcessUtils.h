#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quillon/DataTable.h"
#include "quillon/Export.h"
#include "quillon/ICLogger.h"
#include "quillon/InvocationResult.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// Runs command lines under a time-out and the host's shutdown monitor, turns their
/// output into tables, and tells facts of other processes. Static operations only;
/// any thread.
class QUILLON_API ProcessUtils {
public:
    ProcessUtils() = delete;

    static const char* const OutputColName;      ///< "Output"
    static const char* const ExitCodeColName;    ///< "ExitCode"
    static const char* const LineNumberColName;  ///< "LineNumber"
    /// Offered to callers; the runner never substitutes it.
    static const int DefaultTimeoutSecs;  ///< 3600

    /// What to run, and how it ended. One record serves one run. The caller's thread
    /// may read the outcome once RunCliCommand has returned, unless the run timed
    /// out or was aborted without the process being killed: a worker may then still
    /// be writing to it.
    struct CmdProperties {
        // What to run.
        std::string command;            ///< the whole command line, UTF-8
        ICLogger* logger = nullptr;     ///< must be valid for the whole run
        bool outputAsLines = false;     ///< a row a line instead of one row
        bool captureOutput = false;     ///< standard output and error into outputTable
        int timeoutSecs = 0;            ///< seconds; zero or less: no time-out
        bool killOnTimeout = false;     ///< also on shutdown
        std::wstring workingDirectory;  ///< empty: the caller's

        // How it ended.
        DataTable outputTable;  ///< columns ExitCode, Output and, by lines, LineNumber
        int resultCode = -4;    ///< the exit code or a special code
        bool timedOut = false;
        bool killed = false;
        bool abortedOnShutdown = false;
        std::uint32_t processId = 0;  ///< 0 until started
        void* abortEvent = nullptr;   ///< internal

        // Refinements; the defaults change nothing.
        bool killTree = false;             ///< a kill reaches every descendant
        std::uint64_t maxOutputBytes = 0;  ///< captured output past this ends the command; 0: no limit
        bool outputTruncated = false;      ///< out: maxOutputBytes was reached
        std::uint64_t outputBytes = 0;     ///< out: bytes captured
        /// The whole environment (UTF-8) instead of the caller's.
        std::optional<std::map<std::string, std::string>> environment;
        /// Bytes fed to the command's standard input, which then ends.
        std::optional<std::string> standardInput;
    };

    /// Runs a command to its end, its time-out or the host's shutdown. Returns the
    /// program's exit code; 1 also when it could not be started; -2 timed out; -3 not
    /// run; -5 killed; -6 shutdown. Every failure is logged; nothing is thrown.
    static int RunCliCommand(std::shared_ptr<CmdProperties> props);
    /// Ends the process of a run with exit status -5.
    static bool KillCommandProcess(const std::shared_ptr<CmdProperties>& props);

    /// The result of a timed-out command: code 3, a message, and a table of one row.
    static void SetCliTimedOutInvocationResult(int timeoutSecs, InvocationResult& result);
    /// The same for a command that the host's shutdown ended.
    static void SetCliShutdownAbortInvocationResult(InvocationResult& result);
    /// Code 3 unless a code is set; the text of the run's special code, else
    /// `fallback`, unless a message is set.
    static void SetSpecialErrorData(const CmdProperties* props, InvocationResult& result,
                                    const std::string& fallback);

    /// The system's own idle and kernel processes (0 and 4 on Windows).
    static bool IsSystemProcess(unsigned long pid);
    /// Whether a product name is the operating system's own.
    static bool IsOsProcess(const std::string& productName);
    /// Of a process as it was started, UTF-8; empty and true for a system process,
    /// empty and false for one that may not or cannot be read.
    static bool GetCommandLineForProcess(unsigned long pid, std::string& commandLine);
    /// Full path, UTF-8; empty on failure.
    static std::string GetCurrentProcessExecutable();
    /// Bytes of memory that the process shares with no other; 0 when they cannot be
    /// told. Whoever may not look into the process by its id gets a Debug entry.
    static long long GetPrivateWorkingSetForProcess(const HANDLE& process);
    static long long GetPrivateWorkingSetForProcess(const long& pid);
    /// Appends the ids of all processes; on failure nothing is appended.
    static void EnumerateProcessIds(std::vector<unsigned long>& ids);
};

}  // namespace quillon
