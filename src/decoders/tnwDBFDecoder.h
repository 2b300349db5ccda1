// tnwDBFDecoder: a dBase table as a record cursor with random access. After each move the
// current record stands in the Value of the column objects of Columns(). The FGP and GPL
// readers open their side tables with it and address rows by 1-based number.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/Enums.h"
#include "core/GISLib.h"
#include "core/Variant.h"
#include "platform/File.h"

namespace tnw {

class tnwDBFDecoder {
public:
    tnwDBFDecoder();   // makes the column list; error 429 when no column component is registered
    ~tnwDBFDecoder();  // closes the file
    tnwDBFDecoder(const tnwDBFDecoder&) = delete;
    tnwDBFDecoder& operator=(const tnwDBFDecoder&) = delete;

    const std::string& Filename() const { return m_sFilename; }
    // Opens the table and reads its field list; the cursor stays before the first record. A
    // missing file is no error and changes nothing else. Any other failure shows the box
    // "<name> Not Found", marks the table invalid and passes the error on.
    void SetFilename(const std::string& sFilename);
    bool IsValidFile() const { return m_bValidFile; }
    std::shared_ptr<tnwColumns> Columns() const { return m_oColumns; }
    TNW_Encoders_GeometryFormats GeometryFormat() const { return m_eGeometryFormat; }
    void SetGeometryFormat(TNW_Encoders_GeometryFormats eFormat) { m_eGeometryFormat = eFormat; }
    // 1-based field numbers whose text gives Longitude, Latitude and WKT for each record; 0 for
    // none. A number above 0 also sets the geometry format.
    std::int32_t LonCol() const { return m_lLonCol; }
    void SetLonCol(std::int32_t lColumn);
    double Longitude() const;  // error 0x80040001 unless the format is LonLat
    std::int32_t LatCol() const { return m_lLatCol; }
    void SetLatCol(std::int32_t lColumn);
    double Latitude() const;  // error 0x80040001 unless the format is LonLat
    std::int32_t WKTCol() const { return m_lWKTCol; }
    void SetWKTCol(std::int32_t lColumn);
    std::string WKT() const;
    bool Eof() const { return m_lCurrentRecord > m_lRecordCount; }
    std::string CurrentRow() const { return std::to_string(m_lCurrentRecord); }
    void CloseFile();
    // Reads the first record: a boolean, or the empty value when the move failed.
    Variant MoveFirst();
    // Reads the next record; false past the last one. Read errors pass to the caller.
    bool MoveNext();
    // Off by default: a logical field assigns only a true text, and a blank or unreadable date
    // assigns nothing, so the value of the record before stays; a blank number reads as 0. On,
    // every field sets its column at every record: a logical field true or false ("F", "f",
    // "N", "n", "0" are false), and a blank number, a blank or unreadable date and any other
    // logical text the empty value.
    bool EveryFieldSets() const { return m_bEveryFieldSets; }
    void SetEveryFieldSets(bool bEvery) { m_bEveryFieldSets = bEvery; }

    // "KEY~C~20~0~|RATE~N~10~3~": key, type letter, width and decimals of each field.
    const std::string& Schema() const { return m_sSchema; }
    // The 1-based number of the first record whose value in column sColumn equals sValue,
    // ignoring case, or 0. Scans from the top and leaves the cursor on the match.
    std::int32_t FindColumnValue(std::string_view sColumn, std::string_view sValue);
    // Reads record lRecord (1-based) by its place in the file; false past the last record and
    // below 1, both without reading.
    bool MoveToRecord(std::int32_t lRecord);

private:
    // One field of a record: where its bytes lie behind the flag byte and the column that
    // takes its value (nothing when the list refused the key; the bytes are skipped then).
    struct Field {
        std::shared_ptr<tnwColumn> oColumn;
        std::uint32_t nOffset = 0;
        std::uint32_t nWidth = 0;
        std::int32_t lType = vtString;
    };

    std::int32_t OpenFile();
    void ReadFieldList();
    void AddField(const unsigned char* pDescriptor);
    void SetValue(const Field& tField, std::string_view sText);
    void ReadGeometryFields(std::string_view sRecord);
    std::string_view FieldText(std::string_view sRecord, std::int32_t lField) const;

    std::int32_t m_lRecordCount = 0;
    std::int16_t m_iHeaderLength = 0;
    std::int16_t m_iRecordLength = 0;
    platform::InputFile m_oFile;
    std::shared_ptr<tnwColumns> m_oColumns;
    std::string m_sFilename;
    bool m_bValidFile = false;
    bool m_bEveryFieldSets = false;
    TNW_Encoders_GeometryFormats m_eGeometryFormat = TNW_GeometryFormat_None;
    std::int32_t m_lLonCol = 0;
    std::int32_t m_lLatCol = 0;
    std::int32_t m_lWKTCol = 0;
    double m_dLongitude = 0.0;
    double m_dLatitude = 0.0;
    std::string m_sWKT;
    // 64 bits so that stepping past a record count of 2^31 - 1 cannot overflow.
    std::int64_t m_lCurrentRecord = 0;
    std::string m_sSchema;

    std::vector<Field> m_vFields;
    std::size_t m_nRecordBytes = 1;  // a record's bytes: the flag and the fields
};

}  // namespace tnw
