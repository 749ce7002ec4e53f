#include "platform/ErrorText.h"
#include "platform/TextApi.h"
#include "platform/ole/OleTypes.h"
#include "testkit/Facilities.h"

// What the simulation needs of the seam. It fails with the last error of the library, not with one of its
// own.

namespace quillon::platform {

std::uint32_t LastError() { return testkit::Library().lastError(); }

void SetLastErrorCode(std::uint32_t code) { testkit::Library().setLastError(code); }

std::optional<std::string> ErrorCodeText(std::int32_t code) { return testkit::Library().errorText(code); }

std::wstring_view BstrText(BSTR text) { return {text, SysStringLen(text)}; }

}  // namespace quillon::platform
