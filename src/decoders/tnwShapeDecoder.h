// tnwShapeDecoder: what a shapefile holds, told from its main header without reading any
// record. The class keeps no state; each call opens the file, reads and closes it.
#pragma once

#include <cstdint>
#include <string>

namespace tnw {

class tnwShapeDecoder {
public:
    // Kind, extent and whether the extent looks like degrees, from the ".shp" file sName. False,
    // with the out arguments untouched, when the file does not exist. A shape type outside the
    // point, line and region families leaves eType and sType as the caller gave them. File
    // errors pass to the caller.
    bool GetShapeDetails(const std::string& sName, std::int32_t& eType, std::string& sType,
                         bool& bCartesian, double& dLeft, double& dRight, double& dTop,
                         double& dBottom) const;

    // The shape type number of the file sPath + sName (sPath ends in its separator); 0 for a
    // file too short to hold one. A missing file gives error 53.
    std::int32_t GetESRIShapeType(const std::string& sPath, const std::string& sName) const;
};

}  // namespace tnw
