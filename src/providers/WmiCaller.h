#pragma once

#include <functional>
#include <memory>
#include <string>

#include "providers/WmiLimit.h"

namespace quillon {

/// Makes the calls of one operation of a connector. A call of WMI cannot be cancelled, and a provider that
/// never returns would take its caller's thread. Therefore, where a limit exists, the calls run on a thread
/// of their own, on which COM is initialised, and which is left behind when the limit is reached: it ends
/// when its call does. One thread at a time uses a caller; nothing is logged.
class WmiCaller {
public:
    /// The call must own all that it uses, as it may go on after the operation has ended.
    using Call = std::function<HRESULT()>;

    /// Further threads are not left behind: then every call is refused.
    static constexpr int kMostLeftBehind = 16;
    /// Returns how many calls are still under way that nobody waits for.
    static int LeftBehind();

    explicit WmiCaller(std::int32_t deadline) : m_limit(deadline) {}
    ~WmiCaller();
    WmiCaller(const WmiCaller&) = delete;
    WmiCaller& operator=(const WmiCaller&) = delete;

    const WmiLimit& Limit() const { return m_limit; }
    /// Returns the result of the call, or why it was not made or not waited for; see WmiLimit::Look().
    HRESULT Run(Call call);
    /// Returns what WMI said about the failure of the last call, and forgets it.
    std::wstring TakeDetails();
    /// Returns whether a call was left behind.
    bool HasLeft() const { return m_hasLeft; }

private:
    struct Worker;

    bool Start();
    HRESULT Await();

    const WmiLimit m_limit;
    std::shared_ptr<Worker> m_worker;
    std::wstring m_details;
    bool m_hasLeft = false;
};

}  // namespace quillon
