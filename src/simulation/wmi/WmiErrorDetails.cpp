#include "simulation/wmi/WmiErrorDetails.h"

#include <utility>

namespace quillon::simulation {

namespace {

std::wstring& Details() {
    thread_local std::wstring details;
    return details;
}

}  // namespace

void NoteErrorDetails(std::wstring details) { Details() = std::move(details); }

std::wstring TakeErrorDetails() { return std::exchange(Details(), {}); }

}  // namespace quillon::simulation
