#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulation/wmi/WmiSchema.h"

namespace quillon::simulation {

/// A class with its instances.
class WmiTable {
public:
    explicit WmiTable(WmiSchemaPtr schema) : m_schema(std::move(schema)) {}

    const WmiSchemaPtr& Schema() const { return m_schema; }
    const std::vector<WmiRowPtr>& Rows() const { return m_rows; }
    /// One more, whatever its keys.
    void Add(WmiRowPtr row);
    /// Stores a row in place of the one with the same keys, or adds it. False when a key is NULL.
    bool Put(WmiRowPtr row);
    /// Returns the row of that relative path; null when there is none.
    WmiRowPtr Find(std::wstring_view relativePath) const;

private:
    WmiSchemaPtr m_schema;
    std::vector<WmiRowPtr> m_rows;
    NameMap<std::size_t> m_byPath;
};

struct WmiNamespace {
    std::wstring name;  // as it was first written
    NameMap<WmiTable> tables;
};

/// Holds what a repository shares with all objects that it has handed out. Members that are not atomic
/// are used under `mutex`; neither a provider nor the body of a method runs under it.
struct WmiState {
    using Deadline = std::optional<std::chrono::steady_clock::time_point>;

    /// Says whether the calling thread has COM initialised.
    using HasCom = bool (*)();

    explicit WmiState(std::wstring hostName) : host(std::move(hostName)) {}

    /// Counts a call; gives the code that it was asked to answer with.
    std::optional<HRESULT> Begin(WmiCall call);
    void FailNext(WmiCall call, HRESULT code, unsigned int skip);
    /// Count holds none.
    void Hold(WmiCall call);
    void Delay(WmiCall call, std::chrono::milliseconds time);
    void HangAfter(long objects);
    void Trickle(std::chrono::milliseconds pause) { m_pause = pause; }
    /// Waits while enumerators shall hang after `objects`; false when the time was up first.
    bool AwaitAnswer(long objects, const Deadline& deadline);

    /// Under the mutex. Null when there is none.
    WmiTable* FindTable(std::wstring_view nameSpace, std::wstring_view className);

    const std::wstring host;
    std::atomic<long long> liveObjects = 0;
    std::array<std::atomic<unsigned long long>, static_cast<std::size_t>(WmiCall::Count)> calls{};
    std::atomic<HasCom> hasCom = nullptr;

    std::mutex mutex;
    NameMap<WmiNamespace> namespaces;

private:
    struct Failure {
        WmiCall call;
        HRESULT code;
        unsigned int skip;
    };

    std::atomic<bool> m_hasFailures = false;
    std::vector<Failure> m_failures;
    std::atomic<long> m_hangAfter = -1;
    std::atomic<std::chrono::milliseconds> m_pause{};
    std::atomic<WmiCall> m_held = WmiCall::Count;
    std::array<std::atomic<std::chrono::milliseconds>, static_cast<std::size_t>(WmiCall::Count)> m_delays{};
    std::condition_variable m_released;
};

}  // namespace quillon::simulation
