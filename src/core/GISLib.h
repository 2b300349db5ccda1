// What the library relies on of the GIS object library: columns, record sources, progress
// callback, projection, point factory, point list and the shared file utility. The library
// only declares these; the objects themselves are made by program id (see Component.h).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "core/Component.h"
#include "core/Geometry.h"
#include "core/Variant.h"

namespace tnw {

// Column flag masks.
enum tnwColumnFlags : std::int32_t {
    tnwFlagNumeric = 3,
    tnwFlagText = 8,
    tnwFlagLogical = 256,
    tnwFlagDate = 4096,
};

// A unit of measure as the column library gives it: the object behind a column's unit number.
class tnwUnit : public virtual IComponent {
public:
    // A whole-number option of the unit, kept by the unit's owner.
    virtual void SetUnitOption(std::int32_t lUnitOption) = 0;
};

class tnwColumn : public virtual IComponent {
public:
    virtual const std::string& Key() const = 0;
    virtual const std::string& Name() const = 0;
    virtual const std::string& Description() const = 0;
    virtual std::int32_t Type() const = 0;  // a VarType number
    virtual std::int16_t Size() const = 0;
    virtual std::int16_t Precision() const = 0;
    virtual std::int32_t Kind() const = 0;
    virtual std::int32_t Flags() const = 0;
    virtual std::int32_t Unit() const = 0;
    // The unit object behind Unit(), as outside objects that convert values take it.
    virtual std::shared_ptr<tnwUnit> UnitObject() const = 0;
    virtual const std::string& Tag() const = 0;
    virtual bool Visible() const = 0;
    virtual void SetVisible(bool bVisible) = 0;
    virtual bool Active() const = 0;
    virtual void SetActive(bool bActive) = 0;
    virtual const Variant& Default() const = 0;

    // 1-based place of the column's field in a source row.
    virtual std::int32_t Position() const = 0;
    virtual void SetPosition(std::int32_t lPosition) = 0;

    virtual const Variant& Value() const = 0;
    virtual void SetValue(Variant vValue) = 0;

    // The value as a string.
    virtual std::string Text() const = 0;
    // The column's description as XML text, each line led by sIndent.
    virtual std::string ToXML(std::string_view sIndent) const = 0;
    // Names where the column's value comes from and sets Position.
    virtual void SetSource(std::string_view sSource, std::int32_t lPosition) = 0;
};

class tnwColumns : public virtual IComponent {
public:
    virtual std::int32_t Count() const = 0;
    // By key, case-insensitive; nothing when absent.
    virtual std::shared_ptr<tnwColumn> Item(std::string_view sKey) const = 0;
    // The columns in order of addition.
    virtual const std::vector<std::shared_ptr<tnwColumn>>& Items() const = 0;

    // The new column, or nothing (and no error) when the key is there already. The first
    // column of a list gets Position 1, each further one the next.
    virtual std::shared_ptr<tnwColumn> Add(std::string_view sKey, std::string_view sName,
                                           std::string_view sDescription, std::int32_t lType,
                                           std::int16_t iSize, std::int16_t iPrecision,
                                           std::int32_t lFlags, std::int32_t lKind,
                                           std::int32_t lUnit, std::string_view sTag, bool bVisible,
                                           bool bActive,
                                           const Variant& vDefault = Variant::Absent()) = 0;
    // Adds an existing column object; false when its key is there already.
    virtual bool AddColumn(std::shared_ptr<tnwColumn> oColumn) = 0;
    virtual void Clear() = 0;
    // Text of the layout: equal layouts give equal text.
    virtual std::string LayoutText(std::string_view sPrefix) const = 0;
};

class tnwRecordSource : public virtual IComponent {
public:
    virtual void MoveFirst() = 0;
    virtual void MoveNext() = 0;
    virtual bool Eof() const = 0;  // EOF is a C macro, hence the spelling
    virtual std::int32_t RecordCount() const = 0;
    virtual std::int32_t GeometryType() const = 0;  // a tnwGeometryType
    virtual std::shared_ptr<IGeometry> Geometry() const = 0;
    virtual std::shared_ptr<tnwColumns> Columns() const = 0;
};

// Progress receiver; no result is read.
class tnwGISCallback : public virtual IComponent {
public:
    virtual void SetBarCount(std::int32_t lBars) = 0;
    virtual void SetBarText(std::int32_t lBar, const std::string& sText) = 0;
    virtual void SetBarRange(std::int32_t lBar, double dMin, double dMax) = 0;
    virtual void SetBarValue(std::int32_t lBar, double dValue) = 0;
    virtual void ClearBarText(std::int32_t lBar) = 0;
    virtual void ResetBar(std::int32_t lBar) = 0;
};

class tnwProjection : public virtual IComponent {
public:
    virtual std::shared_ptr<ISpatialReference> SpatialReference() const = 0;
};

// Made from "tnwGIS.tnwGISFactory".
class tnwGISFactory : public virtual IComponent {
public:
    // oProjection may be nothing.
    virtual std::shared_ptr<IPoint> CreatePoint(
        double dX, double dY, const std::shared_ptr<tnwProjection>& oProjection) = 0;
};

// Made from "tnwGIS.tnwPointList".
class tnwPointList : public virtual IComponent {
public:
    virtual void Add(std::shared_ptr<IPoint> oPoint) = 0;
    virtual std::int32_t Count() const = 0;
    // 0-based; error 9 outside the list.
    virtual std::shared_ptr<IPoint> Item(std::int32_t lIndex) const = 0;
};

// The one shared file utility, made from "tnwGIS.tnwFileUtility". Paths may use "/" or "\";
// names built from a folder use the platform's separator.
class tnwFileUtility : public virtual IComponent {
public:
    virtual bool FileExists(std::string_view sPath) const = 0;
    virtual std::int64_t FileLength(std::string_view sPath) const = 0;
    virtual SerialDate FileDate(std::string_view sPath) const = 0;
    virtual std::string Extension(std::string_view sPath) const = 0;  // no dot, "" if none
    virtual std::string BaseName(std::string_view sPath) const = 0;   // no folder, no extension
    virtual std::string Folder(std::string_view sPath) const = 0;     // no trailing separator
    virtual void SaveTextFile(std::string_view sText, std::string_view sPath) const = 0;
};

// Program ids of the outside components the library makes.
inline constexpr std::string_view kProgIdGISFactory = "tnwGIS.tnwGISFactory";
inline constexpr std::string_view kProgIdColumns = "tnwGIS.tnwColumns";
inline constexpr std::string_view kProgIdPointList = "tnwGIS.tnwPointList";
inline constexpr std::string_view kProgIdFileUtility = "tnwGIS.tnwFileUtility";
inline constexpr std::string_view kProgIdUOMFactory = "tnwUOMEngine.tnwUOMFactory";
inline constexpr std::string_view kProgIdErrorHandler = "tnwLog.tnwHandler";

// The shared file utility; error 429 when none is registered.
std::shared_ptr<tnwFileUtility> FileUtility();

// The platform's folder separator in built names.
inline constexpr char kPathSeparator = '/';

}  // namespace tnw
