#include <array>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <unordered_map>

#include "quillon/ICLogger.h"
#include "quillon/LogText.h"
#include "quillon/MethodMetadata.h"
#include "quillon/TimePoint.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

const char* MetadataUtils::Type(unsigned long long hash) {
    static const std::unordered_map<unsigned long long, const char*> names = {
        {typeid(long long).hash_code(), "integer"}, {typeid(bool).hash_code(), "boolean"},
        {typeid(double).hash_code(), "float"},      {typeid(std::string).hash_code(), "string"},
        {typeid(DataTable).hash_code(), "table"},   {typeid(TimePoint).hash_code(), "datetime"},
    };
    const auto found = names.find(hash);
    return found != names.end() ? found->second : "unknown";
}

void MetadataUtils::LogThenThrow(std::stringstream& message) {
    const std::string text = message.str();
    if (ICLogger* logger = detail::RegisteredLoggerIfAny())
        logger->Error("%s", LogText::OneLine(text).c_str());
    throw std::runtime_error(text);
}

void MetadataUtils::ThrowAlreadyDeprecated(const char* name) {
    std::stringstream message;
    if (name != nullptr) {
        message << name << " has already been marked as deprecated";
    } else {
        message << "Already been marked as deprecated";
    }
    LogThenThrow(message);
}

void MetadataUtils::ThrowPlatformAlreadyOverridden(IMethodMetadataReader::MetadataPlatform platform) {
    std::stringstream message;
    message << "Platform "
            << std::to_array(IMethodMetadataReader::m_platforms).at(static_cast<std::size_t>(platform))
            << " has already been overridden";
    LogThenThrow(message);
}

}  // namespace quillon
