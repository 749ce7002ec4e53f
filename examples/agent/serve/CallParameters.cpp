#include "serve/CallParameters.h"

#include "common/Failure.h"
#include "common/ParameterType.h"
#include "common/ShownText.h"
#include "modules/Arguments.h"
#include "quillon/DataTableIO.h"

namespace quillon::agent {

namespace {

/// Returns the type that the method describes; empty for a parameter that it does not.
std::string DescribedType(const std::string& name, const IMethodMetadataReader& method) {
    std::string type;
    method.VisitParameter([&](const char* described, const MethodParameter& parameter) {
        if (name == described) type = ParameterType(parameter);
    });
    return type;
}

bool IsNumberOrBoolean(RequestValue::Kind kind) {
    using Kind = RequestValue::Kind;
    return kind == Kind::Boolean || kind == Kind::Integer || kind == Kind::TooLarge || kind == Kind::Real;
}

}  // namespace

bool CallParameters::Read(const std::map<std::string, RequestValue>& values,
                          const IMethodMetadataReader& method, InvocationResult& result) {
    std::map<std::string, std::string> faults;
    for (const auto& [name, value] : values) {
        if (!ReadOne(name, value, method, result)) faults[name] = result.errorMessage;
    }
    return ReadParameters(m_texts, faults, method, m_parameters, result);
}

bool CallParameters::ReadOne(const std::string& name, const RequestValue& value,
                             const IMethodMetadataReader& method, InvocationResult& result) {
    const std::string shown = "Parameter '" + ShownText(name) + "' must be ";
    // The binder leaves a table that has a default as it is when the call has a scalar of its name.
    if (IsNumberOrBoolean(value.kind) && DescribedType(name, method) == "table")
        return RefuseParameter(shown + "an array of objects", result);
    switch (value.kind) {
        case RequestValue::Kind::Null:
            break;
        case RequestValue::Kind::Array:
            return ReadTable(name, value.text, result);
        case RequestValue::Kind::Object:
            return RefuseParameter(shown + "a scalar or an array of objects", result);
        case RequestValue::Kind::TooLarge:
            if (DescribedType(name, method) != "float")
                return RefuseParameter(shown + "at most 9223372036854775807", result);
            m_parameters.scalars.Add(Variant(name, value.real));
            break;
        case RequestValue::Kind::Boolean:
            m_parameters.scalars.Add(Variant(name, value.boolean));
            break;
        case RequestValue::Kind::Integer:
            m_parameters.scalars.Add(Variant(name, value.integer));
            break;
        case RequestValue::Kind::Real:
            m_parameters.scalars.Add(Variant(name, value.real));
            break;
        case RequestValue::Kind::Text:
            if (name.find('=') != std::string::npos) {  // no method has such a parameter
                m_parameters.scalars.Add(Variant(name, value.text));
            } else {
                m_texts.push_back(name + '=' + value.text);
            }
            break;
    }
    return true;
}

bool CallParameters::ReadTable(const std::string& name, const std::string& json, InvocationResult& result) {
    try {
        m_tables.push_back(FromJson(json));
    } catch (const TableFormatError& error) {
        return RefuseParameter("Parameter '" + ShownText(name) + "' is no table: " + error.what(), result);
    }
    m_parameters.tables[name] = &m_tables.back();
    return true;
}

}  // namespace quillon::agent
