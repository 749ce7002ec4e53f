#include <algorithm>
#include <string>
#include <string_view>

#include "platform/FileApi.h"
#include "simulation/machine/WmiFacts.h"

namespace quillon::simulation {

namespace {

struct Firmware {};

WmiFact DmiFact(const char* name) { return ReadFact(std::string("/sys/class/dmi/id/") + name); }

/// For a key, which is never NULL.
std::string DmiKey(const char* name) {
    return ReadFact(std::string("/sys/class/dmi/id/") + name).value_or(std::string());
}

/// One line of the file of accounts.
struct Account {
    std::string name, description;
};

std::string TakeField(std::string_view& line) {
    const std::size_t end = std::min(line.find(':'), line.size());
    std::string field(line.substr(0, end));
    line.remove_prefix(std::min(end + 1, line.size()));
    return field;
}

Account ReadAccount(std::string_view line) {
    Account account{TakeField(line), {}};
    for (int i = 0; i < 3; ++i) TakeField(line);  // the password, and the numbers of account and group
    account.description = TakeField(line);
    return account;
}

std::vector<Account> LocalAccounts() {
    std::vector<Account> accounts;
    const std::string text = platform::ReadWholeFile("/etc/passwd").value_or("");
    std::string_view left = text;
    while (!left.empty()) {
        const std::size_t end = std::min(left.find('\n'), left.size());
        if (end > 0 && left.front() != '#') accounts.push_back(ReadAccount(left.substr(0, end)));
        left.remove_prefix(std::min(end + 1, left.size()));
    }
    return accounts;
}

}  // namespace

WmiClass BiosClass() {
    using F = Firmware&;
    return MakeLiveClass<Firmware>(
        L"Win32_BIOS", {L"Name", L"SoftwareElementID", L"Version"},
        {
            {L"Caption", CIM_STRING, [](F) { return DmiFact("bios_version"); }},
            {L"Description", CIM_STRING, [](F) { return DmiFact("bios_version"); }},
            {L"Manufacturer", CIM_STRING, [](F) { return DmiFact("bios_vendor"); }},
            {L"Name", CIM_STRING, [](F) { return DmiKey("bios_version"); }},
            {L"PrimaryBIOS", CIM_BOOLEAN, [](F) { return true; }},
            {L"ReleaseDate", CIM_DATETIME},
            {L"SerialNumber", CIM_STRING, [](F) { return DmiFact("product_serial"); }},
            {L"SMBIOSBIOSVersion", CIM_STRING, [](F) { return DmiFact("bios_version"); }},
            {L"SoftwareElementID", CIM_STRING, [](F) { return DmiKey("bios_version"); }},
            {L"Status", CIM_STRING, [](F) { return "OK"; }},
            {L"Version", CIM_STRING, [](F) { return DmiKey("bios_version"); }},
        },
        [] { return std::vector<Firmware>(1); });
}

WmiClass UserAccountClass() {
    using A = Account&;
    return MakeLiveClass<Account>(
        L"Win32_UserAccount", {L"Domain", L"Name"},
        {
            {L"Caption", CIM_STRING, [](A a) { return NodeName() + '\\' + a.name; }},
            {L"Description", CIM_STRING, [](A a) { return a.description; }},
            {L"Disabled", CIM_BOOLEAN},
            {L"Domain", CIM_STRING, [](A) { return NodeName(); }},
            {L"FullName", CIM_STRING, [](A a) { return a.description; }},
            {L"LocalAccount", CIM_BOOLEAN, [](A) { return true; }},
            {L"Name", CIM_STRING, [](A a) { return a.name; }},
            {L"SID", CIM_STRING},
            {L"Status", CIM_STRING, [](A) { return "OK"; }},
        },
        LocalAccounts);
}

/// There are no updates of that kind.
WmiClass QuickFixEngineeringClass() {
    return MakeLiveClass<Firmware>(L"Win32_QuickFixEngineering", {L"HotFixID"},
                                   {
                                       {L"Caption", CIM_STRING},
                                       {L"Description", CIM_STRING},
                                       {L"HotFixID", CIM_STRING},
                                       {L"InstalledBy", CIM_STRING},
                                       {L"InstalledOn", CIM_STRING},
                                   },
                                   [] { return std::vector<Firmware>(); });
}

}  // namespace quillon::simulation
