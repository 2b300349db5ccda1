// The delimited reader on arbitrary text. The first three bytes choose the set-up: delimiter,
// header rows, line ends, columns from the header, from a line of the text or fixed widths,
// geometry fields, and a ".gpl" name.
#include <cstdint>

#include "FuzzSupport.h"
#include "core/Error.h"
#include "core/GISLib.h"
#include "delimited/tnwASCIIDecoder.h"

namespace {

template <class Body>
void Tolerate(Body&& body) {
    try {
        body();
    } catch (const tnw::Error&) {
    }
}

// Fixed widths and decimals from the set-up bytes, a precision above the width included.
void AddFixedColumns(tnw::tnwColumns& oColumns, std::uint8_t byWidths, std::uint8_t byFlags) {
    oColumns.Clear();
    for (int i = 0; i < 3; ++i) {
        const auto iSize = static_cast<std::int16_t>((byWidths >> (2 * i)) % 8);
        const auto iPrecision = static_cast<std::int16_t>((byFlags >> (2 + i)) % 3);
        oColumns.Add("C" + std::to_string(i), "", "", i == 0 ? 8 : 5, iSize, iPrecision, 0, 1, 16,
                     "", true, true);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    tnw::fuzz::SetUpOnce();
    if (nSize < 3) return 0;
    static const char* const aDelimiters[] = {",", ";", "\t", "", "|", "ab", " ", "\"", "\xA7"};
    const std::uint8_t bySetUp = pData[0], byFlags = pData[1], byWidths = pData[2];
    const std::string_view sText(reinterpret_cast<const char*>(pData + 3), nSize - 3);
    const std::string sPath =
        tnw::fuzz::WriteInput(pData + 3, nSize - 3, (bySetUp & 0x80) ? ".gpl" : ".csv");

    tnw::tnwASCIIDecoder oDecoder;
    try {
        oDecoder.SetFilename(sPath);
    } catch (const tnw::Error&) {
        return 0;
    }
    const std::string sDelimiter = aDelimiters[(bySetUp & 7) % 9 + ((bySetUp >> 6) & 1)];
    oDecoder.SetDelimiter(sDelimiter);
    oDecoder.SetHeaderRows((bySetUp >> 3) % 4);
    oDecoder.SetLineFeedEndsLine(byFlags & 1);
    Tolerate([&] {
        switch (((byFlags >> 1) & 1) | ((byFlags >> 6) & 2)) {
            case 1:
                (void)oDecoder.AutoGenColumns();
                break;
            case 3:
                (void)oDecoder.ColumnsFromString(std::string(sText.substr(0, sText.find('\r'))),
                                                 sDelimiter);
                break;
            default:
                AddFixedColumns(*oDecoder.Columns(), byWidths, byFlags);
                break;
        }
    });
    if (byFlags & 0x20) {
        oDecoder.SetLonCol(1 + (byWidths & 3));
        oDecoder.SetLatCol(2 + (byWidths & 3));
    }
    if (byFlags & 0x40) oDecoder.SetWKTCol(1 + (byWidths >> 6));
    Tolerate([&] { (void)oDecoder.ReadHeaders(1 + (byWidths >> 5)); });
    (void)oDecoder.MoveFirst();
    for (int i = 0; i < 5000 && oDecoder.MoveNext(); ++i) {
        (void)oDecoder.WKT();
        (void)oDecoder.PercentComplete();
        (void)oDecoder.CurrentLine();
        Tolerate([&] { (void)oDecoder.Latitude(); });
    }
    // A walk that stopped at a bad row goes on after it.
    for (int i = 0; i < 5000 && !oDecoder.Eof(); ++i)
        (void)oDecoder.MoveNext();
    oDecoder.CloseFile();
    return 0;
}
