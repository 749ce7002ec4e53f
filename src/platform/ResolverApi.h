#pragma once

#include <array>
#include <optional>
#include <string>

struct addrinfo;

namespace quillon::platform {

/// A question to the system's resolver, with all that belongs to it.
struct AddressQuery {
    std::optional<std::string> node, service;
    /// Flags, family, socket type and protocol; 1 when any of the other fields is set, which
    /// Windows refuses, else 0.
    std::optional<std::array<int, 5>> hints;

    auto operator<=>(const AddressQuery&) const = default;
};
AddressQuery QueryOf(const char* node, const char* service, const addrinfo* hints);

/// Asks the system, however long it takes, for the list that its getaddrinfo() gives. Texts are UTF-8 on
/// every system, those of the list included. The list is for FreeAddresses().
int AskSystem(const AddressQuery& query, addrinfo*& list) noexcept;

/// Answers as AskSystem() does.
using Resolver = int (*)(const AddressQuery& query, addrinfo*& list);
/// Puts a resolver in the system's place, which null puts back: the system's own
/// cannot be told whom to ask. Thread-safe.
void SetResolver(Resolver resolver);
int ResolveAddresses(const AddressQuery& query, addrinfo*& list);
/// Returns the code of getaddrinfo() for a failure after which the same query may succeed.
int TryAgainCode();
/// Returns the system's text for a code of getaddrinfo(), in UTF-8; empty when it has none.
std::string ResolverErrorText(int code);

/// A list of our own, to be freed by FreeAddresses(); null of null.
addrinfo* CopyAddresses(const addrinfo* list);
/// Returns whether the list is one of our own, which the system's function could not free.
bool IsOwnList(const addrinfo* list);
/// Frees a list of the system's or of CopyAddresses(); null is ignored. Any thread,
/// also while the process ends.
void FreeAddresses(addrinfo* list);

}  // namespace quillon::platform
