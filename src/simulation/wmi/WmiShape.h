#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Wbem.h"
#include "simulation/NameMap.h"

namespace quillon::simulation {

/// An object's values; never changed once it is shared.
using WmiRow = std::vector<_variant_t>;
using WmiRowPtr = std::shared_ptr<const WmiRow>;

/// The properties that objects of one kind show, in their order, and where their values stand in a row.
/// Never changes.
class WmiShape {
public:
    struct Property {
        std::wstring name;
        CIMTYPE type;
        std::size_t slot;
    };

    WmiShape(std::vector<Property> properties, bool showsPath);

    /// Returns the property; null when there is none of that name.
    const Property* Find(std::wstring_view name) const;
    const std::vector<Property>& Properties() const { return m_properties; }
    /// Whether the properties that make the path are among those that were asked for.
    bool ShowsPath() const { return m_showsPath; }
    /// A new array of names, those of the system's properties first; null when there is no memory.
    SAFEARRAY* Names(bool systemOnes, bool ownOnes) const;

private:
    struct ArrayDeleter {
        void operator()(SAFEARRAY* array) const { SafeArrayDestroy(array); }
    };

    std::vector<Property> m_properties;
    NameMap<std::size_t> m_index;
    bool m_showsPath;
    std::unique_ptr<SAFEARRAY, ArrayDeleter> m_ownNames;
};

using WmiShapePtr = std::shared_ptr<const WmiShape>;

/// Position of a system property, such as __PATH, in WMI's order.
std::optional<std::size_t> FindSystemProperty(std::wstring_view name);
CIMTYPE SystemPropertyType(std::size_t position);

}  // namespace quillon::simulation
