#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <random>
#include <string>
#include <utility>

#include "quillon/PathUtils.h"

namespace quillon {
namespace {

/// Of a path behind a root ".." stays, against the standard library, for which a root has itself as its
/// parent.
std::string Expected(const std::string& path) {
    const std::size_t start = std::min(path.find_first_not_of('/'), path.size());
    std::string normal = std::filesystem::path(path.substr(start)).lexically_normal().generic_string();
    std::replace(normal.begin(), normal.end(), '/', '\\');
    return start == 0 ? normal : '\\' + normal;
}

/// A path that does not begin with a server's name, which is a root for us, and whose end has no rule of its
/// own.
std::string RandomPath(std::mt19937& random) {
    const char* const pieces[] = {"a",       "bcd", ".",  "..", "...", "\xC3\xA9t", ".a",
                                  ".hidden", "/",   "//", "/",  "/",   "/../"};
    std::string path = random() % 3 == 0 ? "/" : "x/";
    for (auto count = random() % 12; count > 0; --count) {
        const std::string piece = pieces[random() % std::size(pieces)];
        path += path.back() != '/' && piece.front() != '/' ? "/" + piece : piece;
    }
    path += "/end";
    return path.starts_with("//") ? "y" + path : path;
}

std::string Normalised(std::string path) { return PathUtils::Normalise(path); }

TEST(PathUtilsNormaliseOracle, AgreesWithTheStandardLibrary) {
    std::mt19937 random(20261125);
    for (int i = 0; i < 10'000; ++i) {
        const std::string given = RandomPath(random);
        ASSERT_EQ(Normalised(given), Expected(given)) << given;
    }
}

TEST(PathUtilsNormaliseOracle, RootsStayInFrontOfWhatIsMadeOfTheRest) {
    std::mt19937 random(20261126);
    const std::pair<const char*, const char*> roots[] = {
        {"C:", "C:"}, {"z:", "z:"}, {"//?/C:", R"(\\?\C:)"}, {"\\\\server", R"(\\server)"}};
    for (int i = 0; i < 10'000; ++i) {
        const auto& [root, kept] = roots[random() % std::size(roots)];
        const std::string rest = '/' + RandomPath(random).substr(1);
        const std::string expected = kept + Expected(rest);
        ASSERT_EQ(Normalised(root + rest), expected) << root << rest;
        ASSERT_EQ(Normalised(root + ('/' + rest)), expected) << root << '/' << rest;
    }
}

}  // namespace
}  // namespace quillon
