#pragma once
// Columns for tests, written as plain numbers: NaN stands for an invalid row
// (byte 2) and infinity for a missing one (byte 0).

#include "graphdata/graphcolumn.h"

#include <QString>

#include <cmath>
#include <limits>
#include <vector>

namespace columnfixture {

inline const double NaN = std::numeric_limits<double>::quiet_NaN();
inline const double Missing = std::numeric_limits<double>::infinity();

inline CGraphColumnPtr makeColumn(const std::vector<double> &values, const QString &name = QString())
{
    CGraphColumnPtr column = CGraphColumnPtr::Adopt(CGraphColumn::Create(int(values.size()), name));
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double v = values[i];
        column->m_values[i] = std::isfinite(v) ? v : 0;
        column->m_valid[i] = std::isnan(v) ? 2 : std::isinf(v) ? 0 : 1;
    }
    return column;
}

} // namespace columnfixture
