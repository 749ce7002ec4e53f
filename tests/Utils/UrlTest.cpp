#include "quillon/Url.h"

#include <gmock/gmock.h>

namespace quillon {
namespace {

using namespace std::string_literals;

constexpr int kHuge = 10'000'000;

TEST(UrlParse, SplitsSchemeHostPortAndPath) {
    const std::tuple<std::string, bool, std::string> cases[] = {
        {"HTTPS://host", true, "HTTPS://host:443/"},
        {"http://ho\nst/a b?c:d//e\0"s, true, "http://ho\nst:80/a%20b?c:d//e\0"s},
        {"ftp://host/", false, "ftp://host:0/"},
        {"http://host:x/", false, "http://host:0/"},
        {"http://host: \t+81x:9/", true, "http://host:81/"},
        {"http://host:-1/", true, "http://host:4294967295/"},
        {"http://host:8\0001"s, true, "http://host:8/"},
        {"http://host:99999999999", true, "http://host:2147483647/"},
    };
    for (const auto& [text, isValid, printed] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(Url::Parse(text).ToString(), printed);
        EXPECT_EQ(Url::Parse(text).IsValid(), isValid);
        EXPECT_FALSE(Url::Parse(text).Scheme().empty());
    }
}

TEST(UrlParse, KeepsTextThatIsNone) {
    for (const auto& text : {"host"s, "http:/host"s, "://host"s, "h p://host"s, "\xC3\xA9://h"s, "http:///"s,
                             "http://host:/p"s, "http://host/\n"s, "http://host/a\r"s, "http\0://host"s}) {
        SCOPED_TRACE(text);
        const Url url = Url::Parse(text);
        EXPECT_EQ(url.ToString(), text);
        EXPECT_EQ(url.Scheme() + url.Host() + url.Path() + std::to_string(url.Port()), "0");
        EXPECT_FALSE(url.IsValid());
    }
    EXPECT_EQ(Url::Parse("").ToString(), "://:0");  // no text to keep
}

TEST(UrlParse, TakesLongTexts) {
    const std::string word(kHuge, 'a');
    EXPECT_EQ(Url::Parse(word + "://h").Scheme(), word);
    EXPECT_EQ(Url::Parse("http://" + word).Host(), word);
    EXPECT_EQ(Url::Parse("http://h/" + word + "\n").Host(), "");
    EXPECT_EQ(Url::Parse("http://h:" + std::string(kHuge, '0') + "80").Port(), 80u);
    EXPECT_EQ(Url::Parse("http://h/" + std::string(kHuge, ' ')).Path().size(), 3u * kHuge + 1);
}

}  // namespace
}  // namespace quillon
