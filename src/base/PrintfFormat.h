#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace quillon::base {

/// Does what vsnprintf() does for formats that may come from a module: writes at most `size` - 1 characters
/// and a NUL, and returns the whole length, or a negative number when the format cannot be followed. A width
/// or precision is cut to `size`, as the C runtimes take memory for all of it, some of them on the stack; %n
/// is refused, as it writes to memory, and so are numbered arguments ("%1$s"); wide texts (%ls, %lc, %S, %C)
/// become UTF-8, an unpaired surrogate U+FFFD. The process's locale counts for nothing: a real number has a
/// point, and no number has separators. A null format is an empty one.
int FormatBounded(char* buffer, std::size_t size, const char* format, std::va_list arguments);

/// Does the same to a stream, which takes the whole text. Only a wide text and an unusually long number take
/// memory. Returns false and writes nothing when the format cannot be followed.
bool FormatTo(std::FILE* stream, const char* format, std::va_list arguments);

}  // namespace quillon::base
