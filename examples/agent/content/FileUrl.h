#pragma once

#include <string>

namespace quillon::agent {

/// Returns the library path that a URL of the scheme "file" names ("file:///C:/a%20b",
/// "file://localhost/srv/a"); empty for any other URL, also with another host, a query,
/// a fragment or a zero in it.
std::string PathOfFileUrl(const std::string& url);

}  // namespace quillon::agent
