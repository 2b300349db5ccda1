// tnwDecoderRecordSource: a decoder seen as a tnwRecordSource, so that a host can hand a file
// it reads (delimited text through tnwASCIIDecoder, a dBase table through tnwDBFDecoder, an FGP
// set through tnwFGPDecoder) to any encoder's ImportRS, or walk it itself.
//
// The columns are the decoder's own: their values follow the cursor, nothing is copied. The
// geometry of a record comes from the decoder's geometry format: a point made by the
// "tnwGIS.tnwGISFactory" from Longitude and Latitude, or the decoder's WKT text handed to a
// parser the host gives (the library knows no geometry classes of its own).
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <variant>

#include "core/GISLib.h"
#include "decoders/tnwDBFDecoder.h"
#include "decoders/tnwFGPDecoder.h"
#include "delimited/tnwASCIIDecoder.h"

namespace tnw {

class tnwDecoderRecordSource final : public tnwRecordSource {
public:
    // Turns well-known text into a geometry; it may raise on text it can't read.
    using WKTParser = std::function<std::shared_ptr<IGeometry>(std::string_view sWKT)>;

    // The decoder is set up by the host (file name, columns, geometry field numbers) before it
    // is walked. The point factory is made here: error 429 when none is registered.
    explicit tnwDecoderRecordSource(std::shared_ptr<tnwASCIIDecoder> oDecoder,
                                    WKTParser fnParseWKT = {});
    explicit tnwDecoderRecordSource(std::shared_ptr<tnwDBFDecoder> oDecoder,
                                    WKTParser fnParseWKT = {});
    // An FGP set: a region is a polygon (its ring closed), a line a line string, a site (with
    // AsSites) and a loose point a point at Longitude and Latitude. Regions and lines go through
    // the parser as standard well-known text; without one they have no geometry. iPhase 1, 2
    // or 3 keeps the regions, the lines or the loose points only (the others are passed over,
    // not counted as skipped); 0 keeps all.
    explicit tnwDecoderRecordSource(std::shared_ptr<tnwFGPDecoder> oDecoder,
                                    WKTParser fnParseWKT = {}, std::int16_t iPhase = 0);

    // Starts the walk over and stands on the first record that the decoder could read.
    void MoveFirst() override;
    // Goes to the next record that the decoder could read. A row that the decoder refuses (a
    // missing geometry field, a line too long) has been reported on its error path; it is
    // passed over and counted in RowsSkipped. The start and stop command rows of a GPL log are
    // steps of the decoder but no records: they are passed over and counted in StartRows and
    // StopRows.
    void MoveNext() override;
    // True when no record is current: before MoveFirst and after the last record.
    bool Eof() const override { return !m_bOnRecord; }

    // The number of records. A dBase table gives the count in its header, an FGP set the counts
    // in its main file. A text file is
    // forward-only: its records are counted on demand by a second reader walking the same file
    // with the same delimiter, header rows and line ends, once, the first time the count is
    // asked for (a file that changes afterwards is not counted again). Rows the first reader
    // will refuse are counted; the command rows of a GPL log are not.
    std::int32_t RecordCount() const override;

    // The tnwGeometryType of the records. Unless the host has set one: 1 (Point) for longitude
    // and latitude, 0 for no geometry, for an FGP set the kind of its first kept record, and for
    // well-known text the kind of the current record's geometry, reading the first record when none
    // is current (so ask it before a walk, as ImportRS does, or during one).
    std::int32_t GeometryType() const override;
    // 0 goes back to finding the type as above.
    void SetGeometryType(std::int32_t eGeometryType) { m_eGeometryType = eGeometryType; }

    // The current record's geometry, made once per record; nothing for no geometry format, an
    // empty WKT text, a WKT format without a parser, and off a record. A text that the parser
    // refuses is reported on the error path under "tnwDecoderRecordSource.Geometry" and gives
    // nothing.
    std::shared_ptr<IGeometry> Geometry() const override;
    std::shared_ptr<tnwColumns> Columns() const override;

    // Geometry kept beside a table, as a shapefile set keeps it beside its .dbf: given the
    // 1-based row, the geometry there, or nothing. Once set it takes the place of the decoder's
    // geometry format; a failure it raises is reported on the error path under
    // "tnwDecoderRecordSource.Geometry" and gives nothing.
    using RowGeometry = std::function<std::shared_ptr<IGeometry>(std::int64_t lRow)>;
    void SetRowGeometry(RowGeometry fnRowGeometry) { m_fnRowGeometry = std::move(fnRowGeometry); }

    // Progress receiver, bar 0 from 0 to 100: opened by MoveFirst, moved as each whole percent
    // of the file is passed (text: the decoder's PercentComplete; table: records read of the
    // record count), set to 100 at the end.
    std::shared_ptr<tnwGISCallback> Callback() const { return m_oCallback; }
    void SetCallback(std::shared_ptr<tnwGISCallback> oCallback) {
        m_oCallback = std::move(oCallback);
    }

    // Records delivered, rows passed over, and GPL start and stop rows passed over, since the
    // last MoveFirst.
    std::int64_t RecordsRead() const { return m_lRecordsRead; }
    std::int64_t RowsSkipped() const { return m_lRowsSkipped; }
    std::int64_t StartRows() const { return m_lStartRows; }
    std::int64_t StopRows() const { return m_lStopRows; }

    // The tnwGeometryType that holds a geometry of this OGC type number: 0 for a collection
    // of mixed kinds or an unknown number.
    static std::int32_t GeometryTypeOf(std::int32_t lOGCType);

private:
    using Decoder = std::variant<std::shared_ptr<tnwASCIIDecoder>, std::shared_ptr<tnwDBFDecoder>,
                                 std::shared_ptr<tnwFGPDecoder>>;

    tnwDecoderRecordSource(Decoder oDecoder, WKTParser fnParseWKT);

    // Settles on a readable record after the decoder's move gave bRead.
    void Arrive(bool bRead);
    void ReportProgress();
    TNW_Encoders_GeometryFormats Format() const;
    std::int32_t CountTextRecords(const tnwASCIIDecoder& oDecoder) const;
    std::int32_t CountTableRecords(const tnwDBFDecoder& oDecoder) const;
    // The records of each phase of the set (regions, lines or sites, loose points).
    std::array<std::int64_t, 3> CountFGPRecords(const tnwFGPDecoder& oDecoder) const;
    std::shared_ptr<IGeometry> FGPGeometry(tnwFGPDecoder& oDecoder) const;

    Decoder m_oDecoder;
    WKTParser m_fnParseWKT;
    RowGeometry m_fnRowGeometry;
    std::shared_ptr<tnwGISFactory> m_oFactory;
    std::shared_ptr<tnwGISCallback> m_oCallback;
    std::int32_t m_eGeometryType = 0;
    std::int16_t m_iPhase = 0;  // of an FGP set: the only phase kept, 0 for all
    bool m_bOnRecord = false;
    std::int64_t m_lRecordsRead = 0;
    std::int64_t m_lRowsSkipped = 0;
    std::int64_t m_lStartRows = 0;
    std::int64_t m_lStopRows = 0;
    int m_iPercentShown = -1;

    // Made on demand and kept for the current record or the whole walk.
    mutable std::shared_ptr<IGeometry> m_oGeometry;
    mutable bool m_bGeometryMade = false;
    mutable std::int32_t m_lRecordCount = -1;
};

}  // namespace tnw
