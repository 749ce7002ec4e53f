#pragma once

#include <string>

#include "quillon/DescribedBinder.h"
#include "quillon/IMethodMetadataBuilder.h"
#include "quillon/InvocationResult.h"
#include "quillon/ProcessUtils.h"

namespace quillon::agent {

/// The parameters of every method that runs a command.
struct CommandCall {
    static constexpr long long kDefaultMaxOutput = 64 * 1024 * 1024;

    std::string command;
    long long timeout = 0;
    std::string workingDirectory;
    long long maxOutput = 0;
};

/// Describes these parameters. With `isOptional` the command may be left out.
void DescribeCommand(IMethodMetadataBuilder& builder, bool isOptional = false);
/// Has the binder fill the call with them.
void AddBindings(DescribedBinder& binder, CommandCall& call);

/// Runs the command and puts its output into the result, in one row or in lines. False
/// when a parameter is out of its range or the command did not end with exit code 0;
/// the result then says why, and holds what a command had written that was killed.
bool RunCommand(const CommandCall& call, bool lines, InvocationResult& result);

/// Does the same with the output parsed as TableLayout says, after `skip` lines.
bool RunCommandTable(const CommandCall& call, const std::string& columns, long long skip,
                     InvocationResult& result);
/// Describes the parameter "skip", and how "columns" is written.
void DescribeLayout(IMethodMetadataBuilder& builder);

}  // namespace quillon::agent
