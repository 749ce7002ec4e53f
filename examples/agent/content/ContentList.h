#pragma once

#include <string>
#include <vector>

#include "content/ContentCopy.h"
#include "quillon/InvocationResult.h"

namespace quillon::agent {

/// Reads a list, a library path, and turns it into what is to be copied. `shownName` stands for the list in
/// messages. A list is taken whole or not at all: false, with code 6 and what is wrong, when it is unreadable
/// or not complete, or when any of its files has a name that could lead out of a directory or is there twice,
/// no length or no SHA-256.
bool ReadContentList(const std::string& list, const std::string& shownName, std::vector<ContentItem>& items,
                     InvocationResult& result);

}  // namespace quillon::agent
