#include "serve/CallParameters.h"

#include <cstdint>
#include <limits>

#include "common/Failure.h"
#include "common/ShownText.h"
#include "modules/Arguments.h"
#include "quillon/DataTableIO.h"

namespace quillon::agent {

namespace {

using nlohmann::json;

bool IsTooLarge(const json& value) {
    constexpr auto kLargest = static_cast<std::uint64_t>(std::numeric_limits<long long>::max());
    return value.is_number_unsigned() && value.get<std::uint64_t>() > kLargest;
}

}  // namespace

bool CallParameters::Read(const json& object, const IMethodMetadataReader& method, InvocationResult& result) {
    std::string faults;
    for (const auto& [name, value] : object.items()) {
        if (!ReadOne(name, value, result)) faults += (faults.empty() ? "" : "; ") + result.errorMessage;
    }
    if (!faults.empty()) return RefuseParameter(faults, result);
    return ReadParameters(m_texts, method, m_parameters, result);
}

bool CallParameters::ReadOne(const std::string& name, const json& value, InvocationResult& result) {
    const std::string shown = "Parameter '" + ShownText(name) + "' must be ";
    if (value.is_null()) return true;
    if (value.is_array()) return ReadTable(name, value, result);
    if (value.is_object()) return RefuseParameter(shown + "a scalar or an array of objects", result);
    if (IsTooLarge(value)) return RefuseParameter(shown + "at most 9223372036854775807", result);
    if (value.is_string() && name.find('=') != std::string::npos) {
        m_parameters.scalars.Add(Variant(name, value.get<std::string>()));  // no method has such a parameter
    } else if (value.is_string()) {
        m_texts.push_back(name + '=' + value.get_ref<const std::string&>());
    } else if (value.is_boolean()) {
        m_parameters.scalars.Add(Variant(name, value.get<bool>()));
    } else if (value.is_number_integer()) {
        m_parameters.scalars.Add(Variant(name, value.get<long long>()));
    } else {
        m_parameters.scalars.Add(Variant(name, value.get<double>()));
    }
    return true;
}

bool CallParameters::ReadTable(const std::string& name, const json& value, InvocationResult& result) {
    try {
        m_tables.push_back(FromJson(value.dump()));
    } catch (const TableFormatError& error) {
        return RefuseParameter("Parameter '" + ShownText(name) + "' is no table: " + error.what(), result);
    }
    m_parameters.tables[name] = &m_tables.back();
    return true;
}

}  // namespace quillon::agent
