// Writes three yield points as a shapefile set and reads the table back: the round trip a host
// makes with an installed library. Prints the yields read; exits 1 on any difference.
#include <cstdio>
#include <string>

#include "RegisterStandIns.h"
#include "decoders/tnwDBFDecoder.h"
#include "log/ErrorReports.h"
#include "shapefile/tnwShapeEncoder.h"

int main(int argc, char** argv) {
    const std::string sBase = argc > 1 ? argv[1] : "yield";
    const double aYield[] = {181.25, 0.5, 203.75};

    tnw::standins::RegisterStandIns();
    auto oColumns = tnw::CreateAs<tnw::tnwColumns>("tnwGIS.tnwColumns", "Missing Component");
    auto oFactory = tnw::CreateAs<tnw::tnwGISFactory>("tnwGIS.tnwGISFactory", "Missing Component");
    auto oYield = oColumns->Add("Yield", "", "", tnw::vtDouble, 10, 2, 3, 1, 0, "", true, true);
    {
        tnw::tnwShapeEncoder oEncoder;
        oEncoder.Initialize(sBase + ".shp", oColumns, tnw::tnwGeometryPoint);
        for (int i = 0; i < 3; ++i) {
            oYield->SetValue(aYield[i]);
            oEncoder.SetGeometry(oFactory->CreatePoint(-96.0 + i * 1e-4, 40.0, nullptr));
            oEncoder.Update();
        }
        oEncoder.CloseFiles();
    }

    tnw::tnwDBFDecoder oTable;
    oTable.SetFilename(sBase + ".dbf");
    int iRead = 0;
    for (bool bMoved = oTable.MoveFirst().EqualsTrue(); bMoved; bMoved = oTable.MoveNext()) {
        const double dYield = oTable.Columns()->Item("Yield")->Value().ToDouble();
        std::printf("%g\n", dYield);
        if (iRead >= 3 || dYield != aYield[iRead]) return 1;
        ++iRead;
    }
    return iRead == 3 && tnw::standins::ErrorReports().empty() ? 0 : 1;
}
