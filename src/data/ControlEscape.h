#pragma once

#include <string>

#include "base/HexDigits.h"

namespace quillon {

/// Writes a control character (below U+0100) as JSON escapes it: \t, \n, \r or \u00XX.
inline void AppendControlEscape(std::string& output, unsigned char control) {
    switch (control) {
        case '\t':
            output += "\\t";
            break;
        case '\n':
            output += "\\n";
            break;
        case '\r':
            output += "\\r";
            break;
        default:
            output += "\\u00";
            output += base::kUpperDigits[control >> 4];
            output += base::kUpperDigits[control & 15];
    }
}

}  // namespace quillon
