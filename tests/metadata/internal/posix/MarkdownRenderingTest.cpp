#include <gmock/gmock.h>
#include <stdio.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quillon/MetadataExport.h"
#include "quillon/MethodMetadata.h"
#include "support/Split.h"
#include "support/TempDir.h"

/// What a renderer of CommonMark with tables shows of an exported description must be the text that the
/// module gave. The renderer is a program of the distribution, so the test is for Linux.

namespace quillon {
namespace {

constexpr char kRenderer[] = "cmark-gfm --unsafe -e table -e strikethrough -e autolink ";

bool HasRenderer() { return std::system("command -v cmark-gfm > /dev/null 2>&1") == 0; }

std::string Rendered(const std::string& markdown) {
    const test::TempDir folder;
    folder.Write("method.md", markdown);
    const std::string command = "timeout 60 " + std::string(kRenderer) + folder.Native("method.md").string();
    const std::unique_ptr<FILE, int (*)(FILE*)> output(::popen(command.c_str(), "r"), ::pclose);
    std::string html;
    std::array<char, 4096> buffer{};
    while (const std::size_t size = std::fread(buffer.data(), 1, buffer.size(), output.get()))
        html.append(buffer.data(), size);
    return html;
}

/// Returns what stands between the two tags, time after time.
std::vector<std::string> Between(std::string_view html, std::string_view open, std::string_view close) {
    std::vector<std::string> found;
    for (std::size_t at = html.find(open); at != std::string_view::npos; at = html.find(open, at)) {
        at += open.size();
        const std::size_t end = html.find(close, at);
        found.emplace_back(html.substr(at, end - at));
        at = end;
    }
    return found;
}

/// Returns the text that a browser would show of a piece of HTML.
std::string Visible(std::string_view html) {
    static constexpr std::pair<std::string_view, std::string_view> kMeanings[] = {
        {"<br>", "\n"}, {"&lt;", "<"},    {"&gt;", ">"},
        {"&amp;", "&"}, {"&quot;", "\""}, {"%7C", "|"}};  // a bar in an address
    std::string text;
    while (!html.empty()) {
        const auto* const meaning = std::find_if(std::begin(kMeanings), std::end(kMeanings),
                                                 [&](const auto& m) { return html.starts_with(m.first); });
        std::size_t taken = 1;
        if (meaning != std::end(kMeanings)) {
            text += meaning->second;
            taken = meaning->first.size();
        } else if (html.starts_with("<a ") || html.starts_with("</a>")) {
            taken = html.find('>') + 1;
        } else {
            text += html.front();
        }
        html.remove_prefix(taken);
    }
    return text;
}

std::string RandomText(std::mt19937& random) {
    static const std::vector<std::string> kParts = test::Split(
        "a%b c%*%_%**%`%``%\\%\\\\%|%<b>%</p>%<!--%&amp;%&#33%[x]%](y)%![%#%# %- %+ %1. %1) %> %~~%~%$x$%"
        "\n%\xC3\xA9%=%---%^%\"q\"%'%@%http://a.example/x_y?b=1&c=~d#e*f%https://a.example/p_(q)%"
        "https://%http://a\\b`c%www.example.com%HTTP://A.example/_%ftp://a.example/*x*%mail@a.example%: %"
        ":-:%<http://x>%\x7F%{%}%!",
        '%');
    std::string text = "x";  // begins and ends with no white space, which Markdown would take away
    for (auto count = random() % 8 + 1; count > 0; --count) text += kParts[random() % kParts.size()];
    return text + "y";
}

TEST(MarkdownRendering, ShowsTextsAsModulesGiveThem) {
    if (!HasRenderer()) GTEST_SKIP() << "there is no renderer: install the package cmark-gfm";
    std::mt19937 random(20240131);
    std::vector<std::string> texts;
    for (int i = 0; i < 2000; ++i) texts.push_back(RandomText(random));
    std::vector<std::string> names;  // the method keeps pointers
    for (std::size_t i = 0; i < texts.size(); ++i) names.push_back("c" + std::to_string(i));
    MethodMetadata method;
    method.MethodName("m");
    for (std::size_t i = 0; i < texts.size(); ++i) {
        auto* column = new MethodColumn;
        column->Description(texts[i].c_str());
        method.BindColumn(names[i].c_str(), column);
    }
    const std::vector<std::string> cells = Between(Rendered(ToMarkdown(method)), "<td>", "</td>");
    ASSERT_EQ(cells.size(), 4 * texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i)
        ASSERT_EQ(Visible(cells[4 * i + 3]), texts[i]) << "of " << cells[4 * i + 3];
}

TEST(MarkdownRendering, ShowsParagraphsAndExamplesAsModulesGiveThem) {
    if (!HasRenderer()) GTEST_SKIP() << "there is no renderer: install the package cmark-gfm";
    std::mt19937 random(20240201);
    std::vector<std::string> texts;
    std::string document;
    for (int i = 0; i < 500; ++i) {
        MethodMetadata method;
        texts.push_back(RandomText(random).substr(1));  // a mark of a list or a heading may come first
        texts.back().erase(0, std::min(texts.back().find_first_not_of(" \n"), texts.back().size()));
        method.MethodName("m");
        method.Description(texts.back().c_str());
        method.Example(texts.back().c_str());
        document += ToMarkdown(method) + "\n";
    }
    const std::string html = Rendered(document);
    const std::vector<std::string> paragraphs = Between(html, "<p>", "</p>\n<h3>");
    const std::vector<std::string> examples = Between(html, "<pre><code>", "\n</code></pre>");
    ASSERT_EQ(paragraphs.size(), texts.size());
    ASSERT_EQ(examples.size(), texts.size());
    for (std::size_t i = 0; i < texts.size(); ++i) {
        ASSERT_EQ(Visible(paragraphs[i]), texts[i]) << "of " << paragraphs[i];
        ASSERT_EQ(Visible(examples[i]), texts[i]);
    }
}

TEST(MarkdownRendering, KeepsAddressesWhole) {
    if (!HasRenderer()) GTEST_SKIP() << "there is no renderer: install the package cmark-gfm";
    MethodMetadata method;
    method.MethodName("m");
    method.Description("see (https://a.example/x_y?b=1&c=~d#e|f*), http://b.example/p_(q).");
    const std::string html = Rendered(ToMarkdown(method));
    EXPECT_THAT(html, testing::HasSubstr("see (<a href=\"https://a.example/x_y?b=1&amp;c=~d#e%7Cf*\">"));
    EXPECT_THAT(html, testing::HasSubstr(", <a href=\"http://b.example/p_(q)\">http://b.example/p_(q)</a>."));
}

}  // namespace
}  // namespace quillon
