// Columns from a header: "name (unit)" cells become numeric columns when the unit is known and
// text columns otherwise; longitude and latitude cells become the position fields.
#include <string>
#include <string_view>
#include <unordered_map>

#include "core/Error.h"
#include "core/KeyedList.h"
#include "core/Services.h"
#include "delimited/tnwASCIIDecoder.h"
#include "platform/CodePage.h"
#include "support/mLog.h"

namespace tnw {

namespace {

// The unit class asked of the lookup.
constexpr std::int32_t kUnitClass = 15;
// The unit of a text column: none.
constexpr std::int32_t kNoUnit = 16;

std::string_view TrimBlanks(std::string_view sText) {
    while (!sText.empty() && sText.front() == ' ')
        sText.remove_prefix(1);
    while (!sText.empty() && sText.back() == ' ')
        sText.remove_suffix(1);
    return sText;
}

std::string LowerAscii(std::string_view sText) {
    std::string sLower(sText);
    for (char& c : sLower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return sLower;
}

}  // namespace

Variant tnwASCIIDecoder::AutoGenColumns(TNW_Encoders_AutoGenFlags /*eFlags: not looked at*/) {
    if (lHeaderRows <= 0) return Variant();
    return Variant(BuildColumns(ReadHeaders(lHeaderRows)));
}

bool tnwASCIIDecoder::ColumnsFromString(const std::string& sHeader,
                                        const std::string& sDelimiterIn) {
    // The fields are views into the narrow header, which must outlive them.
    std::string sNarrow;
    platform::AppendNarrow(sNarrow, sHeader, CodePageInUse());
    std::string sNarrowDelimiter;
    platform::AppendNarrow(sNarrowDelimiter, sDelimiterIn, CodePageInUse());
    LineFields aNarrow;
    ParseLine(sNarrow, sNarrowDelimiter, aNarrow);
    FieldArray aHeaders;
    if (aNarrow.HasSize()) {
        aHeaders.Resize(0);
        for (std::int32_t i = 0; i <= aNarrow.UBound(); ++i) {
            platform::AppendFromNarrow(aHeaders.Append(), aNarrow.Item(i), CodePageInUse());
        }
    }
    return BuildColumns(aHeaders);
}

bool tnwASCIIDecoder::BuildColumns(const FieldArray& aHeaders) {
    bool bResult = false;
    Guard("tnwASCIIDecoder.BuildColumns", [&] {
        // The position fields and the geometry format are left as they are.
        oColumns->Clear();
        auto oUnits = CreateAs<tnwUOMFactory>(kProgIdUOMFactory, "Missing Component");
        const std::int32_t lLast = aHeaders.UBound();  // error 9 for a header with no size
        std::unordered_map<std::string, std::int32_t> mNextCounter;  // by folded name
        for (std::int32_t i = 0; i <= lLast; ++i) {
            std::string_view sName = TrimBlanks(aHeaders.Item(i));
            std::int32_t lUnit = 0;
            const std::size_t nParen = sName.find('(');
            if (nParen != std::string_view::npos) {
                const std::string_view sUnit = sName.substr(nParen);
                sName = TrimBlanks(sName.substr(0, nParen));
                // "Yield (bu/ac) wet" keeps the name Yield but has no unit.
                if (sUnit.back() == ')') {
                    const std::string_view sInner = TrimBlanks(sUnit.substr(1, sUnit.size() - 2));
                    if (!sInner.empty()) {
                        if (!oUnits) Raise(errObjectNotSet);
                        lUnit = oUnits->FindUnit(sInner, kUnitClass);
                    }
                }
            }
            // Held here so that a made-up name outlives the view of it.
            std::string sMadeName;
            if (sName.empty() && m_bNameEmptyHeaders) {
                sMadeName = "field_" + std::to_string(i + 1);
                sName = sMadeName;
            }
            const std::string sLower = LowerAscii(sName);
            if (sLower == "x" || sLower == "longitude") {
                SetLonCol(i + 1);
            } else if (sLower == "y" || sLower == "latitude") {
                SetLatCol(i + 1);
            } else if (!sName.empty()) {
                // Rate, Rate_1, Rate_2...: Add refuses a key the list has already. Keys are
                // only added here, so a name goes on from the counter where it last stopped:
                // a name repeated n times costs n tries, not n squared.
                std::int32_t& lNext = mNextCounter[FoldCase(sName)];
                std::string sKey = lNext == 0 ? std::string(sName)
                                              : std::string(sName) + "_" + std::to_string(lNext);
                std::shared_ptr<tnwColumn> oColumn;
                for (;;) {
                    oColumn = lUnit == 0 ? oColumns->Add(sKey, "", "", vtString, 254, 0, 0, 1,
                                                         kNoUnit, "", true, true)
                                         : oColumns->Add(sKey, "", "", vtDouble, 16, 4,
                                                         tnwFlagNumeric, 1, lUnit, "", true, true);
                    ++lNext;
                    if (oColumn) break;
                    sKey = std::string(sName) + "_" + std::to_string(lNext);
                }
                oColumn->SetPosition(i + 1);
            }
        }
        if (TypesColumns()) TypeColumns();
        bResult = true;
    });
    return bResult;
}

}  // namespace tnw
