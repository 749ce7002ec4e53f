// A log line through CLogger beside the same line through plain log4cplus with
// its own rolling file and console appenders. Standard output goes to the null
// device in both; results go to standard error or to --benchmark_out.

#include <benchmark/benchmark.h>
#include <log4cplus/configurator.h>
#include <log4cplus/consoleappender.h>
#include <log4cplus/fileappender.h>
#include <log4cplus/layout.h>
#include <log4cplus/loggingmacros.h>

#include <cstdio>
#include <filesystem>

#include "quillon/CLogger.h"

namespace {

constexpr int kLines = 200'000;
constexpr const char* kText = "Could not open file '%s' because: (%d) access denied";

std::string Folder() {
    const auto folder = std::filesystem::temp_directory_path() / "quillon-logging-benchmark";
    std::filesystem::create_directories(folder);
    return folder.string();
}

void SetUpBaseline(const benchmark::State&) {
    log4cplus::initialize();
    const auto layout = [] {
        return std::make_unique<log4cplus::PatternLayout>("%d{%Y-%m-%d %H:%M:%S.%q} [%5T] %-5p - %m%n");
    };
    log4cplus::SharedAppenderPtr console(new log4cplus::ConsoleAppender);
    log4cplus::SharedAppenderPtr file(
        new log4cplus::RollingFileAppender(Folder() + "/baseline.log", 5'242'880, 5, true, true));
    console->setLayout(layout());
    file->setLayout(layout());
    log4cplus::Logger root = log4cplus::Logger::getRoot();
    root.removeAllAppenders();
    root.addAppender(console);
    root.addAppender(file);
    root.setLogLevel(log4cplus::INFO_LOG_LEVEL);
}

void TearDownBaseline(const benchmark::State&) {
    log4cplus::Logger::getRoot().removeAllAppenders();
    std::filesystem::remove_all(Folder());
}

void SetUpQuillon(const benchmark::State&) {
    quillon::CLogger::GetInstance()->InitializeLogging((Folder() + "/quillon.log").c_str(),
                                                       quillon::ICLogger::Level::Info);
}

void TearDownQuillon(const benchmark::State&) {
    quillon::CLogger::GetInstance()->StopLogging();
    std::filesystem::remove_all(Folder());
}

/// Lets each thread write its share of the lines in one iteration.
template <class Write>
void WriteLines(benchmark::State& state, Write write) {
    const int share = kLines / state.threads();
    for (auto unused : state) {
        for (int n = 0; n < share; ++n) write(n);
    }
    state.SetItemsProcessed(state.iterations() * share);
}

void LineBaseline(benchmark::State& state) {
    const log4cplus::Logger root = log4cplus::Logger::getRoot();
    WriteLines(state, [&root](int n) { LOG4CPLUS_INFO_FMT(root, kText, "C:\\Windows\\notepad.exe", n); });
}

void LineQuillon(benchmark::State& state) {
    quillon::ICLogger* const logger = quillon::CLogger::GetInstance();
    WriteLines(state, [logger](int n) { logger->Info(kText, "C:\\Windows\\notepad.exe", n); });
}

void SuppressedBaseline(benchmark::State& state) {
    const log4cplus::Logger root = log4cplus::Logger::getRoot();
    WriteLines(state, [&root](int n) { LOG4CPLUS_DEBUG_FMT(root, kText, "C:\\Windows\\notepad.exe", n); });
}

void SuppressedQuillon(benchmark::State& state) {
    quillon::ICLogger* const logger = quillon::CLogger::GetInstance();
    WriteLines(state, [logger](int n) { logger->Debug(kText, "C:\\Windows\\notepad.exe", n); });
}

BENCHMARK(LineBaseline)
    ->Name("line/baseline")
    ->Setup(SetUpBaseline)
    ->Teardown(TearDownBaseline)
    ->Threads(1)
    ->Threads(4)
    ->UseRealTime();
BENCHMARK(LineQuillon)
    ->Name("line/quillon")
    ->Setup(SetUpQuillon)
    ->Teardown(TearDownQuillon)
    ->Threads(1)
    ->Threads(4)
    ->UseRealTime();
BENCHMARK(SuppressedBaseline)->Name("suppressed/baseline")->Setup(SetUpBaseline)->Teardown(TearDownBaseline);
BENCHMARK(SuppressedQuillon)->Name("suppressed/quillon")->Setup(SetUpQuillon)->Teardown(TearDownQuillon);

}  // namespace

BENCHMARK_MAIN();
