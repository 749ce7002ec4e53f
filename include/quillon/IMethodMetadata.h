#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "quillon/Export.h"

namespace quillon {

class MethodColumn;
class MethodParameter;
class Variant;

/// Reads the description of one module method. Every text is UTF-8 and belongs to the module that
/// described the method, as a rule as a string literal: a reader that must keep a text beyond the
/// module copies it. A visitor runs on the calling thread, once for each item, in the order in which
/// the items were described unless an operation says otherwise; an empty visitor throws
/// std::bad_function_call when there is something to visit, and what a visitor throws reaches the
/// caller. Nothing is logged. A finished description may be read by several threads at once.
///
/// @code
/// void PrintParameters(const IMethodMetadataReader& method) {
///     method.VisitParameter([](const char* name, const MethodParameter& parameter) {
///         Variant byDefault;
///         const bool optional = parameter.GetOptionalValue(byDefault);
///         std::cout << name << ": " << parameter.Type() << (optional ? " (optional)\n" : "\n");
///     });
/// }
/// @endcode
class QUILLON_API IMethodMetadataReader {
public:
    /// Names the agent versions. NotSpecified means that none is set; No, on a platform, means that
    /// the item does not exist there.
    enum MetadataAgentVersion : std::int32_t {
        NotSpecified,
        No,
        V1_5,
        V2_0,
        V2_1,
        V3_0,
        V3_1,
        V3_2,
        V3_3,
        V4_0,
        V4_1,
        V5_0
    };
    /// Names the platforms of the agent; the order is that of VisitIntroduced().
    enum MetadataPlatform : std::int32_t { Windows, Linux, MacOS, SolarisIntel, SolarisSparc, Android };
    /// Names what a caller should know before running a method; the order is that of VisitFlag().
    enum MetadataFlag : std::int32_t {
        ExecutesExternalProcess,
        IntensiveIO,
        IntensiveCPU,
        MayModifySystemState,
        PerformsNetworkActivity,
        NotRecommendedInProduction
    };

    /// Hold the texts of the enumerators above, indexed by them: "4.0", "Windows", "Intensive I/O".
    static const char* const m_versions[12];
    static const char* const m_platforms[6];
    static const char* const m_flagNames[6];

    virtual ~IMethodMetadataReader();
    /// Returns whether the method is to be left out of lists for people.
    virtual bool IsUndocumented() const = 0;
    /// Return the text, or the empty text when none was set.
    virtual const char* MethodName() const = 0;
    virtual const char* Description() const = 0;
    virtual const char* Example() const = 0;
    /// Returns whether flags were set, be it to an empty list.
    virtual bool HasFlags() const = 0;
    /// Return whether VisitWarning() or VisitNote() has something to visit.
    virtual bool HasWarnings() const = 0;
    virtual bool HasNotes() const = 0;
    /// Returns whether a call may have parameters beyond the described ones; the description, which
    /// is the empty text otherwise, says which.
    virtual bool HasAdditionalParameters() const = 0;
    virtual const char* AdditionalParametersDescription() const = 0;
    /// Returns whether the method's table may have columns beyond the described ones; the
    /// description, which is the empty text otherwise, says which.
    virtual bool HasAdditionalColumns() const = 0;
    virtual const char* AdditionalColumnsDescription() const = 0;
    /// Returns whether a version was set since when the method should not be used any more.
    virtual bool IsDeprecated() const = 0;
    /// Visits each platform for which a version is set, in the order of MetadataPlatform, with the
    /// texts of both. An undocumented method gives nothing.
    virtual void VisitIntroduced(
        const std::function<void(const char* platform, const char* version)>& visitor) const = 0;
    /// Visits the version and the reason once, or nothing when the method is not deprecated or is
    /// undocumented.
    virtual void VisitDeprecated(
        const std::function<void(const char* version, const char* text)>& visitor) const = 0;
    /// Visit each parameter, or each column. The reference is valid as long as this description.
    virtual void VisitParameter(
        const std::function<void(const char* name, const MethodParameter& parameter)>& visitor) const = 0;
    virtual void VisitColumn(
        const std::function<void(const char* name, const MethodColumn& column)>& visitor) const = 0;
    /// Visit each text in the order in which it was added.
    virtual void VisitWarning(const std::function<void(const char* text)>& visitor) const = 0;
    virtual void VisitNote(const std::function<void(const char* text)>& visitor) const = 0;
    /// Visits the text of each flag that is set, in the order of MetadataFlag.
    virtual void VisitFlag(const std::function<void(const char* text)>& visitor) const = 0;
};

/// Describes one module method; by agreement nothing is changed once IMethodMetadataBuilder::Build()
/// has returned the description. Texts are borrowed and must live as long as the description. A
/// definition that contradicts itself logs one Error entry on the registered logger, when there is
/// one, and throws std::runtime_error with the same text; a version, platform or flag outside its
/// enumeration throws std::out_of_range and logs nothing. One thread at a time describes a method.
class QUILLON_API IMethodMetadata : public IMethodMetadataReader {
public:
    /// Says in which version an item came to one platform, where that differs from the others.
    struct AgentVersionPlatformPair {
        MetadataPlatform platform;
        MetadataAgentVersion version;
    };

    using IMethodMetadataReader::Description;
    using IMethodMetadataReader::Example;
    using IMethodMetadataReader::HasAdditionalColumns;
    using IMethodMetadataReader::HasAdditionalParameters;
    using IMethodMetadataReader::MethodName;

    /// Ends the description with the parameters and columns that it owns.
    ~IMethodMetadata() override;
    /// Marks the method as undocumented. From then on MethodName(), BindParameter() and BindColumn()
    /// throw std::runtime_error "MethodMetadata is already marked as undefined", which is not logged.
    virtual void Undocumented() = 0;
    /// Replace the text.
    virtual void MethodName(const char* name) = 0;
    virtual void Description(const char* text) = 0;
    /// Sets the flags in addition to those that are set. One that is set already fails with "Flag
    /// 'Intensive I/O' has already been specified"; the flags before it in the list stay set.
    virtual void Flags(const std::vector<MetadataFlag>& flags) = 0;
    /// Add a text; equal texts are kept.
    virtual void Warning(const char* text) = 0;
    virtual void Note(const char* text) = 0;
    /// Replaces the text.
    virtual void Example(const char* text) = 0;
    /// Takes ownership of the parameter, also when it fails, and adds it at the end. A name, compared
    /// byte by byte, that is there already fails with "Parameter NAME has already been inserted"; a
    /// null parameter throws std::invalid_argument and is not logged.
    virtual void BindParameter(const char* name, MethodParameter* parameter) = 0;
    /// Says that a call may have further parameters, and which.
    virtual void HasAdditionalParameters(const char* description) = 0;
    /// Takes ownership of the column in the same way; the failure is "Column NAME has already been
    /// inserted".
    virtual void BindColumn(const char* name, MethodColumn* column) = 0;
    /// Says that the table may have further columns, and which.
    virtual void HasAdditionalColumns(const char* description) = 0;
    /// Sets the version for every platform, in place of an earlier call's, and then the versions of
    /// the platforms that `exceptions` names. A platform named twice fails with "Platform Linux has
    /// already been overridden".
    virtual IMethodMetadata& Introduced(MetadataAgentVersion version,
                                        const std::vector<AgentVersionPlatformPair>& exceptions) = 0;
    /// Says since when, and why, the method should not be used. A second call fails with "Already
    /// been marked as deprecated". NotSpecified marks nothing.
    virtual IMethodMetadata& Deprecated(MetadataAgentVersion version, const char* text) = 0;
};

/// Reads the description of one parameter of a method. What IMethodMetadataReader says of texts,
/// visitors and threads holds here as well; a description that was never set is a null pointer.
class QUILLON_API IMethodParameterReader {
public:
    virtual ~IMethodParameterReader();
    /// Returns "integer", "boolean", "float", "string", "table" or "datetime"; "unknown" for any
    /// other type, which `const DataTable*`, the type of a parameter with a table as its default, is.
    virtual const char* Type() const = 0;
    /// Returns the type's std::type_info::hash_code(); that of `void` when none was set.
    virtual unsigned long long TypeInfoHashCode() const = 0;
    /// Copies the default into `value`; false, with `value` as it was, when the parameter has none
    /// and so is mandatory. A table default gives true and a null value: see
    /// MethodParameter::OptionalTable().
    virtual bool GetOptionalValue(Variant& value) const = 0;
    /// Returns the description; null when none was set.
    virtual const char* Description() const = 0;
    /// Say whether there are warnings or notes, and visit each in the order in which it was added.
    virtual bool HasWarnings() const = 0;
    virtual void VisitWarning(const std::function<void(const char* text)>& visitor) const = 0;
    virtual bool HasNotes() const = 0;
    virtual void VisitNote(const std::function<void(const char* text)>& visitor) const = 0;
    /// Says whether a version is set for any platform, and visits those platforms in the order of
    /// MetadataPlatform, with the texts of both.
    virtual bool WasIntroduced() const = 0;
    virtual void VisitIntroduced(
        const std::function<void(const char* platform, const char* version)>& visitor) const = 0;
    /// Says whether a version was set by Deprecated(), and visits it with the reason, once.
    virtual bool IsDeprecated() const = 0;
    virtual void VisitDeprecated(
        const std::function<void(const char* version, const char* text)>& visitor) const = 0;
};

/// Reads the description of one column of a method's table, as IMethodParameterReader does of a
/// parameter.
class QUILLON_API IMethodColumnReader {
public:
    virtual ~IMethodColumnReader();
    /// Returns the name of the type as IMethodParameterReader::Type() does.
    virtual const char* Type() const = 0;
    /// Returns whether the column stands in for another one, so that a table has one of the two.
    virtual bool Alternative() const = 0;
    /// Returns the description; null when none was set.
    virtual const char* Description() const = 0;
    /// Say whether there are warnings or notes, and visit each in the order in which it was added.
    virtual bool HasWarnings() const = 0;
    virtual void VisitWarning(const std::function<void(const char* text)>& visitor) const = 0;
    virtual bool HasNotes() const = 0;
    virtual void VisitNote(const std::function<void(const char* text)>& visitor) const = 0;
    /// Says whether a version is set for any platform, and visits those platforms in the order of
    /// MetadataPlatform, with the texts of both.
    virtual bool WasIntroduced() const = 0;
    virtual void VisitIntroduced(
        const std::function<void(const char* platform, const char* version)>& visitor) const = 0;
    /// Says whether a version was set by Deprecated(), and visits it with the reason, once.
    virtual bool IsDeprecated() const = 0;
    virtual void VisitDeprecated(
        const std::function<void(const char* version, const char* text)>& visitor) const = 0;
};

}  // namespace quillon
