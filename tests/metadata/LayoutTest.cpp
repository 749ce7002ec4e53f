#include <gtest/gtest.h>

#include <quillon/CertificateChain.h>
#include <quillon/DataTableIO.h>
#include <quillon/EventLogReader.h>
#include <quillon/File.h>
#include <quillon/FileSystemUtils.h>
#include <quillon/ISqliteQueries.h>
#include <quillon/LsZFile.h>
#include <quillon/ModuleEntry.h>
#include <quillon/ParameterBinder.h>
#include <quillon/ProcessUtils.h>
#include <quillon/SqlApplicationDataStore.h>
#include <quillon/TemporaryFile.h>
#include <quillon/TextFields.h>
#include <quillon/UniqueIdentifier.h>
#include <quillon/Url.h>
#include <quillon/Version.h>
#include <quillon/WayfarProviderWrapper.h>
#include <quillon/WmiConnector.h>

using namespace quillon;
using Command = ProcessUtils::CmdProperties;

namespace {

struct Layout {
    const char* name;
    std::size_t actual;
    std::size_t frozen;
};

template <typename Structure, typename Member>
std::size_t Offset(Member Structure::*member) {
    const Structure structure{};
    return static_cast<std::size_t>(reinterpret_cast<const char*>(&(structure.*member)) -
                                    reinterpret_cast<const char*>(&structure));
}

}  // namespace

#define SIZE(type, frozen) \
    { #type, sizeof(type), frozen }
#define OFFSET(type, member, frozen) \
    { #type "::" #member, Offset(&type::member), frozen }

// Callers allocate these, so a module that was built against an older 1.x has these sizes compiled into it. A
// difference is a break of the binary interface: docs/versioning.md says what to do instead.
TEST(Layout, StructuresOfCallersAreFrozen) {
    if (sizeof(std::string) != 32) GTEST_SKIP() << "they hold types of another standard library";
    const Layout layouts[] = {
        SIZE(Variant, 40),
        SIZE(VariantList, 8),
        SIZE(DataTable, 120),
        SIZE(TimePoint, 8),
        SIZE(Version, 20),
        SIZE(UniqueIdentifier, 16),
        SIZE(Url, 136),
        SIZE(InvocationResult, 160),
        OFFSET(InvocationResult, resultCode, 120),
        OFFSET(InvocationResult, errorMessage, 128),
        SIZE(MethodParameters, 56),
        OFFSET(MethodParameters, tables, 8),
        SIZE(Method, 40),
        SIZE(ModuleEntry, 40),
        SIZE(ParameterBinder, 64),
        SIZE(Command, 456),
        OFFSET(Command, logger, 32),
        OFFSET(Command, captureOutput, 41),
        OFFSET(Command, timeoutSecs, 44),
        OFFSET(Command, outputTable, 88),
        OFFSET(Command, killTree, 232),
        OFFSET(Command, standardInput, 320),
        OFFSET(Command, startTime, 400),
        OFFSET(Command, run, 440),
        SIZE(FileSystemUtils::WalkEntry, 72),
        SIZE(FileSystemUtils::WalkOptions, 56),
        SIZE(FileSystemUtils::VersionInformation, 160),
        SIZE(TextOptions, 40),
        SIZE(CsvOptions, 24),
        SIZE(TextPlace, 32),
        SIZE(SqlQuery, 56),
        SIZE(LogEvent, 240),
        SIZE(EventLogSource, 72),
        SIZE(EventLogReader::Result, 24),
        SIZE(ContentExpectation, 40),
        SIZE(CertificateChainOptions, 112),
        SIZE(TextColumn, 40),
        SIZE(TextToDataTableParser, 32),
        SIZE(WmiConnector, 88),
        SIZE(LsZFile, 32),
        SIZE(LsZFile::FileFromLsZ, 120),
        SIZE(File, 40),
        SIZE(TemporaryFile, 32),
        SIZE(SqlApplicationDataStore, 88),
    };
    for (const auto& [name, actual, frozen] : layouts) EXPECT_EQ(actual, frozen) << name;
}
