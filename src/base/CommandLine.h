#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quillon::base {

/// Returns the program and its arguments, cut as Windows programs cut their command line
/// (CommandLineToArgvW): the program ends at its closing quote or, unquoted, at the
/// first blank, and backslashes in it mean nothing; in an argument 2n backslashes
/// before a quote are n, one more makes the quote literal, and a quote within quotes
/// that another follows is literal too. UTF-8; empty for an empty command line.
std::vector<std::string> SplitCommandLine(std::string_view commandLine);

/// Returns an argument as SplitCommandLine reads it back: in quotes where it is empty or holds
/// what some reader of command lines takes as a separator.
std::string QuoteArgument(std::string_view argument);
/// Returns a program and its arguments as one command line. What no quoting can keep (a quote
/// in the program's name) is escaped as in an argument.
std::string JoinCommandLine(const std::vector<std::string_view>& arguments);

}  // namespace quillon::base
