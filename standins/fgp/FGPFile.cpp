#include "fgp/FGPFile.h"

#include <cstring>

#include "core/Error.h"
#include "platform/File.h"

namespace tnw::standins {

namespace fgp {

// The open main file, shared by every list of the set.
class Store {
public:
    explicit Store(const std::string& sPath) { m_oFile.Open(sPath); }

    PointData ReadPoint(std::int64_t lIndex) {
        unsigned char aRecord[kPointBytes];
        m_oFile.Seek(kHeaderBytes + lIndex * kPointBytes);
        m_oFile.ReadExact(aRecord, sizeof aRecord);
        return DecodePoint(aRecord);
    }

    // The first vertex and the vertex count of the part entry at lOffset.
    std::pair<std::int64_t, std::int32_t> ReadPart(std::int64_t lOffset) {
        unsigned char aEntry[kPartBytes];
        m_oFile.Seek(lOffset);
        m_oFile.ReadExact(aEntry, sizeof aEntry);
        return {GetLE64(aEntry), static_cast<std::int32_t>(platform::GetLE32(aEntry + 8))};
    }

    platform::InputFile m_oFile;
};

}  // namespace fgp

namespace {

[[noreturn]] void Invalid(const std::string& sReason) {
    throw Error(errInvalidFileFormat, "tnwFGPFile.Open", "Invalid file format: " + sReason);
}

void CheckIndex(std::int32_t lIndex, std::int32_t lCount, const char* sSource) {
    if (lIndex < 1 || lIndex > lCount) Raise(errSubscript, sSource);
}

class PointList final : public tnwFGPPointList {
public:
    PointList(std::shared_ptr<fgp::Store> oStore, std::int64_t lFirst, std::int32_t lCount)
        : m_oStore(std::move(oStore)), m_lFirst(lFirst), m_lCount(lCount) {}

    std::shared_ptr<tnwFGPPoint> Item(std::int32_t lIndex) const override {
        CheckIndex(lIndex, m_lCount, "tnwFGPPointList.Item");
        return std::make_shared<FGPPoint>(m_oStore->ReadPoint(m_lFirst + lIndex - 1));
    }
    std::int32_t Count() const override { return m_lCount; }

private:
    std::shared_ptr<fgp::Store> m_oStore;
    std::int64_t m_lFirst;
    std::int32_t m_lCount;
};

class PartList final : public tnwFGPPartList {
public:
    PartList(std::shared_ptr<fgp::Store> oStore, std::int64_t lTable, std::int32_t lCount)
        : m_oStore(std::move(oStore)), m_lTable(lTable), m_lCount(lCount) {}

    std::shared_ptr<tnwFGPPointList> Item(std::int32_t lIndex) const override {
        CheckIndex(lIndex, m_lCount, "tnwFGPPartList.Item");
        const auto [lFirst, lVertices] =
            m_oStore->ReadPart(m_lTable + (lIndex - 1) * fgp::kPartBytes);
        return std::make_shared<PointList>(m_oStore, lFirst, lVertices);
    }
    std::int32_t Count() const override { return m_lCount; }

private:
    std::shared_ptr<fgp::Store> m_oStore;
    std::int64_t m_lTable;
    std::int32_t m_lCount;
};

template <class T>
std::shared_ptr<T> NeedOpen(const std::shared_ptr<T>& o, const char* sSource) {
    if (!o) Raise(errObjectNotSet, sSource);
    return o;
}

}  // namespace

void FGPFile::Open(const std::string& sFilename) {
    m_oRegions.reset();
    m_oLines.reset();
    m_oPoints.reset();
    auto oStore = std::make_shared<fgp::Store>(sFilename);
    const std::int64_t lSize = platform::FileLength(sFilename);

    unsigned char aHeader[fgp::kHeaderBytes];
    if (lSize < fgp::kHeaderBytes) Invalid("shorter than its header");
    oStore->m_oFile.ReadExact(aHeader, sizeof aHeader);
    if (std::memcmp(aHeader, fgp::kMagic, sizeof fgp::kMagic) != 0) Invalid("not an FGP main file");
    const std::uint32_t uVersion = platform::GetLE32(aHeader + fgp::kAtVersion);
    if (uVersion != fgp::kVersion) Invalid("version " + std::to_string(uVersion) + " is unknown");
    const auto lRegions =
        static_cast<std::int32_t>(platform::GetLE32(aHeader + fgp::kAtRegionCount));
    const auto lLines = static_cast<std::int32_t>(platform::GetLE32(aHeader + fgp::kAtLineCount));
    const auto lPoints = static_cast<std::int32_t>(platform::GetLE32(aHeader + fgp::kAtPointCount));
    const std::int64_t lVertices = fgp::GetLE64(aHeader + fgp::kAtVertexCount);
    if (lRegions < 0 || lLines < 0 || lPoints < 0 || lVertices < 0) Invalid("a negative count");
    // Every count is bounded by the size before it enters a product, so nothing overflows.
    if (lVertices > lSize / fgp::kPointBytes) Invalid("more vertices than the file holds");
    const std::int64_t lTable = fgp::kHeaderBytes + (lVertices + lPoints) * fgp::kPointBytes;
    const std::int64_t lExpected = lTable + (std::int64_t{lRegions} + lLines) * fgp::kPartBytes;
    if (lExpected != lSize) {
        Invalid("the counts call for " + std::to_string(lExpected) + " bytes, the file has " +
                std::to_string(lSize));
    }

    for (std::int64_t lPart = 0; lPart < std::int64_t{lRegions} + lLines; ++lPart) {
        const auto [lFirst, lCount] = oStore->ReadPart(lTable + lPart * fgp::kPartBytes);
        if (lFirst < 0 || lCount < 0 || lFirst > lVertices - lCount) {
            Invalid("part " + std::to_string(lPart + 1) + " lies outside the vertices");
        }
    }

    m_oRegions = std::make_shared<PartList>(oStore, lTable, lRegions);
    m_oLines = std::make_shared<PartList>(oStore, lTable + lRegions * fgp::kPartBytes, lLines);
    m_oPoints = std::make_shared<PointList>(oStore, lVertices, lPoints);
}

std::shared_ptr<tnwFGPPartList> FGPFile::Regions() const {
    return NeedOpen(m_oRegions, "tnwFGPFile.Regions");
}

std::shared_ptr<tnwFGPPartList> FGPFile::Lines() const {
    return NeedOpen(m_oLines, "tnwFGPFile.Lines");
}

std::shared_ptr<tnwFGPPointList> FGPFile::Points() const {
    return NeedOpen(m_oPoints, "tnwFGPFile.Points");
}

}  // namespace tnw::standins
