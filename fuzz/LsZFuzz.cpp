#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "Require.h"
#include "base/Characters.h"
#include "base/Utf.h"
#include "files/LsZFields.h"
#include "quillon/LsZFile.h"
#include "quillon/ServiceLocator.h"
#include "quillon/StdoutLogger.h"

// The input is a content list. A search for each key is the oracle of the one scan for all.

namespace {

using quillon::LsZFields;

void CheckFields(const std::string& text) {
    std::string lower = text;
    std::transform(lower.begin(), lower.end(), lower.begin(), &quillon::base::Lower<char>);
    const auto behind = [&lower](std::string_view key) {
        const std::size_t at = lower.find(key);
        return at == std::string::npos ? at : at + key.size();
    };
    const LsZFields fields = LsZFields::Find(text);
    Require(fields.hexLength == behind(" ln=0x") && fields.length == behind(" ln="));
    Require(fields.time == behind(" dt=") && fields.from == behind("from=") && fields.to == behind("to="));
    Require(fields.rdc == behind("rdc=") && fields.crc == behind("crc="));
}

/// A file of this process's own.
const std::string& ListPath() {
    static const std::string path =
        (std::filesystem::temp_directory_path() / ("lsz-fuzz-" + std::to_string(std::random_device{}())))
            .string();
    return path;
}

void CheckList(const std::string& content) {
    std::ofstream(ListPath(), std::ios::binary | std::ios::trunc) << content;
    quillon::LsZFile list(ListPath(), nullptr);
    Require(list.GetFileSize() == content.size());
    for (const auto& file : list.GetFiles()) {
        Require(quillon::base::FindInvalidUtf8(file.name + file.crc) == std::string::npos);
        Require(!file.isFolder || (file.name.empty() && file.length == 0 && file.time == 0));
        Require(file.name.find('"') == std::string::npos && file.crc.find(' ') == std::string::npos);
    }
    std::filesystem::remove(ListPath());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static quillon::StdoutLogger logger;
    if (!quillon::ServiceLocator::Contains<quillon::ICLogger>()) {
        logger.SetLevel(quillon::ICLogger::Level::Fatal);
        quillon::ServiceLocator::Put<quillon::ICLogger>(&logger);
    }
    const std::string content(reinterpret_cast<const char*>(data), size);
    CheckFields(content);
    CheckList(content);
    return 0;
}
