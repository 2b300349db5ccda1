// Stress runs for scripts/stress.sh, one per process so that each reports its own peak memory:
//   stress_points write <base> <records>   a point set through tnwShapeEncoder
//   stress_points read <table.dbf> <records>   the table back through tnwDBFDecoder, checked
//   stress_points fgp <base> <points>   an FGP set of that many points (half of them vertices of
//       lines of 1000, half loose points) written, then walked as sites through tnwFGPDecoder
//   stress_points shp-limit <base>   records of 4 Mi points until the .shp would pass the
//       2^31 - 1 words its offsets can address; the file layer drops the record bytes, so no
//       4 GiB reach the disk
// Each prints one line "<mode> records=<n> seconds=<s> peak_rss_kb=<k>" and exits 0, or tells
// what went wrong and exits 1.
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>

#include "core/Component.h"
#include "core/Error.h"
#include "core/GISLib.h"
#include "decoders/tnwDBFDecoder.h"
#include "decoders/tnwFGPDecoder.h"
#include "fgp/FGPWriter.h"
#include "ogc_sf/Geometries.h"
#include "shapefile/tnwShapeEncoder.h"
#include "support/TestSupport.h"

namespace tnw::test {
namespace {

long PeakRssKb() {
    rusage tUsage{};
    getrusage(RUSAGE_SELF, &tUsage);
    return tUsage.ru_maxrss;
}

int Fail(const std::string& sWhat) {
    std::fprintf(stderr, "stress_points: %s\n", sWhat.c_str());
    return 1;
}

class Clock {
public:
    double Seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_tStart).count();
    }

private:
    std::chrono::steady_clock::time_point m_tStart = std::chrono::steady_clock::now();
};

void PrintResult(const char* sMode, std::int64_t nRecords, const Clock& oClock) {
    std::printf("%s records=%lld seconds=%.1f peak_rss_kb=%ld\n", sMode,
                static_cast<long long>(nRecords), oClock.Seconds(), PeakRssKb());
}

struct PointColumns {
    PointColumns() : oColumns(CreateAs<tnwColumns>(kProgIdColumns, "Missing Component")) {
        oId = oColumns->Add("ID", "", "", vtDouble, 10, 0, 0, 1, 0, "", true, true);
        oName = oColumns->Add("NAME", "", "", vtString, 12, 0, 0, 1, 0, "", true, true);
        oYield = oColumns->Add("YIELD", "", "", vtDouble, 8, 2, 0, 1, 0, "", true, true);
    }
    std::shared_ptr<tnwColumns> oColumns;
    std::shared_ptr<tnwColumn> oId, oName, oYield;
};

int WritePoints(const std::string& sBase, std::int64_t nRecords) {
    ScopedCapture oCapture;
    const Clock oClock;
    PointColumns tRecord;
    tnwShapeEncoder oEncoder;
    if (!oEncoder.Initialize(sBase, tRecord.oColumns, tnwGeometryPoint))
        return Fail("Initialize failed");
    for (std::int64_t i = 1; i <= nRecords; ++i) {
        tRecord.oId->SetValue(static_cast<double>(i));
        tRecord.oName->SetValue(std::to_string(i % 1000000).insert(0, 1, 'P'));
        tRecord.oYield->SetValue(static_cast<double>(i % 30000) / 100.0);
        oEncoder.SetGeometry(
            standins::Point::Create(-96.0 + (i % 100000) * 1e-5, 40.0 + (i / 100000) * 1e-5));
        if (!oEncoder.Update()) return Fail("Update failed at record " + std::to_string(i));
    }
    oEncoder.CloseFiles();
    if (!oCapture.vReports.empty()) return Fail("reported: " + oCapture.vReports[0].sDescription);
    PrintResult("write", nRecords, oClock);
    return 0;
}

int ReadPoints(const std::string& sTable, std::int64_t nRecords) {
    ScopedCapture oCapture;
    const Clock oClock;
    tnwDBFDecoder oReader;
    oReader.SetFilename(sTable);
    const auto oId = oReader.Columns()->Item("ID");
    const auto oYield = oReader.Columns()->Item("YIELD");
    if (!oId || !oYield) return Fail("the table lacks ID or YIELD");
    std::int64_t nRead = 0;
    for (bool bMore = oReader.MoveFirst().EqualsTrue(); bMore; bMore = oReader.MoveNext()) {
        ++nRead;
        if (oId->Value().ToDouble() != static_cast<double>(nRead) ||
            oYield->Value().ToDouble() != static_cast<double>(nRead % 30000) / 100.0) {
            return Fail("record " + std::to_string(nRead) + " reads wrong");
        }
    }
    if (nRead != nRecords) return Fail("read " + std::to_string(nRead) + " records");
    if (!oReader.MoveToRecord(static_cast<std::int32_t>(nRecords / 2)) ||
        oId->Value().ToDouble() != static_cast<double>(nRecords / 2)) {
        return Fail("MoveToRecord to the middle reads wrong");
    }
    PrintResult("read", nRead, oClock);
    return 0;
}

int WalkFGPSet(const std::string& sBase, std::int64_t nPoints) {
    ScopedCapture oCapture;
    const Clock oClock;
    const std::string sPath = sBase + ".fgp";
    const auto Place = [](std::int64_t i) { return -96.0 + static_cast<double>(i) * 1e-7; };
    {
        standins::FGPWriter oWriter(sPath);
        std::vector<standins::fgp::PointData> vLine(1000);
        std::int64_t i = 0;
        for (; i + 1000 <= nPoints / 2; i += 1000) {
            for (std::int64_t k = 0; k < 1000; ++k)
                vLine[k].dLongitude = Place(i + k);
            oWriter.AddLine(vLine);
        }
        for (; i < nPoints; ++i) {
            standins::fgp::PointData t;
            t.dLongitude = Place(i);
            oWriter.AddPoint(t);
        }
        oWriter.Close();
    }
    tnwFGPDecoder oSet;
    oSet.SetFilename(sPath);
    std::int64_t nRead = 0;
    for (bool bMore = oSet.MoveFirst().EqualsTrue(); bMore; bMore = oSet.MoveNext()) {
        if (oSet.Longitude() != Place(nRead))
            return Fail("point " + std::to_string(nRead) + " reads wrong");
        ++nRead;
    }
    if (nRead != nPoints || oSet.PercentComplete() != 100.0) {
        return Fail("walked " + std::to_string(nRead) + " points");
    }
    if (!oCapture.vReports.empty()) return Fail("reported: " + oCapture.vReports[0].sDescription);
    PrintResult("fgp", nRead, oClock);
    return 0;
}

// A multipoint of many points that are all one point, so that a record of any size costs no
// memory of its own.
class RepeatedPoint final : public IMultiPoint {
public:
    explicit RepeatedPoint(std::int32_t lPoints) : m_lPoints(lPoints) {}
    std::int32_t NumGeometries() const override { return m_lPoints; }
    std::shared_ptr<IGeometry> Geometry(std::int32_t) const override { return m_oPoint; }
    std::int32_t GeometryType() const override { return ogcMultiPoint; }
    std::shared_ptr<IPoint> Centroid() const override { return m_oPoint; }
    std::string WKT() const override { return {}; }
    std::shared_ptr<IGeometry> Project(const std::shared_ptr<ISpatialReference>&) const override {
        return nullptr;
    }

private:
    std::int32_t m_lPoints;
    std::shared_ptr<IPoint> m_oPoint = standins::Point::Create(1.5, 2.5);
};

// The .shp of the set takes its 100-byte header for real and drops every other byte, keeping
// count of where each descriptor stands.
class DroppedShapeBytes {
public:
    DroppedShapeBytes() : m_tReal(platform::Sys()) {
        auto& calls = platform::Sys();
        calls.open = [this](const char* sPath, int iFlags, int iMode) {
            const int iFd = m_tReal.open(sPath, iFlags, iMode);
            const std::string s(sPath);
            if (iFd >= 0 && s.size() > 4 && s.compare(s.size() - 4, 4, ".shp") == 0)
                m_mPosition[iFd] = 0;
            return iFd;
        };
        calls.write = [this](int iFd, const void* pData, std::size_t nBytes) -> ssize_t {
            auto it = m_mPosition.find(iFd);
            if (it == m_mPosition.end()) return m_tReal.write(iFd, pData, nBytes);
            ssize_t n = static_cast<ssize_t>(nBytes);
            if (it->second < 100)
                n = m_tReal.write(iFd, pData, std::min<std::size_t>(nBytes, 100 - it->second));
            if (n > 0) it->second += n;
            return n;
        };
        calls.lseek = [this](int iFd, off_t lOffset, int iWhence) {
            auto it = m_mPosition.find(iFd);
            if (it != m_mPosition.end() && iWhence == SEEK_SET) it->second = lOffset;
            return m_tReal.lseek(iFd, lOffset, iWhence);
        };
        calls.close = [this](int iFd) {
            m_mPosition.erase(iFd);
            return m_tReal.close(iFd);
        };
    }
    ~DroppedShapeBytes() { platform::Sys() = m_tReal; }
    DroppedShapeBytes(const DroppedShapeBytes&) = delete;
    DroppedShapeBytes& operator=(const DroppedShapeBytes&) = delete;

private:
    platform::FileSystemCalls m_tReal;
    std::map<int, std::int64_t> m_mPosition;  // where each .shp descriptor stands
};

std::uint32_t BigEndianAt(const std::string& sBytes, std::size_t n) {
    const auto* p = reinterpret_cast<const unsigned char*>(sBytes.data() + n);
    return std::uint32_t{p[0]} << 24 | std::uint32_t{p[1]} << 16 | std::uint32_t{p[2]} << 8 |
           std::uint32_t{p[3]};
}

int CrossShapeOffsetLimit(const std::string& sBase) {
    // 40 + 16 x 4 Mi bytes of content and 8 of record header: 33,554,456 words a record.
    // After the 50 words of the file header 63 fit (2,113,930,778 words); the 64th would end
    // at 2,147,485,234, past 2^31 - 1.
    constexpr std::int32_t lPoints = 1 << 22;
    constexpr std::int64_t lRecordWords = 4 + (40 + 16LL * lPoints) / 2;
    constexpr std::int64_t lFitting = (0x7FFFFFFFLL - 50) / lRecordWords;
    ScopedCapture oCapture;
    const Clock oClock;
    PointColumns tRecord;
    std::int64_t nTaken = 0;
    {
        DroppedShapeBytes oDropped;
        tnwShapeEncoder oEncoder;
        if (!oEncoder.Initialize(sBase, tRecord.oColumns, tnwGeometryMultiPoint))
            return Fail("Initialize failed");
        const auto oLarge = std::make_shared<RepeatedPoint>(lPoints);
        for (std::int64_t i = 1; i <= lFitting + 1; ++i) {
            tRecord.oId->SetValue(static_cast<double>(i));
            oEncoder.SetGeometry(oLarge);
            if (oEncoder.Update()) ++nTaken;
        }
        if (nTaken != lFitting) return Fail("took " + std::to_string(nTaken) + " large records");
        if (oCapture.vReports.size() != 1 ||
            oCapture.vReports[0].sSource != "tnwShapeEncoder.Update2" ||
            oCapture.vReports[0].lNumber != errOverflow) {
            return Fail("the record past the limit was not reported as an overflow of Update2");
        }
        // A record that still fits is taken after the refused one.
        oEncoder.SetGeometry(std::make_shared<RepeatedPoint>(1));
        if (!oEncoder.Update()) return Fail("a small record after the limit was refused");
        ++nTaken;
        oEncoder.CloseFiles();
    }
    const std::int64_t lShpWords = 50 + lFitting * lRecordWords + 4 + (40 + 16) / 2;
    const std::string sShp = ReadFile(sBase + ".shp");
    const std::string sShx = ReadFile(sBase + ".shx");
    if (sShp.size() != 100 || BigEndianAt(sShp, 24) != lShpWords)
        return Fail("the .shp header does not hold the words of the records taken");
    if (sShx.size() != 100 + 8 * static_cast<std::size_t>(nTaken) ||
        BigEndianAt(sShx, 24) != 50 + 4 * nTaken ||
        BigEndianAt(sShx, 100 + 8 * static_cast<std::size_t>(nTaken - 1)) !=
            lShpWords - 4 - (40 + 16) / 2) {
        return Fail("the .shx does not index the records taken");
    }
    if (oCapture.vReports.size() != 1) return Fail("more failures than the record past the limit");
    PrintResult("shp-limit", nTaken, oClock);
    return 0;
}

}  // namespace
}  // namespace tnw::test

int main(int argc, char** argv) {
    using namespace tnw::test;
    const std::string sMode = argc > 1 ? argv[1] : "";
    try {
        if (sMode == "write" && argc == 4) return WritePoints(argv[2], std::stoll(argv[3]));
        if (sMode == "read" && argc == 4) return ReadPoints(argv[2], std::stoll(argv[3]));
        if (sMode == "shp-limit" && argc == 3) return CrossShapeOffsetLimit(argv[2]);
        if (sMode == "fgp" && argc == 4) return WalkFGPSet(argv[2], std::stoll(argv[3]));
    } catch (const tnw::Error& e) {
        return Fail("error " + std::to_string(e.lNumber) + ": " + e.sDescription);
    }
    std::fprintf(stderr,
                 "usage: stress_points write <base> <records> | read <table.dbf> <records> | "
                 "fgp <base> <points> | shp-limit <base>\n");
    return 2;
}
