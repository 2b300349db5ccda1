#include "gislib/Columns.h"

#include "core/Error.h"
#include "veld/Unit.h"

namespace tnw::standins {

namespace {

void AppendEscapedXML(std::string& sOut, std::string_view sText) {
    for (char c : sText) {
        switch (c) {
            case '&':
                sOut += "&amp;";
                break;
            case '<':
                sOut += "&lt;";
                break;
            case '>':
                sOut += "&gt;";
                break;
            case '"':
                sOut += "&quot;";
                break;
            case '\'':
                sOut += "&apos;";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) {
                    sOut += "&#" + std::to_string(static_cast<unsigned char>(c)) + ";";
                } else {
                    sOut += c;
                }
        }
    }
}

void AppendAttribute(std::string& sOut, std::string_view sName, std::string_view sValue) {
    sOut += ' ';
    sOut += sName;
    sOut += "=\"";
    AppendEscapedXML(sOut, sValue);
    sOut += '"';
}

void AppendAttribute(std::string& sOut, std::string_view sName, std::int32_t lValue) {
    AppendAttribute(sOut, sName, std::to_string(lValue));
}

void AppendAttribute(std::string& sOut, std::string_view sName, bool bValue) {
    AppendAttribute(sOut, sName, std::string_view(bValue ? "True" : "False"));
}

// The key with "\", ";", CR and LF escaped, so the separators of a layout line stay unique.
void AppendEscapedKey(std::string& sOut, std::string_view sKey) {
    for (char c : sKey) {
        switch (c) {
            case '\\':
                sOut += "\\\\";
                break;
            case ';':
                sOut += "\\;";
                break;
            case '\r':
                sOut += "\\r";
                break;
            case '\n':
                sOut += "\\n";
                break;
            default:
                sOut += c;
        }
    }
}

}  // namespace

// ---- Column ----

Column::Column(std::string_view sKey, std::string_view sName, std::string_view sDescription,
               std::int32_t lType, std::int16_t iSize, std::int16_t iPrecision, std::int32_t lFlags,
               std::int32_t lKind, std::int32_t lUnit, std::string_view sTag, bool bVisible,
               bool bActive, Variant vDefault)
    : m_sKey(sKey),
      m_sName(sName),
      m_sDescription(sDescription),
      m_sTag(sTag),
      m_lType(lType),
      m_lFlags(lFlags),
      m_lKind(lKind),
      m_lUnit(lUnit),
      m_iSize(iSize),
      m_iPrecision(iPrecision),
      m_bVisible(bVisible),
      m_bActive(bActive),
      m_vDefault(std::move(vDefault)) {
    if (!m_vDefault.IsAbsent()) m_vValue = m_vDefault;
}

std::shared_ptr<tnwUnit> Column::UnitObject() const {
    return std::make_shared<standins::Unit>(m_lUnit);
}

std::string Column::Text() const {
    return m_vValue.ToText();
}

std::string Column::ToXML(std::string_view sIndent) const {
    std::string sXML(sIndent);
    sXML += "<Column";
    AppendAttribute(sXML, "Key", m_sKey);
    AppendAttribute(sXML, "Name", m_sName);
    AppendAttribute(sXML, "Description", m_sDescription);
    AppendAttribute(sXML, "Type", m_lType);
    AppendAttribute(sXML, "Size", std::int32_t{m_iSize});
    AppendAttribute(sXML, "Precision", std::int32_t{m_iPrecision});
    AppendAttribute(sXML, "Flags", m_lFlags);
    AppendAttribute(sXML, "Kind", m_lKind);
    AppendAttribute(sXML, "Unit", m_lUnit);
    AppendAttribute(sXML, "Tag", m_sTag);
    AppendAttribute(sXML, "Visible", m_bVisible);
    AppendAttribute(sXML, "Active", m_bActive);
    if (!m_vDefault.IsAbsent() && !m_vDefault.IsEmpty())
        AppendAttribute(sXML, "Default", m_vDefault.ToText());
    AppendAttribute(sXML, "Position", m_lPosition);
    sXML += "/>\r\n";
    return sXML;
}

void Column::SetSource(std::string_view sSource, std::int32_t lPosition) {
    m_sSource = sSource;
    m_lPosition = lPosition;
}

// ---- Columns ----

std::shared_ptr<tnwColumn> Columns::Item(std::string_view sKey) const {
    const auto* pColumn = m_oByKey.Find(sKey);
    return pColumn ? *pColumn : nullptr;
}

std::shared_ptr<tnwColumn> Columns::Add(std::string_view sKey, std::string_view sName,
                                        std::string_view sDescription, std::int32_t lType,
                                        std::int16_t iSize, std::int16_t iPrecision,
                                        std::int32_t lFlags, std::int32_t lKind, std::int32_t lUnit,
                                        std::string_view sTag, bool bVisible, bool bActive,
                                        const Variant& vDefault) {
    if (m_oByKey.Contains(sKey)) return nullptr;
    auto oColumn =
        std::make_shared<Column>(sKey, sName, sDescription, lType, iSize, iPrecision, lFlags, lKind,
                                 lUnit, sTag, bVisible, bActive, vDefault);
    oColumn->SetPosition(Count() + 1);
    AddColumn(oColumn);
    return oColumn;
}

bool Columns::AddColumn(std::shared_ptr<tnwColumn> oColumn) {
    if (!oColumn) Raise(errObjectNotSet, "tnwGIS.tnwColumns");
    if (!m_oByKey.Add(oColumn->Key(), oColumn)) return false;
    m_aItems.push_back(std::move(oColumn));
    return true;
}

void Columns::Clear() {
    m_oByKey.Clear();
    m_aItems.clear();
}

std::string Columns::LayoutText(std::string_view sPrefix) const {
    std::string sText;
    for (const auto& oColumn : m_aItems) {
        sText += sPrefix;
        AppendEscapedKey(sText, oColumn->Key());
        for (std::int32_t lValue :
             {oColumn->Type(), std::int32_t{oColumn->Size()}, std::int32_t{oColumn->Precision()},
              oColumn->Flags(), oColumn->Kind(), oColumn->Unit(), std::int32_t{oColumn->Visible()},
              std::int32_t{oColumn->Active()}}) {
            sText += ';';
            sText += std::to_string(lValue);
        }
        sText += "\r\n";
    }
    return sText;
}

}  // namespace tnw::standins
