// What the FGP reader relies on of the outside reader of an FGP set's main file: the file, its
// part lists (regions, lines) and point lists, and the points. Every list is 1-based.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "core/Component.h"

namespace tnw {

class tnwFGPPoint : public virtual IComponent {
public:
    virtual std::int32_t FSNRecord() const = 0;    // row of the ".fsn" table
    virtual std::int32_t AttributeID() const = 0;  // row of the ".fdt" table
    virtual std::int32_t RegionID() const = 0;
    virtual double Time() const = 0;  // seconds of the day, or since 1970
    virtual double Latitude() const = 0;
    virtual double Longitude() const = 0;
    virtual double Altitude() const = 0;
    virtual double Heading() const = 0;
};

class tnwFGPPointList : public virtual IComponent {
public:
    // lIndex from 1 to Count; error 9 outside.
    virtual std::shared_ptr<tnwFGPPoint> Item(std::int32_t lIndex) const = 0;
    virtual std::int32_t Count() const = 0;
};

class tnwFGPPartList : public virtual IComponent {
public:
    // lIndex from 1 to Count; error 9 outside.
    virtual std::shared_ptr<tnwFGPPointList> Item(std::int32_t lIndex) const = 0;
    virtual std::int32_t Count() const = 0;
};

// Made from "tnwFGP.tnwFGPFile", a new one per main file.
class tnwFGPFile : public virtual IComponent {
public:
    // Reads the main file; an error leaves the set invalid.
    virtual void Open(const std::string& sFilename) = 0;
    // The same objects for as long as the set is open.
    virtual std::shared_ptr<tnwFGPPartList> Regions() const = 0;
    virtual std::shared_ptr<tnwFGPPartList> Lines() const = 0;
    virtual std::shared_ptr<tnwFGPPointList> Points() const = 0;
};

inline constexpr std::string_view kProgIdFGPFile = "tnwFGP.tnwFGPFile";

}  // namespace tnw
