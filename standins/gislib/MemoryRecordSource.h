// A record source over rows held in memory, for hosts and tests: each row is a list of values
// and a geometry.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "core/GISLib.h"
#include "core/Variant.h"

namespace tnw::standins {

// MoveFirst and MoveNext load the row they land on: every
// column takes the value at its Position (1-based) in the row's values, or empty when the row
// has none there. At the end the columns keep the last row's values and Geometry is nothing.
class MemoryRecordSource final : public tnwRecordSource {
public:
    // eGeometryType is a tnwGeometryType, given back unchanged by GeometryType.
    MemoryRecordSource(std::shared_ptr<tnwColumns> oColumns, std::int32_t eGeometryType);

    void AddRow(std::vector<Variant> aValues, std::shared_ptr<IGeometry> oGeometry);

    void MoveFirst() override;
    void MoveNext() override;  // does nothing at the end
    bool Eof() const override { return m_nCurrent >= m_aRows.size(); }
    std::int32_t RecordCount() const override;
    std::int32_t GeometryType() const override { return m_eGeometryType; }
    std::shared_ptr<IGeometry> Geometry() const override;
    std::shared_ptr<tnwColumns> Columns() const override { return m_oColumns; }

private:
    struct Row {
        std::vector<Variant> aValues;
        std::shared_ptr<IGeometry> oGeometry;
    };

    void LoadCurrent();

    std::shared_ptr<tnwColumns> m_oColumns;
    std::int32_t m_eGeometryType;
    std::vector<Row> m_aRows;
    std::size_t m_nCurrent = 0;
};

}  // namespace tnw::standins
