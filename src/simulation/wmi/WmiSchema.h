#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulation/wmi/WmiRepository.h"
#include "simulation/wmi/WmiShape.h"

namespace quillon::simulation {

struct WmiSchema;
using WmiSchemaPtr = std::shared_ptr<const WmiSchema>;

/// A method and the parameters that it takes and gives; null where it has none.
struct WmiSignature {
    WmiMethod method;
    WmiSchemaPtr in, out;
};

/// A class, or the parameters of a method, as it was set up. Never changes.
struct WmiSchema {
    std::wstring host, nameSpace;  // empty for parameters
    std::wstring className;
    WmiShapePtr shape;
    WmiRowPtr defaults;
    std::vector<std::size_t> keys;  // slots
    NameMap<WmiSignature> methods;
    std::function<std::vector<WmiValues>(const std::vector<std::wstring>& wanted)> live;

    bool IsParameters() const { return nameSpace.empty(); }
    std::vector<std::wstring> KeyNames() const;
};

/// Throws std::invalid_argument when a key is no property.
WmiSchemaPtr MakeSchema(const std::wstring& host, const std::wstring& nameSpace, WmiClass wmiClass);
/// The defaults with `values` in their place, as they are. Throws std::invalid_argument when one has the name
/// of no property.
WmiRowPtr MakeRow(const WmiSchema& schema, const WmiValues& values);
/// Asks the provider of a live class; WBEM_E_PROVIDER_FAILURE when it throws.
HRESULT AskProvider(const WmiSchema& schema, const std::vector<std::wstring>& wanted,
                    std::vector<WmiValues>& rows);

/// Returns the path of an instance relative to its namespace; nothing when a key is NULL. A class without
/// keys has one instance, "Class=@".
std::optional<std::wstring> RelativePath(const WmiSchema& schema, const WmiRow& row);
std::wstring FullPath(const WmiSchema& schema, const std::wstring& relativePath);

/// An object as it is seen by those who ask for its system properties.
struct WmiView {
    const WmiSchema& schema;
    const WmiShape& shape;
    const WmiRow& row;
    bool isClass;
};
_variant_t SystemPropertyValue(std::size_t position, const WmiView& view);

}  // namespace quillon::simulation
