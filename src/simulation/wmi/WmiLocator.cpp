#include "simulation/wmi/WmiLocator.h"

#include "simulation/WbemCode.h"
#include "simulation/wmi/WmiCoercion.h"
#include "simulation/wmi/WmiPath.h"
#include "simulation/wmi/WmiServices.h"

namespace quillon::simulation {

namespace {

constexpr HRESULT kServerUnavailable = static_cast<HRESULT>(0x800706BA);

}  // namespace

HRESULT WmiLocator::ConnectServer(BSTR path, BSTR, BSTR, BSTR, LONG, BSTR, IWbemContext*,
                                  IWbemServices** services) {
    if (const auto code = State()->Begin(WmiCall::ConnectServer)) return *code;
    if (path == nullptr || services == nullptr) return Code(WBEM_E_INVALID_PARAMETER);
    *services = nullptr;
    const auto parsed = ParseWmiNamespace(View(path));
    if (!parsed) return Code(WBEM_E_INVALID_NAMESPACE);
    if (parsed->server && !IsThisHost(*parsed->server, State()->host)) return kServerUnavailable;

    const std::lock_guard lock(State()->mutex);
    if (!State()->namespaces.contains(parsed->nameSpace)) return Code(WBEM_E_INVALID_NAMESPACE);
    *services = new WmiServices(State(), parsed->nameSpace);
    return S_OK;
}

}  // namespace quillon::simulation
