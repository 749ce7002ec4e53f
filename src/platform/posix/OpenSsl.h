#pragma once

#include <openssl/crypto.h>
#include <openssl/err.h>

#include <cstddef>
#include <memory>
#include <string_view>

namespace quillon::platform {

template <auto free>
struct OpenSslFree {
    template <class T>
    void operator()(T* object) const noexcept {
        free(object);
    }
};
template <class T, auto free>
using OpenSslPointer = std::unique_ptr<T, OpenSslFree<free>>;

inline void FreeOpenSslMemory(void* block) { OPENSSL_free(block); }

/// Drops the errors that are noted in its life: the thread's list of them is the host's.
class [[nodiscard]] OpenSslErrors {
public:
    OpenSslErrors() { ::ERR_set_mark(); }
    ~OpenSslErrors() { ::ERR_pop_to_mark(); }
    OpenSslErrors(const OpenSslErrors&) = delete;
    OpenSslErrors& operator=(const OpenSslErrors&) = delete;
};

inline const unsigned char* AsBytes(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}
/// `bytes` may be null when there are none.
inline std::string_view AsText(const unsigned char* bytes, std::size_t size) {
    return {reinterpret_cast<const char*>(bytes), size};
}

}  // namespace quillon::platform
