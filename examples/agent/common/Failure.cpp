#include "common/Failure.h"

namespace quillon::agent {

bool Fail(std::int32_t code, const std::string& message, InvocationResult& result) {
    result.resultCode = code;
    result.errorMessage = message;
    return false;
}

bool RefuseParameter(const std::string& message, InvocationResult& result) {
    return Fail(InvocationResult::kBadParameter, message, result);
}

}  // namespace quillon::agent
