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

class WmiEnumeration;

/// A client of Windows Management Instrumentation: one connection to one namespace,
/// whose objects become rows. Outside Windows a repository with the machine's live
/// facts answers in ROOT\CIMV2.
///
/// Every failing call logs one Error entry "WMI error 0x%08lx - ... (while ...)", keeps
/// the text before the bracket for LastWmiError(), and makes the operation return
/// false; rows that were added stay. A connector is used by one thread at a time, on
/// which COM is initialised; it never initialises COM itself.
///
/// A property becomes a Variant by its CIM type: integers a 64-bit integer, reals a
/// double, booleans a bool, date-times their JSON text in UTC, everything else a text;
/// an array is its elements' texts joined by ", ". NULL is a null Variant. A number
/// that cannot be one throws std::invalid_argument or, past the signed 64-bit range,
/// std::out_of_range.
///
/// A wait for an object is cut into slices of at most 500 ms. After a slice without
/// an answer the wait ends when the host is shutting down (code 0x800704c7) or the
/// deadline is over (0x800705b4).
class QUILLON_API WmiConnector {
public:
    /// What becomes of an unsigned 64-bit value past the signed range.
    enum class Uint64Policy {
        Raise,  ///< std::out_of_range "stoll argument out of range"
        Text,   ///< its decimal text
    };

    /// Without a logger nothing is logged.
    explicit WmiConnector(ICLogger* logger = ServiceLocator::Get<ICLogger>());
    ~WmiConnector();
    WmiConnector(const WmiConnector&) = delete;
    WmiConnector& operator=(const WmiConnector&) = delete;

    /// The longest that one of the following operations waits for the objects of its query;
    /// 0, the default, and less is without limit. With one, Connect gives up after two minutes at most.
    void SetDeadline(std::int32_t milliseconds);
    void SetUint64Policy(Uint64Policy policy);

    /// Connects to a namespace path such as "ROOT\CIMV2", in UTF-8, in place of the one before.
    bool Connect(const std::string& ns);
    bool Connect(const std::wstring& ns);
    /// For a namespace that may be absent: failures are Debug entries and no last
    /// error. The path is in the system's ANSI code page.
    bool TryConnect(const std::string& ns);
    /// Always true.
    bool Disconnect();

    /// The rows replace those of `table`, as its default columns go too. Without the
    /// system properties (__PATH, __CLASS, ...). Here and below, a null table takes no rows.
    bool ExecuteQuery(const std::string& wql, DataTable* table);
    bool ExecuteQuery(const std::wstring& wql, DataTable* table);
    /// With the system properties.
    bool ExecuteQueryReturnQualifiers(const std::string& wql, DataTable* table);
    /// Hands each row over instead of keeping it, until the visitor returns false: the
    /// result is true then. What the visitor throws reaches the caller.
    bool ExecuteQuery(const std::string& wql, const std::function<bool(const VariantList&)>& visitor);

    /// Writes the first row's values to the properties that the columns of `updates`
    /// name, in the first object of the query or in all, and adds each object to
    /// `results`. False, with an Error entry, when there is no first row or it does not have a
    /// value for each column. A value of a kind that its property does not take throws
    /// std::invalid_argument, and null null_Variant.
    bool ExecuteUpdateFirst(const std::wstring& wql, const DataTable* updates, DataTable* results);
    bool ExecuteUpdateAll(const std::wstring& wql, const DataTable* updates, DataTable* results);

    /// Calls a method of a class, or of the first object of the query or all. Its
    /// parameters are those scalars of `params` that have their names, whatever the
    /// case, as texts that WMI converts; one that cannot be applied is left out with a
    /// Warn entry. What a call gives is added to `results` as a row; that of an object
    /// ends with its ObjectPath.
    bool ExecuteStaticMethod(const std::wstring& className, const std::wstring& methodName,
                             const MethodParameters& params, DataTable* results);
    bool ExecuteInstanceMethod(const std::wstring& wql, const std::wstring& methodName, bool allResults,
                               const MethodParameters& params, DataTable* results);

    const std::wstring& LastWmiError() const;

    /// The one text value of the one object of a class; empty, with an Error entry, when
    /// it is anything else.
    static std::string GetStringFromWmi(const char* className, const char* propertyName,
                                        const std::wstring& ns);

private:
    class Services;
    class Update;
    using PropertyVisitor = std::function<bool(wchar_t* const&, const _variant_t&, long)>;
    /// Gets an object and its index in the batch; false ends the visit.
    using ObjectVisitor = std::function<bool(const ATL::CComPtr<IWbemClassObject>&, unsigned int)>;

    bool CheckConnected(const char* failure);
    std::unique_ptr<WmiEnumeration> StartQuery(const std::wstring& wql);
    bool VisitObjects(const std::wstring& wql, const ObjectVisitor& visit);
    bool ReadRow(const ATL::CComPtr<IWbemClassObject>& object, const wchar_t* objectPath,
                 bool returnQualifiers, VariantList& row) const;
    void ReportUnread(unsigned int index) const;
    bool ExecuteQueryInternal(const std::wstring& wql, DataTable* table, bool returnQualifiers);
    bool AccumulateWmiClassObject(const ATL::CComPtr<IWbemClassObject>& object, DataTable* table,
                                  wchar_t* objectPath, bool returnQualifiers);
    bool ExtractObjectProperties(const ATL::CComPtr<IWbemClassObject>& object, const wchar_t* objectPath,
                                 unsigned long flags, const PropertyVisitor& visit) const;
    static bool AddPropertyToRow(VariantList* row, wchar_t* const& name, const _variant_t& value,
                                 long cimType);
    static bool CimScalarValueToVariant(const _variant_t* value, long cimType, Variant& out);
    bool ExecuteUpdateWithPolicy(const std::wstring& wql, const DataTable* updates,
                                 const std::function<bool()>& continuationPolicy, DataTable* results);
    bool StoreObject(const ATL::CComPtr<IWbemClassObject>& object, DataTable* results);
    bool CallMethod(const std::wstring& className, const std::wstring& path, const std::wstring& methodName,
                    const MethodParameters& params, DataTable* results, wchar_t* objectPath);
    bool ExecuteInstanceMethodInternal(ATL::CComPtr<IWbemClassObject>& object, const std::wstring& methodName,
                                       const MethodParameters& params, DataTable* results);
    bool SetWmiParametersFromUserParameters(const std::wstring& methodName,
                                            ATL::CComPtr<IWbemClassObject>& inDefinition,
                                            ATL::CComPtr<IWbemClassObject>& inInstance,
                                            const MethodParameters& params) const;
    void SetWmiParameterFromUserParameters(ATL::CComPtr<IWbemClassObject>& inInstance,
                                           const std::wstring& name, long cimType,
                                           const MethodParameters& params) const;
    void SetWmiParameterFromUserParameter(ATL::CComPtr<IWbemClassObject>& inInstance,
                                          const std::wstring& name, long cimType, const Variant& value) const;
    void HandleWbemError(const std::wstring& context, long hr) const;

    ICLogger* m_logger;                    // not owned, never null
    std::unique_ptr<Services> m_services;  // holds no reference while not connected
    std::unique_ptr<std::wstring> m_lastError;
    std::int32_t m_deadline = 0;
    Uint64Policy m_uint64Policy = Uint64Policy::Raise;
};

}  // namespace quillon
