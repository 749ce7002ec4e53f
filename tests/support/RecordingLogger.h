#pragma once

#include "quillon/testkit/RecordingLogger.h"

namespace quillon::test {

using testkit::RecordingLogger;

}  // namespace quillon::test
