// The unit lookup "tnwUOMEngine.tnwUOMFactory": unit texts of field operations to unit ids.
#pragma once

namespace tnw::standins {

// Makes "tnwUOMEngine.tnwUOMFactory" creatable. Safe to call more than once.
void RegisterUnitLookup();

}  // namespace tnw::standins
