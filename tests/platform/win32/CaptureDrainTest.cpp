#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "platform/CaptureState.h"
#include "platform/win32/WindowsHeaders.h"

namespace quillon::platform {
namespace {

constexpr DWORD kRoom = 256 * 1024;

class DrainedPipesTest : public testing::Test {
protected:
    /// Adds a pipe and has the first read of it wait.
    void SetUp() override {
        const std::string name = R"(\\.\pipe\quillon-drain-)" + std::to_string(::GetCurrentProcessId());
        FileHandle reader(::CreateNamedPipeA(name.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED, 0, 1,
                                             kRoom, kRoom, 0, nullptr));
        m_writer.Reset(::CreateFileA(name.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
        m_reader = reader.Get();
        m_pipes->Add(std::move(reader));
        SignalEvent(m_wake);
        m_pipes->Read(m_wake);
    }
    bool Write(std::size_t size) {
        DWORD written = 0;
        const std::string text(size, 'x');
        return ::WriteFile(m_writer.Get(), text.data(), static_cast<DWORD>(size), &written, nullptr) != 0;
    }
    DWORD Waiting() const {
        DWORD count = 0;
        ::PeekNamedPipe(m_reader, nullptr, 0, nullptr, &count, nullptr);
        return count;
    }

    const std::unique_ptr<DrainedPipes> m_pipes = DrainedPipes::Make();
    const EventHandle m_wake = CreateAutoResetEvent();
    FileHandle m_writer;
    HANDLE m_reader = nullptr;
};

TEST_F(DrainedPipesTest, ReadsNoPipeUntilItIsEmpty) {
    ASSERT_TRUE(Write(kRoom));
    m_pipes->Read(m_wake);
    EXPECT_GT(Waiting(), 0U) << "a pipe that is never empty keeps the thread from all others";
}

TEST_F(DrainedPipesTest, ClosesAPipeOfWhichAReadHasJustEnded) {
    ASSERT_TRUE(Write(1));
    m_pipes->CloseOldest();
    SignalEvent(m_wake);
    m_pipes->Read(m_wake);
    EXPECT_EQ(m_pipes->Count(), 0U);
    EXPECT_FALSE(Write(1));
}

}  // namespace
}  // namespace quillon::platform
