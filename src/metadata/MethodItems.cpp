#include <stdexcept>

#include "quillon/MethodMetadata.h"

namespace quillon {
namespace {

constexpr const char* kMismatch =
    "mismatched parameter and optional default value types; default value named '";

/// Checks a version before it is stored, as it is an index of the table of names later.
IMethodMetadataReader::MetadataAgentVersion Checked(IMethodMetadataReader::MetadataAgentVersion version) {
    if (version < IMethodMetadataReader::NotSpecified || version > IMethodMetadataReader::V5_0)
        throw std::out_of_range("No such agent version");
    return version;
}

}  // namespace

IMethodParameterReader::~IMethodParameterReader() = default;
IMethodColumnReader::~IMethodColumnReader() = default;

void NotesOrWarnings::Register(const char* text) { m_texts.push_back(text); }
bool NotesOrWarnings::HasSome() const { return !m_texts.empty(); }

void NotesOrWarnings::Visit(const std::function<void(const char* text)>& visitor) const {
    for (const char* text : m_texts) visitor(text);
}

void Deprecation::Register(IMethodMetadataReader::MetadataAgentVersion version, const char* text) {
    if (IsDeprecated()) MetadataUtils::ThrowAlreadyDeprecated(nullptr);
    m_version = Checked(version);
    m_text = text;
}

bool Deprecation::IsDeprecated() const { return m_version != IMethodMetadataReader::NotSpecified; }

void Deprecation::Visit(const std::function<void(const char* version, const char* text)>& visitor) const {
    if (IsDeprecated()) visitor(IMethodMetadataReader::m_versions[m_version], m_text);
}

void Introduction::Register(IMethodMetadataReader::MetadataAgentVersion version,
                            const std::vector<IMethodMetadata::AgentVersionPlatformPair>& exceptions) {
    m_versions.fill(Checked(version));
    std::array<bool, 6> overridden{};
    for (const auto& exception : exceptions) {
        const auto platform = static_cast<std::size_t>(exception.platform);
        if (overridden.at(platform)) MetadataUtils::ThrowPlatformAlreadyOverridden(exception.platform);
        overridden[platform] = true;
        m_versions[platform] = Checked(exception.version);
    }
}

bool Introduction::WasIntroduced() const {
    for (const auto version : m_versions) {
        if (version != IMethodMetadataReader::NotSpecified) return true;
    }
    return false;
}

void Introduction::Visit(
    const std::function<void(const char* platform, const char* version)>& visitor) const {
    for (std::size_t platform = 0; platform < m_versions.size(); ++platform) {
        const auto version = m_versions[platform];
        if (version == IMethodMetadataReader::NotSpecified) continue;
        visitor(IMethodMetadataReader::m_platforms[platform], IMethodMetadataReader::m_versions[version]);
    }
}

MethodParameter::MethodParameter() : m_type(typeid(void).hash_code()) {}
MethodParameter::~MethodParameter() = default;

const char* MethodParameter::Type() const { return MetadataUtils::Type(m_type); }
unsigned long long MethodParameter::TypeInfoHashCode() const { return m_type; }

bool MethodParameter::GetOptionalValue(Variant& value) const {
    if (!m_hasDefault) return false;
    value = m_default;
    return true;
}

const DataTable* MethodParameter::OptionalTable() const { return m_defaultTable; }
const char* MethodParameter::Description() const { return m_description; }
bool MethodParameter::HasWarnings() const { return m_warnings.HasSome(); }
bool MethodParameter::HasNotes() const { return m_notes.HasSome(); }
bool MethodParameter::WasIntroduced() const { return m_introduction.WasIntroduced(); }
bool MethodParameter::IsDeprecated() const { return m_deprecation.IsDeprecated(); }

void MethodParameter::VisitWarning(const std::function<void(const char* text)>& visitor) const {
    m_warnings.Visit(visitor);
}

void MethodParameter::VisitNote(const std::function<void(const char* text)>& visitor) const {
    m_notes.Visit(visitor);
}

void MethodParameter::VisitIntroduced(
    const std::function<void(const char* platform, const char* version)>& visitor) const {
    m_introduction.Visit(visitor);
}

void MethodParameter::VisitDeprecated(
    const std::function<void(const char* version, const char* text)>& visitor) const {
    m_deprecation.Visit(visitor);
}

void MethodParameter::SetType(const std::type_info& type) { m_type = type.hash_code(); }
void MethodParameter::Description(const char* text) { m_description = text; }
void MethodParameter::Note(const char* text) { m_notes.Register(text); }
void MethodParameter::Warning(const char* text) { m_warnings.Register(text); }

void MethodParameter::OptionalValue(const std::type_info& type, const Variant& value) {
    if (type.hash_code() != m_type) {
        std::stringstream message;
        message << kMismatch << value.GetName() << "' is of type " << value.GetTypeName()
                << " and has value '" << value.AsString() << "', but supplied value is of type "
                << type.name();
        MetadataUtils::LogThenThrow(message);
    }
    m_default = value;  // first, as it may throw
    m_hasDefault = true;
}

void MethodParameter::OptionalValue(const std::string& name, const DataTable* const& table) {
    if (typeid(const DataTable*).hash_code() != m_type) {
        std::stringstream message;
        message << kMismatch << name << "' is of type " << typeid(const DataTable*).name() << ".";
        MetadataUtils::LogThenThrow(message);
    }
    m_hasDefault = true;
    m_defaultTable = table;
}

void MethodParameter::Introduced(IMethodMetadataReader::MetadataAgentVersion version,
                                 const std::vector<IMethodMetadata::AgentVersionPlatformPair>& exceptions) {
    m_introduction.Register(version, exceptions);
}

void MethodParameter::Deprecated(IMethodMetadataReader::MetadataAgentVersion version, const char* text) {
    m_deprecation.Register(version, text);
}

MethodColumn::MethodColumn() : m_type(typeid(void).hash_code()) {}
MethodColumn::~MethodColumn() = default;

const char* MethodColumn::Type() const { return MetadataUtils::Type(m_type); }
bool MethodColumn::Alternative() const { return m_alternative; }
const char* MethodColumn::Description() const { return m_description; }
bool MethodColumn::HasWarnings() const { return m_warnings.HasSome(); }
bool MethodColumn::HasNotes() const { return m_notes.HasSome(); }
bool MethodColumn::WasIntroduced() const { return m_introduction.WasIntroduced(); }
bool MethodColumn::IsDeprecated() const { return m_deprecation.IsDeprecated(); }

void MethodColumn::VisitWarning(const std::function<void(const char* text)>& visitor) const {
    m_warnings.Visit(visitor);
}

void MethodColumn::VisitNote(const std::function<void(const char* text)>& visitor) const {
    m_notes.Visit(visitor);
}

void MethodColumn::VisitIntroduced(
    const std::function<void(const char* platform, const char* version)>& visitor) const {
    m_introduction.Visit(visitor);
}

void MethodColumn::VisitDeprecated(
    const std::function<void(const char* version, const char* text)>& visitor) const {
    m_deprecation.Visit(visitor);
}

void MethodColumn::Type(unsigned long long hash) { m_type = hash; }
void MethodColumn::Alternative(bool alternative) { m_alternative = alternative; }
void MethodColumn::Description(const char* text) { m_description = text; }
void MethodColumn::Warning(const char* text) { m_warnings.Register(text); }
void MethodColumn::Note(const char* text) { m_notes.Register(text); }

void MethodColumn::Introduced(IMethodMetadataReader::MetadataAgentVersion version,
                              const std::vector<IMethodMetadata::AgentVersionPlatformPair>& exceptions) {
    m_introduction.Register(version, exceptions);
}

void MethodColumn::Deprecated(IMethodMetadataReader::MetadataAgentVersion version, const char* text) {
    m_deprecation.Register(version, text);
}

}  // namespace quillon
