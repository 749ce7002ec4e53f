#pragma once

#include <cstdint>

#include "base/ErrorCodes.h"

namespace quillon::platform {

/// The part of the system's event log interface that the library uses, in its layout.

enum class EvtType : std::uint32_t {
    Null = 0,
    String = 1,
    Byte = 4,
    UInt16 = 6,
    UInt32 = 8,
    UInt64 = 10,
    Boolean = 13,
    FileTime = 17,
    Sid = 19,
    HexInt64 = 21
};

struct EvtVariant {
    union {
        std::uint64_t number = 0;  // also what has fewer bits
        std::int32_t boolean;
        std::uint32_t uint32;
        std::uint16_t uint16;
        std::uint8_t byte;
        const wchar_t* text;
        const unsigned char* sid;
    };
    std::uint32_t count = 0;
    EvtType type = EvtType::Null;
};
static_assert(sizeof(EvtVariant) == 16);

inline constexpr int kEvtChannelConfigEnabled = 0;

// EvtSubscribe
inline constexpr unsigned long kEvtToFutureEvents = 1;
inline constexpr unsigned long kEvtFromOldest = 2;
inline constexpr unsigned long kEvtAfterBookmark = 3;
inline constexpr unsigned long kEvtOriginMask = 3;
inline constexpr unsigned long kEvtStrict = 0x10000;
// EvtQuery
inline constexpr unsigned long kEvtChannelPath = 0x1;
inline constexpr unsigned long kEvtFilePath = 0x2;
inline constexpr unsigned long kEvtForward = 0x100;
inline constexpr unsigned long kEvtReverse = 0x200;
// EvtSeek
inline constexpr unsigned long kEvtSeekRelativeToBookmark = 4;
inline constexpr unsigned long kEvtSeekStrict = 0x10000;
// EvtFormatMessage
inline constexpr unsigned long kEvtFormatEvent = 1;
// EvtRender and its contexts
inline constexpr unsigned long kEvtRenderValues = 0;
inline constexpr unsigned long kEvtRenderXml = 1;
inline constexpr unsigned long kEvtRenderBookmark = 2;
inline constexpr unsigned long kEvtContextSystem = 1;
/// The positions of the values that a render context of the system's properties gives.
enum EvtSystemProperty : unsigned {
    EvtProviderName = 0,
    EvtEventId = 2,
    EvtLevel = 4,
    EvtTask = 5,
    EvtOpcode = 6,
    EvtKeywords = 7,
    EvtTimeCreated = 8,
    EvtRecordId = 9,
    EvtProcessId = 12,
    EvtThreadId = 13,
    EvtChannel = 14,
    EvtComputer = 15,
    EvtUserId = 16,
    EvtSystemPropertyCount = 18
};

/// The entry points of wevtapi.dll. A null handle or 0 is a failure; see LastError().
struct EvtFunctions {
    using SubscribeCallback = unsigned long (*)(int action, void* context, void* event);

    void* (*subscribe)(void* session, void* signalEvent, const wchar_t* channelPath, const wchar_t* query,
                       void* bookmark, void* context, SubscribeCallback callback,
                       unsigned long flags) = nullptr;
    int (*close)(void* handle) = nullptr;
    void* (*createRenderContext)(unsigned long count, const wchar_t** valuePaths,
                                 unsigned long flags) = nullptr;
    int (*render)(void* context, void* fragment, unsigned long flags, unsigned long bufferSize, void* buffer,
                  unsigned long* bufferUsed, unsigned long* propertyCount) = nullptr;
    void* (*createBookmark)(const wchar_t* bookmarkXml) = nullptr;
    int (*updateBookmark)(void* bookmark, void* event) = nullptr;
    void* (*query)(void* session, const wchar_t* path, const wchar_t* query, unsigned long flags) = nullptr;
    int (*next)(void* resultSet, unsigned long count, void** events, unsigned long timeout,
                unsigned long flags, unsigned long* returned) = nullptr;
    void* (*openChannelConfig)(void* session, const wchar_t* channelPath, unsigned long flags) = nullptr;
    int (*getChannelConfigProperty)(void* config, int property, unsigned long flags, unsigned long bufferSize,
                                    EvtVariant* value, unsigned long* used) = nullptr;
    int (*setChannelConfigProperty)(void* config, int property, unsigned long flags,
                                    const EvtVariant* value) = nullptr;
    int (*saveChannelConfig)(void* config, unsigned long flags) = nullptr;
    // These are null when the system lacks them, which is no failure of the interface.
    int (*seek)(void* resultSet, std::int64_t position, void* bookmark, unsigned long timeout,
                unsigned long flags) = nullptr;
    void* (*openPublisherMetadata)(void* session, const wchar_t* publisher, const wchar_t* logFile,
                                   unsigned long locale, unsigned long flags) = nullptr;
    int (*formatMessage)(void* publisherMetadata, void* event, unsigned long messageId,
                         unsigned long valueCount, EvtVariant* values, unsigned long flags,
                         unsigned long bufferSize, wchar_t* buffer, unsigned long* bufferUsed) = nullptr;
};

}  // namespace quillon::platform
