#include <gtest/gtest.h>

#include <algorithm>
#include <boost/filesystem/path.hpp>
#include <iterator>
#include <random>
#include <string>
#include <utility>

#include "quillon/PathUtils.h"

namespace quillon {
namespace {

std::string Expected(const std::string& path) {
    std::string normal = boost::filesystem::path(path).lexically_normal().generic_string();
    std::replace(normal.begin(), normal.end(), '/', '\\');
    if (normal.size() > 2 && normal.ends_with("\\.")) normal.resize(normal.size() - 2);
    return normal;
}

/// Without names of two characters that have a point, such as ".a": Boost keeps one before "..", against
/// its own description. Nor does a path begin with a server's name, which is a root for us.
std::string RandomPath(std::mt19937& random) {
    const char* const pieces[] = {"a",       "bcd", ".",  "..", "...", "\xC3\xA9t",
                                  ".hidden", "/",   "//", "/",  "/",   "/../"};
    std::string path = random() % 3 == 0 ? "/" : "x/";
    for (auto count = random() % 12; count > 0; --count) {
        const std::string piece = pieces[random() % std::size(pieces)];
        // A piece beside another would make a name that is left out above.
        path += path.back() != '/' && piece.front() != '/' ? "/" + piece : piece;
    }
    return path.starts_with("//") ? "y" + path : path;
}

std::string Normalised(std::string path) { return PathUtils::Normalise(path); }

TEST(PathUtilsNormaliseOracle, AgreesWithBoost) {
    std::mt19937 random(20261125);
    for (int i = 0; i < 10'000; ++i) {
        const std::string given = RandomPath(random);
        ASSERT_EQ(Normalised(given), Expected(given)) << given;
    }
}

TEST(PathUtilsNormaliseOracle, RootsStayInFrontOfWhatBoostMakesOfTheRest) {
    std::mt19937 random(20261126);
    const std::pair<const char*, const char*> roots[] = {
        {"C:", "C:"}, {"z:", "z:"}, {"//?/C:", R"(\\?\C:)"}, {"\\\\server", R"(\\server)"}};
    for (int i = 0; i < 10'000; ++i) {
        const auto& [root, kept] = roots[random() % std::size(roots)];
        const std::string rest = '/' + RandomPath(random).substr(1);
        // One separator more after the root, where Boost sees a server's name, changes nothing.
        const std::string single = '/' + rest.substr(std::min(rest.find_first_not_of('/'), rest.size()));
        std::string expected = kept + Expected(single);
        if (expected.ends_with("\\.")) expected.resize(expected.size() - 2);
        ASSERT_EQ(Normalised(root + rest), expected) << root << rest;
        ASSERT_EQ(Normalised(root + ('/' + rest)), expected) << root << '/' << rest;
    }
}

}  // namespace
}  // namespace quillon
