#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

#include "quillon/InvocationResult.h"

namespace quillon::agent {

/// Writes a code and a message for people (UTF-8) into the result. Returns false.
bool Fail(std::int32_t code, const std::string& message, InvocationResult& result);
/// Does the same with the code of a bad parameter.
bool RefuseParameter(const std::string& message, InvocationResult& result);

/// Returns whether a parameter's text has no zero byte, at which the system would end it; refuses one that
/// has.
bool HasNoZeroByte(const std::string& name, const std::string& text, InvocationResult& result);

/// Codes of the last error.
constexpr int kFileNotFound = 2, kPathNotFound = 3, kNoDirectory = 267;

/// Returns the text of the thread's last error; nothing when that is none (0), or one of those codes.
std::string LastFailure(std::initializer_list<int> expected);

/// Says, with the code, that there is no such thing, such as "file 'x'"; where the last error is that it
/// could not be looked for, why, with the code of what the system refuses. Returns false.
bool FailAsMissing(std::int32_t code, const std::string& what, InvocationResult& result);

}  // namespace quillon::agent
