#pragma once

namespace quillon {

/// Facts about this process for the log's banner. The texts live as long as the process.

/// Found out at the first call, which may wait for locks under which other threads log; later calls take
/// none.
const char* BannerHostName();
/// "Mmm dd yyyy hh:mm:ss" of the build; SOURCE_DATE_EPOCH fixes it.
const char* BannerBuildTime();

}  // namespace quillon
