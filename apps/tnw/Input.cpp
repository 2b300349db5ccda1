#include "Input.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <limits>

#include "ExitCodes.h"
#include "ShapeFile.h"
#include "core/Error.h"
#include "ogc_sf/WKT.h"
#include "platform/File.h"

namespace tnw::cli {

namespace fs = std::filesystem;

namespace {

// The Size of a text column of a text input: more than a line holds, so nothing is cut.
constexpr std::int16_t kWholeText = 32767;
// The widest text field of a dBase table, and the unit of a column whose header names none.
constexpr std::int16_t kWidestTextField = 254;
constexpr std::int32_t kNoUnit = 16;
// Width and decimals of a number column of a text input: those of any double's number text.
constexpr std::int16_t kNumberWidth = 24;
constexpr std::int16_t kNumberDecimals = 15;

// The delimiter that stands most often outside double quotes in the header line; "," when
// none of the usual ones does.
std::string SniffDelimiter(const std::string& sPath, std::int32_t lHeaderRow) {
    platform::InputFile oFile;
    oFile.Open(sPath);
    std::string sLine;
    std::size_t nConsumed = 0;
    for (std::int32_t lRow = 1; lRow <= std::max(lHeaderRow, 1); ++lRow) {
        if (!oFile.ReadLine(sLine, platform::LineEnds::Any, nConsumed)) return ",";
    }
    constexpr std::array<char, 4> kCandidates = {',', ';', '\t', '|'};
    std::array<int, kCandidates.size()> aCounts{};
    bool bQuoted = false;
    for (char c : sLine) {
        if (c == '"') bQuoted = !bQuoted;
        if (bQuoted) continue;
        for (std::size_t i = 0; i < kCandidates.size(); ++i)
            aCounts[i] += c == kCandidates[i];
    }
    std::size_t nBest = 0;
    for (std::size_t i = 1; i < kCandidates.size(); ++i) {
        if (aCounts[i] > aCounts[nBest]) nBest = i;
    }
    return std::string(1, kCandidates[nBest]);
}

std::int32_t FieldCount(const FieldArray& aFields) {
    return aFields.HasSize() ? aFields.UBound() + 1 : 0;
}

// The geometry field numbers, checked against the fields a row has.
void SetGeometryFields(const InputOptions& tOptions, std::int32_t lFields, auto& oDecoder) {
    const bool bLonLat = tOptions.lLonCol > 0 || tOptions.lLatCol > 0;
    if (bLonLat && tOptions.lWKTCol > 0) {
        throw Failure(kExitUsage, "give either --lon-col and --lat-col or --wkt-col, not both");
    }
    if (bLonLat && (tOptions.lLonCol <= 0 || tOptions.lLatCol <= 0)) {
        throw Failure(kExitUsage, "--lon-col and --lat-col go together");
    }
    for (auto [lColumn, sOption] :
         {std::pair{tOptions.lLonCol, "--lon-col"}, std::pair{tOptions.lLatCol, "--lat-col"},
          std::pair{tOptions.lWKTCol, "--wkt-col"}}) {
        if (lColumn > lFields) {
            throw Failure(kExitUsage, std::string(sOption) + " " + std::to_string(lColumn) +
                                          " is past the " + std::to_string(lFields) +
                                          " fields of " + tOptions.sPath);
        }
    }
    if (bLonLat) {
        oDecoder.SetLonCol(tOptions.lLonCol);
        oDecoder.SetLatCol(tOptions.lLatCol);
    }
    if (tOptions.lWKTCol > 0) {
        oDecoder.SetWKTCol(tOptions.lWKTCol);
        for (const auto& oColumn : oDecoder.Columns()->Items()) {
            if (oColumn->Position() == tOptions.lWKTCol) oColumn->SetVisible(false);
        }
    }
}

std::string Lower(std::string_view s) {
    std::string sLower;
    for (char c : s)
        sLower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return sLower;
}

// --encoding, or nothing when it wasn't given. Failure kExitUsage for a name the tool doesn't
// know.
std::optional<platform::CodePage> GivenCodePage(const InputOptions& tOptions) {
    if (tOptions.sEncoding.empty()) return std::nullopt;
    if (auto eCodePage = CodePageOfName(tOptions.sEncoding)) return eCodePage;
    throw Failure(kExitUsage,
                  "unknown encoding \"" + tOptions.sEncoding + "\"; use utf-8, 1252 or latin1");
}

// UTF-8 when the file starts with a byte-order mark, or when its first mebibyte has bytes past
// ASCII and all of them form valid UTF-8; else Windows-1252.
platform::CodePage TextCodePageOf(const std::string& sPath) {
    constexpr std::size_t kLook = 1 << 20;
    platform::InputFile oFile;
    oFile.Open(sPath);
    std::string sBytes(kLook, '\0');
    sBytes.resize(oFile.Read(sBytes.data(), kLook));
    if (sBytes.starts_with("\xEF\xBB\xBF")) return platform::CodePage::Utf8;
    if (!oFile.AtEnd()) {
        // The look may end inside a character: leave out the last one.
        while (!sBytes.empty() && (static_cast<unsigned char>(sBytes.back()) & 0xC0) == 0x80)
            sBytes.pop_back();
        if (!sBytes.empty() && static_cast<unsigned char>(sBytes.back()) >= 0xC0) sBytes.pop_back();
    }
    const bool bAscii = std::all_of(sBytes.begin(), sBytes.end(),
                                    [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    return !bAscii && platform::IsValidUtf8(sBytes) ? platform::CodePage::Utf8
                                                    : platform::CodePage::Windows1252;
}

// The code page a table names: its .cpg (any case of the extension), else its language driver
// byte, else Windows-1252. Failure kExitInput for a .cpg the tool can't follow.
platform::CodePage TableCodePageOf(const std::string& sPath, std::uint8_t byLanguageDriver) {
    std::filesystem::path oCpg(sPath);
    for (const char* sExtension : {".cpg", ".CPG"}) {
        oCpg.replace_extension(sExtension);
        std::error_code ec;
        if (!std::filesystem::is_regular_file(oCpg, ec)) continue;
        platform::InputFile oFile;
        oFile.Open(oCpg.string());
        std::string sName(64, '\0');
        sName.resize(oFile.Read(sName.data(), sName.size()));
        while (!sName.empty() && std::isspace(static_cast<unsigned char>(sName.back())))
            sName.pop_back();
        if (auto eCodePage = CodePageOfName(sName)) return *eCodePage;
        throw Failure(kExitInput, oCpg.string() + " names the code page \"" + sName +
                                      "\", which the tool can't read; give --encoding");
    }
    switch (byLanguageDriver) {
        case 0x57:  // ANSI, as GDAL writes it: ISO-8859-1
            return platform::CodePage::Latin1;
        default:  // 0x03 (Windows ANSI) and tables that name none
            return platform::CodePage::Windows1252;
    }
}

// "Yield=real": the column's key and the type asked for it. Failure kExitUsage otherwise.
std::pair<std::string, std::int32_t> ParseColumnType(const std::string& sText) {
    static const std::pair<const char*, std::int32_t> kTypes[] = {
        {"real", vtDouble}, {"integer", vtInt32}, {"text", vtString}, {"date", vtDate}};
    const std::size_t nEquals = sText.rfind('=');
    if (nEquals != std::string::npos && nEquals > 0) {
        const std::string sType = sText.substr(nEquals + 1);
        for (const auto& [sName, lType] : kTypes) {
            if (sType == sName) return {sText.substr(0, nEquals), lType};
        }
    }
    throw Failure(kExitUsage,
                  "--type takes COLUMN=real, integer, text or date, not \"" + sText + "\"");
}

// The parser of the well-known text in a record.
std::shared_ptr<IGeometry> ParseGeometry(std::string_view sWKT) {
    return standins::ParseWKT(sWKT);
}

}  // namespace

void OpenText(const InputOptions& tOptions, Input& tInput) {
    if (tOptions.lHeaderRows < 0) throw Failure(kExitUsage, "--header-rows can't be negative");
    auto oDecoder = std::make_shared<tnwASCIIDecoder>();
    oDecoder->SetLineFeedEndsLine(true);
    oDecoder->SetSkipByteOrderMark(true);
    oDecoder->SetTextCodePage(GivenCodePage(tOptions).value_or(TextCodePageOf(tOptions.sPath)));
    oDecoder->SetQuotedLineBreaks(true);
    oDecoder->SetNameEmptyHeaders(true);
    // Every row: widths from a part of the file could cut a value further down.
    oDecoder->SetSampleRows(std::numeric_limits<std::int32_t>::max());
    oDecoder->SetDecimalComma(tOptions.bDecimalComma);
    std::vector<std::string> vTyped;
    for (const std::string& sType : tOptions.vTypes) {
        const auto [sKey, lType] = ParseColumnType(sType);
        oDecoder->SetColumnType(sKey, lType);
        vTyped.push_back(sKey);
    }
    std::string sDelimiter = tOptions.sDelimiter;
    if (sDelimiter.empty()) {
        sDelimiter = LowerExtension(tOptions.sPath) == "tsv"
                         ? "\t"
                         : SniffDelimiter(tOptions.sPath, tOptions.lHeaderRows);
    }
    oDecoder->SetDelimiter(sDelimiter);
    oDecoder->SetFilename(tOptions.sPath);
    oDecoder->SetHeaderRows(tOptions.lHeaderRows);

    const FieldArray aHeader = oDecoder->ReadHeaders(std::max(tOptions.lHeaderRows, 1));
    const std::int32_t lFields = FieldCount(aHeader);
    if (!aHeader.HasSize()) {
        throw Failure(kExitInput, tOptions.sPath + " has no line " +
                                      std::to_string(std::max(tOptions.lHeaderRows, 1)));
    }
    if (tOptions.lHeaderRows > 0) {
        const Variant vBuilt = oDecoder->AutoGenColumns();
        if (const bool* pBuilt = vBuilt.As<bool>(); !pBuilt || !*pBuilt) {
            throw Failure(kExitInput, "can't make columns from the header of " + tOptions.sPath);
        }
    } else {
        std::string sNames;
        for (std::int32_t l = 1; l <= lFields; ++l) {
            sNames.append(l > 1 ? ",Field" : "Field").append(std::to_string(l));
        }
        oDecoder->ColumnsFromString(sNames, ",");
    }
    for (const std::string& sKey : vTyped) {
        if (!oDecoder->Columns()->Item(sKey)) {
            throw Failure(kExitUsage,
                          "--type names \"" + sKey + "\", which is no column of " + tOptions.sPath);
        }
    }
    // The rows typed the columns without a unit and sized them to hold every value. A text that
    // filled the widest field is read whole, so that the writer that has to cut it says so; a
    // number column with a unit in the header has the room of any double.
    tnwColumns& oColumns = *oDecoder->Columns();
    const std::vector<std::shared_ptr<tnwColumn>> vBuilt = oColumns.Items();
    oColumns.Clear();
    for (const auto& c : vBuilt) {
        const bool bText = c->Type() == vtString && c->Size() >= kWidestTextField;
        const bool bNumber = c->Type() == vtDouble && c->Unit() != kNoUnit;
        const std::int16_t iSize = bText ? kWholeText : bNumber ? kNumberWidth : c->Size();
        const std::int16_t iPrecision = bNumber ? kNumberDecimals : c->Precision();
        oColumns
            .Add(c->Key(), c->Name(), c->Description(), c->Type(), iSize, iPrecision, c->Flags(),
                 c->Kind(), c->Unit(), c->Tag(), c->Visible(), c->Active())
            ->SetPosition(c->Position());
    }
    SetGeometryFields(tOptions, lFields, *oDecoder);
    tInput.oText = oDecoder;
    tInput.eFormat = oDecoder->GeometryFormat();
    tInput.oSource = std::make_shared<tnwDecoderRecordSource>(oDecoder, ParseGeometry);
}

std::shared_ptr<tnwDBFDecoder> OpenTableDecoder(const InputOptions& tOptions,
                                                const std::string& sPath, bool bSkipDeleted,
                                                Input& tInput) {
    auto oDecoder = std::make_shared<tnwDBFDecoder>();
    oDecoder->SetEveryFieldSets(true);
    oDecoder->SetSkipDeleted(bSkipDeleted);
    oDecoder->SetRenameDuplicates(true);
    oDecoder->SetCheckVersion(true);
    std::optional<platform::CodePage> eCodePage = GivenCodePage(tOptions);
    if (!eCodePage) {
        oDecoder->SetFilename(sPath);  // for the language driver byte
        eCodePage = TableCodePageOf(sPath, oDecoder->LanguageDriver());
    }
    oDecoder->SetTextCodePage(eCodePage);
    oDecoder->SetFilename(sPath);
    if (!oDecoder->IsValidFile())
        throw Failure(kExitInput, "can't read " + sPath + " as a dBase table");
    tInput.fnLostColumns = [pDecoder = oDecoder.get()] { return pDecoder->UnreadableColumns(); };
    return oDecoder;
}

void OpenTable(const InputOptions& tOptions, Input& tInput) {
    auto oDecoder = OpenTableDecoder(tOptions, tOptions.sPath, !tOptions.bKeepDeleted, tInput);
    SetGeometryFields(tOptions, oDecoder->Columns()->Count(), *oDecoder);
    tInput.eFormat = oDecoder->GeometryFormat();
    tInput.oSource = std::make_shared<tnwDecoderRecordSource>(oDecoder, ParseGeometry);
}

void OpenLog(const InputOptions& tOptions, Input& tInput) {
    if (tOptions.lLonCol > 0 || tOptions.lLatCol > 0 || tOptions.lWKTCol > 0) {
        throw Failure(kExitUsage,
                      "a GPL log has its position in fields 2 and 3; --lon-col, "
                      "--lat-col and --wkt-col don't apply");
    }
    auto oDecoder = std::make_shared<tnwASCIIDecoder>();
    oDecoder->SetLineFeedEndsLine(true);
    oDecoder->SetFilename(tOptions.sPath);
    if (!oDecoder->GPL()) {
        throw Failure(kExitUsage, tOptions.sPath +
                                      " is read as a GPL log only when its name ends "
                                      "in .gpl");
    }
    const fs::path oBase = fs::path(tOptions.sPath).replace_extension();
    for (const char* sExtension : {".gpd", ".GPD"}) {
        const std::string sTable = oBase.string() + sExtension;
        std::error_code ec;
        if (fs::exists(sTable, ec) && oDecoder->GPDSchema().empty()) {
            tInput.vWarnings.push_back("the companion table " + sTable +
                                       " adds no columns: it is empty or could not be read");
            break;
        }
    }
    tInput.oText = oDecoder;
    tInput.eFormat = oDecoder->GeometryFormat();
    tInput.oSource = std::make_shared<tnwDecoderRecordSource>(oDecoder);
}

void OpenShapeSet(const InputOptions& tOptions, Input& tInput) {
    if (tOptions.lLonCol > 0 || tOptions.lLatCol > 0 || tOptions.lWKTCol > 0) {
        throw Failure(kExitUsage,
                      "a shapefile set carries its own geometry; --lon-col, "
                      "--lat-col and --wkt-col apply to text and dBase input");
    }
    auto oShapes = std::make_shared<ShapeGeometryReader>(tOptions.sPath);
    std::string sTable;
    for (const char* sExtension : {".dbf", ".DBF"}) {
        const std::string sCandidate =
            std::filesystem::path(tOptions.sPath).replace_extension(sExtension).string();
        std::error_code ec;
        if (std::filesystem::is_regular_file(sCandidate, ec)) sTable = sCandidate;
    }
    if (sTable.empty()) {
        throw Failure(kExitInput, "there is no .dbf beside " + tOptions.sPath +
                                      " to read the records' values from");
    }
    // Rows pair with shapes by place, so a deleted row is read like any other.
    auto oTable = OpenTableDecoder(tOptions, sTable, false, tInput);
    tInput.oSource = std::make_shared<tnwDecoderRecordSource>(oTable);
    const std::int64_t lRows = tInput.oSource->RecordCount();
    if (lRows != oShapes->RecordCount()) {
        throw Failure(kExitInput, tOptions.sPath + " holds " +
                                      CountText(oShapes->RecordCount(), "record") + " and " +
                                      sTable + " " + CountText(lRows, "row") +
                                      "; a set's files must match");
    }
    tInput.oSource->SetGeometryType(oShapes->GeometryType());
    // Points go to text as longitude and latitude, other shapes as well-known text.
    tInput.eFormat = oShapes->GeometryType() == tnwGeometryPoint ? TNW_GeometryFormat_LonLat
                                                                 : TNW_GeometryFormat_WKT;
    tInput.oSource->SetRowGeometry([oShapes](std::int64_t lRow) { return oShapes->Record(lRow); });
}

std::optional<platform::CodePage> CodePageOfName(std::string_view sName) {
    const std::string s = Lower(sName);
    for (const char* sUtf8 : {"utf-8", "utf8", "65001"})
        if (s == sUtf8) return platform::CodePage::Utf8;
    for (const char* s1252 : {"1252", "cp1252", "windows-1252", "ansi 1252"})
        if (s == s1252) return platform::CodePage::Windows1252;
    for (const char* sLatin1 :
         {"latin1", "latin-1", "iso-8859-1", "iso8859-1", "8859-1", "88591", "28591", "iso88591"})
        if (s == sLatin1) return platform::CodePage::Latin1;
    return std::nullopt;
}

void RequireFile(const std::string& sPath) {
    std::error_code ec;
    if (!std::filesystem::exists(sPath, ec)) throw Failure(kExitInput, "can't find " + sPath);
    if (!std::filesystem::is_regular_file(sPath, ec)) {
        throw Failure(kExitInput, sPath + " is not a file");
    }
    if (access(sPath.c_str(), R_OK) != 0) throw Failure(kExitInput, "can't read " + sPath);
}

std::string ParseDelimiter(const std::string& sText) {
    static const std::pair<const char*, const char*> kNames[] = {
        {"tab", "\t"},      {"\\t", "\t"}, {"comma", ","},
        {"semicolon", ";"}, {"pipe", "|"}, {"space", " "},
    };
    for (const auto& [sName, sDelimiter] : kNames) {
        if (sText == sName) return sDelimiter;
    }
    if (sText.size() == 1 && sText != "\"") return sText;
    throw Failure(kExitUsage,
                  "the delimiter must be one character (or tab, comma, semicolon, "
                  "pipe, space), not \"" +
                      sText + "\"");
}

Input OpenInput(const InputOptions& tOptions) {
    Input tInput;
    tInput.sPath = tOptions.sPath;
    tInput.pKind = &ResolveKind(tOptions.sPath, tOptions.sFrom);
    if (!tInput.pKind->fnOpen) {
        throw Failure(kExitKind, "the tool doesn't read records from a " +
                                     std::string(tInput.pKind->sName) + "; it reads " +
                                     KindNames(true));
    }
    RequireFile(tOptions.sPath);
    try {
        tInput.pKind->fnOpen(tOptions, tInput);
    } catch (const Error& oError) {
        throw Failure(kExitInput, "can't read " + tOptions.sPath + ": " + oError.sDescription);
    }
    return tInput;
}

}  // namespace tnw::cli
