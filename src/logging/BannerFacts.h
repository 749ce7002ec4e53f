#pragma once

namespace quillon {

/// What the log's banner tells of this process. The texts live as long as it does.

/// Found out at the first call, which may wait for locks under which other threads log; later calls take
/// none.
const char* BannerHostName();
/// "Mmm dd yyyy hh:mm:ss" of the build; SOURCE_DATE_EPOCH fixes it.
const char* BannerBuildTime();

}  // namespace quillon
