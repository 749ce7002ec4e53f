#pragma once

#include <sys/types.h>

#include <algorithm>
#include <charconv>
#include <optional>
#include <string>
#include <string_view>

namespace quillon::platform {

/// A file of /proc/PROCESS; nothing when it cannot be read, see errno.
std::optional<std::string> ReadProcessFile(pid_t process, const char* name);

/// The number that follows a label and blanks; `label` includes what ends it, as a colon.
std::optional<long long> NumberAfter(std::string_view text, std::string_view label);
/// Counts the entries of a directory without hidden ones; nothing when it cannot be read.
std::optional<long long> CountEntries(const char* folder);

/// Field `index` of a text whose fields are parted by one blank, as a number.
template <class Number>
Number FieldAt(std::string_view text, int index) {
    for (; index > 0 && !text.empty(); --index)
        text.remove_prefix(std::min(text.find(' '), text.size() - 1) + 1);
    Number number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace quillon::platform
