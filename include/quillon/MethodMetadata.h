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

/// Names types and raises the failures of a definition; the records below and the host's own
/// builders share it. Thread-safe.
class QUILLON_API MetadataUtils {
public:
    MetadataUtils() = delete;

    /// Returns the name of the type with that std::type_info::hash_code(): long long "integer", bool
    /// "boolean", double "float", std::string "string", DataTable "table", TimePoint "datetime";
    /// "unknown" for any other.
    static const char* Type(unsigned long long hash);
    /// Logs the text at Error when a logger is registered, then throws it as std::runtime_error.
    [[noreturn]] static void LogThenThrow(std::stringstream& message);
    /// Fails, as LogThenThrow() does, with "NAME has already been marked as deprecated", or "Already
    /// been marked as deprecated" when `name` is null.
    [[noreturn]] static void ThrowAlreadyDeprecated(const char* name);
    /// Fails, as LogThenThrow() does, with "Platform Linux has already been overridden"; throws
    /// std::out_of_range for a value outside the enumeration.
    [[noreturn]] static void ThrowPlatformAlreadyOverridden(IMethodMetadataReader::MetadataPlatform platform);
};

/// Keeps borrowed texts in the order in which they were registered; nothing is copied or logged.
class QUILLON_API NotesOrWarnings {
public:
    NotesOrWarnings() = default;
    NotesOrWarnings(const NotesOrWarnings&) = delete;
    NotesOrWarnings& operator=(const NotesOrWarnings&) = delete;

    /// Adds a text at the end; equal texts are kept.
    void Register(const char* text);
    /// Returns whether a text was registered.
    bool HasSome() const;
    /// Visits each text in order; an empty visitor throws std::bad_function_call when there is one.
    void Visit(const std::function<void(const char* text)>& visitor) const;

private:
    std::vector<const char*> m_texts;
};

/// Keeps since when, and why, an item should not be used.
class QUILLON_API Deprecation {
public:
    Deprecation() = default;
    Deprecation(const Deprecation&) = delete;
    Deprecation& operator=(const Deprecation&) = delete;

    /// Sets both, of which the text is borrowed. A second time fails as
    /// MetadataUtils::ThrowAlreadyDeprecated(nullptr) does; a version outside the enumeration throws
    /// std::out_of_range, and NotSpecified registers nothing.
    void Register(IMethodMetadataReader::MetadataAgentVersion version, const char* text);
    /// Returns whether a version other than NotSpecified is set.
    bool IsDeprecated() const;
    /// Visits the text of the version and the reason, when there is a version.
    void Visit(const std::function<void(const char* version, const char* text)>& visitor) const;

private:
    IMethodMetadataReader::MetadataAgentVersion m_version = IMethodMetadataReader::NotSpecified;
    const char* m_text = nullptr;
};

/// Keeps in which version an item came to each platform.
class QUILLON_API Introduction {
public:
    Introduction() = default;
    Introduction(const Introduction&) = delete;
    Introduction& operator=(const Introduction&) = delete;

    /// Sets `version` for every platform, in place of an earlier call's, and then that of each
    /// exception. A platform named twice fails as MetadataUtils::ThrowPlatformAlreadyOverridden()
    /// does; a version or platform outside its enumeration throws std::out_of_range.
    void Register(IMethodMetadataReader::MetadataAgentVersion version,
                  const std::vector<IMethodMetadata::AgentVersionPlatformPair>& exceptions);
    /// Returns whether a platform has a version other than NotSpecified.
    bool WasIntroduced() const;
    /// Visits each of those platforms, in the order of MetadataPlatform, with the texts of both.
    void Visit(const std::function<void(const char* platform, const char* version)>& visitor) const;

private:
    std::array<IMethodMetadataReader::MetadataAgentVersion, 6> m_versions{};
};

/// Describes one parameter. A setter is used until the parameter is bound, by one thread; texts and
/// tables are borrowed and must live as long as the parameter. The setters fail as IMethodMetadata
/// says.
class QUILLON_API MethodParameter : public IMethodParameterReader {
public:
    /// Makes a parameter of the type `void`, "unknown", with no text and no default.
    MethodParameter();
    ~MethodParameter() override;
    MethodParameter(const MethodParameter&) = delete;
    MethodParameter& operator=(const MethodParameter&) = delete;

    /// Implement IMethodParameterReader.
    const char* Type() const override;
    unsigned long long TypeInfoHashCode() const override;
    bool GetOptionalValue(Variant& value) const override;
    /// Returns the table that is the default, which the module owns; null when there is none.
    const DataTable* OptionalTable() const;
    /// Implement IMethodParameterReader.
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

    /// Replaces the type.
    void SetType(const std::type_info& type);
    /// Replaces the description; a note or a warning is added at the end.
    void Description(const char* text);
    void Note(const char* text);
    void Warning(const char* text);
    /// Sets the default, which makes the parameter optional. When `type` is not the parameter's, one
    /// Error entry "mismatched parameter and optional default value types; ..." is logged and
    /// std::runtime_error thrown with the same text.
    void OptionalValue(const std::type_info& type, const Variant& value);
    /// Sets a table as the default; it fails in the same way unless the type is `const DataTable*`.
    /// `name` is used in that text only.
    void OptionalValue(const std::string& name, const DataTable* const& table);
    /// Set the versions as Introduction and Deprecation do.
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

/// Describes one column, as MethodParameter does a parameter.
class QUILLON_API MethodColumn : public IMethodColumnReader {
public:
    /// Makes a column of the type `void`, "unknown", with no text.
    MethodColumn();
    ~MethodColumn() override;
    MethodColumn(const MethodColumn&) = delete;
    MethodColumn& operator=(const MethodColumn&) = delete;

    /// Implement IMethodColumnReader.
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

    /// Replaces the type by the one with that std::type_info::hash_code().
    void Type(unsigned long long hash);
    /// Says whether the column stands in for another one.
    void Alternative(bool alternative);
    /// Replaces the description; a warning or a note is added at the end.
    void Description(const char* text);
    void Warning(const char* text);
    void Note(const char* text);
    /// Set the versions as Introduction and Deprecation do.
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

/// Keeps the description of one method in memory. The interfaces say what each operation does; this
/// class owns its parameters and columns and borrows every text. Make one through
/// MethodMetadataBuilder.
class QUILLON_API MethodMetadata : public IMethodMetadata {
public:
    /// Holds the empty text that every unset text is; it is recognised by its address.
    static const char* const m_empty;

    /// Makes a description without a name, with nothing set.
    MethodMetadata();
    ~MethodMetadata() override;
    MethodMetadata(const MethodMetadata&) = delete;
    MethodMetadata& operator=(const MethodMetadata&) = delete;

    /// Implement IMethodMetadataReader.
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

    /// Implement IMethodMetadata.
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
