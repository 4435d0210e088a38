// The program-wide defaults of new graphs: kept per user, given to graphs.
#include "graphdata/graphglobaldata.h"

#include "graphdata/graphcurve.h"
#include "support/registry.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

const QString kKey = QStringLiteral("GraphDefaultsTest");

class GraphGlobalData : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_settings.isValid());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settings.path());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settings.path());
    }
    QTemporaryDir m_settings;
};

CGraphGlobalData Changed()
{
    CGraphGlobalData d;
    d.m_backColor = 0x102030;
    d.m_gridOn = 1;
    d.m_xAxisFlags = CGraph_Range::AxisLabels | CGraph_Range::AxisMinorGrid | CGraph_Range::AxisDateDays;
    d.m_xRotation = -45;
    d.m_minorColor = 0x00FF00;
    d.m_yAxisFlags = CGraph_Range::AxisLabels | CGraph_Range::AxisMajorGrid | CGraph_Range::AxisIntegerTicks;
    d.m_ySubDivisions = 2;
    d.m_yGridPenStyle = 0;
    d.m_ySecondColor = 0xABCDEF;
    return d;
}

} // namespace

TEST_F(GraphGlobalData, WhatIsSavedLoadsAgain)
{
    const CGraphGlobalData saved = Changed();
    saved.Save(kKey);
    CGraphGlobalData loaded;
    EXPECT_FALSE(loaded == saved);
    EXPECT_EQ(loaded.Load(kKey), 9);
    EXPECT_TRUE(loaded == saved);
    // Nothing stored: the built-in defaults stay.
    CGraphGlobalData fresh;
    EXPECT_EQ(fresh.Load(QStringLiteral("NothingHere")), 0);
    EXPECT_TRUE(fresh == CGraphGlobalData());
}

TEST_F(GraphGlobalData, UnusableStoredValuesKeepTheDefault)
{
    const struct
    {
        const char *name;
        std::uint32_t stored;
        bool taken;
    } cases[] = {
        {"BackColor", 0x000000, true},
        {"BackColor", 0x1000000, false},
        {"GridOn", 1, true},
        {"GridOn", 7, false},
        {"XRotation", std::uint32_t(-90), true},
        {"XRotation", 720, false},
        {"XSubDivisions", 10, true},
        {"XSubDivisions", 0, false},
        {"YGridPenStyle", 4, true},
        {"YGridPenStyle", 5, false},
        {"YAxisFlags", 0x10000, false}, // a date axis is for X only
        {"XAxisFlags", 0x10010, true},
        {"YAxisFlags", 0x20, false},
    };
    for (const auto &c : cases) {
        const QString key = kKey + QString::fromLatin1(c.name) + QString::number(c.stored);
        RegistrySetDword(key, QString::fromLatin1(c.name), c.stored);
        CGraphGlobalData d;
        EXPECT_EQ(d.Load(key), c.taken ? 1 : 0) << c.name << " " << c.stored;
        EXPECT_EQ(d == CGraphGlobalData(), !c.taken) << c.name << " " << c.stored;
    }
}

TEST_F(GraphGlobalData, AGraphTakesThemAndGivesThemBack)
{
    const CGraphGlobalData d = Changed();
    CGraphCurve graph;
    graph.m_ranges.Add(new CGraph_Range); // a second axis, to see where the grids go
    d.ApplyTo(graph);
    EXPECT_EQ(graph.m_backColor, 0x102030u);
    EXPECT_EQ(graph.m_gridOn, 1);
    EXPECT_EQ(graph.m_xRotation, -45);
    EXPECT_EQ(graph.m_minorColor, 0x00FF00u);
    ASSERT_EQ(graph.m_ranges.GetSize(), 2);
    EXPECT_EQ(graph.m_ranges.GetAt(0)->m_axisFlags, d.m_yAxisFlags);
    EXPECT_EQ(graph.m_ranges.GetAt(1)->m_axisFlags, d.m_yAxisFlags & ~CGraph_Range::AxisMajorGrid);
    EXPECT_EQ(graph.m_ranges.GetAt(1)->m_subDivisions, 2);
    EXPECT_EQ(graph.m_ranges.GetAt(1)->m_secondColor, 0xABCDEFu);
    // The default row of the first axis, which a rebuilt first axis takes.
    EXPECT_EQ(graph.m_defaults->m_rangeDefaults.GetAt(0)->m_gridPenStyle, 0);

    CGraphGlobalData back;
    back.TakeFrom(graph);
    EXPECT_TRUE(back == d);
}
