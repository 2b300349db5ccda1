// The dBase reader on arbitrary bytes: open, walk, random MoveToRecord, FindColumnValue.
#include <cstdint>

#include "FuzzSupport.h"
#include "core/Error.h"
#include "decoders/tnwDBFDecoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    tnw::fuzz::SetUpOnce();
    const std::string sPath = tnw::fuzz::WriteInput(pData, nSize, ".dbf");
    tnw::tnwDBFDecoder oDecoder;
    try {
        oDecoder.SetFilename(sPath);
    } catch (const tnw::Error&) {
        return 0;
    }
    (void)oDecoder.Schema();
    oDecoder.SetLonCol(1);
    oDecoder.SetLatCol(2);
    try {
        oDecoder.MoveFirst();
        for (int i = 0; i < 5000 && oDecoder.MoveNext(); ++i) {
            (void)oDecoder.Longitude();
            (void)oDecoder.WKT();
        }
    } catch (const tnw::Error&) {
    }
    // Rows picked by the input's own bytes, the out-of-range ones included.
    for (std::size_t i = 0; i + 4 <= nSize && i < 64; i += 4) {
        std::int32_t lRecord = static_cast<std::int32_t>(
            static_cast<std::uint32_t>(pData[i]) | static_cast<std::uint32_t>(pData[i + 1]) << 8 |
            static_cast<std::uint32_t>(pData[i + 2]) << 16 |
            static_cast<std::uint32_t>(pData[i + 3]) << 24);
        try {
            oDecoder.MoveToRecord(lRecord % 100000);
        } catch (const tnw::Error&) {
        }
    }
    auto oColumns = oDecoder.Columns();
    if (oColumns && oColumns->Count() > 0)
        (void)oDecoder.FindColumnValue(oColumns->Items().front()->Key(), "x");
    oDecoder.CloseFile();
    return 0;
}
