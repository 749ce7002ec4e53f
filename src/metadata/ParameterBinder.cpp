#include "quillon/ParameterBinder.h"

#include <exception>
#include <set>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace quillon {
namespace {

/// The typed getters throw, after an Error entry, when the value has another type.
void Convert(const Variant& value, std::string& target) { target = value.GetStringValue(); }
void Convert(const Variant& value, long long& target) { target = value.GetLongLongValue(); }
void Convert(const Variant& value, bool& target) { target = value.GetBoolValue(); }
void Convert(const Variant& value, double& target) {
    target = value.TypeIs(typeid(long long)) ? static_cast<double>(value.GetLongLongValue())
                                             : value.GetDoubleValue();
}

template <class T>
bool TryConvert(const Variant& value, T& target) {
    try {
        Convert(value, target);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace

ParameterBinder::ParameterBinder(const MethodParameters& parameters, bool allowAnonymous, bool allowUndefined)
    : m_allowAnonymous(allowAnonymous), m_allowUndefined(allowUndefined), m_parameters(parameters) {}

ParameterBinder::~ParameterBinder() = default;

template <class T>
void ParameterBinder::Declare(const std::string& name, T* target, bool optional) {
    m_bindings[name] = [this, name, target, optional] { return BindTarget(name, *target, optional); };
}

template QUILLON_API void ParameterBinder::Declare(const std::string&, std::string*, bool);
template QUILLON_API void ParameterBinder::Declare(const std::string&, long long*, bool);
template QUILLON_API void ParameterBinder::Declare(const std::string&, double*, bool);
template QUILLON_API void ParameterBinder::Declare(const std::string&, bool*, bool);
template QUILLON_API void ParameterBinder::Declare(const std::string&, const DataTable**, bool);

template <class T>
void ParameterBinder::DeclareOptional(const std::string& name, std::optional<T>& target) {
    m_bindings[name] = [this, name, &target] {
        T value{};
        const ParameterBindingResult bound = BindTarget(name, value, false);
        target.reset();
        if (bound == ParameterBindingResult::Success) target = std::move(value);
        return bound == ParameterBindingResult::Missing ? ParameterBindingResult::Success : bound;
    };
}

template QUILLON_API void ParameterBinder::DeclareOptional(const std::string&, std::optional<std::string>&);
template QUILLON_API void ParameterBinder::DeclareOptional(const std::string&, std::optional<long long>&);
template QUILLON_API void ParameterBinder::DeclareOptional(const std::string&, std::optional<double>&);
template QUILLON_API void ParameterBinder::DeclareOptional(const std::string&, std::optional<bool>&);
template QUILLON_API void ParameterBinder::DeclareOptional(const std::string&,
                                                           std::optional<const DataTable*>&);

bool ParameterBinder::Bind(InvocationResult& result) const {
    std::string fault = FindBindingFault();
    if (fault.empty() && !m_allowUndefined) fault = FindUndefinedParameter();
    if (fault.empty()) fault = FindRepeatedParameter();
    if (fault.empty()) return true;
    result.resultCode = InvocationResult::kBadParameter;
    result.errorMessage = fault;
    return false;
}

template <class T>
ParameterBindingResult ParameterBinder::BindTarget(const std::string& name, T& target, bool optional) const {
    if constexpr (std::is_same_v<T, const DataTable*>) {
        return BindTable(name, target, optional);
    } else {
        return BindScalar(name, target, optional);
    }
}

template <class T>
ParameterBindingResult ParameterBinder::BindScalar(const std::string& name, T& target, bool optional) const {
    const Variant* value = m_parameters.scalars.Find(name);
    Variant demoted;
    bool wrongType = false;
    if (value == nullptr && GetSuitableTableValueForDemotionToScalar(name, demoted, wrongType))
        value = &demoted;
    if (value != nullptr) {
        if (TryConvert(*value, target)) return ParameterBindingResult::Success;
        wrongType = true;
    } else if (optional) {
        return ParameterBindingResult::Success;
    }
    if (!optional) target = T();
    return wrongType ? ParameterBindingResult::WrongType : ParameterBindingResult::Missing;
}

ParameterBindingResult ParameterBinder::BindTable(const std::string& name, const DataTable*& target,
                                                  bool optional) const {
    const auto table = m_parameters.tables.find(name);
    if (table != m_parameters.tables.end()) {
        target = table->second;
        return ParameterBindingResult::Success;
    }
    if (optional) return ParameterBindingResult::Success;
    return m_parameters.scalars.Contains(name) ? ParameterBindingResult::WrongType
                                               : ParameterBindingResult::Missing;
}

/// A table of one row and one cell stands for that cell. `wrongType` tells
/// whether there is a table of that name at all.
bool ParameterBinder::GetSuitableTableValueForDemotionToScalar(const std::string& name, Variant& value,
                                                               bool& wrongType) const {
    const auto table = m_parameters.tables.find(name);
    wrongType = table != m_parameters.tables.end();
    if (!wrongType || table->second == nullptr || table->second->GetNumberOfRows() != 1) return false;
    const VariantList& row = *table->second->begin();
    if (row.Size() != 1) return false;
    value = *row.begin();
    return true;
}

/// This and the next two functions return the message of the first failure, or the empty text.
std::string ParameterBinder::FindBindingFault() const {
    for (const auto& [name, bind] : m_bindings) {
        switch (bind()) {
            case ParameterBindingResult::Success:
                break;
            case ParameterBindingResult::WrongType:
                return "Value is wrong data-type for parameter '" + name + "'";
            case ParameterBindingResult::Missing:
                return "Missing parameter '" + name + "'";
        }
    }
    return {};
}

std::string ParameterBinder::FindUndefinedParameter() const {
    const auto check = [this](const std::string& name, const char* anonymous) -> std::string {
        if (name.empty()) return m_allowAnonymous ? std::string() : anonymous;
        return m_bindings.contains(name) ? std::string() : "Undefined parameter named '" + name + "'";
    };
    for (const Variant& scalar : m_parameters.scalars) {
        std::string fault = check(scalar.GetName(), "Anonymous parameters are not allowed for this method");
        if (!fault.empty()) return fault;
    }
    for (const auto& [name, table] : m_parameters.tables) {
        std::string fault = check(name, "Anonymous (table) parameters are not allowed for this method");
        if (!fault.empty()) return fault;
    }
    return {};
}

std::string ParameterBinder::FindRepeatedParameter() const {
    std::set<std::string_view> seen;
    const auto repeated = [&seen](const std::string& name) { return !seen.insert(name).second; };
    const auto message = [](const std::string& name) {
        return "Parameter '" + name + "' is specified more than once";
    };
    for (const Variant& scalar : m_parameters.scalars) {
        const std::string& name = scalar.GetName();
        if (!name.empty() && repeated(name)) return message(name);
    }
    for (const auto& [name, table] : m_parameters.tables) {
        if (repeated(name)) return message(name);
    }
    return {};
}

}  // namespace quillon
