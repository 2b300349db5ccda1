// tnwFGPDecoder: an FGP set (a main file with ".fdt" and ".fsn" dBase side tables of the same
// base name) as a forward record cursor: its regions, then its lines (each vertex a site of its
// own, or each line whole), then its loose points. After each move the record stands in
// Columns() and in the typed properties.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/FGPFile.h"
#include "core/GISLib.h"
#include "core/Variant.h"
#include "decoders/tnwDBFDecoder.h"

namespace tnw {

class tnwFGPDecoder {
public:
    tnwFGPDecoder();  // makes the column list; error 429 when no column component is registered
    ~tnwFGPDecoder();
    tnwFGPDecoder(const tnwFGPDecoder&) = delete;
    tnwFGPDecoder& operator=(const tnwFGPDecoder&) = delete;

    // Whether each vertex of a line is a record of its own. Set it before Filename: the record
    // count is fixed there, while the cursor follows a change at once.
    bool AsSites() const { return bAsSites; }
    void SetAsSites(bool bValue) { bAsSites = bValue; }
    // Off by default: a point whose ".fdt" or ".fsn" row is 0 or past the table's end shows
    // the values of the last row read. On: that table's values are empty for it (the value
    // properties give 0), so no point takes another's values.
    bool EmptyMissingRows() const { return bEmptyMissingRows; }
    void SetEmptyMissingRows(bool bValue) { bEmptyMissingRows = bValue; }
    // Off by default: a point's own values reach the host through the properties only. On
    // (set it before Filename): the columns end with "Longitude", "Latitude", "UTCTime",
    // "Heading", "RegionID" and "AttributeID", and these and "Altitude" (rounded to its 3
    // decimals) hold the point's values at each site and loose point, and are empty at a
    // region or a whole line.
    bool PointColumns() const { return bPointColumns; }
    void SetPointColumns(bool bValue) { bPointColumns = bValue; }
    const std::string& Filename() const { return sFilename; }
    // Opens the main file and the side tables, sets the day base from the main file's date,
    // builds the columns and counts the records. The cursor does not move.
    void SetFilename(const std::string& sValue);
    // Releases the main file and the ".fdt" table; the ".fsn" table stays.
    void CloseFile();
    bool IsValidFile() const { return bValidFile; }
    bool HasFSN() const { return oFSN != nullptr; }
    bool HasFDT() const { return oFDT != nullptr; }
    std::shared_ptr<tnwColumns> Columns() const { return oColumns; }
    std::string FDTSchema() const;
    // The current ".fdt" row's values joined by "|".
    const std::string& FDTString() const { return sFDTString; }
    // The current record as text: the region's polygon, the line's line string (a site's too),
    // or the point; empty when there is none.
    std::string WKT();
    // Members of the current point; 0 when there is none.
    double Longitude() const;
    double Latitude() const;
    double Altitude() const;
    double Heading() const;
    // Seconds since 1970-01-01 00:00:00 of the current point. A time of day (86400 or less)
    // goes on the day of the row's date column, else on the last day seen.
    double UTCTime();
    std::int32_t AttributeID() const;
    // Fields of the current ".fsn" row; 0 when the table lacks the field or the value is empty.
    double Rate_Act() const;
    double Rate_Rx() const;
    double Swath() const;
    // Records delivered of those counted at Filename, in percent; 100 for an empty set.
    double PercentComplete() const;
    bool Eof() const { return iPhase >= 4; }
    // Where the current record comes from: 1 the regions, 2 the lines, 3 the loose points; 0
    // before the first MoveFirst and 4 at the end.
    std::int16_t Phase() const { return iPhase; }
    // The current region or line (of phases 1 and 2), for a host that wants its vertices'
    // numbers themselves rather than WKT's 15-digit text.
    std::shared_ptr<tnwFGPPointList> CurrentList() const { return oPointList; }
    // Starts at the first region: a boolean, or the empty value when the move failed.
    Variant MoveFirst();
    // The next record, through any empty phase or line; false at the end and before MoveFirst.
    bool MoveNext();
    std::int32_t RegionID() const;
    double P_PARAM() const;
    double V_PARAM() const;
    double NDVI() const;
    double VI_2ND() const;

private:
    std::unique_ptr<tnwDBFDecoder> OpenFDT();
    std::unique_ptr<tnwDBFDecoder> OpenFSN();
    std::unique_ptr<tnwDBFDecoder> OpenSideTable(const char* sExtension) const;
    void BuildColumns();
    void ReadFDTData(std::int32_t lRecord);
    void ReadFSNData(std::int32_t lRecord);
    // Moves the table to the row; a row it lacks empties its values with EmptyMissingRows.
    void MoveTable(tnwDBFDecoder& oTable, std::int32_t lRecord) const;
    std::string ConvertToPolygon(const std::shared_ptr<tnwFGPPointList>& oList);
    std::string ConvertToLineString(const std::shared_ptr<tnwFGPPointList>& oList);
    std::string ConvertToPoint(const std::shared_ptr<tnwFGPPoint>& oAt);
    std::string ConvertList(const char* sSource, const char* sOpening,
                            const std::shared_ptr<tnwFGPPointList>& oList);
    // The step of MoveNext in the current phase: true on a record, false when the phase ran
    // out (it then moves to the next phase).
    bool StepInPhase();
    // The side-table rows of the current point.
    void ReadPointRows();
    // The point columns of the record MoveNext landed on.
    void FillPointColumns();
    tnwFGPFile& File() const;

    bool bAsSites = true;
    bool bEmptyMissingRows = false;
    bool bPointColumns = false;
    std::string sFilename;
    bool bValidFile = false;
    std::shared_ptr<tnwColumns> oColumns;
    std::unique_ptr<tnwDBFDecoder> oFDT;
    std::unique_ptr<tnwDBFDecoder> oFSN;
    std::string sFDTString;
    std::int32_t lTotalRecords = 0;
    std::int32_t lRecordsRead = 0;
    std::int32_t lFDTRecord = 0;
    std::shared_ptr<tnwColumn> oRateAct, oRateRx, oSwath, oPParam, oVParam, oNDVI, oVI2ND;
    std::shared_ptr<tnwFGPPoint> oPoint;
    std::shared_ptr<tnwFGPPointList> oPointList;
    std::shared_ptr<tnwFGPFile> oFile;
    std::shared_ptr<tnwColumn> oDateColumn;
    std::int32_t lBaseTime = 0;
    std::int16_t iPhase = 0;
    std::int32_t lPartIndex = 0;
    std::int32_t lVertexIndex = 0;
};

}  // namespace tnw
