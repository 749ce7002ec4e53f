#include "simulation/wmi/WmiTarget.h"

#include <algorithm>
#include <stdexcept>

#include "simulation/WbemCode.h"
#include "simulation/wmi/WmiCoercion.h"
#include "simulation/wmi/WmiPath.h"

namespace quillon::simulation {

namespace {

/// Whether the path names exactly the keys of the class.
bool NamesKeys(const WmiSchema& schema, const WmiPath& path) {
    if (path.isSingleton) return schema.keys.empty();
    if (path.keys.size() != schema.keys.size()) return false;
    if (path.keys.size() == 1 && path.keys.front().first.empty()) return true;
    const auto names = schema.KeyNames();
    return std::all_of(names.begin(), names.end(), [&path](const std::wstring& name) {
        return std::any_of(path.keys.begin(), path.keys.end(),
                           [&name](const auto& key) { return NameEqual()(key.first, name); });
    });
}

/// The instance's relative path as the instance itself gives it; nothing when a key has no such value.
std::optional<std::wstring> CanonicalPath(const WmiSchema& schema, const WmiPath& path) {
    WmiRow row = *schema.defaults;
    for (const auto& [name, text] : path.keys) {
        const std::size_t only = schema.keys.front();
        const auto& property = name.empty() ? schema.shape->Properties()[only] : *schema.shape->Find(name);
        if (FAILED(Coerce(TextVariant(text), property.type, row[property.slot]))) return std::nullopt;
    }
    return RelativePath(schema, row);
}

HRESULT FindLive(const WmiSchema& schema, const std::wstring& relativePath, WmiDetail detail,
                 WmiRowPtr& found) {
    std::vector<WmiValues> rows;
    const auto wanted = detail == WmiDetail::Keys ? schema.KeyNames() : std::vector<std::wstring>();
    if (const HRESULT result = AskProvider(schema, wanted, rows); FAILED(result)) return result;
    for (const WmiValues& values : rows) {
        WmiRowPtr row;
        try {
            row = MakeRow(schema, values);
        } catch (const std::invalid_argument&) {
            return Code(WBEM_E_PROVIDER_FAILURE);
        }
        const auto path = RelativePath(schema, *row);
        if (!path || !NameEqual()(*path, relativePath)) continue;
        found = std::move(row);
        return S_OK;
    }
    return Code(WBEM_E_NOT_FOUND);
}

HRESULT FindStored(WmiState& state, const WmiSchema& schema, const std::wstring& relativePath,
                   WmiRowPtr& found) {
    const std::lock_guard lock(state.mutex);
    const WmiTable* const table = state.FindTable(schema.nameSpace, schema.className);
    if (table != nullptr && table->Schema().get() == &schema) found = table->Find(relativePath);
    return found == nullptr ? Code(WBEM_E_NOT_FOUND) : S_OK;
}

WmiSchemaPtr FindSchema(WmiState& state, const std::wstring& nameSpace, const std::wstring& className) {
    const std::lock_guard lock(state.mutex);
    const WmiTable* const table = state.FindTable(nameSpace, className);
    return table == nullptr ? nullptr : table->Schema();
}

}  // namespace

HRESULT FindTarget(WmiState& state, const std::wstring& nameSpace, std::wstring_view text, WmiDetail detail,
                   WmiTarget& target) {
    const auto path = ParseWmiPath(text);
    if (!path || (path->server && !IsThisHost(*path->server, state.host))) {
        return Code(WBEM_E_INVALID_OBJECT_PATH);
    }
    target.schema = FindSchema(state, path->nameSpace.value_or(nameSpace), path->className);
    if (target.schema == nullptr) return Code(WBEM_E_NOT_FOUND);
    const WmiSchema& schema = *target.schema;
    target.path = FullPath(schema, schema.className);
    if (path->isClass) return S_OK;

    if (!NamesKeys(schema, *path)) return Code(WBEM_E_INVALID_OBJECT_PATH);
    const auto relativePath = CanonicalPath(schema, *path);
    if (!relativePath) return Code(WBEM_E_NOT_FOUND);
    const HRESULT result = schema.live ? FindLive(schema, *relativePath, detail, target.row)
                                       : FindStored(state, schema, *relativePath, target.row);
    if (FAILED(result)) return result;
    target.path = FullPath(schema, RelativePath(schema, *target.row).value_or(*relativePath));
    return S_OK;
}

}  // namespace quillon::simulation
