#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace quillon::test {

/// PE files with a version resource, made in memory part by part.

inline std::string Word(std::size_t number) {
    return {static_cast<char>(number & 0xFF), static_cast<char>(number >> 8 & 0xFF)};
}

inline std::string DoubleWord(std::size_t number) { return Word(number & 0xFFFF) + Word(number >> 16); }

/// ASCII as UTF-16.
inline std::string Units(const std::string& text) {
    std::string bytes;
    for (const char c : text) bytes += {c, '\0'};
    return bytes;
}

inline std::string Padded(std::string bytes, std::size_t multiple = 4) {
    bytes.resize((bytes.size() + multiple - 1) / multiple * multiple);
    return bytes;
}

/// One node of a version block, padded; `type` is 1 for a text.
inline std::string VersionNode(const std::string& key, std::size_t valueLength, const std::string& content,
                               std::size_t type = 0) {
    const std::string rest =
        Padded(Word(0) + Word(valueLength) + Word(type) + Units(key + '\0')).substr(2) + content;
    return Padded(Word(rest.size() + 2) + rest);
}

inline std::string VersionText(const std::string& name, const std::string& text) {
    return VersionNode(name, text.size() + 1, Units(text + '\0'), 1);
}

/// `languages` is the content of the translation table.
inline std::string VersionBlock(const std::string& tables, const std::string& languages,
                                std::size_t signature = 0xFEEF04BD) {
    const std::string fixed = DoubleWord(signature) + DoubleWord(0x10000) + DoubleWord(0xA0000) +
                              DoubleWord(0x4A610001) + DoubleWord(0x10002) + DoubleWord(0xFFFF0004);
    return VersionNode(
        "VS_VERSION_INFO", 52,
        fixed + std::string(28, '\0') + VersionNode("StringFileInfo", 0, tables) +
            VersionNode("VarFileInfo", 0, VersionNode("Translation", languages.size(), languages)));
}

constexpr std::size_t kPeResourceAddress = 0x1000;
constexpr std::size_t kPeHeaders = 512;

/// The resource directories of version blocks, each with its language, and the blocks.
inline std::string VersionResources(const std::vector<std::pair<std::size_t, std::string>>& blocks) {
    const auto directory = [](std::size_t id, std::size_t target) {
        return std::string(12, '\0') + Word(0) + Word(1) + DoubleWord(id) + DoubleWord(target);
    };
    std::string entries, places, content;
    const std::size_t placesAt = 64 + 8 * blocks.size(), contentAt = placesAt + 16 * blocks.size();
    for (const auto& [language, block] : blocks) {
        entries += DoubleWord(language) + DoubleWord(placesAt + places.size());
        places += DoubleWord(kPeResourceAddress + contentAt + content.size()) + DoubleWord(block.size()) +
                  std::string(8, '\0');
        content += block;
    }
    return directory(16, 0x80000000U + 24) + directory(1, 0x80000000U + 48) + std::string(12, '\0') +
           Word(0) + Word(blocks.size()) + entries + places + content;
}

/// A 64-bit PE file of one section that holds version resources.
inline std::string PeFile(const std::vector<std::pair<std::size_t, std::string>>& blocks) {
    const std::string resources = VersionResources(blocks);
    std::string optional = Word(0x20B) + std::string(30, '\0') + DoubleWord(0x1000) + DoubleWord(0x200) +
                           std::string(16, '\0') + DoubleWord(0x12000) + DoubleWord(kPeHeaders);
    optional.resize(108);
    optional += DoubleWord(16) + std::string(16, '\0') + DoubleWord(kPeResourceAddress) +
                DoubleWord(resources.size());
    optional.resize(240);
    std::string headers = "MZ" + std::string(58, '\0') + DoubleWord(64) + std::string("PE\0\0", 4) +
                          Word(0x8664) + Word(1) + std::string(12, '\0') + Word(240) + Word(0x2022) +
                          optional + Padded(".rsrc", 8) + DoubleWord(resources.size()) +
                          DoubleWord(kPeResourceAddress) + DoubleWord(resources.size()) +
                          DoubleWord(kPeHeaders) + std::string(12, '\0') + DoubleWord(0x40000040);
    headers.resize(kPeHeaders);
    return headers + resources;
}

inline std::string PeFile(const std::string& block) { return PeFile({{1033, block}}); }

inline std::string Patched(std::string file, std::size_t offset, const std::string& bytes) {
    return file.replace(offset, bytes.size(), bytes);
}

}  // namespace quillon::test
