#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

#include "Require.h"
#include "quillon/UniqueIdentifier.h"

namespace {

using quillon::UniqueIdentifier;

UniqueIdentifier Parse(const std::string& text, bool expectedOk) {
    bool ok = !expectedOk;
    const UniqueIdentifier identifier = UniqueIdentifier::Parse(text, &ok);
    Require(ok == expectedOk);
    return identifier;
}

/// A text of 36 characters, pair by pair by sscanf.
UniqueIdentifier ReadByLibc(const char* text, bool& ok) {
    unsigned char bytes[16] = {};
    for (int i = 0; i < 16 && ok; ++i) {
        const char pair[3] = {text[0], text[1], '\0'};
        unsigned int value = 0;
        ok = std::sscanf(pair, "%x", &value) == 1;
        if (ok) bytes[i] = static_cast<unsigned char>(value);
        text += i == 3 || i == 5 || i == 7 || i == 9 ? 3 : 2;
    }
    return UniqueIdentifier(bytes);
}

void CheckAgainstLibc(const std::string& text) {
    const bool isBraced = text.size() == 38;
    bool ok = isBraced ? text.front() == '{' && text.back() == '}' : text.size() == 36;
    UniqueIdentifier expected;
    bool digitsOk = true;
    if (isBraced || text.size() == 36) expected = ReadByLibc(text.c_str() + (isBraced ? 1 : 0), digitsOk);
    ok = ok && digitsOk;
    Require(Parse(text, ok) == expected);
}

void CheckRoundTrip(const std::uint8_t* data) {
    unsigned char bytes[16];
    std::memcpy(bytes, data, sizeof bytes);
    const UniqueIdentifier identifier(bytes);
    const std::string text = identifier.ToString();
    Require(Parse(text, true) == identifier && Parse('{' + text + '}', true) == identifier);
    Require(UniqueIdentifier(identifier.ToMsGuid()) == identifier);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CheckAgainstLibc(std::string(reinterpret_cast<const char*>(data), size));
    if (size >= 16) CheckRoundTrip(data);
    return 0;
}
