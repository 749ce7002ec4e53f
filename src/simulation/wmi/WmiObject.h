#pragma once

#include "simulation/wmi/WbemObject.h"

namespace quillon::simulation {

/// A class, an instance, or parameters of a method. Names are found without regard to case; Put converts
/// to the property's type.
class WmiObject final : public WbemObject<IWbemClassObject> {
public:
    enum class Kind { Class, Instance };

    WmiObject(const std::shared_ptr<WmiState>& state, Kind kind, WmiSchemaPtr schema, WmiShapePtr shape,
              WmiRowPtr row);

    HRESULT Get(const wchar_t* name, LONG flags, VARIANT* value, CIMTYPE* type, LONG* flavor) override;
    /// WBEM_E_NOT_FOUND for a property that an instance does not have; a class gets it, of `type`.
    HRESULT Put(const wchar_t* name, LONG flags, VARIANT* value, CIMTYPE type) override;
    HRESULT GetNames(const wchar_t* qualifier, LONG flags, VARIANT* qualifierValue,
                     SAFEARRAY** names) override;
    /// Works for a class only.
    HRESULT SpawnInstance(LONG flags, IWbemClassObject** instance) override;
    /// Works for a class only.
    HRESULT GetMethod(const wchar_t* name, LONG flags, IWbemClassObject** in,
                      IWbemClassObject** out) override;

    bool IsClass() const { return m_kind == Kind::Class; }
    const WmiSchemaPtr& Schema() const { return m_schema; }
    bool ShowsPath() const;
    WmiRowPtr Row() const;

private:
    ~WmiObject() override = default;

    HRESULT GiveSystemProperty(const wchar_t* name, VARIANT* value, CIMTYPE* type, LONG* flavor) const;
    HRESULT Replace(const WmiShape::Property& property, const VARIANT& value);
    HRESULT Append(const wchar_t* name, const VARIANT& value, CIMTYPE type);
    HRESULT GiveClass(const WmiSchemaPtr& schema, IWbemClassObject** object) const;

    const Kind m_kind;
    const WmiSchemaPtr m_schema;
    WmiShapePtr m_shape;  // this and the row under the state's mutex
    WmiRowPtr m_row;
};

}  // namespace quillon::simulation
