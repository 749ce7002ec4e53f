#include "quillon/CertificateUtils.h"

#include <gmock/gmock.h>

#include <cstdlib>

#include "quillon/Certificate.h"
#include "quillon/DateTimeUtils.h"
#include "support/LogLines.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/TestCertificate.h"

namespace quillon::test {

namespace {

using CertificateFileTest = TempDirTest;
using testing::ElementsAre;

constexpr unsigned long kSha1 = 3, kFriendlyName = 11, kSha256 = 107, kUnknown = 9'999;

/// As openssl prints it: serial, SHA-1, SHA-256, from, to, subject.
std::vector<std::string> FactsOf(const Certificate& certificate) {
    const CERT_CONTEXT* const context = certificate.Context();
    return {CertificateUtils::GetSerialNumberHexString(context),
            CertificateUtils::GetContextPropertyHash(context, kSha1),
            CertificateUtils::GetContextPropertyHash(context, kSha256),
            DateTimeUtils::FormatTimeAsISO8601(certificate.NotBefore()),
            DateTimeUtils::FormatTimeAsISO8601(certificate.NotAfter()),
            certificate.Subject()};
}

}  // namespace

TEST(CertificateUtils, TellsWhatACertificateSays) {
    const auto certificate = Certificate::Parse(kCertificate);
    ASSERT_TRUE(certificate);
    const std::string digest = "71d87de15cb0fe0326e3d9a7c967e82472ffe6aff1c8ba78e8448410c63ced9f";
    const auto sha256 = testing::AnyOf(digest, kWindows ? "" : digest);  // the emulator has none
    EXPECT_THAT(
        FactsOf(*certificate),
        ElementsAre("008f0102", "121bf9f654f64aecf9105a1f1910f3393d9e305c", sha256,
                    "2026-11-24T21:46:39.000Z", "2051-07-16T21:46:39.000Z",
                    "DC=example, C=GB, S=England, O=\"Quillon, Inc.\", OU=left + CN=Gr\xC3\xBC\xC3\x9F"
                    "e"));
    EXPECT_EQ(certificate->Issuer(), "CN=Test CA");
    for (const unsigned long id : {kFriendlyName, kUnknown}) {
        SCOPED_TRACE(id);
        EXPECT_EQ(CertificateUtils::GetContextPropertyString(certificate->Context(), id), "");
        EXPECT_EQ(CertificateUtils::GetContextPropertyHash(certificate->Context(), id), "");
    }
}

TEST_F(CertificateFileTest, AgreesWithOpenSsl) {
    if (kWindows) GTEST_SKIP() << "openssl is Linux's";
    const std::string folder = dir.Native().string();
    const std::string script = "exec >/dev/null 2>&1; cd " + folder +
                               R"(; for n in 1 2; do
        openssl req -x509 -newkey ed25519 -nodes -keyout key$n -set_serial 0x7f0$n -days 5$n \
            -subj "/C=GB/O=Quillon/CN=host $n" -out plain$n &&
        openssl x509 -in plain$n -trustout -setalias "Name $n" -out c$n; done
        cat key1 c1 key2 c2 > all; echo damaged | cat - c1 | sed 's/^MII/MIA/' > damaged
        head -n 3 c1 | cat - c2 > cut
        openssl x509 -in c2 -outform DER -out der
        openssl x509 -in c2 -noout -serial -dateopt iso_8601 -dates -nameopt sep_comma_plus_space,sname -subject |
            sed 's/^[^=]*=//; 1y/ABCDEF/abcdef/; s/ \(..:..:..\)Z/T\1.000Z/' > facts
        for h in sha1 sha256; do openssl x509 -in c2 -noout -fingerprint -$h; done | sed 's/.*=//; s/://g' | tr A-F a-f)"
                               " > prints";
    ASSERT_EQ(std::system(script.c_str()), 0);
    std::vector<Certificate> read;
    for (const char* const file : {"all", "der"})
        EXPECT_TRUE(Certificate::ReadFile(dir.Path(file), read)) << file;
    ASSERT_EQ(read.size(), 3u);
    const auto facts = LinesOf(dir.Read("facts")), prints = LinesOf(dir.Read("prints"));
    ASSERT_EQ(facts.size() + prints.size(), 6u);
    for (const std::size_t second : {1U, 2U}) {
        SCOPED_TRACE(second);
        EXPECT_THAT(FactsOf(read[second]),
                    ElementsAre(facts[0], prints[0], prints[1], facts[1], facts[2], facts[3]));
    }
    EXPECT_EQ(CertificateUtils::GetContextPropertyString(read[1].Context(), kFriendlyName),
              std::string("Name 2") + '\0');
    EXPECT_TRUE(Certificate::ReadFile(dir.Path("damaged"), read));
    EXPECT_EQ(read.size(), 3u);
    EXPECT_TRUE(Certificate::ReadFile(dir.Path("cut"), read));
    ASSERT_EQ(read.size(), 4u);
    EXPECT_THAT(FactsOf(read[3]), ElementsAre(facts[0], prints[0], prints[1], facts[1], facts[2], facts[3]));
}

TEST_F(CertificateFileTest, BlocksThatAreJoinedWithoutALineEndAreAllRead) {
    std::string joined = kCertificate;
    joined.pop_back();
    std::vector<Certificate> read;
    EXPECT_TRUE(Certificate::ReadFile(dir.Write("joined", joined + kRoot), read));
    ASSERT_EQ(read.size(), 2u);
    EXPECT_EQ(FactsOf(read[0]), FactsOf(*Certificate::Parse(kCertificate)));
    EXPECT_EQ(FactsOf(read[1]), FactsOf(*Certificate::Parse(kRoot)));
}

TEST_F(CertificateFileTest, FilesAndStoresThatCannotBeRead) {
    std::vector<Certificate> read;
    for (const std::string& path :
         {dir.Path(), dir.Path("missing"), dir.Write("large", std::string(16'777'217, 'x'))})
        EXPECT_FALSE(Certificate::ReadFile(path, read)) << path;
    EXPECT_FALSE(Certificate::ReadStore(L"no such store", read));
    EXPECT_EQ(Certificate::ReadStore(L"Root", read), kWindows);
    read.clear();
    for (const char* const content :
         {"", "text", "-----BEGIN ", "-----BEGIN CERTIFICATE-----\n-----END CERTIFICATE-----"})
        EXPECT_TRUE(Certificate::ReadFile(dir.Write("file", content), read)) << content;
    EXPECT_EQ(read.size(), 0u);
}

TEST(CertificateUtils, NamesOfStores) {
    const std::pair<std::wstring, std::string> friendly[] = {
        {L"root", "Trusted Root Certification Authorities"},
        {L"DISALLOWED", "Untrusted Certficates"},
        {L"Trust", "Enterprise Trust"},
        {L"Roo", ""},
        {L"", ""}};
    for (const auto& [store, expected] : friendly)
        EXPECT_EQ(CertificateUtils::GetFriendlyNameFromStoreName(store), expected) << expected;
    const std::pair<std::string, std::wstring> stores[] = {
        {"Trusted Publisher", L"TrustedPublisher"},
        {"1: Trusted Root Certification Authorities!", L"Root"},
        {"Other People, Personal", L"My"},
        {"personal", L""},
        {"", L""}};
    for (const auto& [name, expected] : stores)
        EXPECT_EQ(CertificateUtils::GetStoreNameFromFriendlyName(name), expected) << name;
}

}  // namespace quillon::test
