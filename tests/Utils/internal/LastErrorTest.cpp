#include <gtest/gtest.h>

#include <cstdio>

#include "platform/EnvironmentApi.h"
#include "platform/ErrorText.h"
#include "quillon/File.h"
#include "quillon/FileSystemUtils.h"
#include "quillon/LoggerBase.h"
#include "quillon/LsZFile.h"
#include "quillon/ServiceLocator.h"
#include "quillon/TemporaryFile.h"
#include "support/ChildMain.h"
#include "support/System.h"
#include "support/TempDir.h"

namespace quillon {
namespace {

using FS = FileSystemUtils;

constexpr std::uint32_t kFromBefore = 4242;
constexpr std::uint32_t kFromLogging = 4343;

/// Changes the last error with each entry, as a logger that writes a file may.
class DisturbingLogger final : public LoggerBase {
public:
    DisturbingLogger() : LoggerBase(Level::Trace) { ServiceLocator::Put<ICLogger>(this); }
    ~DisturbingLogger() override { ServiceLocator::Remove<ICLogger>(); }

private:
    void Write(Level, const char*, std::va_list) override { platform::SetLastErrorCode(kFromLogging); }
};

struct Case {
    const char* what;
    std::uint32_t code;              ///< expected
    std::function<bool()> succeeds;  ///< false is expected
};

/// places DIRECTORY: prints why nothing temporary can be made in a directory.
const test::ChildMode places("last-error-places", [](const std::vector<std::string>& a) {
    const DisturbingLogger logger;
    platform::WriteVariable(test::kWindows ? "TMP" : "TMPDIR", a[0].c_str());
    const std::function<bool()> made[] = {
        [] { return !FS::GetTemporaryFile().empty(); },
        [] { return FS::IsDirectory(FS::GetTemporaryDirectory()); },  // whose code it is
        [] { return !TemporaryFile().Path().empty(); },
        [] { return !TemporaryDirectory().Path().empty(); },
    };
    for (const auto& isMade : made) {
        platform::SetLastErrorCode(kFromBefore);
        const bool is = isMade();
        const std::uint32_t code = platform::LastError();
        std::printf("%d:%u ", is ? 1 : 0, static_cast<unsigned>(code));
    }
    return 0;
});

class LastErrorTest : public test::TempDirTest {
protected:
    static std::uint32_t OnEach(std::uint32_t windows, std::uint32_t others) {
        return test::kWindows ? windows : others;
    }
    static bool Lists(bool (*list)(const std::string&, std::vector<std::string>&), const std::string& path) {
        std::vector<std::string> names;
        return list(path, names);
    }
    static bool Reads(const std::string& path, FS::FileEncoding forced = FS::NOTSET) {
        FS::FileEncoding detected = FS::NOTSET;
        return !FS::ReadFile(path, detected, forced).empty();
    }
    static bool Appends(const std::string& path, FS::FileEncoding encoding) {
        FS::FileEncoding current = FS::NOTSET;
        return FS::AppendToFile(path, "x", current, encoding);
    }
    static bool Detects(std::string path) { return FS::GetFileEncoding(path) != FS::NOTSET; }
    static bool Walks(const std::string& path) {
        return FS::WalkFiles(path, {}, [](const FS::WalkEntry&) { return true; }) == FS::WalkEnd::Complete;
    }
    static bool HasVersion(const std::string& path) {
        return FS::GetVersionInformation(path, "") != FS::VersionInformation{};
    }
    static bool Parses(const std::string& path) { return LsZFile(path, nullptr).ParsedOk(); }

    static void Check(const std::vector<Case>& cases) {
        for (const Case& one : cases) {
            SCOPED_TRACE(one.what);
            platform::SetLastErrorCode(kFromBefore);
            const bool succeeded = one.succeeds();
            const std::uint32_t code = platform::LastError();
            EXPECT_FALSE(succeeded);
            EXPECT_EQ(code, one.code);
        }
    }

    const DisturbingLogger logger;
    const std::string file = dir.Write("file", "text");
    const std::string other = dir.Write("full/x", "x");
    const std::string full = dir.Path("full");
    const std::string missing = dir.Path("missing");
    const std::string nowhere = dir.Path("missing\\x");
    const std::string lengthy = dir.Path() + "\\" + std::string(70'000, 'x');
    const std::uint32_t lost = OnEach(3, 2);  ///< of a directory that is missing on the way
};

TEST_F(LastErrorTest, TellsWhyAQuestionOrAListingFailed) {
    std::filesystem::create_directories(dir.Native("empty"));
    bool isDirectory = false;
    Check({{"exists", 2, [&] { return FS::Exists(missing); }},
           {"exists, nowhere", lost, [&] { return FS::Exists(nowhere); }},
           {"exists, wide", 2, [&] { return FS::Exists(std::wstring(missing.begin(), missing.end())); }},
           {"status", 2, [&] { return FS::Exists(missing, isDirectory, nullptr); }},
           {"is directory", 2, [&] { return FS::IsDirectory(missing); }},
           {"size", 2, [&] { return FS::GetFileSizeInBytes(missing) != 0; }},
           {"size, empty", 0, [&] { return FS::GetFileSizeInBytes(dir.Write("none", "")) != 0; }},
           {"size, directory", 5, [&] { return FS::GetFileSizeInBytes(full) != 0; }},
           {"sum", 2, [&] { return FS::GetDirectorySizeInBytes(missing, true) != 0; }},
           {"sum, empty", 0, [&] { return FS::GetDirectorySizeInBytes(dir.Path("empty"), true) != 0; }},
           {"find", 2, [&] { return FS::FindFiles(dir.Path("*.none"), nullptr) != 0; }},
           {"find, nowhere", lost, [&] { return FS::FindFiles(dir.Path("missing\\*"), nullptr) != 0; }},
           {"all files", 2, [&] { return Lists(FS::GetAllFilesWithin, missing); }},
           {"all files, no path", 3, [&] { return Lists(FS::GetAllFilesWithin, ""); }},
           {"walk, file", OnEach(267, 3), [&] { return Walks(file); }},
           {"version", 2, [&] { return HasVersion(missing); }},
           {"version, directory", 5, [&] { return HasVersion(full); }},
           {"version, kept", 1812, [&] { return HasVersion(file) || HasVersion(file); }},
           {"working directory", 2, [&] { return FS::SetWorkingDirectory(missing); }},
           {"make, long", 206, [&] { return FS::MakeDirectories(lengthy + "\\x"); }},
           {"make, endless", 206, [] { return FS::MakeDirectory(std::string(2'000'000, '\\')); }},
           {"read, long", 206, [&] { return Reads(lengthy); }},
           {"copy, long", 206, [&] { return FS::DuplicateFile(file, lengthy); }}});
}

TEST_F(LastErrorTest, TellsWhyNothingTemporaryWasMade) {
    // A temporary directory that is missing is not used on Linux; nobody can make something in /proc.
    if (test::kWindows) {
        EXPECT_EQ(test::RunChild("last-error-places", {missing}).out, "0:267 0:3 0:267 0:267 ");
    } else {
        EXPECT_EQ(test::RunChild("last-error-places", {"/proc"}).out, "0:2 0:2 0:2 0:2 ");
    }
}

TEST_F(LastErrorTest, TellsWhyACopyThrew) {
    const DisturbingLogger disturbing;
    try {
        FS::FileCopy(file, full);
        ADD_FAILURE() << "copied onto a directory";
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_EQ(error.code().value(), 5);
        EXPECT_STREQ(error.what(), "copy(p1, p2): invalid arguments");
    }
}

TEST_F(LastErrorTest, TellsWhyTextWasNotReadOrWritten) {
    const auto wrong = static_cast<FS::FileEncoding>(99);
    const std::string empty = dir.Write("none", "");
    const std::string list = dir.Write("list", "1 \"a\" len=1 dt=0\n");
    std::vector<std::string> lines;
    Check({{"contents", 2, [&] { return !FS::ReadContentsOfFile(missing).empty(); }},
           {"contents, empty", 0, [&] { return !FS::ReadContentsOfFile(empty).empty(); }},
           {"lines", 2, [&] { return FS::ReadContentsOfFile(missing, lines), !lines.empty(); }},
           {"line", lost, [&] { return !FS::ReadSingleLineFromFile(nowhere).empty(); }},
           {"encoding", 2, [&] { return Detects(missing); }},
           {"read", 2, [&] { return Reads(missing); }},
           {"read, wrong", 87, [&] { return Reads(file, wrong); }},
           {"write, directory", 5, [&] { return FS::WriteUtf8File(full, "x"); }},
           {"write, nowhere", lost, [&] { return FS::WriteUtf16LeFile(nowhere, "x"); }},
           {"write, wrong", 87, [&] { return FS::WriteFile(file, "x", wrong); }},
           {"atomic, directory", 5, [&] { return FS::WriteFileAtomic(full, "x"); }},
           {"append", 2, [&] { return Appends(missing, FS::NOTSET); }},
           {"append, wrong", 87, [&] { return Appends(file, wrong); }},
           {"file, write", 87, [&] { return File::Create(file).Write("x"); }},
           {"file, read", 2, [&] { return !File::Open(missing).Read().empty(); }},
           {"file, delete", 2, [&] { return File::Open(missing).Delete(); }},
           {"list", 2, [&] { return Parses(missing); }},
           {"list, not complete", 13, [&] { return Parses(list); }}});
    EXPECT_EQ(dir.Read("file"), "text");
}

TEST_F(LastErrorTest, TellsWhyAChangeFailed) {
    dir.Write("locked/x", "x");
    dir.SetReadOnly("locked/x", true);
    const std::string locked = dir.Path("locked\\x");
    Check({{"erase", 2, [&] { return FS::EraseFile(missing, false); }},
           {"erase, quiet", lost, [&] { return FS::EraseFile(nowhere, true); }},
           {"erase, read-only", 5, [&] { return FS::EraseFile(locked, false); }},
           {"erase tree", 2, [&] { return FS::EraseDirectory(missing); }},
           {"erase tree, no path", 3, [] { return FS::EraseDirectory(""); }},
           {"erase tree, file", 267, [&] { return FS::EraseDirectory(file); }},
           {"erase tree, read-only", 5, [&] { return FS::EraseDirectory(dir.Path("locked")); }},
           {"make, there", 183, [&] { return FS::MakeDirectory(full); }},
           {"make below a file", 3, [&] { return FS::MakeDirectory(file + "\\x"); }},
           {"rename, there", 183, [&] { return FS::RenameFile(file, other, false); }},
           {"rename, missing", 2, [&] { return FS::RenameFile(missing, other, true); }},
           {"rename, read-only", 5, [&] { return FS::RenameFile(file, locked, true); }},
           {"rename into itself", 87, [&] { return FS::RenameFile(full, full + "\\x", true); }},
           {"generations", 87, [&] { return FS::RenameGenerations(file, 0); }},
           {"copy", 2, [&] { return FS::DuplicateFile(missing, dir.Path("to")); }},
           {"copy, itself", 32, [&] { return FS::DuplicateFile(file, file); }},
           {"copy, onto a directory", 5, [&] { return FS::DuplicateFile(file, full); }},
           {"secure copy", 2, [&] { return FS::FileCopy(missing, dir.Path("to")); }},
           {"secure", 2, [&] { return FS::SecureFile(missing); }},
           {"privilege", 1313, [] { return FS::SetProcessPrivilege(L"SeNone", true); }}});
    EXPECT_EQ(dir.Read("file") + dir.Read("full/x") + dir.Read("locked/x"), "textxx");
    dir.SetReadOnly("locked/x", false);
}

}  // namespace
}  // namespace quillon
