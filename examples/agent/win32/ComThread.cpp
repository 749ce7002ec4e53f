#include "ComThread.h"

#include <windows.h>

#include <objbase.h>  // after <windows.h>

namespace quillon::agent {

ComThread::ComThread() {
    const HRESULT result = ::CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    m_isOurs = SUCCEEDED(result);
    m_isReady = m_isOurs || result == RPC_E_CHANGED_MODE;  // somebody else's will do
}

ComThread::~ComThread() {
    if (m_isOurs) ::CoUninitialize();
}

}  // namespace quillon::agent
