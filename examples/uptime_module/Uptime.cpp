#include <quillon/ParameterBinder.h>
#include <quillon/ProcessUtils.h>
#include <quillon/ServiceLocator.h>

void Uptime(const quillon::MethodParameters& parameters, quillon::InvocationResult& result) {
    long long timeout = quillon::ProcessUtils::DefaultTimeoutSecs;
    quillon::ParameterBinder binder(parameters, false, false);
    binder.AddOptionalBinding("timeout", timeout);
    if (!binder.Bind(result)) return;  // result says which parameter is wrong

    auto command = std::make_shared<quillon::ProcessUtils::CmdProperties>();
    command->command = "uptime";
    command->logger = quillon::ServiceLocator::Get<quillon::ICLogger>();
    command->captureOutput = command->killOnTimeout = command->killTree = true;
    command->timeoutSecs = static_cast<int>(timeout);
    if (quillon::ProcessUtils::RunCliCommand(command) != 0)
        quillon::ProcessUtils::SetSpecialErrorData(command.get(), result, "uptime failed");
    result.resultTable = std::move(command->outputTable);
}
