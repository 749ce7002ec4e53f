#include "providers/WmiEnumeration.h"

#include <algorithm>
#include <array>

#include "providers/WmiOwners.h"
#include "quillon/IShutdownMonitor.h"
#include "quillon/ServiceLocator.h"

namespace quillon {

namespace {

constexpr std::chrono::milliseconds kSlice{500};
constexpr HRESULT kTimedOut = static_cast<HRESULT>(0x800705B4);      // ERROR_TIMEOUT
constexpr HRESULT kShuttingDown = static_cast<HRESULT>(0x800704C7);  // ERROR_CANCELLED

bool IsShuttingDown() {
    auto* const monitor = ServiceLocator::Get<IShutdownMonitor>(true);
    return monitor != nullptr && monitor->IsShutdownRequested();
}

}  // namespace

WmiEnumeration::WmiEnumeration(std::int32_t deadline) {
    if (deadline > 0) m_end = Clock::now() + std::chrono::milliseconds(deadline);
}

HRESULT WmiEnumeration::Start(IWbemServices& services, const std::wstring& wql) {
    const OwnedBstr language = ToBstr(L"WQL");
    const OwnedBstr query = ToBstr(wql);
    constexpr LONG kFlags = WBEM_FLAG_FORWARD_ONLY | WBEM_FLAG_RETURN_IMMEDIATELY;
    return services.ExecQuery(language.get(), query.get(), kFlags, nullptr, &m_objects);
}

HRESULT WmiEnumeration::Next(std::size_t count, WmiObjects& objects) {
    objects.clear();
    objects.reserve(count);
    for (;;) {
        const HRESULT result = Take(count - objects.size(), objects);
        if (FAILED(result)) return result;
        if (objects.size() >= count || result != static_cast<HRESULT>(WBEM_S_TIMEDOUT)) return S_OK;
        const HRESULT end = LookForEnd();
        if (FAILED(end)) return end;
    }
}

HRESULT WmiEnumeration::Take(std::size_t count, WmiObjects& objects) {
    std::array<IWbemClassObject*, kBatch> taken{};
    ULONG returned = 0;
    const HRESULT result = m_objects->Next(SliceLength(), static_cast<ULONG>(count), taken.data(), &returned);
    for (std::size_t i = 0; i < std::min<std::size_t>(returned, count); ++i) {
        objects.emplace_back().Attach(taken[i]);
    }
    return result;
}

LONG WmiEnumeration::SliceLength() const {
    auto slice = kSlice;
    if (m_end) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*m_end - Clock::now());
        slice = std::clamp(left, std::chrono::milliseconds(0), kSlice);
    }
    return static_cast<LONG>(slice.count());
}

HRESULT WmiEnumeration::LookForEnd() const {
    if (IsShuttingDown()) return kShuttingDown;
    return m_end && Clock::now() >= *m_end ? kTimedOut : S_OK;
}

}  // namespace quillon
