#include "Writers.h"

#include "Console.h"
#include "Convert.h"
#include "ExitCodes.h"
#include "FileKind.h"
#include "Input.h"
#include "core/Error.h"
#include "encoders/tnwASCIIEncoder.h"
#include "gislib/Projection.h"
#include "shapefile/tnwShapeEncoder.h"

namespace tnw::cli {

namespace fs = std::filesystem;

namespace {

// What a failed Initialize told in its box, as the end of a sentence.
std::string BoxDetail(Console& oConsole) {
    std::string sBox = oConsole.TakeBoxText();
    return sBox.empty() ? std::string() : " (" + sBox + ")";
}

class TextWriter final : public RecordWriter {
public:
    void Open(const OutputOptions& t, Input& tInput, Console& oConsole) override {
        m_oEncoder.SetHeader(!t.bNoHeader);
        m_oEncoder.SetDelimiter(t.sDelimiter.empty() ? std::string(",") : t.sDelimiter);
        m_oEncoder.SetIncludeGeometry(
            t.bGeometryText.value_or(tInput.eFormat == TNW_GeometryFormat_WKT));
        m_oEncoder.SetIncludeLonLat(
            t.bLonLat.value_or(tInput.eFormat == TNW_GeometryFormat_LonLat));
        m_oEncoder.SetIncludeInvisible(t.bIncludeInvisible);
        if (!m_oEncoder.InitializeFile(t.sPath, tInput.oSource->Columns())) {
            throw Failure(kExitOutput, "can't create " + t.sPath + BoxDetail(oConsole));
        }
    }
    bool Write(const std::shared_ptr<IGeometry>& oGeometry) override {
        m_oEncoder.SetGeometry(oGeometry);
        return m_oEncoder.Update();
    }
    void Close(std::int64_t) override { m_oEncoder.CloseFiles(); }
    std::vector<fs::path> Files() const override { return {fs::path(m_oEncoder.Filename())}; }
    std::vector<fs::path> Targets(const std::string& sOutput) const override {
        return {fs::path(sOutput)};
    }

private:
    tnwASCIIEncoder m_oEncoder;
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
            if (!t.sProjection.empty() && m_eType != tnwGeometryRegion) {
                throw Failure(kExitUsage,
                              "--projection applies to polygons (--geometry region) only");
            }
        }
        m_oEncoder.SetGeometryType(static_cast<tnwGeometryType>(m_eType));
        m_oEncoder.SetXOffset(t.dXOffset.value_or(0.0));
        m_oEncoder.SetYOffset(t.dYOffset.value_or(0.0));
        m_oEncoder.SetExportCentroids(t.bCentroids);
        m_oEncoder.SetIncludeInvisible(t.bIncludeInvisible);
        if (!t.sProjection.empty()) m_oEncoder.SetProjection(ParseProjection(t.sProjection));
        if (!m_oEncoder.Initialize(t.sPath, tInput.oSource->Columns(),
                                   static_cast<tnwGeometryType>(m_eType))) {
            throw Failure(kExitOutput, "can't create " + t.sPath + BoxDetail(oConsole));
        }
    }
    bool Write(const std::shared_ptr<IGeometry>& oGeometry) override {
        m_oEncoder.SetGeometry(oGeometry);
        return m_oEncoder.Update();
    }
    void Close(std::int64_t lWritten) override {
        m_oEncoder.CloseFiles();
        // The table's header tells what the set really holds.
        if (TableRecordCount(m_oEncoder.Filename() + ".dbf") != lWritten) {
            throw Failure(kExitOutput,
                          "the output " + m_oEncoder.Filename() + " could not be finished");
        }
    }
    std::vector<fs::path> Files() const override {
        const std::string& sWritten = m_oEncoder.Filename();
        if (m_eType == 0) return {fs::path(sWritten + ".dbf")};
        std::vector<fs::path> vFiles;
        for (const char* sExtension : {".shp", ".shx", ".dbf", ".prj", ".mcd"}) {
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

private:
    bool m_bTableOnly;
    std::int32_t m_eType = 0;
    tnwShapeEncoder m_oEncoder;
};

}  // namespace

std::unique_ptr<RecordWriter> NewTextWriter() {
    return std::make_unique<TextWriter>();
}
std::unique_ptr<RecordWriter> NewTableWriter() {
    return std::make_unique<ShapeSetWriter>(true);
}
std::unique_ptr<RecordWriter> NewShapeSetWriter() {
    return std::make_unique<ShapeSetWriter>(false);
}

}  // namespace tnw::cli
