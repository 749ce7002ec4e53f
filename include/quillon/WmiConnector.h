#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "quillon/DataTable.h"
#include "quillon/Export.h"
#include "quillon/ICLogger.h"
#include "quillon/MethodParameters.h"
#include "quillon/ServiceLocator.h"
#include "quillon/WindowsTypes.h"

namespace quillon {

class WmiCaller;
class WmiEnumeration;
namespace platform {
template <class T>
class CComPtr;
}

/// Asks and changes objects of Windows Management Instrumentation through one connection to one
/// namespace, and turns each object into a row. Outside Windows a repository with the machine's
/// live facts answers in ROOT\CIMV2.
///
/// Every failing call logs one Error entry "WMI error 0x%08x - ... (while ...)", keeps the text
/// before the bracket for LastWmiError(), and makes the operation return false; rows that were
/// added stay. Without a connection the text is "Not connected to WMI". What is done is logged
/// at Debug and Trace. A connector is used by one thread at a time, on which COM is initialised
/// (ComScope.h); it never initialises COM itself.
///
/// A property becomes a Variant by its CIM type: integers a 64-bit integer, reals a double,
/// booleans a bool, date-times their JSON text with the zone that they have, everything else a
/// text; an array is its elements' texts joined by ", ", and "(array)" when it has more than one
/// dimension. NULL is a null Variant. A number that
/// cannot be read as one throws std::invalid_argument or, past its range, std::out_of_range. An
/// object with a property that cannot be read gives an Error entry and the part of a row before
/// it, and the query goes on.
///
/// Every operation ends, at most 100 ms late, when the host is shutting down (0x800704C7,
/// ERROR_CANCELLED as an HRESULT) or its deadline is over (0x800705B4, ERROR_TIMEOUT), whatever a
/// provider does. As a call of WMI cannot be cancelled, the calls then run on a thread of the
/// library's, in the multi-threaded apartment and with the identity of the process; a call that does
/// not end in time is left behind there. While 16 are left behind no further one is made
/// (0x800705AA, ERROR_NO_SYSTEM_RESOURCES); SelfMetrics() counts them. Without a deadline and an
/// IShutdownMonitor the calls run on the caller's thread.
///
/// @code
/// const ComScope com;  // #include "quillon/ComScope.h"
/// WmiConnector wmi;
/// DataTable table;
/// wmi.SetDeadline(30'000);
/// if (wmi.Connect("ROOT\\CIMV2") &&
///     wmi.ExecuteQuery("SELECT Name, ProcessId FROM Win32_Process", &table)) {
///     std::cout << table;
/// } else {
///     std::wcout << wmi.LastWmiError() << L'\n';
/// }
/// @endcode
class QUILLON_API WmiConnector {
public:
    /// Says what becomes of an unsigned 64-bit value past the signed range.
    enum class Uint64Policy {
        Raise,  ///< std::out_of_range "stoll argument out of range"
        Text,   ///< its decimal text
    };

    /// Says how values are read that WMI holds in another form than their type.
    enum class ValuePolicy : std::uint8_t {
        /// By the form: an unsigned 32-bit number past 2147483647, and a 16-bit character past 32767, is the
        /// negative number of its bits; an element of an array of booleans or objects is the empty text and
        /// gives a Debug entry.
        Form,
        /// By the type: such numbers are unsigned, and the elements are "true" or "false", and "(object)".
        Type,
    };

    /// Says what an update, and a parameter of a method, does with values that are not scalars.
    enum class UpdatePolicy {
        /// A null value throws null_Variant. A property of another type than an integer, a real, a text, a
        /// boolean or a date-time is set to null without a type, which WMI may refuse. A parameter gets the
        /// value's text whatever its type is.
        Scalars,
        /// A null value clears the property, and leaves the parameter without a value. An array takes a text
        /// with one element in each line, and the empty text as an empty array; an unsigned 64-bit property
        /// takes its decimal text as well. A property of any other type, and a text that is no such array or
        /// number, gives an Error entry and a failure before anything is stored (0x80041005,
        /// WBEM_E_TYPE_MISMATCH); a parameter is left out with a Warn entry.
        NullsAndArrays
    };

    /// Makes a connector without a connection. The logger is not owned and must live as long;
    /// null means that nothing is logged.
    explicit WmiConnector(ICLogger* logger = ServiceLocator::Get<ICLogger>());
    /// Disconnects. A connector cannot be copied.
    ~WmiConnector();
    WmiConnector(const WmiConnector&) = delete;
    WmiConnector& operator=(const WmiConnector&) = delete;

    /// Limits how long one of the following operations takes, from its beginning to its end, in
    /// milliseconds; 0, the default, and less is without limit. What was done before the end stays:
    /// rows, and objects that were stored. Whether the call that was left behind still changes
    /// something cannot be known.
    void SetDeadline(std::int32_t milliseconds);
    /// Replaces the policy; the default is Raise.
    void SetUint64Policy(Uint64Policy policy);
    /// Replaces the policy; the default is Form.
    void SetValuePolicy(ValuePolicy policy);

    /// Replaces the policy of updates and parameters; the default is Scalars.
    void SetUpdatePolicy(UpdatePolicy policy);

    /// Says what a value does that the called method has no parameter for: nothing, by default, or,
    /// when `refused`, an Error entry and a failure before the call.
    void RefuseUnknownParameters(bool refused);

    /// Adds Debug entries: how many objects a query gave and how long it took, and what LastWmiErrorDetails()
    /// returns after a failure. Off by default.
    void SetDiagnostics(bool on);

    /// Connects to a namespace path such as "ROOT\CIMV2" (the narrow form is UTF-8) as the
    /// current user, in place of the connection before, which ends also when this fails.
    bool Connect(const std::string& ns);
    bool Connect(const std::wstring& ns);
    /// Connects in the same way to a namespace that may be absent: failures are Debug entries
    /// and no last error. `ns` is in the system's ANSI code page.
    bool TryConnect(const std::string& ns);
    /// Releases the connection; true always.
    bool Disconnect();

    /// Replaces the table's rows and columns by the objects of a query, one row each, without
    /// the system properties (__PATH, __CLASS, ...). The narrow form is UTF-8; put foreign text
    /// in by Wql.h. A null table, here and below, takes no rows.
    bool ExecuteQuery(const std::string& wql, DataTable* table);
    bool ExecuteQuery(const std::wstring& wql, DataTable* table);
    /// Does the same with the system properties.
    bool ExecuteQueryReturnQualifiers(const std::string& wql, DataTable* table);
    /// Hands each row to the visitor, on this thread, instead of keeping it, until the visitor
    /// returns false: the result is true then. What the visitor throws reaches the caller.
    bool ExecuteQuery(const std::string& wql, const std::function<bool(const VariantList&)>& visitor);

    /// Writes the first row's values to the properties that the columns of `updates` name, in
    /// the first object of the query or in all, stores each object, and appends it to
    /// `results`. A query without objects is no failure. Returns false, with an Error entry,
    /// when there is no first row or it does not have a value for each column; objects stored
    /// before a failure stay changed. A value of a kind that its property does not take throws
    /// std::invalid_argument, and a null null_Variant, before anything is stored.
    bool ExecuteUpdateFirst(const std::wstring& wql, const DataTable* updates, DataTable* results);
    bool ExecuteUpdateAll(const std::wstring& wql, const DataTable* updates, DataTable* results);

    /// Calls a method of a class, or of the first object of the query or of all. Its parameters
    /// are those of `params.scalars` that have their names, case-insensitively, given as texts
    /// that WMI converts; one that cannot be applied is left out with a Warn entry. What a call
    /// gives, ReturnValue included, is appended to `results` as a row; that of an object ends
    /// with its ObjectPath. Whether ReturnValue means success is for the caller to judge. The
    /// first failure ends the calls.
    bool ExecuteStaticMethod(const std::wstring& className, const std::wstring& methodName,
                             const MethodParameters& params, DataTable* results);
    bool ExecuteInstanceMethod(const std::wstring& wql, const std::wstring& methodName, bool allResults,
                               const MethodParameters& params, DataTable* results);

    /// Returns the text of the last failure, in UTF-16; empty before the first. Success does
    /// not clear it. The reference is valid as long as the connector.
    const std::wstring& LastWmiError() const;

    /// Returns the code of the last failure, negative, as the text shows it in hexadecimal; 0 before the
    /// first. Without a connection it is 0x80010108 (RPC_E_DISCONNECTED).
    std::int32_t LastWmiErrorCode() const;

    /// Returns what WMI says about the last failure beside its code (`__ExtendedStatus`), such as
    /// "Operation: ExecQuery; ParameterInfo: SELECT", in UTF-16; empty when it says nothing. The reference is
    /// valid until the next operation.
    const std::wstring& LastWmiErrorDetails() const;

    /// Returns the one text value of the one object of a class, over a connection of its own,
    /// logging to the registered logger. The empty text, with an Error entry, when connecting
    /// or the query fails, or there is any other number of objects or kind of value. The names
    /// go into the query as they are: never pass foreign text.
    static std::string GetStringFromWmi(const char* className, const char* propertyName,
                                        const std::wstring& ns);
    /// Does the same within so many milliseconds, connecting included; 0 and less is without limit.
    static std::string GetStringFromWmi(const char* className, const char* propertyName,
                                        const std::wstring& ns, std::int32_t milliseconds);

private:
    class Operation;
    class Services;
    class Update;
    template <class T>
    using CComPtr = platform::CComPtr<T>;
    using PropertyVisitor = std::function<bool(wchar_t* const&, const windows::_variant_t&, long)>;
    /// Gets an object and its index in the batch; false ends the visit.
    using ObjectVisitor = std::function<bool(const CComPtr<windows::IWbemClassObject>&, unsigned int)>;

    bool CheckConnected(const char* failure);
    bool HasEnded(const wchar_t* context) const;
    std::unique_ptr<WmiEnumeration> StartQuery(const std::wstring& wql);
    bool VisitObjects(const std::wstring& wql, const ObjectVisitor& visit);
    bool ReadRow(const CComPtr<windows::IWbemClassObject>& object, const wchar_t* objectPath,
                 bool returnQualifiers, VariantList& row) const;
    void ReportUnread(unsigned int index) const;
    bool ExecuteQueryInternal(const std::wstring& wql, DataTable* table, bool returnQualifiers);
    bool AccumulateWmiClassObject(const CComPtr<windows::IWbemClassObject>& object, DataTable* table,
                                  wchar_t* objectPath, bool returnQualifiers);
    bool ExtractObjectProperties(const CComPtr<windows::IWbemClassObject>& object, const wchar_t* objectPath,
                                 unsigned long flags, const PropertyVisitor& visit) const;
    static bool AddPropertyToRow(VariantList* row, wchar_t* const& name, const windows::_variant_t& value,
                                 long cimType);
    static bool CimScalarValueToVariant(const windows::_variant_t* value, long cimType, Variant& out);
    bool ExecuteUpdateWithPolicy(const std::wstring& wql, const DataTable* updates,
                                 const std::function<bool()>& continuationPolicy, DataTable* results);
    bool StoreObject(const CComPtr<windows::IWbemClassObject>& object, DataTable* results);
    bool CallMethod(const std::wstring& className, const std::wstring& path, const std::wstring& methodName,
                    const MethodParameters& params, DataTable* results, wchar_t* objectPath);
    bool ExecuteInstanceMethodInternal(CComPtr<windows::IWbemClassObject>& object,
                                       const std::wstring& methodName, const MethodParameters& params,
                                       DataTable* results);
    bool KnowsParameters(const std::wstring& methodName, windows::IWbemClassObject* inDefinition,
                         const MethodParameters& params) const;
    bool SetWmiParametersFromUserParameters(const std::wstring& methodName,
                                            CComPtr<windows::IWbemClassObject>& inDefinition,
                                            CComPtr<windows::IWbemClassObject>& inInstance,
                                            const MethodParameters& params) const;
    void SetWmiParameterFromUserParameters(CComPtr<windows::IWbemClassObject>& inInstance,
                                           const std::wstring& name, long cimType,
                                           const MethodParameters& params) const;
    void SetWmiParameterFromUserParameter(CComPtr<windows::IWbemClassObject>& inInstance,
                                          const std::wstring& name, long cimType, const Variant& value) const;
    void HandleWbemError(const std::wstring& context, long hr) const;

    ICLogger* m_logger;                    // not owned, never null
    std::unique_ptr<Services> m_services;  // holds no reference while not connected
    std::unique_ptr<std::wstring> m_lastError;
    mutable std::int32_t m_lastErrorCode = 0;
    mutable std::wstring m_lastErrorDetails;
    std::unique_ptr<WmiCaller> m_caller;  // of the operation that is under way
    std::int32_t m_deadline = 0;
    Uint64Policy m_uint64Policy = Uint64Policy::Raise;
    UpdatePolicy m_updatePolicy = UpdatePolicy::Scalars;
    bool m_refusesUnknown = false;
    bool m_diagnoses = false;
    ValuePolicy m_valuePolicy = ValuePolicy::Form;
};

}  // namespace quillon
