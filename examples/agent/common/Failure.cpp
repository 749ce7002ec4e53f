#include "common/Failure.h"

#include <algorithm>

#include "quillon/StringUtils.h"

namespace quillon::agent {

bool Fail(std::int32_t code, const std::string& message, InvocationResult& result) {
    result.resultCode = code;
    result.errorMessage = message;
    return false;
}

bool RefuseParameter(const std::string& message, InvocationResult& result) {
    return Fail(InvocationResult::kBadParameter, message, result);
}

bool HasNoZeroByte(const std::string& name, const std::string& text, InvocationResult& result) {
    return text.find('\0') == std::string::npos ||
           RefuseParameter("'" + name + "' must have no zero byte", result);
}

/// The library tells the last error as a text only, so the texts of the codes are compared.
std::string LastFailure(std::initializer_list<std::int32_t> expected) {
    std::string reason = StringUtils::GetLastErrorAsString();
    const auto isText = [&reason](std::int32_t code) {
        return StringUtils::GetErrorAsString(code) == reason;
    };
    return isText(0) || std::any_of(expected.begin(), expected.end(), isText) ? std::string() : reason;
}

const char* WhatOf(const std::exception& error) {
    const char* const text = error.what();
    return text != nullptr ? text : "";
}

}  // namespace quillon::agent
