#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "quillon/InvocationResult.h"
#include "quillon/Module.h"
#include "quillon/ModuleEntry.h"

namespace quillon::testkit {

/// Registers the builders with which MakeMethod() describes a method, unless a host has done so; they
/// stay. TestHost and CreateModule() do so too.
void RegisterBuilders();

/// Makes the module of a library's entry, as the agent does; the module's source is compiled into the
/// test. What the module throws reaches the caller. Throws std::invalid_argument when the entry is of
/// another version of the interface or makes no module.
///
/// @code
/// const auto module = testkit::CreateModule(*QuillonModuleEntry());
/// @endcode
std::shared_ptr<IModule> CreateModule(const ModuleEntry& entry);

/// Holds the parameters of a call as names and texts.
using MethodArguments = std::vector<std::pair<std::string, std::string>>;

/// Runs the method "Module.Method" and returns its result with its table. Texts become values of the
/// types that the method declares, as on the agent's command line: "5", "0.5", "true", or
/// "2026-01-31T18:30:00Z". As in the agent, an unknown method and a text that is no such value give the
/// code 2, and a method that throws gives 1 with the exception's text.
///
/// @code
/// const InvocationResult result = testkit::InvokeMethod(*module, "Uptime.Read", {{"timeout", "5"}});
/// @endcode
InvocationResult InvokeMethod(const IModule& module, const std::string& method,
                              const MethodArguments& arguments = {});
/// Runs the method with parameters as they are, which may hold tables.
InvocationResult InvokeWithParameters(const IModule& module, const std::string& method,
                                      const MethodParameters& parameters);

}  // namespace quillon::testkit
