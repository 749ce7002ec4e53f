#include "metadata/MethodDescription.h"

#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "base/TextOrEmpty.h"
#include "base/Utf.h"
#include "quillon/DataTable.h"
#include "quillon/MethodMetadata.h"

namespace quillon {
namespace {

using Json = nlohmann::ordered_json;

std::string Text(const char* text) { return base::RepairUtf8(base::TextOrEmpty(text)); }

template <class Item>
void DescribeRemarks(Json& object, const Item& item) {
    Json warnings = Json::array(), notes = Json::array();
    item.VisitWarning([&warnings](const char* text) { warnings.push_back(Text(text)); });
    item.VisitNote([&notes](const char* text) { notes.push_back(Text(text)); });
    object["warnings"] = std::move(warnings);
    object["notes"] = std::move(notes);
}

template <class Item>
void DescribeVersions(Json& object, const Item& item) {
    Json introduced = Json::object(), deprecated;
    item.VisitIntroduced([&introduced](const char* platform, const char* version) {
        introduced[Text(platform)] = Text(version);
    });
    item.VisitDeprecated([&deprecated](const char* version, const char* text) {
        deprecated = {{"version", Text(version)}, {"text", Text(text)}};
    });
    object["introduced"] = std::move(introduced);
    object["deprecated"] = std::move(deprecated);
}

Json ScalarValue(const Variant& value) {
    if (value.IsNull()) return nullptr;
    if (value.TypeIs(typeid(long long))) return value.GetLongLongValue();
    if (value.TypeIs(typeid(bool))) return value.GetBoolValue();
    if (value.TypeIs(typeid(double))) return value.GetDoubleValue();
    return base::RepairUtf8(value.AsString());
}

/// The same as ToJson() gives. Its text is not parsed, as the JSON library asks the process's locale.
Json TableValue(const DataTable& table) {
    const std::vector<std::string> names = table.GetAllColumnNames();
    Json rows = Json::array();
    for (const VariantList& row : table) {
        Json object = Json::object();
        for (const std::string& name : names) {
            const Variant* const cell = row.Find(name);
            object[base::RepairUtf8(name)] = cell != nullptr ? ScalarValue(*cell) : Json();
        }
        rows.push_back(std::move(object));
    }
    return rows;
}

Json DefaultValue(const MethodParameter& parameter) {
    if (const DataTable* table = parameter.OptionalTable()) return TableValue(*table);
    Variant value;
    return parameter.GetOptionalValue(value) ? ScalarValue(value) : nullptr;
}

/// A default makes a table's parameter one of a pointer to it.
std::string ParameterTypeName(const MethodParameter& parameter) {
    const bool isTable = parameter.TypeInfoHashCode() == typeid(const DataTable*).hash_code();
    return isTable ? MetadataUtils::Type(typeid(DataTable).hash_code()) : parameter.Type();
}

Json DescribeParameter(const char* name, const MethodParameter& parameter) {
    Variant ignored;
    Json object = {{"name", Text(name)},
                   {"type", ParameterTypeName(parameter)},
                   {"optional", parameter.GetOptionalValue(ignored)},
                   {"default", DefaultValue(parameter)},
                   {"description", Text(parameter.Description())}};
    DescribeRemarks(object, parameter);
    DescribeVersions(object, parameter);
    return object;
}

Json DescribeColumn(const char* name, const MethodColumn& column) {
    Json object = {{"name", Text(name)},
                   {"type", column.Type()},
                   {"alternative", column.Alternative()},
                   {"description", Text(column.Description())}};
    DescribeRemarks(object, column);
    DescribeVersions(object, column);
    return object;
}

Json TextWhen(bool has, const char* text) { return has ? Json(Text(text)) : Json(); }

}  // namespace

Json DescribeMethod(const IMethodMetadataReader& method) {
    Json flags = Json::array(), parameters = Json::array(), columns = Json::array();
    method.VisitFlag([&flags](const char* text) { flags.push_back(Text(text)); });
    method.VisitParameter([&parameters](const char* name, const MethodParameter& parameter) {
        parameters.push_back(DescribeParameter(name, parameter));
    });
    method.VisitColumn([&columns](const char* name, const MethodColumn& column) {
        columns.push_back(DescribeColumn(name, column));
    });

    Json object = {{"name", Text(method.MethodName())},
                   {"description", Text(method.Description())},
                   {"example", Text(method.Example())},
                   {"flags", std::move(flags)}};
    DescribeRemarks(object, method);
    DescribeVersions(object, method);
    object["undocumented"] = method.IsUndocumented();
    object["parameters"] = std::move(parameters);
    object["columns"] = std::move(columns);
    object["additionalParameters"] =
        TextWhen(method.HasAdditionalParameters(), method.AdditionalParametersDescription());
    object["additionalColumns"] =
        TextWhen(method.HasAdditionalColumns(), method.AdditionalColumnsDescription());
    return object;
}

}  // namespace quillon
