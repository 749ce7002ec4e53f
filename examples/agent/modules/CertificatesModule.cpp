#include "modules/Modules.h"

#include <algorithm>
#include <utility>

#include "modules/Describe.h"
#include "quillon/Certificate.h"
#include "quillon/CertificateUtils.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/ParameterBinder.h"
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
    columns.AddEmptyCell("FriendlyName", typeid(std::string));
    DataTable table;
    table.SetDefaultColumns(columns);
    return table;
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
        Certificate::ReadFile(path, certificates);
        if (certificates.size() == before)
            logger->Debug("No certificate in '%s'", LogText::OneLine(path).c_str());
    }
    return true;
}

/// By its name or its friendly name.
bool ReadStore(const std::string& store, Certificates& certificates) {
    const std::wstring name = StringUtils::NarrowStringToWide(store);
    const std::wstring byFriendlyName = CertificateUtils::GetStoreNameFromFriendlyName(store);
    return Certificate::ReadStore(byFriendlyName.empty() ? name : byFriendlyName, certificates);
}

void List(const MethodParameters& parameters, InvocationResult& result) {
    std::string folder;
    std::string store;
    ParameterBinder binder(parameters, false, false);
    binder.AddOptionalBinding("folder", folder);
    binder.AddOptionalBinding("store", store);
    if (!binder.Bind(result)) return;
    if (folder.empty() == store.empty()) {
        RefuseParameter("Give either 'folder' or 'store'", result);
        return;
    }

    Certificates certificates;
    const bool isRead = store.empty() ? ReadFolder(folder, certificates) : ReadStore(store, certificates);
    if (!isRead) {
        Fail(InvocationResult::kSystemFailure,
             store.empty() ? "Could not list the folder '" + folder + '\''
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
    AddOptionalParameter(
        builder, "store",
        "Store of the computer by its name (Root) or friendly name; there are none on Linux.");
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
}

}  // namespace

std::unique_ptr<IModule> MakeCertificatesModule() {
    std::vector<Method> methods;
    methods.push_back(MakeMethod("Certificates.List", IMethodMetadata::V5_0, &DescribeList, &List));
    return MakeModule(std::move(methods));
}

}  // namespace quillon::agent
