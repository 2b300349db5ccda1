#include "Writers.h"

#include <algorithm>

#include "Console.h"
#include "Convert.h"
#include "ExitCodes.h"
#include "FileKind.h"
#include "Input.h"
#include "core/Component.h"
#include "core/Error.h"
#include "core/VELDLib.h"
#include "encoders/tnwASCIIEncoder.h"
#include "encoders/tnwFSEncoder.h"
#include "encoders/tnwGPLEncoder.h"
#include "gislib/Projection.h"
#include "platform/File.h"
#include "shapefile/tnwShapeEncoder.h"

namespace tnw::cli {

namespace fs = std::filesystem;

namespace {

// What a failed Initialize told in its box, as the end of a sentence.
std::string BoxDetail(Console& oConsole) {
    std::string sBox = oConsole.TakeBoxText();
    return sBox.empty() ? std::string() : " (" + sBox + ")";
}

// A writer of one file through an encoder that takes each record by SetGeometry and Update.
template <class Encoder>
class OneFileWriter : public RecordWriter {
public:
    bool Write(const std::shared_ptr<IGeometry>& oGeometry) override {
        m_oEncoder.SetGeometry(oGeometry);
        return m_oEncoder.Update();
    }
    void Close(std::int64_t) override { m_oEncoder.CloseFiles(); }
    std::vector<fs::path> Files() const override { return {fs::path(m_oEncoder.Filename())}; }
    std::vector<fs::path> Targets(const std::string& sOutput) const override {
        return {fs::path(sOutput)};
    }

protected:
    // Creates the file once the encoder is set up.
    void Create(const OutputOptions& t, Input& tInput, Console& oConsole) {
        if (!m_oEncoder.InitializeFile(t.sPath, tInput.oSource->Columns())) {
            throw Failure(kExitOutput, "can't create " + t.sPath + BoxDetail(oConsole));
        }
    }

    Encoder m_oEncoder;
};

class TextWriter final : public OneFileWriter<tnwASCIIEncoder> {
public:
    void Open(const OutputOptions& t, Input& tInput, Console& oConsole) override {
        m_oEncoder.SetHeader(!t.bNoHeader);
        m_oEncoder.SetDelimiter(t.sDelimiter.empty() ? std::string(",") : t.sDelimiter);
        m_oEncoder.SetIncludeGeometry(
            t.bGeometryText.value_or(tInput.eFormat == TNW_GeometryFormat_WKT));
        m_oEncoder.SetIncludeLonLat(
            t.bLonLat.value_or(tInput.eFormat == TNW_GeometryFormat_LonLat));
        m_oEncoder.SetIncludeInvisible(t.bIncludeInvisible);
        m_oEncoder.SetBlankEmptyValues(true);
        m_oEncoder.SetExactLonLat(true);
        Create(t, tInput, oConsole);
    }
};

// A GPL log under the name given, extension and all, in one start/stop stretch, so that the
// tool reads back what it wrote. The position comes from a record's point, else from the
// columns keyed Latitude and Longitude.
class LogWriter final : public OneFileWriter<tnwGPLEncoder> {
public:
    void Open(const OutputOptions& t, Input& tInput, Console& oConsole) override {
        m_oEncoder.SetKeepExtension(true);
        m_oEncoder.SetPositionFromPoint(true);
        m_oEncoder.SetWriteStartStop(true);
        Create(t, tInput, oConsole);
    }
};

const char* NameOfGeometryType(std::int32_t eType) {
    switch (eType) {
        case tnwGeometryPoint:
            return "points";
        case tnwGeometryLine:
            return "lines";
        case tnwGeometryRegion:
            return "polygons";
        case tnwGeometryMultiPoint:
            return "multipoints";
        default:
            return "no geometry";
    }
}

tnwGeometryType GeometryTypeOfName(const std::string& sName) {
    if (sName == "point") return tnwGeometryPoint;
    if (sName == "line") return tnwGeometryLine;
    if (sName == "region") return tnwGeometryRegion;
    if (sName == "multipoint") return tnwGeometryMultiPoint;
    return static_cast<tnwGeometryType>(0);
}

// "utm:15n", "utm:33s", "webmercator", "wgs84" or "epsg:<code>".
std::shared_ptr<tnwProjection> ParseProjection(const std::string& sText) {
    using standins::SpatialReference;
    std::string s;
    for (char c : sText)
        s += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    std::shared_ptr<SpatialReference> oReference;
    try {
        if (s == "wgs84") {
            oReference = SpatialReference::Wgs84();
        } else if (s == "webmercator") {
            oReference = SpatialReference::WebMercator();
        } else if (s.starts_with("epsg:") && s.size() > 5 &&
                   s.find_first_not_of("0123456789", 5) == std::string::npos && s.size() <= 10) {
            oReference = SpatialReference::FromEPSG(std::stoi(s.substr(5)));
        } else if (s.starts_with("utm:") && s.size() >= 6 && (s.back() == 'n' || s.back() == 's')) {
            const std::string sZone = s.substr(4, s.size() - 5);
            if (!sZone.empty() && sZone.size() <= 2 &&
                sZone.find_first_not_of("0123456789") == std::string::npos) {
                oReference = SpatialReference::Utm(std::stoi(sZone), s.back() == 'n');
            }
        }
    } catch (const Error&) {
        oReference = nullptr;
    }
    if (!oReference) {
        throw Failure(kExitUsage, "unknown projection \"" + sText +
                                      "\"; use utm:<zone><n|s>, webmercator, wgs84 or epsg:<code>");
    }
    return std::make_shared<standins::Projection>(oReference);
}

std::int64_t TableRecordCount(const std::string& sTable) {
    auto oTable = std::make_shared<tnwDBFDecoder>();
    oTable->SetFilename(sTable);
    return tnwDecoderRecordSource(oTable).RecordCount();
}

// A shapefile set, or its .dbf alone for a table.
class ShapeSetWriter final : public RecordWriter {
public:
    explicit ShapeSetWriter(bool bTableOnly) : m_bTableOnly(bTableOnly) {}

    void Open(const OutputOptions& t, Input& tInput, Console& oConsole) override {
        if (!m_bTableOnly) {
            m_eType = t.sGeometry.empty() ? tInput.oSource->GeometryType()
                                          : GeometryTypeOfName(t.sGeometry);
            if (m_eType == 0 && t.sGeometry != "none") {
                throw Failure(kExitUsage,
                              tInput.sPath +
                                  " has no geometry that the tool can find; give "
                                  "--lon-col and --lat-col or --wkt-col, or write a .dbf");
            }
            if (t.bCentroids) m_eType = tnwGeometryPoint;
            if (!t.sProjection.empty() && m_eType != tnwGeometryRegion &&
                m_eType != tnwGeometryPoint) {
                throw Failure(kExitUsage, "--projection applies to points and polygons only");
            }
        }
        m_oEncoder.SetUniqueFieldNames(true);
        // A row whose position is empty has no place, and goes out without one; a geometry
        // text that can't be read is a fault of the row, which is left out and told.
        m_oEncoder.SetWriteNullShapes(tInput.eFormat == TNW_GeometryFormat_LonLat);
        m_oEncoder.SetProjectPoints(true);
        m_oEncoder.SetPrjFromProjection(true);
        m_oEncoder.SetGeometryType(static_cast<tnwGeometryType>(m_eType));
        m_oEncoder.SetXOffset(t.dXOffset.value_or(0.0));
        m_oEncoder.SetYOffset(t.dYOffset.value_or(0.0));
        m_oEncoder.SetExportCentroids(t.bCentroids);
        m_oEncoder.SetIncludeInvisible(t.bIncludeInvisible);
        if (!t.sProjection.empty()) m_oEncoder.SetProjection(ParseProjection(t.sProjection));
        m_oEncoder.SetBlankEmptyValues(true);
        m_oInput = tInput.oSource->Columns();
        m_oColumns = TableColumns(*m_oInput);
        m_pConsole = &oConsole;
        if (!m_oEncoder.Initialize(t.sPath, m_oColumns, static_cast<tnwGeometryType>(m_eType))) {
            throw Failure(kExitOutput, "can't create " + t.sPath + BoxDetail(oConsole));
        }
    }
    bool Write(const std::shared_ptr<IGeometry>& oGeometry) override {
        const auto& vInput = m_oInput->Items();
        const auto& vOutput = m_oColumns->Items();
        for (std::size_t i = 0; i < vInput.size() && i < vOutput.size(); ++i)
            vOutput[i]->SetValue(vInput[i]->Value());
        m_oEncoder.SetGeometry(oGeometry);
        if (!m_oEncoder.Update()) return false;
        for (const std::string& sKey : m_oEncoder.CutColumns()) {
            m_pConsole->Report(m_oEncoder.Filename() + ".dbf",
                               "the value of " + sKey + " does not fit its field of " +
                                   std::to_string(m_oColumns->Item(sKey)->Size()) +
                                   " bytes and was cut");
        }
        return true;
    }
    void Close(std::int64_t lWritten) override {
        m_oEncoder.CloseFiles();
        WriteCodePageFile();
        // The table's header tells what the set really holds.
        if (TableRecordCount(m_oEncoder.Filename() + ".dbf") != lWritten) {
            throw Failure(kExitOutput,
                          "the output " + m_oEncoder.Filename() + " could not be finished");
        }
    }
    std::vector<fs::path> Files() const override {
        const std::string& sWritten = m_oEncoder.Filename();
        std::vector<fs::path> vFiles;
        for (const char* sExtension : {".shp", ".shx", ".dbf", ".prj", ".mcd", ".cpg"}) {
            if (m_eType == 0 && std::string_view(sExtension) != ".dbf" &&
                std::string_view(sExtension) != ".cpg")
                continue;
            fs::path oPath(sWritten + sExtension);
            std::error_code ec;
            if (fs::exists(oPath, ec)) vFiles.push_back(oPath);
        }
        return vFiles;
    }
    std::vector<fs::path> Targets(const std::string& sOutput) const override {
        fs::path oBase(sOutput);
        if (oBase.extension().string().size() == 4) oBase.replace_extension();
        std::vector<fs::path> vTargets;
        for (const char* sExtension : {".shp", ".shx", ".dbf"}) {
            vTargets.emplace_back(oBase.string() + sExtension);
        }
        return vTargets;
    }
    std::string Detail() const override {
        return m_bTableOnly ? std::string() : std::string(", ") + NameOfGeometryType(m_eType);
    }
    void WriteSummary(const OutputOptions& t, std::shared_ptr<VELDSummary> oSummary,
                      Console& oConsole) override {
        if (m_bTableOnly) RecordWriter::WriteSummary(t, std::move(oSummary), oConsole);
        m_eType = tnwGeometryPoint;
        // The fixed columns are narrow: a value rounds to its field or fails, never loses digits.
        m_oEncoder.SetFitNumbersToFields(true);
        m_oEncoder.SetXOffset(t.dXOffset.value_or(0.0));
        m_oEncoder.SetYOffset(t.dYOffset.value_or(0.0));
        if (m_oEncoder.ExportVELDSummary(oConsole.Progress("writing"), oSummary, t.sPath)) return;
        const std::string sBox = BoxDetail(oConsole);
        // A summary cut short must not pass for the whole one.
        m_oEncoder.CloseFiles();
        for (const char* sExtension : {".shp", ".shx", ".dbf", ".prj", ".mcd"}) {
            std::error_code ec;
            fs::remove(m_oEncoder.Filename() + sExtension, ec);
        }
        throw Failure(kExitOutput, "can't write the summary to " + t.sPath + sBox);
    }

private:
    // The table's text is UTF-8, the tool's narrow code page; the .cpg says so to readers.
    void WriteCodePageFile() const {
        const std::string sPath = m_oEncoder.Filename() + ".cpg";
        try {
            platform::OutputFile oFile;
            oFile.Open(sPath);
            oFile.Write("UTF-8");
            oFile.Close();
        } catch (const Error& oError) {
            throw Failure(kExitOutput, "can't write " + sPath + ": " + oError.sDescription);
        }
    }

    bool m_bTableOnly;
    std::int32_t m_eType = 0;
    tnwShapeEncoder m_oEncoder;
    std::shared_ptr<tnwColumns> m_oInput;    // the input's columns, holding each record
    std::shared_ptr<tnwColumns> m_oColumns;  // the table's, sized to hold the values
    Console* m_pConsole = nullptr;
};

// A plan-grid file: every polygon record with the rate of the --rate column. The encoder reads
// the rate from a column list of its own, holding the value as a number, so that a text column
// of numbers (delimited text without units gives one) serves as well as a numeric one. A plan
// that is not finished by Close is removed: its header would claim records it lacks.
class PlanWriter final : public RecordWriter {
public:
    ~PlanWriter() override {
        if (m_bFinished || m_oEncoder.Filename().empty()) return;
        m_oEncoder.CloseFiles();
        std::error_code ec;
        fs::remove(m_oEncoder.Filename(), ec);
    }

    void Open(const OutputOptions& t, Input& tInput, Console& oConsole) override {
        m_pConsole = &oConsole;
        m_sInput = tInput.sPath;
        if (t.sRate.empty()) {
            throw Failure(kExitUsage,
                          "a plan-grid file needs --rate COLUMN, the column of the rates");
        }
        const auto oColumns = tInput.oSource->Columns();
        m_oRateSource = oColumns->Item(t.sRate);
        if (!m_oRateSource) {
            std::string sKeys;
            for (const auto& oColumn : oColumns->Items())
                sKeys += (sKeys.empty() ? "" : ", ") + oColumn->Key();
            throw Failure(kExitUsage, "--rate " + t.sRate + ": " + tInput.sPath +
                                          " has no such column (it has " +
                                          (sKeys.empty() ? std::string("none") : sKeys) + ")");
        }
        if ((m_oRateSource->Flags() & tnwFlagNumeric) == 0 && m_oRateSource->Type() != vtString) {
            throw Failure(kExitUsage, "--rate " + t.sRate + ": the column " + m_oRateSource->Key() +
                                          " does not hold numbers");
        }
        auto oRateColumns = CreateAs<tnwColumns>(kProgIdColumns, "Missing Component");
        m_oRate = oRateColumns->Add(m_oRateSource->Key(), "", "", vtDouble, 16, 2, tnwFlagNumeric,
                                    1, m_oRateSource->Unit(), "", true, true);
        m_oEncoder.SetSignedZeroDegrees(true);
        if (!m_oEncoder.Initialize(t.sPath, oRateColumns, m_oRate->Key())) {
            throw Failure(kExitOutput, "can't create " + t.sPath);
        }
    }

    // Records that are not polygons are refused: the plan holds polygons only, and its rate
    // limits then tell the rates of what it holds.
    bool Write(const std::shared_ptr<IGeometry>& oGeometry) override {
        std::int64_t lHoles = 0;
        if (auto oMulti = std::dynamic_pointer_cast<IMultiPolygon>(oGeometry)) {
            for (std::int32_t i = 0; i < oMulti->NumGeometries(); ++i) {
                const auto oPart = std::dynamic_pointer_cast<IPolygon>(oMulti->Geometry(i));
                lHoles += oPart ? oPart->NumInteriorRings() : 0;
            }
        } else if (auto oPolygon = std::dynamic_pointer_cast<IPolygon>(oGeometry)) {
            lHoles = oPolygon->NumInteriorRings();
        } else {
            return false;
        }
        m_oRate->SetValue(RateOf(m_oRateSource->Value()));
        m_oEncoder.SetGeometry(oGeometry);
        if (!m_oEncoder.Update()) return false;
        m_lHoles += lHoles;
        ++m_lRecords;
        return true;
    }

    void Close(std::int64_t) override {
        m_oEncoder.CloseFiles();
        std::error_code ec;
        const std::string sEnd = "[END]\r\n";
        const std::uintmax_t nSize = fs::file_size(m_oEncoder.Filename(), ec);
        std::string sTail(sEnd.size(), '\0');
        if (!ec && nSize >= sEnd.size()) {
            platform::InputFile oFile;
            oFile.Open(m_oEncoder.Filename());
            oFile.Seek(static_cast<std::int64_t>(nSize - sEnd.size()));
            oFile.Read(sTail.data(), sTail.size());
        }
        if (sTail != sEnd) {
            throw Failure(kExitOutput,
                          "the output " + m_oEncoder.Filename() + " could not be finished");
        }
        m_bFinished = true;
        if (m_lHoles > 0) {
            m_pConsole->Warn(CountText(m_lHoles, "hole") + " of the polygons of " + m_sInput +
                             " left out: a plan-grid file holds outer rings only");
        }
    }
    std::vector<fs::path> Files() const override { return {fs::path(m_oEncoder.Filename())}; }
    std::vector<fs::path> Targets(const std::string& sOutput) const override {
        return {fs::path(sOutput)};
    }
    std::string Detail() const override { return ", " + CountText(m_lRecords, "polygon record"); }

private:
    // The rate as a number: numbers as they are, text that reads as a number as that number,
    // blank text as no value (the encoder's rate 0). Other text stops the conversion.
    Variant RateOf(const Variant& vValue) const {
        const std::string* pText = vValue.AsString();
        if (!pText) return vValue;
        const std::size_t nFirst = pText->find_first_not_of(" \t");
        if (nFirst == std::string::npos) return Variant();
        try {
            return Variant(vValue.ToDouble());
        } catch (const Error&) {
            throw Failure(kExitUsage, "--rate " + m_oRate->Key() + ": \"" + *pText + "\" in " +
                                          m_sInput + " is not a number");
        }
    }

    tnwFSEncoder m_oEncoder;
    std::shared_ptr<tnwColumn> m_oRateSource;  // the input's column
    std::shared_ptr<tnwColumn> m_oRate;        // the encoder's
    Console* m_pConsole = nullptr;
    std::string m_sInput;
    std::int64_t m_lRecords = 0;
    std::int64_t m_lHoles = 0;
    bool m_bFinished = false;
};

}  // namespace

void RecordWriter::WriteSummary(const OutputOptions&, std::shared_ptr<VELDSummary>, Console&) {
    throw Failure(kExitKind, "a summary is written as a shapefile set (.shp)");
}

void CheckNotInput(const std::string& sInput, const RecordWriter& oWriter,
                   const std::string& sOutput) {
    for (const auto& oCandidate : oWriter.Targets(sOutput)) {
        std::error_code ec;
        if (fs::equivalent(sInput, oCandidate, ec)) {
            throw Failure(kExitUsage, "the output " + oCandidate.string() +
                                          " would replace the input; choose another name");
        }
    }
}

void MakeFolder(const std::string& sOutput) {
    const fs::path oFolder = fs::path(sOutput).parent_path();
    std::error_code ec;
    if (oFolder.empty() || fs::is_directory(oFolder, ec)) return;
    fs::create_directories(oFolder, ec);
    if (ec) throw Failure(kExitOutput, "can't create the folder " + oFolder.string());
}

std::string OutputText(const std::vector<fs::path>& vFiles, const std::string& sDetail) {
    std::uintmax_t nBytes = 0;
    std::string sFiles;
    for (const fs::path& oFile : vFiles) {
        std::error_code ec;
        nBytes += fs::file_size(oFile, ec);
        if (sFiles.empty()) {
            sFiles = oFile.string();
        } else {
            sFiles.push_back(' ');
            sFiles += oFile.extension().string();
        }
    }
    return sFiles + " (" + SizeText(nBytes) + sDetail + ")";
}

// The widest number text: sign, 15 digits, point and a three-digit exponent.
constexpr std::int16_t kNumberWidth = 24;
// The widest text field of a dBase table.
constexpr std::int16_t kTextWidth = 254;

// The table's columns: the input's, with fields that hold their values. A number field up to 15
// wide holds the number text of whatever its input field held; a wider one is made 24 wide, so
// that a number of 15 significant digits in exponent form fits. A text field is at most 254
// bytes wide; a longer text is cut and named by the writer.
std::shared_ptr<tnwColumns> TableColumns(const tnwColumns& oInput) {
    auto oColumns = CreateAs<tnwColumns>(kProgIdColumns, "Missing Component");
    if (!oColumns) throw Failure(kExitOutput, "no column list can be made");
    for (const auto& c : oInput.Items()) {
        std::int16_t iSize = c->Size();
        switch (c->Type()) {
            case vtString:
                iSize = std::min(iSize, kTextWidth);
                break;
            case vtDate:
                iSize = std::max<std::int16_t>(iSize, 8);
                break;
            case vtBoolean:
                iSize = std::max<std::int16_t>(iSize, 1);
                break;
            default:
                if (iSize > 15) iSize = std::max(iSize, kNumberWidth);
                break;
        }
        oColumns->Add(c->Key(), c->Name(), c->Description(), c->Type(), iSize, c->Precision(),
                      c->Flags(), c->Kind(), c->Unit(), c->Tag(), c->Visible(), c->Active());
    }
    return oColumns;
}

std::unique_ptr<RecordWriter> NewTextWriter() {
    return std::make_unique<TextWriter>();
}
std::unique_ptr<RecordWriter> NewTableWriter() {
    return std::make_unique<ShapeSetWriter>(true);
}
std::unique_ptr<RecordWriter> NewShapeSetWriter() {
    return std::make_unique<ShapeSetWriter>(false);
}
std::unique_ptr<RecordWriter> NewPlanWriter() {
    return std::make_unique<PlanWriter>();
}
std::unique_ptr<RecordWriter> NewLogWriter() {
    return std::make_unique<LogWriter>();
}

}  // namespace tnw::cli
