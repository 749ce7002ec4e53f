// A small host: it registers a logger, calls the method and prints what the method returned.
#include <quillon/DataTableIO.h>
#include <quillon/InvocationResult.h>
#include <quillon/MethodParameters.h>
#include <quillon/ServiceLocator.h>
#include <quillon/StdoutLogger.h>

#include <iostream>

void Uptime(const quillon::MethodParameters& parameters, quillon::InvocationResult& result);

int main() {
    quillon::StdoutLogger logger;
    quillon::ServiceLocator::Put<quillon::ICLogger>(&logger);

    quillon::MethodParameters parameters;
    parameters.scalars.Add(quillon::Variant("timeout", 10));
    quillon::InvocationResult result;
    Uptime(parameters, result);

    std::cout << quillon::ToText(result.resultTable) << result.errorMessage << '\n';
    quillon::ServiceLocator::Remove<quillon::ICLogger>();
    return result.resultCode;
}
