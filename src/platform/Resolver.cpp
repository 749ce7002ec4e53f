#include <atomic>
#include <deque>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/AddrInfo.h"
#include "platform/ResolverApi.h"

namespace quillon::platform {

namespace {

std::optional<std::string> TextOrNothing(const char* text) {
    return text == nullptr ? std::nullopt : std::optional<std::string>(text);
}

std::atomic<Resolver>& TheResolver() {
    static std::atomic<Resolver> instance{&AskSystem};
    return instance;
}

/// One entry of a copied list.
struct Copy {
    explicit Copy(const addrinfo& source) : info(source) {
        if (source.ai_addr != nullptr) {
            const auto* const bytes = reinterpret_cast<const unsigned char*>(source.ai_addr);
            address.assign(bytes, bytes + source.ai_addrlen);
            info.ai_addr = reinterpret_cast<sockaddr*>(address.data());
        }
        if (source.ai_canonname != nullptr) {
            name = source.ai_canonname;
            info.ai_canonname = name.data();
        }
        info.ai_next = nullptr;
    }
    Copy(const Copy&) = delete;
    Copy& operator=(const Copy&) = delete;

    addrinfo info;
    std::vector<unsigned char> address;
    std::string name;
};

/// The lists that are ours, by their first entries: only they must not go to the system.
struct Copies {
    std::mutex mutex;
    std::unordered_map<const addrinfo*, std::deque<Copy>> lists;
};

/// Never destroyed: a look-up may end while the process does.
Copies& TheCopies() {
    static Copies& instance = *new Copies;
    return instance;
}

}  // namespace

AddressQuery QueryOf(const char* node, const char* service, const addrinfo* hints) {
    AddressQuery query{TextOrNothing(node), TextOrNothing(service), std::nullopt};
    if (hints == nullptr) return query;
    const bool hasMore = hints->ai_addrlen != 0 || hints->ai_addr != nullptr ||
                         hints->ai_canonname != nullptr || hints->ai_next != nullptr;
    query.hints = {hints->ai_flags, hints->ai_family, hints->ai_socktype, hints->ai_protocol,
                   hasMore ? 1 : 0};
    return query;
}

void SetResolver(Resolver resolver) { TheResolver() = resolver == nullptr ? &AskSystem : resolver; }

int ResolveAddresses(const AddressQuery& query, addrinfo*& list) { return TheResolver().load()(query, list); }

int TryAgainCode() { return EAI_AGAIN; }

addrinfo* CopyAddresses(const addrinfo* list) {
    if (list == nullptr) return nullptr;
    std::deque<Copy> copies;
    for (; list != nullptr; list = list->ai_next) {
        Copy& copy = copies.emplace_back(*list);
        if (copies.size() > 1) copies[copies.size() - 2].info.ai_next = &copy.info;
    }
    addrinfo* const first = &copies.front().info;
    Copies& all = TheCopies();
    const std::lock_guard lock(all.mutex);
    all.lists.emplace(first, std::move(copies));
    return first;
}

bool IsOwnList(const addrinfo* list) {
    Copies& all = TheCopies();
    const std::lock_guard lock(all.mutex);
    return all.lists.contains(list);
}

void FreeAddresses(addrinfo* list) {
    if (list == nullptr) return;
    {
        Copies& all = TheCopies();
        const std::lock_guard lock(all.mutex);
        if (all.lists.erase(list) != 0) return;
    }
    ::freeaddrinfo(list);
}

}  // namespace quillon::platform
