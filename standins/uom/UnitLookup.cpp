// A table of the units that field operations log, found by a forgiving reading of the text:
// case, blanks, full stops, "per" and plural or spelled-out names don't matter, and a rate is
// read as its two halves ("Bushels per Acre" is "bu/ac"). The ids are listed in docs/units.md.
#include "uom/UnitLookup.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "core/Component.h"
#include "core/GISLib.h"
#include "core/Services.h"

namespace tnw::standins {

namespace {

// Unit families; the class argument of FindUnit is a mask of them, 15 takes all.
enum Family : std::int32_t {
    kRate = 1,     // per area: yield, application, seeding
    kMeasure = 2,  // length, area, mass, volume, speed, flow
    kRatio = 4,    // percent, parts per million
    kOther = 8,    // angle, time, temperature, pressure, turns, counts
};

struct Unit {
    std::string_view sCanonical;
    std::int32_t lId;
    Family eFamily;
};

constexpr std::array kUnits{
    Unit{"bu/ac", 101, kRate},     Unit{"t/ha", 102, kRate},      Unit{"kg/ha", 103, kRate},
    Unit{"lb/ac", 104, kRate},     Unit{"ton/ac", 105, kRate},    Unit{"g/m2", 106, kRate},
    Unit{"oz/ac", 107, kRate},     Unit{"q/ha", 108, kRate},      Unit{"bu/ha", 109, kRate},
    Unit{"t/ac", 110, kRate},      Unit{"kg/ac", 111, kRate},     Unit{"lb/ha", 112, kRate},
    Unit{"gal/ac", 201, kRate},    Unit{"l/ha", 202, kRate},      Unit{"floz/ac", 203, kRate},
    Unit{"pt/ac", 204, kRate},     Unit{"qt/ac", 205, kRate},     Unit{"ml/ha", 206, kRate},
    Unit{"m3/ha", 207, kRate},     Unit{"l/ac", 208, kRate},      Unit{"gal/ha", 209, kRate},
    Unit{"seeds/ac", 301, kRate},  Unit{"seeds/ha", 302, kRate},  Unit{"kseeds/ac", 303, kRate},
    Unit{"kseeds/ha", 304, kRate}, Unit{"plants/ac", 305, kRate}, Unit{"plants/ha", 306, kRate},
    Unit{"seeds/m2", 307, kRate},  Unit{"plants/m2", 308, kRate}, Unit{"m", 401, kMeasure},
    Unit{"cm", 402, kMeasure},     Unit{"mm", 403, kMeasure},     Unit{"km", 404, kMeasure},
    Unit{"ft", 405, kMeasure},     Unit{"in", 406, kMeasure},     Unit{"yd", 407, kMeasure},
    Unit{"mi", 408, kMeasure},     Unit{"ac", 451, kMeasure},     Unit{"ha", 452, kMeasure},
    Unit{"m2", 453, kMeasure},     Unit{"ft2", 454, kMeasure},    Unit{"km/h", 501, kMeasure},
    Unit{"mi/h", 502, kMeasure},   Unit{"m/s", 503, kMeasure},    Unit{"ft/min", 504, kMeasure},
    Unit{"ft/s", 505, kMeasure},   Unit{"kn", 506, kMeasure},     Unit{"kg", 601, kMeasure},
    Unit{"t", 602, kMeasure},      Unit{"lb", 603, kMeasure},     Unit{"bu", 604, kMeasure},
    Unit{"g", 605, kMeasure},      Unit{"ton", 606, kMeasure},    Unit{"oz", 607, kMeasure},
    Unit{"l", 651, kMeasure},      Unit{"gal", 652, kMeasure},    Unit{"m3", 653, kMeasure},
    Unit{"ml", 654, kMeasure},     Unit{"floz", 655, kMeasure},   Unit{"pt", 656, kMeasure},
    Unit{"qt", 657, kMeasure},     Unit{"l/min", 701, kMeasure},  Unit{"gal/min", 702, kMeasure},
    Unit{"kg/min", 703, kMeasure}, Unit{"lb/min", 704, kMeasure}, Unit{"kg/s", 705, kMeasure},
    Unit{"lb/s", 706, kMeasure},   Unit{"bu/h", 707, kMeasure},   Unit{"t/h", 708, kMeasure},
    Unit{"ac/h", 709, kMeasure},   Unit{"ha/h", 710, kMeasure},   Unit{"l/h", 711, kMeasure},
    Unit{"gal/h", 712, kMeasure},  Unit{"%", 801, kRatio},        Unit{"ppm", 802, kRatio},
    Unit{"deg", 901, kOther},      Unit{"rad", 902, kOther},      Unit{"s", 911, kOther},
    Unit{"min", 912, kOther},      Unit{"h", 913, kOther},        Unit{"degc", 921, kOther},
    Unit{"degf", 922, kOther},     Unit{"kpa", 931, kOther},      Unit{"psi", 932, kOther},
    Unit{"bar", 933, kOther},      Unit{"rpm", 941, kOther},      Unit{"count", 951, kOther},
    Unit{"lb/bu", 961, kOther},    Unit{"kg/hl", 962, kOther},
};

struct Alias {
    std::string_view sText;
    std::string_view sCanonical;
};

// Other names of single units; each half of a rate is read through these too.
constexpr std::array kNames{
    Alias{"bushel", "bu"},
    Alias{"bushels", "bu"},
    Alias{"bus", "bu"},
    Alias{"lbs", "lb"},
    Alias{"pound", "lb"},
    Alias{"pounds", "lb"},
    Alias{"tonne", "t"},
    Alias{"tonnes", "t"},
    Alias{"mt", "t"},
    Alias{"metricton", "t"},
    Alias{"metrictons", "t"},
    Alias{"tons", "ton"},
    Alias{"shortton", "ton"},
    Alias{"shorttons", "ton"},
    Alias{"kgs", "kg"},
    Alias{"kilogram", "kg"},
    Alias{"kilograms", "kg"},
    Alias{"kilo", "kg"},
    Alias{"kilos", "kg"},
    Alias{"gram", "g"},
    Alias{"grams", "g"},
    Alias{"ounce", "oz"},
    Alias{"ounces", "oz"},
    Alias{"dt", "q"},
    Alias{"quintal", "q"},
    Alias{"quintals", "q"},
    Alias{"gals", "gal"},
    Alias{"gallon", "gal"},
    Alias{"gallons", "gal"},
    Alias{"lt", "l"},
    Alias{"ltr", "l"},
    Alias{"liter", "l"},
    Alias{"liters", "l"},
    Alias{"litre", "l"},
    Alias{"litres", "l"},
    Alias{"milliliter", "ml"},
    Alias{"milliliters", "ml"},
    Alias{"millilitre", "ml"},
    Alias{"millilitres", "ml"},
    Alias{"fluidounce", "floz"},
    Alias{"fluidounces", "floz"},
    Alias{"pint", "pt"},
    Alias{"pints", "pt"},
    Alias{"quart", "qt"},
    Alias{"quarts", "qt"},
    Alias{"hectoliter", "hl"},
    Alias{"hectolitre", "hl"},
    Alias{"a", "ac"},
    Alias{"acre", "ac"},
    Alias{"acres", "ac"},
    Alias{"hectare", "ha"},
    Alias{"hectares", "ha"},
    Alias{"sqm", "m2"},
    Alias{"sqft", "ft2"},
    Alias{"meter", "m"},
    Alias{"meters", "m"},
    Alias{"metre", "m"},
    Alias{"metres", "m"},
    Alias{"centimeter", "cm"},
    Alias{"centimeters", "cm"},
    Alias{"centimetre", "cm"},
    Alias{"centimetres", "cm"},
    Alias{"millimeter", "mm"},
    Alias{"millimeters", "mm"},
    Alias{"millimetre", "mm"},
    Alias{"millimetres", "mm"},
    Alias{"kilometer", "km"},
    Alias{"kilometers", "km"},
    Alias{"kilometre", "km"},
    Alias{"kilometres", "km"},
    Alias{"foot", "ft"},
    Alias{"feet", "ft"},
    Alias{"inch", "in"},
    Alias{"inches", "in"},
    Alias{"yard", "yd"},
    Alias{"yards", "yd"},
    Alias{"mile", "mi"},
    Alias{"miles", "mi"},
    Alias{"hr", "h"},
    Alias{"hrs", "h"},
    Alias{"hour", "h"},
    Alias{"hours", "h"},
    Alias{"mins", "min"},
    Alias{"minute", "min"},
    Alias{"minutes", "min"},
    Alias{"sec", "s"},
    Alias{"secs", "s"},
    Alias{"second", "s"},
    Alias{"seconds", "s"},
    Alias{"seed", "seeds"},
    Alias{"sds", "seeds"},
    Alias{"kseed", "kseeds"},
    Alias{"ksds", "kseeds"},
    Alias{"1000seeds", "kseeds"},
    Alias{"plant", "plants"},
    Alias{"knot", "kn"},
    Alias{"knots", "kn"},
    Alias{"kt", "kn"},
    Alias{"degs", "deg"},
    Alias{"degree", "deg"},
    Alias{"degrees", "deg"},
    Alias{"radian", "rad"},
    Alias{"radians", "rad"},
    Alias{"pct", "%"},
    Alias{"percent", "%"},
    Alias{"celsius", "degc"},
    Alias{"fahrenheit", "degf"},
    Alias{"ea", "count"},
    Alias{"each", "count"},
};

// Short forms of whole rates.
constexpr std::array kShortForms{
    Alias{"bpa", "bu/ac"}, Alias{"gpa", "gal/ac"}, Alias{"mph", "mi/h"},   Alias{"kph", "km/h"},
    Alias{"kmh", "km/h"},  Alias{"kmph", "km/h"},  Alias{"fpm", "ft/min"}, Alias{"gpm", "gal/min"},
    Alias{"gph", "gal/h"}, Alias{"lpm", "l/min"},  Alias{"lph", "l/h"},
};

template <class Table>
std::string_view Lookup(const Table& aTable, std::string_view sText) {
    for (const Alias& tAlias : aTable) {
        if (tAlias.sText == sText) return tAlias.sCanonical;
    }
    return sText;
}

// Lower case; "°" becomes "deg", "²" and "³" their digits; blanks, full stops and "^" go;
// a word "per" becomes "/".
std::string Normalise(std::string_view sText) {
    std::string sOut;
    std::string sWord;
    auto endWord = [&] {
        sOut += sWord == "per" ? "/" : sWord;
        sWord.clear();
    };
    for (std::size_t i = 0; i < sText.size(); ++i) {
        const char c = sText[i];
        if (c == ' ' || c == '\t') {
            endWord();
        } else if (c == '\xC2' && i + 1 < sText.size() && sText[i + 1] == '\xB0') {
            sWord += "deg";
            ++i;
        } else if (c == '\xC2' && i + 1 < sText.size() && sText[i + 1] == '\xB2') {
            sWord += '2';
            ++i;
        } else if (c == '\xC2' && i + 1 < sText.size() && sText[i + 1] == '\xB3') {
            sWord += '3';
            ++i;
        } else if (c == '.' || c == '^') {
            continue;
        } else if (c >= 'A' && c <= 'Z') {
            sWord += static_cast<char>(c - 'A' + 'a');
        } else {
            sWord += c;
        }
    }
    endWord();
    return sOut;
}

std::int32_t FindUnitId(std::string_view sUnitText, std::int32_t lClass) {
    const std::string sText = Normalise(sUnitText);
    std::string sCanonical(Lookup(kShortForms, sText));
    const std::size_t nSlash = sCanonical.find('/');
    if (nSlash != std::string::npos && sCanonical.find('/', nSlash + 1) == std::string::npos) {
        const std::string_view sWhole = sCanonical;
        sCanonical = std::string(Lookup(kNames, sWhole.substr(0, nSlash))) + "/" +
                     std::string(Lookup(kNames, sWhole.substr(nSlash + 1)));
    } else {
        sCanonical = std::string(Lookup(kNames, sCanonical));
    }
    for (const Unit& tUnit : kUnits) {
        if (tUnit.sCanonical == sCanonical) return (tUnit.eFamily & lClass) != 0 ? tUnit.lId : 0;
    }
    return 0;
}

class UnitLookup final : public tnwUOMFactory {
public:
    std::int32_t FindUnit(std::string_view sUnitText, std::int32_t lClass) override {
        return FindUnitId(sUnitText, lClass);
    }
};

}  // namespace

void RegisterUnitLookup() {
    tnwObjectFactory::Register(kProgIdUOMFactory, [] { return std::make_shared<UnitLookup>(); });
}

}  // namespace tnw::standins
