#include "quillon/CertificateChain.h"

#include <gmock/gmock.h>

#include <cstdlib>

#include "quillon/DateTimeUtils.h"
#include "support/RecordingLogger.h"
#include "support/System.h"
#include "support/TempDir.h"
#include "support/TestCertificate.h"

namespace quillon::test {

namespace {

using Kind = Certificate::AlternativeName::Kind;
using testing::ElementsAre;
using testing::Optional;

constexpr auto kStrict = static_cast<IAgentConfiguration::CRLChecks>(0);
constexpr const char* kServer = "1.3.6.1.5.5.7.3.1";
constexpr const char* kClient = "1.3.6.1.5.5.7.3.2";
constexpr std::uint32_t kNotTimeValid = 0x1, kNotSignatureValid = 0x8, kNotValidForUsage = 0x10,
                        kUntrustedRoot = 0x20, kRevocationUnknown = 0x40, kPartialChain = 0x10000;

Certificate Parsed(const char* text) { return Certificate::Parse(text).value(); }

/// The sample chain with its root, at a time when all of it is valid.
CertificateChainOptions Complete() {
    CertificateChainOptions options;
    options.intermediates = {Parsed(kIssuer)};
    options.roots = {Parsed(kRoot)};
    options.time = DateTimeUtils::JsonDateTimeToTimePoint("2030-01-01T00:00:00Z");
    return options;
}

/// The sample with another digit near the end, within its signature.
Certificate Forged() {
    std::string text = kHost;
    char& digit = text[text.find("\n-----END") - 6];
    digit = digit == 'A' ? 'B' : 'A';
    return Parsed(text.c_str());
}

std::vector<std::string> SubjectsOf(const CertificateChain& chain) {
    std::vector<std::string> subjects;
    for (const Certificate& each : chain.Certificates()) subjects.push_back(each.Subject());
    return subjects;
}

}  // namespace

TEST(Certificate, TellsItsNamesAndWhatItsKeyIsFor) {
    const Certificate host = Parsed(kHost);
    std::vector<std::pair<Kind, std::string>> names;
    for (const auto& [kind, value] : host.AlternativeNames()) names.emplace_back(kind, value);
    EXPECT_THAT(names,
                ElementsAre(std::pair(Kind::Dns, "*.example.org"), std::pair(Kind::Ip, "10.0.0.1"),
                            std::pair(Kind::Ip, "2001:db8::1:0:0:8"), std::pair(Kind::Email, "a@example.org"),
                            std::pair(Kind::Uri, "https://example.org/x"),
                            std::pair(Kind::Directory, "C=GB, CN=directory"),
                            std::pair(Kind::Other, "06032a0304a0070c056f74686572")));
    EXPECT_THAT(host.KeyUsage(), Optional(Certificate::DigitalSignature | Certificate::KeyEncipherment));
    EXPECT_THAT(host.ExtendedKeyUsages(), Optional(ElementsAre(kServer, "1.2.3.4")));
    EXPECT_THAT(Parsed(kIssuer).KeyUsage(), Optional(Certificate::KeyCertSign | Certificate::CrlSign));
    const Certificate plain = Parsed(kCertificate);  // without extensions
    EXPECT_TRUE(plain.AlternativeNames().empty() && !plain.KeyUsage() && !plain.ExtendedKeyUsages());
}

TEST(CertificateChain, IsTrustedFromAGivenRootOnly) {
    const CertificateChain chain = CertificateChain::Check(Parsed(kHost), Complete());
    EXPECT_EQ(chain.Status(), 0u) << chain.StatusText();
    EXPECT_THAT(SubjectsOf(chain), ElementsAre("CN=host", "CN=Test Issuer", Parsed(kRoot).Subject()));
    EXPECT_TRUE(chain.IsTrusted(kStrict));
    auto options = Complete();
    options.roots.emplace();
    const CertificateChain noRoot = CertificateChain::Check(Parsed(kHost), options);
    EXPECT_NE(noRoot.Status() & (kUntrustedRoot | kPartialChain), 0u);
    EXPECT_FALSE(noRoot.IsTrusted(IAgentConfiguration::Soft));
    options = Complete();
    options.intermediates.push_back(Parsed(kRoot));
    options.roots.emplace();
    EXPECT_EQ(CertificateChain::Check(Parsed(kHost), options).Status(), kUntrustedRoot);
    options.roots.reset();  // the system does not know it either
    EXPECT_EQ(CertificateChain::Check(Parsed(kHost), options).Status(), kUntrustedRoot);
}

TEST(CertificateChain, EveryFaultHasItsBit) {
    const auto statusOf = [](const CertificateChainOptions& options, const Certificate& certificate) {
        return CertificateChain::Check(certificate, options);
    };
    auto options = Complete();
    options.intermediates.clear();
    const auto partial = statusOf(options, Parsed(kHost));
    EXPECT_EQ(partial.StatusText(), "CERT_TRUST_IS_PARTIAL_CHAIN");
    EXPECT_THAT(SubjectsOf(partial), ElementsAre("CN=host"));
    options = Complete();
    for (const char* const time : {"2020-01-01T00:00:00Z", "2200-01-01T00:00:00Z"}) {
        options.time = DateTimeUtils::JsonDateTimeToTimePoint(time);
        EXPECT_EQ(statusOf(options, Parsed(kHost)).Status(), kNotTimeValid) << time;
    }
    options = Complete();
    EXPECT_NE(statusOf(options, Forged()).Status() & kNotSignatureValid, 0u);
    options.usage = kServer;
    EXPECT_EQ(statusOf(options, Parsed(kHost)).Status(), 0u);
    options.usage = kClient;
    EXPECT_EQ(statusOf(options, Parsed(kHost)).Status(), kNotValidForUsage);
    options.time = DateTimeUtils::JsonDateTimeToTimePoint("2200-01-01T00:00:00Z");
    EXPECT_EQ(statusOf(options, Parsed(kHost)).StatusText(),
              "CERT_TRUST_IS_NOT_TIME_VALID, CERT_TRUST_IS_NOT_VALID_FOR_USAGE");
}

TEST(CertificateChain, UnknownRevocationIsForTheHostsConfigurationToAllow) {
    if (kWindows) GTEST_SKIP() << "the system may ask the network";
    auto options = Complete();
    options.checksRevocation = true;
    const CertificateChain unknown = CertificateChain::Check(Parsed(kHost), options);
    EXPECT_EQ(unknown.Status(), kRevocationUnknown);
    const RecordingLogger log;
    EXPECT_FALSE(unknown.IsTrusted(kStrict));
    EXPECT_TRUE(unknown.IsTrusted(IAgentConfiguration::Soft));
    EXPECT_THAT(log.Lines(), ElementsAre(" -> CERT_TRUST_REVOCATION_STATUS_UNKNOWN error ignored as soft "
                                         "CRLChecks are configured"));
    options.usage = kClient;  // another error beside it
    EXPECT_FALSE(CertificateChain::Check(Parsed(kHost), options).IsTrusted(IAgentConfiguration::Soft));
}

using CertificateChainFileTest = TempDirTest;

// The oracle says "OK", or the number of its error.
TEST_F(CertificateChainFileTest, AgreesWithOpenSsl) {
    if (kWindows) GTEST_SKIP() << "openssl is Linux's";
    const std::string script = "exec >/dev/null 2>&1; cd " + dir.Native().string() + R"(
        ca() { openssl req -x509 -newkey ed25519 -nodes -keyout $1.key -days 9 -subj "/CN=$1" -out $1 \
                   -addext basicConstraints=critical,CA:$2; }
        signed() { openssl req -newkey ed25519 -nodes -keyout $1.key -subj "/CN=$1" -out $1.csr && printf "$3" > $1.ext &&
                   openssl x509 -req -in $1.csr -CA $2 -CAkey $2.key -set_serial 7 -days ${4:-9} -extfile $1.ext -out $1; }
        ca root TRUE && ca other TRUE &&
        signed good root 'basicConstraints=CA:FALSE\n' && signed forged other 'basicConstraints=CA:FALSE\n' &&
        signed notca root 'basicConstraints=critical,CA:FALSE\n' && signed below notca 'basicConstraints=CA:FALSE\n' &&
        signed critical root '1.2.3.4=critical,ASN1:UTF8:x\n' &&
        signed limited root 'basicConstraints=critical,CA:TRUE\nnameConstraints=critical,permitted;DNS:example.org\n' &&
        signed outside limited 'subjectAltName=DNS:example.com\n' && signed inside limited 'subjectAltName=DNS:a.example.org\n'
    )";
    ASSERT_EQ(std::system(script.c_str()), 0);
    const auto read = [this](const char* name) { return Parsed(dir.Read(name).c_str()); };
    CertificateChainOptions options;
    options.roots = {read("root")};
    options.intermediates = {read("notca"), read("limited"), read("other")};
    const std::pair<const char*, std::uint32_t> cases[] = {
        {"good", 0},         {"forged", 0x20},   {"other", 0x20}, {"below", 0x400},
        {"critical", 0x100}, {"outside", 0x800}, {"inside", 0},   {"root", 0}};
    for (const auto& [name, expected] : cases)
        EXPECT_EQ(CertificateChain::Check(read(name), options).Status(), expected) << name;
}

}  // namespace quillon::test
