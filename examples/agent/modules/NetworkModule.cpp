#include "modules/Modules.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include "modules/Describe.h"
#include "quillon/DescribedBinder.h"
#include "quillon/IpRanges.h"
#include "quillon/NetworkUtils.h"
#include "quillon/StringUtils.h"
#include "quillon/WindowsSockets.h"
#include "system/SystemFacts.h"

namespace quillon::agent {

namespace {

constexpr int kTimedOut = -1;
constexpr long long kUsualTimeout = 10;
constexpr long long kLongestTimeout = std::numeric_limits<int>::max();

/// The look-up answers once for every kind of socket; an address is listed once.
void AddAddresses(const addrinfo* found, InvocationResult& result) {
    std::vector<std::string> texts;
    for (const auto& [address, length] : SocketAddresses(found)) {
        std::string text = NetworkUtils::XpFriendlyAddressToIpString(0, address, length);
        if (text.empty()) {
            Fail(InvocationResult::kSystemFailure,
                 "Cannot write an address as text: " + StringUtils::GetLastErrorAsString(), result);
            continue;
        }
        if (std::find(texts.begin(), texts.end(), text) == texts.end()) texts.push_back(std::move(text));
    }
    for (const std::string& text : texts) {
        const char* const family = text.find(':') == std::string::npos ? "IPv4" : "IPv6";
        result.resultTable.AddRow(VariantList(Variant("Address", text), Variant("Family", family)));
    }
}

void Resolve(DescribedBinder& binder, InvocationResult& result) {
    std::string host;
    long long timeout = 0;
    binder.Add("host", host);
    binder.Add("timeout", timeout);
    if (!binder.Bind(result) || !HasNoZeroByte("host", host, result)) return;
    timeout = std::clamp<long long>(timeout, 1, kLongestTimeout);
    result.resultTable.AddStringCol("Address");
    result.resultTable.AddStringCol("Family");
    WindowsSockets::GetInstance()->InitializeSockets();
    std::unique_ptr<addrinfo, void (*)(addrinfo*)> found(nullptr, &NetworkUtils::FreeAddrInfoRobust);
    const int code =
        NetworkUtils::getaddrinfo_OrTimeout(host.c_str(), nullptr, nullptr, found, static_cast<int>(timeout));
    if (code == kTimedOut)
        Fail(InvocationResult::kSystemFailure,
             "No answer for '" + host + "' within " + std::to_string(timeout) + " s", result);
    else if (code != 0)
        Fail(InvocationResult::kSystemFailure,
             "Cannot resolve '" + host + "': " + NetworkUtils::LookupErrorText(code), result);
    else
        AddAddresses(found.get(), result);
}

void InRange(DescribedBinder& binder, InvocationResult& result) {
    std::string address, ranges;
    binder.Add("address", address);
    binder.Add("ranges", ranges);
    if (!binder.Bind(result)) return;
    std::string problem;
    const auto set = IpRanges::Read(ranges, problem);
    const auto isInside = set ? set->Holds(address) : std::nullopt;
    if (!set) {
        RefuseParameter("The ranges are malformed: " + problem, result);
    } else if (!isInside) {
        RefuseParameter("'" + address + "' is no address", result);
    } else {
        result.resultTable.AddRow(VariantList(Variant("InRange", *isInside)));
    }
}

void Cidr(DescribedBinder& binder, InvocationResult& result) {
    std::string address, mask;
    binder.Add("address", address);
    binder.Add("mask", mask);
    if (!binder.Bind(result)) return;
    const auto isIpv4 = [](const std::string& text) {
        return IpRanges::IsAddress(text) && text.find(':') == std::string::npos;
    };
    if (!isIpv4(address) || !isIpv4(mask)) {
        RefuseParameter("Address and mask are each four numbers of 0 to 255: 10.1.2.3", result);
        return;
    }
    const std::string cidr = NetworkUtils::GetNetworkCidrAddressFromAddressAndMask(address, mask);
    result.resultTable.AddRow(VariantList(Variant("Cidr", cidr)));
}

void Adapters(DescribedBinder& binder, InvocationResult& result) {
    std::string name;
    binder.Add("name", name);
    if (!binder.Bind(result)) return;
    if (!NetworkUtils::GetAdapters(result.resultTable)) {
        Fail(InvocationResult::kSystemFailure,
             "Cannot list the network adapters: " + StringUtils::GetLastErrorAsString(), result);
        return;
    }
    if (name.empty()) return;
    const DataTable all = result.resultTable;
    result.resultTable.Clear(false);
    for (const VariantList& row : all)
        if (row["Name"].AsString() == name) result.resultTable.AddRow(row);
}

void DescribeResolve(IMethodMetadataBuilder& builder) {
    builder.Flags({IMethodMetadata::PerformsNetworkActivity})
        .Description("Looks a name up, a row an address.")
        .Note("A name that has no address, or none in time, is a failed invocation with code 3.")
        .Example("quillon-agent run Network.Resolve host=localhost timeout=5");
    AddParameter(builder, "host", "A name or an address.");
    builder.CreateParameter("timeout", typeid(long long))
        .Description("Seconds, at least 1.")
        .OptionalValue(kUsualTimeout)
        .BindParameter();
    AddColumn(builder, "Address", typeid(std::string), "In the order of the system's answer, each once.");
    AddColumn(builder, "Family", typeid(std::string), "IPv4 or IPv6.");
}

void DescribeInRange(IMethodMetadataBuilder& builder) {
    builder.Description("Tells whether an address lies in one of the ranges.")
        .Note("A malformed address or list is refused with code 2, and the message names the piece.")
        .Example("quillon-agent run Network.InRange address=10.0.0.5 ranges=10.0.0.1-10.0.0.9,fe80::/10");
    AddParameter(builder, "address", "An IPv4 or IPv6 address.");
    AddParameter(builder, "ranges", "Separated by commas; each an address, LOW-HIGH or NETWORK/LENGTH.");
    AddColumn(builder, "InRange", typeid(bool), "Both ends belong to a range.");
}

void DescribeCidr(IMethodMetadataBuilder& builder) {
    builder.Description("Writes the network of an address as NETWORK/LENGTH.")
        .Example("quillon-agent run Network.Cidr address=10.1.2.3 mask=255.255.255.0");
    AddParameter(builder, "address", "Four numbers with dots between them.");
    AddParameter(builder, "mask", "The same. Only its lowest bit that is set counts for the length.");
    AddColumn(builder, "Cidr", typeid(std::string), "Such as 10.1.2.0/24.");
}

void DescribeAdapters(IMethodMetadataBuilder& builder) {
    builder.Description("Lists the computer's network adapters, a row an address.")
        .Note("An adapter without an address has one row, without Family, Address and Prefix.")
        .Example("quillon-agent run Network.Adapters");
    AddOptionalParameter(builder, "name", "Only the adapter of this name.");
    AddColumn(builder, "Name", typeid(std::string), "As the system shows it.");
    AddColumn(builder, "Description", typeid(std::string), "Often the kind of the device.");
    AddColumn(builder, "Index", typeid(long long), "The system's number of the adapter.");
    AddColumn(builder, "State", typeid(std::string), "Such as up, down or lowerLayerDown (RFC 2863).");
    AddColumn(builder, "MacAddress", typeid(std::string), "Such as 00-1a-2b-3c-4d-5e; empty without one.");
    AddColumn(builder, "Family", typeid(std::string), "IPv4 or IPv6.");
    AddColumn(builder, "Address", typeid(std::string), "Without a scope.");
    AddColumn(builder, "Prefix", typeid(long long), "Bits of the network.");
}

}  // namespace

std::unique_ptr<IModule> MakeNetworkModule() {
    std::vector<Method> methods;
    methods.push_back(MakeMethod("Network.Adapters", IMethodMetadata::V5_0, &DescribeAdapters, &Adapters));
    methods.push_back(MakeMethod("Network.Resolve", IMethodMetadata::V5_0, &DescribeResolve, &Resolve));
    methods.push_back(MakeMethod("Network.InRange", IMethodMetadata::V5_0, &DescribeInRange, &InRange));
    methods.push_back(MakeMethod("Network.Cidr", IMethodMetadata::V5_0, &DescribeCidr, &Cidr));
    return MakeModule(std::move(methods));
}

}  // namespace quillon::agent
