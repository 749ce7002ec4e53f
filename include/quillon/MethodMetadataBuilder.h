#pragma once

#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "quillon/Export.h"
#include "quillon/IMethodMetadataBuilder.h"
#include "quillon/MethodMetadata.h"

namespace quillon {

/// The library's own builders, for the host, which makes the first and registers
/// factories for the other two with ServiceLocator::AddFactory. Every parameter or
/// column builder describes one item: a factory makes a fresh one each time.
class QUILLON_API MethodMetadataBuilder : public IMethodMetadataBuilder {
public:
    MethodMetadataBuilder();
    ~MethodMetadataBuilder() override;
    MethodMetadataBuilder(const MethodMetadataBuilder&) = delete;
    MethodMetadataBuilder& operator=(const MethodMetadataBuilder&) = delete;

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

class QUILLON_API MethodParameterBuilder : public IMethodParameterBuilder {
public:
    MethodParameterBuilder();
    /// Frees a parameter that was never bound.
    ~MethodParameterBuilder() override;
    MethodParameterBuilder(const MethodParameterBuilder&) = delete;
    MethodParameterBuilder& operator=(const MethodParameterBuilder&) = delete;

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

class QUILLON_API MethodColumnBuilder : public IMethodColumnBuilder {
public:
    MethodColumnBuilder();
    /// Frees a column that was never bound.
    ~MethodColumnBuilder() override;
    MethodColumnBuilder(const MethodColumnBuilder&) = delete;
    MethodColumnBuilder& operator=(const MethodColumnBuilder&) = delete;

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
