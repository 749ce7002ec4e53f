#pragma once

#include <windows.h>

#include <memory>

namespace quillon::agent {

struct HandleCloser {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};

/// Owns a handle, and closes it; null is none.
using Handle = std::unique_ptr<HANDLE, HandleCloser>;

}  // namespace quillon::agent
