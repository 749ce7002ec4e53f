#include "quillon/testkit/WmiRepository.h"

#include <algorithm>
#include <map>
#include <mutex>
#include <stdexcept>
#include <utility>

#include "base/Utf.h"
#include "quillon/StringUtils.h"
#include "simulation/wmi/WmiMessages.h"
#include "simulation/wmi/WmiRepository.h"
#include "testkit/CimValue.h"
#include "testkit/Facilities.h"

namespace quillon::testkit {

namespace {

using Properties = std::vector<WmiProperty>;

constexpr const char* kReturnValue = "ReturnValue";

auto FindIn(const Properties& properties, const std::string& name) {
    return std::find_if(properties.begin(), properties.end(), [&name](const auto& each) {
        return StringUtils::CompareCaseInsensitive(each.name, name);
    });
}

bool Has(const Properties& properties, const std::string& name) {
    return FindIn(properties, name) != properties.end();
}

const WmiProperty& Find(const Properties& properties, const std::string& name) {
    const auto found = FindIn(properties, name);
    if (found == properties.end()) throw std::invalid_argument("There is no property '" + name + "'");
    return *found;
}

simulation::WmiValues ToCimValues(const VariantList& values, const Properties& properties) {
    simulation::WmiValues converted;
    for (const Variant& value : values) {
        const WmiProperty& property = Find(properties, value.GetName());
        converted.emplace_back(base::ToWide(property.name), ToCim(value, property));
    }
    return converted;
}

VariantList FromCimValues(const simulation::WmiValues& values, const Properties& properties) {
    VariantList converted;
    for (const auto& [wideName, value] : values) {
        const WmiProperty& property = Find(properties, base::ToUtf8(wideName));
        converted.Add(FromCim(value, property));
    }
    return converted;
}

std::vector<simulation::WmiProperty> ToSimulated(const Properties& properties) {
    std::vector<simulation::WmiProperty> converted;
    for (const WmiProperty& property : properties)
        converted.push_back({base::ToWide(property.name), NumberOf(property), {}});
    return converted;
}

simulation::WmiMethod ToSimulated(const WmiMethod& method) {
    simulation::WmiMethod converted{
        base::ToWide(method.name), ToSimulated(method.in), {}, {}, method.isStatic};
    Properties out = method.out;
    converted.out = ToSimulated(out);
    if (!Has(out, kReturnValue)) {
        out.push_back({kReturnValue, CimType::Uint32});
        converted.out.push_back({base::ToWide(kReturnValue), CIM_UINT32, ToCim(Variant(0), out.back())});
    }
    if (!method.body) return converted;
    converted.body = [body = method.body, in = method.in, out = std::move(out)](
                         const std::wstring& path, const simulation::WmiValues& given,
                         simulation::WmiValues& results) {
        VariantList values;
        const std::uint32_t code = body(base::ToUtf8(path), FromCimValues(given, in), values);
        results = ToCimValues(values, out);
        return static_cast<HRESULT>(code);
    };
    return converted;
}

simulation::WmiCall ToSimulated(WmiCall call) {
    using Simulated = simulation::WmiCall;
    static constexpr Simulated calls[] = {
        Simulated::CreateLocator, Simulated::ConnectServer, Simulated::SetProxyBlanket,
        Simulated::ExecQuery,     Simulated::Next,          Simulated::GetObject,
        Simulated::PutInstance,   Simulated::ExecMethod};
    return calls[static_cast<std::size_t>(call)];
}

}  // namespace

/// Calls that hang outlive the facade.
struct WmiRepository::State {
    simulation::WmiRepository repository;
    std::mutex mutex;
    std::map<std::string, Properties> classes;

    static std::string KeyOf(std::string ns, const std::string& name) {
        std::replace(ns.begin(), ns.end(), '/', '\\');
        return StringUtils::ToLowercase(ns + ':' + name);
    }
};

WmiRepository::WmiRepository() : m_state(std::make_shared<State>()) {
    platform::WbemCalls calls = m_state->repository.Calls();
    calls.createLocator = [state = m_state](auto& locator) {
        return state->repository.CreateLocator(locator);
    };
    calls.setProxyBlanket = [state = m_state](IWbemServices*) { return state->repository.SetProxyBlanket(); };
    calls.loadMessages = [] { return true; };
    calls.wbemMessage = simulation::WmiMessage;
    calls.comMessage = simulation::SystemMessage;
    ChangeFacilities([&calls](FacilityCalls& facilities) { facilities.wbem = std::move(calls); });
}

WmiRepository::~WmiRepository() {
    ChangeFacilities([](FacilityCalls& facilities) { facilities.wbem.reset(); });
    LetGo();
}

void WmiRepository::AddClass(const std::string& ns, const std::string& name,
                             const std::vector<WmiProperty>& properties,
                             const std::vector<WmiMethod>& methods) {
    simulation::WmiClass made{base::ToWide(name), ToSimulated(properties), {}};
    for (const WmiProperty& property : properties) {
        if (property.isKey) made.keys.push_back(base::ToWide(property.name));
    }
    for (const WmiMethod& method : methods) made.methods.push_back(ToSimulated(method));
    m_state->repository.AddClass(base::ToWide(ns), std::move(made));
    const std::lock_guard lock(m_state->mutex);
    m_state->classes[State::KeyOf(ns, name)] = properties;
}

void WmiRepository::AddInstance(const std::string& ns, const std::string& className,
                                const VariantList& values) {
    Properties properties;
    {
        const std::lock_guard lock(m_state->mutex);
        const auto found = m_state->classes.find(State::KeyOf(ns, className));
        if (found == m_state->classes.end())
            throw std::invalid_argument("There is no WMI class '" + className + "' in " + ns);
        properties = found->second;
    }
    m_state->repository.AddInstance(base::ToWide(ns), base::ToWide(className),
                                    ToCimValues(values, properties));
}

void WmiRepository::FailNext(WmiCall call, std::uint32_t code, unsigned int skip) {
    m_state->repository.FailNext(ToSimulated(call), static_cast<HRESULT>(code), skip);
}

void WmiRepository::Delay(WmiCall call, std::chrono::milliseconds time) {
    m_state->repository.Delay(ToSimulated(call), time);
}

void WmiRepository::Hang(WmiCall call) { m_state->repository.Hold(ToSimulated(call)); }

void WmiRepository::HangAfter(unsigned int objects) {
    m_state->repository.HangAfter(static_cast<long>(objects));
}

void WmiRepository::LetGo() {
    m_state->repository.HangAfter(-1);
    m_state->repository.LetGo();
}

unsigned long long WmiRepository::CountCalls(WmiCall call) const {
    return m_state->repository.CallCount(ToSimulated(call));
}

long long WmiRepository::CountLiveObjects() const { return m_state->repository.LiveObjects(); }

}  // namespace quillon::testkit
