#pragma once

#include <cstdint>

namespace quillon::base {

/// Windows error codes that the library tells or asks for on both systems (winerror.h).
inline constexpr std::uint32_t kSuccess = 0;
inline constexpr std::uint32_t kFileNotFound = 2;
inline constexpr std::uint32_t kPathNotFound = 3;
inline constexpr std::uint32_t kTooManyOpenFiles = 4;
inline constexpr std::uint32_t kAccessDenied = 5;
inline constexpr std::uint32_t kInvalidHandle = 6;
inline constexpr std::uint32_t kNotEnoughMemory = 8;
inline constexpr std::uint32_t kInvalidData = 13;
inline constexpr std::uint32_t kNotSameDevice = 17;
inline constexpr std::uint32_t kSharingViolation = 32;
inline constexpr std::uint32_t kInvalidParameter = 87;
inline constexpr std::uint32_t kCallNotImplemented = 120;
inline constexpr std::uint32_t kInsufficientBuffer = 122;
inline constexpr std::uint32_t kInvalidName = 123;
inline constexpr std::uint32_t kModuleNotFound = 126;
inline constexpr std::uint32_t kProcedureNotFound = 127;
inline constexpr std::uint32_t kAlreadyExists = 183;
inline constexpr std::uint32_t kVariableNotFound = 203;
inline constexpr std::uint32_t kNameTooLong = 206;
inline constexpr std::uint32_t kMoreData = 234;
inline constexpr std::uint32_t kNoMoreItems = 259;
inline constexpr std::uint32_t kInvalidDirectory = 267;
inline constexpr std::uint32_t kNoToken = 1008;
inline constexpr std::uint32_t kNoUnicodeTranslation = 1113;
inline constexpr std::uint32_t kNotFound = 1168;
inline constexpr std::uint32_t kCancelled = 1223;
inline constexpr std::uint32_t kNotAllAssigned = 1300;
inline constexpr std::uint32_t kNoSuchPrivilege = 1313;
inline constexpr std::uint32_t kPrivilegeNotHeld = 1314;
inline constexpr std::uint32_t kNoSystemResources = 1450;
inline constexpr std::uint32_t kFunctionFailed = 1627;

}  // namespace quillon::base
