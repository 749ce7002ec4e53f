#include "quillon/DescribedBinder.h"

#include <stdexcept>
#include <string_view>
#include <type_traits>

#include "base/TextOrEmpty.h"
#include "metadata/ScalarConversion.h"
#include "quillon/MethodMetadata.h"

namespace quillon {
namespace {

/// A default makes a table's parameter one of a pointer to it.
std::string_view TypeName(const MethodParameter& parameter) {
    const bool isTable = parameter.TypeInfoHashCode() == typeid(const DataTable*).hash_code();
    return isTable ? "table" : parameter.Type();
}

// Whether a parameter of a described type is bound to a variable of this one.
bool Fits(std::string_view type, const std::string&) { return type == "string" || type == "datetime"; }
bool Fits(std::string_view type, const long long&) { return type == "integer"; }
bool Fits(std::string_view type, const double&) { return type == "float"; }
bool Fits(std::string_view type, const bool&) { return type == "boolean"; }
bool Fits(std::string_view type, const DataTable* const&) { return type == "table"; }

template <class T>
void TakeDefault(const MethodParameter& parameter, const Variant& value, T& target) {
    if constexpr (std::is_same_v<T, const DataTable*>) {
        target = parameter.OptionalTable();
    } else {
        metadata::Convert(value, target);
    }
}

/// Variables of all types, for a call that is only looked at.
struct AnyVariables {
    std::string text;
    long long integer = 0;
    double real = 0;
    bool flag = false;
    const DataTable* table = nullptr;

    void AddTo(ParameterBinder& binder, const std::string& name, const MethodParameter& parameter) {
        Variant ignored;
        const bool isOptional = parameter.GetOptionalValue(ignored);
        const std::string_view type = TypeName(parameter);
        if (Fits(type, integer)) return binder.AddBinding(name, &integer, isOptional);
        if (Fits(type, real)) return binder.AddBinding(name, &real, isOptional);
        if (Fits(type, flag)) return binder.AddBinding(name, &flag, isOptional);
        if (Fits(type, table)) return binder.AddBinding(name, &table, isOptional);
        binder.AddBinding(name, &text, isOptional);
    }
};

}  // namespace

DescribedBinder::DescribedBinder(const MethodParameters& parameters, const IMethodMetadataReader& method)
    : m_parameters(parameters),
      m_method(method),
      m_binder(parameters, false, method.HasAdditionalParameters()) {}

DescribedBinder::~DescribedBinder() = default;

void DescribedBinder::ThrowMistake(const std::string& name, const char* mistake) const {
    throw std::invalid_argument("Method '" + std::string(base::TextOrEmpty(m_method.MethodName())) +
                                "': parameter '" + name + "' " + mistake);
}

const MethodParameter& DescribedBinder::Find(const std::string& name) const {
    const MethodParameter* found = nullptr;
    m_method.VisitParameter([&](const char* described, const MethodParameter& parameter) {
        if (base::TextOrEmpty(described) == name) found = &parameter;
    });
    if (found == nullptr) ThrowMistake(name, "is not described");
    return *found;
}

template <class T>
void DescribedBinder::Declare(const std::string& name, T& target) {
    const MethodParameter& parameter = Find(name);
    if (!Fits(TypeName(parameter), target)) ThrowMistake(name, "is described with another type");
    if (!m_names.insert(name).second) ThrowMistake(name, "has two variables");
    Variant value;
    const bool isOptional = parameter.GetOptionalValue(value);
    if (isOptional) TakeDefault(parameter, value, target);
    m_binder.AddBinding(name, &target, isOptional);
}

template QUILLON_API void DescribedBinder::Declare(const std::string&, std::string&);
template QUILLON_API void DescribedBinder::Declare(const std::string&, long long&);
template QUILLON_API void DescribedBinder::Declare(const std::string&, double&);
template QUILLON_API void DescribedBinder::Declare(const std::string&, bool&);
template QUILLON_API void DescribedBinder::Declare(const std::string&, const DataTable*&);

bool DescribedBinder::Bind(InvocationResult& result) const {
    m_method.VisitParameter([this](const char* name, const MethodParameter&) {
        const std::string described(base::TextOrEmpty(name));
        if (!m_names.contains(described)) ThrowMistake(described, "has no variable");
    });
    return m_binder.Bind(result, ParameterFaults::All);
}

std::string DescribedBinder::FindFaults(const MethodParameters& parameters,
                                        const IMethodMetadataReader& method) {
    ParameterBinder binder(parameters, false, method.HasAdditionalParameters());
    AnyVariables variables;
    method.VisitParameter([&](const char* name, const MethodParameter& parameter) {
        variables.AddTo(binder, std::string(base::TextOrEmpty(name)), parameter);
    });
    InvocationResult result;
    return binder.Bind(result, ParameterFaults::All) ? std::string() : result.errorMessage;
}

}  // namespace quillon
