#include <gtest/gtest.h>

#include "platform/win32/WindowsHeaders.h"

#include <fcntl.h>
#include <io.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>

#include "platform/Handle.h"
#include "platform/StandardStreamApi.h"

namespace quillon::platform {
namespace {

/// Leads standard output to a small pipe whose reader waits, while it lives.
class WaitingReader {
public:
    WaitingReader() {
        const std::string name = R"(\\.\pipe\quillon-output-)" + std::to_string(::GetCurrentProcessId());
        m_reader.Reset(::CreateNamedPipeA(name.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED, 0, 1,
                                          kRoom, kRoom, 0, nullptr));
        const HANDLE writer = ::CreateFileA(name.c_str(), GENERIC_WRITE | FILE_READ_ATTRIBUTES, 0, nullptr,
                                            OPEN_EXISTING, 0, nullptr);
        std::fflush(stdout);
        const int descriptor = ::_open_osfhandle(reinterpret_cast<std::intptr_t>(writer), _O_BINARY);
        ::_dup2(descriptor, kOutput);
        ::_close(descriptor);
        ::ReadFile(m_reader.Get(), m_bytes.data(), kAsked, nullptr, &m_read);
    }
    ~WaitingReader() {
        ::_dup2(m_before, kOutput);
        ::_close(m_before);
        Take();
    }
    WaitingReader(const WaitingReader&) = delete;
    WaitingReader& operator=(const WaitingReader&) = delete;

    /// Returns what has been read, and ends the reading.
    std::string Take() {
        DWORD count = 0;
        ::CancelIoEx(m_reader.Get(), &m_read);
        ::GetOverlappedResult(m_reader.Get(), &m_read, &count, TRUE);
        return {m_bytes.data(), count};
    }

private:
    static constexpr int kOutput = 1;
    static constexpr DWORD kRoom = 4096, kAsked = 2 * kRoom;
    const int m_before = ::_dup(kOutput);
    FileHandle m_reader;
    std::array<char, kAsked> m_bytes{};
    OVERLAPPED m_read{};
};

TEST(StandardStream, AReaderThatWaitsGetsTheLine) {
    WaitingReader reader;
    EXPECT_TRUE(TakesText(StandardStream::Output));
    EXPECT_EQ(WriteToStream(StandardStream::Output, StreamUse::Reader, "line\n"), 5U);
    EXPECT_EQ(reader.Take(), "line\r\n");
}

}  // namespace
}  // namespace quillon::platform
