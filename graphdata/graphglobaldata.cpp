#include "graphdata/graphglobaldata.h"

#include "graphdata/graphcurve.h"
#include "support/registry.h"

namespace {

constexpr std::uint32_t kAxisBits =
    CGraph_Range::AxisLabels | CGraph_Range::AxisMajorGrid | CGraph_Range::AxisMinorGrid | CGraph_Range::AxisIntegerTicks;
constexpr std::uint32_t kGridBits = CGraph_Range::AxisMajorGrid | CGraph_Range::AxisMinorGrid;

void styleRange(CGraph_Range &range, const CGraphGlobalData &d, bool grids)
{
    range.m_axisFlags = grids ? d.m_yAxisFlags : d.m_yAxisFlags & ~kGridBits;
    range.m_labelRotation = d.m_yRotation;
    range.m_textColor = d.m_yTextColor;
    range.m_subDivisions = d.m_ySubDivisions;
    range.m_gridPenStyle = d.m_yGridPenStyle;
    range.m_gridColor = d.m_yGridColor;
    range.m_secondPenStyle = d.m_ySecondPenStyle;
    range.m_secondColor = d.m_ySecondColor;
}

} // namespace

const QString &CGraphGlobalData::DefaultKey()
{
    static const QString key = QStringLiteral("STANDARD OPTIONS");
    return key;
}

void CGraphGlobalData::forEachField(const std::function<void(const char *, Kind, std::uint32_t &)> &visit)
{
    // The signed fields are read and written through their unsigned bits.
    auto bits = [](std::int32_t &v) -> std::uint32_t & { return reinterpret_cast<std::uint32_t &>(v); };
    visit("BackColor", Kind::Color, m_backColor);
    visit("ForeColor", Kind::Color, m_foreColor);
    visit("GridColor", Kind::Color, m_gridColor);
    visit("GridOn", Kind::Switch, bits(m_gridOn));
    visit("HideLabels", Kind::Switch, bits(m_hideLabels));
    visit("XAxisFlags", Kind::XAxisFlags, m_xAxisFlags);
    visit("XLabelsOn", Kind::Switch, bits(m_xLabelsOn));
    visit("XRotation", Kind::Angle, bits(m_xRotation));
    visit("XTextColor", Kind::Color, m_xTextColor);
    visit("XSubDivisions", Kind::Count, bits(m_xSubDivisions));
    visit("XMajorPenStyle", Kind::PenStyle, bits(m_majorPenStyle));
    visit("XMajorColor", Kind::Color, m_majorColor);
    visit("XMinorPenStyle", Kind::PenStyle, bits(m_minorPenStyle));
    visit("XMinorColor", Kind::Color, m_minorColor);
    visit("YAxisFlags", Kind::AxisFlags, m_yAxisFlags);
    visit("YRotation", Kind::Angle, bits(m_yRotation));
    visit("YTextColor", Kind::Color, m_yTextColor);
    visit("YSubDivisions", Kind::Count, bits(m_ySubDivisions));
    visit("YGridPenStyle", Kind::PenStyle, bits(m_yGridPenStyle));
    visit("YGridColor", Kind::Color, m_yGridColor);
    visit("YSecondPenStyle", Kind::PenStyle, bits(m_ySecondPenStyle));
    visit("YSecondColor", Kind::Color, m_ySecondColor);
}

bool CGraphGlobalData::usable(Kind kind, std::uint32_t bits)
{
    const std::int32_t value = std::int32_t(bits);
    switch (kind) {
    case Kind::Color: return bits <= 0xFFFFFF;
    case Kind::Switch: return bits <= 1;
    // solid, dash, dot, dash-dot, dash-dot-dot
    case Kind::PenStyle: return bits <= 4;
    case Kind::Count: return value >= 1 && value <= 100;
    case Kind::Angle: return value >= -360 && value <= 360;
    case Kind::AxisFlags: return (bits & ~kAxisBits) == 0;
    case Kind::XAxisFlags: return (bits & ~(kAxisBits | CGraph_Range::AxisDateDays)) == 0;
    }
    return false;
}

int CGraphGlobalData::Load(const QString &key)
{
    int taken = 0;
    forEachField([&](const char *name, Kind kind, std::uint32_t &bits) {
        const std::uint32_t stored = RegistryGetDword(key, QString::fromLatin1(name), bits);
        if (stored != bits && usable(kind, stored)) {
            bits = stored;
            ++taken;
        }
    });
    return taken;
}

void CGraphGlobalData::Save(const QString &key) const
{
    auto &self = const_cast<CGraphGlobalData &>(*this);
    self.forEachField([&](const char *name, Kind, std::uint32_t &bits) {
        RegistrySetDword(key, QString::fromLatin1(name), bits);
    });
}

void CGraphGlobalData::ApplyTo(CGraphCurve &graph) const
{
    graph.m_backColor = m_backColor;
    graph.m_foreColor = m_foreColor;
    graph.m_gridColor = m_gridColor;
    graph.m_gridOn = m_gridOn;
    graph.m_hideLabels = m_hideLabels;
    graph.m_xAxisFlags = m_xAxisFlags;
    graph.m_xLabelsOn = m_xLabelsOn;
    graph.m_xRotation = m_xRotation;
    graph.m_xTextColor = m_xTextColor;
    graph.m_xSubDivisions = m_xSubDivisions;
    graph.m_majorPenStyle = m_majorPenStyle;
    graph.m_majorColor = m_majorColor;
    graph.m_minorPenStyle = m_minorPenStyle;
    graph.m_minorColor = m_minorColor;
    for (int i = 0; i < graph.m_ranges.GetSize(); ++i)
        styleRange(*graph.m_ranges.GetAt(i), *this, i == 0);
    CArrayGraph_Range &rows = graph.m_defaults->m_rangeDefaults;
    for (int i = 0; i < rows.GetSize(); ++i)
        styleRange(*rows.GetAt(i), *this, i == 0);
}

bool CGraphGlobalData::operator==(const CGraphGlobalData &other) const
{
    bool same = true;
    std::vector<std::uint32_t> mine;
    const_cast<CGraphGlobalData &>(*this).forEachField(
        [&](const char *, Kind, std::uint32_t &bits) { mine.push_back(bits); });
    std::size_t i = 0;
    const_cast<CGraphGlobalData &>(other).forEachField(
        [&](const char *, Kind, std::uint32_t &bits) { same = same && mine[i++] == bits; });
    return same;
}

CGraphGlobalData &GetGraphGlobalData()
{
    static CGraphGlobalData *data = [] {
        auto *d = new CGraphGlobalData;
        d->Load();
        return d;
    }();
    return *data;
}
