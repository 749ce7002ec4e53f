#include "base/ByteBlocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>

#include "base/Characters.h"

namespace quillon::base {

namespace {

/// Few different characters, so that each block has some of each.
std::string RandomText(std::mt19937& random, std::size_t size, const std::string& alphabet) {
    std::string text(size, '\0');
    for (char& c : text) c = alphabet[random() % alphabet.size()];
    return text;
}

}  // namespace

// Every length up to four blocks and a rest, so that each way through the blocks and the bytes after them is
// taken.
TEST(ByteBlocks, AgreeWithThePlainForm) {
    std::mt19937 random(20);
    for (std::size_t size = 0; size <= 100; ++size) {
        SCOPED_TRACE(size);
        const std::string text = RandomText(random, size + 2, "abcdAB\xE1\0");
        const EitherByte head{'a', 'A'}, tail{'b', 'B'};
        for (std::size_t from = 0; from <= size; from += 3) {
            std::size_t expected = from;
            while (expected < size && !(head.Is(text[expected]) && tail.Is(text[expected + 2]))) ++expected;
            EXPECT_EQ(FindBoth(text.data(), head, text.data() + 2, tail, from, size), expected);
        }
        std::string spaced = RandomText(random, size, " \t\r\x08\x0E\xA0x");
        spaced += RandomText(random, random() % 40, " \t\n\v\f\r");
        for (std::size_t start = 0; start <= std::min<std::size_t>(spaced.size(), 31); ++start) {
            const std::string_view part = std::string_view(spaced).substr(start);
            EXPECT_EQ(SizeWithoutSpacesBehind(part.data(), part.size()),
                      part.find_last_not_of(" \t\n\v\f\r") + 1);
        }
        std::string copy(size, '?');
        const std::size_t copied = CopyUntil(text.data(), size, 'd', copy.data());
        EXPECT_EQ(copied, std::min(text.find('d'), size));
        EXPECT_EQ(copy.substr(0, copied), text.substr(0, copied));
    }
}

TEST(ByteBlocks, HexDigitsAreReadUpToTheFirstThatIsNone) {
    std::mt19937 random(21);
    for (std::size_t size = 0; size < 40; ++size) {
        std::string bytes(size, '\0'), hex(2 * size, '\0'), read(size, '\0');
        for (char& c : bytes) c = static_cast<char>(random());
        WriteHex(reinterpret_cast<const unsigned char*>(bytes.data()), size, hex.data());
        for (char& c : hex) {
            if (random() % 2 == 0) c = Upper(c);
        }
        auto* const to = reinterpret_cast<unsigned char*>(read.data());
        EXPECT_EQ(ReadHex(hex.data(), size, to), size);
        EXPECT_EQ(read, bytes);
        for (std::size_t at = 0; at < hex.size(); ++at) {
            for (const char wrong : {'/', ':', '@', 'G', '`', 'g', '\xB0', '\0'}) {
                std::string damaged = hex;
                damaged[at] = wrong;
                EXPECT_EQ(ReadHex(damaged.data(), size, to), at / 2) << at << " " << wrong;
            }
        }
    }
}

}  // namespace quillon::base
