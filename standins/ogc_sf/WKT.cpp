#include "ogc_sf/WKT.h"

#include <charconv>
#include <cmath>
#include <vector>

#include "core/Error.h"
#include "ogc_sf/Geometries.h"
#include "ogc_sf/VertexAccess.h"

namespace tnw::standins {

namespace {

using detail::Deref;
using detail::IsEmptyPoint;

// ---- Writing ----

class Writer {
public:
    explicit Writer(std::string& sOut) : m_sOut(sOut) {}

    void Tagged(const IGeometry& oGeometry) {
        if (const auto* pPoint = dynamic_cast<const IPoint*>(&oGeometry)) {
            m_sOut += "POINT ";
            PointBody(*pPoint);
        } else if (const auto* pLine = dynamic_cast<const ILineString*>(&oGeometry)) {
            m_sOut += "LINESTRING ";
            LineBody(*pLine);
        } else if (const auto* pPolygon = dynamic_cast<const IPolygon*>(&oGeometry)) {
            m_sOut += "POLYGON ";
            PolygonBody(*pPolygon);
        } else if (const auto* pPoints = dynamic_cast<const IMultiPoint*>(&oGeometry)) {
            m_sOut += "MULTIPOINT ";
            Members<IPoint>(*pPoints, [this](const IPoint& o) { PointBody(o); });
        } else if (const auto* pLines = dynamic_cast<const IMultiLineString*>(&oGeometry)) {
            m_sOut += "MULTILINESTRING ";
            Members<ILineString>(*pLines, [this](const ILineString& o) { LineBody(o); });
        } else if (const auto* pPolygons = dynamic_cast<const IMultiPolygon*>(&oGeometry)) {
            m_sOut += "MULTIPOLYGON ";
            Members<IPolygon>(*pPolygons, [this](const IPolygon& o) { PolygonBody(o); });
        } else if (const auto* pAll = dynamic_cast<const IGeometryCollection*>(&oGeometry)) {
            m_sOut += "GEOMETRYCOLLECTION ";
            Members<IGeometry>(*pAll, [this](const IGeometry& o) { Tagged(o); });
        } else {
            detail::RaiseUnknownKind();
        }
    }

private:
    // Shortest round-trip text.
    void Number(double d) {
        char aBuffer[32];
        const auto result = std::to_chars(aBuffer, aBuffer + sizeof aBuffer, d);
        m_sOut.append(aBuffer, result.ptr);
    }

    void Vertex(double dX, double dY) {
        Number(dX);
        m_sOut += ' ';
        Number(dY);
    }

    void PointBody(const IPoint& oPoint) {
        if (IsEmptyPoint(oPoint)) {
            m_sOut += "EMPTY";
            return;
        }
        m_sOut += '(';
        Vertex(oPoint.X(), oPoint.Y());
        m_sOut += ')';
    }

    void LineBody(const ILineString& oLine) {
        if (oLine.NumPoints() == 0) {
            m_sOut += "EMPTY";
            return;
        }
        char cSeparator = '(';
        detail::ForEachVertex(oLine, [&](double dX, double dY) {
            m_sOut += cSeparator;
            Vertex(dX, dY);
            cSeparator = ',';
        });
        m_sOut += ')';
    }

    void PolygonBody(const IPolygon& oPolygon) {
        const ILineString& oExterior = Deref(oPolygon.ExteriorRing());
        const std::int32_t lHoles = oPolygon.NumInteriorRings();
        if (oExterior.NumPoints() == 0 && lHoles == 0) {
            m_sOut += "EMPTY";
            return;
        }
        m_sOut += '(';
        LineBody(oExterior);
        for (std::int32_t i = 0; i < lHoles; ++i) {
            m_sOut += ',';
            LineBody(Deref(oPolygon.InteriorRing(i)));
        }
        m_sOut += ')';
    }

    template <class Member, class Body>
    void Members(const IGeometryCollection& oCollection, Body&& body) {
        const std::int32_t lCount = oCollection.NumGeometries();
        if (lCount == 0) {
            m_sOut += "EMPTY";
            return;
        }
        for (std::int32_t i = 0; i < lCount; ++i) {
            m_sOut += i == 0 ? '(' : ',';
            const auto* pMember = dynamic_cast<const Member*>(&Deref(oCollection.Geometry(i)));
            if (!pMember) detail::RaiseUnknownKind();
            body(*pMember);
        }
        m_sOut += ')';
    }

    std::string& m_sOut;
};

// ---- Reading ----

constexpr int kMaxNesting = 32;

enum class Kind {
    Point,
    LineString,
    Polygon,
    MultiPoint,
    MultiLineString,
    MultiPolygon,
    GeometryCollection
};

bool IsLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}
bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v';
}

bool EqualsUpper(std::string_view sWord, std::string_view sUpper) {
    if (sWord.size() != sUpper.size()) return false;
    for (std::size_t i = 0; i < sWord.size(); ++i) {
        char c = sWord[i];
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
        if (c != sUpper[i]) return false;
    }
    return true;
}

// A recursive-descent reader. Only GEOMETRYCOLLECTION recurses, and its depth is bounded.
class Parser {
public:
    explicit Parser(std::string_view sText) : m_sText(sText) {}

    std::shared_ptr<IGeometry> Parse() {
        auto oGeometry = Tagged(0);
        SkipBlanks();
        if (m_nAt != m_sText.size()) Fail("the end of the text");
        return oGeometry;
    }

private:
    [[noreturn]] void Fail(std::string_view sExpected) const {
        std::string sFound;
        if (m_nAt >= m_sText.size()) {
            sFound = "the end of the text";
        } else {
            sFound = "\"" + std::string(m_sText.substr(m_nAt, 12)) + "\"";
        }
        throw Error(errTypeMismatch, "OGC_SF.ParseWKT",
                    "Malformed WKT at offset " + std::to_string(m_nAt) + ": expected " +
                        std::string(sExpected) + ", found " + sFound);
    }

    void SkipBlanks() {
        while (m_nAt < m_sText.size() && IsBlank(m_sText[m_nAt]))
            ++m_nAt;
    }

    bool AtChar(char c) {
        SkipBlanks();
        return m_nAt < m_sText.size() && m_sText[m_nAt] == c;
    }

    bool TryChar(char c) {
        if (!AtChar(c)) return false;
        ++m_nAt;
        return true;
    }

    void Expect(char c, std::string_view sExpected) {
        if (!TryChar(c)) Fail(sExpected);
    }

    std::string_view PeekWord() {
        SkipBlanks();
        std::size_t nEnd = m_nAt;
        while (nEnd < m_sText.size() && IsLetter(m_sText[nEnd]))
            ++nEnd;
        return m_sText.substr(m_nAt, nEnd - m_nAt);
    }

    bool TryWord(std::string_view sUpper) {
        std::string_view sWord = PeekWord();
        if (!EqualsUpper(sWord, sUpper)) return false;
        m_nAt += sWord.size();
        return true;
    }

    bool AtNumber() {
        std::size_t n = m_nAt;
        if (n < m_sText.size() && (m_sText[n] == '+' || m_sText[n] == '-')) ++n;
        return n < m_sText.size() && (IsDigit(m_sText[n]) || m_sText[n] == '.');
    }

    double Number() {
        SkipBlanks();
        if (!AtNumber()) Fail("a number");
        const char* pFirst = m_sText.data() + m_nAt;
        const char* pLast = m_sText.data() + m_sText.size();
        if (*pFirst == '+') ++pFirst;  // from_chars takes no plus sign
        double d = 0.0;
        const auto result = std::from_chars(pFirst, pLast, d);
        if (result.ec != std::errc() || !std::isfinite(d)) Fail("a finite number");
        m_nAt = static_cast<std::size_t>(result.ptr - m_sText.data());
        return d;
    }

    // "x y", with up to two more numbers that are read and dropped. Numbers of one coordinate
    // are separated by blanks.
    Coordinate Vertex() {
        double aValues[4];
        int iCount = 0;
        aValues[iCount++] = Number();
        while (iCount < 4) {
            const std::size_t nBefore = m_nAt;
            SkipBlanks();
            if (m_nAt == nBefore || !AtNumber()) break;
            aValues[iCount++] = Number();
        }
        if (iCount < 2) Fail("the y of the coordinate");
        if (m_iExtra >= 0 && iCount != 2 + m_iExtra)
            Fail(m_iExtra == 1 ? "3 numbers per coordinate" : "4 numbers per coordinate");
        return {aValues[0], aValues[1]};
    }

    // "(x y,x y,...)"
    std::shared_ptr<LineString> Vertices() {
        Expect('(', "\"(\"");
        std::vector<Coordinate> aVertices;
        do {
            aVertices.push_back(Vertex());
        } while (TryChar(','));
        Expect(')', "\",\" or \")\"");
        return std::make_shared<LineString>(aVertices);
    }

    std::shared_ptr<LineString> LineText() {
        return TryWord("EMPTY") ? std::make_shared<LineString>() : Vertices();
    }

    std::shared_ptr<Polygon> PolygonText() {
        if (TryWord("EMPTY")) return std::make_shared<Polygon>();
        Expect('(', "\"(\" or EMPTY");
        std::shared_ptr<ILineString> oExterior = LineText();
        std::vector<std::shared_ptr<ILineString>> aHoles;
        while (TryChar(','))
            aHoles.push_back(LineText());
        Expect(')', "\",\" or \")\"");
        return std::make_shared<Polygon>(std::move(oExterior), std::move(aHoles));
    }

    std::shared_ptr<Point> PointText() {
        if (TryWord("EMPTY")) return Point::CreateEmpty();
        Expect('(', "\"(\" or EMPTY");
        const Coordinate t = Vertex();
        Expect(')', "\")\"");
        return Point::Create(t.dX, t.dY);
    }

    // A multipoint member: "(x y)", EMPTY, or a bare "x y".
    std::shared_ptr<IPoint> MultiPointMember() {
        if (AtChar('(') || EqualsUpper(PeekWord(), "EMPTY")) return PointText();
        const Coordinate t = Vertex();
        return Point::Create(t.dX, t.dY);
    }

    // EMPTY or "(member,member,...)".
    template <class Result, class Member, class Read>
    std::shared_ptr<Result> CollectionText(Read&& read) {
        if (TryWord("EMPTY")) return std::make_shared<Result>();
        Expect('(', "\"(\" or EMPTY");
        std::vector<std::shared_ptr<Member>> aMembers;
        do {
            aMembers.push_back(read());
        } while (TryChar(','));
        Expect(')', "\",\" or \")\"");
        return std::make_shared<Result>(std::move(aMembers));
    }

    std::shared_ptr<IGeometry> Tagged(int iDepth) {
        const Kind eKind = Keyword();
        const int iSavedExtra = m_iExtra;
        m_iExtra = -1;
        if (TryWord("ZM")) {
            m_iExtra = 2;
        } else if (TryWord("Z") || TryWord("M")) {
            m_iExtra = 1;
        }
        std::shared_ptr<IGeometry> oGeometry;
        switch (eKind) {
            case Kind::Point:
                oGeometry = PointText();
                break;
            case Kind::LineString:
                oGeometry = LineText();
                break;
            case Kind::Polygon:
                oGeometry = PolygonText();
                break;
            case Kind::MultiPoint:
                oGeometry =
                    CollectionText<MultiPoint, IPoint>([this] { return MultiPointMember(); });
                break;
            case Kind::MultiLineString:
                oGeometry =
                    CollectionText<MultiLineString, ILineString>([this] { return LineText(); });
                break;
            case Kind::MultiPolygon:
                oGeometry =
                    CollectionText<MultiPolygon, IPolygon>([this] { return PolygonText(); });
                break;
            case Kind::GeometryCollection:
                if (iDepth >= kMaxNesting) Fail("collections nested at most 32 deep");
                oGeometry = CollectionText<GeometryCollection, IGeometry>(
                    [this, iDepth] { return Tagged(iDepth + 1); });
                break;
        }
        m_iExtra = iSavedExtra;
        return oGeometry;
    }

    Kind Keyword() {
        static constexpr std::pair<std::string_view, Kind> aKeywords[] = {
            {"POINT", Kind::Point},
            {"LINESTRING", Kind::LineString},
            {"POLYGON", Kind::Polygon},
            {"MULTIPOINT", Kind::MultiPoint},
            {"MULTILINESTRING", Kind::MultiLineString},
            {"MULTIPOLYGON", Kind::MultiPolygon},
            {"GEOMETRYCOLLECTION", Kind::GeometryCollection},
        };
        const std::string_view sWord = PeekWord();
        for (const auto& [sKeyword, eKind] : aKeywords) {
            if (EqualsUpper(sWord, sKeyword)) {
                m_nAt += sWord.size();
                return eKind;
            }
        }
        Fail("a geometry keyword");
    }

    std::string_view m_sText;
    std::size_t m_nAt = 0;
    int m_iExtra = -1;  // numbers per coordinate beyond x and y that the tag asks for; -1 any
};

}  // namespace

std::string ToWKT(const IGeometry& oGeometry) {
    std::string sText;
    Writer(sText).Tagged(oGeometry);
    return sText;
}

std::shared_ptr<IGeometry> ParseWKT(std::string_view sText) {
    return Parser(sText).Parse();
}

}  // namespace tnw::standins
