#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "quillon/Export.h"
#include "quillon/InvocationResult.h"
#include "quillon/MethodParameters.h"

namespace quillon {

enum class ParameterBindingResult : std::int32_t { Success = 0, Missing = 1, WrongType = 2 };

/// Checks one call's parameters against a method's typed variables and fills
/// them. Declare each variable, then call Bind once; parameters and targets must
/// outlive it. Bind never throws for bad input: the first problem found sets
/// result code 2 and one message.
class QUILLON_API ParameterBinder {
public:
    ParameterBinder(const MethodParameters& parameters, bool allowAnonymous, bool allowUndefined);
    ~ParameterBinder();
    ParameterBinder(const ParameterBinder&) = delete;
    ParameterBinder& operator=(const ParameterBinder&) = delete;

    /// T is std::string, long long, double, bool or const DataTable*. A second
    /// binding under a name replaces the first. Texts accept time points as ISO
    /// 8601, integers booleans, booleans integers, doubles integers; a table of one
    /// row and one cell stands for its scalar.
    template <class T>
    void AddBinding(const std::string& name, T* target, bool optional);
    /// When the parameter cannot be bound a scalar target is reset.
    template <class T>
    void AddMandatoryBinding(const std::string& name, T& target) {
        AddBinding(name, &target, false);
    }
    /// When the parameter is absent the target keeps its value.
    template <class T>
    void AddOptionalBinding(const std::string& name, T& target) {
        AddBinding(name, &target, true);
    }

    /// When the parameter is absent the target is reset.
    template <class T>
    void AddOptionalBinding(const std::string& name, std::optional<T>& target);

    /// True when every check passed: bindings in ascending order of names, then
    /// parameters without a binding, then names given more than once.
    bool Bind(InvocationResult& result) const;

private:
    using Binding = std::function<ParameterBindingResult()>;

    template <class T>
    ParameterBindingResult BindTarget(const std::string& name, T& target, bool optional) const;
    template <class T>
    ParameterBindingResult BindScalar(const std::string& name, T& target, bool optional) const;
    ParameterBindingResult BindTable(const std::string& name, const DataTable*& target, bool optional) const;
    bool GetSuitableTableValueForDemotionToScalar(const std::string& name, Variant& value,
                                                  bool& wrongType) const;
    std::string FindBindingFault() const;
    std::string FindUndefinedParameter() const;
    std::string FindRepeatedParameter() const;

    bool m_allowAnonymous;
    bool m_allowUndefined;
    const MethodParameters& m_parameters;
    std::map<std::string, Binding> m_bindings;
};

}  // namespace quillon
