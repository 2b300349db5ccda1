// tnwDBFDecoder: a dBase table as a record cursor with random access. After each move the
// current record stands in the Value of the column objects of Columns(). The FGP and GPL
// readers open their side tables with it and address rows by 1-based number.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/Enums.h"
#include "core/GISLib.h"
#include "core/Variant.h"
#include "platform/CodePage.h"
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
    // "KEY~C~20~0~|RATE~N~10~3~": key, type letter, width and decimals of each field.
    const std::string& Schema() const { return m_sSchema; }
    // The 1-based number of the first record whose value in column sColumn equals sValue,
    // ignoring case, or 0. Scans from the top and leaves the cursor on the match.
    std::int32_t FindColumnValue(std::string_view sColumn, std::string_view sValue);
    // Reads record lRecord (1-based) by its place in the file; false past the last record and
    // below 1, both without reading. A deleted record is read too (see Deleted).
    bool MoveToRecord(std::int32_t lRecord);

    // Extensions, all off by default, for hosts that must not change a value in passing.
    // NULL-aware reading: every field sets its column at every record, so nothing stays from
    // the record before. A blank, "*" or "?" field, or one whose text is no value of its type
    // (a number without digits, a date that names no real day, a logical other than T, Y, F,
    // N, 0 or -1), gives the empty value instead of 0 or the previous value; a logical "F",
    // "N" or "0" gives false.
    bool EveryFieldSets() const { return m_bEveryFieldSets; }
    void SetEveryFieldSets(bool bEvery) { m_bEveryFieldSets = bEvery; }
    // MoveFirst and MoveNext pass over records marked deleted ("*" in the flag byte).
    bool SkipDeleted() const { return m_bSkipDeleted; }
    void SetSkipDeleted(bool bSkip) { m_bSkipDeleted = bSkip; }
    // True when the current record is marked deleted.
    bool Deleted() const { return m_bDeleted; }
    // With EveryFieldSets only: the keys of the current record's columns whose field held a text
    // that is no value of its type (not a blank or a NULL mark), so that a host can say what it
    // lost.
    const std::vector<std::string>& UnreadableColumns() const { return m_vUnreadable; }
    // The code page of the table's names and text; nothing means the process-wide one.
    std::optional<platform::CodePage> TextCodePage() const { return m_eTextCodePage; }
    void SetTextCodePage(std::optional<platform::CodePage> eCodePage) {
        m_eTextCodePage = eCodePage;
    }
    // The language driver byte of the header (offset 29): 0 when the table names none.
    std::uint8_t LanguageDriver() const { return m_byLanguageDriver; }
    // A field whose name the table has already gets "_1", "_2"... and is read, rather than
    // becoming an inactive "Dummy_" column. Applies from the next Filename.
    bool RenameDuplicates() const { return m_bRenameDuplicates; }
    void SetRenameDuplicates(bool bRename) { m_bRenameDuplicates = bRename; }
    // The version byte is looked at: a Visual FoxPro table, whose header this reader does not
    // follow, is refused with error 321 rather than read as junk. Applies from the next Filename.
    bool CheckVersion() const { return m_bCheckVersion; }
    void SetCheckVersion(bool bCheck) { m_bCheckVersion = bCheck; }

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
    // Reads the record at the file's position into the columns; with bSkipDeleted, records
    // marked deleted are passed over.
    bool ReadRecord(bool bSkipDeleted);
    void SetValue(const Field& tField, std::string_view sText);
    void SetEveryFieldValue(const Field& tField, std::string_view sText);
    platform::CodePage CodePageInUse() const {
        return m_eTextCodePage.value_or(platform::NarrowCodePage());
    }
    void ReadGeometryFields(std::string_view sRecord);
    std::string_view FieldText(std::string_view sRecord, std::int32_t lField) const;

    std::int32_t m_lRecordCount = 0;
    // Both lengths are read as unsigned 16-bit numbers: writers that allow more than 1,022
    // fields, or records past 32,767 bytes, use all 16 bits.
    std::int32_t m_iHeaderLength = 0;
    std::int32_t m_iRecordLength = 0;
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

    bool m_bRenameDuplicates = false;
    bool m_bCheckVersion = false;
    std::vector<Field> m_vFields;
    std::size_t m_nRecordBytes = 1;  // a record's bytes: the flag and the fields

    bool m_bSkipDeleted = false;
    bool m_bDeleted = false;
    std::vector<std::string> m_vUnreadable;
    std::optional<platform::CodePage> m_eTextCodePage;
    std::uint8_t m_byLanguageDriver = 0;
};

}  // namespace tnw
