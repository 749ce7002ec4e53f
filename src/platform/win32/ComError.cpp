#include "platform/ole/ComError.h"

#include <stdexcept>
#include <string>

namespace quillon::platform {

namespace {

/// What COM's callers catch, and everyone else.
class ComFailure final : public _com_error, public std::runtime_error {
public:
    explicit ComFailure(HRESULT code)
        : _com_error(code), std::runtime_error("COM error " + std::to_string(code)) {}
};

}  // namespace

void RaiseComError(HRESULT code) { throw ComFailure(code); }

}  // namespace quillon::platform
