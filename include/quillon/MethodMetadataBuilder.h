#pragma once

#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "quillon/Export.h"
#include "quillon/IMethodMetadataBuilder.h"
#include "quillon/MethodMetadata.h"

namespace quillon {

/// Implements IMethodMetadataBuilder for the host, which makes one builder for each method and
/// registers factories for the two builders below. An operation other than Build() throws
/// std::logic_error after Build().
///
/// @code
/// ServiceLocator::AddFactory<IMethodParameterBuilder>(
///     [] { return new MethodParameterBuilder; }, [](IMethodParameterBuilder* used) { delete used; });
/// ServiceLocator::AddFactory<IMethodColumnBuilder>(
///     [] { return new MethodColumnBuilder; }, [](IMethodColumnBuilder* used) { delete used; });
/// MethodMetadataBuilder builder;
/// builder.MethodName("Host.Ping");
/// const std::unique_ptr<IMethodMetadata> method = builder.Build();
/// @endcode
class QUILLON_API MethodMetadataBuilder : public IMethodMetadataBuilder {
public:
    /// Starts the description of a method.
    MethodMetadataBuilder();
    ~MethodMetadataBuilder() override;
    MethodMetadataBuilder(const MethodMetadataBuilder&) = delete;
    MethodMetadataBuilder& operator=(const MethodMetadataBuilder&) = delete;

    /// Implement IMethodMetadataBuilder; a second Build() returns null.
    void Undocumented() override;
    void MethodName(const char* name) override;
    IMethodMetadataBuilder& Description(const char* text) override;
    IMethodParameterBuilder& CreateParameter(const char* name, const std::type_info& type) override;
    IMethodMetadataBuilder& HasAdditionalParameters(const char* description) override;
    IMethodColumnBuilder& CreateColumn(const char* name, const std::type_info& type,
                                       bool alternative) override;
    IMethodMetadataBuilder& HasAdditionalColumns(const char* description) override;
    IMethodMetadataBuilder& Flags(const std::vector<MetadataFlag>& flags) override;
    IMethodMetadataBuilder& Warning(const char* text) override;
    IMethodMetadataBuilder& Note(const char* text) override;
    IMethodMetadataBuilder& Example(const char* text) override;
    std::unique_ptr<IMethodMetadata> Build() override;

private:
    struct State;

    IMethodMetadataBuilder& BindParameter(const char* name, MethodParameter* parameter) override;
    IMethodMetadataBuilder& BindColumn(const char* name, MethodColumn* column) override;

    std::unique_ptr<State> m_state;
};

/// Implements IMethodParameterBuilder. A builder describes one parameter, so a factory makes a fresh
/// one each time. Setters of the type, texts, versions and default throw std::logic_error after
/// BindParameter(), which itself throws it without a metadata builder.
class QUILLON_API MethodParameterBuilder : public IMethodParameterBuilder {
public:
    /// Starts a parameter without a type.
    MethodParameterBuilder();
    /// Frees a parameter that was never bound.
    ~MethodParameterBuilder() override;
    MethodParameterBuilder(const MethodParameterBuilder&) = delete;
    MethodParameterBuilder& operator=(const MethodParameterBuilder&) = delete;

    /// Implement IMethodParameterBuilder.
    void MetadataBuilder(IMethodMetadataBuilder& builder) override;
    void Name(const char* name) override;
    void Type(const std::type_info& type) override;
    IMethodParameterBuilder& Description(const char* text) override;
    IMethodParameterBuilder& Warning(const char* text) override;
    IMethodParameterBuilder& Note(const char* text) override;
    IMethodParameterBuilder& Introduced(MetadataAgentVersion version,
                                        const std::vector<AgentVersionPlatformPair>& exceptions) override;
    IMethodParameterBuilder& Deprecated(MetadataAgentVersion version, const char* text) override;
    IMethodMetadataBuilder& BindParameter() override;

private:
    IMethodParameterBuilder& OptionalValueInternal(const std::string& name,
                                                   const DataTable* const& table) override;
    IMethodParameterBuilder& OptionalValueInternal(const std::type_info& type, const Variant& value) override;

    IMethodMetadataBuilder* m_builder = nullptr;
    const char* m_name = nullptr;
    std::unique_ptr<MethodParameter> m_parameter;
};

/// Implements IMethodColumnBuilder for one column, as MethodParameterBuilder does for a parameter.
class QUILLON_API MethodColumnBuilder : public IMethodColumnBuilder {
public:
    /// Starts a column without a type.
    MethodColumnBuilder();
    /// Frees a column that was never bound.
    ~MethodColumnBuilder() override;
    MethodColumnBuilder(const MethodColumnBuilder&) = delete;
    MethodColumnBuilder& operator=(const MethodColumnBuilder&) = delete;

    /// Implement IMethodColumnBuilder.
    void MetadataBuilder(IMethodMetadataBuilder& builder) override;
    void Name(const char* name) override;
    IMethodColumnBuilder& Description(const char* text) override;
    IMethodColumnBuilder& Warning(const char* text) override;
    IMethodColumnBuilder& Note(const char* text) override;
    IMethodColumnBuilder& Introduced(MetadataAgentVersion version,
                                     const std::vector<AgentVersionPlatformPair>& exceptions) override;
    IMethodColumnBuilder& Deprecated(MetadataAgentVersion version, const char* text) override;
    IMethodMetadataBuilder& BindColumn() override;

private:
    void Type(unsigned long long hash) override;
    void Alternative() override;

    IMethodMetadataBuilder* m_builder = nullptr;
    const char* m_name = nullptr;
    std::unique_ptr<MethodColumn> m_column;
};

}  // namespace quillon
