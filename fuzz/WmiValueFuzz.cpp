#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "Require.h"
#include "platform/Wbem.h"
#include "providers/WmiCimTypes.h"
#include "providers/WmiOwners.h"
#include "quillon/WmiConnector.h"
#include "simulation/wmi/WmiRepository.h"

// The input is a CIM type, a variant type, whether it is an array, and what the value or its elements hold.
// Whatever a provider answers, a query gives one cell of the kind that the type says, or one of the errors
// that are prescribed.

namespace {

using namespace quillon;

const CIMTYPE kTypes[] = {CIM_EMPTY,   CIM_SINT16, CIM_SINT32,   CIM_REAL32,    CIM_REAL64, CIM_STRING,
                          CIM_BOOLEAN, CIM_OBJECT, CIM_SINT8,    CIM_UINT8,     CIM_UINT16, CIM_UINT32,
                          CIM_SINT64,  CIM_UINT64, CIM_DATETIME, CIM_REFERENCE, CIM_CHAR16, CIM_ILLEGAL};
const VARTYPE kHeld[] = {VT_EMPTY, VT_NULL, VT_I1, VT_UI1, VT_I2,   VT_UI2,  VT_I4, VT_UI4,
                         VT_I8,    VT_UI8,  VT_R4, VT_R8,  VT_BSTR, VT_BOOL, VT_CY, VT_DATE};
constexpr std::size_t kNumber = 8;

template <class T, std::size_t N>
T Pick(const T (&from)[N], std::uint8_t byte) {
    return from[byte % N];
}

std::wstring Text(const std::uint8_t* data, std::size_t size) {
    std::wstring text;
    for (std::size_t i = 0; i < size; ++i) {
        // A byte in front of two makes them one unit.
        const bool isWide = data[i] == 0xFF && i + 2 < size;
        text += static_cast<wchar_t>(isWide ? data[i + 1] << 8 | data[i + 2] : data[i]);
        if (isWide) i += 2;
    }
    return text;
}

_variant_t Value(VARTYPE type, const std::uint8_t* data, std::size_t size) {
    if (type == VT_BSTR) return TextVariant(Text(data, size));
    _variant_t value;
    if (size != 0) std::memcpy(&value.llVal, data, std::min(size, kNumber));
    value.vt = type;
    return value;
}

_variant_t Array(VARTYPE type, const std::uint8_t* data, std::size_t size) {
    const std::size_t width = type == VT_BSTR ? 3 : kNumber;
    OwnedArray array(::SafeArrayCreateVector(type, 1, static_cast<ULONG>(size / width)));
    for (LONG i = 1; array != nullptr && i <= static_cast<LONG>(size / width); ++i) {
        _variant_t element = Value(type, data + static_cast<std::size_t>(i - 1) * width, width);
        void* const source = type == VT_BSTR ? static_cast<void*>(element.bstrVal) : &element.llVal;
        Require(::SafeArrayPutElement(array.get(), &i, source) == S_OK);
    }
    _variant_t value;
    if (array == nullptr) return value;
    value.vt = static_cast<VARTYPE>(VT_ARRAY | type);
    value.parray = array.release();
    return value;
}

void Check(CIMTYPE type, const _variant_t& value, const Variant& cell) {
    Require(cell.GetName() == "V");
    if (value.vt == VT_NULL || value.vt == VT_EMPTY) return;
    if (IsArray(type)) return Require(cell.TypeIs(typeid(std::string)));
    const bool isText = cell.TypeIs(typeid(std::string));
    if (IsReal(type)) return Require(cell.TypeIs(typeid(double)));
    if (type == CIM_BOOLEAN) return Require(cell.TypeIs(typeid(bool)));
    Require(IsInteger(type) ? cell.TypeIs(typeid(long long)) || (type == CIM_UINT64 && isText) : isText);
}

void Query(simulation::WmiRepository& repository, CIMTYPE type, const _variant_t& value,
           WmiConnector::ValuePolicy policy) {
    repository.AddClass(L"ROOT\\fuzz", {L"One", {{L"V", type, value}}, {}});
    repository.AddInstance(L"ROOT\\fuzz", L"One", {});
    WmiConnector connector(nullptr);
    connector.SetUint64Policy(WmiConnector::Uint64Policy::Text);
    connector.SetValuePolicy(policy);
    Require(connector.Connect("ROOT\\fuzz"));
    DataTable table;
    try {
        Require(connector.ExecuteQuery("SELECT * FROM One", &table) && table.GetNumberOfRows() == 1);
        Check(type, value, table.begin()->Get(0));
    } catch (const std::logic_error& error) {  // no number, or none that fits
        Require(std::strstr(error.what(), "sto") != nullptr);
    } catch (const std::runtime_error& error) {  // a type that has no text
        Require(std::strncmp(error.what(), "COM error", 9) == 0);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static simulation::WmiRepository& repository = *new simulation::WmiRepository;
    static const bool isReplaced = (platform::ReplaceWbemCalls(repository.Calls()), true);
    if (size < 3 || !isReplaced) return 0;
    const CIMTYPE type = Pick(kTypes, data[0]) | ((data[2] & 1) != 0 ? kArrayFlag : 0);
    const VARTYPE held = Pick(kHeld, data[1]);
    const bool isArray = (data[2] & 2) != 0;
    const auto policy =
        (data[2] & 4) != 0 ? WmiConnector::ValuePolicy::Type : WmiConnector::ValuePolicy::Form;
    Query(repository, type, isArray ? Array(held, data + 3, size - 3) : Value(held, data + 3, size - 3),
          policy);
    Require(repository.LiveObjects() == 0);
    return 0;
}
