#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quillon::simulation {

/// [\\server\name\space:]Class, Class.Key="text",Other=number, Class="text" or Class=@.
struct WmiPath {
    std::optional<std::wstring> server, nameSpace;
    std::wstring className;
    bool isClass = false;
    bool isSingleton = false;
    /// Names, empty for the only one, and what stands for the values, without quotes and escapes.
    std::vector<std::pair<std::wstring, std::wstring>> keys;
};

/// Reads a path; nothing when it is malformed.
std::optional<WmiPath> ParseWmiPath(std::wstring_view text);

/// A namespace with backslashes, and the server in front of it if there is one. Nothing when a part is empty.
struct WmiNamespacePath {
    std::optional<std::wstring> server;
    std::wstring nameSpace;
};
std::optional<WmiNamespacePath> ParseWmiNamespace(std::wstring_view text);

/// Whether a server's name means `host` itself.
bool IsThisHost(std::wstring_view server, std::wstring_view host);

}  // namespace quillon::simulation
