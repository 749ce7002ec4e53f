#pragma once

#include <set>
#include <string>
#include <vector>

#include "quillon/Export.h"
#include "quillon/IMethodMetadata.h"
#include "quillon/InvocationResult.h"
#include "quillon/MethodParameters.h"
#include "quillon/ParameterBinder.h"

namespace quillon {

/// Checks the parameters of one call against a method's description and fills the method's variables, so
/// that what a method describes and what it takes cannot differ. Made by MakeMethod() (Module.h) for each
/// call; the parameters, the description and the variables must live until Bind() has returned. A
/// variable that does not fit the description is the method's own mistake, and throws
/// std::invalid_argument with the names of the method and of the parameter. One thread uses a binder.
///
/// @code
/// void Count(DescribedBinder& call, InvocationResult& result) {
///     std::string path;
///     bool recursive = false;
///     call.Add("path", path);
///     call.Add("recursive", recursive);  // is the described default now
///     if (!call.Bind(result)) return;    // the result says all that is wrong with the call
///     result.resultTable.AddRow(VariantList(Variant("Path", path), Variant("Recursive", recursive)));
/// }
/// @endcode
class QUILLON_API DescribedBinder {
public:
    /// Starts without variables. Further parameters are allowed when the description says that a call may
    /// have them; parameters without a name then as well.
    DescribedBinder(const MethodParameters& parameters, const IMethodMetadataReader& method);
    ~DescribedBinder();
    DescribedBinder(const DescribedBinder&) = delete;
    DescribedBinder& operator=(const DescribedBinder&) = delete;

    /// Declares the variable of a described parameter. One with a default is optional, and the variable
    /// takes the default at once; any other is mandatory. Throws when the parameter is not described, is
    /// described with another type, or was declared before. A "datetime" is bound to a text, as ISO 8601.
    template <BindableVariable T>
    void Add(const std::string& name, T& target) {
        Declare(name, target);
    }
    // What the compiler says of any other variable.
    template <class T>
    requires(!BindableVariable<T>) void Add(const std::string&, T&) { RefuseVariable<T>(); }

    /// Fills the variables and returns true; or sets result code 2 and a message of all that is wrong with
    /// the call, as ParameterBinder::Bind() does with ParameterFaults::All, and returns false. Throws when
    /// a described parameter has no variable.
    [[nodiscard]] bool Bind(InvocationResult& result) const;

    /// Returns what is wrong with a call by its description alone, joined by "; "; the empty text when
    /// nothing is. Nothing is run.
    [[nodiscard]] static std::string FindFaults(const MethodParameters& parameters,
                                                const IMethodMetadataReader& method);

    /// Returns the parameters and the description that the binder was made with.
    const MethodParameters& Parameters() const { return m_parameters; }
    const IMethodMetadataReader& Description() const { return m_method; }

private:
    template <class T>
    void Declare(const std::string& name, T& target);  // exported, and so without constraints
    [[noreturn]] void ThrowMistake(const std::string& name, const char* mistake) const;
    const MethodParameter& Find(const std::string& name) const;

    const MethodParameters& m_parameters;
    const IMethodMetadataReader& m_method;
    ParameterBinder m_binder;
    std::set<std::string> m_names;
};

}  // namespace quillon
