#pragma once

#include <functional>
#include <string>
#include <vector>

#include "quillon/InvocationResult.h"
#include "quillon/MethodParameters.h"

namespace quillon::agent {

/// What a method declares a parameter or a column to be.
enum class ValueType { Text, Integer, Boolean, Double };

/// "text", "integer", "boolean" or "double".
const char* TypeName(ValueType type);

struct Parameter {
    std::string name;
    ValueType type = ValueType::Text;
    bool mandatory = false;
    std::string defaultText = {};  ///< for people; empty when there is none
    std::string text = {};         ///< what it means, one sentence
};

struct Column {
    std::string name;
    ValueType type = ValueType::Text;
    std::string text;
};

/// One method: its description, and the function that runs it. The function binds
/// the parameters itself and reports everything through the result.
struct Method {
    std::string name;
    std::string text;
    std::vector<Parameter> parameters;
    std::vector<Column> columns;
    std::function<void(const MethodParameters&, InvocationResult&)> run;
};

/// A family of methods. To add one to the agent, implement this and add it to
/// MakeModules().
class IModule {
public:
    virtual ~IModule() = default;

    virtual const std::string& GetName() const = 0;
    /// The same for the module's whole life.
    virtual const std::vector<Method>& GetMethods() const = 0;
};

}  // namespace quillon::agent
