#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "quillon/VariantList.h"

namespace quillon::testkit {

/// Names the types of WMI's properties and parameters.
enum class CimType {
    Boolean,
    Sint8,
    Uint8,
    Sint16,
    Uint16,
    Sint32,
    Uint32,
    Sint64,
    Uint64,
    Real32,
    Real64,
    String,
    DateTime,  ///< text "yyyymmddHHMMSS.mmmmmm+UUU"
};

/// Describes a property of a class, or a parameter of a method. Names are UTF-8 and case-insensitive.
struct WmiProperty {
    std::string name;
    CimType type = CimType::String;
    bool isKey = false;  ///< is one of those that tell the instances apart; a parameter is none
    /// Holds any number of values of the type. A text gives them, one in each line as for an update of
    /// WmiConnector; the empty text is no values.
    bool isArray = false;
};

/// Describes a method of a class.
struct WmiMethod {
    std::string name;
    std::vector<WmiProperty> in{}, out{};  ///< unless it is in `out`, a ReturnValue of 0 is added
    /// Gets the path of the object and those parameters that are not null, adds values of `out`, and
    /// returns the code of the call, 0 for success. It runs on a thread of the library's.
    std::function<std::uint32_t(const std::string& path, const VariantList& in, VariantList& out)> body{};
    bool isStatic = false;  ///< is called on the class, without an object
};

/// Names the calls of WMI that a connector makes, in the order in which a query makes them.
enum class WmiCall {
    CreateLocator,
    ConnectServer,
    SetProxyBlanket,
    ExecQuery,
    Next,        ///< the next objects of a query
    ReadObject,  ///< GetObject: a class or an object by its path
    PutInstance,
    ExecMethod,
};

/// Is WMI in memory, in the place of the system's for its life: every WmiConnector of the process that
/// connects meanwhile reaches it, on Windows and on Linux. There is one at a time. It may end before the
/// connectors, and before calls that hang; these are let go. Thread-safe, but for its beginning and end.
///
/// @code
/// testkit::WmiRepository wmi;
/// wmi.AddClass("ROOT\\CIMV2", "Win32_QuickFixEngineering", {{"HotFixID", testkit::CimType::String, true}});
/// wmi.AddInstance("ROOT\\CIMV2", "Win32_QuickFixEngineering", VariantList(Variant("HotFixID", "KB1")));
/// wmi.FailNext(testkit::WmiCall::Next, 0x80070005);  // the first query is refused
/// @endcode
class WmiRepository {
public:
    WmiRepository();
    ~WmiRepository();
    WmiRepository(const WmiRepository&) = delete;
    WmiRepository& operator=(const WmiRepository&) = delete;

    /// Makes the namespace, and those above it, when they are missing, and the class, in place of one of
    /// that name with its instances. Throws std::invalid_argument for a malformed namespace.
    void AddClass(const std::string& ns, const std::string& name, const std::vector<WmiProperty>& properties,
                  const std::vector<WmiMethod>& methods = {});
    /// Adds an instance; what is not named is null. Throws std::invalid_argument when there is no such
    /// class or property, or a value does not fit the type of its property.
    void AddInstance(const std::string& ns, const std::string& className, const VariantList& values);

    /// Lets a call answer with `code`, an HRESULT such as 0x80070005, and nothing else, once, after `skip`
    /// calls of its kind that do not fail.
    void FailNext(WmiCall call, std::uint32_t code, unsigned int skip = 0);
    /// Lets every call of a kind answer so much later; 0 ends that.
    void Delay(WmiCall call, std::chrono::milliseconds time);
    /// Lets every call of one kind wait without an answer, until LetGo().
    void Hang(WmiCall call);
    /// Lets every query give so many objects and then wait without an answer, until LetGo().
    void HangAfter(unsigned int objects);
    /// Lets the calls that hang, and all that follow, go on.
    void LetGo();

    /// Returns how many calls of a kind there were, those that failed included.
    unsigned long long CountCalls(WmiCall call) const;
    /// Returns how many locators, connections, queries and objects somebody still holds: a test that ends
    /// with another number than 0 has found a leak, or a call that hangs.
    long long CountLiveObjects() const;

private:
    struct State;
    const std::shared_ptr<State> m_state;
};

}  // namespace quillon::testkit
