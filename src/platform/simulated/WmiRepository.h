#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/Wbem.h"

namespace quillon::platform::simulated {

/// A property of a class, or a parameter of a method; the value is the default (VT_EMPTY
/// and VT_NULL are NULL). `type` may have CIM_FLAG_ARRAY. Values have the variant type
/// that WMI uses for theirs: VT_I4 for 8 to 32 bits signed and for UINT16 and UINT32, VT_UI1
/// for UINT8, VT_BSTR for 64-bit integers, texts, date-times and references, VT_R4, VT_R8, VT_BOOL,
/// VT_UNKNOWN for objects.
struct WmiProperty {
    std::wstring name;
    CIMTYPE type;
    _variant_t value;
};

/// Named values, in the order that they are to be set.
using WmiValues = std::vector<std::pair<std::wstring, _variant_t>>;

struct WmiMethod {
    std::wstring name;
    std::vector<WmiProperty> in;
    /// Without ReturnValue, which every method with `out` gets as a UINT32.
    std::vector<WmiProperty> out;
    /// Gets the path of the object or class and the parameters that were set; gives those of `out` and the
    /// call's result.
    std::function<HRESULT(const std::wstring& path, const WmiValues& in, WmiValues& out)> body;
    bool isStatic = false;
};

struct WmiClass {
    std::wstring name;
    std::vector<WmiProperty> properties;
    /// Names of the properties that tell instances apart; they make __PATH.
    std::vector<std::wstring> keys;
    std::vector<WmiMethod> methods = {};
    /// Makes the instances for each query anew; such a class refuses PutInstance. `wanted` are the
    /// properties that the query reads, none for all: others need not be found out.
    std::function<std::vector<WmiValues>(const std::vector<std::wstring>& wanted)> live = {};
};

enum class WmiCall {
    CreateLocator,
    ConnectServer,
    SetProxyBlanket,
    ExecQuery,
    Next,
    GetObject,
    PutInstance,
    ExecMethod,
    GetNames,
    Get,
    Put,
    GetMethod,
    SpawnInstance,
    Count
};

/// WMI in memory: namespaces, classes, instances. Names have no case. It may go before
/// the objects that it handed out. Any thread.
class WmiRepository {
public:
    WmiRepository();
    ~WmiRepository();
    WmiRepository(const WmiRepository&) = delete;
    WmiRepository& operator=(const WmiRepository&) = delete;

    // --- What stands in it; `ns` is a path such as L"ROOT\\CIMV2" ---

    /// Makes the namespace when it is missing; replaces a class of the same name, with its instances.
    void AddClass(const std::wstring& ns, WmiClass wmiClass);
    /// The values that are named replace the defaults; the class exists and is not live.
    void AddInstance(const std::wstring& ns, const std::wstring& className, const WmiValues& values);
    /// A property of the n-th instance as it stands now; VT_EMPTY when there is none.
    _variant_t ReadValue(const std::wstring& ns, const std::wstring& className, std::size_t index,
                         const std::wstring& property) const;

    // --- How it behaves ---

    /// Lets a call fail with `code` once, after `skip` calls of its kind that do not. A failure code
    /// for Next comes instead of that call's objects.
    void FailNext(WmiCall call, HRESULT code, unsigned int skip = 0);
    /// Lets enumerators wait without an answer after this many objects each, until it is called with -1.
    void HangAfter(long objects);
    unsigned long long CallCount(WmiCall call) const;
    /// References to objects of the simulation that are held outside it.
    long long LiveObjects() const;

    HRESULT CreateLocator(CComPtr<IWbemLocator>& locator);
    /// Counts the call, and fails on request.
    HRESULT SetProxyBlanket();
    /// Calls that end here, with the seam's own messages.
    WbemCalls Calls();

private:
    friend class WmiServices;
    struct State;
    std::shared_ptr<State> m_state;
};

/// The repository of this machine, whose ROOT\CIMV2 has its live facts. Lives as long as the process.
WmiRepository& MachineRepository();

}  // namespace quillon::platform::simulated
