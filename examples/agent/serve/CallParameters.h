#pragma once

#include <list>
#include <map>
#include <string>
#include <vector>

#include "quillon/IMethodMetadata.h"
#include "quillon/InvocationResult.h"
#include "quillon/MethodParameters.h"
#include "serve/RequestValue.h"

namespace quillon::agent {

/// The parameters of a call that came as JSON, and the tables among them.
class CallParameters {
public:
    /// Fills the parameters: a text is read as the type that the method declares, as on the command line;
    /// numbers and booleans are what they are, an array of objects is a table, and null is no value. What
    /// cannot be read sets code 2 and a message and gives false.
    bool Read(const std::map<std::string, RequestValue>& values, const IMethodMetadataReader& method,
              InvocationResult& result);

    const MethodParameters& Get() const { return m_parameters; }

private:
    bool ReadOne(const std::string& name, const RequestValue& value, const IMethodMetadataReader& method,
                 InvocationResult& result);
    bool ReadTable(const std::string& name, const std::string& json, InvocationResult& result);

    std::vector<std::string> m_texts;  // "name=value"
    std::list<DataTable> m_tables;
    MethodParameters m_parameters;
};

}  // namespace quillon::agent
