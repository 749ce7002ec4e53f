#pragma once

#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "quillon/DataTable.h"
#include "quillon/Export.h"
#include "quillon/IMethodMetadata.h"
#include "quillon/TimePoint.h"
#include "quillon/Variant.h"

namespace quillon {

class IMethodColumnBuilder;
class IMethodParameterBuilder;

/// Describes one method, in a chain of calls that ends with Build():
///
///     builder.MethodName("Files.Find");
///     builder.Description("Finds files.")
///         .CreateParameter("pattern", typeid(std::string)).Description("What to find.").BindParameter()
///         .CreateColumn("Size", typeid(long long), false).Description("Bytes.").BindColumn();
///     const std::unique_ptr<IMethodMetadata> method = builder.Build();
///
/// Every text is borrowed and must outlive the record: pass literals. A definition
/// that contradicts itself is thrown as std::runtime_error by the call that does so.
class QUILLON_API IMethodMetadataBuilder {
public:
    using MetadataFlag = IMethodMetadataReader::MetadataFlag;

    static const char* __InterfaceId() { return "VntItf_IMethodMetadataBuilder"; }

    virtual ~IMethodMetadataBuilder();
    virtual void Undocumented() = 0;
    virtual void MethodName(const char* name) = 0;
    virtual IMethodMetadataBuilder& Description(const char* text) = 0;
    /// A builder from the factory that the host registered (std::invalid_argument
    /// without one); it is valid until the next one of its kind is made.
    virtual IMethodParameterBuilder& CreateParameter(const char* name, const std::type_info& type) = 0;
    virtual IMethodMetadataBuilder& HasAdditionalParameters(const char* description) = 0;
    virtual IMethodColumnBuilder& CreateColumn(const char* name, const std::type_info& type,
                                               bool alternative) = 0;
    virtual IMethodMetadataBuilder& HasAdditionalColumns(const char* description) = 0;

private:
    friend class MethodColumnBuilder;
    friend class MethodParameterBuilder;

    virtual IMethodMetadataBuilder& BindParameter(const char* name, MethodParameter* parameter) = 0;
    virtual IMethodMetadataBuilder& BindColumn(const char* name, MethodColumn* column) = 0;

public:
    virtual IMethodMetadataBuilder& Flags(const std::vector<MetadataFlag>& flags) = 0;
    virtual IMethodMetadataBuilder& Warning(const char* text) = 0;
    virtual IMethodMetadataBuilder& Note(const char* text) = 0;
    virtual IMethodMetadataBuilder& Example(const char* text) = 0;
    /// Hands the record out; the builder must not be used again.
    virtual std::unique_ptr<IMethodMetadata> Build() = 0;
};

/// Describes one parameter. A parameter with a default is optional.
class QUILLON_API IMethodParameterBuilder {
public:
    using AgentVersionPlatformPair = IMethodMetadata::AgentVersionPlatformPair;
    using MetadataAgentVersion = IMethodMetadataReader::MetadataAgentVersion;

    static const char* __InterfaceId() { return "VntItf_IMethodParameterBuilder"; }

    virtual ~IMethodParameterBuilder();
    virtual void MetadataBuilder(IMethodMetadataBuilder& builder) = 0;
    virtual void Name(const char* name) = 0;
    virtual void Type(const std::type_info& type) = 0;
    virtual IMethodParameterBuilder& Description(const char* text) = 0;
    virtual IMethodParameterBuilder& Warning(const char* text) = 0;
    virtual IMethodParameterBuilder& Note(const char* text) = 0;
    /// `version` on every platform but those that `exceptions` name.
    virtual IMethodParameterBuilder& Introduced(MetadataAgentVersion version,
                                                const std::vector<AgentVersionPlatformPair>& exceptions) = 0;
    virtual IMethodParameterBuilder& Deprecated(MetadataAgentVersion version, const char* text) = 0;
    /// Ends the parameter: it is now the method's.
    virtual IMethodMetadataBuilder& BindParameter() = 0;

    /// The value that a call which leaves the parameter out gets. Throws
    /// std::runtime_error when its type is not the parameter's.
    IMethodParameterBuilder& OptionalValue(const char* value);
    /// bool, double, std::string, TimePoint, an integer (held as long long) or a float
    /// (held as double).
    template <class T>
    requires std::is_arithmetic_v<T> || std::is_same_v<T, std::string> || std::is_same_v<T, TimePoint>
        IMethodParameterBuilder& OptionalValue(const T& value) {
        using Number = std::conditional_t<std::is_integral_v<T>, long long, double>;
        using Held = std::conditional_t<std::is_arithmetic_v<T> && !std::is_same_v<T, bool>, Number, T>;
        return OptionalValueInternal(typeid(Held), Variant(static_cast<Held>(value)));
    }
    /// Makes the parameter a table; `table` is borrowed.
    IMethodParameterBuilder& OptionalValue(const std::string& name, const DataTable* const& table);

private:
    virtual IMethodParameterBuilder& OptionalValueInternal(const std::string& name,
                                                           const DataTable* const& table) = 0;
    virtual IMethodParameterBuilder& OptionalValueInternal(const std::type_info& type,
                                                           const Variant& value) = 0;
};

/// Describes one column.
class QUILLON_API IMethodColumnBuilder {
public:
    using AgentVersionPlatformPair = IMethodMetadata::AgentVersionPlatformPair;
    using MetadataAgentVersion = IMethodMetadataReader::MetadataAgentVersion;

    static const char* __InterfaceId() { return "VntItf_IMethodColumnBuilder"; }

    virtual ~IMethodColumnBuilder();
    virtual void MetadataBuilder(IMethodMetadataBuilder& builder) = 0;
    virtual void Name(const char* name) = 0;

private:
    friend class MethodMetadataBuilder;

    virtual void Type(unsigned long long hash) = 0;
    virtual void Alternative() = 0;

public:
    virtual IMethodColumnBuilder& Description(const char* text) = 0;
    virtual IMethodColumnBuilder& Warning(const char* text) = 0;
    virtual IMethodColumnBuilder& Note(const char* text) = 0;
    virtual IMethodColumnBuilder& Introduced(MetadataAgentVersion version,
                                             const std::vector<AgentVersionPlatformPair>& exceptions) = 0;
    virtual IMethodColumnBuilder& Deprecated(MetadataAgentVersion version, const char* text) = 0;
    /// Ends the column: it is now the method's.
    virtual IMethodMetadataBuilder& BindColumn() = 0;
};

}  // namespace quillon
