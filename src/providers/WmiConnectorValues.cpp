#include <optional>
#include <stdexcept>
#include <string>
#include <variant>

#include "base/Utf.h"
#include "platform/ole/VariantNumber.h"
#include "providers/SilentLogger.h"
#include "providers/WmiCimTypes.h"
#include "providers/WmiOwners.h"
#include "providers/WmiValueText.h"
#include "quillon/DateTimeUtils.h"
#include "quillon/LogText.h"
#include "quillon/WmiConnector.h"
#include "quillon/detail/RegisteredLogger.h"

namespace quillon {

namespace {

/// Returns the integer when the variant holds one; other kinds are converted by way of their text.
std::optional<long long> HeldInteger(const VARIANT& value) {
    if (value.vt == VT_EMPTY || value.vt == VT_BOOL || value.vt == VT_BSTR) return std::nullopt;
    const auto number = platform::VariantNumberOf(value);
    const long long* const integer = number ? std::get_if<long long>(&*number) : nullptr;
    return integer != nullptr ? std::optional(*integer) : std::nullopt;
}

void SetInteger(const VARIANT& value, CIMTYPE type, Variant& out) {
    if (const auto held = HeldInteger(value)) {
        out.SetLongLongValue(*held);
        return;
    }
    std::string text = VariantText(value);
    long long number = 0;
    const NumberState state = ReadInteger(text, number);
    if (state == NumberState::NoNumber) throw std::invalid_argument("invalid stoll argument");
    if (state == NumberState::Read) {
        out.SetLongLongValue(number);
    } else if (type == kUint64OrText) {
        out.SetStringValue(std::move(text));
    } else {
        throw std::out_of_range("stoll argument out of range");
    }
}

void SetReal(const VARIANT& value, Variant& out) {
    double number = 0;
    const NumberState state = ReadReal(VariantText(value), number);
    if (state == NumberState::NoNumber) throw std::invalid_argument("invalid stod argument");
    if (state == NumberState::OutOfRange) throw std::out_of_range("stod argument out of range");
    out.SetDoubleValue(number);
}

void SetDateTime(const _variant_t* value, Variant& out) {
    if (value == nullptr) {
        out.SetStringValue(DateTimeUtils::JsonDateTimeEpoch);
    } else {
        out.SetStringValue(base::ToUtf8(DateTimeUtils::CimDateTimeToJsonDateTime(*value)));
    }
}

/// Whether elements of a type are read as they are.
bool IsReadable(VARTYPE type) {
    switch (type) {
        case VT_I1:
        case VT_UI1:
        case VT_I2:
        case VT_UI2:
        case VT_I4:
        case VT_UI4:
        case VT_I8:
        case VT_UI8:
        case VT_R4:
        case VT_R8:
        case VT_BSTR:
        case VT_VARIANT:
        case VT_DECIMAL:
            return true;
        default:
            return false;
    }
}

/// Returns the number whose bits WMI holds in a signed variant, when it is to be read as it is meant; nothing
/// for what is so already.
std::optional<_variant_t> Unsigned(const VARIANT& value, CIMTYPE type) {
    _variant_t meant;
    if (type == (CIM_UINT32 | kAsMeant) && value.vt == VT_I4) {
        meant.ulVal = static_cast<ULONG>(value.lVal);
        meant.vt = VT_UI4;
    } else if (type == (CIM_CHAR16 | kAsMeant) && value.vt == VT_I2) {
        meant.uiVal = static_cast<unsigned short>(value.iVal);
        meant.vt = VT_UI2;
    } else {
        return std::nullopt;
    }
    return meant;
}

/// Whether the elements of an array have one index. A function that gets one index for two reads past it.
bool HasOneDimension(SAFEARRAY* array) {
    LONG bound = 0;
    return FAILED(::SafeArrayGetLBound(array, 2, &bound));
}

bool FetchElement(SAFEARRAY* array, VARTYPE type, LONG index, _variant_t& element) {
    if (type == VT_VARIANT) {
        return SUCCEEDED(::SafeArrayGetElement(array, &index, static_cast<VARIANT*>(&element)));
    }
    void* target = &element.llVal;
    if (type == VT_DECIMAL) target = &element.decVal;
    const bool fetched = SUCCEEDED(::SafeArrayGetElement(array, &index, target));
    // After it: a decimal is written over the whole variant.
    element.vt = fetched ? type : static_cast<VARTYPE>(VT_EMPTY);
    return fetched;
}

void ReportElement(const wchar_t* name, VARTYPE type, LONG index) {
    const std::string typeText = type == VT_UNKNOWN ? "VT_UNKNOWN" : std::to_string(type);
    OrSilent(detail::RegisteredLoggerIfAny())
        .Debug("Unexpected WMI object. Property name: %s Type: %s Index: %ld",
               LogText::OneLine(base::ToUtf8(name)).c_str(), typeText.c_str(), static_cast<long>(index));
}

/// An array's elements as texts, one after the other.
class ArrayText {
public:
    using Converter = bool (*)(const _variant_t* value, long cimType, Variant& out);

    ArrayText(SAFEARRAY* array, const wchar_t* name, CIMTYPE type, Converter convert)
        : m_array(array), m_name(name), m_elementType(ElementType(type)), m_convert(convert) {
        if (FAILED(::SafeArrayGetVartype(array, &m_type))) m_type = VT_EMPTY;
    }

    std::string Joined() const {
        LONG first = 0, last = -1;
        if (FAILED(::SafeArrayGetLBound(m_array, 1, &first)) ||
            FAILED(::SafeArrayGetUBound(m_array, 1, &last))) {
            return {};
        }
        std::string text;
        for (long long i = first; i <= last; ++i) {
            if (i != first) text += ", ";
            text += Element(static_cast<LONG>(i));
        }
        return text;
    }

private:
    bool IsRead() const {
        return IsReadable(m_type) || (m_type == VT_BOOL && m_elementType == (CIM_BOOLEAN | kAsMeant)) ||
               (m_type == VT_UNKNOWN && m_elementType == (CIM_OBJECT | kAsMeant));
    }

    std::string Element(LONG index) const {
        if (!IsRead()) {
            ReportElement(m_name, m_type, index);
            return {};
        }
        _variant_t element;
        if (!FetchElement(m_array, m_type, index, element)) return {};
        // A variant may hold nothing.
        const bool isGiven = element.vt != VT_EMPTY && element.vt != VT_NULL;
        if (const auto meant = Unsigned(element, m_elementType)) element = *meant;
        Variant converted;
        m_convert(isGiven ? &element : nullptr, m_elementType & ~kAsMeant, converted);
        return converted.AsString();
    }

    SAFEARRAY* m_array;
    const wchar_t* m_name;
    CIMTYPE m_elementType;
    Converter m_convert;
    VARTYPE m_type = VT_EMPTY;
};

}  // namespace

bool WmiConnector::ReadRow(const CComPtr<IWbemClassObject>& object, const wchar_t* objectPath,
                           bool returnQualifiers, VariantList& row) const {
    const unsigned long flags = returnQualifiers ? 0 : WBEM_FLAG_NONSYSTEM_ONLY;
    const auto add = [this, &row](wchar_t* const& name, const _variant_t& value, long cimType) {
        const bool mayBeText = m_uint64Policy == Uint64Policy::Text && ElementType(cimType) == CIM_UINT64;
        const long type = mayBeText ? cimType | kUint64OrText : cimType;
        return AddPropertyToRow(&row, name, value,
                                m_valuePolicy == ValuePolicy::Type ? type | kAsMeant : type);
    };
    return ExtractObjectProperties(object, objectPath, flags, add);
}

bool WmiConnector::AccumulateWmiClassObject(const CComPtr<IWbemClassObject>& object, DataTable* table,
                                            wchar_t* objectPath, bool returnQualifiers) {
    VariantList row;
    const bool succeeded = ReadRow(object, objectPath, returnQualifiers, row);
    if (row.Size() == 0 || table == nullptr) return succeeded;
    if (objectPath != nullptr) row.Add("ObjectPath", base::ToUtf8(objectPath));
    table->AddRow(std::move(row));
    return succeeded;
}

bool WmiConnector::ExtractObjectProperties(const CComPtr<IWbemClassObject>& object, const wchar_t*,
                                           unsigned long flags, const PropertyVisitor& visit) const {
    WmiNames names;
    const HRESULT listed = names.Read(*object, static_cast<LONG>(flags));
    if (FAILED(listed)) {
        HandleWbemError(L"enumerating WMI class object property names", listed);
        return false;
    }
    for (LONG i = names.First(); i <= names.Last(); ++i) {
        OwnedBstr name;
        HRESULT result = names.Get(i, name);
        if (FAILED(result)) {
            HandleWbemError(L"accessing array element for WMI class object property names", result);
            return false;
        }
        _variant_t value;
        CIMTYPE type = CIM_EMPTY;
        result = object->Get(name.get(), 0, &value, &type, nullptr);
        if (FAILED(result)) {
            HandleWbemError(L"reading WMI class object property value", result);
            return false;
        }
        if (!visit(name.get(), value, type)) return false;
    }
    return true;
}

bool WmiConnector::AddPropertyToRow(VariantList* row, wchar_t* const& name, const _variant_t& value,
                                    long cimType) {
    Variant cell = Variant::NullVariant(base::ToUtf8(name));
    if (value.vt == VT_NULL) {
        // stays null
    } else if (!IsArray(cimType)) {
        const auto meant = Unsigned(value, cimType);
        CimScalarValueToVariant(meant ? &*meant : &value, cimType & ~kAsMeant, cell);
    } else if ((value.vt & VT_ARRAY) == 0 || !HasOneDimension(value.parray)) {
        cell.SetStringValue("(array)");
    } else {
        cell.SetStringValue(ArrayText(value.parray, name, cimType, &CimScalarValueToVariant).Joined());
    }
    row->Add(std::move(cell));
    return true;
}

bool WmiConnector::CimScalarValueToVariant(const _variant_t* value, long cimType, Variant& out) {
    if (IsInteger(cimType)) {
        value == nullptr ? out.SetLongLongValue(0) : SetInteger(*value, cimType, out);
    } else if (IsReal(cimType)) {
        value == nullptr ? out.SetDoubleValue(0) : SetReal(*value, out);
    } else if (cimType == CIM_BOOLEAN) {
        out.SetBoolValue(value != nullptr && value->vt == VT_BOOL && value->boolVal == VARIANT_TRUE);
    } else if (cimType == CIM_DATETIME) {
        SetDateTime(value, out);
    } else if (cimType == CIM_REFERENCE) {
        out.SetStringValue(value != nullptr && value->vt == VT_BSTR ? VariantText(*value) : "(reference)");
    } else if (cimType == CIM_OBJECT) {
        out.SetStringValue("(object)");
    } else if (cimType == CIM_EMPTY || cimType == CIM_ILLEGAL) {
        out.SetStringValue("");
    } else {
        out.SetStringValue(value == nullptr ? std::string() : VariantText(*value));
    }
    return true;
}

}  // namespace quillon
