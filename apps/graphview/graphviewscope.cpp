#include "graphviewscope.h"

#include "graphdata/graphcurve.h"
#include "graphdata/scopegraph.h"
#include "graphwnd/graphwnd.h"

#include <QCommandLineParser>
#include <QLabel>

namespace {

// A data set holds this many rows before the demonstration starts a fresh
// one: some forty seconds, some 200 MB.
constexpr int kLiveRowsKept = 4000000;

} // namespace

CGraphviewScope::CGraphviewScope(QCommandLineParser &parser)
    : m_parser(parser),
      m_scope(QStringLiteral("scope"), QStringLiteral("Show the file as an oscilloscope does (10 x 8 divisions).")),
      m_live(QStringLiteral("live"),
             QStringLiteral("A live oscilloscope: 100000 rows a second over 4 channels in roll mode."))
{
    m_parser.addOptions({m_scope, m_live});
}

CGraphviewScope::~CGraphviewScope()
{
    StopLive();
}

void CGraphviewScope::StopLive()
{
    m_timer.stop();
    if (m_writer) {
        m_writer->Stop();
        m_rowsBefore += m_writer->RowsWritten();
        m_writer.reset();
    }
}

std::int64_t CGraphviewScope::LiveRows() const
{
    return m_rowsBefore + (m_writer ? m_writer->RowsWritten() : 0);
}

bool CGraphviewScope::Scope() const { return m_parser.isSet(m_scope); }
bool CGraphviewScope::Live() const { return m_parser.isSet(m_live); }

void CGraphviewScope::ShowAsScope(CGraphWnd &window, const CGraphData &data)
{
    window.SetGraphData(MakeScopeGraph(data), 0, true);
}

void CGraphviewScope::restartData()
{
    if (m_writer) {
        m_writer->Stop();
        m_rowsBefore += m_writer->RowsWritten();
    }
    CGraphData data(true);
    data.Create(2, 5, 1 << 20, 1 << 20);
    const char *names[5] = {"t", "sine", "square", "sawtooth", "noisy"};
    for (int c = 0; c < 5; ++c)
        data.GetColumn(c)->m_name = QString::fromLatin1(names[c]);
    CScopeData_Data &scope = *data->AsScope();
    scope.m_secsPerDiv = kLiveSecondsPerDiv;
    scope.m_rollMode = 1;
    scope.m_rollLength = std::uint32_t(kLiveRowsPerSecond * kLiveSecondsPerDiv * kScopeDivisionsX);
    scope.m_triggerChannel = 1;
    scope.m_triggerLevel = 0.5;
    CGraphCurve *graph = m_window->GetGraphData();
    if (!graph || !graph->m_data.IsScope()) {
        graph = new CGraphCurve(2);
        graph->m_data = data;
        graph->m_backColor = 0x201810;
        graph->m_foreColor = 0xE0E0E0;
        graph->m_majorColor = 0x505050;
        graph->m_xAxisName = QStringLiteral("t");
        bool changed;
        // each channel in a band of its own: offsets in divisions times scale
        const double scales[4] = {1, 2, 1, 1}, divisions[4] = {3, 1, -1, -3};
        const std::uint32_t colors[4] = {0x40E0FF, 0x60FF60, 0xFFB040, 0xC080FF};
        for (int c = 1; c <= 4; ++c) {
            const int at = graph->AddCurve(c, 0, false, changed);
            CCurveInfo &curve = *graph->Curve(at);
            curve.m_scopeScale = scales[c - 1];
            curve.m_scopeOffset = divisions[c - 1] * scales[c - 1];
            curve.m_color = colors[c - 1];
        }
        m_window->SetGraphData(graph, 0, true);
    } else {
        graph->m_data = data;
        graph->ClearCurveCaches();
        graph->m_lastDrawnRow = 0;
    }
    m_writer = std::make_unique<CScopeSignalWriter>(data, kLiveRowsPerSecond);
    m_writer->Start();
}

void CGraphviewScope::StartLive(CGraphWnd &window, QLabel *status)
{
    m_window = &window;
    m_status = status;
    restartData();
    m_second.start();
    QObject::connect(&m_timer, &QTimer::timeout, [this] { frame(); });
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.start(16);
}

void CGraphviewScope::frame()
{
    if (!m_writer)
        return;
    if (m_writer->RowsWritten() > kLiveRowsKept)
        restartData();
    QElapsedTimer draw;
    draw.start();
    m_window->Redraw(0);
    m_window->repaint();
    const double ms = draw.nsecsElapsed() / 1e6;
    m_drawMs += ms;
    m_worstMs = std::max(m_worstMs, ms);
    ++m_frames;
    ++m_framesTotal;
    if (m_second.elapsed() >= 1000 && m_status) {
        const double seconds = m_second.elapsed() / 1000.0;
        const std::int64_t rows = LiveRows();
        m_status->setText(QStringLiteral("%1 frames/s, %2 ms a frame (worst %3 ms), %4 rows/s")
                              .arg(m_frames / seconds, 0, 'f', 1)
                              .arg(m_drawMs / m_frames, 0, 'f', 2)
                              .arg(m_worstMs, 0, 'f', 1)
                              .arg(double(rows - m_rowsAtSecond) / seconds, 0, 'f', 0));
        m_rowsAtSecond = rows;
        m_frames = 0;
        m_drawMs = m_worstMs = 0;
        m_second.restart();
    }
}
