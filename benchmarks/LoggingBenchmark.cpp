// A log line through CLogger beside the same line through plain log4cplus with
// its own rolling file and console appenders. Standard output goes to the null
// device in both; results go to standard error or to --benchmark_out. "pipe" writes
// to a pipe that somebody reads. Where it is installed, spdlog writes the line as well, to its rotating file
// alone. The entry that rolls the log over, with the whole banner, stands beside a plain chain of renames and
// a new file.

#include <benchmark/benchmark.h>
#include <unistd.h>

#include <log4cplus/configurator.h>
#include <log4cplus/consoleappender.h>
#include <log4cplus/fileappender.h>
#include <log4cplus/layout.h>
#include <log4cplus/loggingmacros.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <thread>
#include <vector>

#ifdef QUILLON_HAS_SPDLOG
#include <spdlog/sinks/rotating_file_sink.h>
#include <spdlog/spdlog.h>
#endif

#include "quillon/CLogger.h"
#include "quillon/IAgentConfiguration.h"
#include "quillon/IDeviceInformation.h"
#include "quillon/ServiceLocator.h"

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

/// Leads standard output into a pipe that a thread reads up to a NUL: the log keeps an opening of the pipe.
class OutputPipe {
public:
    OutputPipe() : m_output(::dup(STDOUT_FILENO)) {
        int ends[2];
        if (m_output < 0 || ::pipe(ends) != 0 || ::dup2(ends[1], STDOUT_FILENO) < 0) std::abort();
        ::close(ends[1]);
        m_reader = std::thread([from = ends[0]] {
            char buffer[64 << 10];
            ssize_t count = 0;
            while ((count = ::read(from, buffer, sizeof buffer)) > 0 && buffer[count - 1] != '\0') {
            }
            ::close(from);
        });
    }
    ~OutputPipe() {
        if (::write(STDOUT_FILENO, "", 1) != 1) std::abort();
        ::dup2(m_output, STDOUT_FILENO);
        ::close(m_output);
        m_reader.join();
    }
    OutputPipe(const OutputPipe&) = delete;
    OutputPipe& operator=(const OutputPipe&) = delete;

private:
    int m_output;
    std::thread m_reader;
};

std::unique_ptr<OutputPipe> g_pipe;

void SetUpPipe(const benchmark::State& state) {
    g_pipe = std::make_unique<OutputPipe>();
    SetUpQuillon(state);
}

void TearDownPipe(const benchmark::State& state) {
    TearDownQuillon(state);
    g_pipe.reset();
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

#ifdef QUILLON_HAS_SPDLOG

std::shared_ptr<spdlog::logger> g_spdlog;

void SetUpSpdlog(const benchmark::State&) {
    g_spdlog = spdlog::rotating_logger_mt("benchmark", Folder() + "/spdlog.log", 5'242'880, 5);
    g_spdlog->set_pattern("%Y-%m-%d %H:%M:%S.%e [%5t] %-5l - %v");
    g_spdlog->flush_on(spdlog::level::info);
}

void TearDownSpdlog(const benchmark::State&) {
    spdlog::drop_all();
    g_spdlog.reset();
    std::filesystem::remove_all(Folder());
}

void LineSpdlog(benchmark::State& state) {
    WriteLines(state, [](int n) {
        g_spdlog->info("Could not open file '{}' because: ({}) access denied", "C:\\Windows\\notepad.exe", n);
    });
}

void SuppressedSpdlog(benchmark::State& state) {
    WriteLines(state, [](int n) {
        g_spdlog->debug("Could not open file '{}' because: ({}) access denied", "C:\\Windows\\notepad.exe",
                        n);
    });
}

BENCHMARK(LineSpdlog)
    ->Name("line/spdlog")
    ->Setup(SetUpSpdlog)
    ->Teardown(TearDownSpdlog)
    ->Threads(1)
    ->Threads(4)
    ->UseRealTime();
BENCHMARK(SuppressedSpdlog)->Name("suppressed/spdlog")->Setup(SetUpSpdlog)->Teardown(TearDownSpdlog);

#endif

class Settings final : public quillon::IAgentConfiguration {
public:
    const std::vector<SwitchEndpoint>& GetSwitches() const override { return m_switches; }
    const std::vector<std::string>& GetBackgroundChannelUrls() const override { return m_urls; }
    int GetAuthenticationPolicy() const override { return 0; }
    const char* GetCrlChecks() const override { return "soft"; }
    int GetLoggingLevel() const override { return 2; }
    int GetSsl() const override { return 1; }
    void GetModuleSettings(const std::string&, std::map<std::string, std::string>& settings) const override {
        settings["enabled"] = "true";
    }
    bool GetEncryptDb() const override { return false; }
    bool GetIgnoreCertificateValidationErrors() const override { return true; }
    bool GetSkipDigitalSignatureChecks() const override { return true; }
    bool IsWayfarEnabled() const override { return true; }

private:
    std::vector<SwitchEndpoint> m_switches{{"one.example", 4000}, {"two.example", 4001}};
    std::vector<std::string> m_urls{"https://one.example", "https://two.example"};
};

class Device final : public quillon::IDeviceInformation {
public:
    void LogDeviceInformation() override {
        for (int n = 0; n < 10; ++n) quillon::CLogger::GetInstance()->Info(kText, "device", n);
    }
};

void MakeFullLog(const std::string& path) {
    std::ofstream(path).close();
    std::filesystem::resize_file(path, 5'242'881);
}

/// Times `rollOver(path)` on a full log that has its backups.
template <class RollOver>
void RollOverOften(benchmark::State& state, const std::string& path, RollOver rollOver) {
    for (int n = 1; n <= 5; ++n) MakeFullLog(path + '.' + std::to_string(n));
    for (auto unused : state) {
        MakeFullLog(path);
        state.SetIterationTime(rollOver());
    }
    std::filesystem::remove_all(Folder());
}

template <class Action>
double SecondsOf(Action action) {
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void RollOverBaseline(benchmark::State& state) {
    const std::string path = Folder() + "/baseline.log";
    RollOverOften(state, path, [&path] {
        return SecondsOf([&path] {
            std::remove((path + ".5").c_str());
            for (int n = 4; n > 0; --n) {
                const std::string from = path + '.' + std::to_string(n);
                static_cast<void>(std::rename(from.c_str(), (path + '.' + std::to_string(n + 1)).c_str()));
            }
            static_cast<void>(std::rename(path.c_str(), (path + ".1").c_str()));
            std::ofstream(path) << "entry\n";
        });
    });
}

void RollOverQuillon(benchmark::State& state) {
    Settings settings;
    Device device;
    quillon::ICLogger* const logger = quillon::CLogger::GetInstance();
    quillon::ServiceLocator::Put<quillon::ICLogger>(logger);
    quillon::ServiceLocator::Put<quillon::IAgentConfiguration>(&settings);
    quillon::ServiceLocator::Put<quillon::IDeviceInformation>(&device);
    const std::string path = Folder() + "/quillon.log";
    RollOverOften(state, path, [&path, logger] {
        logger->InitializeLogging(path.c_str(), quillon::ICLogger::Level::Info);
        const double seconds = SecondsOf([logger] { logger->Info("entry"); });
        logger->StopLogging();
        return seconds;
    });
    quillon::ServiceLocator::Clear();
}

BENCHMARK(RollOverBaseline)->Name("roll-over/baseline")->UseManualTime();
BENCHMARK(RollOverQuillon)->Name("roll-over/quillon")->UseManualTime();
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
BENCHMARK(LineQuillon)
    ->Name("line/quillon-pipe")
    ->Setup(SetUpPipe)
    ->Teardown(TearDownPipe)
    ->Threads(1)
    ->Threads(4)
    ->UseRealTime();
BENCHMARK(SuppressedBaseline)->Name("suppressed/baseline")->Setup(SetUpBaseline)->Teardown(TearDownBaseline);
BENCHMARK(SuppressedQuillon)->Name("suppressed/quillon")->Setup(SetUpQuillon)->Teardown(TearDownQuillon);

}  // namespace

BENCHMARK_MAIN();
