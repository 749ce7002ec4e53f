#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "quillon/Export.h"
#include "quillon/InvocationResult.h"
#include "quillon/MethodParameters.h"

namespace quillon {

/// Says how one binding ended.
enum class ParameterBindingResult : std::int32_t { Success = 0, Missing = 1, WrongType = 2 };

/// Says how many faults of a call Bind() names.
enum class ParameterFaults : std::int32_t { First = 0, All = 1 };

/// The types of variables that a parameter can be bound to: std::string, long long, double, bool and
/// const DataTable*. An int is none of them: bind a long long, and check its range. A variable of any
/// other type is refused by the compiler, whose message names these.
template <class T>
concept BindableVariable = std::same_as<T, std::string> || std::same_as<T, long long> ||
    std::same_as<T, double> || std::same_as<T, bool> || std::same_as<T, const DataTable*>;

/// Fails to compile for a variable that no parameter can be bound to, and names the types that are allowed.
template <class T>
constexpr void RefuseVariable() {
    static_assert(BindableVariable<T>,
                  "A parameter is bound to a std::string, long long, double, bool or const DataTable*");
}

/// Checks the parameters of one call against a method's typed variables and fills the variables.
/// Declare each variable, then call Bind(); DescribedBinder.h takes what is mandatory, and the defaults,
/// from the method's description instead. The parameters and the variables, which are not owned,
/// must live until then. Names are compared byte by byte. One thread uses a binder.
///
/// @code
/// void Count(const MethodParameters& parameters, InvocationResult& result) {
///     std::string path;
///     bool recursive = false;
///     ParameterBinder binder(parameters, false, false);
///     binder.AddMandatoryBinding("path", path);
///     binder.AddOptionalBinding("recursive", recursive);
///     if (!binder.Bind(result)) return;  // the result says what is wrong with the call
///     result.resultTable.AddRow(VariantList(Variant("Path", path), Variant("Recursive", recursive)));
/// }
/// @endcode
class QUILLON_API ParameterBinder {
public:
    /// Starts without bindings. `allowAnonymous` accepts parameters without a name, and
    /// `allowUndefined` those without a binding as well.
    ParameterBinder(const MethodParameters& parameters, bool allowAnonymous, bool allowUndefined);
    ~ParameterBinder();
    ParameterBinder(const ParameterBinder&) = delete;
    ParameterBinder& operator=(const ParameterBinder&) = delete;

    /// Declares a variable. A second binding under a name replaces the first. A text accepts time points as
    /// ISO 8601, an integer booleans, a boolean integers, a double integers; a table of one row and one cell
    /// stands for its scalar.
    template <BindableVariable T>
    void AddBinding(const std::string& name, T* target, bool optional) {
        Declare(name, target, optional);
    }
    /// Declares a variable that the call must give. When that fails, a scalar target becomes empty,
    /// 0 or false.
    template <BindableVariable T>
    void AddMandatoryBinding(const std::string& name, T& target) {
        AddBinding(name, &target, false);
    }
    /// Declares a variable that keeps its value when the parameter is absent.
    template <BindableVariable T>
    void AddOptionalBinding(const std::string& name, T& target) {
        AddBinding(name, &target, true);
    }

    /// Declares a variable that holds nothing when the parameter is absent or of another type.
    template <BindableVariable T>
    void AddOptionalBinding(const std::string& name, std::optional<T>& target) {
        DeclareOptional(name, target);
    }

    // What the compiler says of any other variable.
    template <class T>
    requires(!BindableVariable<T>) void AddBinding(const std::string&, T*, bool) { RefuseVariable<T>(); }
    template <class T>
    requires(!BindableVariable<T>) void AddMandatoryBinding(const std::string&, T&) { RefuseVariable<T>(); }
    template <class T>
    requires(!BindableVariable<T>) void AddOptionalBinding(const std::string&, T&) { RefuseVariable<T>(); }

    /// Fills the variables and returns true; or sets result code 2 and the message of the first
    /// failure, and returns false. The order is: bindings by ascending names ("Missing parameter
    /// '...'", "Value is wrong data-type for parameter '...'"), parameters without a binding, names
    /// given more than once. A value of another type also logs the Error entry of its getter
    /// (Variant.h). Nothing is thrown for a faulty call.
    [[nodiscard]] bool Bind(InvocationResult& result) const;
    /// Does the same; with All, every binding is tried, and the message names each fault once, in that
    /// order and joined by "; ". After kMostNamedFaults it only tells how many more there are.
    [[nodiscard]] bool Bind(InvocationResult& result, ParameterFaults wanted) const;
    static constexpr std::size_t kMostNamedFaults = 20;

private:
    class Faults;
    using Binding = std::function<ParameterBindingResult()>;

    // Exported, and so without constraints (see Variant::TryGetKind).
    template <class T>
    void Declare(const std::string& name, T* target, bool optional);
    template <class T>
    void DeclareOptional(const std::string& name, std::optional<T>& target);

    template <class T>
    ParameterBindingResult BindTarget(const std::string& name, T& target, bool optional) const;
    template <class T>
    ParameterBindingResult BindScalar(const std::string& name, T& target, bool optional) const;
    ParameterBindingResult BindTable(const std::string& name, const DataTable*& target, bool optional) const;
    bool GetSuitableTableValueForDemotionToScalar(const std::string& name, Variant& value,
                                                  bool& wrongType) const;
    void FindBindingFaults(Faults& faults) const;
    void FindUndefinedParameters(Faults& faults) const;
    void FindRepeatedParameters(Faults& faults) const;

    bool m_allowAnonymous;
    bool m_allowUndefined;
    const MethodParameters& m_parameters;
    std::map<std::string, Binding> m_bindings;
};

}  // namespace quillon
