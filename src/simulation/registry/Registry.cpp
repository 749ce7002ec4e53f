#include "simulation/registry/Registry.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "base/Characters.h"
#include "base/ErrorCodes.h"
#include "platform/ErrorText.h"

namespace quillon::simulation {

namespace {

std::string Folded(std::string name) {
    std::transform(name.begin(), name.end(), name.begin(), base::Lower<char>);
    return name;
}

std::uintptr_t NumberOf(HKEY key) { return reinterpret_cast<std::uintptr_t>(key); }

}  // namespace

HKEY Registry::Open(const std::string& path) {
    std::uint32_t code = 0;
    {
        const std::lock_guard lock(m_mutex);
        code = TakeFailure();
        const auto key = m_keys.find(Folded(path));
        if (code == 0 && key != m_keys.end()) {
            m_open[++m_lastHandle] = key->first;
            return reinterpret_cast<HKEY>(m_lastHandle);
        }
    }
    platform::SetLastErrorCode(code != 0 ? code : base::kFileNotFound);
    return nullptr;
}

void Registry::Close(HKEY key) {
    const std::lock_guard lock(m_mutex);
    m_open.erase(NumberOf(key));
}

std::uint32_t Registry::Query(HKEY key, const std::string& name, void* buffer, std::uint32_t& size) {
    const std::lock_guard lock(m_mutex);
    if (const std::uint32_t code = TakeFailure()) return code;
    return Read(key, name, buffer, size);
}

std::uint32_t Registry::Read(HKEY key, const std::string& name, void* buffer, std::uint32_t& size) {
    const auto open = m_open.find(NumberOf(key));
    if (open == m_open.end()) return base::kInvalidHandle;
    const auto values = m_keys.find(open->second);
    if (values == m_keys.end()) return base::kFileNotFound;
    const auto value = values->second.find(Folded(name));
    if (value == values->second.end()) return base::kFileNotFound;

    const std::string& bytes = value->second;
    const std::uint32_t room = std::exchange(size, static_cast<std::uint32_t>(bytes.size()));
    if (buffer == nullptr) return 0;
    if (room < bytes.size()) return base::kMoreData;
    std::memcpy(buffer, bytes.data(), bytes.size());
    return 0;
}

platform::RegistryCalls Registry::Calls() {
    return {[this](const std::string& path) { return Open(path); },
            [this](HKEY key, const char* name, void* buffer, std::uint32_t& size) {
                return Query(key, name == nullptr ? "" : name, buffer, size);
            },
            [this](HKEY key) { Close(key); }};
}

void Registry::Reset() {
    const std::lock_guard lock(m_mutex);
    m_keys.clear();
    m_open.clear();
    m_failure = 0;
}

void Registry::SetValue(const std::string& path, const std::string& name, const std::string& bytes) {
    const std::lock_guard lock(m_mutex);
    m_keys[Folded(path)][Folded(name)] = bytes;
}

void Registry::RemoveValue(const std::string& path, const std::string& name) {
    const std::lock_guard lock(m_mutex);
    const auto key = m_keys.find(Folded(path));
    if (key != m_keys.end()) key->second.erase(Folded(name));
}

void Registry::RemoveKey(const std::string& path) {
    const std::lock_guard lock(m_mutex);
    m_keys.erase(Folded(path));
}

void Registry::FailNext(std::uint32_t code) {
    const std::lock_guard lock(m_mutex);
    m_failure = code;
}

std::uint32_t Registry::TakeFailure() { return std::exchange(m_failure, 0); }

}  // namespace quillon::simulation
