#include "common/ParameterType.h"

#include <typeinfo>

#include "quillon/DataTable.h"

namespace quillon::agent {

std::string ParameterType(const MethodParameter& parameter) {
    const bool isTable = parameter.TypeInfoHashCode() == typeid(const DataTable*).hash_code();
    return isTable ? MetadataUtils::Type(typeid(DataTable).hash_code()) : parameter.Type();
}

}  // namespace quillon::agent
