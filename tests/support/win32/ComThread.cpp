#include "support/ComThread.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <objbase.h>  // after <windows.h>

namespace quillon::test {

ComThread::ComThread() { EXPECT_GE(::CoInitializeEx(nullptr, COINIT_MULTITHREADED), 0); }

ComThread::~ComThread() { ::CoUninitialize(); }

}  // namespace quillon::test
