#include "graphdata/columntransform.h"

#include "graphdata/graphcolumn.h"

#include <cmath>

namespace {

template <typename F>
void transform(const CGraphColumn *source, CGraphColumn *target, int rows, bool &hasInvalid, bool spareDcBin,
               F f)
{
    hasInvalid = false;
    if (rows > source->m_count)
        rows = source->m_count;
    if (rows > target->m_count)
        rows = target->m_count;
    bool any = false;
    double lo = 0, hi = 0;
    for (int i = 0; i < rows; ++i) {
        const std::uint8_t byte = source->m_valid[i];
        if (byte != 1) {
            target->m_valid[i] = byte;
            target->m_values[i] = 0;
            if (byte == 2)
                hasInvalid = true;
            continue;
        }
        const double v = source->m_values[i];
        if (!(v > 0)) {
            target->m_valid[i] = 2;
            target->m_values[i] = 0;
            if (!(spareDcBin && i == 0))
                hasInvalid = true;
            continue;
        }
        const double t = f(v);
        target->m_values[i] = t;
        target->m_valid[i] = 1;
        if (!any) {
            lo = hi = t;
            any = true;
        } else if (t < lo) {
            lo = t;
        } else if (t > hi) {
            hi = t;
        }
    }
    target->m_minValue = lo;
    target->m_maxValue = hi;
    target->m_hasInvalid = hasInvalid ? 1 : 0;
    if (target->m_name.isEmpty())
        target->m_name = source->m_name;
}

} // namespace

void LogOf(const CGraphColumn *source, CGraphColumn *target, int rows, bool &hasInvalid)
{
    hasInvalid = false;
    if (!source || !target)
        return;
    target->m_kind = source->m_kind | CGraphColumn::KindLog;
    const bool frequency = source->m_name.compare(QStringLiteral("Frequency"), Qt::CaseInsensitive) == 0;
    transform(source, target, rows, hasInvalid, frequency, [](double v) { return std::log10(v); });
}

void DbOf(const CGraphColumn *source, CGraphColumn *target, int rows, bool &hasInvalid)
{
    hasInvalid = false;
    if (!source || !target)
        return;
    target->m_kind = source->m_kind | CGraphColumn::KindDb;
    transform(source, target, rows, hasInvalid, false, [](double v) { return 20 * std::log10(v * 1e6); });
}
