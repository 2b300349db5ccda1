// Writes the main file of an FGP set (format: docs/fgp-format.md). Regions, lines and loose
// points may come in any order: vertices go straight to the file, loose points to a spill
// file beside it that Close appends, so memory grows only with the number of regions and
// lines (16 bytes each). The header is written last: a file that was not closed is deleted.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "fgp/FGPFormat.h"
#include "platform/File.h"

namespace tnw::standins {

class FGPWriter {
public:
    // Creates the file, replacing one that is there.
    explicit FGPWriter(const std::string& sPath);
    ~FGPWriter();  // deletes the file unless Close ended well
    FGPWriter(const FGPWriter&) = delete;
    FGPWriter& operator=(const FGPWriter&) = delete;

    // A list may have any number of vertices, none included; more than 2^31 - 1 parts, points
    // or vertices of one part is error 6.
    void AddRegion(std::span<const fgp::PointData> vVertices);
    void AddLine(std::span<const fgp::PointData> vVertices);
    void AddPoint(const fgp::PointData& tPoint);
    void Close();

private:
    struct Part {
        std::int64_t lFirst;
        std::int32_t lCount;
    };
    Part WriteVertices(std::span<const fgp::PointData> vVertices);
    static void WritePoint(platform::OutputFile& oFile, const fgp::PointData& tPoint);

    std::string m_sPath;
    std::string m_sSpillPath;
    platform::OutputFile m_oFile;
    platform::OutputFile m_oSpill;
    std::vector<Part> m_vRegions;
    std::vector<Part> m_vLines;
    std::int64_t m_lVertices = 0;
    std::int32_t m_lPoints = 0;
    bool m_bClosed = false;
};

}  // namespace tnw::standins
