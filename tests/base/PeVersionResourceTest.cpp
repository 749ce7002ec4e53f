#include "base/PeVersionResource.h"

#include <gmock/gmock.h>

#include <cstring>
#include <fstream>
#include <iterator>

#include "platform/VersionResourceApi.h"
#include "support/ChildMain.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/VersionedFile.h"

namespace quillon::base {

namespace {

using test::DoubleWord;
using test::kPeHeaders;
using test::Patched;
using test::Word;

std::string GoodFile() {
    using test::VersionNode, test::VersionText;
    return test::PeFile(test::VersionBlock(
        VersionNode("040904b0", 0,
                    VersionText("FileVersion", "1, 2, 3, 4") + VersionText("ProductName", "Product")) +
            VersionNode("040704E4", 0,
                        VersionText("FileVersion", std::string("5\0.6", 4)) + VersionText("Empty", "")),
        Word(0x409) + Word(0x4B0) + Word(0x407) + Word(0x4E4)));
}

struct Answer {
    bool isThere = false;
    std::optional<VersionTexts> texts;
};

Answer ReadVersion(const std::string& file) {
    Answer answer;
    const auto read = [&file](std::uint64_t offset, void* buffer, std::size_t size) {
        if (offset > file.size() || size > file.size() - offset) return false;
        std::memcpy(buffer, file.data() + offset, size);
        return true;
    };
    answer.texts = ReadPeVersion(read, answer.isThere);
    return answer;
}

}  // namespace

TEST(PeVersionResource, GivesNumbersAndTheTextsOfEveryLanguage) {
    const auto version = ReadVersion(GoodFile()).texts;
    ASSERT_TRUE(version);
    EXPECT_EQ(version->fixed, (FixedVersion{0xFEEF04BD, 0xA0000, 0x4A610001, 0x10002, 0xFFFF0004}));
    EXPECT_THAT(version->translations,
                testing::ElementsAre(VersionTranslation{0x409, 0x4B0}, VersionTranslation{0x407, 0x4E4}));
    const auto valueOf = [&](const char* table, const char* name) {
        const std::wstring* const value = version->Find(table, name);
        return value != nullptr ? *value : L"none";
    };
    EXPECT_EQ(valueOf("040904B0", "fileVERSION"), std::wstring(L"1, 2, 3, 4", 11));
    EXPECT_EQ(valueOf("040704e4", "FileVersion"), std::wstring(L"5\0.6", 5));
    EXPECT_EQ(valueOf("040704e4", "Empty"), std::wstring(1, L'\0'));
    EXPECT_EQ(valueOf("040704e4", "ProductName") + valueOf("040c04b0", "FileVersion"), L"nonenone");
}

TEST(PeVersionResource, OfSeveralLanguagesOneIsTaken) {
    const auto blockOf = [](const std::string& product) {
        const std::string table = test::VersionNode("040904b0", 0, test::VersionText("ProductName", product));
        return test::VersionBlock(table, Word(0x409) + Word(0x4B0));
    };
    const std::pair<std::vector<std::size_t>, std::string> cases[] = {{{0x401, 0x409, 0}, "0"},
                                                                      {{0x401, 0x409, 0x407}, "1033"},
                                                                      {{0x401, 0x407}, "1025"},
                                                                      {{0x407}, "1031"}};
    for (const auto& [languages, expected] : cases) {
        std::vector<std::pair<std::size_t, std::string>> blocks;
        for (const std::size_t language : languages)
            blocks.emplace_back(language, blockOf(std::to_string(language)));
        const auto texts = ReadVersion(test::PeFile(blocks)).texts;
        ASSERT_TRUE(texts);
        const std::wstring* const product = texts->Find("040904b0", "ProductName");
        ASSERT_NE(product, nullptr);
        EXPECT_EQ(product->substr(0, product->size() - 1), std::wstring(expected.begin(), expected.end()));
    }
}

TEST(PeVersionResource, FilesThatContradictThemselvesGiveNothing) {
    const std::string good = GoodFile();
    const std::string all = "\xFF\xFF\xFF\xFF";
    const std::pair<const char*, std::string> cases[] = {
        {"empty", ""},
        {"an ELF file",
         "\x7F"
         "ELF" +
             good.substr(4)},
        {"header far away", Patched(good, 60, all)},
        {"no PE mark", Patched(good, 64, "XX")},
        {"more sections than a loader takes", Patched(good, 70, Word(97))},
        {"no section", Patched(good, 70, Word(0))},
        {"short optional header", Patched(good, 84, Word(112))},
        {"unknown kind", Patched(good, 88, Word(0x107))},
        {"resources at the end of the space", Patched(good, 88 + 128, all)},
        {"section past the end", Patched(good, 88 + 240 + 20, all)},
        {"another type only", Patched(good, kPeHeaders + 16, DoubleWord(15))},
        {"too many entries", Patched(good, kPeHeaders + 12, all)},
        {"a directory that is its own child", Patched(good, kPeHeaders + 24 + 20, DoubleWord(0x80000000U))},
        {"data instead of a directory", Patched(good, kPeHeaders + 20, DoubleWord(24))},
    };
    for (const auto& [what, file] : cases) {
        const Answer answer = ReadVersion(file);
        EXPECT_FALSE(answer.isThere || answer.texts) << what;
    }
    for (const std::size_t field : {72U, 76U}) {  // its address and its length
        const Answer answer = ReadVersion(Patched(good, kPeHeaders + field, all));
        EXPECT_TRUE(answer.isThere && !answer.texts) << field;
    }
    for (const std::string& head : {Word(0xFFFF), Word(5), Word(0)}) {
        SCOPED_TRACE(testing::PrintToString(head));  // of the block
        const Answer answer = ReadVersion(Patched(good, kPeHeaders + 88, head));
        EXPECT_TRUE(answer.texts && !answer.texts->fixed && answer.texts->values.empty());
    }
    const Answer childless = ReadVersion(Patched(good, kPeHeaders + 88 + 92, Word(0)));
    EXPECT_TRUE(childless.texts && childless.texts->fixed && childless.texts->values.empty());
}

TEST(PeVersionResource, ReadsWhatTheSystemReads) {
    if (!test::kWindows) GTEST_SKIP() << "there is no system reader to compare with";
    int compared = 0;
    const auto compare = [&compared](const std::filesystem::path& path) {
        const auto system = platform::VersionResource::Load(test::ToLibraryPath(path));
        if (!system) return;
        std::ifstream stream(path, std::ios::binary);
        const auto ours = ReadVersion({std::istreambuf_iterator<char>(stream), {}}).texts;
        ASSERT_TRUE(ours) << path;
        EXPECT_EQ(ours->fixed, system->Fixed()) << path;
        EXPECT_EQ(ours->translations, system->Translations()) << path;
        for (const auto& [key, value] : ours->values)
            EXPECT_EQ(system->Value(key.first, key.second.c_str()), value) << path;
        ++compared;
    };
    compare(test::ProgramFolder() / "version_sample.exe");
    for (const auto& entry : std::filesystem::directory_iterator("C:\\windows\\system32")) {
        if (entry.path().extension() == ".dll" && compared <= 100) compare(entry.path());
    }
    EXPECT_EQ(compared, 101);
}

}  // namespace quillon::base
