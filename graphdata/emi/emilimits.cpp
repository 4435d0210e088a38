#include "graphdata/emi/emilimits.h"

#include "graphdata/columnscan.h"
#include "graphdata/columntransform.h"
#include "graphdata/graphcurve.h"
#include "support/registry.h"

#include <QStringList>
#include <algorithm>
#include <cmath>
#include <memory>

namespace {

const QString kUserKey = QStringLiteral("Software\\HELIOMAR\\TARN\\UserEMI");
const QString kCountValue = QStringLiteral("EMICount");

QString numberedValue(int n)
{
    return QStringLiteral("EMI%1").arg(n);
}

// Column kinds of a limit: frequency, shown level, level copy, log frequency.
constexpr std::uint32_t kFrequencyKind = CGraphColumn::KindLimitFrequency;
constexpr std::uint32_t kLevelKind = CGraphColumn::KindLimitLevel | CGraphColumn::KindDb | CGraphColumn::KindSpectrum;
constexpr std::uint32_t kLevelCopyKind = CGraphColumn::KindLimitLevel;
constexpr std::uint32_t kLogFrequencyKind = CGraphColumn::KindLimitFrequency | CGraphColumn::KindLog;

struct CEmiState
{
    std::unique_ptr<CCurveInfoArray> list;
    int builtIns = 0;
    bool changed = false;
};

CEmiState &state()
{
    static CEmiState s;
    return s;
}

CGraphColumnPtr makeColumn(int rows, const QString &name, std::uint32_t kind)
{
    CGraphColumnPtr column = CGraphColumnPtr::Adopt(CGraphColumn::Create(rows, name));
    column->m_kind = kind;
    return column;
}

void setRow(CGraphColumn *column, int row, double value)
{
    column->m_values[row] = value;
    column->m_valid[row] = std::isfinite(value) ? 1 : 2;
}

void finish(CGraphColumn *column, int rows)
{
    RecomputeExtents(column, rows);
    column->m_hasInvalid = 0;
    for (int i = 0; i < rows; ++i)
        if (column->m_valid[i] != 1)
            column->m_hasInvalid = 1;
}

void renumber(CCurveInfoArray &list)
{
    for (int i = 0; i < list.GetSize(); ++i)
        list.GetAt(i)->m_colIndex = i;
}

void readUserLimits(CCurveInfoArray &list)
{
    const int count = int(RegistryGetDword(kUserKey, kCountValue, 0));
    for (int n = 1; n <= count; ++n) {
        const QString text = RegistryGetString(kUserKey, numberedValue(n), QString());
        QString key, label;
        std::vector<CEmiPair> pairs;
        if (!ParseUserLimitText(text, key, label, pairs))
            continue; // a malformed entry is skipped; the rest load
        list.Add(BuildEmiLimit(key, label, pairs, list.GetSize()));
    }
}

} // namespace

const std::vector<CEmiBuiltIn> &EmiBuiltInTable()
{
    static const std::vector<CEmiBuiltIn> table = {
        {"FCC_ClassA", "FCC Class A", {{150000, 79}, {500000, 79}, {500000, 73}, {30000000, 73}}},
        {"FCC_ClassB", "FCC Class B", {{150000, 66}, {500000, 56}, {5000000, 56}, {5000000, 60}, {30000000, 60}}},
        {"CISPR25_Class_1",
         "CISPR 25 (Class 1)",
         {{150000, 97}, {300000, 97}, {530000, 73}, {1800000, 73}, {5900000, 64}, {6200000, 64}, {76000000, 49},
          {108000000, 49}}},
        {"CISPR25_Class_2",
         "CISPR 25 (Class 2)",
         {{150000, 87}, {300000, 87}, {530000, 65}, {1800000, 65}, {5900000, 58}, {6200000, 58}, {76000000, 43},
          {108000000, 43}}},
        {"CISPR25",
         "CISPR 25 (Class 3)",
         {{150000, 77}, {300000, 77}, {530000, 57}, {1800000, 57}, {5900000, 52}, {6200000, 52}, {76000000, 37},
          {108000000, 37}}},
        {"CISPR25_Class_4",
         "CISPR 25 (Class 4)",
         {{150000, 67}, {300000, 67}, {530000, 49}, {1800000, 49}, {5900000, 46}, {6200000, 46}, {76000000, 31},
          {108000000, 31}}},
        {"CISPR25_Class_5",
         "CISPR 25 (Class 5)",
         {{150000, 57}, {300000, 57}, {530000, 41}, {1800000, 41}, {5900000, 40}, {6200000, 40}, {76000000, 25},
          {108000000, 25}}},
        {"CISPR_32_22_Class_A", "CISPR 32/22 (Class A)", {{150000, 79}, {500000, 79}, {500000, 73}, {30000000, 73}}},
        {"CISPR_32_22_Class_B",
         "CISPR 32/22 (Class B)",
         {{150000, 66}, {500000, 56}, {5000000, 56}, {5000000, 60}, {30000000, 60}}},
        {"Mil_461_28", "Mil-Std 461 (28V)", {{10000, 94}, {500000, 60}, {10000000, 60}}},
        {"Mil_461_115", "Mil-Std 461 (115V)", {{10000, 100}, {500000, 66}, {10000000, 66}}},
        {"Mil_461_220", "Mil-Std 461 (220V)", {{10000, 103}, {500000, 69}, {10000000, 69}}},
        {"Mil_461_270", "Mil-Std 461 (270V)", {{10000, 104}, {500000, 70}, {10000000, 70}}},
        {"Mil_461_440", "Mil-Std 461 (440V)", {{10000, 106}, {500000, 72}, {10000000, 72}}},
        {"EN55011_ClassA_Group1",
         "EN55011(Class - A Group - 1)",
         {{150000, 79}, {500000, 79}, {500000, 73}, {5000000, 73}, {30000000, 73}}},
        // The sloped last segment is part of the published row and stays.
        {"EN55011_ClassA_Group2",
         "EN55011(Class - A Group - 2)",
         {{150000, 100}, {500000, 100}, {500000, 86}, {5000000, 86}, {5000000, 90}, {30000000, 70}}},
        {"EN55011_ClassA_Group2a",
         "EN55011(Class - A Group - 2a)",
         {{150000, 130}, {500000, 130}, {500000, 125}, {5000000, 125}, {5000000, 115}, {30000000, 115}}},
        {"EN55011_ClassB",
         "EN55011(Class - B)",
         {{150000, 66}, {500000, 56}, {5000000, 56}, {5000000, 60}, {30000000, 60}}},
    };
    return table;
}

CCurveInfo *BuildEmiLimit(const QString &key, const QString &label, const std::vector<CEmiPair> &pairs, int index)
{
    const int rows = int(pairs.size());
    CGraphColumnPtr x = makeColumn(rows, QString(), kFrequencyKind);
    CGraphColumnPtr level = makeColumn(rows, key, kLevelKind);
    CGraphColumnPtr copy = makeColumn(rows, key, kLevelCopyKind);
    CGraphColumnPtr xLog = makeColumn(rows, QString(), kLogFrequencyKind);
    for (int i = 0; i < rows; ++i) {
        setRow(x.Get(), i, pairs[std::size_t(i)].frequency);
        setRow(level.Get(), i, pairs[std::size_t(i)].level);
        setRow(copy.Get(), i, pairs[std::size_t(i)].level);
    }
    finish(x.Get(), rows);
    finish(level.Get(), rows);
    finish(copy.Get(), rows);
    bool invalid = false;
    if (rows > 0)
        LogOf(x.Get(), xLog.Get(), rows, invalid);
    xLog->m_kind = kLogFrequencyKind;

    auto *limit = new CCurveInfo;
    limit->m_source = CCurveBasicInfo::LimitLine;
    limit->m_color = 0;
    limit->m_lineThickness = 2;
    limit->m_yAxisIndex = 0;
    limit->m_colIndex = index;
    limit->m_colName = label;
    limit->m_colLabel = label;
    limit->m_ownX = x;
    limit->m_displayColumn = level;
    limit->m_ownY = copy;
    limit->m_spectrumMagnitude = copy;
    limit->m_ownXLog = xLog;
    return limit;
}

std::vector<CEmiPair> EmiLimitPairs(const CCurveInfo &limit)
{
    std::vector<CEmiPair> pairs;
    const CGraphColumn *x = limit.m_ownX.Get();
    const CGraphColumn *y = limit.m_ownY.Get();
    if (!x || !y)
        return pairs;
    const int rows = std::min(x->m_count, y->m_count);
    for (int i = 0; i < rows; ++i)
        pairs.push_back({x->m_values[i], y->m_values[i]});
    return pairs;
}

CCurveInfoArray &GetEmiLimits()
{
    CEmiState &s = state();
    if (!s.list) {
        s.list = std::make_unique<CCurveInfoArray>();
        for (const CEmiBuiltIn &row : EmiBuiltInTable())
            s.list->Add(BuildEmiLimit(QString::fromUtf8(row.key), QString::fromUtf8(row.label), row.pairs,
                                      s.list->GetSize()));
        s.builtIns = s.list->GetSize();
        readUserLimits(*s.list);
        s.changed = false;
    }
    return *s.list;
}

int EmiBuiltInCount()
{
    GetEmiLimits();
    return state().builtIns;
}

bool EmiUserListChanged()
{
    return state().changed;
}

void SetEmiUserListChanged(bool changed)
{
    state().changed = changed;
}

void ForgetEmiLimits()
{
    state().list.reset();
    state().builtIns = 0;
    state().changed = false;
}

int AddUserLimit(const QString &key, const QString &label, const std::vector<CEmiPair> &pairs)
{
    CCurveInfoArray &list = GetEmiLimits();
    const int index = list.GetSize();
    list.Add(BuildEmiLimit(key, label, pairs, index));
    state().changed = true;
    return index;
}

bool RemoveUserLimit(int index)
{
    CCurveInfoArray &list = GetEmiLimits();
    if (index < state().builtIns || index >= list.GetSize())
        return false;
    list.DeleteAt(index);
    renumber(list);
    state().changed = true;
    SaveUserLimits(true);
    return true;
}

void SaveUserLimits(bool writeCount)
{
    CCurveInfoArray &list = GetEmiLimits();
    const int first = state().builtIns;
    const int count = list.GetSize() - first;
    for (int i = 0; i < count; ++i)
        RegistrySetString(kUserKey, numberedValue(i + 1), FormatUserLimitText(*list.GetAt(first + i)));
    if (!writeCount)
        return;
    // Values beyond the new count go, so that a shorter list leaves no tail
    // that a later, longer count would bring back.
    const int oldCount = int(RegistryGetDword(kUserKey, kCountValue, 0));
    for (int n = count + 1; n <= std::max(oldCount, count + 1); ++n)
        RegistryDeleteValue(kUserKey, numberedValue(n));
    RegistrySetDword(kUserKey, kCountValue, std::uint32_t(count));
}

QString FormatUserLimitText(const CCurveInfo &limit)
{
    const std::vector<CEmiPair> pairs = EmiLimitPairs(limit);
    QString text = QStringLiteral("%1\n%2\n%3\n").arg(limit.m_colName, limit.m_colLabel).arg(pairs.size());
    for (const CEmiPair &p : pairs)
        text += QString::asprintf("%g\n%g\n", p.frequency, p.level);
    return text;
}

bool ParseUserLimitText(const QString &text, QString &key, QString &label, std::vector<CEmiPair> &pairs)
{
    pairs.clear();
    const QStringList lines = text.split(QLatin1Char('\n'));
    // A text that ends in a newline splits into one empty line more.
    const int usable = int(lines.size()) - (text.endsWith(QLatin1Char('\n')) ? 1 : 0);
    if (usable < 3)
        return false;
    key = lines[0];
    label = lines[1];
    bool ok = false;
    const int count = lines[2].trimmed().toInt(&ok);
    if (!ok || count < 1)
        return false;
    for (int i = 0; i < count; ++i) {
        const int at = 3 + 2 * i;
        if (at + 1 >= usable)
            break;
        bool okF = false, okL = false;
        const double f = lines[at].trimmed().toDouble(&okF);
        const double l = lines[at + 1].trimmed().toDouble(&okL);
        if (!okF || !okL)
            break;
        pairs.push_back({f, l});
    }
    return !pairs.empty();
}

int AddEmiLimitToGraph(CGraphCurve &graph, int index)
{
    CCurveInfoArray &list = GetEmiLimits();
    if (index < 0 || index >= list.GetSize())
        return -1;
    const CCurveInfo &limit = *list.GetAt(index);
    std::vector<double> points;
    for (const CEmiPair &p : EmiLimitPairs(limit))
        points.insert(points.end(), {p.frequency, p.level});
    const int at = graph.AddOwnCurve(QString(), limit.m_colName, points.data(), int(points.size() / 2), false);
    if (at < 0)
        return -1;
    CCurveInfo &curve = *graph.Curve(at);
    curve.m_source = limit.m_source;
    curve.m_colIndex = limit.m_colIndex;
    curve.m_colLabel = limit.m_colLabel;
    curve.m_color = limit.m_color;
    curve.m_lineThickness = limit.m_lineThickness;
    curve.m_symbol = 0;
    curve.m_yAxisIndex = limit.m_yAxisIndex;
    // The graph's curve shares the limit's columns: they are never changed.
    curve.m_ownX = limit.m_ownX;
    curve.m_ownY = limit.m_ownY;
    curve.m_ownXLog = limit.m_ownXLog;
    curve.m_displayColumn = limit.m_displayColumn;
    curve.m_spectrumMagnitude = limit.m_spectrumMagnitude;
    return at;
}
