#pragma once

#include <string>

#include "platform/Wbem.h"
#include "quillon/WmiConnector.h"

namespace quillon {

/// Holds the reference to a namespace's services.
class WmiConnector::Services {
public:
    enum class Step { Locator, Namespace, Security, Connected };
    /// The step that failed, or Connected, and the code.
    struct Outcome {
        Step step;
        HRESULT code;
    };

    /// Gives the reference up first. One whose security cannot be set stays. A server that
    /// does not answer is given up after two minutes when `mayGiveUp`.
    Outcome Connect(const std::wstring& ns, bool mayGiveUp);

    platform::CComPtr<IWbemServices> reference;
};

}  // namespace quillon
