// Writes records as a GPL log: three header lines, then one line of fourteen comma-separated
// fields per Update. Five fields come from the columns keyed "UTC", "Latitude", "Longitude",
// "Elevation" and "Heading", one from the object's line counter; the rest are fixed. The
// geometry plays no part in the output.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "core/GISLib.h"
#include "core/ItnwEncoder.h"
#include "platform/File.h"

namespace tnw {

class tnwGPLEncoder final : public ItnwEncoder {
public:
    tnwGPLEncoder() = default;
    ~tnwGPLEncoder() override;  // runs CloseFiles(); never throws

    // Stores bGPDIn, then InitializeFile. Failures go to the error path: false.
    bool Initialize(const std::string& sFilenameIn, std::shared_ptr<tnwColumns> oColumnsIn,
                    bool bGPDIn = true);
    // Settles the name (an extension is dropped, none put in its place, unless KeepExtension),
    // opens the file and writes the header lines. A failure to create the file or write its
    // header shows the "Ascii Error" box and gives false.
    bool InitializeFile(const std::string& sFilenameIn, std::shared_ptr<tnwColumns> oColumnsIn);

    // Stored and held, also past Update; nothing in the log depends on it.
    void SetGeometry(std::shared_ptr<IGeometry> oGeometryIn) { oGeometry = std::move(oGeometryIn); }
    // Counts the line, then writes it. A line that fails leaves nothing in the file; the
    // failure goes to the error path and the result is false.
    bool Update();
    // Closes the file (after its "STOP" line with WriteStartStop); ignores all errors and may be
    // called at any time.
    void CloseFiles() noexcept;

    // Initialize with the source's own columns, then one Update per record. Failures of the
    // record source pass to the caller.
    bool ImportRS(const std::string& sFilenameIn, std::shared_ptr<tnwRecordSource> oRS,
                  bool bGPDIn = true);
    // Takes oColumnsIn when its layout text equals that of the current columns.
    bool ChangeColumns(std::shared_ptr<tnwColumns> oColumnsIn);

    // Stored and given back; nothing written depends on it.
    bool GPD() const { return bGPD; }
    void SetGPD(bool bGPDIn) { bGPD = bGPDIn; }
    // The name actually opened.
    const std::string& Filename() const { return sFilename; }

    // Extensions, off by default; the command-line tool turns them on.
    // The file keeps the name it was given, extension and all: "field.gpl" is written as
    // "field.gpl" and so reads as a GPL log.
    bool KeepExtension() const { return m_bKeepExtension; }
    void SetKeepExtension(bool bKeep) { m_bKeepExtension = bKeep; }
    // A held point gives Latitude (its Y) and Longitude (its X) in place of the columns of
    // those keys, so a position that a record carries as its geometry is not lost. Without a
    // point the columns serve as before.
    bool PositionFromPoint() const { return m_bPositionFromPoint; }
    void SetPositionFromPoint(bool bFromPoint) { m_bPositionFromPoint = bFromPoint; }
    // A "STAR" line follows the header lines and a "STOP" line ends the log, so that a reader
    // of GPL logs finds the records in one stretch. Set before InitializeFile.
    bool WriteStartStop() const { return m_bWriteStartStop; }
    void SetWriteStartStop(bool bWrite) { m_bWriteStartStop = bWrite; }

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

    std::string SettleName(const std::string& sFilenameIn) const;
    // The number text of the column keyed sKey, or "0" when there is none.
    void AppendColumnField(std::string_view sKey);
    // Latitude (bLatitude) or longitude: from the held point when PositionFromPoint, else
    // from the column.
    void AppendPositionField(bool bLatitude);

    platform::OutputFile iFile;  // the file; its number is 0 while closed
    std::shared_ptr<IGeometry> oGeometry;
    std::shared_ptr<tnwColumns> oColumns;
    bool bGPD = false;
    std::string sFilename;
    std::int32_t lSampleID = 0;  // lines of this object's whole life, over all its files
    bool m_bKeepExtension = false;
    bool m_bPositionFromPoint = false;
    bool m_bWriteStartStop = false;
    std::string m_sLine;  // the line being built, reused so that records allocate nothing
};

}  // namespace tnw
