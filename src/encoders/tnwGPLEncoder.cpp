#include "encoders/tnwGPLEncoder.h"

#include <cmath>
#include <limits>

#include "core/Error.h"
#include "core/NumberText.h"
#include "platform/Hooks.h"
#include "support/mLog.h"

namespace tnw {

namespace {

constexpr std::string_view kHeader =
    "GPL11\r\n"
    "Time , Latitude, Longitude, Elevation, SampleID, GPSQuality, Hoffset, HOffsetDir, RecordID, "
    "GPSSpeed, GPSHeading, Rate(RX), Rate(Actual), Swath(Actual)\r\n"
    "\r\n";
constexpr std::string_view kStartLine = "STAR\r\n";
constexpr std::string_view kStopLine = "STOP\r\n";
constexpr std::int32_t kSecondsPerDay = 86400;

// The seconds of the day in a UTC value: the whole days (the quotient cut toward zero) come off
// in 32-bit arithmetic, so a value whose days overflow a 32-bit product raises error 6.
std::int32_t SecondsOfDay(const Variant& vUTC) {
    const double dUTC = vUTC.ToDouble();
    const double dDays = std::trunc(dUTC / kSecondsPerDay);
    constexpr double dMaxDays = std::numeric_limits<std::int32_t>::max() / kSecondsPerDay;
    if (!(std::fabs(dDays) <= dMaxDays)) Raise(errOverflow);
    const std::int32_t lTaken = static_cast<std::int32_t>(dDays) * kSecondsPerDay;
    return RoundToLong(dUTC - lTaken);
}

}  // namespace

tnwGPLEncoder::~tnwGPLEncoder() {
    CloseFiles();
}

bool tnwGPLEncoder::Initialize(const std::string& sFilenameIn,
                               std::shared_ptr<tnwColumns> oColumnsIn, bool bGPDIn) {
    bool bResult = false;
    Guard("tnwGPLEncoder.Initialize", [&] {
        bGPD = bGPDIn;
        bResult = InitializeFile(sFilenameIn, std::move(oColumnsIn));
    });
    return bResult;
}

std::string tnwGPLEncoder::SettleName(const std::string& sFilenameIn) const {
    const auto oFiles = FileUtility();
    if (m_bKeepExtension || oFiles->Extension(sFilenameIn).empty()) return sFilenameIn;
    // A bare file name has no folder: it stays in the current one rather than moving to the
    // root.
    std::string sFolder = oFiles->Folder(sFilenameIn);
    if (!sFolder.empty()) sFolder += kPathSeparator;
    return sFolder + oFiles->BaseName(sFilenameIn);
}

bool tnwGPLEncoder::InitializeFile(const std::string& sFilenameIn,
                                   std::shared_ptr<tnwColumns> oColumnsIn) {
    std::string sName = SettleName(sFilenameIn);
    oColumns = std::move(oColumnsIn);
    try {
        // A file still open from an earlier Initialize is finished first: one file per role.
        CloseFiles();
        iFile.Open(sName);
        iFile.Write(kHeader);
        if (m_bWriteStartStop) iFile.Write(kStartLine);
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

bool tnwGPLEncoder::Update() {
    return Guard("tnwGPLEncoder.Update", [&] {
        if (lSampleID == std::numeric_limits<std::int32_t>::max()) Raise(errOverflow);
        ++lSampleID;  // moves before anything else can fail
        // Every line writes something, so a closed file fails before any field is read.
        if (!iFile.IsOpen()) Raise(errBadFileNumber);
        if (!oColumns) Raise(errObjectNotSet);
        const auto oUTC = oColumns->Item("UTC");
        const std::int32_t lTime = oUTC ? SecondsOfDay(oUTC->Value()) : 0;
        // The whole line is built before any of it is written, so a failing field leaves no
        // half line behind.
        m_sLine = std::to_string(lTime);
        m_sLine += ',';
        AppendPositionField(true);
        m_sLine += ',';
        AppendPositionField(false);
        m_sLine += ',';
        AppendColumnField("Elevation");
        m_sLine += ',';
        m_sLine += std::to_string(lSampleID);
        m_sLine += ",2,0,x,1,0,";
        AppendColumnField("Heading");
        m_sLine += ",0,0,0\r\n";
        iFile.Write(m_sLine);
    });
}

void tnwGPLEncoder::AppendColumnField(std::string_view sKey) {
    if (const auto oColumn = oColumns->Item(sKey)) {
        AppendNumberText(m_sLine, oColumn->Value());
    } else {
        m_sLine += '0';
    }
}

void tnwGPLEncoder::AppendPositionField(bool bLatitude) {
    const auto* pPoint = dynamic_cast<const IPoint*>(oGeometry.get());
    if (m_bPositionFromPoint && pPoint) {
        AppendNumberText(m_sLine, bLatitude ? pPoint->Y() : pPoint->X());
    } else {
        AppendColumnField(bLatitude ? "Latitude" : "Longitude");
    }
}

void tnwGPLEncoder::CloseFiles() noexcept {
    if (iFile.Number() <= 0) return;
    try {
        if (m_bWriteStartStop) iFile.Write(kStopLine);
        iFile.Close();
    } catch (...) {
        // Close-out ignores all errors; the file ends closed either way.
        iFile.Abandon();
    }
}

bool tnwGPLEncoder::ImportRS(const std::string& sFilenameIn, std::shared_ptr<tnwRecordSource> oRS,
                             bool bGPDIn) {
    return detail::ImportRecords(*this, oRS, [&](std::shared_ptr<tnwColumns> oSourceColumns) {
        return Initialize(sFilenameIn, std::move(oSourceColumns), bGPDIn);
    });
}

bool tnwGPLEncoder::ChangeColumns(std::shared_ptr<tnwColumns> oColumnsIn) {
    return detail::ChangeColumnsIfSameLayout(oColumns, std::move(oColumnsIn));
}

void tnwGPLEncoder::ItnwEncoder_SetGeometry(std::shared_ptr<IGeometry> oGeometryIn) {
    SetGeometry(std::move(oGeometryIn));
}

void tnwGPLEncoder::ItnwEncoder_Update() {
    Update();
}

void tnwGPLEncoder::ItnwEncoder_CloseFiles() {
    CloseFiles();
}

bool tnwGPLEncoder::ItnwEncoder_ImportRS(const std::string& sFilenameIn,
                                         std::shared_ptr<tnwRecordSource> oRS) {
    return ImportRS(sFilenameIn, std::move(oRS), bGPD);
}

bool tnwGPLEncoder::ItnwEncoder_Initialize(const std::string& sFilenameIn,
                                           std::shared_ptr<tnwColumns> oColumnsIn) {
    return Initialize(sFilenameIn, std::move(oColumnsIn), bGPD);
}

bool tnwGPLEncoder::ItnwEncoder_ChangeColumns(std::shared_ptr<tnwColumns> oColumnsIn) {
    return ChangeColumns(std::move(oColumnsIn));
}

}  // namespace tnw
