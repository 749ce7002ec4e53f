#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/Wbem.h"
#include "providers/WmiCaller.h"

namespace quillon {

using WmiObjects = std::vector<platform::CComPtr<IWbemClassObject>>;

/// Gets the objects of one query. ExecQuery returns at once and the enumerator is waited for in slices,
/// so that a thread which was left behind ends soon even if the provider never answers. One thread uses it;
/// nothing is logged.
class WmiEnumeration {
public:
    static constexpr std::size_t kBatch = 100;

    /// The caller makes the calls, and must live as long.
    explicit WmiEnumeration(WmiCaller& caller) : m_caller(caller) {}

    HRESULT Start(const platform::CComPtr<IWbemServices>& services, const std::wstring& wql);
    /// Gets the next objects, at most kBatch. Fewer than `count` are the last ones, or those that came
    /// before the failure that is returned.
    HRESULT Next(std::size_t count, WmiObjects& objects);

private:
    /// What a call that may be left behind needs and gives.
    struct Request {
        platform::CComPtr<IEnumWbemClassObject> objects;
        LONG slice = 0;
        ULONG count = 0, returned = 0;
        std::array<platform::CComPtr<IWbemClassObject>, kBatch> taken;

        HRESULT Make();
    };

    HRESULT Take(std::size_t count, WmiObjects& objects);

    WmiCaller& m_caller;
    std::shared_ptr<Request> m_request;
};

}  // namespace quillon
