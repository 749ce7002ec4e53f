#include "platform/native/ElfVersionNote.h"

#include <elf.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "base/NumberText.h"
#include "base/Utf.h"

namespace quillon::platform {

namespace {

constexpr std::size_t kMaxNotes = std::size_t{1} << 16;
constexpr base::VersionTranslation kTranslation{0x0409, 0x04B0};
constexpr std::string_view kOwner("Quillon\0", 8);

template <class T>
bool ReadRecord(const base::ReadBytesAt& read, std::uint64_t offset, T& value) {
    return read(offset, &value, sizeof value);
}

std::uint64_t Aligned(std::uint64_t offset) { return (offset + 3) & ~std::uint64_t{3}; }

/// The content of our note among a segment's.
std::optional<std::string_view> FindNote(std::string_view notes) {
    Elf64_Nhdr head{};
    while (notes.size() >= sizeof head) {
        std::memcpy(&head, notes.data(), sizeof head);
        const std::uint64_t content = sizeof head + Aligned(head.n_namesz);
        const std::uint64_t next = content + Aligned(head.n_descsz);
        if (content + head.n_descsz > notes.size()) return std::nullopt;
        if (head.n_type == 1 && notes.substr(sizeof head, head.n_namesz) == kOwner) {
            return notes.substr(content, head.n_descsz);
        }
        notes.remove_prefix(std::min<std::uint64_t>(next, notes.size()));
    }
    return std::nullopt;
}

/// "1.2.3.4" in 16 bits each.
std::uint64_t PackVersion(std::string_view text) {
    std::uint64_t packed = 0;
    for (int part = 0; part < 4; ++part) {
        packed = packed << 16 | (base::TakeUnsigned(text).value_or(0) & 0xFFFF);
        if (!text.empty()) text.remove_prefix(1);
    }
    return packed;
}

base::FixedVersion FixedOf(std::uint64_t file, std::uint64_t product) {
    const auto high = [](std::uint64_t packed) { return static_cast<std::uint32_t>(packed >> 32); };
    const auto low = [](std::uint64_t packed) { return static_cast<std::uint32_t>(packed); };
    return {base::FixedVersion::kSignature, high(file), low(file), high(product), low(product)};
}

base::VersionTexts ParseNote(std::string_view content) {
    base::VersionTexts result;
    std::uint64_t file = 0, product = 0;
    result.translations.push_back(kTranslation);
    while (!content.empty()) {
        const std::string_view line = content.substr(0, content.find('\0'));
        const std::string_view name = line.substr(0, line.find('='));
        if (name.size() < line.size()) {
            const std::string_view text = line.substr(name.size() + 1);
            if (name == "FileVersion") file = PackVersion(text);
            if (name == "ProductVersion") product = PackVersion(text);
            result.Add(base::VersionTable(kTranslation), std::string(name), base::ToWide(text));
        }
        content.remove_prefix(std::min(line.size() + 1, content.size()));
    }
    result.fixed = FixedOf(file, product);
    return result;
}

}  // namespace

std::optional<base::VersionTexts> ReadElfVersion(const base::ReadBytesAt& read) {
    Elf64_Ehdr header{};
    if (!ReadRecord(read, 0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_ident[EI_DATA] != ELFDATA2LSB) {
        return std::nullopt;
    }
    for (std::uint64_t i = 0; i < header.e_phnum; ++i) {
        Elf64_Phdr segment{};
        if (!ReadRecord(read, header.e_phoff + i * sizeof segment, segment)) return std::nullopt;
        if (segment.p_type != PT_NOTE || segment.p_filesz > kMaxNotes) continue;
        std::string notes(segment.p_filesz, '\0');
        if (!read(segment.p_offset, notes.data(), notes.size())) continue;
        if (const auto content = FindNote(notes)) return ParseNote(*content);
    }
    return std::nullopt;
}

}  // namespace quillon::platform
