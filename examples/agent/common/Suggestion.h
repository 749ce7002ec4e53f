#pragma once

#include <string>
#include <vector>

namespace quillon::agent {

/// Returns "; did you mean 'NAME'?" with the name that differs least from the word, without regard to case;
/// empty when all differ in more than a third of its characters.
std::string Suggestion(const std::string& word, const std::vector<std::string>& names);

}  // namespace quillon::agent
