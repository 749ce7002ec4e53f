#include "quillon/LoggerUtils.h"

#include <atomic>
#include <ctime>

#include "logging/BannerFacts.h"
#include "quillon/DateTimeUtils.h"
#include "quillon/ICLogger.h"
#include "quillon/MiscUtils.h"

namespace quillon {

namespace {

/// True when the last block was written by a call that asked for no skipping.
std::atomic<bool>& DetailsWritten() {
    static std::atomic<bool> written{false};
    return written;
}

int CurrentYear() {
    std::tm utc{};
    DateTimeUtils::EpochTimeToUtcTm(utc, DateTimeUtils::GetUtcTimeNow());
    return utc.tm_year + 1900;
}

}  // namespace

void LoggerUtils::LogCopyright(const char* title, ICLogger* logger, bool skipIfJustWritten) {
    logger->Info("%s", title);
    if (skipIfJustWritten && DetailsWritten().exchange(false)) return;

    logger->Info("Quillon Client v%s on %s", MiscUtils::GetVersionNumber(logger).c_str(), BannerHostName());
    logger->Info("Copyright (c) 2016-%d the makers of Quillon. All rights reserved.", CurrentYear());
    logger->Info("%s release build, created %s", "Windows x64", BannerBuildTime());
    logger->Info("%s", title);
    DetailsWritten() = !skipIfJustWritten;
}

}  // namespace quillon
