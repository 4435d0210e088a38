// The option dialog on a real graph: each page's fields reach the graph on
// acceptance, a Cancel or a refused field leaves the graph as it was, and a
// wrong field keeps the dialog open with that field focused.
#include "optionsfixture.h"

#include "graphdata/graphcurve.h"
#include "graphdata/graphglobaldata.h"
#include "graphdata/pages/axisfields.h"
#include "graphdata/pages/curve2page.h"
#include "graphdata/pages/options2dlg.h"
#include "graphdata/pages/screen2page.h"
#include "graphdata/pages/xaxis2page.h"
#include "graphdata/pages/yaxis2page.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSettings>
#include <QTabWidget>
#include <QTemporaryDir>

#include <QTest>

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <string>


TEST(OptionsAxisFields, Checks)
{
    ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG)));
    const struct
    {
        const char *name;
        double min, max, tick;
        bool log;
        COptionsFault::Field field; // FieldNone: accepted
    } cases[] = {
        {"plain", 0, 10, 1, false, COptionsFault::FieldNone},
        {"automatic tick", 0, 10, 0, false, COptionsFault::FieldNone},
        {"min above max", 10, 0, 1, false, COptionsFault::FieldMin},
        {"min equal to max", 5, 5, 1, false, COptionsFault::FieldMin},
        {"negative tick", 0, 10, -1, false, COptionsFault::FieldTick},
        {"more than 10000 ticks", 0, 1, 1e-5, false, COptionsFault::FieldTick},
        {"log reaching 0", 0, 100, 1, true, COptionsFault::FieldMin},
        {"log below 0", -1, 100, 1, true, COptionsFault::FieldMin},
        {"log decades", 1e-3, 1e3, 1, true, COptionsFault::FieldNone},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        COptionsFault::Field field;
        const QString text = CheckAxisFields(c.min, c.max, c.tick, c.log, field);
        EXPECT_EQ(field, c.field);
        EXPECT_EQ(text.isEmpty(), c.field == COptionsFault::FieldNone) << text.toStdString();
    }
}

// Each kind of field, changed on its page and accepted, reaches the graph.
TEST_F(Options2Dlg, AcceptedFieldsReachTheGraph)
{
    const struct
    {
        const char *name;
        std::function<void(COptions2_Dlg &)> edit;
        std::function<void(const CGraphCurve &)> check;
    } cases[] = {
        {"X range and tick",
         [](COptions2_Dlg &d) {
             d.Tabs()->setCurrentWidget(d.m_xPage);
             d.m_xPage->m_fields->m_min->setText(QStringLiteral("10"));
             d.m_xPage->m_fields->m_max->setText(QStringLiteral("20"));
             d.m_xPage->m_fields->m_tick->setText(QStringLiteral("2.5"));
             d.m_xPage->m_title->setText(QStringLiteral("Seconds"));
         },
         [](const CGraphCurve &g) {
             EXPECT_EQ(g.m_xViewMin, 10);
             EXPECT_EQ(g.m_xViewMax, 20);
             EXPECT_EQ(g.m_xTick, 2.5);
             EXPECT_EQ(g.m_xAxisName, QStringLiteral("Seconds"));
         }},
        {"X log and no labels",
         [](COptions2_Dlg &d) {
             d.Tabs()->setCurrentWidget(d.m_xPage);
             d.m_xPage->m_fields->m_automatic->setChecked(true);
             d.m_xPage->m_fields->m_log->setChecked(true);
             d.m_xPage->m_fields->m_labels->setChecked(false);
         },
         [](const CGraphCurve &g) {
             EXPECT_EQ(g.m_xLog, 1);
             EXPECT_FALSE(g.m_xAxisFlags & CGraph_Range::AxisLabels);
             // X 1..100 as the decades 10^0..10^2
             EXPECT_EQ(g.m_xViewMin, 0);
             EXPECT_EQ(g.m_xViewMax, 2);
         }},
        {"Y range by hand, dB and layout",
         [](COptions2_Dlg &d) {
             d.Tabs()->setCurrentWidget(d.m_yPage);
             CYAxis_Multi_Child *child = d.m_yPage->m_children.at(0);
             child->m_fields->m_automatic->setChecked(false);
             child->m_fields->m_min->setText(QStringLiteral("-50"));
             child->m_fields->m_max->setText(QStringLiteral("250"));
             child->m_fields->m_tick->setText(QStringLiteral("50"));
             child->m_layout->setCurrentIndex(2);
             child->m_textColor->Edit()->setText(QStringLiteral("#0000FF"));
         },
         [](const CGraphCurve &g) {
             const CGraph_Range *r = g.Range(0);
             EXPECT_EQ(r->m_viewMin, -50);
             EXPECT_EQ(r->m_viewMax, 250);
             EXPECT_EQ(r->m_tick, 50);
             EXPECT_EQ(r->m_layout, CGraph_Range::LayoutSlices);
             EXPECT_EQ(r->m_textColor, 0xFF0000u); // 0x00BBGGRR
         }},
        {"screen colours and switches",
         [](COptions2_Dlg &d) {
             d.Tabs()->setCurrentWidget(d.m_screenPage);
             d.m_screenPage->m_back->Edit()->setText(QStringLiteral("#112233"));
             d.m_screenPage->m_fore->Edit()->setText(QStringLiteral("white"));
             d.m_screenPage->m_noGrid->setChecked(true);
             d.m_screenPage->m_hideLabels->setChecked(true);
         },
         [](const CGraphCurve &g) {
             EXPECT_EQ(g.m_backColor, 0x332211u);
             EXPECT_EQ(g.m_foreColor, 0xFFFFFFu);
             EXPECT_EQ(g.m_gridOn, 0);
             EXPECT_EQ(g.m_hideLabels, 1);
         }},
        {"curve label, line, symbol, connect and colour",
         [](COptions2_Dlg &d) {
             CCurve2List *list = d.m_curvePage->m_list;
             list->item(1, CCurve2List::ColLabel)->setText(QStringLiteral("falling"));
             list->LineBox(1)->setCurrentIndex(list->LineBox(1)->findData(-11));
             list->SymbolBox(1)->setCurrentIndex(list->SymbolBox(1)->findData(3));
             list->item(1, CCurve2List::ColConnect)->setCheckState(Qt::Unchecked);
             list->ColorField(1)->Edit()->setText(QStringLiteral("#FF0000"));
         },
         [](const CGraphCurve &g) {
             ASSERT_EQ(g.CurveCount(), 2);
             const CCurveInfo *c = g.Curve(1);
             EXPECT_EQ(c->m_colIndex, 2);
             EXPECT_EQ(c->m_colLabel, QStringLiteral("falling"));
             EXPECT_EQ(c->m_lineThickness, -11);
             EXPECT_EQ(c->m_symbol, 3);
             EXPECT_EQ(c->m_connect, 0);
             EXPECT_EQ(c->m_color, 0x0000FFu);
         }},
        {"Y log ends typed as values",
         [](COptions2_Dlg &d) {
             d.Tabs()->setCurrentWidget(d.m_yPage);
             auto *f = d.m_yPage->m_children.at(0)->m_fields;
             f->m_automatic->setChecked(false);
             f->m_log->setChecked(true);
             f->m_min->setText(QStringLiteral("0.01"));
             f->m_max->setText(QStringLiteral("1000"));
             f->m_tick->setText(QStringLiteral("1"));
         },
         [](const CGraphCurve &g) {
             EXPECT_EQ(g.Range(0)->m_logScale, 1);
             EXPECT_DOUBLE_EQ(g.Range(0)->m_viewMin, -2);
             EXPECT_DOUBLE_EQ(g.Range(0)->m_viewMax, 3);
         }},
        {"curve order",
         [](COptions2_Dlg &d) {
             d.m_curvePage->m_list->setCurrentCell(0, 0);
             d.m_curvePage->MoveCurrent(1);
         },
         [](const CGraphCurve &g) {
             ASSERT_EQ(g.CurveCount(), 2);
             EXPECT_EQ(g.Curve(0)->m_colIndex, 2);
             EXPECT_EQ(g.Curve(1)->m_colIndex, 1);
         }},
        {"deleting the last curves",
         [](COptions2_Dlg &d) {
             for (int i = 0; i < 2; ++i) {
                 d.m_curvePage->m_list->setCurrentCell(0, 0);
                 d.m_curvePage->DeleteCurrent();
             }
         },
         [](const CGraphCurve &g) { EXPECT_EQ(g.CurveCount(), 0); }},
        {"a new Y axis from a curve row copies the first range",
         [](COptions2_Dlg &d) {
             QComboBox *axis = d.m_curvePage->m_list->AxisBox(1);
             const int newAxis = axis->findData(-1);
             ASSERT_GE(newAxis, 0);
             axis->setCurrentIndex(newAxis);
             emit axis->activated(newAxis);
             EXPECT_EQ(axis->currentData().toInt(), 1);
             // The Y page shows the new axis.
             d.Tabs()->setCurrentWidget(d.m_yPage);
             EXPECT_EQ(d.m_yPage->m_children.size(), 2u);
         },
         [](const CGraphCurve &g) {
             ASSERT_EQ(g.RangeCount(), 2);
             EXPECT_EQ(g.Curve(1)->m_yAxisIndex, 1);
             EXPECT_EQ(g.Range(1)->m_layout, g.Range(0)->m_layout);
             EXPECT_EQ(g.Range(1)->m_logScale, g.Range(0)->m_logScale);
             EXPECT_NE(g.Range(1)->m_axisSide, g.Range(0)->m_axisSide);
         }},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        CGraphCurve graph;
        fill(graph);
        m_prompts.messages.clear();
        COptions2_Dlg dialog(graph, COptionsFault::PageCurves);
        c.edit(dialog);
        dialog.accept();
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
        EXPECT_TRUE(m_prompts.messages.isEmpty()) << m_prompts.messages.join(u'|').toStdString();
        c.check(graph);
    }
}

// A wrong field: the message, the dialog open on that page with the field
// focused and selected, and the graph untouched.
TEST_F(Options2Dlg, WrongFieldsKeepTheDialogOpenAndTheGraphAsItWas)
{
    const struct
    {
        const char *name;
        COptionsFault::Page page;
        std::function<QLineEdit *(COptions2_Dlg &)> edit; // the field made wrong
        const char *typed;
        int text; // the message's number
    } cases[] = {
        {"X min above max", COptionsFault::PageXAxis,
         [](COptions2_Dlg &d) { return d.m_xPage->m_fields->m_min; }, "500", 43810},
        {"X tick negative", COptionsFault::PageXAxis,
         [](COptions2_Dlg &d) { return d.m_xPage->m_fields->m_tick; }, "-3", 43811},
        {"X not a number", COptionsFault::PageXAxis,
         [](COptions2_Dlg &d) { return d.m_xPage->m_fields->m_max; }, "ten", 43813},
        {"Y log reaching 0", COptionsFault::PageYAxis,
         [](COptions2_Dlg &d) {
             auto *f = d.m_yPage->m_children.at(0)->m_fields;
             f->m_automatic->setChecked(false);
             f->m_log->setChecked(true);
             return f->m_min;
         },
         "0", 43812},
        {"screen colour typed wrong", COptionsFault::PageScreen,
         [](COptions2_Dlg &d) { return d.m_screenPage->m_grid->Edit(); }, "#12345G", 43815},
        {"curve colour typed wrong", COptionsFault::PageCurves,
         [](COptions2_Dlg &d) { return d.m_curvePage->m_list->ColorField(0)->Edit(); }, "greenish", 43815},
    };
    const std::string before = fingerprint(m_graph);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        m_prompts.messages.clear();
        COptions2_Dlg dialog(m_graph, c.page);
        dialog.show();
        dialog.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
        QLineEdit *field = c.edit(dialog);
        field->setText(QString::fromLatin1(c.typed));
        dialog.accept();
        EXPECT_NE(dialog.result(), QDialog::Accepted);
        EXPECT_TRUE(dialog.isVisible());
        ASSERT_EQ(m_prompts.messages.size(), 1);
        const QString start = LanguageString(c.text).section(QStringLiteral("%1"), 0, 0);
        EXPECT_TRUE(m_prompts.messages[0].startsWith(start)) << m_prompts.messages[0].toStdString();
        EXPECT_EQ(dialog.Tabs()->currentWidget(), dialog.Page(c.page));
        EXPECT_EQ(QApplication::focusWidget(), field);
        EXPECT_EQ(field->selectedText(), QString::fromLatin1(c.typed));
        EXPECT_EQ(fingerprint(m_graph), before);
        dialog.reject();
        EXPECT_EQ(fingerprint(m_graph), before);
    }
}

TEST_F(Options2Dlg, CancelLeavesTheGraphAsItWas)
{
    const std::string before = fingerprint(m_graph);
    COptions2_Dlg dialog(m_graph, COptionsFault::PageCurves);
    dialog.m_curvePage->m_list->setCurrentCell(0, 0);
    dialog.m_curvePage->DeleteCurrent();
    dialog.Tabs()->setCurrentWidget(dialog.m_xPage);
    dialog.m_xPage->m_fields->m_min->setText(QStringLiteral("3"));
    dialog.Tabs()->setCurrentWidget(dialog.m_screenPage);
    dialog.m_screenPage->m_back->Edit()->setText(QStringLiteral("black"));
    dialog.reject();
    EXPECT_EQ(fingerprint(m_graph), before);
    EXPECT_EQ(m_graph.CurveCount(), 2);
}

TEST_F(Options2Dlg, OpeningAndAcceptingChangesNothing)
{
    m_graph.m_xAxisFlags |= CGraph_Range::AxisMinorGrid;
    m_graph.Range(0)->m_gridPenStyle = 2;
    // Ends that print rounded: a log X axis, a Y axis by hand.
    m_graph.FitX(true);
    m_graph.SetXRange(false, false, 0.1234567890123456, 1.987654321098765, 1, true, false);
    m_graph.Range(0)->m_autoScale = 0;
    m_graph.SetYRange(0, false, false, 1.0 / 3, 200.0 / 3, 10, true, false);
    const std::string before = fingerprint(m_graph);
    COptions2_Dlg dialog(m_graph, -1);
    for (int i = 0; i < dialog.Tabs()->count(); ++i)
        dialog.Tabs()->setCurrentIndex(i);
    dialog.accept();
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    EXPECT_EQ(fingerprint(m_graph), before);
    EXPECT_EQ(m_graph.Range(0)->m_gridPenStyle, 2);
}

TEST_F(Options2Dlg, ScopeAndSpectrumGraphsHideTheirControls)
{
    {
        COptions2_Dlg dialog(m_graph, COptionsFault::PageXAxis);
        dialog.show();
        EXPECT_TRUE(dialog.m_xPage->m_fields->isVisible());
        EXPECT_TRUE(dialog.m_xPage->m_fields->m_log->isVisible());
        EXPECT_FALSE(dialog.m_xPage->m_scopeNote->isVisible());
    }
    m_graph.m_spectrumMode = 1;
    {
        COptions2_Dlg dialog(m_graph, COptionsFault::PageXAxis);
        dialog.show();
        EXPECT_TRUE(dialog.m_xPage->m_fields->isVisible());
        EXPECT_FALSE(dialog.m_xPage->m_fields->m_log->isVisible());
    }
    m_graph.m_spectrumMode = 0;
    CGraphCurve scope(2);
    scope.m_data.Create(1, 2, 10, 0);
    COptions2_Dlg dialog(scope, COptionsFault::PageXAxis);
    dialog.show();
    EXPECT_FALSE(dialog.m_xPage->m_fields->isVisible());
    EXPECT_TRUE(dialog.m_xPage->m_scopeNote->isVisible());
}

TEST_F(Options2Dlg, RemembersItsLastPage)
{
    {
        COptions2_Dlg dialog(m_graph, COptionsFault::PageScreen);
        dialog.reject();
    }
    COptions2_Dlg again(m_graph, -1);
    EXPECT_EQ(again.Tabs()->currentWidget(), again.m_screenPage);
}

TEST_F(Options2Dlg, SaveAsDefaultKeepsWhatThePagesShowForNewGraphs)
{
    const struct
    {
        const char *name;
        std::function<void(COptions2_Dlg &)> edit;
        bool saved;
        std::function<void(const CGraphGlobalData &)> check; // the defaults as stored
    } cases[] = {
        {"screen colours",
         [](COptions2_Dlg &d) {
             d.Tabs()->setCurrentWidget(d.m_screenPage);
             d.m_screenPage->m_back->Edit()->setText(QStringLiteral("#102030"));
             d.m_screenPage->m_hideLabels->setChecked(true);
         },
         true,
         [](const CGraphGlobalData &s) {
             EXPECT_EQ(s.m_backColor, 0x302010u); // 0x00BBGGRR
             EXPECT_EQ(s.m_hideLabels, 1);
         }},
        {"X grid and the first Y axis's text colour",
         [](COptions2_Dlg &d) {
             d.Tabs()->setCurrentWidget(d.m_xPage);
             d.m_xPage->m_fields->m_minorGrid->setChecked(true);
             d.Tabs()->setCurrentWidget(d.m_yPage);
             d.m_yPage->m_children.at(0)->m_textColor->Edit()->setText(QStringLiteral("#0000FF"));
         },
         true,
         [](const CGraphGlobalData &s) {
             EXPECT_TRUE(s.m_xAxisFlags & CGraph_Range::AxisMinorGrid);
             EXPECT_EQ(s.m_yTextColor, 0xFF0000u);
             EXPECT_EQ(s.m_backColor, 0xFFFFFFu); // the graph's own, unchanged
         }},
        {"a wrong field saves nothing",
         [](COptions2_Dlg &d) {
             d.Tabs()->setCurrentWidget(d.m_screenPage);
             d.m_screenPage->m_back->Edit()->setText(QStringLiteral("#12345G"));
         },
         false, [](const CGraphGlobalData &s) { EXPECT_TRUE(s == CGraphGlobalData()); }},
    };
    m_graph.m_backColor = 0xFFFFFF;
    const std::string before = fingerprint(m_graph);
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        QSettings(QSettings::NativeFormat, QSettings::UserScope, QStringLiteral("HELIOMAR"), QStringLiteral("TARN"))
            .remove(CGraphGlobalData::DefaultKey());
        GetGraphGlobalData() = CGraphGlobalData();
        m_prompts.messages.clear();
        COptions2_Dlg dialog(m_graph, -1);
        c.edit(dialog);
        EXPECT_EQ(dialog.SaveAsDefault(), c.saved);
        EXPECT_EQ(m_prompts.messages.size(), 1); // saved, or what is wrong
        // Kept for the next start: read back from the settings.
        CGraphGlobalData stored;
        EXPECT_EQ(stored.Load() > 0, c.saved);
        c.check(stored);
        EXPECT_TRUE(stored == GetGraphGlobalData());
        // The graph changes on OK only; a new graph takes the defaults.
        EXPECT_EQ(fingerprint(m_graph), before);
        dialog.reject();
        CGraphCurve fresh;
        fill(fresh);
        GetGraphGlobalData().ApplyTo(fresh);
        CGraphGlobalData taken;
        taken.TakeFrom(fresh);
        EXPECT_TRUE(taken == stored);
    }
    GetGraphGlobalData() = CGraphGlobalData();
}

// The Y axes are pages of a scrolled parent: each child is handed to it, and
// a wrong field on an axis far down brings that axis into view.
TEST_F(Options2Dlg, WrongAxisFarDownIsScrolledIntoView)
{
    for (int i = 0; i < 5; ++i) {
        const int axis = m_graph.AddRange(nullptr);
        m_graph.Range(axis)->m_autoScale = 0;
        m_graph.SetYRange(axis, false, false, 0, 10 * (i + 1), 0, false, true);
    }
    const int axes = m_graph.RangeCount();
    const std::string before = fingerprint(m_graph);
    const struct
    {
        int axis;
        bool scrolled; // the view had to move to show it
    } cases[] = {{0, false}, {axes - 1, true}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.axis);
        m_prompts.messages.clear();
        COptions2_Dlg dialog(m_graph, COptionsFault::PageYAxis);
        dialog.resize(520, 420);
        dialog.show();
        dialog.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
        CScrollParent *scroll = dialog.m_yPage->m_scroll;
        ASSERT_EQ(scroll->PageCount(), axes);
        for (int i = 0; i < axes; ++i)
            EXPECT_EQ(scroll->Page(i), dialog.m_yPage->m_children.at(i));
        CAxisFieldsBox *f = dialog.m_yPage->m_children.at(c.axis)->m_fields;
        f->m_automatic->setChecked(false);
        f->m_min->setText(QStringLiteral("900"));
        f->m_max->setText(QStringLiteral("1"));
        dialog.accept();
        EXPECT_NE(dialog.result(), QDialog::Accepted);
        EXPECT_EQ(QApplication::focusWidget(), f->m_min);
        EXPECT_EQ(scroll->verticalScrollBar()->value() > 0, c.scrolled);
        const QRect shown = scroll->viewport()->rect();
        const QPoint at = f->m_min->mapTo(scroll->viewport(), QPoint(0, 0));
        EXPECT_TRUE(shown.contains(at)) << at.x() << "," << at.y();
        dialog.reject();
        EXPECT_EQ(fingerprint(m_graph), before);
    }
}
