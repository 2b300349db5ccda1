// GDAL/OGR as a rival: only the driver each workload needs is registered; W1 and W2 write
// through one reused feature whose geometry is changed in place, W3 and W4 read features one
// at a time with the typed field getters.
#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <cstring>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>

#include "Rival.h"

namespace tnw::bench {
namespace {

struct DatasetCloser {
    void operator()(GDALDataset* p) const { GDALClose(p); }
};
using Dataset = std::unique_ptr<GDALDataset, DatasetCloser>;

struct FeatureDestroyer {
    void operator()(OGRFeature* p) const { OGRFeature::DestroyFeature(p); }
};
using Feature = std::unique_ptr<OGRFeature, FeatureDestroyer>;

void WriteText(const std::string& sPath, std::string_view sText) {
    std::ofstream f(sPath, std::ios::binary);
    f.write(sText.data(), static_cast<std::streamsize>(sText.size()));
    if (!f) throw std::runtime_error("cannot write " + sPath);
}

[[noreturn]] void Fail(const std::string& sWhat) {
    throw std::runtime_error(sWhat + ": " + CPLGetLastErrorMsg());
}

GDALDriver* ShapefileDriver() {
    RegisterOGRShape();
    GDALDriver* poDriver = GetGDALDriverManager()->GetDriverByName("ESRI Shapefile");
    if (!poDriver) Fail("no shapefile driver");
    return poDriver;
}

// A new single-layer shapefile set with the given fields. GDAL's default encoding writes
// language driver 0x57 and no .cpg; the .prj and .cpg are written after close, as shapelib's.
template <std::size_t N>
std::pair<Dataset, OGRLayer*> CreateSet(const std::string& sBase, OGRwkbGeometryType eType,
                                        const FieldDef (&aFields)[N]) {
    Dataset poDS(
        ShapefileDriver()->Create((sBase + ".shp").c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    if (!poDS) Fail("cannot create " + sBase);
    OGRLayer* poLayer = poDS->CreateLayer(CPLGetBasename(sBase.c_str()), nullptr, eType, nullptr);
    if (!poLayer) Fail("cannot create layer");
    for (const FieldDef& t : aFields) {
        OGRFieldType eField = t.cType == 'C' ? OFTString
                              : t.nDecimals  ? OFTReal
                              : t.nWidth > 9 ? OFTInteger64
                                             : OFTInteger;
        OGRFieldDefn oField(t.sName, eField);
        // GDAL 3.6 writes a boolean field as N(1,0) holding 1 or 0, not as a T/F logical.
        if (t.cType == 'L') oField.SetSubType(OFSTBoolean);
        oField.SetWidth(t.nWidth);
        oField.SetPrecision(t.nDecimals);
        if (poLayer->CreateField(&oField) != OGRERR_NONE) Fail("cannot add field");
    }
    return {std::move(poDS), poLayer};
}

void CreateFeature(OGRLayer* poLayer, OGRFeature* poFeature) {
    poFeature->SetFID(OGRNullFID);
    if (poLayer->CreateFeature(poFeature) != OGRERR_NONE) Fail("CreateFeature failed");
}

void FinishSet(Dataset& poDS, const std::string& sBase) {
    poDS.reset();
    WriteText(sBase + ".prj", kPrjText);
    WriteText(sBase + ".cpg", kCpgText);
}

WorkloadResult WritePoints(const WorkloadArgs& tArgs) {
    auto [poDS, poLayer] = CreateSet(tArgs.sOutput, wkbPoint, kW1Fields);
    Feature poFeature(OGRFeature::CreateFeature(poLayer->GetLayerDefn()));
    auto* poPoint = new OGRPoint();
    poFeature->SetGeometryDirectly(poPoint);
    for (std::int64_t i = 0; i < tArgs.lRecords; ++i) {
        W1Record t = MakeW1Record(i);
        poPoint->setX(t.dX);
        poPoint->setY(t.dY);
        poFeature->SetField(0, t.dElevation);
        poFeature->SetField(1, t.dWidth);
        poFeature->SetField(2, t.dDistance);
        poFeature->SetField(3, t.dDuration);
        poFeature->SetField(4, static_cast<GIntBig>(t.lUTC));
        poFeature->SetField(5, t.bEngaged ? 1 : 0);
        poFeature->SetField(6, t.lMappable);
        poFeature->SetField(7, t.sCrop.data());  // a literal: NUL-ended
        CreateFeature(poLayer, poFeature.get());
    }
    FinishSet(poDS, tArgs.sOutput);
    return {tArgs.lRecords, {}};
}

WorkloadResult WritePolygons(const WorkloadArgs& tArgs) {
    auto [poDS, poLayer] = CreateSet(tArgs.sOutput, wkbPolygon, kW2Fields);
    Feature poFeature(OGRFeature::CreateFeature(poLayer->GetLayerDefn()));
    auto* poPolygon = new OGRPolygon();
    poPolygon->addRingDirectly(new OGRLinearRing());
    poPolygon->addRingDirectly(new OGRLinearRing());
    poFeature->SetGeometryDirectly(poPolygon);
    OGRLinearRing* poExterior = poPolygon->getExteriorRing();
    OGRLinearRing* poHole = poPolygon->getInteriorRing(0);
    W2Offsets tOffsets;
    W2Record t;
    for (std::int64_t k = 0; k < tArgs.lRecords; ++k) {
        MakeW2Record(k, tOffsets, t);
        poExterior->setPoints(kW2ExteriorPoints, t.adX, t.adY);
        poHole->setPoints(kW2HolePoints, t.adX + kW2ExteriorPoints, t.adY + kW2ExteriorPoints);
        poFeature->SetField(0, t.dRate);
        poFeature->SetField(1, t.lZone);
        poFeature->SetField(2, t.sName);
        CreateFeature(poLayer, poFeature.get());
    }
    FinishSet(poDS, tArgs.sOutput);
    return {tArgs.lRecords, {}};
}

Dataset OpenVector(const std::string& sPath, const char* sDriver) {
    const char* const apszDrivers[] = {sDriver, nullptr};
    Dataset poDS(GDALDataset::Open(sPath.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY, apszDrivers,
                                   nullptr, nullptr));
    if (!poDS || poDS->GetLayerCount() < 1) Fail("cannot open " + sPath);
    return poDS;
}

WorkloadResult ReadTable(const WorkloadArgs& tArgs) {
    RegisterOGRShape();
    Dataset poDS = OpenVector(tArgs.sInput, "ESRI Shapefile");
    OGRLayer* poLayer = poDS->GetLayer(0);
    Checksum tSum;
    while (Feature poFeature{poLayer->GetNextFeature()}) {
        for (int iField = 0; iField < 4; ++iField)
            tSum.dSum += poFeature->GetFieldAsDouble(iField);
        tSum.lSum += poFeature->GetFieldAsInteger64(4);
        tSum.lSum += IsTrueLetter(poFeature->GetFieldAsString(5)[0]);  // GDAL reads L as text
        tSum.lSum += poFeature->GetFieldAsInteger64(6);
        tSum.lSum += static_cast<std::int64_t>(TrimmedLength(poFeature->GetFieldAsString(7)));
        ++tSum.lRecords;
    }
    return {tSum.lRecords, tSum.Text()};
}

WorkloadResult ReadCsv(const WorkloadArgs& tArgs) {
    RegisterOGRCSV();
    Dataset poDS = OpenVector(tArgs.sInput, "CSV");
    OGRLayer* poLayer = poDS->GetLayer(0);
    Checksum tSum;
    while (Feature poFeature{poLayer->GetNextFeature()}) {
        for (int iField = 0; iField < 6; ++iField)
            tSum.dSum += poFeature->GetFieldAsDouble(iField);
        tSum.dSum += poFeature->GetFieldAsDouble(8);
        tSum.lSum += poFeature->GetFieldAsInteger64(6);
        tSum.lSum += poFeature->GetFieldAsInteger64(7);
        tSum.lSum += static_cast<std::int64_t>(std::strlen(poFeature->GetFieldAsString(9)));
        ++tSum.lRecords;
    }
    return {tSum.lRecords, tSum.Text()};
}

const Implementation kGdal = {"gdal", {WritePoints, WritePolygons, ReadTable, ReadCsv}};

}  // namespace
}  // namespace tnw::bench

extern "C" const tnw::bench::Implementation* tnw_bench_implementation() {
    return &tnw::bench::kGdal;
}
