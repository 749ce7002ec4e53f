#include "modules/Modules.h"

#include <algorithm>
#include <utility>

#include "modules/Describe.h"
#include "quillon/Certificate.h"
#include "quillon/CertificateChain.h"
#include "quillon/CertificateUtils.h"
#include "quillon/DescribedBinder.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/PathUtils.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StringUtils.h"

namespace quillon::agent {

namespace {

constexpr unsigned long kSha1Property = 3;
constexpr unsigned long kFriendlyNameProperty = 11;
constexpr unsigned long kSha256Property = 107;

using Certificates = std::vector<Certificate>;

DataTable NoCertificates() {
    VariantList columns;
    for (const char* const name : {"Subject", "Issuer", "Serial", "Thumbprint", "ThumbprintSha256"})
        columns.AddEmptyCell(name, typeid(std::string));
    for (const char* const name : {"NotBefore", "NotAfter"}) columns.Add(Variant::NullVariant(name));
    for (const char* const name : {"FriendlyName", "AlternativeNames", "KeyUsage", "ExtendedKeyUsage"})
        columns.AddEmptyCell(name, typeid(std::string));
    DataTable table;
    table.SetDefaultColumns(columns);
    return table;
}

std::string Joined(const std::optional<std::vector<std::string>>& texts) {
    std::string joined;
    for (const std::string& text : texts.value_or(std::vector<std::string>{}))
        joined += (joined.empty() ? "" : ", ") + text;
    return joined;
}

/// "DNS:host, IP:10.0.0.1"
std::string NamesOf(const Certificate& certificate) {
    constexpr const char* kKinds[] = {"DNS:", "IP:", "email:", "URI:", "directory:", "other:"};
    std::vector<std::string> names;
    for (const auto& [kind, value] : certificate.AlternativeNames())
        names.push_back(kKinds[static_cast<std::size_t>(kind)] + value);
    return Joined(names);
}

std::string KeyUsageOf(const Certificate& certificate) {
    constexpr std::pair<std::uint32_t, const char*> kUsages[] = {
        {Certificate::DigitalSignature, "DigitalSignature"},
        {Certificate::NonRepudiation, "NonRepudiation"},
        {Certificate::KeyEncipherment, "KeyEncipherment"},
        {Certificate::DataEncipherment, "DataEncipherment"},
        {Certificate::KeyAgreement, "KeyAgreement"},
        {Certificate::KeyCertSign, "KeyCertSign"},
        {Certificate::CrlSign, "CrlSign"},
        {Certificate::EncipherOnly, "EncipherOnly"},
        {Certificate::DecipherOnly, "DecipherOnly"},
    };
    std::vector<std::string> names;
    for (const auto& [bit, name] : kUsages) {
        if ((certificate.KeyUsage().value_or(0) & bit) != 0) names.emplace_back(name);
    }
    return Joined(names);
}

VariantList Describe(const Certificate& certificate) {
    const CERT_CONTEXT* const context = certificate.Context();
    const auto hash = [context](unsigned long id) {
        return CertificateUtils::GetContextPropertyHash(context, id);
    };
    std::string friendlyName = CertificateUtils::GetContextPropertyString(context, kFriendlyNameProperty);
    friendlyName.resize(std::min(friendlyName.find('\0'), friendlyName.size()));
    VariantList row;
    row.Add("Subject", certificate.Subject());
    row.Add("Issuer", certificate.Issuer());
    row.Add("Serial", CertificateUtils::GetSerialNumberHexString(context));
    row.Add(Variant::StringOrNullVariant("Thumbprint", hash(kSha1Property)));
    row.Add(Variant::StringOrNullVariant("ThumbprintSha256", hash(kSha256Property)));
    row.Add(Variant("NotBefore", certificate.NotBefore()));
    row.Add(Variant("NotAfter", certificate.NotAfter()));
    row.Add(Variant::StringOrNullVariant("FriendlyName", friendlyName));
    row.Add(Variant::StringOrNullVariant("AlternativeNames", NamesOf(certificate)));
    row.Add(Variant::StringOrNullVariant("KeyUsage", KeyUsageOf(certificate)));
    row.Add(Variant::StringOrNullVariant("ExtendedKeyUsage", Joined(certificate.ExtendedKeyUsages())));
    return row;
}

/// In the order of the files' names. Files without a certificate are left out.
bool ReadFolder(const std::string& folder, Certificates& certificates) {
    std::vector<std::string> names;
    if (!FileSystemUtils::GetImmediateFilesWithin(folder, names)) return false;
    std::sort(names.begin(), names.end());
    auto* const logger = ServiceLocator::Get<ICLogger>();
    for (const std::string& name : names) {
        const std::string path = PathUtils::CombinePaths(folder, name, PathUtils::PathSep);
        const std::size_t before = certificates.size();
        if (!Certificate::ReadFile(path, certificates)) {
            const std::string reason = LastFailure({});
            logger->Warn("The certificates in '%s' cannot be read: %s", LogText::OneLine(path).c_str(),
                         reason.c_str());
        } else if (certificates.size() == before) {
            logger->Debug("No certificate in '%s'", LogText::OneLine(path).c_str());
        }
    }
    return true;
}

/// By its name or its friendly name. `of` is empty for the computer, "user", or the name of a service.
bool ReadStore(const std::string& of, const std::string& store, Certificates& certificates) {
    const std::wstring given = StringUtils::NarrowStringToWide(store);
    const std::wstring byFriendlyName = CertificateUtils::GetStoreNameFromFriendlyName(store);
    const std::wstring name = byFriendlyName.empty() ? given : byFriendlyName;
    if (of.empty()) return Certificate::ReadStore(name, certificates);
    if (of == "user") return Certificate::ReadStore(Certificate::Stores::User, name, certificates);
    return Certificate::ReadStore(Certificate::Stores::Service,
                                  StringUtils::NarrowStringToWide(of) + L'\\' + name, certificates);
}

void List(DescribedBinder& binder, InvocationResult& result) {
    std::string folder;
    std::string store;
    std::string of;
    binder.Add("folder", folder);
    binder.Add("store", store);
    binder.Add("of", of);
    if (!binder.Bind(result)) return;
    if (folder.empty() == store.empty()) {
        RefuseParameter("Give either 'folder' or 'store'", result);
        return;
    }

    Certificates certificates;
    const bool isRead = store.empty() ? ReadFolder(folder, certificates) : ReadStore(of, store, certificates);
    if (!isRead) {
        Fail(InvocationResult::kSystemFailure,
             store.empty() ? "Could not list the folder '" + folder + "': " + LastFailure({})
                           : "There is no certificate store '" + store + '\'',
             result);
        return;
    }
    result.resultTable = NoCertificates();
    for (const Certificate& certificate : certificates) result.resultTable.AddRow(Describe(certificate));
}

void DescribeList(IMethodMetadataBuilder& builder) {
    builder.Description("Lists certificates, a row each, of files or of a store of the system.")
        .Note("Nothing is checked: neither signatures nor dates nor revocation.")
        .Example("quillon-agent run Certificates.List folder=/etc/ssl/certs");
    AddOptionalParameter(builder, "folder",
                         "Folder of files in DER or PEM; files without a certificate are left out.");
    AddOptionalParameter(builder, "store",
                         "Store by its name (Root) or friendly name; there are none on Linux.");
    AddOptionalParameter(
        builder, "of",
        "Whose store: 'user' for the agent's account, or the name of a service; the computer's "
        "when it is left out.");
    const auto add = [&builder](const char* name, const char* description) {
        AddColumn(builder, name, typeid(std::string), description);
    };
    add("Subject", "Name in X.500 form; empty when it is malformed or longer than 2,047 characters.");
    add("Issuer", "Name in X.500 form.");
    add("Serial", "Hexadecimal, most significant byte first.");
    add("Thumbprint", "SHA-1 of the certificate in hexadecimal.");
    add("ThumbprintSha256", "SHA-256 of the certificate in hexadecimal.");
    AddColumn(builder, "NotBefore", typeid(TimePoint), "Start of its validity.");
    AddColumn(builder, "NotAfter", typeid(TimePoint), "End of its validity.");
    add("FriendlyName", "What its owner calls it; null when it has no such name.");
    add("AlternativeNames",
        "Names of hosts and others, such as DNS:www.example.org, joined by ', '; or null.");
    add("KeyUsage", "What the key is for, joined by ', '; null for anything.");
    add("ExtendedKeyUsage", "Identifiers such as 1.3.6.1.5.5.7.3.1, joined by ', '; null for anything.");
}

/// Reads a file that must hold certificates. An empty path gives none.
bool ReadRequired(const std::string& path, Certificates& certificates, InvocationResult& result) {
    if (path.empty()) return true;
    if (!Certificate::ReadFile(path, certificates))
        return Fail(InvocationResult::kSystemFailure,
                    "The certificates in '" + path + "' cannot be read: " + LastFailure({}), result);
    return !certificates.empty() ||
           Fail(InvocationResult::kSystemFailure, "There is no certificate in '" + path + '\'', result);
}

VariantList ChainRow(const Certificate& certificate, const CertificateChain& chain, bool soft) {
    const auto checks = soft ? IAgentConfiguration::Soft : static_cast<IAgentConfiguration::CRLChecks>(0);
    std::vector<std::string> subjects;
    for (const Certificate& each : chain.Certificates()) subjects.push_back(each.Subject());
    VariantList row;
    row.Add("Subject", certificate.Subject());
    row.Add(Variant("Trusted", chain.IsTrusted(checks)));
    row.Add(Variant("Status", static_cast<long long>(chain.Status())));
    row.Add(Variant::StringOrNullVariant("StatusText", chain.StatusText()));
    row.Add(Variant::StringOrNullVariant("Chain", Joined(subjects)));
    return row;
}

void Check(DescribedBinder& binder, InvocationResult& result) {
    std::string file;
    std::string roots;
    CertificateChainOptions options;
    bool soft = false;
    binder.Add("file", file);
    binder.Add("roots", roots);
    binder.Add("usage", options.usage);
    binder.Add("revocation", options.checksRevocation);
    binder.Add("soft", soft);
    Certificates certificates;
    Certificates trusted;
    if (!binder.Bind(result) || !ReadRequired(file, certificates, result) ||
        !ReadRequired(roots, trusted, result)) {
        return;
    }
    if (certificates.empty()) {
        RefuseParameter("'file' must not be empty", result);
        return;
    }
    if (!roots.empty()) options.roots = std::move(trusted);
    options.intermediates.assign(certificates.begin() + 1, certificates.end());
    result.resultTable.AddRow(
        ChainRow(certificates.front(), CertificateChain::Check(certificates.front(), options), soft));
}

void DescribeCheck(IMethodMetadataBuilder& builder) {
    builder
        .Description(
            "Checks the chain of a certificate: signatures, dates, constraints and usage; in one row.")
        .Note("Names are not compared with a host. On Linux revocation cannot be checked.")
        .Example(
            "quillon-agent run Certificates.Check file=server.pem roots=roots.pem usage=1.3.6.1.5.5.7.3.1");
    AddParameter(
        builder, "file",
        "File of the certificate, in DER or PEM; further ones in it may stand between it and a root.");
    AddOptionalParameter(builder, "roots", "File of the only roots that are trusted, else the system's are.");
    AddOptionalParameter(builder, "usage", "Identifier of an extended usage that the chain must allow.");
    AddFlag(builder, "revocation", "Whether revocation is checked.");
    AddFlag(builder, "soft", "Whether a revocation that cannot be checked is ignored.");
    AddColumn(builder, "Subject", typeid(std::string), "Whose certificate it is.");
    AddColumn(builder, "Trusted", typeid(bool), "Whether nothing is wrong, or nothing that is ignored.");
    AddColumn(builder, "Status", typeid(long long), "Bits of the error status, as Windows has them.");
    AddColumn(builder, "StatusText", typeid(std::string), "Names of the bits; null when there are none.");
    AddColumn(builder, "Chain", typeid(std::string), "Subjects from the certificate to the root.");
}

}  // namespace

std::unique_ptr<IModule> MakeCertificatesModule() {
    std::vector<Method> methods;
    methods.push_back(MakeMethod("Certificates.List", IMethodMetadata::V5_0, &DescribeList, &List));
    methods.push_back(MakeMethod("Certificates.Check", IMethodMetadata::V5_0, &DescribeCheck, &Check));
    return MakeModule(std::move(methods));
}

}  // namespace quillon::agent
