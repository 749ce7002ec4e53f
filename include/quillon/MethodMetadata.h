#pragma once

#include <array>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "quillon/DataTable.h"
#include "quillon/Export.h"
#include "quillon/IMethodMetadata.h"
#include "quillon/Variant.h"

namespace quillon {

/// Shared by the records: names of types, and the failures of a definition.
class QUILLON_API MetadataUtils {
public:
    MetadataUtils() = delete;

    /// The name of a type by its std::type_info::hash_code; "unknown" for any other.
    static const char* Type(unsigned long long hash);
    /// Logs the text at Error when a logger is registered, then throws it as std::runtime_error.
    [[noreturn]] static void LogThenThrow(std::stringstream& message);
    /// `name` may be null.
    [[noreturn]] static void ThrowAlreadyDeprecated(const char* name);
    [[noreturn]] static void ThrowPlatformAlreadyOverridden(IMethodMetadataReader::MetadataPlatform platform);
};

/// Texts in the order in which they were registered.
class QUILLON_API NotesOrWarnings {
public:
    NotesOrWarnings() = default;
    NotesOrWarnings(const NotesOrWarnings&) = delete;
    NotesOrWarnings& operator=(const NotesOrWarnings&) = delete;

    void Register(const char* text);
    bool HasSome() const;
    void Visit(const std::function<void(const char* text)>& visitor) const;

private:
    std::vector<const char*> m_texts;
};

/// Since when, and why, an item is deprecated.
class QUILLON_API Deprecation {
public:
    Deprecation() = default;
    Deprecation(const Deprecation&) = delete;
    Deprecation& operator=(const Deprecation&) = delete;

    void Register(IMethodMetadataReader::MetadataAgentVersion version, const char* text);
    bool IsDeprecated() const;
    void Visit(const std::function<void(const char* version, const char* text)>& visitor) const;

private:
    IMethodMetadataReader::MetadataAgentVersion m_version = IMethodMetadataReader::NotSpecified;
    const char* m_text = nullptr;
};

/// In which version an item appeared, platform by platform.
class QUILLON_API Introduction {
public:
    Introduction() = default;
    Introduction(const Introduction&) = delete;
    Introduction& operator=(const Introduction&) = delete;

    void Register(IMethodMetadataReader::MetadataAgentVersion version,
                  const std::vector<IMethodMetadata::AgentVersionPlatformPair>& exceptions);
    bool WasIntroduced() const;
    void Visit(const std::function<void(const char* platform, const char* version)>& visitor) const;

private:
    std::array<IMethodMetadataReader::MetadataAgentVersion, 6> m_versions{};
};

class QUILLON_API MethodParameter : public IMethodParameterReader {
public:
    MethodParameter();
    ~MethodParameter() override;
    MethodParameter(const MethodParameter&) = delete;
    MethodParameter& operator=(const MethodParameter&) = delete;

    const char* Type() const override;
    unsigned long long TypeInfoHashCode() const override;
    bool GetOptionalValue(Variant& value) const override;
    /// The table default, not owned; null when there is none.
    const DataTable* OptionalTable() const;
    const char* Description() const override;
    bool HasWarnings() const override;
    void VisitWarning(const std::function<void(const char* text)>& visitor) const override;
    bool HasNotes() const override;
    void VisitNote(const std::function<void(const char* text)>& visitor) const override;
    bool WasIntroduced() const override;
    void VisitIntroduced(
        const std::function<void(const char* platform, const char* version)>& visitor) const override;
    bool IsDeprecated() const override;
    void VisitDeprecated(
        const std::function<void(const char* version, const char* text)>& visitor) const override;

    void SetType(const std::type_info& type);
    void Description(const char* text);
    void Note(const char* text);
    void Warning(const char* text);
    /// Throws std::runtime_error when `type` is not the parameter's.
    void OptionalValue(const std::type_info& type, const Variant& value);
    void OptionalValue(const std::string& name, const DataTable* const& table);
    void Introduced(IMethodMetadataReader::MetadataAgentVersion version,
                    const std::vector<IMethodMetadata::AgentVersionPlatformPair>& exceptions);
    void Deprecated(IMethodMetadataReader::MetadataAgentVersion version, const char* text);

private:
    unsigned long long m_type;
    const char* m_description = nullptr;
    bool m_hasDefault = false;
    Variant m_default;
    NotesOrWarnings m_warnings;
    NotesOrWarnings m_notes;
    Introduction m_introduction;
    Deprecation m_deprecation;
    const DataTable* m_defaultTable = nullptr;
};

class QUILLON_API MethodColumn : public IMethodColumnReader {
public:
    MethodColumn();
    ~MethodColumn() override;
    MethodColumn(const MethodColumn&) = delete;
    MethodColumn& operator=(const MethodColumn&) = delete;

    const char* Type() const override;
    bool Alternative() const override;
    const char* Description() const override;
    bool HasWarnings() const override;
    void VisitWarning(const std::function<void(const char* text)>& visitor) const override;
    bool HasNotes() const override;
    void VisitNote(const std::function<void(const char* text)>& visitor) const override;
    bool WasIntroduced() const override;
    void VisitIntroduced(
        const std::function<void(const char* platform, const char* version)>& visitor) const override;
    bool IsDeprecated() const override;
    void VisitDeprecated(
        const std::function<void(const char* version, const char* text)>& visitor) const override;

    /// A type's std::type_info::hash_code.
    void Type(unsigned long long hash);
    void Alternative(bool alternative);
    void Description(const char* text);
    void Warning(const char* text);
    void Note(const char* text);
    void Introduced(IMethodMetadataReader::MetadataAgentVersion version,
                    const std::vector<IMethodMetadata::AgentVersionPlatformPair>& exceptions);
    void Deprecated(IMethodMetadataReader::MetadataAgentVersion version, const char* text);

private:
    unsigned long long m_type;
    bool m_alternative = false;
    const char* m_description = nullptr;
    NotesOrWarnings m_warnings;
    NotesOrWarnings m_notes;
    Introduction m_introduction;
    Deprecation m_deprecation;
};

class QUILLON_API MethodMetadata : public IMethodMetadata {
public:
    /// The empty text that every unset text is; it is recognised by its address.
    static const char* const m_empty;

    MethodMetadata();
    ~MethodMetadata() override;
    MethodMetadata(const MethodMetadata&) = delete;
    MethodMetadata& operator=(const MethodMetadata&) = delete;

    bool IsUndocumented() const override;
    const char* MethodName() const override;
    const char* Description() const override;
    const char* Example() const override;
    bool HasFlags() const override;
    bool HasWarnings() const override;
    bool HasNotes() const override;
    bool HasAdditionalParameters() const override;
    const char* AdditionalParametersDescription() const override;
    bool HasAdditionalColumns() const override;
    const char* AdditionalColumnsDescription() const override;
    bool IsDeprecated() const override;
    void VisitIntroduced(
        const std::function<void(const char* platform, const char* version)>& visitor) const override;
    void VisitDeprecated(
        const std::function<void(const char* version, const char* text)>& visitor) const override;
    void VisitParameter(const std::function<void(const char* name, const MethodParameter& parameter)>&
                            visitor) const override;
    void VisitColumn(
        const std::function<void(const char* name, const MethodColumn& column)>& visitor) const override;
    void VisitWarning(const std::function<void(const char* text)>& visitor) const override;
    void VisitNote(const std::function<void(const char* text)>& visitor) const override;
    void VisitFlag(const std::function<void(const char* text)>& visitor) const override;

    void Undocumented() override;
    void MethodName(const char* name) override;
    void Description(const char* text) override;
    void Flags(const std::vector<MetadataFlag>& flags) override;
    void Warning(const char* text) override;
    void Note(const char* text) override;
    void Example(const char* text) override;
    void BindParameter(const char* name, MethodParameter* parameter) override;
    void HasAdditionalParameters(const char* description) override;
    void BindColumn(const char* name, MethodColumn* column) override;
    void HasAdditionalColumns(const char* description) override;
    IMethodMetadata& Introduced(MetadataAgentVersion version,
                                const std::vector<AgentVersionPlatformPair>& exceptions) override;
    IMethodMetadata& Deprecated(MetadataAgentVersion version, const char* text) override;

private:
    [[noreturn]] static void ThrowAlreadyInserted(const char* kind, const char* name);
    [[noreturn]] static void ThrowFlagAlreadySet(MetadataFlag flag);
    void ThrowIfUndefined() const;

    const char* m_methodName = m_empty;
    const char* m_description = m_empty;
    const char* m_example = m_empty;
    const char* m_additionalParameters = m_empty;
    const char* m_additionalColumns = m_empty;
    NotesOrWarnings m_warnings;
    NotesOrWarnings m_notes;
    Introduction m_introduction;
    Deprecation m_deprecation;
    bool m_undocumented = false;
    bool m_hasFlags = false;
    std::array<bool, 6> m_flags{};
    std::vector<std::pair<const char*, std::shared_ptr<MethodParameter>>> m_parameters;
    std::vector<std::pair<const char*, std::shared_ptr<MethodColumn>>> m_columns;
};

}  // namespace quillon
