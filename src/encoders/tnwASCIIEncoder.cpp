#include "encoders/tnwASCIIEncoder.h"

#include "core/Error.h"
#include "core/NumberText.h"
#include "platform/CodePage.h"
#include "platform/Hooks.h"
#include "support/mLog.h"

namespace tnw {

namespace {
constexpr std::string_view kLineEnd = "\r\n";
constexpr int kLonLatDecimals = 7;
}  // namespace

tnwASCIIEncoder::~tnwASCIIEncoder() {
    CloseFiles();
}

bool tnwASCIIEncoder::Initialize(const std::string& sFilenameIn,
                                 std::shared_ptr<tnwColumns> oColumnsIn, bool bHeaderIn,
                                 const std::string& sDelimiterIn, bool bIncludeGeometryIn) {
    bool bResult = false;
    Guard("tnwASCIIEncoder.Initialize", [&] {
        bHeader = bHeaderIn;
        sDelimiter = sDelimiterIn;
        bIncludeGeometry = bIncludeGeometryIn;
        bResult = InitializeFile(sFilenameIn, std::move(oColumnsIn));
    });
    return bResult;
}

bool tnwASCIIEncoder::InitializeFile(const std::string& sFilenameIn,
                                     std::shared_ptr<tnwColumns> oColumnsIn) {
    oColumns = std::move(oColumnsIn);
    std::string sName = sFilenameIn;
    if (FileUtility()->Extension(sName).empty()) sName += ".txt";
    try {
        // A file still open from an earlier Initialize is finished first: one file per role.
        CloseFiles();
        m_iFNum.Open(sName);
        if (bHeader) {
            BuildHeader();
            m_iFNum.Write(m_sLine);
        }
    } catch (...) {
        const Error oError = CurrentError(std::current_exception());
        platform::ShowMessageBox("Error: " + oError.sDescription, "Ascii Error",
                                 platform::MsgIcon::Exclamation);
        CloseFiles();
        return false;
    }
    sFilename = std::move(sName);
    return true;
}

bool tnwASCIIEncoder::Update() {
    return Guard("tnwASCIIEncoder.Update", [&] {
        // Every line writes at least its end, so a closed file fails before any cell is read.
        if (!m_iFNum.IsOpen()) Raise(errBadFileNumber);
        BuildRecord();
        m_iFNum.Write(m_sLine);
        oGeometry.reset();
    });
}

void tnwASCIIEncoder::CloseFiles() noexcept {
    if (m_iFNum.Number() <= 0) return;
    try {
        // Nothing is raised, but lines that were taken and then could not be written are
        // reported: the file ends closed either way.
        Guard("tnwASCIIEncoder.CloseFiles", [&] { m_iFNum.Close(); });
    } catch (...) {
        // Only the error path itself can fail here, and close-out raises nothing.
    }
}

bool tnwASCIIEncoder::ImportRS(const std::string& sFilenameIn, std::shared_ptr<tnwRecordSource> oRS,
                               bool bHeaderIn, const std::string& sDelimiterIn,
                               bool bIncludeGeometryIn) {
    return detail::ImportRecords(*this, oRS, [&](std::shared_ptr<tnwColumns> oSourceColumns) {
        return Initialize(sFilenameIn, std::move(oSourceColumns), bHeaderIn, sDelimiterIn,
                          bIncludeGeometryIn);
    });
}

bool tnwASCIIEncoder::ChangeColumns(std::shared_ptr<tnwColumns> oColumnsIn) {
    return detail::ChangeColumnsIfSameLayout(oColumns, std::move(oColumnsIn));
}

void tnwASCIIEncoder::ItnwEncoder_SetGeometry(std::shared_ptr<IGeometry> oGeometryIn) {
    SetGeometry(std::move(oGeometryIn));
}

void tnwASCIIEncoder::ItnwEncoder_Update() {
    Update();
}

void tnwASCIIEncoder::ItnwEncoder_CloseFiles() {
    CloseFiles();
}

bool tnwASCIIEncoder::ItnwEncoder_ImportRS(const std::string& sFilenameIn,
                                           std::shared_ptr<tnwRecordSource> oRS) {
    return ImportRS(sFilenameIn, std::move(oRS), bHeader, sDelimiter, bIncludeGeometry);
}

bool tnwASCIIEncoder::ItnwEncoder_Initialize(const std::string& sFilenameIn,
                                             std::shared_ptr<tnwColumns> oColumnsIn) {
    return Initialize(sFilenameIn, std::move(oColumnsIn), bHeader, sDelimiter, bIncludeGeometry);
}

bool tnwASCIIEncoder::ItnwEncoder_ChangeColumns(std::shared_ptr<tnwColumns> oColumnsIn) {
    return ChangeColumns(std::move(oColumnsIn));
}

bool tnwASCIIEncoder::IsWritten(const tnwColumn& oColumn) const {
    return bIncludeInvisible || oColumn.Visible();
}

void tnwASCIIEncoder::AppendQuoted(std::string_view sText) {
    const bool bQuote = sDelimiter == ",";
    if (bQuote) m_sLine += '"';
    platform::AppendNarrow(m_sLine, sText);
    if (bQuote) m_sLine += '"';
}

// The separator starts empty and turns into the delimiter after the first cell.
void tnwASCIIEncoder::AppendSeparator(bool& bSeparator) {
    if (bSeparator) platform::AppendNarrow(m_sLine, sDelimiter);
    bSeparator = true;
}

void tnwASCIIEncoder::BuildHeader() {
    m_sLine.clear();
    bool bSeparator = false;
    if (bIncludeLonLat) {
        AppendQuoted("Longitude");
        platform::AppendNarrow(m_sLine, sDelimiter);
        AppendQuoted("Latitude");
        bSeparator = true;
    }
    if (!oColumns) Raise(errObjectNotSet);
    for (const auto& oColumn : oColumns->Items()) {
        if (!IsWritten(*oColumn)) continue;
        AppendSeparator(bSeparator);
        AppendQuoted(oColumn->Key());
    }
    if (bIncludeGeometry) {
        AppendSeparator(bSeparator);
        m_sLine += "Geometry";
    }
    m_sLine += kLineEnd;
}

void tnwASCIIEncoder::BuildRecord() {
    m_sLine.clear();
    bool bSeparator = false;
    if (bIncludeLonLat) {
        bSeparator = true;
        if (auto oPoint = std::dynamic_pointer_cast<IPoint>(oGeometry)) {
            const double dX = oPoint->X();
            const double dY = oPoint->Y();
            AppendNumberText(m_sLine, m_bExactLonLat ? dX : RoundHalfEven(dX, kLonLatDecimals));
            platform::AppendNarrow(m_sLine, sDelimiter);
            AppendNumberText(m_sLine, m_bExactLonLat ? dY : RoundHalfEven(dY, kLonLatDecimals));
        } else {
            platform::AppendNarrow(m_sLine, sDelimiter);
        }
    }
    if (!oColumns) Raise(errObjectNotSet);
    for (const auto& oColumn : oColumns->Items()) {
        if (!IsWritten(*oColumn)) continue;
        AppendSeparator(bSeparator);
        if (m_bBlankEmptyValues && oColumn->Value().IsEmpty()) continue;
        if (oColumn->Type() == vtString) {
            m_sLine += '"';
            platform::AppendNarrow(m_sLine, oColumn->Text());
            m_sLine += '"';
        } else {
            AppendNumberText(m_sLine, oColumn->Value());
        }
    }
    if (bIncludeGeometry) {
        AppendSeparator(bSeparator);
        if (!oGeometry) Raise(errObjectNotSet);
        AppendQuoted(oGeometry->WKT());
    }
    m_sLine += kLineEnd;
}

}  // namespace tnw
