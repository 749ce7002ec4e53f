#pragma once

#include <string>

#include "platform/VersionResourceApi.h"

namespace quillon {

/// The first text that is not empty over the languages of a resource, in its order. Where a
/// neutral one has none, US English with the same code page is tried. `read` gives
/// the text of a VersionTranslation.
template <class Read>
std::string FirstText(const platform::VersionResource& resource, const Read& read) {
    constexpr std::uint16_t kUsEnglish = 1033;
    for (const base::VersionTranslation translation : resource.Translations()) {
        std::string text = read(translation);
        if (text.empty() && translation.language == 0) {
            text = read(base::VersionTranslation{kUsEnglish, translation.codePage});
        }
        if (!text.empty()) return text;
    }
    return {};
}

}  // namespace quillon
