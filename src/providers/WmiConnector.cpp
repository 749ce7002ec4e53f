#include "quillon/WmiConnector.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "base/Utf.h"
#include "platform/TextApi.h"
#include "providers/SilentLogger.h"
#include "providers/WmiEnumeration.h"
#include "providers/WmiOperation.h"
#include "providers/WmiServices.h"
#include "quillon/LogText.h"

namespace quillon {

WmiConnector::WmiConnector(ICLogger* logger)
    : m_logger(&OrSilent(logger)),
      m_services(std::make_unique<Services>()),
      m_lastError(std::make_unique<std::wstring>()) {}

WmiConnector::~WmiConnector() { Disconnect(); }

void WmiConnector::SetDeadline(std::int32_t milliseconds) { m_deadline = milliseconds; }

void WmiConnector::SetUint64Policy(Uint64Policy policy) { m_uint64Policy = policy; }

void WmiConnector::RefuseUnknownParameters(bool refused) { m_refusesUnknown = refused; }

void WmiConnector::SetValuePolicy(ValuePolicy policy) { m_valuePolicy = policy; }

void WmiConnector::SetUpdatePolicy(UpdatePolicy policy) { m_updatePolicy = policy; }

void WmiConnector::SetDiagnostics(bool on) { m_diagnoses = on; }

const std::wstring& WmiConnector::LastWmiErrorDetails() const { return m_lastErrorDetails; }

const std::wstring& WmiConnector::LastWmiError() const { return *m_lastError; }

std::int32_t WmiConnector::LastWmiErrorCode() const { return m_lastErrorCode; }

// --- Connection ---

bool WmiConnector::Connect(const std::string& ns) { return Connect(base::ToWide(ns)); }

bool WmiConnector::Connect(const std::wstring& ns) {
    const Operation operation(*this);
    const auto [step, code] = m_services->Connect(ns, *m_caller);
    if (step != Services::Step::Connected) {
        const bool isSecurity = step == Services::Step::Security;
        HandleWbemError(isSecurity ? L"setting COM proxy blanket" : L"creating instance of IWbemLocator",
                        code);
        return false;
    }
    m_logger->Debug("Connected to WMI namespace \"%s\"", LogText::OneLine(base::ToUtf8(ns)).c_str());
    return true;
}

bool WmiConnector::TryConnect(const std::string& ns) {
    const Operation operation(*this);
    const auto step = m_services->Connect(platform::AnsiToWide(ns), *m_caller).step;
    if (step == Services::Step::Locator) {
        m_logger->Debug("Failed to create WbemLocator");
    } else if (step == Services::Step::Namespace) {
        m_logger->Debug("Failed to connect to WMI namespace \"%s\", but this is not an error",
                        LogText::OneLine(ns).c_str());
    } else if (step == Services::Step::Connected) {
        m_logger->Debug("Connected to WMI namespace \"%s\"", LogText::OneLine(ns).c_str());
    }
    return step == Services::Step::Connected;
}

bool WmiConnector::Disconnect() {
    m_services->reference.Release();
    return true;
}

bool WmiConnector::CheckConnected(const char* failure) {
    if (m_services->reference != nullptr) return true;
    *m_lastError = L"Not connected to WMI";
    m_lastErrorDetails.clear();
    m_lastErrorCode = static_cast<std::int32_t>(0x80010108);
    m_logger->Error("%s", failure);
    return false;
}

/// Says whether the operation has to end, which is reported then: objects that are ready are not a reason
/// to go on for ever.
bool WmiConnector::HasEnded(const wchar_t* context) const {
    const HRESULT end = m_caller->Limit().Look();
    if (FAILED(end)) HandleWbemError(context, end);
    return FAILED(end);
}

// --- Queries ---

bool WmiConnector::ExecuteQuery(const std::string& wql, DataTable* table) {
    return ExecuteQueryInternal(base::ToWide(wql), table, false);
}

bool WmiConnector::ExecuteQuery(const std::wstring& wql, DataTable* table) {
    return ExecuteQueryInternal(wql, table, false);
}

bool WmiConnector::ExecuteQueryReturnQualifiers(const std::string& wql, DataTable* table) {
    return ExecuteQueryInternal(base::ToWide(wql), table, true);
}

bool WmiConnector::ExecuteQuery(const std::string& wql,
                                const std::function<bool(const VariantList&)>& visitor) {
    const auto visit = [this, &visitor](const auto& object, unsigned int index) {
        VariantList row;
        if (!ReadRow(object, nullptr, false, row)) ReportUnread(index);
        return row.Size() == 0 || visitor(row);
    };
    return VisitObjects(base::ToWide(wql), visit);
}

bool WmiConnector::ExecuteQueryInternal(const std::wstring& wql, DataTable* table, bool returnQualifiers) {
    if (table != nullptr) table->Clear(true);
    const auto visit = [this, table, returnQualifiers](const auto& object, unsigned int index) {
        if (!AccumulateWmiClassObject(object, table, nullptr, returnQualifiers)) ReportUnread(index);
        return true;
    };
    return VisitObjects(wql, visit);
}

void WmiConnector::ReportUnread(unsigned int index) const {
    m_logger->Debug("Couldn't accumulate class object %u", index);
}

namespace {

/// Tells at its end how much a query gave, whether it has failed or not. Without a logger it does nothing.
class QueryReport {
public:
    explicit QueryReport(ICLogger* logger) : m_logger(logger), m_begin(Clock::now()) {}
    ~QueryReport() {
        if (m_logger == nullptr) return;
        const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - m_begin);
        m_logger->Debug("The WMI query gave %lld objects in %lld ms", m_count,
                        static_cast<long long>(time.count()));
    }
    QueryReport(const QueryReport&) = delete;
    QueryReport& operator=(const QueryReport&) = delete;

    void Count() { ++m_count; }

private:
    using Clock = std::chrono::steady_clock;

    ICLogger* m_logger;
    Clock::time_point m_begin;
    long long m_count = 0;
};

}  // namespace

bool WmiConnector::VisitObjects(const std::wstring& wql, const ObjectVisitor& visit) {
    if (!CheckConnected("Cannot execute WMI query as WmiConnector is not connected")) return false;
    const Operation operation(*this);
    QueryReport report(m_diagnoses ? m_logger : nullptr);
    const auto objects = StartQuery(wql);
    if (objects == nullptr) return false;
    WmiObjects batch;
    bool goesOn = true;
    do {
        const HRESULT result = objects->Next(WmiEnumeration::kBatch, batch);
        if (!batch.empty()) {
            m_logger->Trace("Processing %lu WMI objects", static_cast<unsigned long>(batch.size()));
        }
        for (unsigned int i = 0; goesOn && i < batch.size(); ++i) {
            if (SUCCEEDED(result) && HasEnded(L"enumerating WMI result")) return false;
            report.Count();
            goesOn = visit(batch[i], i);
        }
        if (goesOn && FAILED(result)) {
            HandleWbemError(L"enumerating WMI result", result);
            return false;
        }
    } while (goesOn && batch.size() == WmiEnumeration::kBatch);
    m_logger->Debug("Completed WMI query '%s'", LogText::OneLine(base::ToUtf8(wql)).c_str());
    return true;
}

std::unique_ptr<WmiEnumeration> WmiConnector::StartQuery(const std::wstring& wql) {
    m_logger->Debug("Executing WMI query '%s'", LogText::OneLine(base::ToUtf8(wql)).c_str());
    auto objects = std::make_unique<WmiEnumeration>(*m_caller);
    const HRESULT result = objects->Start(m_services->reference, wql);
    if (SUCCEEDED(result)) return objects;
    HandleWbemError(L"executing WQL query", result);
    return nullptr;
}

// --- One value ---

namespace {

const std::string* OnlyText(const DataTable& table, const char* className, const char* propertyName,
                            ICLogger& logger) {
    const std::string source = std::string(propertyName) + " FROM " + className;
    const auto fail = [&](const char* before, const char* after = "") {
        logger.Error("%s%s%s", before, LogText::OneLine(source).c_str(), after);
        return nullptr;
    };
    if (table.GetNumberOfRows() != 1) return fail("Expected a single ");
    const VariantList& row = *table.begin();
    if (row.Size() != 1) return fail("Expected a ");
    const Variant* const value = row.Find(propertyName);
    if (value == nullptr) return fail("No ");
    if (!value->TypeIs(typeid(std::string))) return fail("", " is not a string");
    return &value->GetStringValue();
}

}  // namespace

std::string WmiConnector::GetStringFromWmi(const char* className, const char* propertyName,
                                           const std::wstring& ns) {
    return GetStringFromWmi(className, propertyName, ns, 0);
}

std::string WmiConnector::GetStringFromWmi(const char* className, const char* propertyName,
                                           const std::wstring& ns, std::int32_t milliseconds) {
    const WmiLimit whole(milliseconds);
    WmiConnector connector;
    DataTable table;
    connector.SetDeadline(milliseconds);
    if (!connector.Connect(ns)) return {};
    if (whole.HasDeadline()) connector.SetDeadline(std::max(1, whole.Left(milliseconds)));
    if (!connector.ExecuteQuery(std::string("SELECT ") + propertyName + " FROM " + className, &table))
        return {};
    const std::string* const text = OnlyText(table, className, propertyName, *connector.m_logger);
    return text == nullptr ? std::string() : *text;
}

}  // namespace quillon
