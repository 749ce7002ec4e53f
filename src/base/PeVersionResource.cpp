#include "base/PeVersionResource.h"

#include <algorithm>

#include "base/Characters.h"
#include "base/Utf.h"

namespace quillon::base {

namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::size_t kMaxSections = 96;  // as the system's loader
constexpr std::size_t kMaxDirectoryEntries = 4096;
constexpr std::size_t kMaxBlock = 0xFFFF;  // its length is told in 16 bits
constexpr std::uint32_t kVersionType = 16;
constexpr std::uint32_t kHighBit = 0x80000000;

std::optional<Bytes> ReadAt(const ReadBytesAt& read, std::uint64_t offset, std::size_t size) {
    Bytes bytes(size);
    if (size > 0 && !read(offset, bytes.data(), size)) return std::nullopt;
    return bytes;
}

/// Little-endian; the caller has checked that the bytes are there.
std::uint16_t Word(const Bytes& bytes, std::size_t at) {
    return static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8);
}

std::uint32_t DoubleWord(const Bytes& bytes, std::size_t at) {
    return Word(bytes, at) | std::uint32_t{Word(bytes, at + 2)} << 16;
}

struct Section {
    std::uint32_t address = 0;
    std::uint32_t size = 0;  ///< in the file
    std::uint32_t offset = 0;
};

/// Where a PE file keeps what.
class Image {
public:
    static std::optional<Image> Read(const ReadBytesAt& read);

    [[nodiscard]] std::uint32_t Resources() const { return m_resources; }
    /// Bytes at an address of the loaded image.
    [[nodiscard]] std::optional<Bytes> At(std::uint64_t address, std::size_t size) const {
        for (const Section& section : m_sections) {
            const std::uint64_t within = address - section.address;
            if (address >= section.address && within + size <= section.size) {
                return ReadAt(m_read, section.offset + within, size);
            }
        }
        return std::nullopt;
    }

private:
    explicit Image(const ReadBytesAt& read) : m_read(read) {}
    bool ReadResourceAddress(std::uint64_t offset, std::size_t size);
    bool ReadSections(std::uint64_t offset, std::size_t count);

    const ReadBytesAt& m_read;
    std::uint32_t m_resources = 0;
    std::vector<Section> m_sections;
};

std::optional<Image> Image::Read(const ReadBytesAt& read) {
    const auto dos = ReadAt(read, 0, 64);
    if (!dos || Word(*dos, 0) != 0x5A4D) return std::nullopt;  // "MZ"
    const std::uint64_t at = DoubleWord(*dos, 60);
    const auto coff = ReadAt(read, at, 24);
    if (!coff || DoubleWord(*coff, 0) != 0x4550) return std::nullopt;  // "PE"
    const std::size_t optionalSize = Word(*coff, 20);
    Image image(read);
    const bool isRead = image.ReadResourceAddress(at + 24, optionalSize) &&
                        image.ReadSections(at + 24 + optionalSize, Word(*coff, 6));
    return isRead ? std::optional(std::move(image)) : std::nullopt;
}

bool Image::ReadResourceAddress(std::uint64_t offset, std::size_t size) {
    const auto header = ReadAt(m_read, offset, size);
    if (!header || size < 2) return false;
    const std::uint16_t magic = Word(*header, 0);
    if (magic != 0x10B && magic != 0x20B) return false;
    const std::size_t directories = magic == 0x10B ? 96 : 112;
    constexpr std::size_t kResources = 2;
    if (size < directories + (kResources + 1) * 8) return false;
    if (DoubleWord(*header, directories - 4) <= kResources) return false;
    m_resources = DoubleWord(*header, directories + kResources * 8);
    return m_resources != 0;
}

bool Image::ReadSections(std::uint64_t offset, std::size_t count) {
    constexpr std::size_t kHeaderSize = 40;
    if (count > kMaxSections) return false;
    const auto headers = ReadAt(m_read, offset, count * kHeaderSize);
    if (!headers) return false;
    for (std::size_t at = 0; at < headers->size(); at += kHeaderSize) {
        m_sections.push_back(
            {DoubleWord(*headers, at + 12), DoubleWord(*headers, at + 16), DoubleWord(*headers, at + 20)});
    }
    return true;
}

/// The entries of one resource directory.
class Directory {
public:
    static std::optional<Directory> Read(const Image& image, std::uint32_t offset);

    /// Return the offset that the first entry points to, or the one with an identifier.
    [[nodiscard]] std::optional<std::uint32_t> First() const {
        return m_entries.empty() ? std::nullopt : std::optional(DoubleWord(m_entries, 4));
    }
    [[nodiscard]] std::optional<std::uint32_t> Find(std::uint32_t id) const;
    /// Chooses a language as the system does: the neutral one, else US English, else the first.
    [[nodiscard]] std::optional<std::uint32_t> FindLanguage() const;

private:
    explicit Directory(Bytes entries) : m_entries(std::move(entries)) {}

    Bytes m_entries;  // of 8 bytes each: the identifier and the offset
};

std::optional<Directory> Directory::Read(const Image& image, std::uint32_t offset) {
    const std::uint64_t at = std::uint64_t{image.Resources()} + offset;
    const auto head = image.At(at, 16);
    if (!head) return std::nullopt;
    const std::size_t count = std::size_t{Word(*head, 12)} + Word(*head, 14);
    if (count > kMaxDirectoryEntries) return std::nullopt;
    auto entries = image.At(at + 16, count * 8);
    return entries ? std::optional(Directory(std::move(*entries))) : std::nullopt;
}

std::optional<std::uint32_t> Directory::Find(std::uint32_t id) const {
    for (std::size_t i = 0; i < m_entries.size(); i += 8) {
        if (DoubleWord(m_entries, i) == id) return DoubleWord(m_entries, i + 4);
    }
    return std::nullopt;
}

std::optional<std::uint32_t> Directory::FindLanguage() const {
    constexpr std::uint32_t kNeutral = 0, kUsEnglish = 0x409;
    for (const std::uint32_t language : {kNeutral, kUsEnglish}) {
        if (const auto found = Find(language)) return found;
    }
    return First();
}

/// Returns the directory that an entry points to; none when it points to something else.
std::optional<Directory> SubDirectory(const Image& image, std::optional<std::uint32_t> entry) {
    if (!entry || (*entry & kHighBit) == 0) return std::nullopt;
    return Directory::Read(image, *entry & ~kHighBit);
}

/// Where a resource lies in the loaded image.
struct Place {
    std::uint32_t address = 0;
    std::uint32_t size = 0;
};

std::optional<Place> FindVersionBlock(const Image& image) {
    const auto types = Directory::Read(image, 0);
    const auto names = types ? SubDirectory(image, types->Find(kVersionType)) : std::nullopt;
    const auto languages = names ? SubDirectory(image, names->First()) : std::nullopt;
    const auto target = languages ? languages->FindLanguage() : std::nullopt;
    if (!target || (*target & kHighBit) != 0) return std::nullopt;
    const auto data = image.At(std::uint64_t{image.Resources()} + *target, 16);
    if (!data) return std::nullopt;
    return Place{DoubleWord(*data, 0), DoubleWord(*data, 4)};
}

/// A node of the tree in a version block: lengths, a key, a value and children, each
/// part beginning at a multiple of four.
struct Node {
    std::string key;
    std::size_t value = 0;        ///< where it begins
    std::size_t valueLength = 0;  ///< compilers do not agree whether in bytes or in units
    std::size_t end = 0;
};

std::size_t Aligned(std::size_t offset) { return (offset + 3) & ~std::size_t{3}; }

std::wstring UnitsAt(const Bytes& block, std::size_t at, std::size_t end) {
    std::wstring units;
    units.reserve((end - std::min(at, end)) / 2);
    for (; at + 2 <= end; at += 2) units.push_back(static_cast<wchar_t>(Word(block, at)));
    return units;
}

std::optional<Node> NodeAt(const Bytes& block, std::size_t at, std::size_t limit) {
    constexpr std::size_t kHeaderSize = 6;
    if (at + kHeaderSize > limit) return std::nullopt;
    Node node;
    node.end = at + Word(block, at);
    if (node.end > limit || node.end < at + kHeaderSize) return std::nullopt;
    node.valueLength = Word(block, at + 2);
    std::size_t keyEnd = at + kHeaderSize;
    while (keyEnd + 2 <= node.end && Word(block, keyEnd) != 0) keyEnd += 2;
    node.key = ToUtf8(UnitsAt(block, at + kHeaderSize, keyEnd));
    node.value = std::min(Aligned(keyEnd + 2), node.end);
    return node;
}

/// Calls `visit` for the nodes that stand between two offsets.
template <class Visit>
void ForEachNode(const Bytes& block, std::size_t from, std::size_t limit, Visit visit) {
    for (std::size_t at = from; at < limit;) {
        const auto node = NodeAt(block, at, limit);
        if (!node) return;
        visit(*node);
        at = Aligned(node->end);
    }
}

void ReadStringTables(const Bytes& block, const Node& parent, VersionTexts& result) {
    ForEachNode(block, parent.value, parent.end, [&](const Node& table) {
        ForEachNode(block, table.value, table.end, [&](const Node& entry) {
            const std::size_t end = std::min(entry.end, entry.value + 2 * entry.valueLength);
            result.Add(table.key, entry.key, UnitsAt(block, entry.value, end));
        });
    });
}

void ReadTranslations(const Bytes& block, const Node& parent, VersionTexts& result) {
    ForEachNode(block, parent.value, parent.end, [&](const Node& variable) {
        if (variable.key != "Translation") return;
        const std::size_t end = std::min(variable.end, variable.value + variable.valueLength);
        for (std::size_t at = variable.value; at + 4 <= end; at += 4) {
            result.translations.push_back({Word(block, at), Word(block, at + 2)});
        }
    });
}

std::optional<FixedVersion> ReadFixed(const Bytes& block, const Node& root) {
    constexpr std::size_t kSize = 52;
    if (root.valueLength < kSize || root.value + kSize > root.end) return std::nullopt;
    const auto field = [&](std::size_t index) { return DoubleWord(block, root.value + index * 4); };
    return FixedVersion{field(0), field(2), field(3), field(4), field(5)};
}

VersionTexts ParseVersionBlock(const Bytes& block) {
    VersionTexts result;
    const auto root = NodeAt(block, 0, block.size());
    if (!root || root->key != "VS_VERSION_INFO") return result;
    result.fixed = ReadFixed(block, *root);
    const std::size_t children = Aligned(root->value + root->valueLength);
    ForEachNode(block, children, root->end, [&](const Node& node) {
        if (node.key == "StringFileInfo") ReadStringTables(block, node, result);
        if (node.key == "VarFileInfo") ReadTranslations(block, node, result);
    });
    return result;
}

std::string Lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), Lower<char>);
    return text;
}

}  // namespace

void VersionTexts::Add(const std::string& table, const std::string& name, std::wstring value) {
    values.emplace(std::pair(Lowered(table), Lowered(name)), std::move(value));
}

const std::wstring* VersionTexts::Find(const std::string& table, const std::string& name) const {
    const auto found = values.find({Lowered(table), Lowered(name)});
    return found == values.end() ? nullptr : &found->second;
}

std::optional<VersionTexts> ReadPeVersion(const ReadBytesAt& read, bool& isThere) {
    const auto image = Image::Read(read);
    const auto place = image ? FindVersionBlock(*image) : std::nullopt;
    isThere = place && place->size > 0;
    if (!isThere) return std::nullopt;
    const auto block = image->At(place->address, std::min<std::size_t>(place->size, kMaxBlock));
    if (!block) return std::nullopt;
    return ParseVersionBlock(*block);
}

}  // namespace quillon::base
