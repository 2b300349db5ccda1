// Writes an application plan as a plan-grid file: polygons, each with a rate from one numeric
// column, under a header of totals. The header comes first and holds the totals, so the data
// lines wait in a text builder until CloseFiles writes the whole file.
#pragma once

#include <memory>
#include <string>

#include "core/GISLib.h"
#include "core/ItnwEncoder.h"
#include "core/StringBuilder.h"
#include "platform/File.h"

namespace tnw {

class tnwFSEncoder final : public ItnwEncoder {
public:
    tnwFSEncoder() = default;
    ~tnwFSEncoder() override;  // runs CloseFiles(); never throws

    // The key of the rate column. The let stores the key and looks it up in the columns
    // (error 91 to the caller, the key still stored, when there are none yet); the get gives
    // the found column's Key, else the stored key.
    std::string RateColumnKey() const;
    void SetRateColumnKey(const std::string& sKey);

    // Stores the columns and a non-empty key, finds the rate column, then InitializeFile.
    // Failures go to the error path: false.
    bool Initialize(const std::string& sFilenameIn, std::shared_ptr<tnwColumns> oColumnsIn,
                    const std::string& sRateColumnKeyIn = "");
    // Creates the file (".fpd" added to a name with no extension) and starts a new plan. A file
    // that can't be created gives false with no report; the next CloseFiles then reports.
    bool InitializeFile(const std::string& sFilenameIn, std::shared_ptr<tnwColumns> oColumnsIn);

    // Held until an Update that reads a rate.
    void SetGeometry(std::shared_ptr<IGeometry> oGeometryIn) { oGeometry = std::move(oGeometryIn); }
    // False, with nothing done, while there is no numeric rate column. Else the rate enters the
    // limits, each polygon of the geometry adds its exterior ring (less the closing point) as
    // data lines, and the result is true, also for a geometry that writes nothing.
    bool Update();
    // Writes the header, the data lines and "[END]", and closes the file.
    void CloseFiles();

    // Initialize with the source's own columns, one Update per record, then CloseFiles.
    // Failures of the record source pass to the caller.
    bool ImportRS(const std::string& sFilenameIn, std::shared_ptr<tnwRecordSource> oRS,
                  const std::string& sRateColumnKeyIn = "");

    // The name actually opened.
    const std::string& Filename() const { return sFilename; }

    // Off by default: a negative position of less than one degree is written as "0." and its
    // minutes, which reads as the same distance on the other side of the equator or the prime
    // meridian. On, it is written as "-0." and its minutes.
    bool SignedZeroDegrees() const { return bSignedZeroDegrees; }
    void SetSignedZeroDegrees(bool bSigned) { bSignedZeroDegrees = bSigned; }

private:
    std::shared_ptr<tnwColumns> ItnwEncoder_Columns() const override { return oColumns; }
    void ItnwEncoder_SetGeometry(std::shared_ptr<IGeometry> oGeometryIn) override;
    void ItnwEncoder_Update() override;
    void ItnwEncoder_CloseFiles() override;
    bool ItnwEncoder_ImportRS(const std::string& sFilenameIn,
                              std::shared_ptr<tnwRecordSource> oRS) override;
    bool ItnwEncoder_Initialize(const std::string& sFilenameIn,
                                std::shared_ptr<tnwColumns> oColumnsIn) override;
    std::string ItnwEncoder_Filename() const override { return sFilename; }

    void WriteOnePoly(const IPolygon& oPolygon, double dRate);
    // Appends the degree text of dDegrees: whole degrees, ".", the number text of the minutes.
    void FormatDegMin(std::string& sOut, double dDegrees) const;

    platform::OutputFile iFile;
    // The file number is taken: set by InitializeFile even when the file could not be created,
    // cleared by a CloseFiles that finished the file.
    bool bFileNumberTaken = false;
    std::shared_ptr<IGeometry> oGeometry;
    std::shared_ptr<tnwColumns> oColumns;
    std::shared_ptr<tnwStringBuilder> oBuffer;
    std::shared_ptr<tnwColumn> oRateColumn;
    std::string sRateColumnKey;
    double dLonMin = 180.0;
    double dLatMin = 90.0;
    double dRateMin = 999999999999.0;
    double dRateMax = -99999999999.0;
    double dPointCount = 0;
    double dPolygonCount = 0;
    std::string sFilename;
    bool bSignedZeroDegrees = false;
    std::string m_sLine;      // the data line being built, reused from line to line
    std::string m_sRateText;  // the current polygon's rate text
};

}  // namespace tnw
