#include "simulation/wmi/WmiShape.h"

#include <array>
#include <new>
#include <utility>

namespace quillon::simulation {

namespace {

struct SystemProperty {
    std::wstring_view name;
    CIMTYPE type;
};

constexpr std::array<SystemProperty, 10> kSystemProperties{{
    {L"__GENUS", CIM_SINT32},
    {L"__CLASS", CIM_STRING},
    {L"__SUPERCLASS", CIM_STRING},
    {L"__DYNASTY", CIM_STRING},
    {L"__RELPATH", CIM_STRING},
    {L"__PROPERTY_COUNT", CIM_SINT32},
    {L"__DERIVATION", static_cast<CIMTYPE>(CIM_STRING) | static_cast<CIMTYPE>(CIM_FLAG_ARRAY)},
    {L"__SERVER", CIM_STRING},
    {L"__NAMESPACE", CIM_STRING},
    {L"__PATH", CIM_STRING},
}};

SAFEARRAY* MakeNames(const std::vector<std::wstring_view>& names) {
    SAFEARRAY* const array = SafeArrayCreateVector(VT_BSTR, 0, static_cast<ULONG>(names.size()));
    if (array == nullptr) return nullptr;
    for (LONG i = 0; i < static_cast<LONG>(names.size()); ++i) {
        const std::wstring_view name = names[static_cast<std::size_t>(i)];
        const _bstr_t text(SysAllocStringLen(name.data(), static_cast<unsigned int>(name.size())), false);
        SafeArrayPutElement(array, &i, const_cast<wchar_t*>(static_cast<const wchar_t*>(text)));
    }
    return array;
}

}  // namespace

WmiShape::WmiShape(std::vector<Property> properties, bool showsPath)
    : m_properties(std::move(properties)), m_showsPath(showsPath) {
    std::vector<std::wstring_view> names;
    for (const Property& property : m_properties) {
        m_index.emplace(property.name, names.size());
        names.push_back(property.name);
    }
    m_ownNames.reset(MakeNames(names));
    if (m_ownNames == nullptr) throw std::bad_alloc();
}

const WmiShape::Property* WmiShape::Find(std::wstring_view name) const {
    const auto found = m_index.find(name);
    return found == m_index.end() ? nullptr : &m_properties[found->second];
}

SAFEARRAY* WmiShape::Names(bool systemOnes, bool ownOnes) const {
    if (!systemOnes) {
        SAFEARRAY* copy = nullptr;
        SafeArrayCopy(m_ownNames.get(), &copy);
        return copy;
    }
    std::vector<std::wstring_view> names;
    for (const SystemProperty& property : kSystemProperties) names.push_back(property.name);
    if (ownOnes) {
        for (const Property& property : m_properties) names.push_back(property.name);
    }
    return MakeNames(names);
}

std::optional<std::size_t> FindSystemProperty(std::wstring_view name) {
    if (!name.starts_with(L"__")) return std::nullopt;
    for (std::size_t i = 0; i < kSystemProperties.size(); ++i) {
        if (base::EqualIgnoringCase(kSystemProperties[i].name, name)) return i;
    }
    return std::nullopt;
}

CIMTYPE SystemPropertyType(std::size_t position) { return kSystemProperties[position].type; }

}  // namespace quillon::simulation
