// A module author's first program: it sees the installed headers and nothing else.
#include <quillon/DataTable.h>
#include <quillon/DataTableIO.h>

#include <iostream>
#include <stdexcept>

int main() {
    quillon::DataTable table(
        quillon::VariantList(quillon::Variant("Name", "disk"), quillon::Variant("Size", 42)));
    try {
        static_cast<void>(quillon::Variant("Size", true).GetStringValue());
        return 1;
    } catch (const std::invalid_argument&) {  // crosses the library's boundary
    }
    std::cout << quillon::ToJson(table) << '\n';
    return quillon::ToJson(table) == R"([{"Name":"disk","Size":42}])" ? 0 : 1;
}
