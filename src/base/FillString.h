#pragma once

#include <cstddef>
#include <string>

namespace quillon::base {

/// Makes the text as long as `fill` says, which gets room for `size` units and returns how many it has
/// written. Where C++23's operation is there, the room is not filled with zeros first, which would take as
/// long as the conversion of ASCII.
template <class String, class Fill>
void FillString(String& text, std::size_t size, Fill fill) {
#ifdef __cpp_lib_string_resize_and_overwrite
    text.resize_and_overwrite(size, [&](auto* to, std::size_t) { return fill(to); });
#else
    text.resize(size);
    text.resize(fill(text.data()));
#endif
}

}  // namespace quillon::base
