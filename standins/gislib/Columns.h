// The stand-in column and column list.
//
// ToXML(sIndent) gives one line per column, led by sIndent and ended by CR LF:
//   <Column Key="Yield" Name="" Description="" Type="5" Size="16" Precision="4" Flags="3"
//    Kind="1" Unit="12" Tag="" Visible="True" Active="True" Position="1"/>
// (all on one line), with Default="..." after Active when the column has a default. Texts
// are escaped: & < > " ' as entities, control characters as &#n;.
//
// LayoutText(sPrefix) gives one line per column, led by sPrefix and ended by CR LF:
//   Key;Type;Size;Precision;Flags;Kind;Unit;Visible;Active   e.g.  Yield;5;16;4;3;1;12;1;1
// where the key has "\" as "\\", ";" as "\;", CR as "\r" and LF as "\n", so that two layouts
// give the same text exactly when those nine attributes agree column by column (key case
// counts).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/GISLib.h"
#include "core/KeyedList.h"
#include "core/Variant.h"

namespace tnw::standins {

class Column final : public tnwColumn {
public:
    // The value starts as the default, or empty when there is none.
    Column(std::string_view sKey, std::string_view sName, std::string_view sDescription,
           std::int32_t lType, std::int16_t iSize, std::int16_t iPrecision, std::int32_t lFlags,
           std::int32_t lKind, std::int32_t lUnit, std::string_view sTag, bool bVisible,
           bool bActive, Variant vDefault = Variant::Absent());

    const std::string& Key() const override { return m_sKey; }
    const std::string& Name() const override { return m_sName; }
    const std::string& Description() const override { return m_sDescription; }
    std::int32_t Type() const override { return m_lType; }
    std::int16_t Size() const override { return m_iSize; }
    std::int16_t Precision() const override { return m_iPrecision; }
    std::int32_t Kind() const override { return m_lKind; }
    std::int32_t Flags() const override { return m_lFlags; }
    std::int32_t Unit() const override { return m_lUnit; }
    // A new stand-in unit of that number (veld/Unit.h) at each call.
    std::shared_ptr<tnwUnit> UnitObject() const override;
    const std::string& Tag() const override { return m_sTag; }
    bool Visible() const override { return m_bVisible; }
    void SetVisible(bool bVisible) override { m_bVisible = bVisible; }
    bool Active() const override { return m_bActive; }
    void SetActive(bool bActive) override { m_bActive = bActive; }
    const Variant& Default() const override { return m_vDefault; }

    std::int32_t Position() const override { return m_lPosition; }
    void SetPosition(std::int32_t lPosition) override { m_lPosition = lPosition; }

    const Variant& Value() const override { return m_vValue; }
    void SetValue(Variant vValue) override { m_vValue = std::move(vValue); }

    // The value as plain text (Variant::ToText).
    std::string Text() const override;
    std::string ToXML(std::string_view sIndent) const override;
    void SetSource(std::string_view sSource, std::int32_t lPosition) override;
    // What SetSource named last.
    const std::string& Source() const { return m_sSource; }

private:
    std::string m_sKey, m_sName, m_sDescription, m_sTag, m_sSource;
    std::int32_t m_lType, m_lFlags, m_lKind, m_lUnit;
    std::int16_t m_iSize, m_iPrecision;
    bool m_bVisible, m_bActive;
    Variant m_vDefault, m_vValue;
    std::int32_t m_lPosition = 0;
};

// Keys are unique without regard to case; the list keeps the order of addition.
class Columns final : public tnwColumns {
public:
    std::int32_t Count() const override { return m_oByKey.Count(); }
    std::shared_ptr<tnwColumn> Item(std::string_view sKey) const override;
    const std::vector<std::shared_ptr<tnwColumn>>& Items() const override { return m_aItems; }

    // A new Column whose Position is its place in the list (Count after adding).
    std::shared_ptr<tnwColumn> Add(std::string_view sKey, std::string_view sName,
                                   std::string_view sDescription, std::int32_t lType,
                                   std::int16_t iSize, std::int16_t iPrecision, std::int32_t lFlags,
                                   std::int32_t lKind, std::int32_t lUnit, std::string_view sTag,
                                   bool bVisible, bool bActive,
                                   const Variant& vDefault = Variant::Absent()) override;
    // Takes the column as it is, its Position included; error 91 for nothing.
    bool AddColumn(std::shared_ptr<tnwColumn> oColumn) override;
    void Clear() override;
    std::string LayoutText(std::string_view sPrefix) const override;

private:
    KeyedList<std::shared_ptr<tnwColumn>> m_oByKey;
    std::vector<std::shared_ptr<tnwColumn>> m_aItems;  // the same columns, in order
};

}  // namespace tnw::standins
