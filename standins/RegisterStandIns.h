// Makes the stand-ins creatable by their program ids and registers the flat helper library.
#pragma once

namespace tnw::standins {

// Registers "tnwGIS.tnwGISFactory", "tnwGIS.tnwColumns", "tnwGIS.tnwPointList",
// "tnwGIS.tnwFileUtility", "tnwUOMEngine.tnwUOMFactory", "tnwLog.tnwHandler",
// "tnwlib.tnwStringBuilder" and TNWL_ArcAngle. Safe to call more than once.
void RegisterStandIns();

}  // namespace tnw::standins
