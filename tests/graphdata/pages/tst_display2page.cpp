// The display page and the user limit page of the option dialog, on a real
// graph: what is shown reaches the graph on acceptance, a formula that does
// not compile keeps the dialog open with its text selected and the graph as
// it was, and user limits reach the shared list and the settings at once.
#include "graphdata/emi/emilimits.h"
#include "graphdata/formula/formulacurve.h"
#include "graphdata/formula/graphcustom.h"
#include "graphdata/graphcurve.h"
#include "graphdata/pages/curve2page.h"
#include "graphdata/pages/display2page.h"
#include "graphdata/pages/screen2page.h"
#include "graphdata/pages/xaxis2page.h"
#include "graphdata/pages/options2dlg.h"
#include "graphdata/pages/useremipage.h"
#include "optionsfixture.h"
#include "support/registry.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QStandardItemModel>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <memory>
#include <string>

namespace {

const QString kKey = QStringLiteral("Software\\HELIOMAR\\TARN\\UserEMI");
const QString kFunctionKey = QStringLiteral("Software\\HELIOMAR\\TARN\\UserFunction");

// The curves and modes of a graph, which the display page changes.
std::string curvesOf(const CGraphCurve &g)
{
    QString s = QStringLiteral("xy%1 x%2\n").arg(g.m_xyMode).arg(g.m_xColumnIndex);
    for (const CCurveInfo *c : g.m_curves)
        s += QStringLiteral("%1 %2 [%3]\n").arg(c->m_source).arg(c->m_colIndex).arg(c->m_colName);
    return s.toStdString() + fingerprint(g);
}

// The start of a numbered text, up to its first argument.
QString textStart(int id) { return LanguageString(id).section(u'%', 0, 0); }

class DisplayPage : public Options2Dlg
{
protected:
    static void SetUpTestSuite()
    {
        Options2Dlg::SetUpTestSuite();
        InstallFormulaCurves();
    }
    void SetUp() override
    {
        Options2Dlg::SetUp();
        freshSettings();
        ResetGraphCustom();
    }
    void TearDown() override
    {
        Options2Dlg::TearDown();
        ForgetEmiLimits();
    }
    // Empty settings, and the limit list read from them again.
    void freshSettings()
    {
        m_fresh = std::make_unique<QTemporaryDir>();
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_fresh->path());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_fresh->path());
        ForgetEmiLimits();
    }
    static int savedCount() { return int(RegistryGetDword(kKey, QStringLiteral("EMICount"), 0)); }

    std::unique_ptr<QTemporaryDir> m_fresh;
};

} // namespace

TEST_F(DisplayPage, AcceptedChoicesReachTheGraph)
{
    const struct
    {
        const char *name;
        bool spectrum;
        std::function<void(CDisplay_2_Page *)> edit;
        std::function<void(const CGraphCurve &)> check;
    } cases[] = {
        {"a shown column taken out",
         false,
         [](CDisplay_2_Page *p) {
             p->m_display->item(0)->setSelected(true);
             p->RemoveSelected();
         },
         [](const CGraphCurve &g) {
             ASSERT_EQ(g.CurveCount(), 1);
             EXPECT_EQ(g.Curve(0)->m_colIndex, 2);
         }},
        {"a column of the source list added behind the others",
         false,
         [](CDisplay_2_Page *p) {
             ASSERT_EQ(p->m_source->count(), 1); // Time: U and V are shown
             p->m_source->item(0)->setSelected(true);
             p->AddSelected();
             EXPECT_EQ(p->m_source->count(), 0);
         },
         [](const CGraphCurve &g) {
             ASSERT_EQ(g.CurveCount(), 3);
             EXPECT_EQ(g.Curve(2)->Origin(), CCurveBasicInfo::OriginColumn);
             EXPECT_EQ(g.Curve(2)->m_colIndex, 0);
             // a colour of its own
             EXPECT_NE(g.Curve(2)->m_color, g.Curve(0)->m_color);
             EXPECT_NE(g.Curve(2)->m_color, g.Curve(1)->m_color);
         }},
        {"a formula built with an insertion button at the caret",
         false,
         [](CDisplay_2_Page *p) {
             QLineEdit *f = p->m_vector->m_formula;
             f->setText(QStringLiteral("U*V)"));
             f->setCursorPosition(2);
             QTest::mouseClick(p->m_vector->m_inserts.at(CDisplay_2_VectorChild::InsertTexts().indexOf(QStringLiteral("ABS("))),
                              Qt::LeftButton);
             EXPECT_EQ(f->text(), QStringLiteral("U*ABS(V)"));
             EXPECT_TRUE(p->AddFormula());
         },
         [](const CGraphCurve &g) {
             ASSERT_EQ(g.CurveCount(), 3);
             const CCurveInfo *c = g.Curve(2);
             EXPECT_EQ(c->Origin(), CCurveBasicInfo::OriginComputed);
             EXPECT_EQ(c->m_colName, QStringLiteral("U*ABS(V)"));
             ASSERT_TRUE(c->m_computedColumn);
             EXPECT_DOUBLE_EQ(c->m_computedColumn->m_values[0], 198);  // 1 * |198|
             EXPECT_DOUBLE_EQ(c->m_computedColumn->m_values[99], 0);   // 100 * |0|
         }},
        {"X over a column draws X-Y",
         false, [](CDisplay_2_Page *p) { p->m_xColumn->setCurrentIndex(CDisplay_2_Page::XFirstColumn + 1); },
         [](const CGraphCurve &g) {
             EXPECT_EQ(g.m_xyMode, 1);
             EXPECT_EQ(g.m_xColumnIndex, 1);
         }},
        {"a limit line over a spectrum, in dB",
         true, [](CDisplay_2_Page *p) { p->m_emi->setCurrentIndex(p->m_emi->findData(2)); },
         [](const CGraphCurve &g) {
             int limits = 0;
             for (const CCurveInfo *c : g.m_curves) {
                 if (c->IsLimitLine()) {
                     ++limits;
                     EXPECT_EQ(c->m_colIndex, 2);
                     EXPECT_EQ(c->m_colName, GetEmiLimits().GetAt(2)->m_colName);
                 }
             }
             EXPECT_EQ(limits, 1);
             EXPECT_EQ(g.Range(0)->m_dbScale, 1);
         }},
        {"a limit taken out of the shown list stays out",
         true,
         [](CDisplay_2_Page *p) {
             p->m_emi->setCurrentIndex(p->m_emi->findData(1));
             ASSERT_EQ(p->m_display->count(), 3);
             p->m_display->item(2)->setSelected(true);
             p->RemoveSelected();
             EXPECT_EQ(p->m_emi->currentData().toInt(), -1);
         },
         [](const CGraphCurve &g) {
             ASSERT_EQ(g.CurveCount(), 2);
             EXPECT_FALSE(g.Curve(0)->IsLimitLine() || g.Curve(1)->IsLimitLine());
         }},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        CGraphCurve graph;
        fill(graph);
        graph.m_spectrumMode = c.spectrum ? 1 : 0;
        m_prompts.messages.clear();
        COptions2_Dlg dialog(graph, COptionsFault::PageDisplay);
        ASSERT_EQ(dialog.Tabs()->currentWidget(), dialog.m_displayPage);
        c.edit(dialog.m_displayPage);
        dialog.accept();
        EXPECT_EQ(dialog.result(), QDialog::Accepted);
        EXPECT_TRUE(m_prompts.messages.isEmpty()) << m_prompts.messages.join(u'|').toStdString();
        c.check(graph);
    }
}

// Curves added on one page and styled on the other both arrive: no page
// writes its stale list over the other's.
TEST_F(DisplayPage, CurveAndDisplayPagesAgree)
{
    COptions2_Dlg dialog(m_graph, COptionsFault::PageDisplay);
    dialog.m_displayPage->m_vector->m_formula->setText(QStringLiteral("U-V"));
    dialog.m_displayPage->AddFormula();
    dialog.m_displayPage->m_display->item(0)->setSelected(true);
    dialog.m_displayPage->RemoveSelected();
    dialog.Tabs()->setCurrentWidget(dialog.m_curvePage);
    dialog.Tabs()->setCurrentWidget(dialog.m_xPage);
    dialog.accept();
    ASSERT_EQ(dialog.result(), QDialog::Accepted);
    ASSERT_EQ(m_graph.CurveCount(), 2);
    EXPECT_EQ(m_graph.Curve(0)->m_colIndex, 2);
    EXPECT_EQ(m_graph.Curve(1)->m_colName, QStringLiteral("U-V"));
}

// A formula that does not compile, whether typed and accepted at once, added
// with the button, or taken from the saved formulas (checked only on
// acceptance, here from another page): the message, the dialog open on the
// display page with the formula selected in the entry, the graph untouched.
TEST_F(DisplayPage, FormulaThatDoesNotCompileKeepsTheDialogOpen)
{
    enum Route { TypedAndAccepted, AddButton, SavedFormula };
    const char *const formulas[] = {"U*(", "NoSuchColumn+1", "SIN(U"};
    const std::string before = curvesOf(m_graph);
    for (const Route route : {TypedAndAccepted, AddButton, SavedFormula}) {
        for (const char *formula : formulas) {
            SCOPED_TRACE(std::string(formula) + " route " + std::to_string(int(route)));
            const QString text = QString::fromLatin1(formula);
            RegistrySetDword(kFunctionKey, QStringLiteral("FormulaCount"), 1);
            RegistrySetString(kFunctionKey, QStringLiteral("Formula1"), QStringLiteral("Mine{%1}").arg(text));
            ResetGraphCustom();
            m_prompts.messages.clear();
            COptions2_Dlg dialog(m_graph, COptionsFault::PageDisplay);
            dialog.show();
            dialog.activateWindow();
            ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
            CDisplay_2_Page *page = dialog.m_displayPage;
            switch (route) {
            case TypedAndAccepted:
                page->m_vector->m_formula->setText(text);
                dialog.accept();
                break;
            case AddButton:
                page->m_vector->m_formula->setText(text);
                EXPECT_FALSE(page->AddFormula());
                break;
            case SavedFormula: {
                const QList<QListWidgetItem *> saved = page->m_source->findItems(QStringLiteral("Mine"), Qt::MatchExactly);
                ASSERT_EQ(saved.size(), 1);
                saved[0]->setSelected(true);
                page->AddSelected();
                EXPECT_EQ(page->m_display->count(), 3);
                dialog.Tabs()->setCurrentWidget(dialog.m_screenPage);
                dialog.accept();
                break;
            }
            }
            EXPECT_NE(dialog.result(), QDialog::Accepted);
            EXPECT_TRUE(dialog.isVisible());
            ASSERT_EQ(m_prompts.messages.size(), 1);
            EXPECT_TRUE(m_prompts.messages[0].startsWith(textStart(43880))) << m_prompts.messages[0].toStdString();
            EXPECT_EQ(dialog.Tabs()->currentWidget(), page);
            EXPECT_EQ(QApplication::focusWidget(), page->m_vector->m_formula);
            EXPECT_EQ(page->m_vector->m_formula->selectedText(), text);
            EXPECT_EQ(page->m_display->count(), 2);
            EXPECT_EQ(curvesOf(m_graph), before);
            dialog.reject();
            EXPECT_EQ(curvesOf(m_graph), before);
        }
    }
}

TEST_F(DisplayPage, CancelLeavesTheCurvesAsTheyWere)
{
    const std::string before = curvesOf(m_graph);
    COptions2_Dlg dialog(m_graph, COptionsFault::PageDisplay);
    CDisplay_2_Page *page = dialog.m_displayPage;
    page->m_display->item(1)->setSelected(true);
    page->RemoveSelected();
    page->m_vector->m_formula->setText(QStringLiteral("U*2"));
    page->AddFormula();
    page->m_xColumn->setCurrentIndex(CDisplay_2_Page::XFirstColumn + 2);
    dialog.Tabs()->setCurrentWidget(dialog.m_curvePage);
    dialog.reject();
    EXPECT_EQ(curvesOf(m_graph), before);
}

TEST_F(DisplayPage, GraphKindsHideOrLockTheXList)
{
    const struct
    {
        const char *name;
        int kind;
        bool spectrum;
        bool xShown, xEnabled, limitEnabled;
        int x;
    } cases[] = {
        {"time graph", 1, false, true, true, false, CDisplay_2_Page::XTime},
        {"spectrum", 1, true, true, false, true, CDisplay_2_Page::XFrequency},
        {"oscilloscope", 2, false, false, true, false, CDisplay_2_Page::XTime},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        CGraphCurve graph(c.kind);
        graph.m_data.Create(1, 2, 10, 0);
        graph.m_spectrumMode = c.spectrum;
        COptions2_Dlg dialog(graph, COptionsFault::PageDisplay);
        dialog.show();
        CDisplay_2_Page *page = dialog.m_displayPage;
        EXPECT_EQ(page->m_xColumn->isVisible(), c.xShown);
        EXPECT_EQ(page->m_xColumn->isEnabled(), c.xEnabled);
        EXPECT_EQ(page->m_emi->isEnabled(), c.limitEnabled);
        EXPECT_EQ(page->m_xColumn->currentIndex(), c.x);
        EXPECT_EQ(page->m_xColumn->itemText(CDisplay_2_Page::XFirstColumn - 1), QStringLiteral("Index"));
    }
}

// ---- user limits ---------------------------------------------------------------

TEST_F(DisplayPage, UserLimitsAddedOrRefused)
{
    const struct
    {
        const char *name;
        const char *key, *label, *pairs;
        int message; // 0: added
    } cases[] = {
        {"added", "Mine", "My limit", "150000 60\n1e6 50", 0},
        {"label taken from the key", "Solo", "", "150000 60", 0},
        {"no key", "  ", "x", "150000 60", 43893},
        {"a line without a level", "K", "L", "150000 60\n2e6", 43894},
        {"a level that is no number", "K", "L", "150000 sixty", 43894},
        {"no pairs", "K", "L", "\n\n", 43895},
        {"key of a built-in", "FCC_ClassA", "Other", "1 2", 43896},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        freshSettings();
        m_prompts.messages.clear();
        COptions2_Dlg dialog(m_graph, COptionsFault::PageEmi);
        CUserEMI *page = dialog.m_emiPage;
        const int before = GetEmiLimits().GetSize();
        page->m_key->setText(QString::fromLatin1(c.key));
        page->m_label->setText(QString::fromLatin1(c.label));
        page->m_pairs->setPlainText(QString::fromLatin1(c.pairs));
        const bool added = page->AddLimit();
        EXPECT_EQ(added, c.message == 0);
        if (c.message) {
            EXPECT_EQ(GetEmiLimits().GetSize(), before);
            ASSERT_EQ(m_prompts.messages.size(), 1);
            EXPECT_TRUE(m_prompts.messages[0].startsWith(textStart(c.message))) << m_prompts.messages[0].toStdString();
            continue;
        }
        EXPECT_TRUE(m_prompts.messages.isEmpty());
        ASSERT_EQ(GetEmiLimits().GetSize(), before + 1);
        EXPECT_EQ(page->m_list->count(), 1);
        // Taken at once: a fresh read of the settings finds it.
        ForgetEmiLimits();
        ASSERT_EQ(GetEmiLimits().GetSize(), before + 1);
        const CCurveInfo *limit = GetEmiLimits().GetAt(before);
        EXPECT_FALSE(limit->m_colLabel.isEmpty());
        EXPECT_EQ(EmiLimitPairs(*limit).size(), QString::fromLatin1(c.pairs).count(u'\n') + 1u);
    }
}

TEST_F(DisplayPage, RemovingAUserLimitRenumbersTheRestAndTheGraphsLimit)
{
    COptions2_Dlg dialog(m_graph, COptionsFault::PageEmi);
    CUserEMI *page = dialog.m_emiPage;
    const int builtIns = EmiBuiltInCount();
    for (const char *key : {"First", "Second"}) {
        page->m_key->setText(QString::fromLatin1(key));
        page->m_label->clear();
        page->m_pairs->setPlainText(QStringLiteral("150000 60"));
        ASSERT_TRUE(page->AddLimit());
    }
    // The graph shows the second one, as a spectrum.
    m_graph.m_spectrumMode = 1;
    ASSERT_GE(AddEmiLimitToGraph(m_graph, builtIns + 1), 0);
    COptions2_Dlg again(m_graph, COptionsFault::PageEmi);
    again.m_emiPage->m_list->setCurrentRow(0);
    ASSERT_TRUE(again.m_emiPage->RemoveSelected());
    EXPECT_EQ(again.m_emiPage->m_list->count(), 1);
    ASSERT_EQ(GetEmiLimits().GetSize(), builtIns + 1);
    EXPECT_EQ(GetEmiLimits().GetAt(builtIns)->m_colName, QStringLiteral("Second"));
    EXPECT_EQ(savedCount(), 1);
    EXPECT_TRUE(RegistryGetString(kKey, QStringLiteral("EMI2"), QString()).isEmpty());
    again.accept();
    ASSERT_EQ(again.result(), QDialog::Accepted);
    int shown = -1;
    for (const CCurveInfo *c : m_graph.m_curves)
        shown = c->IsLimitLine() ? c->m_colIndex : shown;
    EXPECT_EQ(shown, builtIns);
}

TEST_F(DisplayPage, LimitFilesLoadedOrRefused)
{
    QTemporaryDir dir;
    const auto write = [&](const char *name, const char *text) {
        QFile f(dir.filePath(QString::fromLatin1(name)));
        EXPECT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(text);
        return f.fileName();
    };
    const struct
    {
        const char *name;
        QString path;
        int message; // 0: loaded
    } cases[] = {
        {"good", write("good.lim", "[Limit]\nName=Lab\nLabel=Lab limit\nCount=2\n[Data]\nFreq1=150000\nValue1=70\n"
                                   "Freq2=1000000\nValue2=60\n"),
         0},
        {"missing", dir.filePath(QStringLiteral("none.lim")), 43760},
        {"no header", write("nohead.lim", "[Data]\nFreq1=1\nValue1=2\n"), 43761},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        freshSettings();
        m_prompts.messages.clear();
        COptions2_Dlg dialog(m_graph, COptionsFault::PageEmi);
        const int before = GetEmiLimits().GetSize();
        EXPECT_EQ(dialog.m_emiPage->LoadFile(c.path), c.message == 0);
        if (c.message) {
            ASSERT_EQ(m_prompts.messages.size(), 1);
            EXPECT_TRUE(m_prompts.messages[0].startsWith(textStart(c.message).section(u'%', 0, 0)))
                << m_prompts.messages[0].toStdString();
            EXPECT_EQ(GetEmiLimits().GetSize(), before);
        } else {
            ASSERT_EQ(GetEmiLimits().GetSize(), before + 1);
            EXPECT_EQ(EmiLimitPairs(*GetEmiLimits().GetAt(before)).size(), 2u);
            EXPECT_EQ(dialog.m_emiPage->m_key->text(), QStringLiteral("Lab"));
            EXPECT_EQ(savedCount(), 1);
        }
    }
}

// "Index" draws the curves over the row numbers 1..n, the X list shows it
// when the dialog opens again, and Time or a column take its place.
TEST_F(DisplayPage, IndexDrawsOverTheRowNumbers)
{
    using P = CDisplay_2_Page;
    const struct
    {
        const char *name;
        std::vector<int> picks; // X entries chosen, one dialog each
        int xColumn, xy;        // of the graph at the end (2: the row numbers)
        const char *title;      // of the X axis
    } cases[] = {
        {"index", {P::XIndex}, 2, 0, "Index"},
        {"index twice adds one column", {P::XIndex, P::XIndex}, 2, 0, "Index"},
        {"back to time", {P::XIndex, P::XTime}, 0, 0, "Time"},
        {"then a column", {P::XIndex, P::XFirstColumn + 1}, 1, 1, "U"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        // Time 0.5 r^2 over 40 rows, U = r.
        CGraphCurve graph;
        graph.m_data.Create(1, 2, 40, 0);
        graph.m_data.GetColumn(0)->m_name = QStringLiteral("Time");
        graph.m_data.GetColumn(1)->m_name = QStringLiteral("U");
        for (int r = 0; r < 40; ++r) {
            const double row[2] = {0.5 * r * r, double(r)};
            graph.m_data.AppendRows(row, nullptr, 0, 2, r, 1);
        }
        bool changed;
        graph.AddCurve(1, 0, true, changed);
        graph.m_xAxisName = QStringLiteral("Time"); // as a window names it
        for (int pick : c.picks) {
            COptions2_Dlg dialog(graph, COptionsFault::PageDisplay);
            QComboBox *x = dialog.m_displayPage->m_xColumn;
            EXPECT_TRUE(qobject_cast<QStandardItemModel *>(x->model())->item(P::XIndex)->isEnabled());
            x->setCurrentIndex(pick);
            dialog.accept();
            ASSERT_EQ(dialog.result(), QDialog::Accepted);
        }
        EXPECT_EQ(graph.m_data.ColumnCount(), 3);
        EXPECT_EQ(graph.m_xColumnIndex, c.xColumn);
        EXPECT_EQ(graph.m_xyMode, c.xy);
        EXPECT_EQ(graph.m_xAxisName, QString::fromLatin1(c.title));
        const CGraphColumn *numbers = graph.m_data.GetColumn(2);
        for (int r = 0; r < 40; ++r)
            ASSERT_EQ(numbers->m_values[r], r + 1.0) << r;
        if (c.xColumn == 2) {
            // The X axis shows the rows, not the time they were taken at.
            EXPECT_LE(graph.m_xViewMin, 1);
            EXPECT_GE(graph.m_xViewMax, 40);
            EXPECT_LT(graph.m_xViewMax, 0.5 * 39 * 39);
        }
        COptions2_Dlg again(graph, COptionsFault::PageDisplay);
        EXPECT_EQ(again.m_displayPage->m_xColumn->currentIndex(), c.xColumn == 2 ? int(P::XIndex) : c.picks.back());
        again.reject();
    }
}
