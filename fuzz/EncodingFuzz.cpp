#include <cstdint>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <string>

#include "Require.h"
#include "base/Utf.h"
#include "platform/FileApi.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/TemporaryFile.h"

// Bytes as a file: detection never fails and is the same for a stream, every way
// of reading gives what its encoding promises, and what is written is read back.

namespace {

using FS = quillon::FileSystemUtils;
using Encoding = FS::FileEncoding;

const std::string& Path() {
    static const quillon::TemporaryFile file;
    return file.Path();
}

bool IsUtf16(Encoding encoding) { return encoding >= FS::UTF16LE && encoding <= FS::UTF16BE; }

void ReadInEveryWay(const std::string& bytes) {
    Require(quillon::platform::WriteWholeFile(Path(), {}, bytes, quillon::platform::WriteMode::Truncate));
    std::istringstream stream(bytes);
    const Encoding expected = FS::GetFileEncoding(stream, bytes.size());
    Require(expected != FS::NOTSET && expected <= FS::UTF16BE);
    for (int forced = FS::NOTSET; forced <= FS::UTF16BE; ++forced) {
        Encoding detected = FS::NOTSET;
        const std::string text = FS::ReadFile(Path(), detected, static_cast<Encoding>(forced));
        Require(detected == expected);
        const Encoding effective = forced == FS::NOTSET ? detected : static_cast<Encoding>(forced);
        if (effective == FS::ANSI) Require(text == bytes);
        if (IsUtf16(effective)) Require(quillon::base::FindInvalidUtf8(text) == std::string::npos);
    }
}

/// `bytes` as a text: valid UTF-8 comes back from every Unicode encoding.
void WriteAndReadBack(const std::string& bytes) {
    const bool valid = quillon::base::FindInvalidUtf8(bytes) == std::string::npos;
    Encoding ignored = FS::NOTSET;
    const bool marked = FS::CheckBufferForBom(bytes.data(), bytes.size(), ignored);
    for (const Encoding encoding : {FS::UTF8, FS::UTF16LE, FS::UTF16LENOBOM, FS::UTF16BE}) {
        try {
            Require(FS::WriteFile(Path(), bytes, encoding));
        } catch (const std::range_error&) {
            Require(IsUtf16(encoding) && !valid);
            continue;
        }
        Encoding detected = FS::NOTSET;
        const std::string text = FS::ReadFile(Path(), detected, FS::NOTSET);
        Require(detected == (encoding == FS::UTF16LENOBOM ? FS::UTF16LE : encoding));
        // A second mark is lost in UTF-16: it is the text's own first character there.
        if (!marked) Require(text == bytes);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    ReadInEveryWay(bytes);
    WriteAndReadBack(bytes);
    std::filesystem::remove(Path());
    return 0;
}
