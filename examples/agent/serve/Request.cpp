#include "serve/Request.h"

#include "common/ShownText.h"
#include "quillon/DataTableIO.h"

namespace quillon::agent {

namespace {

using nlohmann::json;

bool IsId(const json& value) { return value.is_string() || value.is_number_integer(); }

/// Takes one member of the request; returns what is wrong with it.
std::string TakeMember(const std::string& key, json& value, Request& request) {
    if (key == "id") {
        if (!IsId(value)) return "'id' must be a text or an integer";
        request.id = std::move(value);
    } else if (key == "method") {
        if (!value.is_string()) return "'method' must be a text";
        request.method = std::move(value.get_ref<std::string&>());
    } else if (key == "parameters") {
        if (!value.is_object()) return "'parameters' must be an object";
        request.parameters = std::move(value);
    } else if (key == "cancel") {
        if (!IsId(value)) return "'cancel' must be the id of a call";
        request.cancel = std::move(value);
    } else {
        return "'" + ShownText(key) + "' is no member of a request";
    }
    return {};
}

std::string TakeMembers(json& document, Request& request) {
    std::string fault;
    for (auto& [key, value] : document.items()) {
        std::string wrong = TakeMember(key, value, request);
        if (fault.empty()) fault = std::move(wrong);
    }
    return fault;
}

/// A message may hold bytes that are no UTF-8.
std::string ToText(const json& value) { return value.dump(-1, ' ', false, json::error_handler_t::replace); }

std::string WriteMembers(const json& id, std::int32_t code, const std::string& message,
                         const std::string& table) {
    return "{\"id\":" + ToText(id) + ",\"code\":" + std::to_string(code) + ",\"message\":" + ToText(message) +
           ",\"table\":" + table + "}\n";
}

}  // namespace

std::string ReadRequest(std::string_view line, Request& request) {
    json document;
    try {
        document = json::parse(line);
    } catch (const json::exception& error) {
        const std::string_view text = error.what();  // begins with the error's name in brackets
        return ShownText("The line is not JSON: " + std::string(text.substr(text.find(' ') + 1)));
    }
    if (!document.is_object()) return "The line must be a JSON object";
    std::string fault = TakeMembers(document, request);
    if (!fault.empty()) return fault;
    if (request.method.empty() == request.cancel.is_null())
        return "A request has either a 'method' or a 'cancel'";
    return {};
}

std::string WriteAnswer(const json& id, const InvocationResult& result) {
    const bool hasTable = !result.resultTable.IsUndefined();
    return WriteMembers(id, result.resultCode, result.errorMessage,
                        hasTable ? ToJson(result.resultTable) : "null");
}

std::string WriteAnswer(const json& id, std::int32_t code, const std::string& message) {
    return WriteMembers(id, code, message, "null");
}

}  // namespace quillon::agent
