// How one line of text becomes fields: delimited, with the quote-flipping rule, or fixed-width
// by the widths of the columns.
#include <algorithm>
#include <array>
#include <cstddef>

#include "core/Error.h"
#include "delimited/tnwASCIIDecoder.h"
#include "support/mLog.h"

namespace tnw {

namespace {

// The walk over a delimited line counts in 16 bits, so 32,766 characters is the longest line.
constexpr std::size_t kMaxDelimitedLine = 32766;

// Code 1 ends a field wherever it stands; delimiters outside quotes become it.
constexpr char kFieldEnd = '\x01';

std::string_view TrimBlanks(std::string_view sText) {
    while (!sText.empty() && sText.front() == ' ')
        sText.remove_prefix(1);
    while (!sText.empty() && sText.back() == ' ')
        sText.remove_suffix(1);
    return sText;
}

// Blanks off both ends, then one quote off the front and one off the back of what is left.
std::string_view FieldOf(std::string_view sText) {
    sText = TrimBlanks(sText);
    if (!sText.empty() && sText.front() == '"') sText.remove_prefix(1);
    if (!sText.empty() && sText.back() == '"') sText.remove_suffix(1);
    return sText;
}

}  // namespace

void tnwASCIIDecoder::RaiseInvalidCall() {
    Raise(errInvalidCall);
}

void tnwASCIIDecoder::ParseLine(std::string_view sLine, std::string_view sDelimiterIn,
                                LineFields& aFields) {
    // Built once: the source text is a heap string, and this runs for every line.
    static const std::string sSource = "tnwASCIIDecoder.ParseLine";
    aFields.Clear();
    Guard(sSource, [&] {
        if (sDelimiterIn.empty()) {
            ParseFixedWidth(sLine, aFields);
        } else {
            ParseDelimited(sLine, sDelimiterIn, aFields);
        }
    });
}

void tnwASCIIDecoder::ParseDelimited(std::string_view sLine, std::string_view sDelimiterIn,
                                     LineFields& aFields) const {
    if (sLine.size() > kMaxDelimitedLine) Raise(errOverflow);
    aFields.Resize(0);
    if (sLine.empty()) return;
    // A delimiter of more than one character never equals one character of the line.
    const bool bOneCharacter = sDelimiterIn.size() == 1;
    const char cDelimiter = sDelimiterIn.front();
    // Only the quote, code 1 and the delimiter need a closer look.
    std::array<bool, 256> aSpecial{};
    aSpecial[static_cast<unsigned char>('"')] = true;
    aSpecial[static_cast<unsigned char>(kFieldEnd)] = true;
    if (bOneCharacter) aSpecial[static_cast<unsigned char>(cDelimiter)] = true;
    // Any quote flips the flag, wherever it stands: there is no escape.
    bool bInQuotes = false;
    std::size_t nStart = 0;
    for (std::size_t i = 0; i < sLine.size(); ++i) {
        const char c = sLine[i];
        if (!aSpecial[static_cast<unsigned char>(c)]) continue;
        if (c == '"') bInQuotes = !bInQuotes;
        if (c == kFieldEnd || (bOneCharacter && c == cDelimiter && !bInQuotes)) {
            aFields.Append(FieldOf(sLine.substr(nStart, i - nStart)));
            nStart = i + 1;
        }
    }
    aFields.Append(FieldOf(sLine.substr(nStart)));
}

void tnwASCIIDecoder::ParseFixedWidth(std::string_view sLine, LineFields& aFields) const {
    const auto& vColumns = oColumns->Items();
    aFields.Resize(vColumns.size());
    std::size_t nOffset = 0;
    for (std::size_t i = 0; i < vColumns.size(); ++i) {
        const std::int16_t iSize = vColumns[i]->Size();
        const std::int16_t iPrecision = vColumns[i]->Precision();
        if (iSize < 0) RaiseInvalidCall();
        const std::size_t nSize = static_cast<std::size_t>(iSize);
        std::string_view sField =
            nOffset < sLine.size() ? sLine.substr(nOffset, nSize) : std::string_view();
        if (iPrecision > 0 && sField.find('.') == std::string_view::npos) {
            // The decimal mark goes in by the column's width, not by what the line held.
            if (iPrecision > iSize) RaiseInvalidCall();
            const std::size_t nDecimals = static_cast<std::size_t>(iPrecision);
            std::string& sText = aFields.Text(i);
            sText.assign(sField.substr(0, nSize - nDecimals));
            sText += '.';
            sText.append(sField.substr(sField.size() - std::min(sField.size(), nDecimals)));
            aFields.Set(i, TrimBlanks(sText));
        } else {
            aFields.Set(i, TrimBlanks(sField));
        }
        nOffset += nSize;
    }
}

}  // namespace tnw
