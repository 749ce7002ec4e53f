#include "host/AgentConfiguration.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "quillon/PathUtils.h"

namespace quillon::agent {

namespace {

constexpr std::size_t kLargestFile = 1024 * 1024;

[[noreturn]] void Refuse(const std::string& file, const std::vector<std::string>& faults) {
    std::string text;
    for (const std::string& fault : faults) text += (text.empty() ? "" : "\n") + file + ": " + fault;
    throw std::runtime_error(text);
}

std::string ReadDocument(const std::string& file) {
    const std::string path = PathUtils::ToSystemPath(file);
    std::ifstream stream(std::filesystem::path(std::u8string(path.begin(), path.end())), std::ios::binary);
    std::string document(kLargestFile + 1, '\0');
    stream.read(document.data(), static_cast<std::streamsize>(document.size()));
    if (stream.bad() || (stream.fail() && !stream.eof()))
        Refuse(file, {"the configuration cannot be read: " + std::generic_category().message(errno)});
    document.resize(static_cast<std::size_t>(stream.gcount()));
    if (document.size() > kLargestFile) Refuse(file, {"the configuration is larger than 1 MiB"});
    return document;
}

}  // namespace

AgentConfiguration AgentConfiguration::Load(const std::string& file) {
    AgentSettings settings;
    std::vector<std::string> faults;
    if (!ReadSettings(ReadDocument(file), settings, faults)) Refuse(file, faults);
    return AgentConfiguration(std::move(settings));
}

void AgentConfiguration::GetModuleSettings(const std::string& module,
                                           std::map<std::string, std::string>& settings) const {
    const auto found = m_settings.modules.find(module);
    if (found == m_settings.modules.end()) return;
    for (const auto& [name, value] : found->second) settings[name] = value;
}

}  // namespace quillon::agent
