#pragma once

#include <string>

#include "platform/Wbem.h"
#include "providers/WmiCaller.h"
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

    /// Gives the reference up first. One whose security cannot be set stays.
    Outcome Connect(const std::wstring& ns, WmiCaller& caller);

    platform::CComPtr<IWbemServices> reference;
};

}  // namespace quillon
