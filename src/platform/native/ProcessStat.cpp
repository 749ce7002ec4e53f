#include "platform/native/ProcessStat.h"

#include <string_view>

#include "platform/native/ProcFile.h"

namespace quillon::platform {

std::optional<ProcessStat> ReadProcessStat(pid_t process) {
    using Count = unsigned long long;
    const auto content = ReadProcessFile(process, "stat");
    if (!content) return std::nullopt;
    // The program's name, in parentheses, may hold anything.
    const auto nameStart = content->find('('), nameEnd = content->rfind(") ");
    if (nameStart == std::string::npos || nameEnd == std::string::npos) return std::nullopt;
    const std::string_view rest = std::string_view(*content).substr(nameEnd + 2);
    if (rest.empty()) return std::nullopt;

    ProcessStat stat;
    stat.id = process;
    stat.name = content->substr(nameStart + 1, nameEnd - nameStart - 1);
    stat.state = rest[0];
    stat.parent = FieldAt<pid_t>(rest, 1);
    stat.group = FieldAt<pid_t>(rest, 2);
    stat.session = FieldAt<pid_t>(rest, 3);
    stat.minorFaults = FieldAt<Count>(rest, 7);
    stat.majorFaults = FieldAt<Count>(rest, 9);
    stat.userTime = FieldAt<Count>(rest, 11);
    stat.kernelTime = FieldAt<Count>(rest, 12);
    stat.priority = FieldAt<long long>(rest, 15);
    stat.threads = FieldAt<long long>(rest, 17);
    stat.startTime = FieldAt<Count>(rest, 19);
    stat.virtualBytes = FieldAt<Count>(rest, 20);
    stat.residentPages = FieldAt<long long>(rest, 21);
    return stat;
}

}  // namespace quillon::platform
