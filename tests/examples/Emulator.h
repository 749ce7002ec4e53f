#pragma once

namespace quillon::test {

/// Whether Wine emulates Windows here.
bool IsEmulated();

}  // namespace quillon::test
