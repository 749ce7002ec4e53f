#pragma once

#include <cstdint>
#include <string>

#include "quillon/Export.h"

namespace quillon {

/// Holds a URL reduced to scheme, host, port and path. It is a plain value: copies share
/// nothing, and different objects may be used on different threads.
///
/// Parse() never fails and never throws; IsValid() tells whether the library could use the
/// result. User information, IPv6 literals, queries and fragments are not told apart: the first
/// stay in the host, the last two in the path.
///
/// @code
/// const Url url = Url::Parse("HTTPS://server.example/a b");
/// if (url.IsValid()) std::cout << url.ToString() << '\n';  // HTTPS://server.example:443/a%20b
/// std::cout << url.Host() << ':' << url.Port() << '\n';    // server.example:443
/// @endcode
class QUILLON_API Url {
public:
    /// Takes a text "scheme://host[:port][/path]" apart. Without a port it is 80 for http, 443
    /// for https (in any case), else 0; one that is not a number is 0. Blanks in the path
    /// become "%20", other characters stay; an empty path becomes "/". Any other text, one
    /// whose host ends in ':' included, gives an invalid Url whose parts are empty and whose
    /// ToString() is the text itself, for the empty text "://:0".
    static Url Parse(const std::string& text);

    /// Returns the part as it was written, nothing decoded and the case kept; empty for a text
    /// that could not be parsed. The reference is valid as long as the object.
    const std::string& Scheme() const;
    const std::string& Host() const;
    const std::string& Path() const;
    /// Returns the port that was written or follows from the scheme, 0 when there is none. The
    /// range is not checked: a port may exceed 65535.
    unsigned int Port() const;
    /// Returns whether the scheme is http or https, in any case, the host is not empty and the
    /// port is not 0.
    bool IsValid() const;
    /// Returns "scheme://host:port/path" with the port always written, or the text itself when
    /// it could not be parsed.
    std::string ToString() const;

private:
    explicit Url(const std::string& raw);
    Url(std::string scheme, std::string host, std::string path, std::uint32_t port);

    bool Validate() const;

    std::uint32_t m_port = 0;
    bool m_valid = false;
    std::string m_scheme;
    std::string m_host;
    std::string m_path;
    std::string m_raw;  // only of what could not be parsed
};

}  // namespace quillon
