// Computed curves in a window: the dialog with its errors at the place, the
// progress box whose Cancel leaves the graph as it was, and the curves of
// origin 1 that ApplyCurveList now computes.
#include "ratiowindow.h"

#include "graphdata/computedcurve.h"
#include "graphdata/file/graphfileload.h"
#include "graphdata/formula/formulacurve.h"
#include "graphdata/grapherrors.h"
#include "graphdata/graphcurve.h"
#include "graphwnd/formulacurvedialog.h"
#include "graphwnd/graphwnd.h"
#include "support/controls/progressworkingdlg.h"
#include "support/languagestring.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTimer>

using namespace Qt::StringLiterals;

namespace {

class FormulaCurveWindow : public RatioWindowTest
{
protected:
    void SetUp() override
    {
        RatioWindowTest::SetUp();
        m_wnd.resize(600, 400);
    }
    void TearDown() override { SetComputedCurveEvaluator({}); }
};

} // namespace

TEST_F(FormulaCurveWindow, DialogShowsTheErrorAtItsPlaceAndStaysOpen)
{
    const struct
    {
        const char *formula;
        int position;
        const char *selected;
        const char *where;
    } cases[] = {
        {"ratio + nothing*2", 8, "nothing", "line 1, column 9"},
        {"ratio *", -1, "", ""},
    };
    for (const auto &c : cases) {
        CFormulaCurveDialog dialog(m_wnd);
        dialog.FormulaEdit()->setText(QString::fromLatin1(c.formula));
        dialog.accept();
        EXPECT_EQ(dialog.result(), QDialog::Rejected) << c.formula; // still open
        EXPECT_EQ(m_wnd.GetGraphData()->CurveCount(), 1) << c.formula;
        EXPECT_FALSE(dialog.ErrorLabel()->text().isEmpty()) << c.formula;
        if (c.position >= 0) {
            EXPECT_TRUE(dialog.ErrorLabel()->text().contains(QString::fromLatin1(c.where)))
                << dialog.ErrorLabel()->text().toStdString();
            EXPECT_EQ(dialog.FormulaEdit()->selectedText(), QString::fromLatin1(c.selected));
            EXPECT_EQ(dialog.FormulaEdit()->selectionStart(), c.position);
        }
    }
}

TEST_F(FormulaCurveWindow, DialogAddsANamedCurveWithGaps)
{
    int reports = 0;
    const GraphErrorReporter old = SetGraphErrorReporter([&reports](int, const QString &) { ++reports; });
    CFormulaCurveDialog dialog(m_wnd);
    dialog.NameEdit()->setText(u"scaled"_s);
    dialog.FormulaEdit()->setText(u"ratio*100 + t"_s);
    dialog.accept();
    SetGraphErrorReporter(old);
    EXPECT_EQ(dialog.result(), QDialog::Accepted);
    CGraphCurve &graph = *m_wnd.GetGraphData();
    ASSERT_EQ(graph.CurveCount(), 2);
    const CCurveInfo &curve = *graph.Curve(1);
    EXPECT_EQ(curve.Origin(), int(CCurveBasicInfo::OriginComputed));
    EXPECT_EQ(curve.m_colLabel, u"scaled"_s);
    EXPECT_EQ(curve.m_colName, u"ratio*100 + t"_s);
    ASSERT_TRUE(curve.m_computedColumn);
    EXPECT_EQ(curve.m_computedColumn->m_count, 50);
    EXPECT_DOUBLE_EQ(curve.m_computedColumn->m_values[1], 50.1);
    EXPECT_NE(curve.m_computedColumn->m_valid[4], 1); // ratio is invalid there
    EXPECT_EQ(reports, 0);                             // a gap of the input is no failure
    EXPECT_NE(curve.m_color, graph.Curve(0)->m_color);
    // The picture with the new curve draws.
    EXPECT_FALSE(m_wnd.RenderImage(QSize(400, 300)).isNull());
}

TEST_F(FormulaCurveWindow, TheDataFileKeepsComputedColumns)
{
    CFormulaCurveJob job;
    ASSERT_EQ(AddFormulaCurveToWindow(m_wnd, u"double"_s, u"ratio*2"_s, job), 1);
    QTemporaryDir dir;
    const QString path = dir.filePath(u"computed.mrd"_s);
    ASSERT_TRUE(m_wnd.SaveDataFile(path));
    CGraphFileContent content;
    QString message;
    ASSERT_TRUE(ReadGraphFile(path, content, message)) << qPrintable(message);
    ASSERT_EQ(content.data.ColumnCount(), 3);
    const CGraphColumn *saved = content.data.GetColumn(2);
    EXPECT_EQ(saved->m_name, u"ratio*2"_s);
    ASSERT_EQ(content.data.RowCount(), 50);
    EXPECT_EQ(saved->m_values[9], 2.0 / 10);
    EXPECT_NE(saved->m_valid[4], 1);
}

TEST_F(FormulaCurveWindow, CancelLeavesTheGraphAsItWas)
{
    CGraphCurve &graph = *m_wnd.GetGraphData();
    const double viewMin = graph.m_xViewMin, viewMax = graph.m_xViewMax;
    // Presses Cancel on the progress box as soon as there is one.
    QTimer press;
    press.setInterval(5);
    QObject::connect(&press, &QTimer::timeout, [this] {
        for (CProgressWorkingDlg *box : m_wnd.findChildren<CProgressWorkingDlg *>())
            box->Cancel();
    });
    press.start();
    CFormulaCurveJob job;
    EXPECT_EQ(AddFormulaCurveToWindow(m_wnd, u"never"_s, u"i = 0; while (i >= 0) { i = i+1 }; ratio"_s, job), -1);
    press.stop();
    EXPECT_TRUE(job.IsStopped());
    EXPECT_EQ(graph.CurveCount(), 1);
    EXPECT_EQ(graph.m_xViewMin, viewMin);
    EXPECT_EQ(graph.m_xViewMax, viewMax);
    EXPECT_TRUE(m_wnd.findChildren<CProgressWorkingDlg *>().isEmpty());
}

TEST_F(FormulaCurveWindow, ApplyCurveListComputesThroughTheProgressBox)
{
    InstallFormulaCurveProgress();
    CCurveBasicInfoArray list;
    auto *column = new CCurveBasicInfo;
    column->m_colIndex = 1;
    list.Add(column);
    auto *computed = new CCurveBasicInfo;
    computed->m_source = CCurveBasicInfo::OriginComputed;
    computed->m_colName = u"sqrt(t)"_s;
    list.Add(computed);
    bool notFound = true;
    m_wnd.GetGraphData()->ApplyCurveList(list, notFound);
    EXPECT_FALSE(notFound);
    ASSERT_EQ(m_wnd.GetGraphData()->CurveCount(), 2);
    const CGraphColumn *result = m_wnd.GetGraphData()->Curve(1)->m_computedColumn.Get();
    ASSERT_TRUE(result);
    EXPECT_DOUBLE_EQ(result->m_values[49], std::sqrt(4.9));
}
