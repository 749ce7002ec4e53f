#pragma once

#include <string>

namespace CLI {
class App;
}

namespace quillon::agent {

/// Returns the page quillon-agent(1), written from the help of the sub-commands and their options.
std::string ManualPage(const CLI::App& app);

}  // namespace quillon::agent
