// The GPL dialect: a file named ".gpl" is a log with twelve known fields, written in stretches
// between "STAR" and "STOP" command lines, whose records join a companion dBase table (".gpd")
// by record number.
#include <exception>
#include <string>
#include <string_view>

#include "core/Error.h"
#include "core/NumberText.h"
#include "delimited/tnwASCIIDecoder.h"
#include "platform/CodePage.h"
#include "platform/File.h"
#include "support/mLog.h"

namespace tnw {

namespace {

struct FixedColumn {
    std::string_view sKey;
    std::int32_t lPosition;
    std::int32_t lType;
    std::int16_t iSize;
    std::int16_t iPrecision;
    std::int32_t lFlags;
    bool bVisible;
};

// Fields 2 and 3 are latitude and longitude and have no column. "Time" comes first so that the
// list gives it Position 1 by itself.
constexpr FixedColumn kFixedColumns[] = {
    {"Time", 1, vtInt32, 6, 0, 24, false},      {"Altitude", 4, vtDouble, 8, 3, 3, false},
    {"SampleID", 5, vtInt16, 4, 0, 24, true},   {"GPSQuality", 6, vtInt16, 1, 0, 4, false},
    {"HOffset", 7, vtFloat, 5, 2, 3, false},    {"HOffsetDir", 8, vtString, 1, 0, 8, false},
    {"RecordID", 9, vtInt32, 6, 0, 4, true},    {"GPSSpeed", 10, vtFloat, 6, 2, 3, true},
    {"GPSHeading", 11, vtInt16, 3, 0, 3, true}, {"Rate_Rx", 12, vtDouble, 10, 3, 3, true},
    {"Rate_Act", 13, vtDouble, 10, 3, 3, true}, {"Swath", 14, vtDouble, 10, 3, 3, true},
};

constexpr std::int32_t kLatitudeField = 2;
constexpr std::int32_t kLongitudeField = 3;
constexpr std::int32_t kRecordIDField = 9;
constexpr std::int32_t kNoUnit = 16;

// The companion table of a log: the same name with ".gpd" in place of its last four characters.
// Where there is none, one with ".GPD" serves, as it would on a file system that ignores case.
std::string CompanionName(const std::string& sLog) {
    const std::string sBase = sLog.substr(0, sLog.size() - 4);
    const std::string sLower = sBase + ".gpd";
    if (!platform::FileExists(sLower) && platform::FileExists(sBase + ".GPD")) {
        return sBase + ".GPD";
    }
    return sLower;
}

}  // namespace

bool tnwASCIIDecoder::IsGPLName(std::string_view sName) {
    if (sName.size() < 4) return false;
    return FoldCaseEquals(sName.substr(sName.size() - 4), ".gpl");
}

void tnwASCIIDecoder::OpenGPL() {
    bGPL = true;
    lHeaderRows = 1;

    // A table that is missing or can't be read leaves the log without one, unreported.
    oGPD.reset();
    m_bGPDEnded = false;
    try {
        auto oTable = std::make_unique<tnwDBFDecoder>();
        oTable->SetFilename(CompanionName(sFilename));
        if (oTable->IsValidFile()) oGPD = std::move(oTable);
    } catch (...) {
    }

    auto oList = CreateAs<tnwColumns>(kProgIdColumns, "Missing Component");
    if (!oList) Raise(errObjectNotSet);
    oColumns = oList;
    for (const FixedColumn& t : kFixedColumns) {
        auto oColumn = oColumns->Add(t.sKey, "", "", t.lType, t.iSize, t.iPrecision, t.lFlags, 1,
                                     kNoUnit, "", t.bVisible, true);
        if (oColumn && t.lPosition != 1) oColumn->SetSource("", t.lPosition);
    }
    if (oGPD) {
        // A key the list has already adds nothing: the join then feeds the fixed column.
        for (const auto& oColumn : oGPD->Columns()->Items()) {
            oColumns->Add(oColumn->Key(), oColumn->Name(), oColumn->Description(), oColumn->Type(),
                          oColumn->Size(), oColumn->Precision(), oColumn->Flags(), 1, kNoUnit, "",
                          oColumn->Visible(), true);
        }
    }
    SetLatCol(kLatitudeField);
    SetLonCol(kLongitudeField);
    lRecordIDCol = kRecordIDField;
    bGPLStarted = false;
}

bool tnwASCIIDecoder::IsGPLCommand() {
    const std::string_view sStart = std::string_view(sCurrentLine).substr(0, 4);
    if (sStart == "STAR") {
        bGPLStart = true;
        bGPLStarted = true;
    } else if (sStart == "STOP") {
        bGPLEnd = true;
    } else {
        return false;
    }
    sGPLCommand = platform::FromNarrow(sCurrentLine);
    return true;
}

void tnwASCIIDecoder::JoinGPD() {
    // The table moves forward only, to the row of the record's number or to its own end: a
    // number beyond the table's count + 1 takes what the table's last move left in its columns.
    // A table that fails a move (it ends before its header says) stays where it is until the
    // next MoveFirst; the failure is reported once and the log reads on.
    if (!m_bGPDEnded) {
        try {
            while (!oGPD->Eof() && TextToNumber(oGPD->CurrentRow()) < lRecordID)
                oGPD->MoveNext();
        } catch (...) {
            m_bGPDEnded = true;
            mLog::ErrorLog("tnwASCIIDecoder.MoveNext", CurrentError(std::current_exception()));
        }
    }
    sGPDString.clear();
    bool bSeparator = false;
    for (const auto& oTableColumn : oGPD->Columns()->Items()) {
        const auto oColumn = oColumns->Item(oTableColumn->Key());
        if (!oColumn) Raise(errObjectNotSet);
        oColumn->SetValue(oTableColumn->Value());
        if (bSeparator) sGPDString += '|';
        sGPDString += oTableColumn->Text();
        bSeparator = true;
    }
}

}  // namespace tnw
