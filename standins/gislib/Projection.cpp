#include "gislib/Projection.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <numbers>
#include <string>

#include "core/Error.h"

namespace tnw::standins {

namespace {

constexpr double kSemiMajor = 6378137.0;  // WGS 84
constexpr double kInverseFlattening = 298.257223563;
constexpr double kDegree = std::numbers::pi / 180.0;
constexpr double kUtmScale = 0.9996;
constexpr double kUtmFalseEasting = 500000.0;
constexpr double kUtmFalseNorthingSouth = 10000000.0;

[[noreturn]] void RaiseArgument(const char* sDescription) {
    throw Error(5, "tnwGIS.SpatialReference", sDescription);
}

[[noreturn]] void RaiseOutOfDomain() {
    throw Error(errOverflow, "tnwGIS.SpatialReference",
                "The place lies outside the domain of the projection");
}

Coordinate Checked(Coordinate t) {
    if (!std::isfinite(t.dX) || !std::isfinite(t.dY)) RaiseOutOfDomain();
    return t;
}

bool IsEmpty(Coordinate t) {
    return std::isnan(t.dX) && std::isnan(t.dY);
}

// Transverse Mercator on the WGS 84 ellipsoid by the Krüger series in the third flattening n,
// carried to n^6 (Karney 2011, "Transverse Mercator with an accuracy of a few nanometers"):
// errors stay below a micrometre within a UTM zone and a millimetre several zones out.
struct KruegerSeries {
    double dE;                     // eccentricity
    double dRectifyingRadius;      // A: the meridian arc per radian of rectifying latitude
    std::array<double, 6> aAlpha;  // forward coefficients
    std::array<double, 6> aBeta;   // inverse coefficients

    KruegerSeries() {
        const double f = 1.0 / kInverseFlattening;
        const double n = f / (2.0 - f);
        const double n2 = n * n, n3 = n2 * n, n4 = n3 * n, n5 = n4 * n, n6 = n5 * n;
        dE = std::sqrt(f * (2.0 - f));
        dRectifyingRadius = kSemiMajor / (1.0 + n) * (1.0 + n2 / 4.0 + n4 / 64.0 + n6 / 256.0);
        aAlpha = {
            n / 2.0 - 2.0 * n2 / 3.0 + 5.0 * n3 / 16.0 + 41.0 * n4 / 180.0 - 127.0 * n5 / 288.0 +
                7891.0 * n6 / 37800.0,
            13.0 * n2 / 48.0 - 3.0 * n3 / 5.0 + 557.0 * n4 / 1440.0 + 281.0 * n5 / 630.0 -
                1983433.0 * n6 / 1935360.0,
            61.0 * n3 / 240.0 - 103.0 * n4 / 140.0 + 15061.0 * n5 / 26880.0 +
                167603.0 * n6 / 181440.0,
            49561.0 * n4 / 161280.0 - 179.0 * n5 / 168.0 + 6601661.0 * n6 / 7257600.0,
            34729.0 * n5 / 80640.0 - 3418889.0 * n6 / 1995840.0,
            212378941.0 * n6 / 319334400.0,
        };
        aBeta = {
            n / 2.0 - 2.0 * n2 / 3.0 + 37.0 * n3 / 96.0 - n4 / 360.0 - 81.0 * n5 / 512.0 +
                96199.0 * n6 / 604800.0,
            n2 / 48.0 + n3 / 15.0 - 437.0 * n4 / 1440.0 + 46.0 * n5 / 105.0 -
                1118711.0 * n6 / 3870720.0,
            17.0 * n3 / 480.0 - 37.0 * n4 / 840.0 - 209.0 * n5 / 4480.0 + 5569.0 * n6 / 90720.0,
            4397.0 * n4 / 161280.0 - 11.0 * n5 / 504.0 - 830251.0 * n6 / 7257600.0,
            4583.0 * n5 / 161280.0 - 108847.0 * n6 / 3991680.0,
            20648693.0 * n6 / 638668800.0,
        };
    }

    // tan of the conformal latitude from tan of the geodetic latitude.
    double ConformalTan(double dTau) const {
        const double dTau1 = std::hypot(1.0, dTau);
        const double dSigma = std::sinh(dE * std::atanh(dE * dTau / dTau1));
        return std::hypot(1.0, dSigma) * dTau - dSigma * dTau1;
    }

    // The inverse of ConformalTan by Newton's method; three steps reach full precision.
    double GeodeticTan(double dTauPrime) const {
        const double dE2m = 1.0 - dE * dE;
        double dTau = dTauPrime / dE2m;
        for (int i = 0; i < 8; ++i) {
            const double dTauPrimeI = ConformalTan(dTau);
            const double dStep = (dTauPrime - dTauPrimeI) * (1.0 + dE2m * dTau * dTau) /
                                 (dE2m * std::hypot(1.0, dTau) * std::hypot(1.0, dTauPrimeI));
            dTau += dStep;
            if (!(std::fabs(dStep) >= 1e-15 * std::fmax(1.0, std::fabs(dTau)))) break;
        }
        return dTau;
    }

    // Latitude and longitude from the central meridian, in radians, to the unscaled easting
    // and northing (x, y).
    Coordinate Forward(double dPhi, double dLambda) const {
        const double dSinPhi = std::sin(dPhi);
        const double t = std::sinh(std::atanh(dSinPhi) - dE * std::atanh(dE * dSinPhi));
        const double dXiP = std::atan2(t, std::cos(dLambda));
        const double dEtaP = std::atanh(std::sin(dLambda) / std::hypot(1.0, t));
        double dXi = dXiP, dEta = dEtaP;
        for (int j = 1; j <= 6; ++j) {
            const double a = aAlpha[static_cast<std::size_t>(j - 1)];
            dXi += a * std::sin(2.0 * j * dXiP) * std::cosh(2.0 * j * dEtaP);
            dEta += a * std::cos(2.0 * j * dXiP) * std::sinh(2.0 * j * dEtaP);
        }
        return {dEta * dRectifyingRadius, dXi * dRectifyingRadius};
    }

    // Unscaled easting and northing back to the longitude from the central meridian and the
    // latitude (x, y), in radians.
    Coordinate Inverse(double dEasting, double dNorthing) const {
        const double dXi = dNorthing / dRectifyingRadius;
        const double dEta = dEasting / dRectifyingRadius;
        double dXiP = dXi, dEtaP = dEta;
        for (int j = 1; j <= 6; ++j) {
            const double b = aBeta[static_cast<std::size_t>(j - 1)];
            dXiP -= b * std::sin(2.0 * j * dXi) * std::cosh(2.0 * j * dEta);
            dEtaP -= b * std::cos(2.0 * j * dXi) * std::sinh(2.0 * j * dEta);
        }
        const double dSinhEtaP = std::sinh(dEtaP);
        const double dTauPrime = std::sin(dXiP) / std::hypot(dSinhEtaP, std::cos(dXiP));
        const double dLambda = std::atan2(dSinhEtaP, std::cos(dXiP));
        return {dLambda, std::atan(GeodeticTan(dTauPrime))};
    }
};

const KruegerSeries& Krueger() {
    static const KruegerSeries series;
    return series;
}

// Longitude difference folded into [-180, 180).
double WrapDegrees(double dDegrees) {
    double d = std::fmod(dDegrees + 180.0, 360.0);
    if (d < 0.0) d += 360.0;
    return d - 180.0;
}

}  // namespace

std::shared_ptr<SpatialReference> SpatialReference::Wgs84() {
    return std::shared_ptr<SpatialReference>(new SpatialReference(Kind::Geographic, 0, true));
}

std::shared_ptr<SpatialReference> SpatialReference::WebMercator() {
    return std::shared_ptr<SpatialReference>(new SpatialReference(Kind::WebMercator, 0, true));
}

std::shared_ptr<SpatialReference> SpatialReference::Utm(std::int32_t lZone, bool bNorth) {
    if (lZone < 1 || lZone > 60) RaiseArgument("A UTM zone runs from 1 to 60");
    return std::shared_ptr<SpatialReference>(new SpatialReference(Kind::UTM, lZone, bNorth));
}

std::shared_ptr<SpatialReference> SpatialReference::FromEPSG(std::int32_t lCode) {
    if (lCode == 4326) return Wgs84();
    if (lCode == 3857) return WebMercator();
    if (lCode >= 32601 && lCode <= 32660) return Utm(lCode - 32600, true);
    if (lCode >= 32701 && lCode <= 32760) return Utm(lCode - 32700, false);
    RaiseArgument("Unsupported EPSG code: only 4326, 3857 and the WGS 84 UTM zones are known");
}

std::string SpatialReference::Name() const {
    switch (m_eKind) {
        case Kind::Geographic:
            return "WGS 84";
        case Kind::WebMercator:
            return "WGS 84 / Pseudo-Mercator";
        case Kind::UTM:
            break;
    }
    return "WGS 84 / UTM zone " + std::to_string(m_lZone) + (m_bNorth ? "N" : "S");
}

std::string SpatialReference::PrjText() const {
    const std::string sGeographic =
        "GEOGCS[\"GCS_WGS_1984\",DATUM[\"D_WGS_1984\",SPHEROID[\"WGS_1984\",6378137.0,"
        "298.257223563]],PRIMEM[\"Greenwich\",0.0],UNIT[\"Degree\",0.0174532925199433]]";
    const auto parameter = [](const char* sName, double dValue) {
        // Whole numbers as the .prj texts of the common tools write them: with ".0".
        std::string sValue = std::to_string(static_cast<long long>(dValue));
        if (static_cast<double>(static_cast<long long>(dValue)) != dValue) {
            char aText[32];
            std::snprintf(aText, sizeof aText, "%.15g", dValue);
            sValue = aText;
        } else {
            sValue += ".0";
        }
        return std::string(",PARAMETER[\"") + sName + "\"," + sValue + "]";
    };
    switch (m_eKind) {
        case Kind::Geographic:
            return std::string();  // the encoder's own text says it
        case Kind::WebMercator:
            return "PROJCS[\"WGS_1984_Web_Mercator_Auxiliary_Sphere\"," + sGeographic +
                   ",PROJECTION[\"Mercator_Auxiliary_Sphere\"]" + parameter("False_Easting", 0) +
                   parameter("False_Northing", 0) + parameter("Central_Meridian", 0) +
                   parameter("Standard_Parallel_1", 0) + parameter("Auxiliary_Sphere_Type", 0) +
                   ",UNIT[\"Meter\",1.0]]";
        case Kind::UTM:
            break;
    }
    return "PROJCS[\"WGS_1984_UTM_Zone_" + std::to_string(m_lZone) + (m_bNorth ? "N" : "S") +
           "\"," + sGeographic + ",PROJECTION[\"Transverse_Mercator\"]" +
           parameter("False_Easting", kUtmFalseEasting) +
           parameter("False_Northing", m_bNorth ? 0.0 : kUtmFalseNorthingSouth) +
           parameter("Central_Meridian", 6.0 * m_lZone - 183.0) +
           parameter("Scale_Factor", kUtmScale) + parameter("Latitude_Of_Origin", 0) +
           ",UNIT[\"Meter\",1.0]]";
}

std::int32_t SpatialReference::EPSG() const {
    switch (m_eKind) {
        case Kind::Geographic:
            return 4326;
        case Kind::WebMercator:
            return 3857;
        case Kind::UTM:
            break;
    }
    return (m_bNorth ? 32600 : 32700) + m_lZone;
}

Coordinate SpatialReference::Forward(Coordinate tLonLat) const {
    if (IsEmpty(tLonLat)) return tLonLat;
    switch (m_eKind) {
        case Kind::Geographic:
            return tLonLat;
        case Kind::WebMercator:
            if (!(std::fabs(tLonLat.dY) < 90.0)) RaiseOutOfDomain();
            return Checked({kSemiMajor * tLonLat.dX * kDegree,
                            kSemiMajor * std::asinh(std::tan(tLonLat.dY * kDegree))});
        case Kind::UTM:
            break;
    }
    if (!(std::fabs(tLonLat.dY) <= 90.0)) RaiseOutOfDomain();
    const double dLambda = WrapDegrees(tLonLat.dX - (6.0 * m_lZone - 183.0));
    if (!(std::fabs(dLambda) < 90.0)) RaiseOutOfDomain();
    const Coordinate t = Krueger().Forward(tLonLat.dY * kDegree, dLambda * kDegree);
    return Checked({kUtmFalseEasting + kUtmScale * t.dX,
                    (m_bNorth ? 0.0 : kUtmFalseNorthingSouth) + kUtmScale * t.dY});
}

Coordinate SpatialReference::Inverse(Coordinate tXY) const {
    if (IsEmpty(tXY)) return tXY;
    switch (m_eKind) {
        case Kind::Geographic:
            return tXY;
        case Kind::WebMercator:
            return Checked({tXY.dX / kSemiMajor / kDegree,
                            std::atan(std::sinh(tXY.dY / kSemiMajor)) / kDegree});
        case Kind::UTM:
            break;
    }
    const Coordinate t =
        Krueger().Inverse((tXY.dX - kUtmFalseEasting) / kUtmScale,
                          (tXY.dY - (m_bNorth ? 0.0 : kUtmFalseNorthingSouth)) / kUtmScale);
    return Checked({WrapDegrees(t.dX / kDegree + (6.0 * m_lZone - 183.0)), t.dY / kDegree});
}

}  // namespace tnw::standins
