// The callback of a subscription has the system's type. CHECK_BEFORE says which header comes first; the
// other order needs QUILLON_NO_WINDOWS_NAMES.

#ifdef CHECK_BEFORE
#include <windows.h>
// After <windows.h>:
#include <winevt.h>
#else
#define QUILLON_NO_WINDOWS_NAMES
#endif

#include "quillon/EventLogProxy.h"

#ifndef CHECK_BEFORE
#include <windows.h>
// After <windows.h>:
#include <winevt.h>
#endif

using namespace quillon;

namespace {

unsigned long Take(EVT_SUBSCRIBE_NOTIFY_ACTION action, void*, void*) {
    return action == EvtSubscribeActionDeliver ? ERROR_SUCCESS : ERROR_INVALID_FUNCTION;
}

}  // namespace

void* Subscribe() {
    return EventLogProxy::EvtSubscribe(nullptr, nullptr, L"Application", L"*", nullptr, nullptr, &Take,
                                       EvtSubscribeToFutureEvents);
}
