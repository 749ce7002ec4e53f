#pragma once

#include <memory>
#include <vector>

#include "common/Failure.h"
#include "quillon/Module.h"

namespace quillon::agent {

using ModuleList = std::vector<std::unique_ptr<IModule>>;

/// Returns every module of the agent. The host's services and builder factories are registered before.
ModuleList MakeModules();

// The modules, each in a source of its name. To add one, declare it here and name it in MakeModules().

/// Keeps security auditing of a sub-category switched on.
std::unique_ptr<IModule> MakeAuditModule();
/// Reads certificates.
std::unique_ptr<IModule> MakeCertificatesModule();
/// Runs command lines. A command that does not end with exit code 0 is a failed
/// invocation (code 3) that still answers with what the command wrote.
std::unique_ptr<IModule> MakeCommandsModule();
/// Downloads content through the host's provider, and reads content lists.
std::unique_ptr<IModule> MakeContentModule();
/// Reads channels of the system's event log, and follows them.
std::unique_ptr<IModule> MakeEventLogModule();
/// Finds and reads files: their versions, their text in any encoding.
std::unique_ptr<IModule> MakeFilesModule();
/// Looks names up and tests addresses.
std::unique_ptr<IModule> MakeNetworkModule();
/// Lists the system's processes. What the agent may not read of a process is null.
std::unique_ptr<IModule> MakeProcessesModule();
/// Keeps tables in the agent's databases between invocations.
std::unique_ptr<IModule> MakeStoreModule();
/// Tells where the agent runs, and what it costs.
std::unique_ptr<IModule> MakeSystemModule();
/// Asks WMI, changes its objects and calls their methods. What WMI refuses is a failed
/// invocation (code 3) with WMI's own text.
std::unique_ptr<IModule> MakeWmiModule();

}  // namespace quillon::agent
