#include "platform/ResourceApi.h"

#include <cstddef>

// Made by the build from resources/windowsZones.xml.
extern "C" {
extern const unsigned char quillon_windows_zones[];
extern const std::size_t quillon_windows_zones_size;
}

namespace quillon::platform {

std::optional<std::string_view> EmbeddedResource(const char* type, int number) {
    if (std::string_view(type) != "XML" || number != 103) return std::nullopt;
    return std::string_view(reinterpret_cast<const char*>(quillon_windows_zones), quillon_windows_zones_size);
}

}  // namespace quillon::platform
