#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "quillon/Export.h"

namespace quillon {

class MethodColumn;
class MethodParameter;
class Variant;

/// The read-only description of one module method. Every text is borrowed from the
/// module that described it (string literals), UTF-8. A visitor is called once an
/// item, in the order in which the items were described; an empty one throws
/// std::bad_function_call when there is something to visit.
class QUILLON_API IMethodMetadataReader {
public:
    /// Agent versions. NotSpecified means that none is set; No, on a platform, that
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
    enum MetadataPlatform : std::int32_t { Windows, Linux, MacOS, SolarisIntel, SolarisSparc, Android };
    enum MetadataFlag : std::int32_t {
        ExecutesExternalProcess,
        IntensiveIO,
        IntensiveCPU,
        MayModifySystemState,
        PerformsNetworkActivity,
        NotRecommendedInProduction
    };

    /// Texts of the enumerators above, indexed by them.
    static const char* const m_versions[12];
    static const char* const m_platforms[6];
    static const char* const m_flagNames[6];

    virtual ~IMethodMetadataReader();
    virtual bool IsUndocumented() const = 0;
    virtual const char* MethodName() const = 0;
    virtual const char* Description() const = 0;
    virtual const char* Example() const = 0;
    virtual bool HasFlags() const = 0;
    virtual bool HasWarnings() const = 0;
    virtual bool HasNotes() const = 0;
    virtual bool HasAdditionalParameters() const = 0;
    virtual const char* AdditionalParametersDescription() const = 0;
    virtual bool HasAdditionalColumns() const = 0;
    virtual const char* AdditionalColumnsDescription() const = 0;
    virtual bool IsDeprecated() const = 0;
    /// Once a platform, in the order of MetadataPlatform.
    virtual void VisitIntroduced(
        const std::function<void(const char* platform, const char* version)>& visitor) const = 0;
    virtual void VisitDeprecated(
        const std::function<void(const char* version, const char* text)>& visitor) const = 0;
    virtual void VisitParameter(
        const std::function<void(const char* name, const MethodParameter& parameter)>& visitor) const = 0;
    virtual void VisitColumn(
        const std::function<void(const char* name, const MethodColumn& column)>& visitor) const = 0;
    virtual void VisitWarning(const std::function<void(const char* text)>& visitor) const = 0;
    virtual void VisitNote(const std::function<void(const char* text)>& visitor) const = 0;
    /// In the order of MetadataFlag.
    virtual void VisitFlag(const std::function<void(const char* text)>& visitor) const = 0;
};

/// A description while it is being made; immutable by agreement once built. A
/// definition that contradicts itself is logged at Error and thrown as
/// std::runtime_error with the same text.
class QUILLON_API IMethodMetadata : public IMethodMetadataReader {
public:
    struct AgentVersionPlatformPair {
        MetadataPlatform platform;
        MetadataAgentVersion version;
    };

    using IMethodMetadataReader::Description;
    using IMethodMetadataReader::Example;
    using IMethodMetadataReader::HasAdditionalColumns;
    using IMethodMetadataReader::HasAdditionalParameters;
    using IMethodMetadataReader::MethodName;

    ~IMethodMetadata() override;
    /// From here on a name, a parameter or a column throws.
    virtual void Undocumented() = 0;
    virtual void MethodName(const char* name) = 0;
    virtual void Description(const char* text) = 0;
    virtual void Flags(const std::vector<MetadataFlag>& flags) = 0;
    virtual void Warning(const char* text) = 0;
    virtual void Note(const char* text) = 0;
    virtual void Example(const char* text) = 0;
    /// Takes ownership.
    virtual void BindParameter(const char* name, MethodParameter* parameter) = 0;
    virtual void HasAdditionalParameters(const char* description) = 0;
    /// Takes ownership.
    virtual void BindColumn(const char* name, MethodColumn* column) = 0;
    virtual void HasAdditionalColumns(const char* description) = 0;
    /// `version` on every platform but those that `exceptions` name.
    virtual IMethodMetadata& Introduced(MetadataAgentVersion version,
                                        const std::vector<AgentVersionPlatformPair>& exceptions) = 0;
    virtual IMethodMetadata& Deprecated(MetadataAgentVersion version, const char* text) = 0;
};

/// What one parameter of a method is. Type names are "integer", "boolean", "float",
/// "string", "table", "datetime" and "unknown".
class QUILLON_API IMethodParameterReader {
public:
    virtual ~IMethodParameterReader();
    virtual const char* Type() const = 0;
    virtual unsigned long long TypeInfoHashCode() const = 0;
    /// The default; false when there is none. A table default gives true and a null
    /// value: see MethodParameter::OptionalTable().
    virtual bool GetOptionalValue(Variant& value) const = 0;
    virtual const char* Description() const = 0;
    virtual bool HasWarnings() const = 0;
    virtual void VisitWarning(const std::function<void(const char* text)>& visitor) const = 0;
    virtual bool HasNotes() const = 0;
    virtual void VisitNote(const std::function<void(const char* text)>& visitor) const = 0;
    virtual bool WasIntroduced() const = 0;
    virtual void VisitIntroduced(
        const std::function<void(const char* platform, const char* version)>& visitor) const = 0;
    virtual bool IsDeprecated() const = 0;
    virtual void VisitDeprecated(
        const std::function<void(const char* version, const char* text)>& visitor) const = 0;
};

/// What one column of a method's table is.
class QUILLON_API IMethodColumnReader {
public:
    virtual ~IMethodColumnReader();
    virtual const char* Type() const = 0;
    /// The column stands in for another one of the same name.
    virtual bool Alternative() const = 0;
    virtual const char* Description() const = 0;
    virtual bool HasWarnings() const = 0;
    virtual void VisitWarning(const std::function<void(const char* text)>& visitor) const = 0;
    virtual bool HasNotes() const = 0;
    virtual void VisitNote(const std::function<void(const char* text)>& visitor) const = 0;
    virtual bool WasIntroduced() const = 0;
    virtual void VisitIntroduced(
        const std::function<void(const char* platform, const char* version)>& visitor) const = 0;
    virtual bool IsDeprecated() const = 0;
    virtual void VisitDeprecated(
        const std::function<void(const char* version, const char* text)>& visitor) const = 0;
};

}  // namespace quillon
