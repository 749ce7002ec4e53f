#include "platform/PeVersionResource.h"

#include <gmock/gmock.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/System.h"
#include "support/TempDir.h"

namespace quillon::platform {

namespace {

using testing::ElementsAre;

std::string Word(std::size_t number) {
    return {static_cast<char>(number & 0xFF), static_cast<char>(number >> 8 & 0xFF)};
}

std::string DoubleWord(std::size_t number) { return Word(number & 0xFFFF) + Word(number >> 16); }

std::string Wide(const std::string& text) {
    std::string bytes;
    for (const char c : text + '\0') bytes += {c, '\0'};
    return bytes;
}

std::string Padded(std::string bytes, std::size_t multiple = 4) {
    bytes.resize((bytes.size() + multiple - 1) / multiple * multiple);
    return bytes;
}

/// One node of a version block, padded.
std::string Node(const std::string& key, std::size_t valueLength, const std::string& content) {
    const std::string rest = Padded(Word(0) + Word(valueLength) + Word(1) + Wide(key)).substr(2) + content;
    return Padded(Word(rest.size() + 2) + rest);
}

std::string Text(const std::string& name, const std::string& text) {
    return Node(name, text.size() + 1, Wide(text));
}

std::string VersionBlock() {
    const std::string strings =
        Node("StringFileInfo", 0,
             Node("040904b0", 0, Text("FileVersion", "1, 2, 3, 4") + Text("ProductName", "Product")) +
                 Node("040704e4", 0, Text("FileVersion", "5.6") + Text("Empty", "")));
    const std::string languages = Word(0x409) + Word(0x4B0) + Word(0x407) + Word(0x4E4);
    const std::string variables = Node("VarFileInfo", 0, Node("Translation", 8, languages));
    return Node("VS_VERSION_INFO", 52, std::string(52, '\1') + strings + variables);
}

constexpr std::size_t kSectionAddress = 0x1000;
constexpr std::size_t kHeaders = 64 + 24 + 240 + 40;

/// A 64-bit PE file of one section that holds a version resource.
std::string PeFile(const std::string& block) {
    const auto directory = [](std::size_t id, std::size_t target) {
        return std::string(12, '\0') + Word(0) + Word(1) + DoubleWord(id) + DoubleWord(target);
    };
    const std::string resources = directory(16, 0x80000000U + 24) + directory(1, 0x80000000U + 48) +
                                  directory(1033, 72) + DoubleWord(kSectionAddress + 88) +
                                  DoubleWord(block.size()) + std::string(8, '\0') + block;
    std::string optional = Word(0x20B) + std::string(106, '\0') + DoubleWord(16) + std::string(16, '\0');
    optional += DoubleWord(kSectionAddress) + DoubleWord(resources.size());
    optional.resize(240);
    return "MZ" + std::string(58, '\0') + DoubleWord(64) + std::string("PE\0\0\0\0", 6) + Word(1) +
           std::string(12, '\0') + Word(240) + Word(0) + optional + std::string(8, '\0') +
           DoubleWord(resources.size()) + DoubleWord(kSectionAddress) + DoubleWord(resources.size()) +
           DoubleWord(kHeaders) + std::string(16, '\0') + resources;
}

std::optional<VersionTexts> ReadVersion(const std::string& file) {
    return ReadPeVersion([&file](std::uint64_t offset, void* buffer, std::size_t size) {
        if (offset > file.size() || size > file.size() - offset) return false;
        std::memcpy(buffer, file.data() + offset, size);
        return true;
    });
}

std::string Patched(std::string file, std::size_t offset, const std::string& bytes) {
    return file.replace(offset, bytes.size(), bytes);
}

}  // namespace

TEST(PeVersionResource, GivesTheTextsOfEveryLanguage) {
    const auto version = ReadVersion(PeFile(VersionBlock()));
    ASSERT_TRUE(version);
    const VersionTranslation english{0x409, 0x4B0}, german{0x407, 0x4E4};
    EXPECT_THAT(version->translations, ElementsAre(english, german));
    const struct {
        VersionTranslation translation;
        const char* name;
        const char* expected;  // null: there is none
    } cases[] = {{english, "FileVersion", "1, 2, 3, 4"},
                 {english, "fileVERSION", "1, 2, 3, 4"},
                 {english, "ProductName", "Product"},
                 {german, "FileVersion", "5.6"},
                 {german, "Empty", ""},
                 {german, "ProductName", nullptr},
                 {{0x40C, 0x4B0}, "FileVersion", nullptr}};
    for (const auto& c : cases) {
        const std::string* const text = version->Find(c.translation, c.name);
        EXPECT_STREQ(text != nullptr ? text->c_str() : nullptr, c.expected) << c.name;
    }
}

TEST(PeVersionResource, FilesThatContradictThemselvesGiveNothing) {
    const std::string good = PeFile(VersionBlock());
    const std::string all = "\xFF\xFF\xFF\xFF";
    const struct {
        const char* what;
        std::string file;
    } cases[] = {
        {"empty", ""},
        {"an ELF file",
         "\x7F"
         "ELF" +
             good.substr(4)},
        {"header far away", Patched(good, 60, all)},
        {"no PE mark", Patched(good, 64, "XX")},
        {"more sections than a loader takes", Patched(good, 70, Word(97))},
        {"sections past the end", Patched(good, 70, Word(96))},
        {"no section", Patched(good, 70, Word(0))},
        {"short optional header", Patched(good, 84, Word(112))},
        {"unknown kind", Patched(good, 88, Word(0x107))},
        {"fewer data directories", Patched(good, 88 + 108, DoubleWord(2))},
        {"no resources", Patched(good, 88 + 128, DoubleWord(0))},
        {"resources at the end of the space", Patched(good, 88 + 128, all)},
        {"section past the end", Patched(good, 88 + 240 + 20, all)},
        {"another type only", Patched(good, kHeaders + 16, DoubleWord(15))},
        {"too many entries", Patched(good, kHeaders + 12, all)},
        {"a directory that is its own child", Patched(good, kHeaders + 24 + 20, DoubleWord(0x80000000U))},
        {"data instead of a directory", Patched(good, kHeaders + 20, DoubleWord(24))},
        {"data at the end of the space", Patched(good, kHeaders + 72, all)},
        {"data longer than its section", Patched(good, kHeaders + 76, Word(0xFFFF))},
        {"a block longer than its data", Patched(good, kHeaders + 88, Word(0xFFFF))},
        {"a block shorter than its head", Patched(good, kHeaders + 88, Word(5))},
        {"another block", Patched(good, kHeaders + 94, "v")},
        {"a child without length", Patched(good, kHeaders + 88 + 92, Word(0))},
    };
    for (const auto& c : cases) EXPECT_FALSE(ReadVersion(c.file)) << c.what;
}

TEST(PeVersionResource, NoCutAndNoChangedByteIsReadPast) {
    const std::string good = PeFile(VersionBlock());
    for (std::size_t size = 0; size < good.size(); ++size) {
        EXPECT_FALSE(ReadVersion(good.substr(0, size))) << size;
    }
    for (std::size_t at = 0; at < good.size(); ++at) {
        for (const char* const byte : {"\xFF", "\x80", "\x01"}) ReadVersion(Patched(good, at, byte));
    }
}

TEST(PeVersionResource, ReadsWhatTheSystemReads) {
    if (!test::kWindows) GTEST_SKIP() << "there is no system reader to compare with";
    int compared = 0;
    for (const auto& entry : std::filesystem::directory_iterator("C:\\windows\\system32")) {
        if (entry.path().extension() != ".dll" || compared == 100) continue;
        const auto system = VersionResource::Load(test::ToLibraryPath(entry.path()));
        if (!system) continue;
        std::ifstream stream(entry.path(), std::ios::binary);
        const auto ours = ReadVersion({std::istreambuf_iterator<char>(stream), {}});
        ASSERT_TRUE(ours) << entry.path();
        EXPECT_EQ(ours->translations, system->Translations()) << entry.path();
        for (const VersionText& text : ours->texts) {
            EXPECT_EQ(system->Text(text.translation, text.name.c_str()), text.text) << entry.path();
        }
        ++compared;
    }
    EXPECT_EQ(compared, 100);
}

}  // namespace quillon::platform
