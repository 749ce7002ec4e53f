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

/// Describes one method in a chain of calls that ends with Build(). A module is given the interface;
/// the host makes the builder (MethodMetadataBuilder.h). Every text is UTF-8, is borrowed and must
/// live as long as the description: pass literals. A definition that contradicts itself logs one
/// Error entry and throws std::runtime_error from the call that does so, as IMethodMetadata says.
/// One thread at a time uses a builder.
///
/// @code
/// std::unique_ptr<IMethodMetadata> DescribeFind(IMethodMetadataBuilder& builder) {
///     builder.MethodName("Files.Find");
///     builder.Description("Finds files.")
///         .CreateParameter("pattern", typeid(std::string)).Description("The name to find.").BindParameter()
///         .CreateColumn("Size", typeid(long long), false).Description("Bytes.").BindColumn();
///     return builder.Build();
/// }
/// @endcode
class QUILLON_API IMethodMetadataBuilder {
public:
    using MetadataFlag = IMethodMetadataReader::MetadataFlag;

    /// Returns the key of this service in ServiceLocator.
    static const char* __InterfaceId() { return "VntItf_IMethodMetadataBuilder"; }

    /// Ends the builder and what it describes, unless that was handed out.
    virtual ~IMethodMetadataBuilder();
    /// Do what the operations of the same name of IMethodMetadata do.
    virtual void Undocumented() = 0;
    virtual void MethodName(const char* name) = 0;
    virtual IMethodMetadataBuilder& Description(const char* text) = 0;
    /// Starts a parameter: returns a builder from the factory that the host registered with
    /// ServiceLocator, which this builder owns until the next parameter is started. Without a factory
    /// a Fatal entry is logged and std::invalid_argument thrown. The types are those that
    /// MetadataUtils::Type() names.
    virtual IMethodParameterBuilder& CreateParameter(const char* name, const std::type_info& type) = 0;
    /// Says that a call may have further parameters, and which.
    virtual IMethodMetadataBuilder& HasAdditionalParameters(const char* description) = 0;
    /// Starts a column in the same way. An `alternative` column stands in for another one.
    virtual IMethodColumnBuilder& CreateColumn(const char* name, const std::type_info& type,
                                               bool alternative) = 0;
    /// Says that the table may have further columns, and which.
    virtual IMethodMetadataBuilder& HasAdditionalColumns(const char* description) = 0;

private:
    friend class MethodColumnBuilder;
    friend class MethodParameterBuilder;

    virtual IMethodMetadataBuilder& BindParameter(const char* name, MethodParameter* parameter) = 0;
    virtual IMethodMetadataBuilder& BindColumn(const char* name, MethodColumn* column) = 0;

public:
    /// Do what the operations of the same name of IMethodMetadata do.
    virtual IMethodMetadataBuilder& Flags(const std::vector<MetadataFlag>& flags) = 0;
    virtual IMethodMetadataBuilder& Warning(const char* text) = 0;
    virtual IMethodMetadataBuilder& Note(const char* text) = 0;
    virtual IMethodMetadataBuilder& Example(const char* text) = 0;
    /// Hands the description out to the caller, who owns it; the builder must not be used again.
    virtual std::unique_ptr<IMethodMetadata> Build() = 0;
};

/// Describes one parameter, which is mandatory unless it has a default. CreateParameter() calls the
/// first three operations; a module calls the others and ends with BindParameter().
class QUILLON_API IMethodParameterBuilder {
public:
    using AgentVersionPlatformPair = IMethodMetadata::AgentVersionPlatformPair;
    using MetadataAgentVersion = IMethodMetadataReader::MetadataAgentVersion;

    /// Returns the key of the factory of these builders in ServiceLocator.
    static const char* __InterfaceId() { return "VntItf_IMethodParameterBuilder"; }

    virtual ~IMethodParameterBuilder();
    /// Sets the builder that the parameter is bound to, which is not owned.
    virtual void MetadataBuilder(IMethodMetadataBuilder& builder) = 0;
    /// Set the name, which is borrowed, and the type.
    virtual void Name(const char* name) = 0;
    virtual void Type(const std::type_info& type) = 0;
    /// Replaces the description; a warning or a note is added at the end.
    virtual IMethodParameterBuilder& Description(const char* text) = 0;
    virtual IMethodParameterBuilder& Warning(const char* text) = 0;
    virtual IMethodParameterBuilder& Note(const char* text) = 0;
    /// Set the versions as the operations of IMethodMetadata do.
    virtual IMethodParameterBuilder& Introduced(MetadataAgentVersion version,
                                                const std::vector<AgentVersionPlatformPair>& exceptions) = 0;
    virtual IMethodParameterBuilder& Deprecated(MetadataAgentVersion version, const char* text) = 0;
    /// Ends the parameter, which the method owns from now on, and returns the method's builder. It
    /// fails as IMethodMetadata::BindParameter() does, and throws std::invalid_argument with the name for a
    /// type that MetadataUtils::Type() does not name, and for a parameter without a name. The builder must
    /// not be used again.
    virtual IMethodMetadataBuilder& BindParameter() = 0;

    /// Sets the default, which tells readers of the description what a call without the parameter
    /// gets; a null pointer counts as the empty text. When its type is not the parameter's, one Error
    /// entry is logged and std::runtime_error thrown.
    IMethodParameterBuilder& OptionalValue(const char* value);
    /// Sets a default of another type: bool, std::string, TimePoint, an integer (held as long long, at
    /// most the largest) or a floating-point number (held as double).
    template <class T>
    requires(std::is_arithmetic_v<T> && !Character<T>) || std::is_same_v<T, std::string> ||
        std::is_same_v<T, TimePoint> IMethodParameterBuilder& OptionalValue(const T& value) {
        if constexpr (std::is_floating_point_v<T>) {
            return OptionalValueInternal(typeid(double), Variant(static_cast<double>(value)));
        } else {
            constexpr bool isInteger = std::is_integral_v<T> && !std::is_same_v<T, bool>;
            return OptionalValueInternal(typeid(std::conditional_t<isInteger, long long, T>), Variant(value));
        }
    }
    /// Sets a table, which is borrowed, as the default, and makes the parameter one of the type
    /// `const DataTable*` whatever its type was.
    IMethodParameterBuilder& OptionalValue(const std::string& name, const DataTable* const& table);

private:
    virtual IMethodParameterBuilder& OptionalValueInternal(const std::string& name,
                                                           const DataTable* const& table) = 0;
    virtual IMethodParameterBuilder& OptionalValueInternal(const std::type_info& type,
                                                           const Variant& value) = 0;
};

/// Describes one column of the method's table. CreateColumn() calls the first two operations; a
/// module calls the others and ends with BindColumn().
class QUILLON_API IMethodColumnBuilder {
public:
    using AgentVersionPlatformPair = IMethodMetadata::AgentVersionPlatformPair;
    using MetadataAgentVersion = IMethodMetadataReader::MetadataAgentVersion;

    /// Returns the key of the factory of these builders in ServiceLocator.
    static const char* __InterfaceId() { return "VntItf_IMethodColumnBuilder"; }

    virtual ~IMethodColumnBuilder();
    /// Sets the builder that the column is bound to, which is not owned.
    virtual void MetadataBuilder(IMethodMetadataBuilder& builder) = 0;
    /// Sets the name, which is borrowed.
    virtual void Name(const char* name) = 0;

private:
    friend class MethodMetadataBuilder;

    virtual void Type(unsigned long long hash) = 0;
    virtual void Alternative() = 0;

public:
    /// Replaces the description; a warning or a note is added at the end.
    virtual IMethodColumnBuilder& Description(const char* text) = 0;
    virtual IMethodColumnBuilder& Warning(const char* text) = 0;
    virtual IMethodColumnBuilder& Note(const char* text) = 0;
    /// Set the versions as the operations of IMethodMetadata do.
    virtual IMethodColumnBuilder& Introduced(MetadataAgentVersion version,
                                             const std::vector<AgentVersionPlatformPair>& exceptions) = 0;
    virtual IMethodColumnBuilder& Deprecated(MetadataAgentVersion version, const char* text) = 0;
    /// Ends the column, which the method owns from now on, and returns the method's builder. It fails
    /// as IMethodMetadata::BindColumn() does, and throws std::invalid_argument as
    /// IMethodParameterBuilder::BindParameter() does. The builder must not be used again.
    virtual IMethodMetadataBuilder& BindColumn() = 0;
};

}  // namespace quillon
