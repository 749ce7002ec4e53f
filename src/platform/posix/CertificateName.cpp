#include <openssl/asn1.h>
#include <openssl/objects.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>

#include "base/Characters.h"
#include "base/HexDigits.h"
#include "base/Utf.h"
#include "platform/CertificateApi.h"
#include "platform/posix/OpenSsl.h"

namespace quillon::platform {

namespace {

constexpr std::size_t kLongestText = 2047;

/// One element of an encoding.
struct Element {
    int tag = 0;  ///< of the universal class, else -1
    std::string_view content;
    std::string_view whole;
};

/// Takes an element off the front; nothing when it is cut or of indefinite length.
std::optional<Element> Take(std::string_view& bytes) {
    constexpr int kMalformed = 0x80;
    const auto* const begin = AsBytes(bytes);
    const unsigned char* content = begin;
    long length = 0;
    int tag = 0;
    int tagClass = 0;
    const int state = ::ASN1_get_object(&content, &length, &tag, &tagClass, static_cast<long>(bytes.size()));
    if ((state & kMalformed) != 0 || (state & 1) != 0) return std::nullopt;
    const auto header = static_cast<std::size_t>(content - begin);
    const auto size = static_cast<std::size_t>(length);
    const Element element{tagClass == V_ASN1_UNIVERSAL ? tag : -1, bytes.substr(header, size),
                          bytes.substr(0, header + size)};
    bytes.remove_prefix(element.whole.size());
    return element;
}

std::optional<std::string_view> TakeContent(std::string_view& bytes, int tag) {
    const auto element = Take(bytes);
    return element && element->tag == tag ? std::optional(element->content) : std::nullopt;
}

/// The system's names of attributes.
struct AttributeKey {
    std::string_view identifier;
    const wchar_t* key;
};
constexpr AttributeKey kKeys[] = {
    {"2.5.4.3", L"CN"},
    {"2.5.4.4", L"SN"},
    {"2.5.4.5", L"SERIALNUMBER"},
    {"2.5.4.6", L"C"},
    {"2.5.4.7", L"L"},
    {"2.5.4.8", L"S"},
    {"2.5.4.9", L"STREET"},
    {"2.5.4.10", L"O"},
    {"2.5.4.11", L"OU"},
    {"2.5.4.12", L"T"},
    {"2.5.4.13", L"Description"},
    {"2.5.4.17", L"PostalCode"},
    {"2.5.4.18", L"POBox"},
    {"2.5.4.20", L"Phone"},
    {"2.5.4.42", L"G"},
    {"2.5.4.43", L"I"},
    {"1.2.840.113549.1.9.1", L"E"},
    {"0.9.2342.19200300.100.1.25", L"DC"},
};

/// "CN", or "OID.1.2.3" for what has no name.
std::optional<std::wstring> KeyOf(std::string_view identifier) {
    // Its decimal form takes time that grows with the square of its length.
    constexpr std::size_t kLongestIdentifier = 64;
    if (identifier.size() > kLongestIdentifier) return std::nullopt;
    const unsigned char* at = AsBytes(identifier);
    const OpenSslPointer<ASN1_OBJECT, ::ASN1_OBJECT_free> object(
        ::d2i_ASN1_OBJECT(nullptr, &at, static_cast<long>(identifier.size())));
    std::array<char, 256> text{};
    if (object == nullptr || ::OBJ_obj2txt(text.data(), text.size(), object.get(), 1) <= 0)
        return std::nullopt;
    const auto* const known =
        std::ranges::find(kKeys, std::string_view(text.data()), &AttributeKey::identifier);
    return known != std::end(kKeys) ? known->key : L"OID." + base::ToWide(text.data());
}

bool IsText(int tag) {
    constexpr int kTextTags[] = {V_ASN1_NUMERICSTRING,   V_ASN1_PRINTABLESTRING, V_ASN1_T61STRING,
                                 V_ASN1_IA5STRING,       V_ASN1_VISIBLESTRING,   V_ASN1_BMPSTRING,
                                 V_ASN1_UNIVERSALSTRING, V_ASN1_UTF8STRING};
    return std::ranges::find(kTextTags, tag) != std::end(kTextTags);
}

/// A text of any of ASN.1's alphabets.
std::optional<std::wstring> Decode(const Element& value) {
    if (value.tag == V_ASN1_UTF8STRING) return base::Utf8ToWide(value.content);
    const OpenSslPointer<ASN1_STRING, ::ASN1_STRING_free> string(::ASN1_STRING_type_new(value.tag));
    const auto length = static_cast<int>(value.content.size());
    if (string == nullptr || ::ASN1_STRING_set(string.get(), value.content.data(), length) == 0)
        return std::nullopt;
    unsigned char* utf8 = nullptr;
    const int size = ::ASN1_STRING_to_UTF8(&utf8, string.get());
    if (size < 0) return std::nullopt;
    const OpenSslPointer<unsigned char, FreeOpenSslMemory> owner(utf8);
    return base::Utf8ToWide(AsText(utf8, static_cast<std::size_t>(size)));
}

std::wstring Quoted(const std::wstring& text) {
    const bool isPlain = !text.empty() && !base::IsSpace(text.front()) && !base::IsSpace(text.back()) &&
                         text.find_first_of(L",+=\"\n<>#;") == std::wstring::npos;
    if (isPlain) return text;
    std::wstring quoted = L"\"";
    for (const wchar_t c : text) quoted.append(c == L'"' ? 2 : 1, c);
    return quoted + L'"';
}

std::wstring Hexadecimal(std::string_view bytes) {
    std::wstring text = L"#";
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        text += {static_cast<wchar_t>(base::kUpperDigits[byte >> 4]),
                 static_cast<wchar_t>(base::kUpperDigits[byte & 0xF])};
    }
    return text;
}

std::optional<std::wstring> ValueText(const Element& value) {
    if (value.tag == V_ASN1_OCTET_STRING) return Hexadecimal(value.content);
    if (!IsText(value.tag)) return Hexadecimal(value.whole);
    const auto text = Decode(value);
    return text ? std::optional(Quoted(*text)) : std::nullopt;
}

/// "CN=value" of an attribute's content.
std::optional<std::wstring> AttributeText(std::string_view attribute) {
    const auto identifier = Take(attribute);
    const auto value = Take(attribute);
    if (!identifier || identifier->tag != V_ASN1_OBJECT || !value || !attribute.empty()) return std::nullopt;
    const auto key = KeyOf(identifier->whole);
    const auto text = ValueText(*value);
    return key && text ? std::optional(*key + L'=' + *text) : std::nullopt;
}

/// Appends the attributes of one part of a name.
bool AppendPart(std::string_view part, std::wstring& text) {
    const wchar_t* separator = text.empty() ? L"" : L", ";
    while (!part.empty()) {
        const auto attribute = TakeContent(part, V_ASN1_SEQUENCE);
        const auto piece = attribute ? AttributeText(*attribute) : std::nullopt;
        if (!piece) return false;
        text += separator + *piece;
        if (text.size() > kLongestText) text.resize(kLongestText);
        separator = L" + ";
    }
    return true;
}

}  // namespace

std::optional<std::wstring> CertificateNameText(const CRYPTOAPI_BLOB& name) {
    const OpenSslErrors errors;
    std::string_view bytes = AsText(name.pbData, name.cbData);
    auto parts = TakeContent(bytes, V_ASN1_SEQUENCE);
    if (!parts || !bytes.empty()) return std::nullopt;
    std::wstring text;
    while (!parts->empty()) {
        const auto part = TakeContent(*parts, V_ASN1_SET);
        if (!part || !AppendPart(*part, text)) return std::nullopt;
    }
    constexpr wchar_t kFirstHighSurrogate = 0xD800, kLastHighSurrogate = 0xDBFF;
    if (!text.empty() && text.back() >= kFirstHighSurrogate && text.back() <= kLastHighSurrogate)
        text.pop_back();  // where it was cut
    return text;
}

}  // namespace quillon::platform
