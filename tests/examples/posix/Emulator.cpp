#include "examples/Emulator.h"

namespace quillon::test {

bool IsEmulated() { return false; }

}  // namespace quillon::test
