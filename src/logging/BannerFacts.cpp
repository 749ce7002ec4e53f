#include "logging/BannerFacts.h"

#include "quillon/NetworkUtils.h"

namespace quillon {

const char* BannerHostName() {
    static const char* const name = NetworkUtils::GetHostName();
    return name;
}

// This stands in a small file of its own: a compiler cache cannot keep an object that names the time.
const char* BannerBuildTime() { return __DATE__ " " __TIME__; }

}  // namespace quillon
