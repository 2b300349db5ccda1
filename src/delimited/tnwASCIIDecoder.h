// tnwASCIIDecoder: a delimited or fixed-width text file as a forward record cursor. After each
// move the current record stands in the Value of the column objects of Columns() and in
// Longitude, Latitude and WKT. The columns come from the host, from a header line of the file
// (AutoGenColumns) or from a header text (ColumnsFromString).
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/Enums.h"
#include "core/GISLib.h"
#include "core/Variant.h"
#include "decoders/tnwDBFDecoder.h"
#include "delimited/FieldArray.h"
#include "platform/CodePage.h"
#include "platform/File.h"

namespace tnw {

class tnwASCIIDecoder {
public:
    tnwASCIIDecoder();  // makes the column list from "tnwGIS.tnwColumns"
    ~tnwASCIIDecoder();
    tnwASCIIDecoder(const tnwASCIIDecoder&) = delete;
    tnwASCIIDecoder& operator=(const tnwASCIIDecoder&) = delete;

    const std::string& Filename() const { return sFilename; }
    // Closes any walk under way, stores the name and tests that the file can be opened; the
    // platform's file error (53, 75) reaches the caller, with the name stored all the same.
    void SetFilename(const std::string& sFilenameIn);
    bool IsValidFile() const { return bValidFile; }
    std::shared_ptr<tnwColumns> Columns() const { return oColumns; }
    TNW_Encoders_GeometryFormats GeometryFormat() const { return eGeometryFormat; }
    void SetGeometryFormat(TNW_Encoders_GeometryFormats eFormat) { eGeometryFormat = eFormat; }
    // Lines at the top of the file that are not records.
    std::int32_t HeaderRows() const { return lHeaderRows; }
    void SetHeaderRows(std::int32_t lRows) { lHeaderRows = lRows; }
    // One character; empty means fixed-width fields cut by the columns' Size and Precision.
    const std::string& Delimiter() const { return sDelimiter; }
    void SetDelimiter(const std::string& sDelimiterIn);

    bool GPL() const { return bGPL; }
    bool GPLStart() const { return bGPLStart; }
    bool GPLEnd() const { return bGPLEnd; }
    const std::string& GPLCommand() const { return sGPLCommand; }
    const std::string& GPDString() const { return sGPDString; }
    std::string GPDSchema() const { return oGPD ? oGPD->Schema() : std::string(); }

    // 1-based field numbers of the position in a row; 0 for none. A number above 0 also sets
    // the geometry format.
    std::int32_t LonCol() const { return lLonCol; }
    void SetLonCol(std::int32_t lColumn);
    std::int32_t LatCol() const { return lLatCol; }
    void SetLatCol(std::int32_t lColumn);
    std::int32_t WKTCol() const { return lWKTCol; }
    void SetWKTCol(std::int32_t lColumn);
    double Longitude() const;  // error 0x80040001 unless the format is LonLat
    double Latitude() const;   // error 0x80040001 unless the format is LonLat
    std::string WKT() const;

    // True exactly when no file is open: before MoveFirst and after running off the end.
    bool Eof() const { return !m_oFile.IsOpen(); }
    std::string CurrentLine() const;
    // Calls of MoveNext since MoveFirst, in decimal.
    std::string CurrentRow() const { return std::to_string(lCurrentRow); }
    double PercentComplete() const;

    // Ends a walk under way; keeps the current values, CurrentLine and the byte count.
    void CloseFile() noexcept;
    // Opens the file, skips the header rows and reads the first record: a boolean, or the
    // empty value when the file could not be opened or ended within the header rows.
    Variant MoveFirst();
    // Reads the next record. False at the end of the file (which closes it) and on a row that
    // fails (which leaves it open, so the next call goes on with the next line).
    bool MoveNext();
    // The fields of line lRow of the file, counted from 1 (0 or below reads line 1), parsed
    // with the stored delimiter; an array with no size when the file is shorter. Ends any walk
    // under way. Errors reach the caller under "tnwDelimAscii.ReadHeaders".
    FieldArray ReadHeaders(std::int32_t lRow = 1);
    // Builds the columns from the last header row; the empty value when HeaderRows is 0.
    Variant AutoGenColumns(TNW_Encoders_AutoGenFlags eFlags = TNW_AutoGenFlags_Default);
    // Builds the columns from a header text split with sDelimiterIn (not stored).
    bool ColumnsFromString(const std::string& sHeader, const std::string& sDelimiterIn);

    // Extension, off by default: a lone line feed ends a line as well, for files written on
    // Linux and macOS. PercentComplete then counts the bytes actually read.
    bool LineFeedEndsLine() const { return m_bLineFeedEndsLine; }
    void SetLineFeedEndsLine(bool bEnds) { m_bLineFeedEndsLine = bEnds; }
    // Extension, off by default: a UTF-8 byte-order mark at the start of the file is passed
    // over (it counts towards PercentComplete), so that it doesn't become part of the first
    // field.
    bool SkipByteOrderMark() const { return m_bSkipByteOrderMark; }
    void SetSkipByteOrderMark(bool bSkip) { m_bSkipByteOrderMark = bSkip; }
    // Extension: the code page of the file's text, nothing (the default) for the process-wide
    // narrow code page. With UTF-8, a text column's Size counts characters, not bytes.
    std::optional<platform::CodePage> TextCodePage() const { return m_eTextCodePage; }
    void SetTextCodePage(std::optional<platform::CodePage> eCodePage);

    // Extensions for files as they come from the field, all off by default.
    //
    // Data rows that AutoGenColumns reads to give each column without a unit in its header
    // the type and width its values need: whole numbers, numbers, dates or text. 0 keeps the
    // header's word alone (text of 254 characters).
    std::int32_t SampleRows() const { return m_lSampleRows; }
    void SetSampleRows(std::int32_t lRows) { m_lSampleRows = lRows; }
    // The type asked for a column by key (vtInt32, vtDouble, vtDate, vtString), over what the
    // header or the sample says; vtEmpty for none. Columns built afterwards follow it.
    std::int32_t ColumnType(const std::string& sKey) const;
    void SetColumnType(const std::string& sKey, std::int32_t lType);
    // "," is the decimal mark of the position fields and the numeric columns. A sample that
    // finds numbers written so, and none with ".", in a file not delimited by "," turns it on.
    bool DecimalComma() const { return m_bDecimalComma; }
    void SetDecimalComma(bool bComma) { m_bDecimalComma = bComma; }
    // A line end inside quotes belongs to the field: the record goes on on the next line.
    bool QuotedLineBreaks() const { return m_bQuotedLineBreaks; }
    void SetQuotedLineBreaks(bool bJoin) { m_bQuotedLineBreaks = bJoin; }
    // A header cell with no name makes a column "field_<n>" (n its 1-based place) rather
    // than none.
    bool NameEmptyHeaders() const { return m_bNameEmptyHeaders; }
    void SetNameEmptyHeaders(bool bName) { m_bNameEmptyHeaders = bName; }
    // False when the current row leaves a position field (LonCol, LatCol) empty: the row has
    // no place, and its Longitude and Latitude of 0 are no coordinates.
    bool HasPosition() const { return m_bHasPosition; }

private:
    // Run-time error 5, "Invalid procedure call or argument": a width or count below 0.
    [[noreturn]] static void RaiseInvalidCall();

    void OpenFile();
    // Passes over a byte-order mark at the start of the open file when SkipByteOrderMark is
    // set; gives the bytes passed over.
    std::int64_t PassByteOrderMark();
    platform::CodePage CodePageInUse() const {
        return m_eTextCodePage.value_or(platform::NarrowCodePage());
    }
    // The next line into sLine; false at the end of the file. nBytes gets what the line
    // counts towards PercentComplete. With QuotedLineBreaks the lines a quoted field runs
    // over are joined, each break as a line feed.
    bool ReadLine(platform::InputFile& oFile, std::string& sLine, std::int64_t& nBytes);
    bool ReadLine(std::string& sLine, std::int64_t& nBytes) {
        return ReadLine(m_oFile, sLine, nBytes);
    }
    // The number in a field by the text-to-number rule, "," read as "." with DecimalComma.
    double FieldNumber(std::string_view sField);
    // Gives the columns the types of ColumnType and, with SampleRows, of their values.
    void TypeColumns();
    bool TypesColumns() const { return m_lSampleRows > 0 || !m_vColumnTypes.empty(); }
    // Splits the current line and sets the position fields and the columns' values.
    void ReadRow();
    // Splits a narrow line into aFields: by sDelimiterIn when it isn't empty, else by the
    // widths of the columns. Failures go to the error path; aFields keeps what was built.
    void ParseLine(std::string_view sLine, std::string_view sDelimiterIn, LineFields& aFields);
    void ParseDelimited(std::string_view sLine, std::string_view sDelimiterIn,
                        LineFields& aFields) const;
    void ParseFixedWidth(std::string_view sLine, LineFields& aFields) const;
    bool BuildColumns(const FieldArray& aHeaders);

    // The GPL dialect (GPLDialect.cpp). A name ending in ".gpl", in any case, is a log.
    static bool IsGPLName(std::string_view sName);
    // The settings, companion table and columns of a log.
    void OpenGPL();
    // A current line that begins with "STAR" or "STOP" is a command: sets the flags and gives
    // true.
    bool IsGPLCommand();
    // Moves the companion table to the current record's number and copies its values over.
    void JoinGPD();

    std::string sFilename;
    bool bValidFile = false;
    std::string sDelimiter = ",";
    std::string m_sNarrowDelimiter = ",";  // sDelimiter in the file's code page
    std::shared_ptr<tnwColumns> oColumns;
    std::int32_t lHeaderRows = 0;
    platform::InputFile m_oFile;  // the file handle: closed means iFile 0
    TNW_Encoders_GeometryFormats eGeometryFormat = TNW_GeometryFormat_None;
    std::int32_t lLonCol = 0;
    std::int32_t lLatCol = 0;
    std::int32_t lWKTCol = 0;

    // The GPL dialect's state.
    bool bGPL = false;
    bool bGPLStarted = false;
    bool bGPLStart = false;
    bool bGPLEnd = false;
    std::string sGPLCommand;
    std::unique_ptr<tnwDBFDecoder> oGPD;
    std::int32_t lRecordIDCol = 0;
    std::int32_t lRecordID = 0;  // the current row's record number, from field lRecordIDCol
    std::string sGPDString;
    bool m_bGPDEnded = false;  // the table failed a move; it stays put until MoveFirst

    double dLongitude = 0.0;
    double dLatitude = 0.0;
    std::string sWKT;
    std::string sCurrentLine;  // narrow, as read
    // 64-bit counters: a file of several gigabytes or more than 2^31 lines can't overflow them.
    std::int64_t lCurrentRow = 0;
    std::int64_t lFileLength = 0;
    std::int64_t lBytesRead = 0;

    bool m_bLineFeedEndsLine = false;
    bool m_bSkipByteOrderMark = false;
    std::optional<platform::CodePage> m_eTextCodePage;
    std::int32_t m_lSampleRows = 0;
    std::vector<std::pair<std::string, std::int32_t>> m_vColumnTypes;  // folded key, type
    bool m_bDecimalComma = false;
    bool m_bQuotedLineBreaks = false;
    bool m_bNameEmptyHeaders = false;
    bool m_bHasPosition = false;
    std::string m_sNumber;        // a field with its decimal comma made a point
    std::string m_sContinuation;  // the next line of a record that runs over a line end
    LineFields m_aFields;         // the current row's fields, good until the next line is read
    std::string m_sSkipped;       // lines read and dropped
};

}  // namespace tnw
