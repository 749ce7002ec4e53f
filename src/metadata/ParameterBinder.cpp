#include "quillon/ParameterBinder.h"

#include <exception>
#include <new>
#include <set>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <utility>

#include "metadata/ScalarConversion.h"

namespace quillon {
namespace {

template <class T>
bool TryConvert(const Variant& value, T& target) {
    try {
        metadata::Convert(value, target);
        return true;
    } catch (const std::bad_alloc&) {
        throw;  // the call is not at fault
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace

/// The faults of a call, each once, until there are as many as are wanted.
class ParameterBinder::Faults {
public:
    explicit Faults(ParameterFaults wanted) : m_wanted(wanted) {}

    bool AreEnough() const { return m_wanted == ParameterFaults::First && !m_named.empty(); }
    void Add(const std::string& fault) {
        if (!m_seen.insert(fault).second) return;
        if (m_seen.size() <= kMostNamedFaults) m_named += (m_named.empty() ? "" : "; ") + fault;
    }
    std::string Text() const {
        if (m_seen.size() <= kMostNamedFaults) return m_named;
        return m_named + "; and " + std::to_string(m_seen.size() - kMostNamedFaults) + " more";
    }

private:
    ParameterFaults m_wanted;
    std::set<std::string> m_seen;
    std::string m_named;
};

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

bool ParameterBinder::Bind(InvocationResult& result) const { return Bind(result, ParameterFaults::First); }

bool ParameterBinder::Bind(InvocationResult& result, ParameterFaults wanted) const {
    Faults faults(wanted);
    FindBindingFaults(faults);
    if (!faults.AreEnough() && !m_allowUndefined) FindUndefinedParameters(faults);
    if (!faults.AreEnough()) FindRepeatedParameters(faults);
    if (faults.Text().empty()) return true;
    result.resultCode = InvocationResult::kBadParameter;
    result.errorMessage = faults.Text();
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

void ParameterBinder::FindBindingFaults(Faults& faults) const {
    for (const auto& [name, bind] : m_bindings) {
        if (faults.AreEnough()) return;
        switch (bind()) {
            case ParameterBindingResult::Success:
                break;
            case ParameterBindingResult::WrongType:
                faults.Add("Value is wrong data-type for parameter '" + name + "'");
                break;
            case ParameterBindingResult::Missing:
                faults.Add("Missing parameter '" + name + "'");
                break;
        }
    }
}

void ParameterBinder::FindUndefinedParameters(Faults& faults) const {
    const auto check = [&](const std::string& name, const char* anonymous) {
        if (faults.AreEnough()) return;
        if (name.empty()) {
            if (!m_allowAnonymous) faults.Add(anonymous);
        } else if (!m_bindings.contains(name)) {
            faults.Add("Undefined parameter named '" + name + "'");
        }
    };
    for (const Variant& scalar : m_parameters.scalars)
        check(scalar.GetName(), "Anonymous parameters are not allowed for this method");
    for (const auto& [name, table] : m_parameters.tables)
        check(name, "Anonymous (table) parameters are not allowed for this method");
}

void ParameterBinder::FindRepeatedParameters(Faults& faults) const {
    std::set<std::string_view> seen;
    const auto check = [&](const std::string& name) {
        if (!seen.insert(name).second && !faults.AreEnough())
            faults.Add("Parameter '" + name + "' is specified more than once");
    };
    for (const Variant& scalar : m_parameters.scalars) {
        if (!scalar.GetName().empty()) check(scalar.GetName());
    }
    for (const auto& [name, table] : m_parameters.tables) check(name);
}

}  // namespace quillon
