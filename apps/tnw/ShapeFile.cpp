#include "ShapeFile.h"

#include <cstring>

#include "ExitCodes.h"
#include "core/Enums.h"
#include "core/Error.h"
#include "ogc_sf/Geometries.h"
#include "platform/ByteOrder.h"

namespace tnw::cli {

namespace {

constexpr std::int64_t kHeaderBytes = 100;
constexpr std::int32_t kFileCode = 9994;

std::int32_t BigEndian(const unsigned char* p) {
    return static_cast<std::int32_t>(platform::GetBE32(p));
}

std::int32_t LittleEndian(const unsigned char* p) {
    return static_cast<std::int32_t>(platform::GetLE32(p));
}

Shape::Kind KindOf(std::int32_t lShapeType) {
    switch (lShapeType % 10) {
        case 1:
        case 8:
            return Shape::Kind::Point;
        case 3:
            return Shape::Kind::Line;
        case 5:
            return Shape::Kind::Polygon;
        default:
            return Shape::Kind::None;
    }
}

bool IsKnownType(std::int32_t lShapeType) {
    switch (lShapeType) {
        case 0:
        case 1:
        case 3:
        case 5:
        case 8:
        case 11:
        case 13:
        case 15:
        case 18:
        case 21:
        case 23:
        case 25:
        case 28:
            return true;
        default:
            return false;
    }
}

}  // namespace

ShapeFileReader::ShapeFileReader(const std::string& sPath) : m_sPath(sPath) {
    m_lLength = platform::FileLength(sPath);
    try {
        m_oFile.Open(sPath);
    } catch (const Error& oError) {
        throw Failure(kExitInput, "can't read " + sPath + ": " + oError.sDescription);
    }
    unsigned char aHeader[kHeaderBytes];
    if (m_lLength < kHeaderBytes || m_oFile.Read(aHeader, sizeof aHeader) < sizeof aHeader ||
        BigEndian(aHeader) != kFileCode) {
        throw Failure(kExitInput, sPath + " is not a shapefile");
    }
    m_lShapeType = LittleEndian(aHeader + 32);
    if (!IsKnownType(m_lShapeType)) {
        throw Failure(kExitInput,
                      sPath + " has the unknown shape type " + std::to_string(m_lShapeType));
    }
    m_lPosition = kHeaderBytes;
}

double ShapeFileReader::PercentRead() const {
    return m_lLength > 0 ? static_cast<double>(m_lPosition) * 100.0 / m_lLength : 100.0;
}

bool ShapeFileReader::Next(Shape& tShape) {
    unsigned char aRecordHeader[8];
    const std::size_t nRead = m_oFile.Read(aRecordHeader, sizeof aRecordHeader);
    if (nRead == 0) return false;
    ++m_lRecord;
    const std::string sWhere = "record " + std::to_string(m_lRecord) + " of " + m_sPath;
    if (nRead < sizeof aRecordHeader) throw Failure(kExitInput, sWhere + " is cut short");
    const std::int64_t lBytes = std::int64_t{BigEndian(aRecordHeader + 4)} * 2;
    m_lPosition += sizeof aRecordHeader;
    if (lBytes < 4 || lBytes > m_lLength - m_lPosition) {
        throw Failure(kExitInput, sWhere + " claims more bytes than the file has");
    }
    m_vContent.resize(static_cast<std::size_t>(lBytes));
    m_oFile.ReadExact(m_vContent.data(), m_vContent.size());
    m_lPosition += lBytes;
    Parse(m_lRecord, tShape);
    return true;
}

void ShapeFileReader::Parse(std::int32_t lRecord, Shape& tShape) const {
    const auto fnBad = [&](const char* sWhat) {
        return Failure(kExitInput,
                       "record " + std::to_string(lRecord) + " of " + m_sPath + " " + sWhat);
    };
    const unsigned char* p = m_vContent.data();
    const std::int64_t lBytes = static_cast<std::int64_t>(m_vContent.size());
    const std::int32_t lType = LittleEndian(p);
    tShape.vParts.clear();
    tShape.eKind = Shape::Kind::None;
    if (lType == 0) return;
    if (lType != m_lShapeType) throw fnBad("has another shape type than its file");
    tShape.eKind = KindOf(lType);
    const auto fnPoint = [&](std::int64_t lOffset) {
        return XY{platform::GetLEDouble(p + lOffset), platform::GetLEDouble(p + lOffset + 8)};
    };
    switch (lType % 10) {
        case 1:
            if (lBytes < 20) throw fnBad("is too short for a point");
            tShape.vParts.push_back({fnPoint(4)});
            return;
        case 8: {
            if (lBytes < 40) throw fnBad("is too short for a multipoint");
            const std::int64_t lPoints = LittleEndian(p + 36);
            if (lPoints < 0 || 40 + 16 * lPoints > lBytes) throw fnBad("has a bad point count");
            for (std::int64_t i = 0; i < lPoints; ++i)
                tShape.vParts.push_back({fnPoint(40 + 16 * i)});
            return;
        }
        default: {
            if (lBytes < 44) throw fnBad("is too short for its shape type");
            const std::int64_t lParts = LittleEndian(p + 36);
            const std::int64_t lPoints = LittleEndian(p + 40);
            if (lParts < 0 || lPoints < 0 || 44 + 4 * lParts + 16 * lPoints > lBytes) {
                throw fnBad("has bad part or point counts");
            }
            const std::int64_t lFirstPoint = 44 + 4 * lParts;
            for (std::int64_t lPart = 0; lPart < lParts; ++lPart) {
                const std::int64_t lStart = LittleEndian(p + 44 + 4 * lPart);
                const std::int64_t lEnd =
                    lPart + 1 < lParts ? LittleEndian(p + 48 + 4 * lPart) : lPoints;
                if (lStart < 0 || lStart > lEnd || lEnd > lPoints)
                    throw fnBad("has bad part starts");
                std::vector<XY>& vPart = tShape.vParts.emplace_back();
                vPart.reserve(static_cast<std::size_t>(lEnd - lStart));
                for (std::int64_t i = lStart; i < lEnd; ++i) {
                    vPart.push_back(fnPoint(lFirstPoint + 16 * i));
                }
            }
            return;
        }
    }
}

}  // namespace tnw::cli

namespace tnw::cli {

namespace {

using standins::Coordinate;

std::vector<Coordinate> Coordinates(const std::vector<XY>& vPart) {
    std::vector<Coordinate> vCoordinates;
    vCoordinates.reserve(vPart.size());
    for (const XY& t : vPart)
        vCoordinates.push_back({t.dX, t.dY});
    return vCoordinates;
}

// Twice the signed area: negative for a clockwise ring.
double SignedArea2(const std::vector<XY>& vRing) {
    double dSum = 0.0;
    for (std::size_t i = 0; i + 1 < vRing.size(); ++i)
        dSum += vRing[i].dX * vRing[i + 1].dY - vRing[i + 1].dX * vRing[i].dY;
    return dSum;
}

bool Holds(const std::vector<XY>& vRing, const XY& tPoint) {
    bool bInside = false;
    for (std::size_t i = 0, j = vRing.size() - 1; i < vRing.size(); j = i++) {
        const XY& a = vRing[i];
        const XY& b = vRing[j];
        if ((a.dY > tPoint.dY) != (b.dY > tPoint.dY) &&
            tPoint.dX < (b.dX - a.dX) * (tPoint.dY - a.dY) / (b.dY - a.dY) + a.dX) {
            bInside = !bInside;
        }
    }
    return bInside;
}

std::shared_ptr<IGeometry> PolygonsOf(const std::vector<std::vector<XY>>& vRings) {
    // Outer rings in the order of the record, each with the holes given to it.
    std::vector<std::vector<std::size_t>> vPolygons;
    std::vector<std::size_t> vHoles;
    for (std::size_t i = 0; i < vRings.size(); ++i) {
        if (vRings.size() == 1 || SignedArea2(vRings[i]) < 0.0) {
            vPolygons.push_back({i});
        } else {
            vHoles.push_back(i);
        }
    }
    for (std::size_t nHole : vHoles) {
        std::size_t nBest = vPolygons.size();
        double dBestArea = 0.0;
        for (std::size_t n = 0; n < vPolygons.size(); ++n) {
            const auto& vOuter = vRings[vPolygons[n][0]];
            const double dArea = -SignedArea2(vOuter);
            if (!vRings[nHole].empty() && Holds(vOuter, vRings[nHole][0]) &&
                (nBest == vPolygons.size() || dArea < dBestArea)) {
                nBest = n;
                dBestArea = dArea;
            }
        }
        if (nBest == vPolygons.size()) {
            vPolygons.push_back({nHole});
        } else {
            vPolygons[nBest].push_back(nHole);
        }
    }
    std::vector<std::shared_ptr<IPolygon>> vMembers;
    for (const auto& vPolygon : vPolygons) {
        std::vector<std::vector<Coordinate>> vPolygonRings;
        for (std::size_t nRing : vPolygon)
            vPolygonRings.push_back(Coordinates(vRings[nRing]));
        vMembers.push_back(std::make_shared<standins::Polygon>(vPolygonRings));
    }
    if (vMembers.size() == 1) return vMembers[0];
    return std::make_shared<standins::MultiPolygon>(std::move(vMembers));
}

}  // namespace

std::shared_ptr<IGeometry> GeometryOf(const Shape& tShape, std::int32_t lShapeType) {
    if (tShape.vParts.empty()) return nullptr;
    switch (tShape.eKind) {
        case Shape::Kind::Point: {
            if (lShapeType % 10 != 8) {
                const XY& t = tShape.vParts[0][0];
                return standins::Point::Create(t.dX, t.dY);
            }
            std::vector<std::shared_ptr<IPoint>> vPoints;
            for (const auto& vPart : tShape.vParts)
                vPoints.push_back(standins::Point::Create(vPart[0].dX, vPart[0].dY));
            return std::make_shared<standins::MultiPoint>(std::move(vPoints));
        }
        case Shape::Kind::Line: {
            std::vector<std::shared_ptr<ILineString>> vLines;
            for (const auto& vPart : tShape.vParts)
                vLines.push_back(std::make_shared<standins::LineString>(Coordinates(vPart)));
            if (vLines.size() == 1) return vLines[0];
            return std::make_shared<standins::MultiLineString>(std::move(vLines));
        }
        case Shape::Kind::Polygon:
            return PolygonsOf(tShape.vParts);
        default:
            return nullptr;
    }
}

ShapeGeometryReader::ShapeGeometryReader(std::string sPath)
    : m_sPath(std::move(sPath)), m_pReader(std::make_unique<ShapeFileReader>(m_sPath)) {
    Shape tShape;
    while (m_pReader->Next(tShape))
        ++m_lCount;
    m_pReader = std::make_unique<ShapeFileReader>(m_sPath);
}

std::int32_t ShapeGeometryReader::GeometryType() const {
    switch (m_pReader->ShapeType() % 10) {
        case 1:
            return tnwGeometryPoint;
        case 3:
            return tnwGeometryLine;
        case 5:
            return tnwGeometryRegion;
        case 8:
            return tnwGeometryMultiPoint;
        default:
            return 0;
    }
}

std::shared_ptr<IGeometry> ShapeGeometryReader::Record(std::int64_t lRecord) {
    if (lRecord <= m_lRead) {
        m_pReader = std::make_unique<ShapeFileReader>(m_sPath);
        m_lRead = 0;
    }
    Shape tShape;
    while (m_lRead < lRecord) {
        if (!m_pReader->Next(tShape)) return nullptr;
        ++m_lRead;
    }
    return GeometryOf(tShape, m_pReader->ShapeType());
}

}  // namespace tnw::cli
