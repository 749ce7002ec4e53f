#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/Wbem.h"

namespace quillon::simulation {

struct WmiState;

/// A property of a class, or a parameter of a method; the value is the default (VT_EMPTY
/// and VT_NULL are NULL). `type` may have CIM_FLAG_ARRAY. Values have the variant type
/// that WMI uses for theirs: VT_I2 for SINT8, SINT16 and CHAR16, VT_I4 for SINT32, UINT16 and UINT32,
/// VT_UI1 for UINT8, VT_BSTR for 64-bit integers, texts, date-times and references, VT_R4, VT_R8, VT_BOOL,
/// VT_UNKNOWN for objects. Whoever sets up a repository may give others: they are kept and handed out as
/// they are. Only what Put is given is converted.
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
    /// ReturnValue, a UINT32 that is 0 by default, is added unless it is there. None: the method has no
    /// results, not even that.
    std::vector<WmiProperty> out;
    /// Gets the full path of the object or class and those parameters that are not NULL; gives values of
    /// `out` and the call's result. One that throws is a failure of the provider. None: does nothing.
    std::function<HRESULT(const std::wstring& path, const WmiValues& in, WmiValues& out)> body;
    /// May be called on the class; others need an instance.
    bool isStatic = false;
};

struct WmiClass {
    std::wstring name;
    std::vector<WmiProperty> properties;
    /// Names of the properties that tell instances apart; they make __PATH. A class without has one
    /// instance to which a path leads, "Class=@", the first.
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
/// the objects that it handed out. Thread-safe.
///
/// As the real thing: objects of a query show the properties that it names, in the class's order; their
/// __PATH and __RELPATH are NULL unless all keys or one of these two are named. Errors of a
/// query's syntax come from ExecQuery, a class or property that is not there from Next when the caller
/// said "return immediately". Flags and contexts that the library does not use are not looked at, and
/// objects that are handed in must be the simulation's own.
class WmiRepository {
public:
    /// `hostName` is what the server is called in paths.
    explicit WmiRepository(std::wstring hostName = L"LOCALHOST");
    ~WmiRepository();
    WmiRepository(const WmiRepository&) = delete;
    WmiRepository& operator=(const WmiRepository&) = delete;

    // --- What stands in it; `ns` is a path such as L"ROOT\\CIMV2" ---

    /// Makes the namespace, and those above it, when they are missing; replaces a class of the same name,
    /// with its instances. Throws std::invalid_argument for a malformed namespace or a key that is no
    /// property.
    void AddClass(const std::wstring& ns, WmiClass wmiClass);
    /// The values that are named replace the defaults. Throws std::invalid_argument when the class does not
    /// exist or is live, or has no such property.
    void AddInstance(const std::wstring& ns, const std::wstring& className, const WmiValues& values);
    /// A property of the n-th instance as it stands now; VT_EMPTY when there is none.
    _variant_t ReadValue(const std::wstring& ns, const std::wstring& className, std::size_t index,
                         const std::wstring& property) const;

    // --- How it behaves ---

    /// Lets a call answer with `code` and nothing else, once, after `skip` calls of its kind that do not.
    void FailNext(WmiCall call, HRESULT code, unsigned int skip = 0);
    /// Lets every call of a kind answer so much later.
    void Delay(WmiCall call, std::chrono::milliseconds time);
    /// Lets enumerators wait without an answer after this many objects each, until it is called with -1.
    void HangAfter(long objects);
    /// Lets enumerators take so long for each object; 0, the default, is no time. A call that has less time
    /// gives the objects before.
    void Trickle(std::chrono::milliseconds pause);
    /// Lets every call of a kind wait without an answer, until LetGo().
    void Hold(WmiCall call);
    void LetGo();
    /// Lets every call but those of an object answer with 0x800401F0 (CO_E_NOTINITIALIZED) on a thread for
    /// which `hasCom` returns false. Null, the default, asks nobody.
    void AskForCom(bool (*hasCom)());
    unsigned long long CallCount(WmiCall call) const;
    /// Locators, services, enumerators and objects that someone still has a reference to.
    long long LiveObjects() const;

    HRESULT CreateLocator(platform::CComPtr<IWbemLocator>& locator);
    /// Counts the call, and fails on request.
    HRESULT SetProxyBlanket();
    /// Calls that end here, with the seam's own messages.
    platform::WbemCalls Calls();

private:
    const std::shared_ptr<WmiState> m_state;
};

/// The repository of this machine, whose ROOT\CIMV2 has its live facts. Lives as long as the process.
WmiRepository& MachineRepository();

}  // namespace quillon::simulation
