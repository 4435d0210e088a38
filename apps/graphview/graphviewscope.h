#pragma once
// graphview's oscilloscope options:
//   --scope        show the file the way the oscilloscope form does: 10 by
//                  8 divisions, a scale per channel
//   --live         a live demonstration: a writer thread appends 100000
//                  rows a second over 4 channels while the window shows
//                  the last tenth of a second in roll mode; the status line
//                  tells the frames a second and the time a frame takes

#include "graphdata/graphdata.h"

#include <QCommandLineOption>
#include <QElapsedTimer>
#include <QTimer>
#include <memory>

class CGraphWnd;
class CScopeSignalWriter;
class QCommandLineParser;
class QLabel;

class CGraphviewScope
{
public:
    explicit CGraphviewScope(QCommandLineParser &parser);
    ~CGraphviewScope();

    bool Scope() const;
    bool Live() const;
    // Puts a graph of the oscilloscope form over `data` into the window.
    static void ShowAsScope(CGraphWnd &window, const CGraphData &data);
    // Starts the live demonstration in the window; `status` gets the speed.
    void StartLive(CGraphWnd &window, QLabel *status);
    // Stops the redraws and the writer, and waits for the writer's thread.
    void StopLive();
    bool LiveRunning() const { return m_writer != nullptr; }
    // Rows the live writer appended since the start, over every data set
    // it filled, and the frames drawn.
    std::int64_t LiveRows() const;
    std::int64_t LiveFrames() const { return m_framesTotal; }

    // The rows a second of the live writer, and the seconds on its screen.
    static constexpr double kLiveRowsPerSecond = 1e5;
    static constexpr double kLiveSecondsPerDiv = 0.01;

private:
    void restartData();
    void frame();

    QCommandLineParser &m_parser;
    QCommandLineOption m_scope;
    QCommandLineOption m_live;
    CGraphWnd *m_window = nullptr;
    QLabel *m_status = nullptr;
    std::unique_ptr<CScopeSignalWriter> m_writer;
    QTimer m_timer;
    QElapsedTimer m_second;
    int m_frames = 0;
    std::int64_t m_framesTotal = 0;
    double m_drawMs = 0, m_worstMs = 0;
    std::int64_t m_rowsAtSecond = 0, m_rowsBefore = 0;
};
