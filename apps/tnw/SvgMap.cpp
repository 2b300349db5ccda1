#include "SvgMap.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <numbers>

#include "FileKind.h"

namespace tnw::cli {

namespace {

constexpr double kMargin = 16.0;
constexpr double kHeading = 30.0;
constexpr double kLegendWidth = 170.0;
constexpr const char* kPlainColour = "#2c7fb8";
constexpr const char* kNoValueColour = "#bdbdbd";

// A perceptually even scale from dark blue to yellow.
constexpr unsigned kScale[] = {0x440154, 0x472d7b, 0x3b528b, 0x2c728e, 0x21918c,
                               0x28ae80, 0x5ec962, 0xaddc30, 0xfde725};
constexpr const char* kCategoryColours[] = {"#1f77b4", "#ff7f0e", "#2ca02c", "#d62728", "#9467bd",
                                            "#8c564b", "#e377c2", "#7f7f7f", "#bcbd22", "#17becf"};
constexpr std::size_t kLegendCategories = 12;

std::string Hex(unsigned nColour) {
    char aText[8];
    std::snprintf(aText, sizeof aText, "#%06x", nColour & 0xffffffu);
    return aText;
}

std::string ScaleColour(double dShare) {
    dShare = std::clamp(dShare, 0.0, 1.0);
    const double dPlace = dShare * (std::size(kScale) - 1);
    const std::size_t n = std::min(static_cast<std::size_t>(dPlace), std::size(kScale) - 2);
    const double dMix = dPlace - n;
    unsigned nColour = 0;
    for (int iShift = 16; iShift >= 0; iShift -= 8) {
        const double dFrom = (kScale[n] >> iShift) & 0xff;
        const double dTo = (kScale[n + 1] >> iShift) & 0xff;
        nColour |= static_cast<unsigned>(std::lround(dFrom + (dTo - dFrom) * dMix)) << iShift;
    }
    return Hex(nColour);
}

// Text fit for XML: the five special characters escaped, control characters dropped.
std::string Escape(const std::string& sText) {
    std::string sOut;
    for (char c : sText) {
        switch (c) {
            case '&':
                sOut += "&amp;";
                break;
            case '<':
                sOut += "&lt;";
                break;
            case '>':
                sOut += "&gt;";
                break;
            case '"':
                sOut += "&quot;";
                break;
            case '\'':
                sOut += "&apos;";
                break;
            default:
                if (static_cast<unsigned char>(c) >= 0x20 || c == '\t') sOut += c;
        }
    }
    return sOut;
}

std::string Num(double dValue, const char* sFormat = "%.2f") {
    char aText[40];
    std::snprintf(aText, sizeof aText, sFormat, dValue);
    return aText;
}

std::string ValueText(double dValue) {
    return Num(dValue, "%.10g");
}

// Maps data coordinates to the drawing.
struct Frame {
    double dMinX = 0.0, dMaxY = 0.0;
    double dScaleX = 1.0, dScaleY = 1.0;
    double dLeft = kMargin, dTop = kMargin + kHeading;
    double dWidth = 0.0, dHeight = 0.0;

    double X(double dX) const { return dLeft + (dX - dMinX) * dScaleX; }
    double Y(double dY) const { return dTop + (dMaxY - dY) * dScaleY; }
};

Frame FrameFor(const std::vector<Shape>& vShapes, double dMapWidth) {
    double dMinX = INFINITY, dMinY = INFINITY, dMaxX = -INFINITY, dMaxY = -INFINITY;
    for (const Shape& tShape : vShapes) {
        for (const auto& vPart : tShape.vParts) {
            for (const XY& t : vPart) {
                if (!std::isfinite(t.dX) || !std::isfinite(t.dY)) continue;
                dMinX = std::min(dMinX, t.dX);
                dMaxX = std::max(dMaxX, t.dX);
                dMinY = std::min(dMinY, t.dY);
                dMaxY = std::max(dMaxY, t.dY);
            }
        }
    }
    if (dMinX > dMaxX) dMinX = dMaxX = dMinY = dMaxY = 0.0;
    const bool bDegrees = dMinX >= -180.0 && dMaxX <= 180.0 && dMinY >= -90.0 && dMaxY <= 90.0;
    const double dAspectX =
        bDegrees ? std::cos((dMinY + dMaxY) / 2.0 * std::numbers::pi / 180.0) : 1.0;
    // A single place or a straight line still gets a drawing of some size.
    double dSpanX = (dMaxX - dMinX) * dAspectX;
    double dSpanY = dMaxY - dMinY;
    const double dPad = std::max({dSpanX, dSpanY, bDegrees ? 1e-4 : 10.0}) * 0.02;
    dMinX -= dPad / dAspectX;
    dMaxX += dPad / dAspectX;
    dMinY -= dPad;
    dMaxY += dPad;
    dSpanX = (dMaxX - dMinX) * dAspectX;
    dSpanY = dMaxY - dMinY;

    const double dMaxHeight = dMapWidth * 1.5;
    const double dScale = std::min(dMapWidth / dSpanX, dMaxHeight / dSpanY);
    Frame tFrame;
    tFrame.dMinX = dMinX;
    tFrame.dMaxY = dMaxY;
    tFrame.dScaleX = dScale * dAspectX;
    tFrame.dScaleY = dScale;
    tFrame.dWidth = dSpanX * dScale;
    tFrame.dHeight = dSpanY * dScale;
    return tFrame;
}

// One path for all parts; polygons close each ring.
std::string PathData(const Shape& tShape, const Frame& tFrame, double dRadius) {
    std::string sPath;
    for (const auto& vPart : tShape.vParts) {
        if (tShape.eKind == Shape::Kind::Point) {
            for (const XY& t : vPart) {
                // A circle as two arcs.
                const std::string sR = Num(dRadius);
                sPath.append("M").append(Num(tFrame.X(t.dX) - dRadius));
                sPath.append(",").append(Num(tFrame.Y(t.dY)));
                sPath.append("a").append(sR).append(",").append(sR).append(" 0 1,0 ");
                sPath.append(Num(2 * dRadius)).append(",0a").append(sR).append(",").append(sR);
                sPath.append(" 0 1,0 ").append(Num(-2 * dRadius)).append(",0");
            }
            continue;
        }
        bool bFirst = true;
        for (const XY& t : vPart) {
            if (!std::isfinite(t.dX) || !std::isfinite(t.dY)) continue;
            sPath.append(bFirst ? "M" : "L").append(Num(tFrame.X(t.dX)));
            sPath.append(",").append(Num(tFrame.Y(t.dY)));
            bFirst = false;
        }
        if (!bFirst && tShape.eKind == Shape::Kind::Polygon) sPath += "Z";
    }
    return sPath;
}

bool IsSinglePoint(const Shape& tShape) {
    return tShape.eKind == Shape::Kind::Point && tShape.vParts.size() == 1 &&
           tShape.vParts[0].size() == 1 && std::isfinite(tShape.vParts[0][0].dX) &&
           std::isfinite(tShape.vParts[0][0].dY);
}

}  // namespace

std::string MakeSvgMap(const MapData& tMap, std::int32_t lWidth, MapStats& tStats) {
    tStats = MapStats{};
    const bool bColumn = !tMap.sColumn.empty();
    const double dMapWidth = lWidth - 2 * kMargin - (bColumn ? kLegendWidth : 0.0);
    const Frame tFrame = FrameFor(tMap.vShapes, dMapWidth);

    // Colour of each record: a scale when the column holds numbers, else a colour per text.
    std::map<std::string, std::string> mCategories;
    tStats.dMin = INFINITY;
    tStats.dMax = -INFINITY;
    for (const MapValue& tValue : tMap.vValues) {
        if (tValue.eKind == MapValue::Kind::Number && std::isfinite(tValue.dNumber)) {
            tStats.bScale = true;
            tStats.dMin = std::min(tStats.dMin, tValue.dNumber);
            tStats.dMax = std::max(tStats.dMax, tValue.dNumber);
        } else if (tValue.eKind == MapValue::Kind::Text) {
            mCategories.emplace(tValue.sText, "");
        }
    }
    if (!tStats.bScale) tStats.dMin = tStats.dMax = 0.0;
    std::size_t nCategory = 0;
    for (auto& [sText, sColour] : mCategories) {
        sColour = kCategoryColours[nCategory++ % std::size(kCategoryColours)];
    }
    tStats.lCategories = tStats.bScale ? 0 : static_cast<std::int64_t>(mCategories.size());
    const auto fnColour = [&](std::size_t nRecord) -> std::string {
        if (!bColumn) return kPlainColour;
        if (nRecord >= tMap.vValues.size()) return kNoValueColour;
        const MapValue& tValue = tMap.vValues[nRecord];
        if (tStats.bScale) {
            if (tValue.eKind != MapValue::Kind::Number || !std::isfinite(tValue.dNumber)) {
                return kNoValueColour;
            }
            const double dRange = tStats.dMax - tStats.dMin;
            return ScaleColour(dRange > 0 ? (tValue.dNumber - tStats.dMin) / dRange : 0.5);
        }
        const auto it = mCategories.find(tValue.sText);
        return tValue.eKind == MapValue::Kind::Text && it != mCategories.end() ? it->second
                                                                               : kNoValueColour;
    };

    std::int64_t lDrawn = 0;
    for (const Shape& tShape : tMap.vShapes)
        lDrawn += !tShape.vParts.empty();
    const double dRadius = std::clamp(
        0.3 * std::sqrt(tFrame.dWidth * tFrame.dHeight / std::max<std::int64_t>(lDrawn, 1)), 1.2,
        6.0);

    const double dWidth = lWidth;
    const double dHeight = std::max(tFrame.dTop + tFrame.dHeight + kMargin,
                                    bColumn ? kMargin + kHeading + 330.0 : 0.0);
    std::string sSvg = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    sSvg += "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + Num(dWidth, "%.0f") +
            "\" height=\"" + Num(dHeight, "%.0f") + "\" viewBox=\"0 0 " + Num(dWidth, "%.0f") +
            " " + Num(dHeight, "%.0f") + "\" font-family=\"sans-serif\" font-size=\"12\">\n";
    sSvg += "<title>" + Escape(tMap.sTitle) + "</title>\n";
    sSvg += "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
    std::string sHeading = tMap.sTitle + ": " + CountText(lDrawn, "shape");
    if (bColumn) sHeading += ", coloured by " + tMap.sColumn;
    sSvg += "<text x=\"" + Num(kMargin) + "\" y=\"" + Num(kMargin + 12.0) +
            "\" font-size=\"14\" font-weight=\"bold\">" + Escape(sHeading) + "</text>\n";

    sSvg += "<g id=\"marks\" stroke-linejoin=\"round\">\n";
    for (std::size_t n = 0; n < tMap.vShapes.size(); ++n) {
        const Shape& tShape = tMap.vShapes[n];
        if (tShape.vParts.empty()) continue;
        const std::string sColour = fnColour(n);
        std::string sData = " data-record=\"" + std::to_string(n + 1) + "\"";
        if (bColumn && n < tMap.vValues.size()) {
            const MapValue& tValue = tMap.vValues[n];
            if (tValue.eKind == MapValue::Kind::Number) {
                sData += " data-value=\"" + ValueText(tValue.dNumber) + "\"";
            } else if (tValue.eKind == MapValue::Kind::Text) {
                sData += " data-value=\"" + Escape(tValue.sText) + "\"";
            }
        }
        if (IsSinglePoint(tShape)) {
            const XY& t = tShape.vParts[0][0];
            sSvg += "<circle class=\"mark\"" + sData + " cx=\"" + Num(tFrame.X(t.dX)) + "\" cy=\"" +
                    Num(tFrame.Y(t.dY)) + "\" r=\"" + Num(dRadius) + "\" fill=\"" + sColour +
                    "\"/>\n";
        } else if (tShape.eKind == Shape::Kind::Polygon) {
            sSvg += "<path class=\"mark\"" + sData + " d=\"" + PathData(tShape, tFrame, dRadius) +
                    "\" fill=\"" + sColour +
                    "\" fill-opacity=\"0.85\" fill-rule=\"evenodd\" stroke=\"#333333\" "
                    "stroke-width=\"0.8\"/>\n";
        } else if (tShape.eKind == Shape::Kind::Line) {
            sSvg += "<path class=\"mark\"" + sData + " d=\"" + PathData(tShape, tFrame, dRadius) +
                    "\" fill=\"none\" stroke=\"" + sColour + "\" stroke-width=\"1.5\"/>\n";
        } else {
            sSvg += "<path class=\"mark\"" + sData + " d=\"" + PathData(tShape, tFrame, dRadius) +
                    "\" fill=\"" + sColour + "\"/>\n";
        }
        ++tStats.lMarks;
    }
    sSvg += "</g>\n";

    if (bColumn) {
        const double dLeft = dWidth - kLegendWidth - kMargin + 20.0;
        const double dTop = kMargin + kHeading;
        sSvg += "<g id=\"legend\" data-column=\"" + Escape(tMap.sColumn) + "\"";
        if (tStats.bScale) {
            sSvg += " data-min=\"" + ValueText(tStats.dMin) + "\" data-max=\"" +
                    ValueText(tStats.dMax) + "\"";
        } else {
            sSvg += " data-categories=\"" + std::to_string(tStats.lCategories) + "\"";
        }
        sSvg += ">\n<text x=\"" + Num(dLeft) + "\" y=\"" + Num(dTop + 12.0) +
                "\" font-weight=\"bold\">" + Escape(tMap.sColumn) + "</text>\n";
        if (tStats.bScale) {
            constexpr double kBarHeight = 240.0;
            sSvg += "<defs><linearGradient id=\"scale\" x1=\"0\" y1=\"1\" x2=\"0\" y2=\"0\">";
            for (std::size_t n = 0; n < std::size(kScale); ++n) {
                sSvg += "<stop offset=\"" + Num(static_cast<double>(n) / (std::size(kScale) - 1)) +
                        "\" stop-color=\"" + Hex(kScale[n]) + "\"/>";
            }
            sSvg += "</linearGradient></defs>\n";
            const double dBarTop = dTop + 24.0;
            sSvg += "<rect x=\"" + Num(dLeft) + "\" y=\"" + Num(dBarTop) +
                    "\" width=\"18\" height=\"" + Num(kBarHeight) +
                    "\" fill=\"url(#scale)\" stroke=\"#333333\" stroke-width=\"0.5\"/>\n";
            for (int iTick = 0; iTick <= 4; ++iTick) {
                const double dValue = tStats.dMin + (tStats.dMax - tStats.dMin) * iTick / 4.0;
                const double dY = dBarTop + kBarHeight * (1.0 - iTick / 4.0);
                sSvg += "<text class=\"tick\" x=\"" + Num(dLeft + 24.0) + "\" y=\"" +
                        Num(dY + 4.0) + "\">" + Num(dValue, "%.6g") + "</text>\n";
            }
        } else {
            std::size_t nShown = 0;
            for (const auto& [sText, sColour] : mCategories) {
                if (nShown == kLegendCategories) {
                    sSvg += "<text x=\"" + Num(dLeft) + "\" y=\"" +
                            Num(dTop + 36.0 + 20.0 * nShown) + "\">and " +
                            std::to_string(mCategories.size() - nShown) + " more</text>\n";
                    break;
                }
                const double dY = dTop + 24.0 + 20.0 * nShown;
                sSvg += "<rect x=\"" + Num(dLeft) + "\" y=\"" + Num(dY) +
                        "\" width=\"14\" height=\"14\" fill=\"" + sColour + "\"/>\n";
                sSvg += "<text class=\"category\" x=\"" + Num(dLeft + 20.0) + "\" y=\"" +
                        Num(dY + 11.0) + "\">" + Escape(sText.empty() ? "(empty)" : sText) +
                        "</text>\n";
                ++nShown;
            }
        }
        sSvg += "</g>\n";
    }
    sSvg += "</svg>\n";
    return sSvg;
}

}  // namespace tnw::cli
