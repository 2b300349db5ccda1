#include "FGPSet.h"

#include <array>
#include <filesystem>
#include <optional>
#include <vector>

#include "Console.h"
#include "Convert.h"
#include "ExitCodes.h"
#include "core/Error.h"
#include "decoders/tnwFGPDecoder.h"
#include "fgp/FGPWriter.h"
#include "ogc_sf/WKT.h"
#include "shapefile/tnwShapeEncoder.h"

namespace tnw::cli {

namespace fs = std::filesystem;

namespace {

std::int16_t PhaseOfName(const std::string& sPhase) {
    constexpr std::array<const char*, 4> kNames = {"", "regions", "lines", "points"};
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        if (sPhase == kNames[i]) return static_cast<std::int16_t>(i);
    }
    throw Failure(kExitUsage, "--phase takes regions, lines or points, not \"" + sPhase + "\"");
}

// Names of a sample field in the .fsn table, and the other key it goes by as a reader's column.
struct SampleField {
    const char* sField;
    const char* sAlias;
};
constexpr SampleField kSampleFields[] = {
    {"Rate", "Rate_Act"}, {"Rx_Rate", "Rate_Rx"}, {"Swath_Width", "Swath"}, {"P_PARAM", ""},
    {"V_PARAM", ""},      {"NDVI", ""},           {"VI_2ND", ""},
};

// Columns whose values belong to the point records, not to a side table.
constexpr const char* kPointKeys[] = {"Longitude", "Latitude", "Altitude",   "UTCTime",
                                      "Heading",   "RegionID", "AttributeID"};

double NumberOf(const std::shared_ptr<tnwColumn>& oColumn) {
    if (!oColumn) return 0.0;
    try {
        return oColumn->Value().ToDouble();
    } catch (const Error&) {
        return 0.0;
    }
}

std::vector<standins::fgp::PointData> Vertices(const ILineString& oLine,
                                               const standins::fgp::PointData& tModel) {
    std::vector<standins::fgp::PointData> vVertices;
    for (std::int32_t i = 0; i < oLine.NumPoints(); ++i) {
        const auto oPoint = oLine.Point(i);
        auto& t = vVertices.emplace_back(tModel);
        t.dLongitude = oPoint->X();
        t.dLatitude = oPoint->Y();
    }
    return vVertices;
}

class FGPSetWriter final : public RecordWriter {
public:
    void Open(const OutputOptions& t, Input& tInput, Console& oConsole) override {
        m_sPath = t.sPath;
        if (fs::path(m_sPath).extension().string().size() != 4) m_sPath += ".fgp";
        const std::string sBase = m_sPath.substr(0, m_sPath.size() - 4);
        m_sFDT = sBase + ".fdt";
        m_sFSN = sBase + ".fsn";

        const auto oInput = tInput.oSource->Columns();
        m_oAttributeInput = NewColumns();
        for (const auto& oColumn : oInput->Items()) {
            if (!oColumn->Visible() || IsPointKey(oColumn->Key())) continue;
            if (!SampleOf(oColumn->Key())) m_oAttributeInput->AddColumn(oColumn);
        }
        const auto oAttributes = TableColumns(*m_oAttributeInput);
        auto oSamples = NewColumns();
        for (const SampleField& tField : kSampleFields) {
            auto oSource = oInput->Item(tField.sField);
            if (!oSource && *tField.sAlias) oSource = oInput->Item(tField.sAlias);
            if (!oSource) continue;
            m_vSamples.emplace_back(oSource, oSamples->Add(tField.sField, "", "", vtDouble, 14, 4,
                                                           tnwFlagNumeric, 1, 16, "", true, true));
        }
        for (std::size_t i = 0; i < m_aPointColumns.size(); ++i)
            m_aPointColumns[i] = oInput->Item(kPointKeys[i]);

        m_oMain.emplace(m_sPath);
        m_oAttributeColumns = oAttributes;
        OpenTable(m_oAttributes, oAttributes, m_sFDT, oConsole);
        if (!m_vSamples.empty()) OpenTable(m_oSamples, oSamples, m_sFSN, oConsole);
    }

    bool Write(const std::shared_ptr<IGeometry>& oGeometry) override {
        standins::fgp::PointData tModel;
        tModel.lAttributeID = static_cast<std::int32_t>(m_lRows + 1);
        tModel.lFSNRecord = m_vSamples.empty() ? 0 : tModel.lAttributeID;
        tModel.dAltitude = NumberOf(m_aPointColumns[2]);
        tModel.dTime = NumberOf(m_aPointColumns[3]);
        tModel.dHeading = NumberOf(m_aPointColumns[4]);
        tModel.lRegionID = static_cast<std::int32_t>(NumberOf(m_aPointColumns[5]));
        std::vector<Part> vParts;
        Collect(oGeometry, tModel, vParts);
        if (vParts.empty()) return false;

        for (const auto& [oSource, oField] : m_vSamples)
            oField->SetValue(oSource->Value());
        const auto& vFrom = m_oAttributeInput->Items();
        const auto& vTo = m_oAttributeColumns->Items();
        for (std::size_t i = 0; i < vFrom.size() && i < vTo.size(); ++i)
            vTo[i]->SetValue(vFrom[i]->Value());
        const bool bRows = m_oAttributes.Update() && (m_vSamples.empty() || m_oSamples.Update());
        ++m_lRows;
        for (const Part& tPart : vParts) {
            switch (tPart.eKind) {
                case tnwGeometryRegion:
                    m_oMain->AddRegion(tPart.vVertices);
                    break;
                case tnwGeometryLine:
                    m_oMain->AddLine(tPart.vVertices);
                    break;
                default:
                    m_oMain->AddPoint(tPart.vVertices.front());
                    break;
            }
            ++m_aCounts[tPart.eKind == tnwGeometryRegion ? 0
                        : tPart.eKind == tnwGeometryLine ? 1
                                                         : 2];
        }
        return bRows;
    }

    void Close(std::int64_t lWritten) override {
        m_oAttributes.CloseFiles();
        if (!m_vSamples.empty()) m_oSamples.CloseFiles();
        try {
            m_oMain->Close();
        } catch (const Error& oError) {
            throw Failure(kExitOutput, "can't finish " + m_sPath + ": " + oError.sDescription);
        }
        for (const auto& [sTemporary, sFinal] :
             {std::pair(m_sFDT + kTemporary, m_sFDT), std::pair(m_sFSN + kTemporary, m_sFSN)}) {
            std::error_code ec;
            if (fs::exists(sTemporary + ".dbf", ec)) fs::rename(sTemporary + ".dbf", sFinal, ec);
            if (ec) throw Failure(kExitOutput, "can't finish " + sFinal + ": " + ec.message());
        }
        if (lWritten != m_lRows) {
            throw Failure(kExitOutput, "the output " + m_sPath + " could not be finished");
        }
    }

    std::vector<fs::path> Files() const override {
        std::vector<fs::path> vFiles = {m_sPath, m_sFDT};
        if (!m_vSamples.empty()) vFiles.emplace_back(m_sFSN);
        return vFiles;
    }
    std::vector<fs::path> Targets(const std::string& sOutput) const override {
        const std::string sBase = sOutput.substr(0, sOutput.size() - 4);
        return {fs::path(sOutput), fs::path(sBase + ".fdt"), fs::path(sBase + ".fsn")};
    }
    std::string Detail() const override {
        return ", " + std::to_string(m_aCounts[0]) + " regions, " + std::to_string(m_aCounts[1]) +
               " lines, " + std::to_string(m_aCounts[2]) + " points";
    }

private:
    // The tables are written under a name of their own and take theirs at Close.
    static constexpr const char* kTemporary = "~tmp";

    static std::shared_ptr<tnwColumns> NewColumns() {
        return CreateAs<tnwColumns>(kProgIdColumns, "Missing Component");
    }
    static bool IsPointKey(const std::string& sKey) {
        for (const char* s : kPointKeys) {
            if (FoldCaseEquals(sKey, s)) return true;
        }
        return false;
    }
    static bool SampleOf(const std::string& sKey) {
        for (const SampleField& t : kSampleFields) {
            if (FoldCaseEquals(sKey, t.sField) || (*t.sAlias && FoldCaseEquals(sKey, t.sAlias))) {
                return true;
            }
        }
        return false;
    }
    static void OpenTable(tnwShapeEncoder& oTable, const std::shared_ptr<tnwColumns>& oColumns,
                          const std::string& sPath, Console& oConsole) {
        oTable.SetBlankEmptyValues(true);
        if (!oTable.Initialize(sPath + kTemporary, oColumns, static_cast<tnwGeometryType>(0))) {
            const std::string sBox = oConsole.TakeBoxText();
            throw Failure(kExitOutput,
                          "can't create " + sPath + (sBox.empty() ? "" : " (" + sBox + ")"));
        }
    }

    struct Part {
        tnwGeometryType eKind;
        std::vector<standins::fgp::PointData> vVertices;
    };

    // The geometry's points, lines and rings, each a part of the set.
    static void Collect(const std::shared_ptr<IGeometry>& oGeometry,
                        const standins::fgp::PointData& tModel, std::vector<Part>& vParts) {
        if (const auto oPoint = std::dynamic_pointer_cast<IPoint>(oGeometry)) {
            auto t = tModel;
            t.dLongitude = oPoint->X();
            t.dLatitude = oPoint->Y();
            vParts.push_back({tnwGeometryPoint, {t}});
        } else if (const auto oLine = std::dynamic_pointer_cast<ILineString>(oGeometry)) {
            vParts.push_back({tnwGeometryLine, Vertices(*oLine, tModel)});
        } else if (const auto oPolygon = std::dynamic_pointer_cast<IPolygon>(oGeometry)) {
            vParts.push_back({tnwGeometryRegion, Vertices(*oPolygon->ExteriorRing(), tModel)});
            for (std::int32_t i = 0; i < oPolygon->NumInteriorRings(); ++i)
                vParts.push_back({tnwGeometryRegion, Vertices(*oPolygon->InteriorRing(i), tModel)});
        } else if (const auto oCollection =
                       std::dynamic_pointer_cast<IGeometryCollection>(oGeometry)) {
            for (std::int32_t i = 0; i < oCollection->NumGeometries(); ++i)
                Collect(oCollection->Geometry(i), tModel, vParts);
        }
    }

    std::string m_sPath, m_sFDT, m_sFSN;
    std::optional<standins::FGPWriter> m_oMain;
    tnwShapeEncoder m_oAttributes;
    std::shared_ptr<tnwColumns> m_oAttributeInput;    // the input's columns that go to the .fdt
    std::shared_ptr<tnwColumns> m_oAttributeColumns;  // and their fields there
    tnwShapeEncoder m_oSamples;
    std::vector<std::pair<std::shared_ptr<tnwColumn>, std::shared_ptr<tnwColumn>>> m_vSamples;
    std::array<std::shared_ptr<tnwColumn>, std::size(kPointKeys)> m_aPointColumns;
    std::int64_t m_lRows = 0;
    std::array<std::int64_t, 3> m_aCounts{};  // regions, lines, points
};

}  // namespace

void OpenFGP(const InputOptions& tOptions, Input& tInput) {
    const std::int16_t iPhase = PhaseOfName(tOptions.sPhase);
    // The main file is checked first, so that a damaged one is told in one sentence.
    const auto oMainFile = CreateAs<tnwFGPFile>(kProgIdFGPFile, "Missing Component");
    if (!oMainFile) throw Failure(kExitInternal, "no reader of FGP main files");
    oMainFile->Open(tOptions.sPath);
    auto oSet = std::make_shared<tnwFGPDecoder>();
    oSet->SetAsSites(tOptions.bAsSites);
    oSet->SetEmptyMissingRows(true);
    oSet->SetPointColumns(true);
    oSet->SetFilename(tOptions.sPath);
    if (!oSet->IsValidFile()) {
        throw Failure(kExitInput, "can't read " + tOptions.sPath + " as an FGP set");
    }
    // The log-shaped columns the set never fills stay out of the output; the altitude is filled.
    for (const char* sKey : {"SampleID", "RecordID", "GPSSpeed", "GPSHeading"})
        oSet->Columns()->Item(sKey)->SetVisible(false);
    oSet->Columns()->Item("Altitude")->SetVisible(true);
    // A number column that the set leaves at its empty-text default is empty, not a text.
    for (const auto& oColumn : oSet->Columns()->Items()) {
        if (oColumn->Type() != vtString && oColumn->Value() == Variant(std::string())) {
            oColumn->SetValue(Variant());
        }
    }
    tInput.eFormat = TNW_GeometryFormat_WKT;
    tInput.oSource = std::make_shared<tnwDecoderRecordSource>(
        oSet, [](std::string_view sWKT) { return standins::ParseWKT(sWKT); }, iPhase);
}

std::unique_ptr<RecordWriter> NewFGPSetWriter() {
    return std::make_unique<FGPSetWriter>();
}

}  // namespace tnw::cli
