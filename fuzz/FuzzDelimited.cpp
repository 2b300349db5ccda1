// The delimited reader on arbitrary text. The first three bytes choose the set-up: delimiter,
// header rows, line ends, columns from the header or fixed widths, geometry fields.
#include <cstdint>

#include "FuzzSupport.h"
#include "core/Error.h"
#include "core/GISLib.h"
#include "delimited/tnwASCIIDecoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    tnw::fuzz::SetUpOnce();
    if (nSize < 3) return 0;
    static const char* const aDelimiters[] = {",", ";", "\t", "", "|", "ab"};
    const std::uint8_t bySetUp = pData[0], byFlags = pData[1], byWidths = pData[2];
    const std::string sPath = tnw::fuzz::WriteInput(pData + 3, nSize - 3, ".csv");

    tnw::tnwASCIIDecoder oDecoder;
    try {
        oDecoder.SetFilename(sPath);
    } catch (const tnw::Error&) {
        return 0;
    }
    oDecoder.SetDelimiter(aDelimiters[bySetUp % 6]);
    oDecoder.SetHeaderRows((bySetUp >> 3) % 4);
    oDecoder.SetLineFeedEndsLine(byFlags & 1);
    try {
        if (byFlags & 2) {
            (void)oDecoder.AutoGenColumns();
        } else {
            // Fixed widths and decimals from the input, a precision above the width included.
            auto oColumns = oDecoder.Columns();
            oColumns->Clear();
            for (int i = 0; i < 3; ++i) {
                auto iSize = static_cast<std::int16_t>((byWidths >> (2 * i)) % 8);
                auto iPrecision = static_cast<std::int16_t>((byFlags >> (2 + i)) % 3);
                oColumns->Add("C" + std::to_string(i), "", "", i == 0 ? 8 : 5, iSize, iPrecision,
                              0, 1, 16, "", true, true);
            }
        }
    } catch (const tnw::Error&) {
    }
    if (byFlags & 0x20) {
        oDecoder.SetLonCol(1);
        oDecoder.SetLatCol(2);
    }
    if (byFlags & 0x40) oDecoder.SetWKTCol(3);
    (void)oDecoder.MoveFirst();
    for (int i = 0; i < 5000 && oDecoder.MoveNext(); ++i) {
        (void)oDecoder.WKT();
        (void)oDecoder.PercentComplete();
    }
    oDecoder.CloseFile();
    return 0;
}
