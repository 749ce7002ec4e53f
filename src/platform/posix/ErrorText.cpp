#include "platform/ErrorText.h"

#include <algorithm>
#include <iterator>

namespace quillon::platform {

namespace {

thread_local std::uint32_t lastError = 0;

constexpr std::uint32_t kNoSuchMessage = 317;  // ERROR_MR_MID_NOT_FOUND

struct Text {
    std::uint32_t code;
    const char* text;
};

// Ascending codes. Each ends as the system ends a text whose line breaks it folded.
constexpr Text kErrorTexts[] = {
    {1, "Incorrect function. "},
    {2, "The system cannot find the file specified. "},
    {3, "The system cannot find the path specified. "},
    {4, "The system cannot open the file. "},
    {5, "Access is denied. "},
    {6, "The handle is invalid. "},
    {8, "Not enough memory resources are available to process this command. "},
    {13, "The data is invalid. "},
    {14, "Not enough memory resources are available to complete this operation. "},
    {15, "The system cannot find the drive specified. "},
    {16, "The directory cannot be removed. "},
    {17, "The system cannot move the file to a different disk drive. "},
    {18, "There are no more files. "},
    {19, "The media is write protected. "},
    {21, "The device is not ready. "},
    {31, "A device attached to the system is not functioning. "},
    {32, "The process cannot access the file because it is being used by another process. "},
    {33, "The process cannot access the file because another process has locked a portion of the file. "},
    {38, "Reached the end of the file. "},
    {50, "The request is not supported. "},
    {53, "The network path was not found. "},
    {80, "The file exists. "},
    {82, "The directory or file cannot be created. "},
    {87, "The parameter is incorrect. "},
    {109, "The pipe has been ended. "},
    {112, "There is not enough space on the disk. "},
    {120, "This function is not supported on this system. "},
    {122, "The data area passed to a system call is too small. "},
    {123, "The filename, directory name, or volume label syntax is incorrect. "},
    {126, "The specified module could not be found. "},
    {127, "The specified procedure could not be found. "},
    {145, "The directory is not empty. "},
    {161, "The specified path is invalid. "},
    {170, "The requested resource is in use. "},
    {183, "Cannot create a file when that file already exists. "},
    {193, "The file is not a valid application. "},
    {203, "The system could not find the environment option that was entered. "},
    {206, "The filename or extension is too long. "},
    {223, "The file size exceeds the limit allowed and cannot be saved. "},
    {232, "The pipe is being closed. "},
    {234, "More data is available. "},
    {258, "The wait operation timed out. "},
    {259, "No more data is available. "},
    {267, "The directory name is invalid. "},
    {995, "The I/O operation has been aborted because of either a thread exit or an application request. "},
    {996, "Overlapped I/O event is not in a signaled state. "},
    {997, "Overlapped I/O operation is in progress. "},
    {998, "Invalid access to memory location. "},
    {1008, "An attempt was made to reference a token that does not exist. "},
    {1060, "The specified service does not exist as an installed service. "},
    {1113, "No mapping for the Unicode character exists in the target multi-byte code page. "},
    {1117, "The request could not be performed because of an I/O device error. "},
    {1168, "Element not found. "},
    {1223, "The operation was canceled by the user. "},
    {1300, "Not all privileges or groups referenced are assigned to the caller. "},
    {1307, "This security ID may not be assigned as the owner of this object. "},
    {1313, "A specified privilege does not exist. "},
    {1314, "A required privilege is not held by the client. "},
    {1332, "No mapping between account names and security IDs was done. "},
    {1336, "The access control list (ACL) structure is invalid. "},
    {1337, "The security ID structure is invalid. "},
    {1338, "The security descriptor structure is invalid. "},
    {1359, "An internal error occurred. "},
    {1450, "Insufficient system resources exist to complete the requested service. "},
    {1460, "This operation returned because the timeout period expired. "},
    {1627, "Function failed during execution. "},
    {1722, "The RPC server is unavailable. "},
    {1812, "The specified image file did not contain a resource section. "},
    {1813, "The specified resource type cannot be found in the image file. "},
    {1814, "The specified resource name cannot be found in the image file. "},
    {1921, "The name of the file cannot be resolved by the system. "},
    {4390, "The file or directory is not a reparse point. "},
    {10004, "A blocking operation was interrupted by a call to WSACancelBlockingCall. "},
    {10013, "An attempt was made to access a socket in a way forbidden by its access permissions. "},
    {10022, "An invalid argument was supplied. "},
    {10024, "Too many open sockets. "},
    {10035, "A non-blocking socket operation could not be completed immediately. "},
    {10038, "An operation was attempted on something that is not a socket. "},
    {10047, "An address incompatible with the requested protocol was used. "},
    {10048, "Only one usage of each socket address (protocol/network address/port) is normally permitted. "},
    {10049, "The requested address is not valid in its context. "},
    {10050, "A socket operation encountered a dead network. "},
    {10051, "A socket operation was attempted to an unreachable network. "},
    {10053, "An established connection was aborted by the software in your host machine. "},
    {10054, "An existing connection was forcibly closed by the remote host. "},
    {10057, "A request to send or receive data was disallowed because the socket is not connected. "},
    {10060, "A connection attempt failed because the connected party did not answer in time. "},
    {10061, "No connection could be made because the target machine actively refused it. "},
    {10065, "A socket operation was attempted to an unreachable host. "},
    {10091, "WSAStartup cannot function at this time because the underlying network is not available. "},
    {10092, "The Windows Sockets version requested is not supported. "},
    {10093, "Either the application has not called WSAStartup, or WSAStartup failed. "},
    {11001, "No such host is known. "},
    {11002, "The name server did not answer or failed; the same request may succeed later. "},
    {11003, "A non-recoverable error occurred during a database lookup. "},
    {11004, "The requested name is valid, but no data of the requested type was found. "},
    {15007, "The specified channel could not be found. "},
    {0x80004001, "Not implemented "},
    {0x80004002, "No such interface supported "},
    {0x80004003, "Invalid pointer "},
    {0x80004004, "Operation aborted "},
    {0x80004005, "Unspecified error "},
    {0x8000FFFF, "Catastrophic failure "},
    {0x80010106, "Cannot change thread mode after it is set. "},
    {0x80010119, "Security must be initialized before any interfaces are marshalled. "},
    {0x80040154, "Class not registered "},
    {0x800401F0, "CoInitialize has not been called. "},
    {0x80092004, "Cannot find object or property. "},
    {0x800B0100, "No signature was present in the subject. "},
};

constexpr Text kStatusTexts[] = {
    {0x80000005, "{Buffer Overflow}\r\nThe data was too large to fit into the specified buffer.\r\n"},
    {0xC0000001, "{Operation Failed}\r\nThe requested operation was unsuccessful.\r\n"},
    {0xC0000002, "{Not Implemented}\r\nThe requested operation is not implemented.\r\n"},
    {0xC0000004,
     "The specified information record length does not match the length that is required\r\nfor the "
     "specified information class.\r\n"},
    {0xC0000005, "The instruction at 0x%p referenced memory at 0x%p. The memory could not be %s.\r\n"},
    {0xC0000008, "An invalid HANDLE was specified.\r\n"},
    {0xC000000D, "An invalid parameter was passed to a service or function.\r\n"},
    {0xC0000022,
     "{Access Denied}\r\nA process has requested access to an object, but has not been granted those "
     "access rights.\r\n"},
    {0xC0000023, "{Buffer Too Small}\r\nThe buffer is too small to contain the entry.\r\n"},
    {0xC0000034, "Object Name not found.\r\n"},
    {0xC000003A, "{Path Not Found}\r\nThe path %hs does not exist.\r\n"},
    {0xC0000061, "A required privilege is not held by the client.\r\n"},
};

template <std::size_t Count>
const char* Find(const Text (&texts)[Count], std::uint32_t code) {
    const auto before = [](const Text& entry, std::uint32_t wanted) { return entry.code < wanted; };
    const auto* const found = std::lower_bound(std::begin(texts), std::end(texts), code, before);
    return found != std::end(texts) && found->code == code ? found->text : nullptr;
}

/// A result code that wraps an error code (0x8007....) has that error's text.
std::uint32_t Unwrapped(std::uint32_t code) {
    return (code & 0xFFFF0000) == 0x80070000 ? code & 0xFFFF : code;
}

std::optional<std::string> Found(const char* text) {
    if (text != nullptr) return text;
    SetLastErrorCode(kNoSuchMessage);
    return std::nullopt;
}

}  // namespace

std::uint32_t LastError() { return lastError; }

void SetLastErrorCode(std::uint32_t code) { lastError = code; }

std::optional<std::string> ErrorCodeText(std::int32_t code) {
    return Found(Find(kErrorTexts, Unwrapped(static_cast<std::uint32_t>(code))));
}

std::optional<std::string> NtstatusText(std::int32_t status) {
    return Found(Find(kStatusTexts, static_cast<std::uint32_t>(status)));
}

}  // namespace quillon::platform
