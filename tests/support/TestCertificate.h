#pragma once

namespace quillon::test {

/// A certificate as "openssl x509 -text" shows it: serial 8f0102, issuer CN=Test CA, valid from
/// 2026-11-24T21:46:39Z to 2051-07-16T21:46:39Z; its subject has a part of two attributes.
inline constexpr const char* kCertificate =
    "-----BEGIN CERTIFICATE-----\n"
    "MIIBLTCB4AIEAI8BAjAFBgMrZXAwEjEQMA4GA1UEAwwHVGVzdCBDQTAgFw0yNjEx\n"
    "MjQyMTQ2MzlaGA8yMDUxMDcxNjIxNDYzOVowbzEXMBUGCgmSJomT8ixkARkWB2V4\n"
    "YW1wbGUxCzAJBgNVBAYTAkdCMRAwDgYDVQQIDAdFbmdsYW5kMRYwFAYDVQQKDA1R\n"
    "dWlsbG9uLCBJbmMuMR0wCwYDVQQLDARsZWZ0MA4GA1UEAwwHR3LDvMOfZTAqMAUG\n"
    "AytlcAMhANqkSGRr3Yw+esIh4jcafUPTA/QXZMqVQpxaiSCEg/pOMAUGAytlcANB\n"
    "ANnoDgBK+1xaJHWjNDa54SMw1apnfKUBNIxAPneOLbBg8skUeW8xfuYLPV8YPNPa\n"
    "6mjq/ZM9dVZFy8BkHbnrVA4=\n"
    "-----END CERTIFICATE-----\n";

}  // namespace quillon::test
