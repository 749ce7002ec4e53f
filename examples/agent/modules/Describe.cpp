#include "modules/Describe.h"

#include <string>

namespace quillon::agent {

void AddParameter(IMethodMetadataBuilder& builder, const char* name, const char* description) {
    builder.CreateParameter(name, typeid(std::string)).Description(description).BindParameter();
}

void AddOptionalParameter(IMethodMetadataBuilder& builder, const char* name, const char* description) {
    builder.CreateParameter(name, typeid(std::string))
        .Description(description)
        .OptionalValue("")
        .BindParameter();
}

void AddFlag(IMethodMetadataBuilder& builder, const char* name, const char* description) {
    builder.CreateParameter(name, typeid(bool)).Description(description).OptionalValue(false).BindParameter();
}

void AddColumn(IMethodMetadataBuilder& builder, const char* name, const std::type_info& type,
               const char* description) {
    builder.CreateColumn(name, type, false).Description(description).BindColumn();
}

}  // namespace quillon::agent
