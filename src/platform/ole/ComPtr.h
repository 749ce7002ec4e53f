#pragma once

#include <utility>

namespace quillon::platform {

/// Owns one reference to a COM object, with the operations of ATL's class of this name that the library uses.
template <class T>
class CComPtr {
public:
    CComPtr() noexcept = default;
    CComPtr(T* object) noexcept : p(object) {
        if (p != nullptr) p->AddRef();
    }
    CComPtr(const CComPtr& other) noexcept : CComPtr(other.p) {}
    CComPtr(CComPtr&& other) noexcept : p(other.Detach()) {}
    ~CComPtr() { Release(); }
    CComPtr& operator=(CComPtr other) noexcept {
        std::swap(p, other.p);
        return *this;
    }

    /// Where a call puts a new reference; empty before it.
    T** operator&() noexcept { return &p; }
    T* operator->() const noexcept { return p; }
    operator T*() const noexcept { return p; }

    void Release() noexcept {
        if (T* const object = std::exchange(p, nullptr)) object->Release();
    }
    /// Takes a reference over.
    void Attach(T* object) noexcept {
        Release();
        p = object;
    }
    T* Detach() noexcept { return std::exchange(p, nullptr); }

    T* p = nullptr;
};

}  // namespace quillon::platform
