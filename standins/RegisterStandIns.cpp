#include "RegisterStandIns.h"

#include "core/Component.h"
#include "core/FGPFile.h"
#include "core/GISLib.h"
#include "core/Services.h"
#include "fgp/FGPFile.h"
#include "gislib/Columns.h"
#include "gislib/FileUtility.h"
#include "gislib/GISFactory.h"
#include "log/ErrorReports.h"
#include "tnwlib/StringBuilder.h"
#include "tnwlib/tnwlib.h"
#include "uom/UnitLookup.h"

namespace tnw::standins {

void RegisterStandIns() {
    tnwObjectFactory::Register(kProgIdGISFactory, [] { return std::make_shared<GISFactory>(); });
    tnwObjectFactory::Register(kProgIdColumns, [] { return std::make_shared<Columns>(); });
    tnwObjectFactory::Register(kProgIdPointList, [] { return std::make_shared<PointList>(); });
    // The file utility is one shared object.
    static const auto oFileUtility = std::make_shared<FileUtility>();
    tnwObjectFactory::Register(kProgIdFileUtility, [] { return oFileUtility; });
    tnwObjectFactory::Register(kProgIdErrorHandler,
                               [] { return std::make_shared<ErrorHandler>(); });
    tnwObjectFactory::Register(kProgIdFGPFile, [] { return std::make_shared<FGPFile>(); });
    RegisterUnitLookup();
    RegisterStringBuilder();
    RegisterArcAngle(&TNWL_ArcAngle);
}

}  // namespace tnw::standins
