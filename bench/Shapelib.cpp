// shapelib as a rival: W1 and W2 written with one reused shape object, W3 read with the typed
// attribute readers. shapelib has no delimited text reader, so it takes no part in W4.
#include <shapefil.h>

#include <cstring>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

#include "Rival.h"

namespace tnw::bench {
namespace {

struct ShpCloser {
    void operator()(SHPInfo* h) const { SHPClose(h); }
};
struct DbfCloser {
    void operator()(DBFInfo* h) const { DBFClose(h); }
};
struct ObjectDestroyer {
    void operator()(SHPObject* o) const { SHPDestroyObject(o); }
};
using ShpFile = std::unique_ptr<SHPInfo, ShpCloser>;
using DbfFile = std::unique_ptr<DBFInfo, DbfCloser>;
using Shape = std::unique_ptr<SHPObject, ObjectDestroyer>;

void WriteText(const std::string& sPath, std::string_view sText) {
    std::ofstream f(sPath, std::ios::binary);
    f.write(sText.data(), static_cast<std::streamsize>(sText.size()));
    if (!f) throw std::runtime_error("cannot write " + sPath);
}

// The set's files, with language driver 0x57 (ANSI) in the .dbf, and its fields.
template <std::size_t N>
std::pair<ShpFile, DbfFile> CreateSet(const std::string& sBase, int nShapeType,
                                      const FieldDef (&aFields)[N]) {
    ShpFile hShp(SHPCreate((sBase + ".shp").c_str(), nShapeType));
    DbfFile hDbf(DBFCreateEx((sBase + ".dbf").c_str(), "LDID/87"));
    if (!hShp || !hDbf) throw std::runtime_error("cannot create " + sBase);
    for (const FieldDef& t : aFields) {
        DBFFieldType eType = t.cType == 'C'   ? FTString
                             : t.cType == 'L' ? FTLogical
                             : t.nDecimals    ? FTDouble
                                              : FTInteger;
        if (DBFAddField(hDbf.get(), t.sName, eType, t.nWidth, t.nDecimals) < 0) {
            throw std::runtime_error("cannot add field " + std::string(t.sName));
        }
    }
    return {std::move(hShp), std::move(hDbf)};
}

void Check(int bWritten) {
    if (!bWritten) throw std::runtime_error("shapelib write failed");
}

WorkloadResult WritePoints(const WorkloadArgs& tArgs) {
    auto [hShp, hDbf] = CreateSet(tArgs.sOutput, SHPT_POINT, kW1Fields);
    double dX = 0.0, dY = 0.0;
    Shape oPoint(SHPCreateSimpleObject(SHPT_POINT, 1, &dX, &dY, nullptr));
    for (std::int64_t i = 0; i < tArgs.lRecords; ++i) {
        W1Record t = MakeW1Record(i);
        oPoint->padfX[0] = t.dX;
        oPoint->padfY[0] = t.dY;
        SHPComputeExtents(oPoint.get());
        int iRecord = SHPWriteObject(hShp.get(), -1, oPoint.get());
        if (iRecord < 0) throw std::runtime_error("SHPWriteObject failed");
        DBFInfo* h = hDbf.get();
        Check(DBFWriteDoubleAttribute(h, iRecord, 0, t.dElevation));
        Check(DBFWriteDoubleAttribute(h, iRecord, 1, t.dWidth));
        Check(DBFWriteDoubleAttribute(h, iRecord, 2, t.dDistance));
        Check(DBFWriteDoubleAttribute(h, iRecord, 3, t.dDuration));
        Check(DBFWriteIntegerAttribute(h, iRecord, 4, t.lUTC));
        Check(DBFWriteLogicalAttribute(h, iRecord, 5, t.bEngaged ? 'T' : 'F'));
        Check(DBFWriteIntegerAttribute(h, iRecord, 6, t.lMappable));
        Check(DBFWriteStringAttribute(h, iRecord, 7, t.sCrop.data()));  // a literal: NUL-ended
    }
    hShp.reset();
    hDbf.reset();
    WriteText(tArgs.sOutput + ".prj", kPrjText);
    WriteText(tArgs.sOutput + ".cpg", kCpgText);
    return {tArgs.lRecords, {}};
}

WorkloadResult WritePolygons(const WorkloadArgs& tArgs) {
    auto [hShp, hDbf] = CreateSet(tArgs.sOutput, SHPT_POLYGON, kW2Fields);
    W2Offsets tOffsets;
    W2Record t;
    MakeW2Record(0, tOffsets, t);
    const int anPartStart[2] = {0, kW2ExteriorPoints};
    Shape oPolygon(SHPCreateObject(SHPT_POLYGON, -1, 2, anPartStart, nullptr, kW2Points, t.adX,
                                   t.adY, nullptr, nullptr));
    for (std::int64_t k = 0; k < tArgs.lRecords; ++k) {
        MakeW2Record(k, tOffsets, t);
        std::memcpy(oPolygon->padfX, t.adX, sizeof t.adX);
        std::memcpy(oPolygon->padfY, t.adY, sizeof t.adY);
        SHPComputeExtents(oPolygon.get());
        int iRecord = SHPWriteObject(hShp.get(), -1, oPolygon.get());
        if (iRecord < 0) throw std::runtime_error("SHPWriteObject failed");
        DBFInfo* h = hDbf.get();
        Check(DBFWriteDoubleAttribute(h, iRecord, 0, t.dRate));
        Check(DBFWriteIntegerAttribute(h, iRecord, 1, t.lZone));
        Check(DBFWriteStringAttribute(h, iRecord, 2, t.sName));
    }
    hShp.reset();
    hDbf.reset();
    WriteText(tArgs.sOutput + ".prj", kPrjText);
    WriteText(tArgs.sOutput + ".cpg", kCpgText);
    return {tArgs.lRecords, {}};
}

WorkloadResult ReadTable(const WorkloadArgs& tArgs) {
    DbfFile hDbf(DBFOpen(tArgs.sInput.c_str(), "rb"));
    if (!hDbf) throw std::runtime_error("cannot open " + tArgs.sInput);
    DBFInfo* h = hDbf.get();
    Checksum tSum;
    int nRecords = DBFGetRecordCount(h);
    for (int i = 0; i < nRecords; ++i) {
        for (int iField = 0; iField < 4; ++iField)
            tSum.dSum += DBFReadDoubleAttribute(h, i, iField);
        tSum.lSum += DBFReadIntegerAttribute(h, i, 4);
        const char* sEngaged = DBFReadLogicalAttribute(h, i, 5);
        if (sEngaged && IsTrueLetter(sEngaged[0])) ++tSum.lSum;
        tSum.lSum += DBFReadIntegerAttribute(h, i, 6);
        const char* sCrop = DBFReadStringAttribute(h, i, 7);
        if (sCrop) tSum.lSum += static_cast<std::int64_t>(TrimmedLength(sCrop));
        ++tSum.lRecords;
    }
    return {tSum.lRecords, tSum.Text()};
}

const Implementation kShapelib = {"shapelib", {WritePoints, WritePolygons, ReadTable, nullptr}};

}  // namespace
}  // namespace tnw::bench

extern "C" const tnw::bench::Implementation* tnw_bench_implementation() {
    return &tnw::bench::kShapelib;
}
