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

/// A chain of three, RSA with SHA-1, which the emulator can check as well; valid from 2026-11-25 to
/// 2126-11-01. The root is CN=Test Root, the issuer CN=Test Issuer, and the third, CN=host, is for a server
/// and 1.2.3.4 and has a name of every kind.
inline constexpr const char* kRoot =
    "-----BEGIN CERTIFICATE-----\n"
    "MIICFjCCAX+gAwIBAgIUUzqzT5c3Qj3fEx8lcLWQ40A2S0IwDQYJKoZIhvcNAQEF\n"
    "BQAwFDESMBAGA1UEAwwJVGVzdCBSb290MCAXDTI2MTEyNTIxNDgxMFoYDzIxMjYx\n"
    "MTAxMjE0ODEwWjAUMRIwEAYDVQQDDAlUZXN0IFJvb3QwgZ8wDQYJKoZIhvcNAQEB\n"
    "BQADgY0AMIGJAoGBAMobuBtnKCuKiEDWtC4J0Lu65WsYfeymM/dQAI0B4mX2t2kh\n"
    "mpJWIduSnjVnSAWdGzLjpgpOoD3RA5IWfxJgy6jHdKsinxlcfqhtpi/QN/0iH3gd\n"
    "o6HhSLt35mNo0OSGdG4JFl5zUbUO4de7q7YRxasmBUV5368MnvO571pzHYRNAgMB\n"
    "AAGjYzBhMB8GA1UdIwQYMBaAFLi4x79peZSwJwSsiAwSzlCpZzE6MA8GA1UdEwEB\n"
    "/wQFMAMBAf8wDgYDVR0PAQH/BAQDAgEGMB0GA1UdDgQWBBS4uMe/aXmUsCcErIgM\n"
    "Es5QqWcxOjANBgkqhkiG9w0BAQUFAAOBgQBDpoa6B1l9o0llt76fufKZ6YEre6X8\n"
    "YW5SchS1GeXMuedLS3sUX4m/QjnstZzfy7Kptvicg0Nb4bhDwkzuJbzhkyUBo3wQ\n"
    "mF9dsHfX0MFgLj9psxsU9a+dKHokluug+xrRonXa+Cu976ICWiGByMfkU0XrB66x\n"
    "ax2rOhOCVkUZyQ==\n"
    "-----END CERTIFICATE-----\n";
inline constexpr const char* kIssuer =
    "-----BEGIN CERTIFICATE-----\n"
    "MIICCDCCAXGgAwIBAgIBAjANBgkqhkiG9w0BAQUFADAUMRIwEAYDVQQDDAlUZXN0\n"
    "IFJvb3QwIBcNMjYxMTI1MjE0ODExWhgPMjEyNjExMDEyMTQ4MTFaMBYxFDASBgNV\n"
    "BAMMC1Rlc3QgSXNzdWVyMIGfMA0GCSqGSIb3DQEBAQUAA4GNADCBiQKBgQDMiqIK\n"
    "0Hnno1hnhv8wnXjfQrECLNGwEWK+dxr6zj15c9ovC4Cw8ZA3ZlvKJoo1Zk4i1Ab3\n"
    "iVEUjhbTS8YHs6htV5rKUjsJw0uG8kH8AC92B4nEYyhZV15+6NkanZFZmp2gKISg\n"
    "QklFYr2SGADGpwQFSJHxmKP70aFoTl1qRNRSqQIDAQABo2YwZDASBgNVHRMBAf8E\n"
    "CDAGAQH/AgEAMA4GA1UdDwEB/wQEAwIBBjAdBgNVHQ4EFgQU2ER3hgUxHmgweRr3\n"
    "J89dhZ81TJswHwYDVR0jBBgwFoAUuLjHv2l5lLAnBKyIDBLOUKlnMTowDQYJKoZI\n"
    "hvcNAQEFBQADgYEAR35szDJhZicgCtgUAXxVs94GOnGgy1FnFeMpVT412eqBdgsW\n"
    "a8BJ0T7Yn56de4FCdvhz8zQx1wGZk1HFS6N5kXvUeoA/+7X+jHBUfss8G2zEohO2\n"
    "RdTFCpH1DzrTIhPSKW1cgT6zSbZKdWBu/XgoK0XqkmM6g0VbV0jP9J5b8yk=\n"
    "-----END CERTIFICATE-----\n";
inline constexpr const char* kHost =
    "-----BEGIN CERTIFICATE-----\n"
    "MIICqzCCAhSgAwIBAgIBAzANBgkqhkiG9w0BAQUFADAWMRQwEgYDVQQDDAtUZXN0\n"
    "IElzc3VlcjAgFw0yNjExMjUyMTQ4MTFaGA8yMTI2MTEwMTIxNDgxMVowDzENMAsG\n"
    "A1UEAwwEaG9zdDCBnzANBgkqhkiG9w0BAQEFAAOBjQAwgYkCgYEAt7CcqHZOKU/y\n"
    "Z4nNjhKyQjFuBy13xQ9UBnsfcJEjSYtn91Fd+FVahaAGpOEOe3zmCxtk/9R8pxS1\n"
    "NKuaOgbUuOotK3ZqjQhAD9Qm3n+45Q90UFBp4sAItP4bUYUNyx1XKYGNX20FbFlW\n"
    "Qxs2SxnKBCzoGteUfhXuqHU81c/ec4cCAwEAAaOCAQwwggEIMAwGA1UdEwEB/wQC\n"
    "MAAwDgYDVR0PAQH/BAQDAgWgMBgGA1UdJQQRMA8GCCsGAQUFBwMBBgMqAwQwgY0G\n"
    "A1UdEQSBhTCBgoINKi5leGFtcGxlLm9yZ4cECgAAAYcQIAENuAAAAAAAAQAAAAAA\n"
    "CIENYUBleGFtcGxlLm9yZ4YVaHR0cHM6Ly9leGFtcGxlLm9yZy94pCMwITELMAkG\n"
    "A1UEBhMCR0IxEjAQBgNVBAMMCWRpcmVjdG9yeaAOBgMqAwSgBwwFb3RoZXIwHQYD\n"
    "VR0OBBYEFDSfSUjjL6YNHwhkOyQaOdQulACWMB8GA1UdIwQYMBaAFNhEd4YFMR5o\n"
    "MHka9yfPXYWfNUybMA0GCSqGSIb3DQEBBQUAA4GBAMVFkPkysU6G1GhJOoUHDU+5\n"
    "gMB4j1ABg16G4c32TZP+4xjX+vrWVtKiHRyoxVoJle3wG9VenN4pCfMn6Zz725XP\n"
    "+UrfnRyxgZ5yiVp7aMB8M5o+m0hx/cbDUZbls28Wv0KVMMxIKPND5I5bPEfRanuI\n"
    "SvxlyoOIczomI0UuZYrf\n"
    "-----END CERTIFICATE-----\n";

}  // namespace quillon::test
