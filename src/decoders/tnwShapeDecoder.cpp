#include "decoders/tnwShapeDecoder.h"

#include <algorithm>
#include <array>

#include "core/Enums.h"
#include "core/GISLib.h"
#include "platform/ByteOrder.h"
#include "platform/File.h"

namespace tnw {

namespace {

constexpr std::int64_t kShapeTypeOffset = 32;
// Shape type and the four doubles of the box: Xmin, Ymin, Xmax, Ymax.
constexpr std::size_t kHeaderFieldsSize = 4 + 4 * 8;

// The header fields from offset 32 on; a field that the file does not wholly hold reads as
// zero.
std::array<unsigned char, kHeaderFieldsSize> ReadHeaderFields(const std::string& sPath,
                                                              std::size_t nBytes) {
    std::array<unsigned char, kHeaderFieldsSize> aFields{};
    platform::InputFile oFile;
    oFile.Open(sPath);
    oFile.Seek(kShapeTypeOffset);
    const std::size_t nRead = oFile.Read(aFields.data(), nBytes);
    const std::size_t nWhole = nRead < 4 ? 0 : 4 + (nRead - 4) / 8 * 8;
    std::fill(aFields.begin() + static_cast<std::ptrdiff_t>(nWhole), aFields.end(), 0);
    return aFields;
}

}  // namespace

bool tnwShapeDecoder::GetShapeDetails(const std::string& sName, std::int32_t& eType,
                                      std::string& sType, bool& bCartesian, double& dLeft,
                                      double& dRight, double& dTop, double& dBottom) const {
    if (!FileUtility()->FileExists(sName)) return false;
    const auto aFields = ReadHeaderFields(sName, kHeaderFieldsSize);

    switch (static_cast<std::int32_t>(platform::GetLE32(aFields.data()))) {
        case 1:  // point and multipoint, plain, Z and M
        case 8:
        case 11:
        case 18:
        case 21:
        case 28:
            eType = tnwGeometryPoint;
            sType = "Point";
            break;
        case 3:
        case 13:
        case 23:
            eType = tnwGeometryLine;
            sType = "Line";
            break;
        case 5:
        case 15:
        case 25:
            eType = tnwGeometryRegion;
            sType = "Region";
            break;
        default:
            break;
    }

    dLeft = platform::GetLEDouble(aFields.data() + 4);
    dBottom = platform::GetLEDouble(aFields.data() + 12);
    dRight = platform::GetLEDouble(aFields.data() + 20);
    dTop = platform::GetLEDouble(aFields.data() + 28);
    // Only these four comparisons decide: an extent inside the range of degrees is geographic.
    bCartesian = !(dLeft >= -180.0 && dRight <= 180.0 && dTop <= 90.0 && dBottom >= -90.0);
    return true;
}

std::int32_t tnwShapeDecoder::GetESRIShapeType(const std::string& sPath,
                                               const std::string& sName) const {
    const auto aFields = ReadHeaderFields(sPath + sName, 4);
    return static_cast<std::int32_t>(platform::GetLE32(aFields.data()));
}

}  // namespace tnw
