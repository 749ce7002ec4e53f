#include "platform/CodePageApi.h"

#include <iconv.h>

#include <cerrno>

#include "platform/posix/Errno.h"
#include "quillon/DestructorFunctor.h"

namespace quillon::platform {

std::optional<std::string> CodePageToUtf8(std::string_view bytes, std::uint32_t page) {
    constexpr std::uint32_t kUtf8 = 65001;
    if (page == kOemCodePage || page == kUtf8) return std::string(bytes);
    const iconv_t converter = ::iconv_open("UTF-8", ("CP" + std::to_string(page)).c_str());
    if (converter == reinterpret_cast<iconv_t>(-1)) {
        FailWithErrno();
        return std::nullopt;
    }
    const DestructorFunctor close([converter] { ::iconv_close(converter); });
    std::string text;
    char piece[4096];
    char* in = const_cast<char*>(bytes.data());
    for (std::size_t left = bytes.size(); left > 0;) {
        char* out = piece;
        std::size_t room = sizeof piece;
        const bool failed = ::iconv(converter, &in, &left, &out, &room) == static_cast<std::size_t>(-1);
        text.append(piece, out);
        if (!failed || errno == E2BIG) continue;
        text += "\xEF\xBF\xBD";
        ++in;
        --left;
    }
    return text;
}

}  // namespace quillon::platform
