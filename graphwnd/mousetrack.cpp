#include "graphwnd/mousetrack.h"

#include "graphwnd/graphwnd.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>
#include <QWidget>

namespace {

const int kAutoScrollMs = 200;
// The virtual screen, widened so far that a point never leaves it.
const int kScreenMargin = 1000;

} // namespace

CActionMouseTrack::CActionMouseTrack()
{
    m_timer.setInterval(kAutoScrollMs);
    QObject::connect(&m_timer, &QTimer::timeout, [this] {
        OnTimer();
        if (!m_running && !m_ended)
            finish();
    });
}

CActionMouseTrack::~CActionMouseTrack() = default;

bool CActionMouseTrack::Track(CGraphWnd *window, QPoint point)
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    m_screenRect = (screen ? screen->virtualGeometry() : QRect())
                       .adjusted(-kScreenMargin, -kScreenMargin, kScreenMargin, kScreenMargin);
    m_window = window;
    m_running = 0;
    m_feedbackShown = 0;
    m_result = 1;
    m_clientRect = window->ClientRect();
    m_start = m_current = point;
    m_timer.stop();
    m_scrolling = m_scrollDx = m_scrollDy = 0;
    m_ended = false;
    if (m_startHook)
        m_userData = m_startHook(*this);
    if (!BeginTrack() || !StartTimer()) {
        EndTrack(0);
        return false;
    }
    m_running = 1;
    DrawFeedback();
    return true;
}

bool CActionMouseTrack::BeginTrack()
{
    const QWidget *grabber = QWidget::mouseGrabber();
    return !grabber || grabber == m_window;
}

int CActionMouseTrack::EndTrack(int result)
{
    if (m_feedbackShown)
        DrawFeedback();
    m_timer.stop();
    m_scrolling = 0;
    m_ended = true;
    m_running = 0;
    if (m_endHook)
        m_endHook(*this, result);
    return result;
}

bool CActionMouseTrack::StartTimer()
{
    m_timer.start();
    return true;
}

void CActionMouseTrack::Cancel()
{
    if (m_feedbackShown)
        DrawFeedback();
    m_running = 0;
    m_result = 0;
}

void CActionMouseTrack::OnTimer()
{
    if (m_scrolling)
        ScrollTo(m_scrollDx, m_scrollDy, true);
}

void CActionMouseTrack::DrawFeedback()
{
    m_feedbackShown = !m_feedbackShown;
    refresh();
}

void CActionMouseTrack::MeasureOutside(QPoint point)
{
    m_scrollDx = m_scrollDy = 0;
    const QRect &r = m_clientRect;
    if (point.x() < r.left())
        m_scrollDx = point.x() - r.left();
    else if (point.x() > r.right())
        m_scrollDx = point.x() - r.right();
    if (point.y() < r.top())
        m_scrollDy = point.y() - r.top();
    else if (point.y() > r.bottom())
        m_scrollDy = point.y() - r.bottom();
}

bool CActionMouseTrack::TestAutoScroll(QPoint point)
{
    MeasureOutside(point);
    if (m_scrollDx == 0 && m_scrollDy == 0) {
        m_scrolling = 0;
        return false;
    }
    m_scrolling = 1;
    ScrollTo(m_scrollDx, m_scrollDy, false);
    return true;
}

void CActionMouseTrack::ScrollTo(int dx, int dy, bool repeat)
{
    Q_UNUSED(repeat);
    if (!m_getWindowOrigin || !m_setWindowOrigin)
        return;
    const QPoint before = m_getWindowOrigin();
    if (!ScrollBy(dx, dy))
        return;
    const QPoint moved = m_getWindowOrigin() - before;
    m_start -= moved;
}

bool CActionMouseTrack::ScrollBy(int dx, int dy)
{
    if ((dx == 0 && dy == 0) || !m_getWindowOrigin || !m_setWindowOrigin)
        return false;
    const QPoint before = m_getWindowOrigin();
    m_setWindowOrigin(before + QPoint(dx, dy));
    return m_getWindowOrigin() != before;
}

void CActionMouseTrack::OnMouseMove(QPoint point, Qt::KeyboardModifiers keys)
{
    Q_UNUSED(keys);
    if (m_feedbackShown)
        DrawFeedback();
    const bool scrolled = TestAutoScroll(point);
    if (m_limitLeft)
        point.setX(std::max(point.x(), m_limits[0]));
    if (m_limitTop)
        point.setY(std::max(point.y(), m_limits[1]));
    if (m_limitRight)
        point.setX(std::min(point.x(), m_limits[2]));
    if (m_limitBottom)
        point.setY(std::min(point.y(), m_limits[3]));
    // While scrolling the feedback stays at the edge the mouse left by.
    if (scrolled)
        point = QPoint(std::clamp(point.x(), m_clientRect.left(), m_clientRect.right()),
                       std::clamp(point.y(), m_clientRect.top(), m_clientRect.bottom()));
    m_current = point;
    if (m_running)
        DrawFeedback();
}

void CActionMouseTrack::OnLeftUp(QPoint point)
{
    Q_UNUSED(point);
    if (m_feedbackShown)
        DrawFeedback();
    m_running = 0;
    m_result = 1;
}

void CActionMouseTrack::OnLeftDown(QPoint point)
{
    Q_UNUSED(point);
}

void CActionMouseTrack::OnRightUp(QPoint point)
{
    Q_UNUSED(point);
}

void CActionMouseTrack::OnRightDown(QPoint point)
{
    Q_UNUSED(point);
    Cancel();
}

bool CActionMouseTrack::ConstrainPoint(QPoint point, Qt::KeyboardModifiers keys, QPoint &out)
{
    Q_UNUSED(keys);
    out = point;
    if (m_axisLock == LockX)
        out.setY(m_start.y());
    else if (m_axisLock == LockY)
        out.setX(m_start.x());
    return true;
}

void CActionMouseTrack::PaintFeedback(QPainter &painter)
{
    Q_UNUSED(painter);
}

bool CActionMouseTrack::HandleEvent(QEvent *event)
{
    if (m_ended)
        return false;
    switch (event->type()) {
    case QEvent::KeyPress:
        if (static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape)
            Cancel();
        break;
    case QEvent::MouseMove: {
        auto *e = static_cast<QMouseEvent *>(event);
        QPoint p;
        if (ConstrainPoint(e->position().toPoint(), e->modifiers(), p))
            OnMouseMove(p, e->modifiers());
        break;
    }
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick: {
        auto *e = static_cast<QMouseEvent *>(event);
        QPoint p;
        if (!ConstrainPoint(e->position().toPoint(), e->modifiers(), p))
            break;
        bool left = e->button() == Qt::LeftButton;
        const bool right = e->button() == Qt::RightButton;
        if (!left && !right)
            break;
        if (m_buttonsSwapped)
            left = !left;
        const bool down = event->type() != QEvent::MouseButtonRelease;
        if (left && down)
            OnLeftDown(p);
        else if (left)
            OnLeftUp(p);
        else if (down)
            OnRightDown(p);
        else
            OnRightUp(p);
        break;
    }
    default:
        return false;
    }
    if (!m_running && !m_ended)
        finish();
    return true;
}

void CActionMouseTrack::refresh()
{
    if (m_window)
        m_window->update();
}

void CActionMouseTrack::finish()
{
    const int result = EndTrack(m_result);
    if (m_window)
        m_window->TrackEnded(this, result);
}
