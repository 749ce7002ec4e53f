#include <cstdio>

#include "quillon/DataTable.h"
#include "quillon/Url.h"
#include "quillon/Version.h"

/// What a debugger is asked to show: see check.gdb.
int main() {
    const quillon::Variant unnamed("text");
    const quillon::TimePoint time = quillon::TimePoint() + std::chrono::milliseconds(1500);
    const quillon::VariantList row = {{"Name", "disk"}, {"Path", std::string(40, 'x')},
                                      {"Size", 42},     {"Full", false},
                                      {"Ratio", 0.5},   {"None", nullptr},
                                      {"a-time", time}};
    const quillon::VariantList empty;
    const quillon::DataTable table(row, quillon::VariantList{{"Name", "second"}});
    const quillon::Version version("1.2.3");
    const quillon::Url url = quillon::Url::Parse("https://a.example/x");
    std::puts("ready");
    return static_cast<int>(table.GetNumberOfRows() + empty.Size()) - 2;
}
