#include "gislib/MemoryRecordSource.h"

#include <limits>

#include "core/Error.h"

namespace tnw::standins {

MemoryRecordSource::MemoryRecordSource(std::shared_ptr<tnwColumns> oColumns,
                                       std::int32_t eGeometryType)
    : m_oColumns(std::move(oColumns)), m_eGeometryType(eGeometryType) {
    if (!m_oColumns) Raise(errObjectNotSet, "tnwGIS.MemoryRecordSource");
}

void MemoryRecordSource::AddRow(std::vector<Variant> aValues,
                                std::shared_ptr<IGeometry> oGeometry) {
    if (m_aRows.size() >= static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()))
        Raise(errOverflow, "tnwGIS.MemoryRecordSource");
    m_aRows.push_back({std::move(aValues), std::move(oGeometry)});
}

void MemoryRecordSource::MoveFirst() {
    m_nCurrent = 0;
    LoadCurrent();
}

void MemoryRecordSource::MoveNext() {
    if (Eof()) return;
    ++m_nCurrent;
    LoadCurrent();
}

std::int32_t MemoryRecordSource::RecordCount() const {
    return static_cast<std::int32_t>(m_aRows.size());
}

std::shared_ptr<IGeometry> MemoryRecordSource::Geometry() const {
    return Eof() ? nullptr : m_aRows[m_nCurrent].oGeometry;
}

void MemoryRecordSource::LoadCurrent() {
    if (Eof()) return;
    const std::vector<Variant>& aValues = m_aRows[m_nCurrent].aValues;
    for (const auto& oColumn : m_oColumns->Items()) {
        const std::int32_t lPosition = oColumn->Position();
        const bool bInRow = lPosition >= 1 && static_cast<std::size_t>(lPosition) <= aValues.size();
        oColumn->SetValue(bInRow ? aValues[static_cast<std::size_t>(lPosition - 1)] : Variant());
    }
}

}  // namespace tnw::standins
