#include "platform/ErrorText.h"
#include "testkit/Facilities.h"

// The simulation fails with the last error of the library, not with one of its own.

namespace quillon::platform {

std::uint32_t LastError() { return testkit::Library().lastError(); }

void SetLastErrorCode(std::uint32_t code) { testkit::Library().setLastError(code); }

std::optional<std::string> ErrorCodeText(std::int32_t code) { return testkit::Library().errorText(code); }

}  // namespace quillon::platform
