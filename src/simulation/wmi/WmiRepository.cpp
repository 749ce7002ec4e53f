#include "simulation/wmi/WmiRepository.h"

#include <stdexcept>

#include "simulation/wmi/WmiErrorDetails.h"
#include "simulation/wmi/WmiLocator.h"
#include "simulation/wmi/WmiPath.h"
#include "simulation/wmi/WmiState.h"

namespace quillon::simulation {

namespace {

std::wstring NamespaceOf(const std::wstring& text) {
    auto parsed = ParseWmiNamespace(text);
    if (!parsed || parsed->server) throw std::invalid_argument("malformed WMI namespace");
    return std::move(parsed->nameSpace);
}

/// Makes it and those above it.
WmiNamespace& MakeNamespace(WmiState& state, const std::wstring& name) {
    for (std::size_t end = name.find(L'\\'); end != std::wstring::npos; end = name.find(L'\\', end + 1)) {
        const std::wstring parent = name.substr(0, end);
        state.namespaces.try_emplace(parent, WmiNamespace{parent, {}});
    }
    return state.namespaces.try_emplace(name, WmiNamespace{name, {}}).first->second;
}

}  // namespace

WmiRepository::WmiRepository(std::wstring hostName)
    : m_state(std::make_shared<WmiState>(std::move(hostName))) {}

WmiRepository::~WmiRepository() = default;

void WmiRepository::AddClass(const std::wstring& ns, WmiClass wmiClass) {
    const std::wstring name = NamespaceOf(ns);
    const std::wstring className = wmiClass.name;
    const std::lock_guard lock(m_state->mutex);
    WmiNamespace& space = MakeNamespace(*m_state, name);
    WmiTable table(MakeSchema(m_state->host, space.name, std::move(wmiClass)));
    space.tables.insert_or_assign(className, std::move(table));
}

void WmiRepository::AddInstance(const std::wstring& ns, const std::wstring& className,
                                const WmiValues& values) {
    const std::wstring name = NamespaceOf(ns);
    const std::lock_guard lock(m_state->mutex);
    WmiTable* const table = m_state->FindTable(name, className);
    if (table == nullptr || table->Schema()->live) {
        throw std::invalid_argument("no WMI class of that name holds instances");
    }
    table->Add(MakeRow(*table->Schema(), values));
}

_variant_t WmiRepository::ReadValue(const std::wstring& ns, const std::wstring& className, std::size_t index,
                                    const std::wstring& property) const {
    const std::wstring name = NamespaceOf(ns);
    const std::lock_guard lock(m_state->mutex);
    const WmiTable* const table = m_state->FindTable(name, className);
    if (table == nullptr || index >= table->Rows().size()) return {};
    const WmiShape::Property* const found = table->Schema()->shape->Find(property);
    return found == nullptr ? _variant_t() : (*table->Rows()[index])[found->slot];
}

void WmiRepository::FailNext(WmiCall call, HRESULT code, unsigned int skip) {
    m_state->FailNext(call, code, skip);
}

void WmiRepository::Delay(WmiCall call, std::chrono::milliseconds time) { m_state->Delay(call, time); }

void WmiRepository::HangAfter(long objects) { m_state->HangAfter(objects); }

void WmiRepository::Trickle(std::chrono::milliseconds pause) { m_state->Trickle(pause); }

void WmiRepository::Hold(WmiCall call) { m_state->Hold(call); }

void WmiRepository::LetGo() { m_state->Hold(WmiCall::Count); }

void WmiRepository::AskForCom(bool (*hasCom)()) { m_state->hasCom = hasCom; }

unsigned long long WmiRepository::CallCount(WmiCall call) const {
    return m_state->calls[static_cast<std::size_t>(call)];
}

long long WmiRepository::LiveObjects() const { return m_state->liveObjects; }

HRESULT WmiRepository::CreateLocator(platform::CComPtr<IWbemLocator>& locator) {
    if (const auto code = m_state->Begin(WmiCall::CreateLocator)) return *code;
    locator.Attach(new WmiLocator(m_state));
    return S_OK;
}

HRESULT WmiRepository::SetProxyBlanket() { return m_state->Begin(WmiCall::SetProxyBlanket).value_or(S_OK); }

platform::WbemCalls WmiRepository::Calls() {
    platform::WbemCalls calls;
    calls.createLocator = [this](platform::CComPtr<IWbemLocator>& locator) { return CreateLocator(locator); };
    calls.takeErrorDetails = TakeErrorDetails;
    calls.setProxyBlanket = [this](IWbemServices*) { return SetProxyBlanket(); };
    return calls;
}

}  // namespace quillon::simulation
