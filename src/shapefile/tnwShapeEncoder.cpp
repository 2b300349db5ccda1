#include "shapefile/tnwShapeEncoder.h"

#include <cmath>
#include <limits>

#include "core/Error.h"
#include "geometry/Flatten.h"
#include "platform/Hooks.h"
#include "support/mLog.h"

namespace tnw {

namespace {

// Source texts, built once: the record path must not allocate for them.
const std::string kSourceInitialize = "tnwShapeEncoder.Initialize";
const std::string kSourceInitializeFile = "tnwShapeEncoder.InitializeFile";
const std::string kSourceCloseFiles = "tnwShapeEncoder.CloseFiles";
const std::string kSourceImportRS = "tnwShapeEncoder.ImportRS";
const std::string kSourceExportVELDSummary = "tnwShapeEncoder.ExportVELDSummary";
const std::string kSourceSetGeometry = "tnwShapeEncoder.SetGeometry";
const std::string kSourceUpdate2 = "tnwShapeEncoder.Update2";
const std::string kSourceWritePoint = "tnwShapeEncoder.WritePoint";
const std::string kSourceWriteMultiPoint = "tnwShapeEncoder.WriteMultiPoint";
const std::string kSourceWritePolygon = "tnwShapeEncoder.WritePolygon";
const std::string kSourceWritePolyLine = "tnwShapeEncoder.WritePolyLine";

constexpr std::int32_t kMaxLong = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t errDivisionByZero = 11;

// The line break inside the "DBF Error" box: this platform's own.
constexpr const char* kBoxLineBreak = "\n";

constexpr const char* kPrjText =
    "GEOGCS [\"GCS_WGS_1984\",DATUM[\"D_WGS_1984\",SPHEROID[\"WGS_1984\",6378137.0,"
    "298.257223563]],PRIMEM[\"Greenwich\",0.0],UNIT[\"Degree\",0.0174532925199433]]";

// Shape type of a tnwGeometryType; 0 means no .shp and no .shx.
std::int32_t ShapeTypeOf(std::int32_t eGeometryType) {
    switch (eGeometryType) {
        case tnwGeometryPoint:
            return 1;
        case tnwGeometryLine:
            return 3;
        case tnwGeometryRegion:
            return 5;
        case tnwGeometryMultiPoint:
            return 8;
        default:
            return 0;
    }
}

// Characters of UTF-8 text: bytes that do not continue a sequence.
std::size_t CharacterCount(const std::string& sText) {
    std::size_t n = 0;
    for (char c : sText)
        if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) ++n;
    return n;
}

// A name with an extension of exactly three characters loses it; any other stays whole.
std::string SettleBaseName(const std::string& sFilename) {
    const auto oFiles = FileUtility();
    if (CharacterCount(oFiles->Extension(sFilename)) != 3) return sFilename;
    std::string sFolder = oFiles->Folder(sFilename);
    if (!sFolder.empty()) sFolder += kPathSeparator;
    return sFolder + oFiles->BaseName(sFilename);
}

const IPoint& PointOf(const std::shared_ptr<IGeometry>& oGeometry) {
    if (!oGeometry) Raise(errObjectNotSet);
    const auto* pPoint = dynamic_cast<const IPoint*>(oGeometry.get());
    if (!pPoint) Raise(errTypeMismatch);
    return *pPoint;
}

// No reader can place a coordinate that is not a finite number.
void RequireFinite(double x, double y) {
    if (!std::isfinite(x) || !std::isfinite(y)) Raise(errOverflow);
}

}  // namespace

tnwShapeEncoder::tnwShapeEncoder()
    : m_oFactory(CreateAs<tnwGISFactory>(kProgIdGISFactory, "Missing Component")) {
    if (!m_oFactory) Raise(errCantCreateObject);
}

tnwShapeEncoder::~tnwShapeEncoder() {
    try {
        CloseFiles();
    } catch (...) {
        // Only the error path itself can fail here, and a destructor cannot pass it on.
    }
}

void tnwShapeEncoder::SetGeometryType(tnwGeometryType eGeometryType) {
    m_eGeometryType = eGeometryType;
    m_lShapeType = ShapeTypeOf(eGeometryType);
}

bool tnwShapeEncoder::ChangeColumns(std::shared_ptr<tnwColumns> oColumns) {
    return detail::ChangeColumnsIfSameLayout(m_oColumns, std::move(oColumns));
}

// ---- Creating the set ----

bool tnwShapeEncoder::Initialize(const std::string& sFilename, std::shared_ptr<tnwColumns> oColumns,
                                 tnwGeometryType eGeometryType) {
    bool bResult = false;
    Guard(kSourceInitialize, [&] {
        m_lShapeType = ShapeTypeOf(eGeometryType);
        bResult = InitializeFile(sFilename, std::move(oColumns));
    });
    return bResult;
}

bool tnwShapeEncoder::InitializeFile(const std::string& sFilename,
                                     std::shared_ptr<tnwColumns> oColumns) {
    const bool bSettled = Guard(kSourceInitializeFile, [&] {
        m_sFilename = SettleBaseName(sFilename);
        m_oColumns = std::move(oColumns);
        m_tDbfHeader.Start();
        m_bOutputFailed = false;
    });
    if (!bSettled) return false;
    try {
        CreateFiles();
        return true;
    } catch (...) {
        const Error oError = CurrentError(std::current_exception());
        platform::ShowMessageBox("Error: " + oError.sDescription + kBoxLineBreak + m_sFilename,
                                 "DBF Error", platform::MsgIcon::Exclamation);
        CloseFiles();
        return false;
    }
}

void tnwShapeEncoder::CreateFiles() {
    const std::string sDbf = m_sFilename + ".dbf";
    if (platform::FileExists(sDbf)) platform::DeleteFile(sDbf);
    m_iDbfFile.Open(sDbf);
    char aHeader[detail::kDbfHeaderBytes];
    m_tDbfHeader.Encode(aHeader);
    m_iDbfFile.Write(aHeader, sizeof aHeader);

    if (!m_oColumns) Raise(errObjectNotSet);
    std::vector<std::string> vNames;
    for (const auto& oColumn : m_oColumns->Items()) {
        if (!oColumn) Raise(errObjectNotSet);
        if (!IsOutputColumn(*oColumn) || detail::IsGeometryColumn(*oColumn)) continue;
        std::string sName = detail::FieldName(*oColumn);
        if (m_bUniqueFieldNames) sName = detail::UniqueFieldName(sName, vNames);
        detail::WriteFieldDescriptor(m_iDbfFile, m_tDbfHeader, *oColumn, sName);
        vNames.push_back(std::move(sName));
    }

    if (m_lShapeType == 0) return;
    CreateShapeFile(m_iShpFile, m_tShpHeader, ".shp");
    m_lShpWords = detail::kShapeHeaderWords;
    CreateShapeFile(m_iShxFile, m_tShxHeader, ".shx");
    m_lShxWords = detail::kShapeHeaderWords;
}

void tnwShapeEncoder::CreateShapeFile(platform::OutputFile& oFile, detail::ShapeHeader& tHeader,
                                      const std::string& sExtension) {
    const std::string sPath = m_sFilename + sExtension;
    if (platform::FileExists(sPath)) platform::DeleteFile(sPath);
    oFile.Open(sPath);
    tHeader.lFileCode = detail::kShapeFileCode;
    tHeader.lShapeType = m_lShapeType;
    tHeader.lVersion = detail::kShapeVersion;
    // Until close the file says what it holds so far: an empty set.
    tHeader.lFileLength = detail::kShapeHeaderWords;
    ResetBox(tHeader.tBox);
    char aHeader[detail::kShapeHeaderBytes];
    tHeader.Encode(aHeader);
    oFile.Write(aHeader, sizeof aHeader);
}

// ---- Records ----

void tnwShapeEncoder::SetGeometry(std::shared_ptr<IGeometry> oGeometry) {
    Guard(kSourceSetGeometry, [&] {
        m_oGeom.reset();
        if (!oGeometry) return;
        std::shared_ptr<IPoint> oPoint;
        if (oGeometry->GeometryType() == ogcPoint) {
            oPoint = std::dynamic_pointer_cast<IPoint>(std::move(oGeometry));
            if (!oPoint) Raise(errTypeMismatch);
        } else if (m_bExportCentroids) {
            oPoint = oGeometry->Centroid();
            if (!oPoint) Raise(errObjectNotSet);
        } else {
            m_oGeom = std::move(oGeometry);
            return;
        }
        const double dX = oPoint->X();
        const double dY = oPoint->Y();
        m_oGeom = std::move(oPoint);
        m_dX = dX;
        m_dY = dY;
    });
}

bool tnwShapeEncoder::Update() {
    return Update2(true);
}

bool tnwShapeEncoder::Update2(bool bForceGeometry) {
    bool bWritten = false;
    const ShapeBox tBoxBefore = m_tShpHeader.tBox;
    const bool bDone = Guard(kSourceUpdate2, [&] {
        if (m_bOutputFailed)
            throw Error(errPathFileAccess, "tnwEncoders",
                        "The set is unfinished after a failed write: " + m_sFilename);
        std::int32_t lWords = -1;  // a .dbf-only set writes its record in any case
        if (m_iShpFile.IsOpen()) {
            if (m_oGeom || !bForceGeometry) {
                lWords = WriteShape();
            } else if (m_bWriteNullShapes) {
                lWords = WriteNullShape();
            } else {
                lWords = 0;
            }
        }
        if (lWords != 0) {
            StageDbfRecord();
            CommitRecord(lWords);
            bWritten = true;
        }
        m_oGeom.reset();
    });
    // A record that did not go out leaves the file's box as it was.
    if (!bDone) m_tShpHeader.tBox = tBoxBefore;
    return bWritten;
}

std::int32_t tnwShapeEncoder::WriteShape() {
    // The type the .shp was opened with, so that a later GeometryType cannot mix record types.
    switch (m_tShpHeader.lShapeType) {
        case 1:
            return WritePoint(m_dX, m_dY);
        case 3:
            return WritePolyLine(m_oGeom);
        case 5:
            return WritePolygon(m_oGeom);
        case 8: {
            auto oMultiPoint = std::dynamic_pointer_cast<IMultiPoint>(m_oGeom);
            if (m_oGeom && !oMultiPoint) Raise(errTypeMismatch);
            return WriteMultiPoint(oMultiPoint);
        }
        default:
            return 0;
    }
}

char* tnwShapeEncoder::StageRecord(std::int64_t lContentBytes) {
    const std::int64_t lWords = lContentBytes / 2;
    if (lWords > kMaxLong - detail::kRecordHeaderWords) Raise(errOverflow);
    if (m_tDbfHeader.lRecordCount == kMaxLong) Raise(errOverflow);
    m_aShpRecord.resize(static_cast<std::size_t>(detail::kRecordHeaderBytes + lContentBytes));
    char* aBytes = m_aShpRecord.data();
    detail::LongToBigEndian(m_tDbfHeader.lRecordCount + 1, aBytes);
    detail::LongToBigEndian(static_cast<std::int32_t>(lWords), aBytes + 4);
    return aBytes + detail::kRecordHeaderBytes;
}

std::int32_t tnwShapeEncoder::WriteNullShape() {
    char* aContent = StageRecord(4);
    detail::PutLong(aContent, 0);
    return 2;
}

std::int32_t tnwShapeEncoder::WritePoint(double dX, double dY) {
    std::int32_t lWords = 0;
    Guard(kSourceWritePoint, [&] {
        if (m_bProjectPoints && m_oProjection) {
            const auto oProjected =
                std::dynamic_pointer_cast<IPoint>(m_oFactory->CreatePoint(dX, dY, nullptr)
                                                      ->Project(m_oProjection->SpatialReference()));
            if (!oProjected) Raise(errTypeMismatch);
            dX = oProjected->X();
            dY = oProjected->Y();
        }
        const double x = dX + m_dXOffset;
        const double y = dY + m_dYOffset;
        RequireFinite(x, y);
        char* aContent = StageRecord(20);
        detail::PutLong(aContent, m_tShpHeader.lShapeType);
        detail::PutDouble(aContent + 4, x);
        detail::PutDouble(aContent + 12, y);
        GrowBox(m_tShpHeader.tBox, x, y);
        lWords = 10;
    });
    return lWords;
}

std::int32_t tnwShapeEncoder::WriteMultiPoint(const std::shared_ptr<IMultiPoint>& oMultiPoint) {
    std::int32_t lWords = 0;
    Guard(kSourceWriteMultiPoint, [&] {
        if (!oMultiPoint) return;
        const std::int32_t lPoints = oMultiPoint->NumGeometries();
        if (lPoints <= 0) return;
        const std::int64_t lBytes = 40 + 16LL * lPoints;
        char* aContent = StageRecord(lBytes);
        ShapeBox tBox;
        ResetBox(tBox);
        char* aPoint = aContent + 40;
        for (std::int32_t i = 0; i < lPoints; ++i, aPoint += 16) {
            const IPoint& tPoint = PointOf(oMultiPoint->Geometry(i));
            const double x = tPoint.X();
            const double y = tPoint.Y();
            RequireFinite(x, y);
            GrowBox(tBox, x, y);
            detail::PutDouble(aPoint, x);
            detail::PutDouble(aPoint + 8, y);
        }
        detail::PutLong(aContent, m_tShpHeader.lShapeType);
        detail::PutBox(aContent + 4, tBox);
        detail::PutLong(aContent + 36, lPoints);
        GrowBox(m_tShpHeader.tBox, tBox.Xmin, tBox.Ymin);
        GrowBox(m_tShpHeader.tBox, tBox.Xmax, tBox.Ymax);
        lWords = static_cast<std::int32_t>(lBytes / 2);
    });
    return lWords;
}

std::int32_t tnwShapeEncoder::WritePolygon(const std::shared_ptr<IGeometry>& oGeometry) {
    std::int32_t lWords = 0;
    Guard(kSourceWritePolygon, [&] {
        if (!oGeometry) return;
        m_tParts.Start();
        const detail::FlattenSettings tSettings{m_oProjection, m_dXOffset, m_dYOffset, m_oFactory};
        lWords = StagePartsRecord(m_tParts, detail::GatherPolygons(tSettings, m_tParts, oGeometry));
    });
    m_tParts.Release();
    return lWords;
}

std::int32_t tnwShapeEncoder::WritePolyLine(const std::shared_ptr<IGeometry>& oGeometry) {
    std::int32_t lWords = 0;
    Guard(kSourceWritePolyLine, [&] {
        if (!oGeometry) return;
        m_tParts.Start();
        const detail::FlattenSettings tSettings{m_oProjection, m_dXOffset, m_dYOffset, m_oFactory};
        lWords = StagePartsRecord(m_tParts, detail::GatherLines(tSettings, m_tParts, oGeometry));
    });
    m_tParts.Release();
    return lWords;
}

std::int32_t tnwShapeEncoder::StagePartsRecord(const detail::PartAccumulators& tAcc,
                                               std::int32_t lParts) {
    if (lParts < 1) return 0;
    const std::int32_t lPoints = tAcc.oPoints->Count();
    if (lPoints < 0 || tAcc.vParts.size() < static_cast<std::size_t>(lParts) ||
        tAcc.vXY.size() != 2 * static_cast<std::size_t>(lPoints))
        Raise(errSubscript);
    const std::int64_t lBytes = 44 + 4LL * lParts + 16LL * lPoints;
    char* aContent = StageRecord(lBytes);
    detail::PutLong(aContent, m_tShpHeader.lShapeType);
    detail::PutBox(aContent + 4, tAcc.tBox);
    detail::PutLong(aContent + 36, lParts);
    detail::PutLong(aContent + 40, lPoints);
    char* aPart = aContent + 44;
    for (std::int32_t i = 0; i < lParts; ++i, aPart += 4)
        detail::PutLong(aPart, tAcc.vParts[i]);
    // The points' coordinates as the flattening read them when it added the points.
    char* aPoint = aPart;
    for (std::size_t i = 0; i < tAcc.vXY.size(); i += 2, aPoint += 16) {
        const double x = tAcc.vXY[i];
        const double y = tAcc.vXY[i + 1];
        RequireFinite(x, y);
        detail::PutDouble(aPoint, x);
        detail::PutDouble(aPoint + 8, y);
    }
    GrowBox(m_tShpHeader.tBox, tAcc.tBox.Xmin, tAcc.tBox.Ymin);
    GrowBox(m_tShpHeader.tBox, tAcc.tBox.Xmax, tAcc.tBox.Ymax);
    return static_cast<std::int32_t>(lBytes / 2);
}

void tnwShapeEncoder::StageDbfRecord() {
    if (!m_oColumns) Raise(errObjectNotSet);
    if (m_tDbfHeader.lRecordCount == kMaxLong) Raise(errOverflow);
    m_sDbfRecord.clear();
    m_sDbfRecord.push_back(detail::kDbfRecordFlag);
    m_vCutColumns.clear();
    for (const auto& oColumn : m_oColumns->Items()) {
        if (!oColumn) Raise(errObjectNotSet);
        if (IsOutputColumn(*oColumn) &&
            !detail::WriteFieldValue(m_sDbfRecord, *oColumn, m_bBlankEmptyValues,
                                     m_bFitNumbersToFields)) {
            m_vCutColumns.push_back(oColumn->Key());
        }
    }
    // The output columns must not change after the descriptors went out.
    if (m_sDbfRecord.size() != static_cast<std::size_t>(m_tDbfHeader.iRecordLength))
        throw Error(errInvalidCall, "tnwEncoders",
                    "The record does not match the table's fields: " + m_sFilename);
}

void tnwShapeEncoder::CommitRecord(std::int32_t lWords) {
    // Offsets are counted in 16-bit words in an int32: a .shp stops just short of 4 GiB.
    if (lWords > 0 && m_lShpWords > kMaxLong - detail::kRecordHeaderWords - lWords)
        Raise(errOverflow);
    const std::int64_t lDbf = m_iDbfFile.Tell();
    const std::int64_t lShp = m_iShpFile.IsOpen() ? m_iShpFile.Tell() : 0;
    const std::int64_t lShx = m_iShxFile.IsOpen() ? m_iShxFile.Tell() : 0;
    try {
        if (lWords > 0) {
            m_iShpFile.Write(m_aShpRecord.data(), m_aShpRecord.size());
            char aEntry[detail::kIndexEntryBytes];
            detail::LongToBigEndian(m_lShpWords, aEntry);
            detail::LongToBigEndian(lWords, aEntry + 4);
            m_iShxFile.Write(aEntry, sizeof aEntry);
            m_lShpWords += detail::kRecordHeaderWords + lWords;
            m_lShxWords += detail::kIndexEntryWords;
        }
        if (m_tDbfHeader.lRecordCount == 0) m_iDbfFile.WriteByte(detail::kDbfHeaderEnd);
        m_iDbfFile.Write(m_sDbfRecord);
        ++m_tDbfHeader.lRecordCount;
    } catch (...) {
        // The counters moved only after every write went through: they still match the cut.
        if (!DropPartialRecord(lDbf, lShp, lShx)) m_bOutputFailed = true;
        throw;
    }
}

bool tnwShapeEncoder::DropPartialRecord(std::int64_t lDbf, std::int64_t lShp,
                                        std::int64_t lShx) noexcept {
    try {
        m_iDbfFile.Truncate(lDbf);
        if (m_iShpFile.IsOpen()) m_iShpFile.Truncate(lShp);
        if (m_iShxFile.IsOpen()) m_iShxFile.Truncate(lShx);
        return true;
    } catch (...) {
        return false;
    }
}

// ---- Close-out ----

void tnwShapeEncoder::CloseFiles() {
    const bool bDone = Guard(kSourceCloseFiles, [&] {
        if (m_bOutputFailed) {
            CloseUnfinished();
            return;
        }
        if (m_iDbfFile.IsOpen()) {
            m_iDbfFile.WriteByte(detail::kDbfFileEnd);
            m_iDbfFile.Seek(0);
            char aHeader[detail::kDbfHeaderBytes];
            m_tDbfHeader.Encode(aHeader);
            m_iDbfFile.Write(aHeader, sizeof aHeader);
            m_iDbfFile.Close();
        }
        if (m_iShpFile.IsOpen()) {
            char aHeader[detail::kShapeHeaderBytes];
            m_tShpHeader.lFileLength = m_lShpWords;
            m_tShpHeader.Encode(aHeader);
            m_iShpFile.Seek(0);
            m_iShpFile.Write(aHeader, sizeof aHeader);
            m_iShpFile.Close();
            const auto oFiles = FileUtility();
            if (m_oColumns) oFiles->SaveTextFile(ColumnList(), m_sFilename + ".mcd");
            oFiles->SaveTextFile(PrjText(), m_sFilename + ".prj");
            if (m_iShxFile.IsOpen()) {
                m_tShxHeader.lFileLength = m_lShxWords;
                m_tShxHeader.tBox = m_tShpHeader.tBox;
                m_tShxHeader.Encode(aHeader);
                m_iShxFile.Seek(0);
                m_iShxFile.Write(aHeader, sizeof aHeader);
                m_iShxFile.Close();
            }
        }
    });
    // What was not finished is not taken up again: a later CloseFiles closes it as it stands.
    if (!bDone) m_bOutputFailed = true;
}

void tnwShapeEncoder::CloseUnfinished() {
    // The headers keep the state they were written in, so no file claims what it lost.
    for (platform::OutputFile* pFile : {&m_iDbfFile, &m_iShpFile, &m_iShxFile}) {
        try {
            pFile->Close();
        } catch (...) {
            // The failure that left the set unfinished has been reported already.
        }
    }
}

std::string tnwShapeEncoder::PrjText() const {
    if (m_bPrjFromProjection && m_oProjection) {
        if (const auto oSystem = m_oProjection->SpatialReference()) {
            std::string sText = oSystem->PrjText();
            if (!sText.empty()) return sText;
        }
    }
    return kPrjText;
}

std::string tnwShapeEncoder::ColumnList() const {
    std::string sText = "<Columns>\r\n";
    for (const auto& oColumn : m_oColumns->Items())
        if (oColumn && IsOutputColumn(*oColumn)) sText += oColumn->ToXML("  ");
    sText += "</Columns>\r\n";
    return sText;
}

// ---- Record-source import ----

bool tnwShapeEncoder::ImportRS(const std::string& sFilename, std::shared_ptr<tnwRecordSource> oRS) {
    bool bResult = false;
    Guard(kSourceImportRS, [&] {
        if (!oRS) return;
        m_oProjection.reset();  // an import never projects
        auto oColumns = oRS->Columns();
        const auto eSourceType = static_cast<tnwGeometryType>(oRS->GeometryType());
        if (!Initialize(sFilename, std::move(oColumns),
                        m_bExportCentroids ? tnwGeometryPoint : eSourceType))
            return;
        double dTotal = 0.0;
        if (m_oCallback) {
            m_oCallback->SetBarCount(1);
            m_oCallback->SetBarText(0, "");
            m_oCallback->SetBarRange(0, 0.0, 100.0);
            dTotal = oRS->RecordCount();
        }
        std::int32_t lCount = 0;
        oRS->MoveFirst();
        while (!oRS->Eof()) {
            if (lCount == kMaxLong) Raise(errOverflow);
            ++lCount;
            if (lCount % 1000 == 0 && m_oCallback) {
                // The product is an int32, as the bar's arithmetic has always been.
                if (lCount > kMaxLong / 100) Raise(errOverflow);
                if (dTotal == 0.0)
                    throw Error(errDivisionByZero, "tnwEncoders", "Division by zero");
                m_oCallback->SetBarValue(0, static_cast<double>(lCount * 100) / dTotal);
            }
            SetGeometry(oRS->Geometry());
            Update();
            oRS->MoveNext();
        }
        bResult = true;
    });
    return bResult;
}

// ---- Summary export ----

bool tnwShapeEncoder::ExportVELDSummary(std::shared_ptr<tnwGISCallback> oCallback,
                                        std::shared_ptr<VELDSummary> oSummary,
                                        const std::string& sFilename) {
    bool bResult = false;
    Guard(kSourceExportVELDSummary, [&] {
        if (!oSummary) return;
        const detail::SummaryColumns tColumns = detail::BuildSummaryColumns(*oSummary);
        SetGeometryType(tnwGeometryPoint);
        if (!Initialize(sFilename, tColumns.oColumns, tnwGeometryPoint)) return;
        const auto oRegions = oSummary->Regions();
        if (!oRegions) Raise(errObjectNotSet);
        std::string sOfCount;
        if (oCallback) {
            oCallback->SetBarText(0, "Regions");
            oCallback->SetBarRange(0, 0.0, oRegions->Count());
            sOfCount = " / " + std::to_string(oRegions->Count());
        }
        std::int32_t lRegion = 0;
        for (const auto& oRegion : oRegions->Items()) {
            ++lRegion;
            const std::string sBarText = oCallback ? std::to_string(lRegion) + sOfCount : "";
            ExportRegion(oCallback.get(), oRegion, tColumns, sBarText);
        }
        if (oCallback) {
            oCallback->ClearBarText(0);
            oCallback->ResetBar(0);
        }
        CloseFiles();
        bResult = true;
    });
    return bResult;
}

void tnwShapeEncoder::ExportRegion(tnwGISCallback* pCallback,
                                   const std::shared_ptr<VELDRegion>& oRegion,
                                   const detail::SummaryColumns& tColumns,
                                   const std::string& sBarText) {
    if (!oRegion) Raise(errObjectNotSet);
    detail::ClearSummaryValues(tColumns);
    if (pCallback) {
        pCallback->SetBarText(1, sBarText);
        pCallback->SetBarRange(1, 0.0, oRegion->RecordCount());
    }
    if (auto oTrack = std::dynamic_pointer_cast<VELDTrackRegion>(oRegion)) {
        const detail::RegionArrays tArrays = detail::ReadRegion(*oRegion, *oTrack, tColumns);
        for (std::size_t i = 0; i < tArrays.aElevations.size(); ++i) {
            if (2 * i + 1 >= tArrays.aPositions.size()) Raise(errSubscript);
            m_dX = tArrays.aPositions[2 * i];
            m_dY = tArrays.aPositions[2 * i + 1];
            detail::SetRecordValues(*oRegion, tArrays, tColumns, i);
            Update2(false);
            if (pCallback && i % 100 == 0) pCallback->SetBarValue(1, static_cast<double>(i));
        }
    }
    if (pCallback) {
        pCallback->ClearBarText(1);
        pCallback->ResetBar(1);
    }
}

}  // namespace tnw
