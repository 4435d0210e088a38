#pragma once
// CActionMouseTrack: one drag in the graph window.  The window starts a
// track on a button press and from then on hands it every mouse, key and
// timer event until it ends; the track shows its feedback on top of the
// picture (drawn by the window's paint through PaintFeedback, inverting
// what lies under it) and hands a result back: 1 done, 0 cancelled.
//
// Escape or the other mouse button cancels.  While the mouse is outside
// the window's client area a timer repeats the auto-scroll every 200 ms.
// m_axisLock constrains the mouse: 1 keeps the start's Y (only X moves),
// 2 keeps the start's X.

#include <QPoint>
#include <QRect>
#include <QTimer>
#include <functional>

class CGraphWnd;
class QEvent;
class QPainter;

class CActionMouseTrack
{
public:
    enum : int { LockNone = 0, LockX = 1, LockY = 2 };

    CActionMouseTrack();
    virtual ~CActionMouseTrack();
    CActionMouseTrack(const CActionMouseTrack &) = delete;
    CActionMouseTrack &operator=(const CActionMouseTrack &) = delete;

    // Starts the track at `point` (window coordinates).  False, and the
    // track ends at once with 0, when it cannot begin.  The window then
    // routes its events here (HandleEvent) until the track has ended, and
    // learns of the end through CGraphWnd::TrackEnded.
    virtual bool Track(CGraphWnd *window, QPoint point);
    // Fails when another widget holds the mouse.
    virtual bool BeginTrack();
    // Takes the feedback away, stops the timer and lets the mouse go;
    // returns the result.
    virtual int EndTrack(int result);
    virtual bool StartTimer();
    virtual void Cancel();
    virtual void OnTimer();
    // Shows or hides the feedback; the family computes what it shows here.
    virtual void DrawFeedback();
    // True when the point lies outside the client area and a scroll ran.
    virtual bool TestAutoScroll(QPoint point);
    // How far the point lies outside the client area, into m_scrollDx and
    // m_scrollDy (zero on a side where it is inside).
    void MeasureOutside(QPoint point);
    virtual void ScrollTo(int dx, int dy, bool repeat);
    virtual bool ScrollBy(int dx, int dy);
    virtual void OnMouseMove(QPoint point, Qt::KeyboardModifiers keys);
    virtual void OnLeftUp(QPoint point);
    virtual void OnLeftDown(QPoint point);
    virtual void OnRightUp(QPoint point);
    virtual void OnRightDown(QPoint point);
    // Applies the axis lock; false drops the event.
    virtual bool ConstrainPoint(QPoint point, Qt::KeyboardModifiers keys, QPoint &out);
    // The feedback itself, painted by the window over its picture while
    // m_feedbackShown is set.
    virtual void PaintFeedback(QPainter &painter);

    // Routes one event of the window; true when the track took it.
    bool HandleEvent(QEvent *event);
    bool IsRunning() const { return m_running != 0; }
    bool HasEnded() const { return m_ended; }
    int Result() const { return m_result; }
    QPoint Start() const { return m_start; }
    QPoint Current() const { return m_current; }
    // The rectangle between start and present position.
    QRect DragRect() const { return QRect(m_start, m_current).normalized(); }

    // Hooks a host may set; unset they do nothing.
    std::function<int(CActionMouseTrack &)> m_startHook;
    std::function<void(CActionMouseTrack &, int)> m_endHook;
    std::function<QPoint()> m_getWindowOrigin;
    std::function<void(QPoint)> m_setWindowOrigin;

    int m_running = 0;
    int m_result = 1;
    QRect m_clientRect;
    QPoint m_start, m_current;
    int m_axisLock = LockNone;
    int m_axisIndex = -1;
    int m_feedbackShown = 0;
    CGraphWnd *m_window = nullptr;
    int m_buttonsSwapped = 0;
    QTimer m_timer;
    int m_scrolling = 0, m_scrollDx = 0, m_scrollDy = 0;
    int m_userData = 0;
    QRect m_screenRect;
    int m_limitLeft = 0, m_limitTop = 0, m_limitRight = 0, m_limitBottom = 0;
    int m_limits[4] = {0, 0, 0, 0}; // left, top, right, bottom

protected:
    // Repaints the window so that the feedback shows as it now is.
    void refresh();

private:
    void finish();
    bool m_ended = true;
};
