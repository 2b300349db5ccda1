// Writes records as a delimited text file: an optional header line, then one line per Update.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "core/GISLib.h"
#include "core/ItnwEncoder.h"
#include "platform/File.h"

namespace tnw {

class tnwASCIIEncoder final : public ItnwEncoder {
public:
    tnwASCIIEncoder() = default;
    ~tnwASCIIEncoder() override;  // runs CloseFiles(); never throws

    // Stores the three options, then InitializeFile. Failures go to the error path: false.
    bool Initialize(const std::string& sFilenameIn, std::shared_ptr<tnwColumns> oColumnsIn,
                    bool bHeaderIn = true, const std::string& sDelimiterIn = ",",
                    bool bIncludeGeometryIn = false);
    // Opens the file with the options as they stand and writes the header. A failure to create
    // the file or write its header shows the "Ascii Error" box and gives false.
    bool InitializeFile(const std::string& sFilenameIn, std::shared_ptr<tnwColumns> oColumnsIn);

    // Held until the next successful Update.
    void SetGeometry(std::shared_ptr<IGeometry> oGeometryIn) { oGeometry = std::move(oGeometryIn); }
    // Writes one line from the column values and the held geometry. A line that fails leaves
    // nothing in the file; the failure goes to the error path and the result is false.
    bool Update();
    // Finishes and closes the file; ignores all errors and may be called at any time.
    void CloseFiles() noexcept;

    // Initialize with the source's own columns, then one Update per record. Failures of the
    // record source pass to the caller.
    bool ImportRS(const std::string& sFilenameIn, std::shared_ptr<tnwRecordSource> oRS,
                  bool bHeaderIn = true, const std::string& sDelimiterIn = ",",
                  bool bIncludeGeometryIn = false);
    // Takes oColumnsIn when its layout text equals that of the current columns.
    bool ChangeColumns(std::shared_ptr<tnwColumns> oColumnsIn);

    bool Header() const { return bHeader; }
    void SetHeader(bool bHeaderIn) { bHeader = bHeaderIn; }
    const std::string& Delimiter() const { return sDelimiter; }
    void SetDelimiter(std::string sDelimiterIn) { sDelimiter = std::move(sDelimiterIn); }
    bool IncludeGeometry() const { return bIncludeGeometry; }
    void SetIncludeGeometry(bool bIncludeGeometryIn) { bIncludeGeometry = bIncludeGeometryIn; }
    bool IncludeLonLat() const { return bIncludeLonLat; }
    void SetIncludeLonLat(bool bIncludeLonLatIn) { bIncludeLonLat = bIncludeLonLatIn; }
    bool IncludeInvisible() const { return bIncludeInvisible; }
    void SetIncludeInvisible(bool bIncludeInvisibleIn) { bIncludeInvisible = bIncludeInvisibleIn; }
    // Extension, off by default: an empty value is written as an empty cell, with no quotes,
    // instead of " 0" or "", so that a reader sees it as missing.
    bool BlankEmptyValues() const { return m_bBlankEmptyValues; }
    void SetBlankEmptyValues(bool bBlank) { m_bBlankEmptyValues = bBlank; }
    // Extension, off by default: IncludeLonLat writes the point's X and Y as their number text,
    // all 15 digits, instead of rounded to 7 decimal places.
    bool ExactLonLat() const { return m_bExactLonLat; }
    void SetExactLonLat(bool bExact) { m_bExactLonLat = bExact; }
    // The name actually opened, ".txt" added where the given name had no extension.
    const std::string& Filename() const { return sFilename; }

private:
    std::shared_ptr<tnwColumns> ItnwEncoder_Columns() const override { return oColumns; }
    void ItnwEncoder_SetGeometry(std::shared_ptr<IGeometry> oGeometryIn) override;
    void ItnwEncoder_Update() override;
    void ItnwEncoder_CloseFiles() override;
    bool ItnwEncoder_ImportRS(const std::string& sFilenameIn,
                              std::shared_ptr<tnwRecordSource> oRS) override;
    bool ItnwEncoder_Initialize(const std::string& sFilenameIn,
                                std::shared_ptr<tnwColumns> oColumnsIn) override;
    bool ItnwEncoder_ChangeColumns(std::shared_ptr<tnwColumns> oColumnsIn) override;
    std::string ItnwEncoder_Filename() const override { return sFilename; }

    bool IsWritten(const tnwColumn& oColumn) const;
    // Appends text to m_sLine in the narrow code page, between double quotes when the
    // delimiter is exactly ",".
    void AppendQuoted(std::string_view sText);
    void AppendSeparator(bool& bSeparator);
    // Build the header line or the current record's line in m_sLine, line end included.
    void BuildHeader();
    void BuildRecord();

    platform::OutputFile m_iFNum;  // the file; its number is 0 while closed
    std::shared_ptr<IGeometry> oGeometry;
    std::shared_ptr<tnwColumns> oColumns;
    bool bHeader = true;
    std::string sDelimiter = ",";
    bool bIncludeGeometry = false;
    bool bIncludeLonLat = false;
    std::string sFilename;
    bool bIncludeInvisible = false;
    bool m_bBlankEmptyValues = false;
    bool m_bExactLonLat = false;
    std::string m_sLine;  // the line being built, reused so that records allocate nothing
};

}  // namespace tnw
