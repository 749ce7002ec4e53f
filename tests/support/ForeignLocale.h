#pragma once

#include <locale>
#include <string>

namespace quillon::test {

/// Is for its life what a host or another module may have set: a locale of the C library, and a locale of new
/// C++ streams, which have "," as the decimal point and "." behind each digit.
class ForeignLocale {
public:
    /// `name` is "C" or one of those that the build makes, such as "de_DE".
    explicit ForeignLocale(const std::string& name);
    ~ForeignLocale();
    ForeignLocale(const ForeignLocale&) = delete;
    ForeignLocale& operator=(const ForeignLocale&) = delete;

    /// Whether this machine has the locale of the C library.
    bool IsSet() const { return m_isSet; }

private:
    std::locale m_before;
    bool m_isSet;
};

}  // namespace quillon::test
