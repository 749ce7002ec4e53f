#include "quillon/ICLogger.h"

namespace quillon {

ICLogger::~ICLogger() = default;

}  // namespace quillon
