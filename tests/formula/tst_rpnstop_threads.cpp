// Stop from a second thread: a run or a series in progress ends at its next
// node.  The host's getter tells the test thread where the run is, so that
// nothing depends on timing.

#include "formula/rpntree.h"

#include "formulatest.h"

#include <gtest/gtest.h>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace {

struct Meeting
{
    std::mutex lock;
    std::condition_variable changed;
    bool running = false;  // the run has reached the place
    bool stopped = false;  // the test thread has called Stop
    int waitAtRow = -1;    // a series waits here until stopped
    int reads = 0;
};

void meetingGet(CRpnData &result, int, int row, void *data, void *, CRpnNode *, const QString &name, int &found)
{
    if (name != u"tick") {
        found = 0;
        return;
    }
    auto *m = static_cast<Meeting *>(data);
    std::unique_lock guard(m->lock);
    ++m->reads;
    if (!m->running && (m->waitAtRow < 0 || row == m->waitAtRow)) {
        m->running = true;
        m->changed.notify_all();
        if (m->waitAtRow >= 0)
            m->changed.wait(guard, [m] { return m->stopped; });
    }
    result.SetDouble(row);
}

void stopWhenRunning(CEquationTree &tree, Meeting &meeting)
{
    std::unique_lock guard(meeting.lock);
    meeting.changed.wait(guard, [&meeting] { return meeting.running; });
    tree.Stop();
    meeting.stopped = true;
    meeting.changed.notify_all();
}

} // namespace

TEST(RpnStopThreads, StopEndsALoopWithoutEnd)
{
    CEquationTree tree;
    tree.m_freeVariables = 1;
    tree.SetVariableAccess(meetingGet, nullptr);
    // A million passes of a million passes: it ends only by Stop.
    ASSERT_TRUE(tree.Compile(QStringLiteral("n = 0; while (1) { while (1) { n = tick } }; 5")));
    Meeting meeting;
    unsigned char status = 0;
    std::thread run([&] { tree.Run(&meeting, nullptr, nullptr, &status); });
    stopWhenRunning(tree, meeting);
    run.join();
    EXPECT_EQ(status, 1);
    EXPECT_FALSE(tree.HasError());
    EXPECT_LT(meeting.reads, 1000000);
}

TEST(RpnStopThreads, StopEndsASeries)
{
    // Row by row through the tree (IsEmpty takes no fast path), and a block
    // at a time (the block evaluator looks at Stop between blocks).  In the
    // tree, the row being evaluated when Stop comes passes on the value of
    // the node that was running: the tick read inside IsEmpty.  The row
    // steps of the throwing mode look at Stop every 256 rows, as the blocks.
    const struct {
        const char *text;
        bool throwing;
        int firstStopped;
        double rowValue;
    } cases[] = {{"IsEmpty(tick) + tick * 2", false, 501, 500.0},
                 {"tick * 2", false, 512, 1000.0},
                 {"tick * 2", true, 512, 1000.0}};
    for (const auto &c : cases) {
        CEquationTree tree;
        tree.throwOnError = c.throwing;
        tree.m_freeVariables = 1;
        tree.SetVariableAccess(meetingGet, nullptr);
        ASSERT_TRUE(tree.Compile(QString::fromLatin1(c.text)));
        Meeting meeting;
        meeting.waitAtRow = 500;
        tree.m_runData1 = &meeting;
        std::vector<double> values(2000, -1.0);
        std::vector<unsigned char> valid(2000, 9);
        int good = 0;
        std::thread run([&] { good = tree.EvaluateSeries(values.data(), valid.data(), 0, 1999); });
        stopWhenRunning(tree, meeting);
        run.join();
        EXPECT_EQ(good, c.firstStopped) << c.text;
        EXPECT_EQ(valid[500], 1) << c.text;
        EXPECT_EQ(values[500], c.rowValue) << c.text;
        EXPECT_EQ(valid[std::size_t(c.firstStopped)], 0) << c.text;
        EXPECT_EQ(valid[1999], 0) << c.text;
    }
}
