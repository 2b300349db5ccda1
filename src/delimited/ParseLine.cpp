// How one line of text becomes fields: delimited, with the quote-flipping rule, or fixed-width
// by the widths of the columns.
#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/Error.h"
#include "delimited/tnwASCIIDecoder.h"
#include "support/mLog.h"

namespace tnw {

namespace {

// The walk over a delimited line counts in 16 bits, so 32,766 characters is the longest line.
constexpr std::size_t kMaxDelimitedLine = 32766;

// Code 1 ends a field wherever it stands; delimiters outside quotes become it.
constexpr char kFieldEnd = '\x01';

// Eight characters as one number, the first in the lowest byte whatever the host's byte order.
std::uint64_t EightCharacters(const char* p) {
    std::uint64_t w = 0;
    std::memcpy(&w, p, sizeof w);
    if constexpr (std::endian::native == std::endian::big) w = __builtin_bswap64(w);
    return w;
}

std::uint64_t EveryByte(char c) {
    return 0x0101010101010101ULL * static_cast<unsigned char>(c);
}

// The high bit of each byte of w that equals the same byte of kBytes, and no other bit.
std::uint64_t EqualBytes(std::uint64_t w, std::uint64_t kBytes) {
    constexpr std::uint64_t kLow7 = 0x7F7F7F7F7F7F7F7FULL;
    const std::uint64_t x = w ^ kBytes;  // 0 where they are equal
    return ~(((x & kLow7) + kLow7) | x | kLow7);
}

std::string_view TrimBlanks(std::string_view sText) {
    while (!sText.empty() && sText.front() == ' ')
        sText.remove_prefix(1);
    while (!sText.empty() && sText.back() == ' ')
        sText.remove_suffix(1);
    return sText;
}

// The field from pBegin to pEnd: blanks off both ends, then one quote off the front and one off
// the back of what is left.
std::string_view FieldOf(const char* pBegin, const char* pEnd) {
    while (pBegin < pEnd && *pBegin == ' ')
        ++pBegin;
    while (pBegin < pEnd && pEnd[-1] == ' ')
        --pEnd;
    if (pBegin < pEnd && *pBegin == '"') ++pBegin;
    if (pBegin < pEnd && pEnd[-1] == '"') --pEnd;
    return {pBegin, static_cast<std::size_t>(pEnd - pBegin)};
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
    if (sLine.size() > kMaxDelimitedLine)
        throw Error(errOverflow, "tnwEncoders",
                    "Overflow: the line has more than 32766 characters, the most a line may have");
    aFields.Resize(0);
    if (sLine.empty()) return;
    // A delimiter of more than one character never equals one character of the line: it
    // splits nothing that code 1 does not split already.
    const char cDelimiter = sDelimiterIn.size() == 1 ? sDelimiterIn.front() : kFieldEnd;
    const char* const pLine = sLine.data();
    const char* const pLineEnd = pLine + sLine.size();
    // Any quote flips the flag, wherever it stands: there is no escape.
    bool bInQuotes = false;
    const char* pStart = pLine;
    const auto look = [&](const char* p) {
        if (*p == '"') bInQuotes = !bInQuotes;
        if (*p == kFieldEnd || (*p == cDelimiter && !bInQuotes)) {
            aFields.Append(FieldOf(pStart, p));
            pStart = p + 1;
        }
    };
    // Only the quote, code 1 and the delimiter need a closer look: found eight characters at
    // a time, each marked by the high bit of its byte.
    const std::uint64_t kQuotes = EveryByte('"');
    const std::uint64_t kFieldEnds = EveryByte(kFieldEnd);
    const std::uint64_t kDelimiters = EveryByte(cDelimiter);
    const char* p = pLine;
    for (; pLineEnd - p >= 8; p += 8) {
        const std::uint64_t w = EightCharacters(p);
        std::uint64_t m =
            EqualBytes(w, kQuotes) | EqualBytes(w, kFieldEnds) | EqualBytes(w, kDelimiters);
        for (; m != 0; m &= m - 1)
            look(p + std::countr_zero(m) / 8);
    }
    for (; p < pLineEnd; ++p) {
        if (*p == '"' || *p == kFieldEnd || *p == cDelimiter) look(p);
    }
    aFields.Append(FieldOf(pStart, pLineEnd));
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
