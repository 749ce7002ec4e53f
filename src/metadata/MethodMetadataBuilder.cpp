#include "quillon/MethodMetadataBuilder.h"

#include <stdexcept>
#include <string_view>
#include <typeinfo>

#include "base/TextOrEmpty.h"
#include "quillon/ServiceLocator.h"

namespace quillon {
namespace {

/// Returns a new builder from the host's factory.
template <class Builder>
std::shared_ptr<Builder> NewBuilder() {
    auto builder = ServiceLocator::GetInstance<Builder>();
    if (!builder) throw std::invalid_argument(Builder::__InterfaceId());
    return builder;
}

/// Returns the description or the item, which is null once it was handed out.
template <class T>
T& StillOwned(const std::unique_ptr<T>& item, const char* mistake) {
    if (!item) throw std::logic_error(mistake);
    return *item;
}

IMethodMetadataBuilder& Given(IMethodMetadataBuilder* builder) {
    if (builder == nullptr) throw std::logic_error("No metadata builder to return to");
    return *builder;
}

/// Refuses an item without a name, or of a type that no value has: nobody could use it.
void CheckItem(const char* kind, const char* name, bool isOfKnownType) {
    const std::string shown(base::TextOrEmpty(name));
    if (shown.empty()) throw std::invalid_argument(std::string(kind) + " without a name");
    if (!isOfKnownType)
        throw std::invalid_argument(
            std::string(kind) + " '" + shown +
            "' is of none of the types integer, boolean, float, string, table, datetime");
}

bool IsKnown(const char* type) { return std::string_view(type) != "unknown"; }

/// A parameter whose type was never set is bound as it is.
bool IsKnown(const MethodParameter& parameter) {
    const unsigned long long type = parameter.TypeInfoHashCode();
    return IsKnown(parameter.Type()) || type == typeid(const DataTable*).hash_code() ||
           type == typeid(void).hash_code();
}

constexpr const char* kBuilt = "The method has already been built";
constexpr const char* kBound = "The item has already been bound";

}  // namespace

struct MethodMetadataBuilder::State {
    std::unique_ptr<MethodMetadata> record = std::make_unique<MethodMetadata>();
    std::shared_ptr<IMethodParameterBuilder> parameterBuilder;
    std::shared_ptr<IMethodColumnBuilder> columnBuilder;

    MethodMetadata& Record() const { return StillOwned(record, kBuilt); }
};

IMethodMetadataBuilder::~IMethodMetadataBuilder() = default;
IMethodParameterBuilder::~IMethodParameterBuilder() = default;
IMethodColumnBuilder::~IMethodColumnBuilder() = default;

IMethodParameterBuilder& IMethodParameterBuilder::OptionalValue(const char* value) {
    return OptionalValueInternal(typeid(std::string), Variant(value));
}

IMethodParameterBuilder& IMethodParameterBuilder::OptionalValue(const std::string& name,
                                                                const DataTable* const& table) {
    return OptionalValueInternal(name, table);
}

MethodMetadataBuilder::MethodMetadataBuilder() : m_state(std::make_unique<State>()) {}
MethodMetadataBuilder::~MethodMetadataBuilder() = default;

void MethodMetadataBuilder::Undocumented() { m_state->Record().Undocumented(); }
void MethodMetadataBuilder::MethodName(const char* name) { m_state->Record().MethodName(name); }

IMethodMetadataBuilder& MethodMetadataBuilder::Description(const char* text) {
    m_state->Record().Description(text);
    return *this;
}

IMethodParameterBuilder& MethodMetadataBuilder::CreateParameter(const char* name,
                                                                const std::type_info& type) {
    m_state->Record();  // throws after the end
    m_state->parameterBuilder = NewBuilder<IMethodParameterBuilder>();
    IMethodParameterBuilder& builder = *m_state->parameterBuilder;
    builder.MetadataBuilder(*this);
    builder.Name(name);
    builder.Type(type);
    return builder;
}

IMethodMetadataBuilder& MethodMetadataBuilder::HasAdditionalParameters(const char* description) {
    m_state->Record().HasAdditionalParameters(description);
    return *this;
}

IMethodColumnBuilder& MethodMetadataBuilder::CreateColumn(const char* name, const std::type_info& type,
                                                          bool alternative) {
    m_state->Record();  // throws after the end
    m_state->columnBuilder = NewBuilder<IMethodColumnBuilder>();
    IMethodColumnBuilder& builder = *m_state->columnBuilder;
    builder.MetadataBuilder(*this);
    builder.Name(name);
    builder.Type(type.hash_code());
    if (alternative) builder.Alternative();
    return builder;
}

IMethodMetadataBuilder& MethodMetadataBuilder::HasAdditionalColumns(const char* description) {
    m_state->Record().HasAdditionalColumns(description);
    return *this;
}

IMethodMetadataBuilder& MethodMetadataBuilder::BindParameter(const char* name, MethodParameter* parameter) {
    std::unique_ptr<MethodParameter> owned(parameter);
    MethodMetadata& record = m_state->Record();
    record.BindParameter(name, owned.release());
    return *this;
}

IMethodMetadataBuilder& MethodMetadataBuilder::BindColumn(const char* name, MethodColumn* column) {
    std::unique_ptr<MethodColumn> owned(column);
    MethodMetadata& record = m_state->Record();
    record.BindColumn(name, owned.release());
    return *this;
}

IMethodMetadataBuilder& MethodMetadataBuilder::Flags(const std::vector<MetadataFlag>& flags) {
    m_state->Record().Flags(flags);
    return *this;
}

IMethodMetadataBuilder& MethodMetadataBuilder::Warning(const char* text) {
    m_state->Record().Warning(text);
    return *this;
}

IMethodMetadataBuilder& MethodMetadataBuilder::Note(const char* text) {
    m_state->Record().Note(text);
    return *this;
}

IMethodMetadataBuilder& MethodMetadataBuilder::Example(const char* text) {
    m_state->Record().Example(text);
    return *this;
}

std::unique_ptr<IMethodMetadata> MethodMetadataBuilder::Build() { return std::move(m_state->record); }

MethodParameterBuilder::MethodParameterBuilder() : m_parameter(std::make_unique<MethodParameter>()) {}
MethodParameterBuilder::~MethodParameterBuilder() = default;

void MethodParameterBuilder::MetadataBuilder(IMethodMetadataBuilder& builder) { m_builder = &builder; }
void MethodParameterBuilder::Name(const char* name) { m_name = name; }
void MethodParameterBuilder::Type(const std::type_info& type) {
    StillOwned(m_parameter, kBound).SetType(type);
}

IMethodParameterBuilder& MethodParameterBuilder::Description(const char* text) {
    StillOwned(m_parameter, kBound).Description(text);
    return *this;
}

IMethodParameterBuilder& MethodParameterBuilder::Warning(const char* text) {
    StillOwned(m_parameter, kBound).Warning(text);
    return *this;
}

IMethodParameterBuilder& MethodParameterBuilder::Note(const char* text) {
    StillOwned(m_parameter, kBound).Note(text);
    return *this;
}

IMethodParameterBuilder& MethodParameterBuilder::Introduced(
    MetadataAgentVersion version, const std::vector<AgentVersionPlatformPair>& exceptions) {
    StillOwned(m_parameter, kBound).Introduced(version, exceptions);
    return *this;
}

IMethodParameterBuilder& MethodParameterBuilder::Deprecated(MetadataAgentVersion version, const char* text) {
    StillOwned(m_parameter, kBound).Deprecated(version, text);
    return *this;
}

IMethodMetadataBuilder& MethodParameterBuilder::BindParameter() {
    if (m_builder != nullptr) CheckItem("Parameter", m_name, IsKnown(StillOwned(m_parameter, kBound)));
    return Given(m_builder).BindParameter(m_name, m_parameter.release());
}

IMethodParameterBuilder& MethodParameterBuilder::OptionalValueInternal(const std::string& name,
                                                                       const DataTable* const& table) {
    MethodParameter& parameter = StillOwned(m_parameter, kBound);
    parameter.SetType(typeid(const DataTable*));
    parameter.OptionalValue(name, table);
    return *this;
}

IMethodParameterBuilder& MethodParameterBuilder::OptionalValueInternal(const std::type_info& type,
                                                                       const Variant& value) {
    StillOwned(m_parameter, kBound).OptionalValue(type, value);
    return *this;
}

MethodColumnBuilder::MethodColumnBuilder() : m_column(std::make_unique<MethodColumn>()) {}
MethodColumnBuilder::~MethodColumnBuilder() = default;

void MethodColumnBuilder::MetadataBuilder(IMethodMetadataBuilder& builder) { m_builder = &builder; }
void MethodColumnBuilder::Name(const char* name) { m_name = name; }
void MethodColumnBuilder::Type(unsigned long long hash) { StillOwned(m_column, kBound).Type(hash); }
void MethodColumnBuilder::Alternative() { StillOwned(m_column, kBound).Alternative(true); }

IMethodColumnBuilder& MethodColumnBuilder::Description(const char* text) {
    StillOwned(m_column, kBound).Description(text);
    return *this;
}

IMethodColumnBuilder& MethodColumnBuilder::Warning(const char* text) {
    StillOwned(m_column, kBound).Warning(text);
    return *this;
}

IMethodColumnBuilder& MethodColumnBuilder::Note(const char* text) {
    StillOwned(m_column, kBound).Note(text);
    return *this;
}

IMethodColumnBuilder& MethodColumnBuilder::Introduced(
    MetadataAgentVersion version, const std::vector<AgentVersionPlatformPair>& exceptions) {
    StillOwned(m_column, kBound).Introduced(version, exceptions);
    return *this;
}

IMethodColumnBuilder& MethodColumnBuilder::Deprecated(MetadataAgentVersion version, const char* text) {
    StillOwned(m_column, kBound).Deprecated(version, text);
    return *this;
}

IMethodMetadataBuilder& MethodColumnBuilder::BindColumn() {
    if (m_builder != nullptr) CheckItem("Column", m_name, IsKnown(StillOwned(m_column, kBound).Type()));
    return Given(m_builder).BindColumn(m_name, m_column.release());
}

}  // namespace quillon
