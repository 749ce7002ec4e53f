#include <algorithm>
#include <array>
#include <mutex>
#include <string>

#include "platform/NetworkApi.h"
#include "quillon/NetworkUtils.h"
#include "quillon/WindowsSockets.h"

namespace quillon {

namespace {

/// A text that is empty until it is found out.
class Name {
public:
    const char* Text() const { return m_text.data(); }
    bool IsKnown() const { return m_text.front() != '\0'; }
    /// Cut to what fits, between characters.
    void Set(const std::string& text) {
        std::size_t length = std::min(text.size(), m_text.size() - 1);
        const auto isInside = [&text](std::size_t at) { return (text[at] & 0xC0) == 0x80; };
        while (length < text.size() && length > 0 && isInside(length)) --length;
        std::copy_n(text.data(), length, m_text.data());
        m_text[length] = '\0';
    }

private:
    std::array<char, 255> m_text{};
};

struct Names {
    std::mutex mutex;
    Name host, fqdn, domain;
};

/// Never destroyed: the texts live as long as the process.
Names& TheNames() {
    static Names& instance = *new Names;
    return instance;
}

bool IsKnown(const Name& name) {
    const std::lock_guard lock(TheNames().mutex);
    return name.IsKnown();
}

/// A failure is logged, and an entry may ask for a name: not under the names' mutex.
void StartSockets() { WindowsSockets::GetInstance()->InitializeSockets(); }

/// The mutex is held.
const Name& HostName(Names& names) {
    if (names.host.IsKnown()) return names.host;
    const std::string name = platform::HostName().value_or("unknown_host");
    names.host.Set(name.substr(0, name.find('.')));
    return names.host;
}

}  // namespace

const char* NetworkUtils::GetHostName() {
    Names& names = TheNames();
    if (IsKnown(names.host)) return names.host.Text();
    StartSockets();
    const std::lock_guard lock(names.mutex);
    return HostName(names).Text();
}

// A name is looked up without the mutex, because that may ask a server and the banner of a log file needs
// the host's name at once.

const char* NetworkUtils::GetFqdn() {
    Names& names = TheNames();
    if (IsKnown(names.fqdn)) return names.fqdn.Text();
    std::string name = platform::FullyQualifiedName().value_or("");
    if (name.empty()) {
        StartSockets();
        name = platform::LoopbackName().value_or("");
    }
    const std::lock_guard lock(names.mutex);
    if (!names.fqdn.IsKnown()) names.fqdn.Set(name.empty() ? HostName(names).Text() : name);
    return names.fqdn.Text();
}

const char* NetworkUtils::GetDomainName() {
    Names& names = TheNames();
    if (IsKnown(names.domain)) return names.domain.Text();
    const std::string name = platform::FlatDomainName().value_or("(unknown)");
    const std::lock_guard lock(names.mutex);
    if (!names.domain.IsKnown()) names.domain.Set(name);
    return names.domain.Text();
}

}  // namespace quillon
