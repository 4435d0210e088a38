// Oscilloscope channels: the raw input as appended, and what each channel
// shows through its formula.
#include "graphdata/graphdata.h"
#include "support/languagestring.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

// A scope set of t, V1, V2 that holds `capacity` rows and grows by 2.
CGraphData MakeScope(int capacity)
{
    CGraphData data;
    data.Create(2, 3, capacity, 2);
    const char *names[3] = {"t", "V1", "V2"};
    for (int c = 0; c < 3; ++c)
        data.GetColumn(c)->m_name = QString::fromLatin1(names[c]);
    return data;
}

// Rows of (t, V1, V2); a NaN in V1 or V2 stands for a missing cell.
void Append(CGraphData &data, int firstRow, const std::vector<std::vector<double>> &rows)
{
    for (std::size_t i = 0; i < rows.size(); ++i) {
        std::uint8_t valid[3];
        double cells[3];
        for (int c = 0; c < 3; ++c) {
            cells[c] = std::isnan(rows[i][std::size_t(c)]) ? 0 : rows[i][std::size_t(c)];
            valid[c] = std::isnan(rows[i][std::size_t(c)]) ? 0 : 1;
        }
        ASSERT_EQ(data.AppendRows(cells, valid, 0, 3, firstRow + int(i), 1), 1);
    }
}

struct ChannelCase
{
    const char *name;
    const char *formula; // channel 1's
    bool formulaFirst;   // set before the rows arrive, else after
    std::vector<double> values;
    std::vector<int> valid;
    double low, high;
};

void PrintTo(const ChannelCase &c, std::ostream *os) { *os << c.name; }

class ScopeChannels : public testing::TestWithParam<ChannelCase>
{};

} // namespace

TEST_P(ScopeChannels, ShowTheirFormulaOverTheRawInput)
{
    const ChannelCase &c = GetParam();
    const double nan = std::nan("");
    // Five rows: the store of 2 rows grows twice on the way.
    const std::vector<std::vector<double>> rows = {
        {0, 1, 4}, {1, 2, 3}, {2, nan, 2}, {3, -3, 1}, {4, 0.5, nan}};
    CGraphData data = MakeScope(2);
    CScopeData_Data &scope = *data->AsScope();
    QString error;
    for (const bool before : {true, false}) {
        if (before == c.formulaFirst) {
            ASSERT_TRUE(scope.SetChannelFormula(1, QString::fromLatin1(c.formula), &error)) << error.toStdString();
        }
        if (before)
            Append(data, 0, rows);
    }

    const CGraphColumn *channel = data.GetColumn(1);
    ASSERT_EQ(data.RowCount(), 5);
    for (int r = 0; r < 5; ++r) {
        EXPECT_EQ(channel->m_valid[r], c.valid[std::size_t(r)]) << "row " << r;
        if (c.valid[std::size_t(r)] == 1) {
            EXPECT_DOUBLE_EQ(channel->m_values[r], c.values[std::size_t(r)]) << "row " << r;
        }
        // The raw input stays as appended, whatever the channel shows.
        EXPECT_EQ(scope.m_rawInput[1]->m_valid[r], std::isnan(rows[std::size_t(r)][1]) ? 0 : 1) << "row " << r;
    }
    EXPECT_DOUBLE_EQ(channel->m_minValue, c.low);
    EXPECT_DOUBLE_EQ(channel->m_maxValue, c.high);
    EXPECT_EQ(channel->m_hasInvalid, std::count(c.valid.begin(), c.valid.end(), 1) < 5 ? 1u : 0u);
    // The other channel is untouched: its own raw input.
    EXPECT_DOUBLE_EQ(data.GetColumn(2)->m_values[0], 4);
    EXPECT_EQ(scope.ChannelFormula(1), QString::fromLatin1(c.formula).trimmed().isEmpty()
                                           ? QString()
                                           : QString::fromLatin1(c.formula));
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(
    Formulas, ScopeChannels,
    testing::Values(
        ChannelCase{"Scaled", "V1*10", true, {10, 20, 0, -30, 5}, {1, 1, 0, 1, 1}, -30, 20},
        ChannelCase{"ScaledLater", "V1*10", false, {10, 20, 0, -30, 5}, {1, 1, 0, 1, 1}, -30, 20},
        // a row missing in either input is missing in the difference
        ChannelCase{"Difference", "V1-V2", true, {-3, -1, 0, -4, 0}, {1, 1, 0, 1, 0}, -4, -1},
        ChannelCase{"OtherChannel", "V2+t", false, {4, 4, 4, 4, 0}, {1, 1, 1, 1, 0}, 4, 4},
        // a division by zero fails on that row only
        ChannelCase{"Reciprocal", "1/(V1-2)", true, {-1, 0, 0, -0.2, -1 / 1.5}, {1, 2, 0, 1, 1}, -1, -0.2},
        // no formula: the raw input
        ChannelCase{"Cleared", "  ", false, {1, 2, 0, -3, 0.5}, {1, 1, 0, 1, 1}, -3, 2}),
    [](const testing::TestParamInfo<ChannelCase> &info) { return std::string(info.param.name); });
// clang-format on

TEST(ScopeChannelFormula, RefusedTextsKeepTheFormerOne)
{
    ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG)));
    const struct
    {
        int channel;
        const char *text;
        const char *errorHas;
    } cases[] = {
        {1, "nope*2", "nope"},
        {1, "V1*(2", "line 1"},
        {0, "t*2", "channel 0"},
        {3, "V1", "channel 3"},
    };
    for (const auto &c : cases) {
        CGraphData data = MakeScope(10);
        CScopeData_Data &scope = *data->AsScope();
        ASSERT_TRUE(scope.SetChannelFormula(1, QStringLiteral("V1+1")));
        Append(data, 0, {{0, 1, 2}});
        QString error;
        EXPECT_FALSE(scope.SetChannelFormula(c.channel, QString::fromLatin1(c.text), &error)) << c.text;
        EXPECT_TRUE(error.contains(QString::fromLatin1(c.errorHas))) << c.text << ": " << error.toStdString();
        EXPECT_EQ(scope.ChannelFormula(1), QStringLiteral("V1+1")) << c.text;
        EXPECT_DOUBLE_EQ(data.GetColumn(1)->m_values[0], 2) << c.text;
    }
}

TEST(ScopeChannelFormula, ANewFormulaLeavesReadersTheirColumn)
{
    CGraphData data = MakeScope(10);
    Append(data, 0, {{0, 1, 2}, {1, 2, 3}});
    CGraphColumnPtr before(data.GetColumn(1));
    const int generation = data->m_generation;
    ASSERT_TRUE(data->AsScope()->SetChannelFormula(1, QStringLiteral("-V1")));
    EXPECT_NE(data.GetColumn(1), before.Get());
    EXPECT_DOUBLE_EQ(before->m_values[1], 2);
    EXPECT_DOUBLE_EQ(data.GetColumn(1)->m_values[1], -2);
    EXPECT_EQ(data.GetColumn(1)->m_name, QStringLiteral("V1"));
    EXPECT_GT(data->m_generation, generation);
}
