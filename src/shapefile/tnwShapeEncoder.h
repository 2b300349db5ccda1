// Writes a record stream as a shapefile set: <base>.dbf for the attributes, <base>.shp and
// <base>.shx for the geometry, and at close <base>.mcd (the column list) and <base>.prj.
// With no geometry type the set is the .dbf alone.
//
// Each record is staged in full (shape, index entry, attribute record) before its first byte
// goes out, so a record whose geometry or values fail leaves no trace in any file. A write
// that fails part-way is cut back out of the files, and the set goes on whole without that
// record. Only when that fails too is the set unfinished: it takes no further records, and
// CloseFiles closes it without patching its headers, so that it never claims records it lost.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "core/Enums.h"
#include "core/GISLib.h"
#include "core/ItnwEncoder.h"
#include "core/VELDLib.h"
#include "geometry/Flatten.h"
#include "geometry/Summary.h"
#include "platform/File.h"
#include "shapefile/DbfWriter.h"
#include "shapefile/ShapeFormat.h"

namespace tnw {

class tnwShapeEncoder final : public ItnwEncoder {
public:
    // Makes the point factory; error 429 when it cannot be made.
    tnwShapeEncoder();
    // Finishes the files through CloseFiles; never throws.
    ~tnwShapeEncoder() override;

    tnwShapeEncoder(const tnwShapeEncoder&) = delete;
    tnwShapeEncoder& operator=(const tnwShapeEncoder&) = delete;

    // Sets the shape type from eGeometryType (the GeometryType property keeps its own value)
    // and gives the result of InitializeFile.
    bool Initialize(const std::string& sFilename, std::shared_ptr<tnwColumns> oColumns,
                    tnwGeometryType eGeometryType = tnwGeometryRegion);
    // Holds the geometry of the next record; nothing clears it. A point, or with
    // ExportCentroids any geometry's centre, also becomes the stored point.
    void SetGeometry(std::shared_ptr<IGeometry> oGeometry);
    // Update2(true).
    bool Update();
    // Finishes the open files and writes the .mcd and .prj of a set with geometry.
    void CloseFiles();
    // Writes a whole record source, reporting progress to Callback; the files stay open.
    bool ImportRS(const std::string& sFilename, std::shared_ptr<tnwRecordSource> oRS);
    // Writes a field-operation summary as a point set, one record per recorded position of
    // each region, one column per quantity, with progress on bars 0 and 1 of oCallback (which
    // may be nothing), and closes the files. The encoder must be closed when it is called.
    // On a failure the export stops there and leaves the files open.
    bool ExportVELDSummary(std::shared_ptr<tnwGISCallback> oCallback,
                           std::shared_ptr<VELDSummary> oSummary, const std::string& sFilename);

    tnwGeometryType GeometryType() const { return static_cast<tnwGeometryType>(m_eGeometryType); }
    void SetGeometryType(tnwGeometryType eGeometryType);
    double XOffset() const { return m_dXOffset; }
    void SetXOffset(double dXOffset) { m_dXOffset = dXOffset; }
    double YOffset() const { return m_dYOffset; }
    void SetYOffset(double dYOffset) { m_dYOffset = dYOffset; }
    // Takes oColumns when their layout text equals that of the current columns.
    bool ChangeColumns(std::shared_ptr<tnwColumns> oColumns);
    std::shared_ptr<tnwColumns> Columns() const { return m_oColumns; }
    // The base name of the set, without extension.
    const std::string& Filename() const { return m_sFilename; }
    // Must have its final value before InitializeFile: it decides the fields of the table.
    bool IncludeInvisible() const { return m_bIncludeInvisible; }
    void SetIncludeInvisible(bool bIncludeInvisible) { m_bIncludeInvisible = bIncludeInvisible; }
    // Extension, off by default: an empty value is written as a blank field instead of " 0",
    // "N" or "18991230", so that readers see it as missing.
    bool BlankEmptyValues() const { return m_bBlankEmptyValues; }
    void SetBlankEmptyValues(bool bBlank) { m_bBlankEmptyValues = bBlank; }
    // The keys of the columns whose value did not fit its field in the last record staged for
    // the table, in column order; the fitted text went out as the table's format says.
    const std::vector<std::string>& CutColumns() const { return m_vCutColumns; }
    // Writes one record from the held geometry (or, on a point set with bForceGeometry False,
    // the stored point) and the columns' current values. True when a .dbf record was written.
    bool Update2(bool bForceGeometry = false);
    // Creates the files of the set named by sFilename, with the shape type as it stands.
    bool InitializeFile(const std::string& sFilename, std::shared_ptr<tnwColumns> oColumns);
    std::shared_ptr<tnwProjection> Projection() const { return m_oProjection; }
    void SetProjection(std::shared_ptr<tnwProjection> oProjection) {
        m_oProjection = std::move(oProjection);
    }
    std::shared_ptr<tnwGISCallback> Callback() const { return m_oCallback; }
    void SetCallback(std::shared_ptr<tnwGISCallback> oCallback) {
        m_oCallback = std::move(oCallback);
    }
    // Off by default. On: a double is rounded to its column's Precision before it goes into its
    // field, and a number too wide for its field fails its record (error 6) instead of losing
    // its leading digits.
    bool FitNumbersToFields() const { return m_bFitNumbersToFields; }
    void SetFitNumbersToFields(bool bFit) { m_bFitNumbersToFields = bFit; }
    bool ExportCentroids() const { return m_bExportCentroids; }
    void SetExportCentroids(bool bExportCentroids) { m_bExportCentroids = bExportCentroids; }

    // Extensions, all off by default.
    //
    // Field names cut to 11 bytes that would repeat one before them get "_1", "_2"...
    // Must be set before InitializeFile.
    bool UniqueFieldNames() const { return m_bUniqueFieldNames; }
    void SetUniqueFieldNames(bool bUnique) { m_bUniqueFieldNames = bUnique; }
    // A record with no geometry is written as a null shape with its attributes, rather than
    // not at all.
    bool WriteNullShapes() const { return m_bWriteNullShapes; }
    void SetWriteNullShapes(bool bWrite) { m_bWriteNullShapes = bWrite; }
    // Points go through Projection as polygons and lines do.
    bool ProjectPoints() const { return m_bProjectPoints; }
    void SetProjectPoints(bool bProject) { m_bProjectPoints = bProject; }
    // The .prj says the system of Projection where it has a text for one, rather than
    // always WGS 84.
    bool PrjFromProjection() const { return m_bPrjFromProjection; }
    void SetPrjFromProjection(bool bFrom) { m_bPrjFromProjection = bFrom; }

private:
    // ItnwEncoder, forwarded to the operations above.
    std::shared_ptr<tnwColumns> ItnwEncoder_Columns() const override { return Columns(); }
    void ItnwEncoder_SetGeometry(std::shared_ptr<IGeometry> oGeometry) override {
        SetGeometry(std::move(oGeometry));
    }
    void ItnwEncoder_Update() override { Update(); }
    void ItnwEncoder_CloseFiles() override { CloseFiles(); }
    bool ItnwEncoder_ImportRS(const std::string& sFilename,
                              std::shared_ptr<tnwRecordSource> oRS) override {
        return ImportRS(sFilename, std::move(oRS));
    }
    bool ItnwEncoder_Initialize(const std::string& sFilename,
                                std::shared_ptr<tnwColumns> oColumns) override {
        return Initialize(sFilename, std::move(oColumns), GeometryType());
    }
    bool ItnwEncoder_ChangeColumns(std::shared_ptr<tnwColumns> oColumns) override {
        return ChangeColumns(std::move(oColumns));
    }
    std::string ItnwEncoder_Filename() const override { return Filename(); }

    // InitializeFile, steps that open and write: any failure here is the "DBF Error" path.
    void CreateFiles();
    void CreateShapeFile(platform::OutputFile& oFile, detail::ShapeHeader& tHeader,
                         const std::string& sExtension);
    bool IsOutputColumn(const tnwColumn& oColumn) const {
        return oColumn.Visible() || m_bIncludeInvisible;
    }

    // The record writers: each stages one .shp record in m_aShpRecord, widens the file's box
    // and gives the content length in 16-bit words, or 0 when it wrote nothing.
    std::int32_t WritePoint(double dX, double dY);
    std::int32_t WriteMultiPoint(const std::shared_ptr<IMultiPoint>& oMultiPoint);
    std::int32_t WritePolygon(const std::shared_ptr<IGeometry>& oGeometry);
    std::int32_t WritePolyLine(const std::shared_ptr<IGeometry>& oGeometry);
    std::int32_t WriteShape();
    // A null shape: a record that holds only shape type 0.
    std::int32_t WriteNullShape();
    // The record header of the staged record; gives where its content goes.
    char* StageRecord(std::int64_t lContentBytes);
    std::int32_t StagePartsRecord(const detail::PartAccumulators& tAcc, std::int32_t lParts);
    // The staged .dbf record, in m_sDbfRecord.
    void StageDbfRecord();
    // Writes the staged records to the three files and counts them.
    void CommitRecord(std::int32_t lWords);
    // Cuts each file back to where it stood before a record that failed part-way, so the
    // set stays whole; false when that fails too.
    bool DropPartialRecord(std::int64_t lDbf, std::int64_t lShp, std::int64_t lShx) noexcept;
    std::string PrjText() const;
    std::string ColumnList() const;
    void CloseUnfinished();
    // One region of the summary export: its records from the stored point, then Update2.
    void ExportRegion(tnwGISCallback* pCallback, const std::shared_ptr<VELDRegion>& oRegion,
                      const detail::SummaryColumns& tColumns, const std::string& sBarText);

    detail::DBFHeader m_tDbfHeader;
    detail::ShapeHeader m_tShpHeader;
    detail::ShapeHeader m_tShxHeader;
    // The open files; Number() is the file number, 0 when closed.
    platform::OutputFile m_iDbfFile;
    platform::OutputFile m_iShpFile;
    platform::OutputFile m_iShxFile;
    double m_dX = 0.0;
    double m_dY = 0.0;
    std::shared_ptr<IGeometry> m_oGeom;
    std::shared_ptr<tnwColumns> m_oColumns;
    std::int32_t m_lShapeType = 0;
    std::int32_t m_lShpWords = 0;
    std::int32_t m_lShxWords = 0;
    std::int32_t m_eGeometryType = 0;
    double m_dXOffset = 0.0;
    double m_dYOffset = 0.0;
    std::shared_ptr<tnwGISFactory> m_oFactory;
    std::shared_ptr<tnwProjection> m_oProjection;
    std::string m_sFilename;
    bool m_bIncludeInvisible = false;
    bool m_bBlankEmptyValues = false;
    std::vector<std::string> m_vCutColumns;
    bool m_bExportCentroids = false;
    bool m_bFitNumbersToFields = false;
    std::shared_ptr<tnwGISCallback> m_oCallback;
    bool m_bUniqueFieldNames = false;
    bool m_bWriteNullShapes = false;
    bool m_bProjectPoints = false;
    bool m_bPrjFromProjection = false;

    // A write to one of the files failed: the set can no longer be finished whole.
    bool m_bOutputFailed = false;
    // Work buffers kept from record to record, so that steady writing allocates nothing.
    std::vector<char> m_aShpRecord;
    std::string m_sDbfRecord;
    detail::PartAccumulators m_tParts;  // the polygon or polyline record under way
};

}  // namespace tnw
