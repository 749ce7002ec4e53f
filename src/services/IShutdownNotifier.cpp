#include "quillon/IShutdownNotifier.h"

namespace quillon {

IShutdownNotifier::~IShutdownNotifier() = default;

}  // namespace quillon
