#include "simulation/wmi/WmiSchema.h"

#include <stdexcept>
#include <utility>

#include "base/Utf.h"
#include "simulation/WbemCode.h"
#include "simulation/wmi/WmiCoercion.h"
#include "simulation/wmi/WmiErrorDetails.h"

namespace quillon::simulation {

namespace {

constexpr wchar_t kReturnValue[] = L"ReturnValue";
constexpr LONG kGenusClass = 1;
constexpr LONG kGenusInstance = 2;

std::vector<WmiShape::Property> Columns(const std::vector<WmiProperty>& properties) {
    std::vector<WmiShape::Property> columns;
    for (const WmiProperty& property : properties) {
        columns.push_back({property.name, property.type, columns.size()});
    }
    return columns;
}

WmiRowPtr Defaults(const std::vector<WmiProperty>& properties) {
    auto row = std::make_shared<WmiRow>();
    for (const WmiProperty& property : properties) row->push_back(property.value);
    return row;
}

std::size_t SlotOf(const WmiShape& shape, const std::wstring& name) {
    const auto* const property = shape.Find(name);
    if (property == nullptr) throw std::invalid_argument("no such property in the WMI class");
    return property->slot;
}

WmiSchemaPtr MakeParameters(const std::vector<WmiProperty>& parameters) {
    if (parameters.empty()) return nullptr;
    auto schema = std::make_shared<WmiSchema>();
    schema->className = L"__PARAMETERS";
    schema->shape = std::make_shared<const WmiShape>(Columns(parameters), false);
    schema->defaults = Defaults(parameters);
    return schema;
}

WmiSignature MakeSignature(WmiMethod method) {
    std::vector<WmiProperty> out = method.out;
    bool hasReturnValue = out.empty();  // a method without results has none at all
    for (const WmiProperty& parameter : out) {
        hasReturnValue = hasReturnValue || NameEqual()(parameter.name, kReturnValue);
    }
    if (!hasReturnValue) out.push_back({kReturnValue, CIM_UINT32, IntegerVariant(VT_I4, 0)});
    WmiSchemaPtr in = MakeParameters(method.in);
    return {std::move(method), std::move(in), MakeParameters(out)};
}

bool IsNull(const VARIANT& value) { return value.vt == VT_EMPTY || value.vt == VT_NULL; }

std::wstring Quoted(std::wstring_view text) {
    std::wstring quoted = L"\"";
    for (const wchar_t c : text) {
        if (c == L'"' || c == L'\\') quoted += L'\\';
        quoted += c;
    }
    return quoted += L'"';
}

std::wstring KeyText(const VARIANT& value, CIMTYPE type) {
    if (type == CIM_BOOLEAN && value.vt == VT_BOOL)
        return value.boolVal != VARIANT_FALSE ? L"TRUE" : L"FALSE";
    const std::wstring text = CimText(value, type);
    const bool isText = type == CIM_STRING || type == CIM_DATETIME || type == CIM_REFERENCE;
    return isText ? Quoted(text) : text;
}

_variant_t NullVariant() {
    _variant_t value;
    value.vt = VT_NULL;
    return value;
}

_variant_t NoTexts() {
    _variant_t value;
    value.parray = SafeArrayCreateVector(VT_BSTR, 0, 0);
    value.vt = VT_ARRAY | VT_BSTR;
    return value;
}

std::optional<std::wstring> PathOf(const WmiView& view) {
    if (view.schema.IsParameters()) return std::nullopt;
    if (view.isClass) return view.schema.className;
    return view.shape.ShowsPath() ? RelativePath(view.schema, view.row) : std::nullopt;
}

_variant_t TextOrNull(const std::wstring& text) { return text.empty() ? NullVariant() : TextVariant(text); }

}  // namespace

std::vector<std::wstring> WmiSchema::KeyNames() const {
    std::vector<std::wstring> names;
    for (const std::size_t key : keys) names.push_back(shape->Properties()[key].name);
    return names;
}

WmiSchemaPtr MakeSchema(const std::wstring& host, const std::wstring& nameSpace, WmiClass wmiClass) {
    auto schema = std::make_shared<WmiSchema>();
    schema->host = host;
    schema->nameSpace = nameSpace;
    schema->className = std::move(wmiClass.name);
    schema->shape = std::make_shared<const WmiShape>(Columns(wmiClass.properties), true);
    schema->defaults = Defaults(wmiClass.properties);
    for (const std::wstring& key : wmiClass.keys) schema->keys.push_back(SlotOf(*schema->shape, key));
    for (WmiMethod& method : wmiClass.methods) {
        const std::wstring name = method.name;
        schema->methods.emplace(name, MakeSignature(std::move(method)));
    }
    schema->live = std::move(wmiClass.live);
    return schema;
}

WmiRowPtr MakeRow(const WmiSchema& schema, const WmiValues& values) {
    auto row = std::make_shared<WmiRow>(*schema.defaults);
    for (const auto& [name, value] : values) (*row)[SlotOf(*schema.shape, name)] = value;
    return row;
}

namespace {

void NoteFailure(const WmiSchema& schema, const std::exception& failure) {
    try {
        NoteErrorDetails(L"Operation: ExecQuery; ProviderName: " + schema.className + L"; Description: " +
                         base::ToWide(failure.what()));
    } catch (const std::bad_alloc&) {  // the code says the rest
    }
}

}  // namespace

HRESULT AskProvider(const WmiSchema& schema, const std::vector<std::wstring>& wanted,
                    std::vector<WmiValues>& rows) {
    try {
        rows = schema.live(wanted);
        return S_OK;
    } catch (const std::exception& failure) {
        NoteFailure(schema, failure);
        return Code(WBEM_E_PROVIDER_FAILURE);
    }
}

std::optional<std::wstring> RelativePath(const WmiSchema& schema, const WmiRow& row) {
    if (schema.keys.empty()) return schema.className + L"=@";
    std::wstring path = schema.className;
    wchar_t separator = L'.';
    for (const std::size_t key : schema.keys) {
        const WmiShape::Property& property = schema.shape->Properties()[key];
        if (IsNull(row[key])) return std::nullopt;
        path += separator;
        path += property.name;
        path += L'=';
        path += KeyText(row[key], property.type);
        separator = L',';
    }
    return path;
}

std::wstring FullPath(const WmiSchema& schema, const std::wstring& relativePath) {
    return L"\\\\" + schema.host + L'\\' + schema.nameSpace + L':' + relativePath;
}

_variant_t SystemPropertyValue(std::size_t position, const WmiView& view) {
    switch (position) {
        case 0:
            return IntegerVariant(VT_I4, view.isClass ? kGenusClass : kGenusInstance);
        case 1:
        case 3:  // every class is the root of its own family
            return TextVariant(view.schema.className);
        case 4:
            return TextOrNull(PathOf(view).value_or(L""));
        case 5:
            return IntegerVariant(VT_I4, static_cast<LONG>(view.shape.Properties().size()));
        case 6:
            return NoTexts();
        case 7:
            return TextOrNull(view.schema.host);
        case 8:
            return TextOrNull(view.schema.nameSpace);
        case 9: {
            const auto path = PathOf(view);
            return path ? TextVariant(FullPath(view.schema, *path)) : NullVariant();
        }
        default:
            return NullVariant();
    }
}

}  // namespace quillon::simulation
