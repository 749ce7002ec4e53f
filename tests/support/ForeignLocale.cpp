#include "support/ForeignLocale.h"

#include <clocale>
#include <cstdlib>
#include <map>

#include "support/System.h"

namespace quillon::test {

namespace {

struct GroupedNumbers : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\1"; }
};

std::string SystemName(const std::string& name) {
    static const std::map<std::string, std::string> names = {
        {"de_DE", "German_Germany.1252"}, {"fr_FR", "French_France.1252"}, {"tr_TR", "Turkish_Turkey.1254"}};
    if (name == "C" || (kWindows && !names.contains(name))) return name;
    return kWindows ? names.at(name) : name + ".UTF-8";
}

bool SetLocale(const std::string& name) {
    static char locales[] = "LOCPATH=" QUILLON_TEST_LOCALES;
    static char none[] = "LOCPATH=";
    ::putenv(locales);
    const bool isSet = std::setlocale(LC_ALL, SystemName(name).c_str()) != nullptr;
    ::putenv(none);
    return isSet;
}

}  // namespace

ForeignLocale::ForeignLocale(const std::string& name)
    : m_before(std::locale::global(std::locale(std::locale::classic(), new GroupedNumbers))),
      m_isSet(SetLocale(name)) {}

ForeignLocale::~ForeignLocale() {
    std::locale::global(m_before);
    std::setlocale(LC_ALL, "C");
}

}  // namespace quillon::test
