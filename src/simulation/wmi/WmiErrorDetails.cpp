#include "simulation/wmi/WmiErrorDetails.h"

#include <memory>
#include <utility>

#include "platform/ThreadSlot.h"

namespace quillon::simulation {

namespace {

/// Each thread's. An object of the thread would end the process when there is no memory for it.
const platform::ThreadSlot& Slot() {
    static const platform::ThreadSlot& slot =
        *new platform::ThreadSlot([](void* details) { delete static_cast<std::wstring*>(details); });
    return slot;
}

}  // namespace

void NoteErrorDetails(std::wstring details) {
    auto* kept = static_cast<std::wstring*>(Slot().Get());
    if (kept == nullptr && !details.empty()) {
        auto made = std::make_unique<std::wstring>();
        if (Slot().Set(made.get())) kept = made.release();
    }
    if (kept != nullptr) *kept = std::move(details);
}

std::wstring TakeErrorDetails() {
    auto* const kept = static_cast<std::wstring*>(Slot().Get());
    return kept == nullptr ? std::wstring() : std::exchange(*kept, {});
}

}  // namespace quillon::simulation
