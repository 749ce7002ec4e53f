#pragma once

#include <map>
#include <string>
#include <string_view>

#include "quillon/InvocationResult.h"
#include "serve/RequestValue.h"

namespace quillon::agent {

/// One line of a client: a call ("method", with "parameters" or none) or the end of one ("cancel").
struct Request {
    std::string id = kNoId;  ///< a text or an integer of the client's choice, as JSON
    std::string method;
    std::map<std::string, RequestValue> parameters;
    std::string cancel;  ///< the id of a call, as JSON; empty in a call

    static constexpr const char* kNoId = "null";
};

/// Reads a line. Returns what is wrong with it for people, or the empty text; the id is kept in both cases
/// where it can be read.
std::string ReadRequest(std::string_view line, Request& request);

/// Writes the line of an answer, whose id is JSON already: {"id":...,"code":...,"message":...,"table":...},
/// with its line end. The table is an array of objects, or null when there is none.
std::string WriteAnswer(const std::string& id, const InvocationResult& result);

/// Does the same for an answer without a table.
std::string WriteAnswer(const std::string& id, std::int32_t code, const std::string& message);

}  // namespace quillon::agent
