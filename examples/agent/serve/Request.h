#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "quillon/InvocationResult.h"

namespace quillon::agent {

/// One line of a client: a call ("method", with "parameters" or none) or the end of one ("cancel").
struct Request {
    nlohmann::json id;  ///< a text or an integer of the client's choice; null when it gave none
    std::string method;
    nlohmann::json parameters = nlohmann::json::object();  ///< by name
    nlohmann::json cancel;                                 ///< the id of a call; null in a call
};

/// Reads a line. Returns what is wrong with it for people, or the empty text; the id is kept in both cases
/// where it can be read.
std::string ReadRequest(std::string_view line, Request& request);

/// Writes the line of an answer: {"id":...,"code":...,"message":...,"table":...}, with its line end. The
/// table is an array of objects, or null when there is none.
std::string WriteAnswer(const nlohmann::json& id, const InvocationResult& result);

/// Does the same for an answer without a table.
std::string WriteAnswer(const nlohmann::json& id, std::int32_t code, const std::string& message);

}  // namespace quillon::agent
