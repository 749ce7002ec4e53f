#include "quillon/MethodMetadata.h"

#include <algorithm>
#include <stdexcept>

#include "base/TextOrEmpty.h"

namespace quillon {
namespace {

template <class Items>
bool Contains(const Items& items, const char* name) {
    return std::any_of(items.begin(), items.end(), [wanted = base::TextOrEmpty(name)](const auto& item) {
        return base::TextOrEmpty(item.first) == wanted;
    });
}

}  // namespace

const char* const IMethodMetadataReader::m_versions[12] = {
    "Not specified", "no", "1.5", "2.0", "2.1", "3.0", "3.1", "3.2", "3.3", "4.0", "4.1", "5.0"};
const char* const IMethodMetadataReader::m_platforms[6] = {"Windows",      "Linux",        "MacOS",
                                                           "SolarisIntel", "SolarisSparc", "Android"};
const char* const IMethodMetadataReader::m_flagNames[6] = {"Executes external process",
                                                           "Intensive I/O",
                                                           "Intensive CPU",
                                                           "May modify system state",
                                                           "Performs network activity",
                                                           "Not recommended in production environment"};
// The linker may give two empty literals one address, so this is no literal.
static constexpr char kEmpty[1] = {};
const char* const MethodMetadata::m_empty = kEmpty;

IMethodMetadataReader::~IMethodMetadataReader() = default;
IMethodMetadata::~IMethodMetadata() = default;
MethodMetadata::MethodMetadata() = default;
MethodMetadata::~MethodMetadata() = default;

bool MethodMetadata::IsUndocumented() const { return m_undocumented; }
const char* MethodMetadata::MethodName() const { return m_methodName; }
const char* MethodMetadata::Description() const { return m_description; }
const char* MethodMetadata::Example() const { return m_example; }
bool MethodMetadata::HasFlags() const { return m_hasFlags; }
bool MethodMetadata::HasWarnings() const { return m_warnings.HasSome(); }
bool MethodMetadata::HasNotes() const { return m_notes.HasSome(); }
bool MethodMetadata::HasAdditionalParameters() const { return m_additionalParameters != m_empty; }
const char* MethodMetadata::AdditionalParametersDescription() const { return m_additionalParameters; }
bool MethodMetadata::HasAdditionalColumns() const { return m_additionalColumns != m_empty; }
const char* MethodMetadata::AdditionalColumnsDescription() const { return m_additionalColumns; }
bool MethodMetadata::IsDeprecated() const { return m_deprecation.IsDeprecated(); }

void MethodMetadata::VisitIntroduced(
    const std::function<void(const char* platform, const char* version)>& visitor) const {
    if (!m_undocumented) m_introduction.Visit(visitor);
}

void MethodMetadata::VisitDeprecated(
    const std::function<void(const char* version, const char* text)>& visitor) const {
    if (!m_undocumented) m_deprecation.Visit(visitor);
}

void MethodMetadata::VisitParameter(
    const std::function<void(const char* name, const MethodParameter& parameter)>& visitor) const {
    for (const auto& [name, parameter] : m_parameters) visitor(name, *parameter);
}

void MethodMetadata::VisitColumn(
    const std::function<void(const char* name, const MethodColumn& column)>& visitor) const {
    for (const auto& [name, column] : m_columns) visitor(name, *column);
}

void MethodMetadata::VisitWarning(const std::function<void(const char* text)>& visitor) const {
    m_warnings.Visit(visitor);
}

void MethodMetadata::VisitNote(const std::function<void(const char* text)>& visitor) const {
    m_notes.Visit(visitor);
}

void MethodMetadata::VisitFlag(const std::function<void(const char* text)>& visitor) const {
    for (std::size_t flag = 0; flag < m_flags.size(); ++flag) {
        if (m_flags[flag]) visitor(m_flagNames[flag]);
    }
}

void MethodMetadata::Undocumented() { m_undocumented = true; }

void MethodMetadata::MethodName(const char* name) {
    ThrowIfUndefined();
    m_methodName = name;
}

void MethodMetadata::Description(const char* text) { m_description = text; }
void MethodMetadata::Warning(const char* text) { m_warnings.Register(text); }
void MethodMetadata::Note(const char* text) { m_notes.Register(text); }
void MethodMetadata::Example(const char* text) { m_example = text; }
void MethodMetadata::HasAdditionalParameters(const char* description) {
    m_additionalParameters = description;
}
void MethodMetadata::HasAdditionalColumns(const char* description) { m_additionalColumns = description; }

void MethodMetadata::Flags(const std::vector<MetadataFlag>& flags) {
    m_hasFlags = true;
    for (const MetadataFlag flag : flags) {
        bool& isSet = m_flags.at(static_cast<std::size_t>(flag));
        if (isSet) ThrowFlagAlreadySet(flag);
        isSet = true;
    }
}

void MethodMetadata::BindParameter(const char* name, MethodParameter* parameter) {
    std::shared_ptr<MethodParameter> owned(parameter);
    ThrowIfUndefined();
    if (Contains(m_parameters, name)) ThrowAlreadyInserted("Parameter", name);
    if (!owned) throw std::invalid_argument("No parameter to bind");
    m_parameters.emplace_back(name, std::move(owned));
}

void MethodMetadata::BindColumn(const char* name, MethodColumn* column) {
    std::shared_ptr<MethodColumn> owned(column);
    ThrowIfUndefined();
    if (Contains(m_columns, name)) ThrowAlreadyInserted("Column", name);
    if (!owned) throw std::invalid_argument("No column to bind");
    m_columns.emplace_back(name, std::move(owned));
}

IMethodMetadata& MethodMetadata::Introduced(MetadataAgentVersion version,
                                            const std::vector<AgentVersionPlatformPair>& exceptions) {
    m_introduction.Register(version, exceptions);
    return *this;
}

IMethodMetadata& MethodMetadata::Deprecated(MetadataAgentVersion version, const char* text) {
    m_deprecation.Register(version, text);
    return *this;
}

void MethodMetadata::ThrowAlreadyInserted(const char* kind, const char* name) {
    std::stringstream message;
    message << kind << " " << base::TextOrEmpty(name) << " has already been inserted";
    MetadataUtils::LogThenThrow(message);
}

void MethodMetadata::ThrowFlagAlreadySet(MetadataFlag flag) {
    std::stringstream message;
    message << "Flag '" << m_flagNames[flag] << "' has already been specified";
    MetadataUtils::LogThenThrow(message);
}

void MethodMetadata::ThrowIfUndefined() const {
    if (m_undocumented) throw std::runtime_error("MethodMetadata is already marked as undefined");
}

}  // namespace quillon
