#include "Utils/internal/TimeZoneMapper.h"

#include <gmock/gmock.h>

#include "support/RecordingLogger.h"
#include "support/Threads.h"

namespace quillon {
namespace {

using test::RecordingLogger;
using testing::ElementsAre;
using testing::SizeIs;

std::optional<std::string_view> g_document;
int g_loads = 0;

std::optional<std::string_view> Document() {
    ++g_loads;
    return g_document;
}

TEST(TimeZoneMapper, UnusableDocumentsAreReportedOnceAndLeaveTheMapEmpty) {
    const std::pair<std::optional<std::string_view>, std::string> cases[] = {
        {std::nullopt, "Cannot load embedded resource for Windows timezone mappings"},
        {"<a><b x=1/></a>",
         "Error parsing timezone mapping document: Error parsing element attribute at 1/></a>"},
        {"<a>", "Error parsing timezone mapping document: Start-end tags mismatch at >"},
        {"", "Timezone mapping document does not contain 'supplementalData'"},
        {"<SupplementalData/>", "Timezone mapping document does not contain 'supplementalData'"},
        {"<supplementalData/>",
         "Timezone mapping document 'supplementalData' does not contain 'windowsZones'"},
        {"<supplementalData><windowsZones/></supplementalData>",
         "Timezone mapping document 'windowsZones' does not contain 'mapTimezones'"},
        {"<supplementalData><windowsZones><mapTimezones/></windowsZones></supplementalData>",
         "Timezone mapping document 'mapTimezone' does not contain any 'mapZone'"},
    };
    for (const auto& [document, expected] : cases) {
        SCOPED_TRACE(expected);
        RecordingLogger log;
        g_document = document;
        g_loads = 0;
        TimeZoneMapper mapper(Document);
        EXPECT_EQ(mapper.Map("A%d"), "");
        EXPECT_THAT(log.Lines(), ElementsAre(expected, "TimeZoneMapper does not contain the string 'A%d'"));
        const auto level = document ? ICLogger::Level::Error : ICLogger::Level::Warn;
        EXPECT_THAT(log.Lines(level), testing::Contains(expected));
        EXPECT_EQ(mapper.Map("B"), "");
        EXPECT_THAT(log.Lines(), SizeIs(3));
        EXPECT_EQ(g_loads, 1);
    }
}

TEST(TimeZoneMapper, TakesTheFirstWorldEntryOfEachZone) {
    g_document =
        "\xEF\xBB\xBF<?xml version='1.0'?><!-- c --><supplementalData><windowsZones><x/><mapTimezones>"
        "<mapZone other='Local' territory='AF' type='x'/>"
        "<mapZone territory='001' type='x'/><mapZone other='None' territory='001'/><mapZone other='B' "
        "type='x'/>"
        "<mapZone other='A' territory='001' type='first'/><other other='B' territory='001' type='x'/>"
        "<mapZone other='A' territory='001' type='second'/><MapZone other='B' territory='001' type='x'/>"
        "<mapZone type='R&amp;D' Other='x' territory='001' other='C &lt;'/>"
        "</mapTimezones></windowsZones></supplementalData>";
    RecordingLogger log;
    TimeZoneMapper mapper(Document);
    EXPECT_EQ(mapper.Map("A"), "first");
    EXPECT_EQ(mapper.Map("C <"), "R&D");
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
    for (const char* name : {"Local", "None", "B", "a", ""}) EXPECT_EQ(mapper.Map(name), "") << name;
    EXPECT_THAT(log.Lines(ICLogger::Level::Warn), SizeIs(5));
}

std::string DocumentOf(const std::string& entries) {
    return "<supplementalData><windowsZones><mapTimezones>" + entries +
           "</mapTimezones></windowsZones></supplementalData>";
}

TEST(TimeZoneMapper, KnowsTerritoriesAndTheWayBackAndLetsADocumentOverride) {
    const std::string base = DocumentOf(
        "<mapZone other='C' territory='001' type='E/P'/><mapZone other='C' territory='PL' type='E/W  E/X'/>"
        "<mapZone other='I' territory='IN' type='Asia/Calcutta'/><mapZone other='K' type='E/K'/>");
    g_document = base;
    RecordingLogger log;
    TimeZoneMapper mapper(Document);
    const auto all = [&mapper] {
        return mapper.Map("C") + ' ' + mapper.Map("C", "PL") + ' ' + mapper.Map("C", "DE") + ' ' +
               mapper.MapBack("E/X") + ' ' + mapper.MapBack("E/P") + ' ' + mapper.MapBack("Asia/Kolkata");
    };
    EXPECT_EQ(all(), "E/P E/W E/P C C I");
    EXPECT_TRUE(
        mapper.Override(DocumentOf("<mapZone other='C' territory='DE' type='E/B'/>"
                                   "<mapZone other='J' territory='001' type='E/X Asia/Kolkata'/>")));
    EXPECT_EQ(all(), "E/P E/W E/B J C J");
    EXPECT_THAT(log.Lines(), testing::IsEmpty());
    EXPECT_FALSE(mapper.Override("<supplementalData/>"));
    EXPECT_EQ(all(), "E/P E/W E/B J C J");
    EXPECT_TRUE(mapper.Override(DocumentOf("<mapZone other='D' territory='001' type='E/D'/>")));
    EXPECT_EQ(all() + mapper.Map("D"), "E/P E/W E/P C C IE/D");
    EXPECT_THAT(log.Lines(), SizeIs(1));
    for (const char* name : {"", " ", "E/K", "C/PL"}) EXPECT_EQ(mapper.MapBack(name), "") << name;
    EXPECT_EQ(mapper.Map("C/PL") + mapper.Map("I") + mapper.Map("I", ""), "");
}

TEST(TimeZoneMapper, AnUnusableDocumentIsReportedAlsoWhenTheOverridingOneAnswers) {
    g_document = std::nullopt;
    RecordingLogger log;
    TimeZoneMapper mapper(Document);
    EXPECT_TRUE(mapper.Override(DocumentOf("<mapZone other='A' territory='001' type='a'/>")));
    EXPECT_EQ(mapper.Map("A") + mapper.Map("A"), "aa");
    EXPECT_THAT(log.Lines(), ElementsAre("Cannot load embedded resource for Windows timezone mappings"));
}

TEST(TimeZoneMapper, ConcurrentFirstCallsLoadOnce) {
    g_document =
        "<supplementalData><windowsZones><mapTimezones><mapZone other='A' territory='001' type='a'/>"
        "</mapTimezones></windowsZones></supplementalData>";
    g_loads = 0;
    RecordingLogger log;
    TimeZoneMapper mapper(Document);
    test::Threads(4, [&mapper](int) {
        EXPECT_EQ(mapper.Map("A"), "a");
        EXPECT_EQ(mapper.Map("B"), "");
    }).Join();
    EXPECT_EQ(g_loads, 1);
    EXPECT_THAT(log.Lines(), SizeIs(4));
}

}  // namespace
}  // namespace quillon
