#pragma once

#include <string>

namespace quillon::platform {

/// Text in Windows-1252, which takes the part of the ANSI code page, as UTF-16.
std::wstring AnsiToWide(const std::string& text);

}  // namespace quillon::platform
