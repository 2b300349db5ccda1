#include "fgp/FGPWriter.h"

#include <cstring>
#include <limits>

#include "core/Error.h"

namespace tnw::standins {

namespace {

constexpr std::int32_t kMaxCount = std::numeric_limits<std::int32_t>::max();

void PutPart(platform::OutputFile& oFile, std::int64_t lFirst, std::int32_t lCount) {
    char aEntry[fgp::kPartBytes];
    fgp::PutLE64(aEntry, lFirst);
    platform::PutLE32(aEntry + 8, static_cast<std::uint32_t>(lCount));
    oFile.Write(aEntry, sizeof aEntry);
}

}  // namespace

FGPWriter::FGPWriter(const std::string& sPath) : m_sPath(sPath), m_sSpillPath(sPath + ".points~") {
    m_oFile.Open(m_sPath);
    m_oSpill.Open(m_sSpillPath);
    // Room for the header, which Close writes.
    m_oFile.Write(std::string(fgp::kHeaderBytes, '\0'));
}

FGPWriter::~FGPWriter() {
    m_oSpill.Abandon();
    m_oFile.Abandon();
    try {
        platform::DeleteFile(m_sSpillPath);
        if (!m_bClosed) platform::DeleteFile(m_sPath);
    } catch (const Error&) {
        // Nothing more can be done in a destructor; the unfinished file has no header.
    }
}

void FGPWriter::WritePoint(platform::OutputFile& oFile, const fgp::PointData& tPoint) {
    char aRecord[fgp::kPointBytes];
    fgp::EncodePoint(tPoint, aRecord);
    oFile.Write(aRecord, sizeof aRecord);
}

FGPWriter::Part FGPWriter::WriteVertices(std::span<const fgp::PointData> vVertices) {
    if (vVertices.size() > static_cast<std::size_t>(kMaxCount)) Raise(errOverflow, "tnwFGPWriter");
    for (const auto& tVertex : vVertices)
        WritePoint(m_oFile, tVertex);
    const Part tPart{m_lVertices, static_cast<std::int32_t>(vVertices.size())};
    m_lVertices += tPart.lCount;
    return tPart;
}

void FGPWriter::AddRegion(std::span<const fgp::PointData> vVertices) {
    if (m_vRegions.size() == static_cast<std::size_t>(kMaxCount))
        Raise(errOverflow, "tnwFGPWriter");
    m_vRegions.push_back(WriteVertices(vVertices));
}

void FGPWriter::AddLine(std::span<const fgp::PointData> vVertices) {
    if (m_vLines.size() == static_cast<std::size_t>(kMaxCount)) Raise(errOverflow, "tnwFGPWriter");
    m_vLines.push_back(WriteVertices(vVertices));
}

void FGPWriter::AddPoint(const fgp::PointData& tPoint) {
    if (m_lPoints == kMaxCount) Raise(errOverflow, "tnwFGPWriter");
    WritePoint(m_oSpill, tPoint);
    ++m_lPoints;
}

void FGPWriter::Close() {
    m_oSpill.Close();
    {
        platform::InputFile oSpill;
        oSpill.Open(m_sSpillPath);
        char aChunk[platform::InputFile::kBufferSize];
        while (const std::size_t nRead = oSpill.Read(aChunk, sizeof aChunk))
            m_oFile.Write(aChunk, nRead);
    }
    for (const Part& t : m_vRegions)
        PutPart(m_oFile, t.lFirst, t.lCount);
    for (const Part& t : m_vLines)
        PutPart(m_oFile, t.lFirst, t.lCount);

    char aHeader[fgp::kHeaderBytes] = {};
    std::memcpy(aHeader, fgp::kMagic, sizeof fgp::kMagic);
    platform::PutLE32(aHeader + fgp::kAtVersion, fgp::kVersion);
    platform::PutLE32(aHeader + fgp::kAtRegionCount, static_cast<std::uint32_t>(m_vRegions.size()));
    platform::PutLE32(aHeader + fgp::kAtLineCount, static_cast<std::uint32_t>(m_vLines.size()));
    platform::PutLE32(aHeader + fgp::kAtPointCount, static_cast<std::uint32_t>(m_lPoints));
    fgp::PutLE64(aHeader + fgp::kAtVertexCount, m_lVertices);
    m_oFile.Seek(0);
    m_oFile.Write(aHeader, sizeof aHeader);
    m_oFile.Close();
    m_bClosed = true;
    platform::DeleteFile(m_sSpillPath);
}

}  // namespace tnw::standins
