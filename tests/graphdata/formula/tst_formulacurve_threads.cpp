// A computed curve stopped from another thread while it runs on a worker:
// the run ends, leaves no column, and the graph keeps what it had.  Stop is
// called again until the worker is done, as the progress box's Cancel does,
// so nothing here depends on timing.
#include "graphdata/formula/formulacurve.h"
#include "graphdata/formula/graphcustom.h"
#include "graphdata/formula/graphnodes.h"

#include "graphdata/graphcurve.h"

#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

void fillGraph(CGraphCurve &graph, int rows)
{
    graph.m_data.Create(1, 2, rows, 0);
    graph.m_data.GetColumn(0)->m_name = u"Time"_s;
    graph.m_data.GetColumn(1)->m_name = u"V1"_s;
    std::vector<double> values(std::size_t(rows) * 2);
    for (int r = 0; r < rows; ++r) {
        values[std::size_t(r) * 2] = r * 1e-3;
        values[std::size_t(r) * 2 + 1] = r % 7;
    }
    graph.m_data.AppendRows(values.data(), nullptr, 0, 2, 0, rows);
    bool changed;
    graph.AddCurve(1, 0, true, changed);
}

// Runs the job on a worker and stops it: at once when `early`, else once
// it has made progress or is known to loop.
void runAndStop(CFormulaCurveJob &job, bool waitForProgress)
{
    std::thread worker([&job] { job.Run(); });
    if (waitForProgress) {
        while (job.Progress() <= 0.0 && !job.IsFinished())
            std::this_thread::yield();
    }
    while (!job.IsFinished()) {
        job.Stop();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    worker.join();
}

class FormulaCurveThreads : public ::testing::TestWithParam<const char *>
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_settings.isValid());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settings.path());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settings.path());
        ResetGraphCustom();
        GetGraphCustom().SaveFunctions({u"spin{i = 0; while (1) { i = i+1 }; GRAPH}"_s});
        ReloadUserFunctions();
    }
    void TearDown() override
    {
        ResetGraphCustom();
        ReloadUserFunctions();
    }
    QTemporaryDir m_settings;
};

} // namespace

// Each formula runs until it is stopped: per row, in a user function's
// own tree before the rows, or in one script filling the curve.
TEST_P(FormulaCurveThreads, StopEndsTheRunWithoutAColumn)
{
    CGraphCurve graph;
    fillGraph(graph, 1000);
    CFormulaCurveJob job;
    ASSERT_TRUE(job.Prepare(graph, QString::fromLatin1(GetParam())));
    runAndStop(job, false);
    EXPECT_TRUE(job.IsStopped());
    EXPECT_FALSE(job.Result());
    EXPECT_EQ(graph.CurveCount(), 1);
    EXPECT_FALSE(graph.Curve(0)->m_computedColumn);
}

INSTANTIATE_TEST_SUITE_P(Formulas, FormulaCurveThreads,
                         ::testing::Values("i = 0; while (i >= 0) { i = i+1 }; V1",
                                           "spin(V1) + V1",
                                           "i = 0; while (1) { SetGraph(i % 10, i); i = i+1 }"));

TEST(FormulaCurveThreadsBlocks, StopBetweenPiecesOfALongCurve)
{
    CGraphCurve graph;
    const int rows = 40 * CFormulaCurveJob::PieceRows;
    fillGraph(graph, rows);
    CFormulaCurveJob job;
    ASSERT_TRUE(job.Prepare(graph, u"sin(Time)*2 + V1"_s));
    std::thread worker([&job] { job.Run(); });
    // Stopped as soon as the first piece is done: 39 pieces are left.
    while (job.Progress() <= 0.0 && !job.IsFinished())
        std::this_thread::yield();
    job.Stop();
    worker.join();
    EXPECT_TRUE(job.IsFinished());
    if (job.Progress() < 1.0) {
        EXPECT_FALSE(job.Result());
    }
    // A job stopped before it runs does nothing.
    CFormulaCurveJob early;
    ASSERT_TRUE(early.Prepare(graph, u"V1"_s));
    early.Stop();
    early.Run();
    EXPECT_FALSE(early.Result());
    EXPECT_EQ(early.Progress(), 0.0);
}
