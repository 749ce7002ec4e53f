#pragma once

#include <cstdint>
#include <string>

#include "quillon/Export.h"

namespace quillon {

/// A URL reduced to scheme, host, port and path. A plain value.
class QUILLON_API Url {
public:
    /// Text that is no URL at all gives one that is not valid and prints as it was
    /// given. A port that is not written is 80 for http, 443 for https, else 0; blanks
    /// in the path become %20, an empty path "/". User information and IPv6 literals
    /// are not understood. Valid: http or https (any case), a host, a port that is not 0.
    static Url Parse(const std::string& text);

    const std::string& Scheme() const;
    const std::string& Host() const;
    const std::string& Path() const;
    unsigned int Port() const;
    bool IsValid() const;
    /// scheme://host:port/path, the port always written.
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
