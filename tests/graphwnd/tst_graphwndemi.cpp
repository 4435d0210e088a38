// EMI limits over a spectrum in the graph window: the pop-up menu shows and
// hides each limit, a shown limit lies at the pixels of its levels on the dB
// axis, and a limit file is imported or refused with its message.
#include "../common/scriptedprompts.h"

#include "graphdata/draw/drawtools.h"
#include "graphdata/draw/polylinecache.h"
#include "graphdata/emi/emilimits.h"
#include "graphdata/spectrum/spectrumjob.h"
#include "graphwnd/graphwnd.h"
#include "support/languagestring.h"

#include <QFile>
#include <QMenu>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <numbers>

namespace {

class WndEmi : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG))); }

    void SetUp() override
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.path());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_dir.path());
        ForgetEmiLimits();
        // 1024 rows 10 ns apart: a spectrum up to 50 MHz
        CGraphData data;
        data.Create(1, 2, 1024, 0);
        std::vector<double> v;
        for (int r = 0; r < 1024; ++r)
            v.insert(v.end(), {r * 1e-8, 0.01 * std::sin(2 * std::numbers::pi * 2e6 * r * 1e-8)});
        data.AppendRows(v.data(), nullptr, 0, 2, 0, 1024);
        m_wnd.resize(700, 480);
        m_wnd.SetGraphDataCopy(data);
        ASSERT_EQ(SetSpectrumMode(*m_wnd.GetGraphData(), true), 1);
        m_wnd.StoreDefaultView();
        m_wnd.show();
        m_wnd.grab();
    }
    void TearDown() override { ForgetEmiLimits(); }

    QAction *menuItem(int id)
    {
        // the plot's menu: a point on no curve
        const QRect plot = EdgesToQRect(m_wnd.GetGraphData()->m_plotRect);
        QPoint free = plot.center();
        for (int y = plot.top() + 10; y < plot.bottom() - 10 && m_wnd.CurveAt(free) >= 0; y += 7)
            free = QPoint(plot.center().x(), y);
        m_menu = std::make_unique<QMenu>();
        m_wnd.BuildContextMenu(free, *m_menu);
        return m_menu->findChild<QAction *>(QString::number(id));
    }
    QString writeFile(const char *text)
    {
        const QString path = m_dir.filePath(QStringLiteral("limit.ini"));
        QFile f(path);
        EXPECT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(text);
        return path;
    }

    QTemporaryDir m_dir;
    CScriptedPrompts m_prompts;
    CGraphWnd m_wnd;
    std::unique_ptr<QMenu> m_menu;
};

class WndEmiLimits : public WndEmi, public ::testing::WithParamInterface<int>
{
};

// Each corner of the limit is where its frequency and level say.
TEST_P(WndEmiLimits, AMenuClickShowsTheLimitAtItsLevels)
{
    const int index = GetParam();
    QAction *item = menuItem(CmdEmiFirst + index);
    ASSERT_NE(item, nullptr);
    EXPECT_FALSE(item->isChecked());
    m_wnd.OnContextCommand(CmdEmiFirst + index, QPoint());
    const int curve = m_wnd.EmiLimitCurve(index);
    ASSERT_GE(curve, 0);
    CGraphCurve &g = *m_wnd.GetGraphData();
    EXPECT_EQ(g.Range(0)->m_dbScale, 1);
    m_wnd.grab();

    const auto *cache = static_cast<const CPolylinePixels *>(g.Curve(curve)->LinePixels());
    ASSERT_NE(cache, nullptr);
    const CIntRect &plot = g.m_plotRect;
    const CGraph_Range &y = *g.Range(0);
    int inside = 0;
    for (const CEmiPair &p : EmiBuiltInTable()[std::size_t(index)].pairs) {
        const double px = plot.left + (p.frequency - g.m_xViewMin) * (plot.right - plot.left) / (g.m_xViewMax - g.m_xViewMin);
        const double py = plot.bottom - (p.level - y.m_viewMin) * (plot.bottom - plot.top) / (y.m_viewMax - y.m_viewMin);
        if (px < plot.left + 1 || px > plot.right - 1)
            continue; // a corner beyond the spectrum's frequencies is clipped away
        ++inside;
        bool found = false;
        for (const QPoint &q : cache->m_points)
            found = found || (std::abs(q.x() - px) <= 1.5 && std::abs(q.y() - py) <= 1.5);
        EXPECT_TRUE(found) << p.frequency << " Hz, " << p.level << " dB";
    }
    EXPECT_GE(inside, 2);
    EXPECT_TRUE(menuItem(CmdEmiFirst + index)->isChecked());
    // a second click hides it
    m_wnd.OnContextCommand(CmdEmiFirst + index, QPoint());
    EXPECT_EQ(m_wnd.EmiLimitCurve(index), -1);
    EXPECT_FALSE(menuItem(CmdEmiFirst + index)->isChecked());
}

// FCC class A and B, CISPR 25 class 3, EN55011 group 2 with its slope
INSTANTIATE_TEST_SUITE_P(BuiltIns, WndEmiLimits, ::testing::Values(0, 1, 4, 15));

TEST_F(WndEmi, TheMenuOffersLimitsOnlyOverASpectrum)
{
    EXPECT_NE(menuItem(CmdEmiImport), nullptr);
    SetSpectrumMode(*m_wnd.GetGraphData(), false);
    EXPECT_EQ(menuItem(CmdEmiFirst), nullptr);
}

TEST_F(WndEmi, AnImportedLimitIsKeptAndShown)
{
    const int before = GetEmiLimits().GetSize();
    m_prompts.fileNames << writeFile("[Limit]\nName=Own\nLabel=Own limit\nCount=3\n[Data]\nFreq1=150000\nValue1=60\n"
                                     "Freq2=5000000\nValue2=60\nFreq3=5000000\nValue3=50\n");
    m_wnd.OnContextCommand(CmdEmiImport, QPoint());
    EXPECT_TRUE(m_prompts.messages.isEmpty());
    ASSERT_EQ(GetEmiLimits().GetSize(), before + 1);
    EXPECT_GE(m_wnd.EmiLimitCurve(before), 0);
    EXPECT_EQ(QSettings(QStringLiteral("HELIOMAR"), QStringLiteral("TARN")).value(QStringLiteral("UserEMI/EMICount")).toInt(), 1);
}

TEST_F(WndEmi, ABadLimitFileIsToldAndAddsNothing)
{
    const int before = GetEmiLimits().GetSize();
    const int curves = m_wnd.GetGraphData()->CurveCount();
    m_prompts.fileNames << writeFile("[Limit]\nName=Own\nLabel=Own\nCount=2\n[Data]\nFreq1=2e5\nValue1=60\nFreq2=1e5\nValue2=50\n");
    EXPECT_FALSE(m_wnd.ImportEmiLimitFile());
    ASSERT_EQ(m_prompts.messages.size(), 1);
    EXPECT_TRUE(m_prompts.messages[0].text.contains(QStringLiteral("below")));
    EXPECT_EQ(GetEmiLimits().GetSize(), before);
    EXPECT_EQ(m_wnd.GetGraphData()->CurveCount(), curves);
    // a cancelled file box does nothing at all
    EXPECT_FALSE(m_wnd.ImportEmiLimitFile());
    EXPECT_EQ(m_prompts.messages.size(), 1);
}

} // namespace
