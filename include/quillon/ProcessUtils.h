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
#include "quillon/TimePoint.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

/// Runs command lines under a time-out and the host's shutdown monitor, turns their output into
/// tables, and tells facts of other processes.
///
/// Every operation is thread-safe; any number of commands may run at once, each with one worker
/// thread of its own. Nothing is thrown.
///
/// @code
/// const auto props = std::make_shared<ProcessUtils::CmdProperties>();
/// props->command = "ipconfig /all";  // CommandLineBuilder quotes arguments
/// props->captureOutput = props->outputAsLines = true;
/// props->timeoutSecs = 30;
/// props->killOnTimeout = true;
/// const int code = ProcessUtils::RunCliCommand(props);
/// InvocationResult result;
/// if (code == 0) {
///     result.resultTable = std::move(props->outputTable);
/// } else {
///     ProcessUtils::SetSpecialErrorData(props.get(), result, "ipconfig failed");
/// }
/// @endcode
class QUILLON_API ProcessUtils {
public:
    ProcessUtils() = delete;

    static const char* const OutputColName;      ///< "Output"
    static const char* const ExitCodeColName;    ///< "ExitCode"
    static const char* const LineNumberColName;  ///< "LineNumber"
    /// Is offered to callers as a time-out in seconds; the runner never substitutes it.
    static const int DefaultTimeoutSecs;  ///< 3600

    /// What RunCliCommand() returns in place of a program's own exit code.
    enum SpecialCode : int {
        kNotStarted = 1,       ///< the process could not be started; also an exit code that many programs use
        kTimedOut = -2,        ///< the time-out passed, and the process was not killed
        kNotRun = -3,          ///< nobody ran or watched the process
        kExitCodeNotSet = -4,  ///< the run has not ended
        kKilled = -5,          ///< also the exit status that a killed process gets
        kAborted = -6,         ///< the host is shutting down
        kNotLoggedOn = -7,     ///< a user was not logged on; for hosts, the runner never returns it
        kOutputLost = -8,      ///< the command ended, but not all of its output could be kept
    };

    /// Says what to run, and tells how it ended. One record serves one run. The caller's thread
    /// may read the outcome once RunCliCommand() has returned, unless the run timed out or was
    /// aborted without the process being killed (kTimedOut or kAborted): a detached worker may then still be
    /// writing to it.
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
        DataTable outputTable;             ///< columns ExitCode, Output and, by lines, LineNumber
        int resultCode = kExitCodeNotSet;  ///< the exit code, or a SpecialCode
        bool timedOut = false;
        bool killed = false;
        bool abortedOnShutdown = false;
        std::uint32_t processId = 0;  ///< 0 until started
        void* abortEvent = nullptr;   ///< internal

        // Refinements; the defaults change nothing.
        bool killTree = false;             ///< a kill reaches every descendant
        std::uint64_t maxOutputBytes = 0;  ///< captured output past this ends the command; 0: no limit
        bool outputTruncated = false;      ///< out: maxOutputBytes was reached, or output was lost
        std::uint64_t outputBytes = 0;     ///< out: bytes captured
        /// Replaces the caller's whole environment (UTF-8); nothing: it is inherited. An empty name, one with
        /// '=' or a NUL makes the start fail. Of names that differ in case only Windows takes the last one.
        std::optional<std::map<std::string, std::string>> environment;
        /// Is fed to the command's standard input, which then ends; nothing: there is none.
        std::optional<std::string> standardInput;
        /// Milliseconds that a kill gives the process after it has asked it to end: by SIGTERM,
        /// on Windows by CTRL_BREAK to a console program of a host without a console. 0: a kill
        /// does not ask. The code of one that ends when asked is its own.
        std::uint32_t killGraceMs = 0;
        std::vector<std::uint32_t> survivors;  ///< out: processes that a kill could not end
        /// The code page, by its Windows number, of output without a byte-order mark; 1: the
        /// system's OEM page, in which console programs write (UTF-8 on Linux); 0: it is found
        /// out. A page that the system does not have is an Error entry, and found out.
        std::uint32_t outputCodePage = 0;
        TimePoint startTime;                ///< out: of the process; the epoch without one
        TimePoint endTime;                  ///< out: the epoch while it goes on
        std::uint64_t cpuTimeMs = 0;        ///< out: used until the end; rounded up
        std::uint64_t peakMemoryBytes = 0;  ///< out: 0 when the system does not tell it
        int endingSignal = 0;               ///< out: the signal that ended it (Linux)
        int startError = 0;                 ///< out: the Windows code of why it could not be started
        std::shared_ptr<void> run;          ///< internal
    };

    /// Runs a command to its end, its time-out or the host's shutdown, and blocks the caller
    /// meanwhile. Shutdown is told by the host's IShutdownNotifier, and nothing wakes up meanwhile;
    /// without one its IShutdownMonitor is asked every 100 ms. Output goes through a pipe. All
    /// that was written until the command ended counts, whatever its encoding, without the white
    /// space at its end; what descendants write later is read to nowhere. The table gets one row,
    /// or one a line, numbered from 0, and without any row its columns.
    ///
    /// Returns the program's exit code or a SpecialCode. A process that is not killed goes on
    /// running. `props` is shared with the worker and must not be null.
    ///
    /// With `killTree` the command and its descendants are killed together: a job on Windows; on
    /// Linux a control group (version 2) where this process may divide its own, and besides a
    /// process group and the variable QUILLON_COMMAND, by which those are found that have left
    /// the group and lost their parents. `maxOutputBytes` prepares the same, because
    /// its kill always reaches the descendants, who may write too. The variable comes into the
    /// environment also when `environment` replaces it: of an empty one it is the only variable.
    /// With `killOnTimeout` the command also ends when the host itself is killed.
    ///
    /// On Linux the exit code needs a host that neither ignores SIGCHLD nor waits for children
    /// that are not its own, or a kernel from 6.15 on; otherwise it is kNotStarted with an Error
    /// entry.
    ///
    /// Logs the start and the end at Debug, a time-out and a shutdown at Info, too much output
    /// at Warn, and every failure at Error with the system's text, such as "Could not run
    /// command 'X' because: ..."; the caller's thread logs to the registered logger, the worker
    /// to `props->logger` (null: not at all). The output of a command that failed is logged at
    /// Debug, up to 1,000 bytes.
    static int RunCliCommand(std::shared_ptr<CmdProperties> props);
    /// Ends the process of a run with exit status -5, and with `killTree` its descendants; may
    /// be called from any thread while the run lasts, and afterwards for a process that goes on.
    /// Returns false, with an Error entry, when it has not started or has ended, or cannot be
    /// opened or ended; success is an Info entry, and a Warn entry when descendants are left.
    /// Properties that were not run, with a `processId` of the caller's, mean that process.
    static bool KillCommandProcess(const std::shared_ptr<CmdProperties>& props);

    /// Replaces the result's table by one row (ExitCode -2 and the text "Timed out after N
    /// seconds"), sets that text as its message, and 3 as its code.
    static void SetCliTimedOutInvocationResult(int timeoutSecs, InvocationResult& result);
    /// Does the same with -6 and "Aborted due to Agent shutdown".
    static void SetCliShutdownAbortInvocationResult(InvocationResult& result);
    /// Completes the result of a failed run: code 3 unless a code is set, and unless a message
    /// is set the text of the special code in `props`, such as "Timed out" for -2, or
    /// `fallback` for a program's own code and for a null `props`. The table is not touched.
    static void SetSpecialErrorData(const CmdProperties* props, InvocationResult& result,
                                    const std::string& fallback);

    /// Returns whether the id is that of Windows's idle (0) or kernel (4) process.
    static bool IsSystemProcess(unsigned long pid);
    /// Returns whether a product name is the operating system's own: the text contains
    /// "Microsoft Windows Operating System", the first letter of each word in either case and
    /// up to four other characters after each.
    static bool IsOsProcess(const std::string& productName);
    /// Sets `commandLine` to the command line of a process as it was started, in UTF-8. A
    /// system process gives the empty text and true, but on Linux 4 may be any process of a
    /// container, whose command line is told; one that is gone or may not be read gives the
    /// empty text and false.
    static bool GetCommandLineForProcess(unsigned long pid, std::string& commandLine);
    /// Returns the full path of this process's executable, in UTF-8; empty on failure.
    static std::string GetCurrentProcessExecutable();
    /// Returns the bytes of resident memory that the process shares with no other; 0 when they
    /// cannot be told. The handle must allow queries and reading memory, and stays the
    /// caller's.
    static long long GetPrivateWorkingSetForProcess(const windows::HANDLE& process);
    /// Returns the same by id; for a process that cannot be opened, 0 and the Debug entry
    /// "Unable to get a VM_READ handle for pid N".
    static long long GetPrivateWorkingSetForProcess(const long& pid);
    /// Appends the ids of all processes, 0 included where the system lists it, in the system's
    /// order; on failure nothing is appended, and the reason is in the system's last error.
    static void EnumerateProcessIds(std::vector<unsigned long>& ids);
};

}  // namespace quillon
