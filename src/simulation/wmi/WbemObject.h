#pragma once

#include <atomic>
#include <memory>
#include <utility>

#include "platform/ole/WbemBase.h"
#include "simulation/wmi/WmiState.h"

namespace quillon::simulation {

/// Begins with one reference, which is its maker's, and goes with the last one. Keeps the repository's
/// state alive, and stands in its count of live objects.
template <class Interface>
class WbemObject : public platform::WbemBase<Interface> {
public:
    explicit WbemObject(std::shared_ptr<WmiState> state) : m_state(std::move(state)) {
        ++m_state->liveObjects;
    }
    WbemObject(const WbemObject&) = delete;
    WbemObject& operator=(const WbemObject&) = delete;

    ULONG AddRef() override { return ++m_references; }
    ULONG Release() override {
        const ULONG left = --m_references;
        if (left == 0) delete this;
        return left;
    }

protected:
    virtual ~WbemObject() { --m_state->liveObjects; }

    const std::shared_ptr<WmiState>& State() const { return m_state; }

private:
    const std::shared_ptr<WmiState> m_state;
    std::atomic<ULONG> m_references{1};
};

}  // namespace quillon::simulation
