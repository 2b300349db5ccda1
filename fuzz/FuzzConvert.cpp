// A hostile file converted as the tnw tool converts it: a dBase table or delimited text read
// through its decoder, handed as a record source to tnwShapeEncoder.ImportRS, and the set
// closed. The first byte chooses the reader and the geometry: bit 0 text or table, bits 1-2
// the set's geometry type, bit 3 well-known text in field 3 instead of longitude and latitude in
// fields 1 and 2 (type 0 lets the source tell its own). Whatever the input, the closed set must
// agree with itself.
#include <cstdint>
#include <filesystem>
#include <memory>

#include "FuzzSupport.h"
#include "bridge/tnwDecoderRecordSource.h"
#include "core/Error.h"
#include "decoders/tnwDBFDecoder.h"
#include "delimited/tnwASCIIDecoder.h"
#include "ogc_sf/WKT.h"
#include "shapefile/tnwShapeEncoder.h"

namespace {

template <class Decoder>
void SetGeometryFields(Decoder& oDecoder, bool bWKT) {
    if (bWKT) {
        oDecoder.SetWKTCol(3);
    } else {
        oDecoder.SetLonCol(1);
        oDecoder.SetLatCol(2);
    }
}

std::shared_ptr<tnw::tnwDecoderRecordSource> OpenSource(const std::uint8_t* pData,
                                                        std::size_t nSize, bool bText, bool bWKT) {
    const tnw::tnwDecoderRecordSource::WKTParser fnParse = [](std::string_view sText) {
        return tnw::standins::ParseWKT(sText);
    };
    if (bText) {
        auto oDecoder = std::make_shared<tnw::tnwASCIIDecoder>();
        oDecoder->SetFilename(tnw::fuzz::WriteInput(pData, nSize, ".csv"));
        oDecoder->SetHeaderRows(1);
        // The tool's way of reading field files: typed columns, joined quoted lines.
        oDecoder->SetSampleRows(1000);
        oDecoder->SetQuotedLineBreaks(true);
        oDecoder->SetNameEmptyHeaders(true);
        oDecoder->SetLineFeedEndsLine(true);
        (void)oDecoder->AutoGenColumns();
        SetGeometryFields(*oDecoder, bWKT);
        return std::make_shared<tnw::tnwDecoderRecordSource>(oDecoder, fnParse);
    }
    auto oDecoder = std::make_shared<tnw::tnwDBFDecoder>();
    oDecoder->SetRenameDuplicates(true);
    oDecoder->SetCheckVersion(true);
    oDecoder->SetFilename(tnw::fuzz::WriteInput(pData, nSize, ".dbf"));
    SetGeometryFields(*oDecoder, bWKT);
    return std::make_shared<tnw::tnwDecoderRecordSource>(oDecoder, fnParse);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    tnw::fuzz::SetUpOnce();
    if (nSize < 1) return 0;
    const std::uint8_t bySetUp = pData[0];
    std::shared_ptr<tnw::tnwDecoderRecordSource> oSource;
    try {
        oSource = OpenSource(pData + 1, nSize - 1, bySetUp & 1, bySetUp & 8);
    } catch (const tnw::Error&) {
        return 0;  // a table that can't be opened: the box and the error, nothing to convert
    }
    const auto eType = static_cast<tnw::tnwGeometryType>((bySetUp >> 1) & 3);
    oSource->SetGeometryType(eType);
    const std::string sBase = tnw::fuzz::ScratchPath("_converted");
    for (const char* sExtension : {".dbf", ".shp", ".shx", ".mcd", ".prj"})
        std::filesystem::remove(sBase + sExtension);
    bool bImported = false;
    {
        tnw::tnwShapeEncoder oEncoder;
        bImported = oEncoder.ImportRS(sBase, oSource);
        oEncoder.CloseFiles();
    }
    if (!bImported && !std::filesystem::exists(sBase + ".dbf")) return 0;
    (void)tnw::fuzz::CheckClosedSet(sBase, std::filesystem::exists(sBase + ".shp"));
    return 0;
}
