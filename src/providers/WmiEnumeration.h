#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/Wbem.h"

namespace quillon {

using WmiObjects = std::vector<platform::CComPtr<IWbemClassObject>>;

/// The objects of one query. A wait for them is cut into slices, so that the host's
/// shutdown and a deadline can end it.
class WmiEnumeration {
public:
    static constexpr std::size_t kBatch = 100;

    /// The deadline counts from here, in milliseconds; 0 and less is none.
    explicit WmiEnumeration(std::int32_t deadline);

    HRESULT Start(IWbemServices& services, const std::wstring& wql);
    /// The next objects, at most kBatch. Fewer than `count` are the last, or all that came
    /// before the failure that is returned.
    HRESULT Next(std::size_t count, WmiObjects& objects);

private:
    using Clock = std::chrono::steady_clock;

    HRESULT Take(std::size_t count, WmiObjects& objects);
    LONG SliceLength() const;
    HRESULT LookForEnd() const;

    platform::CComPtr<IEnumWbemClassObject> m_objects;
    std::optional<Clock::time_point> m_end;
};

}  // namespace quillon
