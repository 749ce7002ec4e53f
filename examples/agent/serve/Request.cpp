#include "serve/Request.h"

#include <utility>

#include "common/ShownText.h"
#include "quillon/DataTableIO.h"
#include "serve/RequestReader.h"

namespace quillon::agent {

namespace {

using Kind = RequestValue::Kind;

/// Takes an id; returns what is wrong with it.
std::string TakeId(const RequestValue& value, const char* fault, std::string& id) {
    if (value.kind == Kind::Text) {
        id = JsonText(value.text);
    } else if (value.kind == Kind::Integer) {
        id = std::to_string(value.integer);
    } else if (value.kind == Kind::TooLarge) {
        id = std::to_string(static_cast<unsigned long long>(value.integer));
    } else {
        return fault;
    }
    return {};
}

/// Takes one member of the request; returns what is wrong with it.
std::string TakeMember(const std::string& key, RequestMembers& members, Request& request) {
    RequestValue& value = members.values[key];
    if (key == "id") return TakeId(value, "'id' must be a text or an integer", request.id);
    if (key == "cancel") return TakeId(value, "'cancel' must be the id of a call", request.cancel);
    if (key == "method") {
        if (value.kind != Kind::Text) return "'method' must be a text";
        request.method = std::move(value.text);
    } else if (key == "parameters") {
        if (value.kind != Kind::Object) return "'parameters' must be an object";
        request.parameters = std::move(members.objects[key]);
    } else {
        return "'" + ShownText(key) + "' is no member of a request";
    }
    return {};
}

std::string TakeMembers(RequestMembers& members, Request& request) {
    std::string fault;
    for (const auto& [key, value] : members.values) {
        std::string wrong = TakeMember(key, members, request);
        if (fault.empty()) fault = std::move(wrong);
    }
    return fault;
}

std::string WriteMembers(const std::string& id, std::int32_t code, const std::string& message,
                         const std::string& table) {
    return "{\"id\":" + id + ",\"code\":" + std::to_string(code) + ",\"message\":" + JsonText(message) +
           ",\"table\":" + table + "}\n";
}

}  // namespace

std::string ReadRequest(std::string_view line, Request& request) {
    RequestMembers members;
    std::string fault = members.Read(line);
    if (fault.empty()) fault = TakeMembers(members, request);
    if (!fault.empty()) return fault;
    if (request.method.empty() == request.cancel.empty())
        return "A request has either a 'method' or a 'cancel'";
    return {};
}

std::string WriteAnswer(const std::string& id, const InvocationResult& result) {
    const bool hasTable = !result.resultTable.IsUndefined();
    return WriteMembers(id, result.resultCode, result.errorMessage,
                        hasTable ? ToJson(result.resultTable) : "null");
}

std::string WriteAnswer(const std::string& id, std::int32_t code, const std::string& message) {
    return WriteMembers(id, code, message, "null");
}

}  // namespace quillon::agent
