#pragma once
// Reading graphview's file (a graph data file or a data text file) on a
// worker thread under the busy box: the window stays painted, the box shows
// how far the reading is, and Cancel stops it.  The data reach the window
// only once the reading has ended well, so that a stopped or failed reading
// leaves the graph as it was.

#include "support/controls/progressworkingdlg.h"

#include "graphdata/graphdata.h"

#include <QString>
#include <atomic>

class QWidget;

// What a reading gave.
struct CGraphviewInput
{
    enum Outcome { Read, Failed, Cancelled };
    Outcome outcome = Failed;
    CGraphData data;  // with Read: ready to show (PrepareFileData done)
    QString message;  // with Failed: why, naming the file
    QString badCells; // with Read: what was wrong with cells of a text file
};

// The reading as work for the busy box.  A text file reports its progress
// and stops at Cancel; a graph data file is read in one go, and when Cancel
// is pressed meanwhile its data are dropped once it has been read.
class CGraphviewReadJob : public CWorkingJob
{
public:
    explicit CGraphviewReadJob(const QString &path);
    void Run() override;
    void Stop() override { m_stop.store(true); }
    double Progress() const override;
    // True when the box can show a progress: a text file.
    bool ShowsProgress() const { return !m_graphFile; }
    // Valid after Run.
    const CGraphviewInput &Result() const { return m_result; }

private:
    QString m_path;
    bool m_graphFile;
    std::atomic<bool> m_stop{false};
    std::atomic<int> m_progress{0};
    CGraphviewInput m_result;
};

// Reads `path` under a busy box over `parent` (none with a null parent) and
// returns when the reading has ended.  The box shows once the reading takes
// longer than `showDelay` milliseconds.
CGraphviewInput ReadGraphviewFile(QWidget *parent, const QString &path, int showDelay = 400);
