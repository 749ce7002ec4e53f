#include "providers/WmiEnumeration.h"

#include <algorithm>
#include <utility>

#include "providers/WmiOwners.h"

namespace quillon {

namespace {

constexpr std::int32_t kSlice = 100;  // milliseconds

/// What a query that may be left behind needs and gives.
struct Query {
    platform::CComPtr<IWbemServices> services;
    OwnedBstr language, text;
    platform::CComPtr<IEnumWbemClassObject> objects;

    HRESULT Make() {
        constexpr LONG kFlags = WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY;
        return ResultOf(services->ExecQuery(language.get(), text.get(), kFlags, nullptr, &objects), objects);
    }
};

}  // namespace

HRESULT WmiEnumeration::Request::Make() {
    std::array<IWbemClassObject*, kBatch> objectsTaken{};
    returned = 0;
    const HRESULT result = objects->Next(slice, count, objectsTaken.data(), &returned);
    const auto end = objectsTaken.begin() + std::min(returned, count);
    returned = static_cast<ULONG>(std::remove(objectsTaken.begin(), end, nullptr) - objectsTaken.begin());
    for (std::size_t i = 0; i < returned; ++i) taken[i].Attach(objectsTaken[i]);
    return result;
}

HRESULT WmiEnumeration::Start(const platform::CComPtr<IWbemServices>& services, const std::wstring& wql) {
    const auto query = std::make_shared<Query>();
    query->services = services;
    query->language = ToBstr(L"WQL");
    query->text = ToBstr(wql);
    const HRESULT result = m_caller.Run([query] { return query->Make(); });
    if (FAILED(result)) return result;
    m_request = std::make_shared<Request>();
    m_request->objects = query->objects;
    return result;
}

HRESULT WmiEnumeration::Next(std::size_t count, WmiObjects& objects) {
    objects.clear();
    objects.reserve(count);
    for (;;) {
        const HRESULT result = Take(count - objects.size(), objects);
        if (FAILED(result)) return result;
        if (objects.size() >= count || result != static_cast<HRESULT>(WBEM_S_TIMEDOUT)) return S_OK;
        const HRESULT end = m_caller.Limit().Look();
        if (FAILED(end)) return end;
    }
}

HRESULT WmiEnumeration::Take(std::size_t count, WmiObjects& objects) {
    m_request->count = static_cast<ULONG>(count);
    m_request->slice = m_caller.Limit().Left(kSlice);
    const HRESULT result = m_caller.Run([request = m_request] { return request->Make(); });
    if (m_caller.HasLeft()) return result;  // the request is still somebody else's
    for (std::size_t i = 0; i < m_request->returned; ++i)
        objects.push_back(std::exchange(m_request->taken[i], {}));
    m_request->returned = 0;
    return result;
}

}  // namespace quillon
