#include "common/Failure.h"

#include <algorithm>

#include "quillon/ErrorHelper.h"

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

std::string LastFailure(std::initializer_list<int> expected) {
    const int code = ErrorHelper::GetLastErrorCode();
    const bool isExpected = std::find(expected.begin(), expected.end(), code) != expected.end();
    return isExpected ? std::string() : ErrorHelper::GetErrorMessage(code);  // that of 0 is empty
}

bool FailAsMissing(std::int32_t code, const std::string& what, InvocationResult& result) {
    const std::string reason = LastFailure({kFileNotFound, kPathNotFound, kNoDirectory});
    if (reason.empty()) return Fail(code, "There is no " + what, result);
    return Fail(InvocationResult::kSystemFailure, "Cannot look for " + what + ": " + reason, result);
}

}  // namespace quillon::agent
