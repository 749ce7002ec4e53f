#include "simulation/wmi/WmiState.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace quillon::simulation {

namespace {

constexpr HRESULT kNotInitialized = static_cast<HRESULT>(0x800401F0);

/// Objects are the caller's own, the others are reached through COM.
bool NeedsCom(WmiCall call) { return call < WmiCall::GetNames; }

}  // namespace

void WmiTable::Add(WmiRowPtr row) {
    const auto path = m_schema->keys.empty() ? std::nullopt : RelativePath(*m_schema, *row);
    if (path) m_byPath.emplace(*path, m_rows.size());
    m_rows.push_back(std::move(row));
}

bool WmiTable::Put(WmiRowPtr row) {
    const auto path = RelativePath(*m_schema, *row);
    if (!path) return false;
    if (m_schema->keys.empty() && !m_rows.empty()) {
        m_rows.front() = std::move(row);
        return true;
    }
    const auto found = m_byPath.find(*path);
    if (found == m_byPath.end()) {
        Add(std::move(row));
    } else {
        m_rows[found->second] = std::move(row);
    }
    return true;
}

WmiRowPtr WmiTable::Find(std::wstring_view relativePath) const {
    if (m_schema->keys.empty()) return m_rows.empty() ? nullptr : m_rows.front();
    const auto found = m_byPath.find(relativePath);
    return found == m_byPath.end() ? nullptr : m_rows[found->second];
}

std::optional<HRESULT> WmiState::Begin(WmiCall call) {
    calls[static_cast<std::size_t>(call)].fetch_add(1, std::memory_order_relaxed);
    const HasCom asksForCom = hasCom.load(std::memory_order_relaxed);
    if (asksForCom != nullptr && NeedsCom(call) && !asksForCom()) return kNotInitialized;
    if (const auto delay = m_delays[static_cast<std::size_t>(call)].load(); delay.count() > 0)
        std::this_thread::sleep_for(delay);
    if (m_held == call) {
        std::unique_lock lock(mutex);
        m_released.wait(lock, [this, call] { return m_held != call; });
    }
    if (!m_hasFailures.load(std::memory_order_acquire)) return std::nullopt;

    const std::lock_guard lock(mutex);
    const auto next = std::find_if(m_failures.begin(), m_failures.end(),
                                   [call](const Failure& failure) { return failure.call == call; });
    if (next == m_failures.end()) return std::nullopt;
    if (next->skip != 0) {
        --next->skip;
        return std::nullopt;
    }
    const HRESULT code = next->code;
    m_failures.erase(next);
    m_hasFailures.store(!m_failures.empty(), std::memory_order_release);
    return code;
}

void WmiState::FailNext(WmiCall call, HRESULT code, unsigned int skip) {
    const std::lock_guard lock(mutex);
    m_failures.push_back({call, code, skip});
    m_hasFailures.store(true, std::memory_order_release);
}

void WmiState::Hold(WmiCall call) {
    {
        const std::lock_guard lock(mutex);
        m_held = call;
    }
    m_released.notify_all();
}

void WmiState::Delay(WmiCall call, std::chrono::milliseconds time) {
    m_delays[static_cast<std::size_t>(call)] = time;
}

void WmiState::HangAfter(long objects) {
    {
        const std::lock_guard lock(mutex);
        m_hangAfter = objects;
    }
    m_released.notify_all();
}

bool WmiState::AwaitAnswer(long objects, const Deadline& deadline) {
    if (const std::chrono::milliseconds pause = m_pause; pause.count() > 0) {
        const auto next = std::chrono::steady_clock::now() + pause;
        std::this_thread::sleep_until(deadline ? std::min(next, *deadline) : next);
        if (deadline && *deadline < next) return false;
    }
    const auto answers = [this, objects] { return m_hangAfter < 0 || objects < m_hangAfter; };
    if (answers()) return true;
    std::unique_lock lock(mutex);
    if (deadline) return m_released.wait_until(lock, *deadline, answers);
    m_released.wait(lock, answers);
    return true;
}

WmiTable* WmiState::FindTable(std::wstring_view nameSpace, std::wstring_view className) {
    const auto space = namespaces.find(nameSpace);
    if (space == namespaces.end()) return nullptr;
    const auto table = space->second.tables.find(className);
    return table == space->second.tables.end() ? nullptr : &table->second;
}

}  // namespace quillon::simulation
