#pragma once

#include <locale.h>
#include <sanitizer/lsan_interface.h>
#include <stdlib.h>

#include <cstddef>
#include <cstdio>

/// Gives the C library, for one input after the other, the decimal point of German (a comma) or of Pashto
/// (two bytes of UTF-8): nothing that reads or writes tables may ask for it.
inline void UseInputLocale(std::size_t choice) {
    static const struct Locales {
        Locales() {
            const __lsan::ScopedDisabler quiet;  // the C library loses some bytes of the path
            ::setenv("LOCPATH", QUILLON_TEST_LOCALES, 1);
            made[0] = ::newlocale(LC_ALL_MASK, "de_DE.UTF-8", nullptr);
            made[1] = ::newlocale(LC_ALL_MASK, "ps_AF.UTF-8", nullptr);
            if (made[0] == nullptr || made[1] == nullptr)
                std::fputs("The build could not make the locales.\n", stderr);
        }
        locale_t made[2];
    } locales;
    if (const locale_t wanted = locales.made[choice % 2]; wanted != nullptr) ::uselocale(wanted);
}
