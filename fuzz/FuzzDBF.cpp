// The dBase reader on arbitrary bytes: open, walk, random MoveToRecord, FindColumnValue, and a
// second open on the same object. Byte 12 of the header, which the reader does not look at,
// chooses the geometry fields.
#include <cstdint>

#include "FuzzSupport.h"
#include "core/Error.h"
#include "decoders/tnwDBFDecoder.h"

namespace {

// A read error that passes to the caller is the reader's documented answer to broken bytes.
template <class Body>
void Tolerate(Body&& body) {
    try {
        body();
    } catch (const tnw::Error&) {
    }
}

void SetGeometryFields(tnw::tnwDBFDecoder& oDecoder, std::uint8_t bySetUp) {
    const std::int32_t lFirst = bySetUp & 7;
    const std::int32_t lSecond = (bySetUp >> 3) & 7;
    if (bySetUp & 0x40) {
        oDecoder.SetWKTCol(lFirst);
    } else {
        oDecoder.SetLonCol(lFirst);
        oDecoder.SetLatCol(lSecond);
    }
    if (bySetUp & 0x80) oDecoder.SetGeometryFormat(tnw::TNW_GeometryFormat_None);
}

void Walk(tnw::tnwDBFDecoder& oDecoder) {
    Tolerate([&] {
        (void)oDecoder.MoveFirst();
        for (int i = 0; i < 5000 && oDecoder.MoveNext(); ++i) {
            (void)oDecoder.WKT();
            (void)oDecoder.CurrentRow();
            Tolerate([&] { (void)oDecoder.Longitude(); });
        }
    });
}

}  // namespace

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
    SetGeometryFields(oDecoder, nSize > 12 ? pData[12] : 0);
    Walk(oDecoder);
    // Rows picked by the input's own bytes, the out-of-range ones included.
    for (std::size_t i = 0; i + 4 <= nSize && i < 64; i += 4) {
        const auto lRecord = static_cast<std::int32_t>(
            static_cast<std::uint32_t>(pData[i]) | static_cast<std::uint32_t>(pData[i + 1]) << 8 |
            static_cast<std::uint32_t>(pData[i + 2]) << 16 |
            static_cast<std::uint32_t>(pData[i + 3]) << 24);
        Tolerate([&] { (void)oDecoder.MoveToRecord(lRecord % 100000); });
        Tolerate([&] { (void)oDecoder.WKT(); });
    }
    // A search for the value the first record holds, so that the match is found as well.
    auto oColumns = oDecoder.Columns();
    if (oColumns && oColumns->Count() > 0) {
        const auto& vItems = oColumns->Items();
        const auto& oColumn = vItems[static_cast<std::size_t>(nSize % vItems.size())];
        std::string sWanted = "x";
        Tolerate([&] {
            if (oDecoder.MoveToRecord(1)) sWanted = oColumn->Value().ToText();
        });
        (void)oDecoder.FindColumnValue(oColumn->Key(), sWanted);
        (void)oDecoder.FindColumnValue("no such column", sWanted);
    }
    // The same object opens the table again and starts over.
    Tolerate([&] { oDecoder.SetFilename(sPath); });
    Walk(oDecoder);
    oDecoder.CloseFile();
    return 0;
}
