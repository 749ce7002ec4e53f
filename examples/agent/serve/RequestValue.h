#pragma once

#include <string>

namespace quillon::agent {

/// A value of a request as its line says it.
struct RequestValue {
    enum class Kind { Null, Boolean, Integer, TooLarge, Real, Text, Array, Object };

    Kind kind = Kind::Null;
    bool boolean = false;
    long long integer = 0;
    double real = 0;        ///< of an integer that is too large as well
    std::string text = {};  ///< of a text; of an array its JSON
};

}  // namespace quillon::agent
