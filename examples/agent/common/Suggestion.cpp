#include "common/Suggestion.h"

#include <algorithm>
#include <cstddef>

#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

constexpr std::size_t kLongest = 100;

/// How many bytes are to be put in, left out, changed or exchanged with their neighbour.
std::size_t Distance(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> costs(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i) {
        for (std::size_t j = 0; j <= b.size(); ++j) {
            std::size_t& cost = costs[i][j];
            if (i == 0 || j == 0) {
                cost = i + j;
                continue;
            }
            const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
            cost = std::min({costs[i - 1][j] + 1, costs[i][j - 1] + 1, costs[i - 1][j - 1] + change});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                cost = std::min(cost, costs[i - 2][j - 2] + 1);
        }
    }
    return costs[a.size()][b.size()];
}

}  // namespace

std::string Suggestion(const std::string& word, const std::vector<std::string>& names) {
    if (word.empty() || word.size() > kLongest) return {};
    const std::string lower = StringUtils::ToLowercase(word);
    std::size_t least = word.size() / 3 + 1;
    std::string best;
    for (const std::string& name : names) {
        const std::size_t distance = Distance(lower, StringUtils::ToLowercase(name));
        if (distance >= least) continue;
        least = distance;
        best = name;
    }
    return best.empty() ? "" : "; did you mean '" + best + "'?";
}

}  // namespace quillon::agent
