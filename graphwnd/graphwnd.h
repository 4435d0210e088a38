#pragma once
// CGraphWnd: the window that shows a graph.  It draws through the plotting
// pipeline into a cached picture, runs the mouse tools as tracks (see
// mousetrack.h), keeps the selection of drawing objects, and tells its host
// what happens through the GraphNotify signal.
//
// The host reaches the graph only through GetGraphData, SetGraphData,
// SetGraphDataCopy and DeleteGraphData.  Everything runs on the thread that
// owns the window; a producer thread asks for a view update through
// PostViewCommand, which is queued.
//
// Mouse tools: 1 select and move objects, 2 pan (on an axis: scroll that
// axis), 3 and 4 zoom box, 5 zoom by dragging an edge, 6 zoom along X,
// 7 zoom along Y, 8 draw a line (an arrow), 9 draw a rectangle (with Shift
// a span of X over the plot's height), 10 place a text, 11 events go to the
// host's cursor object.

#include "graphdata/draw/bitmapscreendraw.h"
#include "graphdata/draw/drawobjects.h"
#include "graphdata/graphcurve.h"
#include "graphwnd/boxtracks.h"
#include "graphwnd/graphviewops.h"
#include "graphwnd/objecttracks.h"
#include "graphwnd/scrollinfo.h"
#include "graphwnd/viewtracks.h"
#include "graphwnd/wheelsteps.h"

#include <QImage>
#include <QWidget>
#include <functional>
#include <vector>

class CGraphCursorBase;
class CGraphToolBar;
class CTextAttributes;
class QMenu;

// Command ids of the window, its toolbar and its pop-up menu.
enum GraphCommand : int {
    CmdGraphOptions = 13000,
    CmdXAxisDialog = 13001,
    CmdYAxisDialog = 13002,
    CmdToolSelect = 14001,
    CmdFullView = 14002,
    CmdAutoscale = 14003,
    CmdZoomIn = 14004,
    CmdZoomOut = 14005,
    CmdToolZoomBox = 14006,
    CmdToolZoomPath = 14007,
    CmdToolPan = 14008,
    CmdXAxis = 14009,
    CmdYAxis = 14010,
    CmdOptions = 14011,
    CmdSaveAs = 14012,
    CmdToolLine = 14020,
    CmdToolRect = 14021,
    CmdToolText = 14022,
    CmdUndoObject = 14023,
    CmdThicknessNone = 16000, // 16001 to 16006: thickness 1 to 6
    CmdCurveProperties = 16010,
    CmdDelete = 16011,
    CmdAddCurve = 16012,
    CmdComputedCurve = 16013, // a curve from a formula over the columns
    CmdScopeChannels = 16014, // the oscilloscope's channel formulas
    CmdOwnAxis = 16021,
    CmdHighlight = 16022,
    CmdCurveTitle = 16023,
    CmdCopyValues = 16031,
    CmdSymbols = 16033,
    CmdLockObject = 16041,
    CmdAllColumns = 16049,
    CmdColumnFirst = 16050, // plus the column's index
    CmdCopyPicture = 16201,
    CmdEmiImport = 16299,
    CmdEmiFirst = 16300, // plus the limit's index in the list
    CmdEmiLast = 16400,
};

// Notification codes.
enum : int {
    NotifyCloseAsked = 1,     // closing with curves present: the host may take over
    NotifyObjectClicked = 11, // a left click on a drawing object
    NotifyObjectsChanged = 21, // the view or the objects changed
};

// What goes with a notification.  The host may set `consumed`: for 11 the
// window then does nothing with the click, for 1 the window stays open.
struct CGraphNotifyRecord
{
    class CGraphWnd *window = nullptr;
    QPoint point;
    int objectIndex = -1;
    bool consumed = false;
};

class CGraphWnd : public QWidget
{
    Q_OBJECT
public:
    explicit CGraphWnd(QWidget *parent = nullptr, bool showToolBar = true);
    ~CGraphWnd() override;

    // ---- the data --------------------------------------------------------
    // Frees the graph when the window owns it, and forgets it.
    virtual void DeleteGraphData();
    virtual CGraphCurve *GetGraphData() const { return m_graphData; }
    // Takes a graph (owned with `owns`).  A kind of 1 to 4 sets this window's
    // tool to 1; kind 0 sets the shared tool to 1 as well.  A font, when
    // given, becomes the graph's label and title font; printFlags are kept
    // for printing.  The present view becomes the one Full view goes back to.
    virtual void SetGraphData(CGraphCurve *graph, int kind = 0, bool owns = true, const QFont *font = nullptr,
                              int printFlags = 0);
    // A new graph of its own over `data`: column 0 as X, a curve for every
    // other column, the view fitted to the data, with the drawing objects
    // that came with the data from a graph file (its m_fileBlocks[0]).
    virtual void SetGraphDataCopy(const CGraphData &data);

    // ---- commands and drawing --------------------------------------------------
    // Runs a command of the toolbar, the menus or the host; false for an id
    // that is not the window's.
    bool OnCommand(int id);
    // Flag 1 (or any non-zero): the whole picture is drawn again.  Flag 0:
    // only rows added since the last picture are drawn onto it.
    void Redraw(int flags = 1);
    // From any thread: 1 and 2 run the view update (2 also clears the auto
    // range flag), anything else redraws with flag 1.  Queued to the window.
    void PostViewCommand(int code);
    // Widens the views to data that reach beyond them (ten per cent margin).
    void UpdateView();
    // The present view becomes the one Full view goes back to.
    void StoreDefaultView();
    // The whole graph drawn into an image of `size` (the copy command's).
    QImage RenderImage(QSize size);
    // The Save command: writes the graph's columns and held curves to a graph
    // data file, asking for the name when `path` is empty.  A failure is
    // shown in a box and leaves any old file as it was.
    bool SaveDataFile(QString path = QString());

    // Room kept free round the axes, in pixels: it goes to the graph now and
    // to every graph the window takes later.
    void SetAxisMargins(int left, int top, int right, int bottom);
    CIntRect AxisMargins() const { return m_axisMargins; }

    // ---- scrolling ---------------------------------------------------------------
    // The two scroll-info records: bar 0 scrolls X, bar 1 the Y axis in use
    // (the active axis).  Get fills the fields info.fMask names; Set takes
    // the fields its mask names and holds them in range (see scrollinfo.h).
    // Both are false for another bar.
    bool GetScrollInfo(int bar, CScrollInfo &info) const;
    bool SetScrollInfo(int bar, const CScrollInfo &info);
    // A scroll request (Scroll* codes) for a bar: the axis moves by ticks
    // through its record, and the picture is drawn again when it moved;
    // moving X tells the host (notification 21).
    void OnScroll(int bar, int code, int thumb = 0);

    // ---- tools -----------------------------------------------------------------
    int Tool() const;
    // Sets the mouse tool; with m_sharedTool set it is the one of every graph
    // window, and the veto hook may refuse the change.
    void SetTool(int tool);
    static void SetSharedToolVeto(std::function<bool(int tool)> veto);
    void SetCursorObject(CGraphCursorBase *cursor) { m_cursorObject = cursor; }
    CGraphCursorBase *CursorObject() const { return m_cursorObject; }

    // ---- what tracks and tests need --------------------------------------------
    // The window without its toolbar.
    QRect ClientRect() const;
    CObjectFrame ObjectFrame(int axis) const;
    void TrackEnded(CActionMouseTrack *track, int result);
    CActionMouseTrack *ActiveTrack() const { return m_activeTrack; }
    const std::vector<CTextnLine *> &Selection() const { return m_selection; }
    // The read-out of a point: "(%f, %f)", or "X=%f, Y1=%f, Y2=%f" with
    // several Y axes; values of log axes as values, not logarithms.
    QString PositionTextAt(QPoint point) const;
    // The pop-up menu for a point, and what choosing an item of it does.
    void BuildContextMenu(QPoint point, QMenu &menu);
    // Builds the pop-up menu for a point, runs it there, and carries out
    // the item chosen.
    void ShowContextMenu(QPoint point);
    void OnContextCommand(int id, QPoint point);
    // The curve whose legend label or line lies under the point, or -1.
    int CurveAt(QPoint point) const;
    // The drawing object under the point, or -1; `handle` receives its
    // hit code (10 the object, 1.. a grab handle).
    int ObjectAt(QPoint point, int &handle) const;
    // -2 nothing, -1 the X axis, 0.. the Y axis under the point.
    int AxisAt(QPoint point) const;
    CGraphToolBar *ToolBar() const { return m_toolBar; }

    // ---- drawing objects (graphwndobjects.cpp) ----------------------------------
    // Keeps the objects as they are now, for UndoObjectEdit; each edit of
    // objects calls it first.
    void RememberObjects();
    // Brings back the objects as they were before the last edit; false when
    // there is nothing to undo.
    bool UndoObjectEdit();
    bool CanUndoObjectEdit() const { return m_haveUndo; }
    // The text of a new text object, asked for at `point`; empty to place
    // none.  A host or a test may replace the question.
    std::function<QString(CGraphWnd &, QPoint)> m_askObjectText;
    // The text attributes dialog on a text object (opened by a double click
    // on it, or Properties in its pop-up menu); OK with a change is an edit
    // that undo takes back.  True when the text changed.
    bool EditTextAttributes(CDrawText *text);
    // Runs the dialog in place of its exec(); for hosts and tests.
    std::function<int(CTextAttributes &)> m_runTextAttributes;
    // The style of new lines and rectangles.
    CLogPen m_newPen{0, 1, 0, 0x000000C0};
    int m_newArrowStyle = CDrawLines::ArrowFilled;

    // ---- EMI limits over a spectrum (graphwndemi.cpp) ----------------------------
    // Shows or hides limit `index` of the global list; false for an index
    // the list does not hold.
    bool ShowEmiLimit(int index, bool on);
    // The curve that shows limit `index`, or -1.
    int EmiLimitCurve(int index) const;
    // Reads a limit from an initialisation-style file (section "Limit"),
    // adds it to the user's limits and shows it; asks for the file when
    // `path` is empty.  A bad file is told in a box and adds nothing.
    bool ImportEmiLimitFile(QString path = QString());

    // ---- the animation slider (graphwndscope.cpp) ---------------------------------
    // Moves the animation cursor to `row` and stops it following the last
    // row; true when it moved.
    bool SetAnimationRow(int row);
    const CStepCounts &StepCounts() const { return m_stepCounts; }

    // Members, in the order of the window's state.
    int m_showToolBar = 1;
    int m_toolBarHeight = 0;
    int m_dpi = 96;
    CZoomTrack m_zoomTrack;
    CZoomPanTrack m_zoomPanTrack;
    CPanTrackGraph m_panTrack;
    CZoomBoxTrackGraph m_zoomBoxTrack;
    CMoveTrackGraph m_moveTrack;
    CResizeTrackGraph m_resizeTrack;
    CSelectBoxTrackGraph m_selectBoxTrack;
    CLineDragTrack m_lineDragTrack;
    CPartialBoxTrackGraph m_partialBoxTrack;
    CTitleBoxTrackGraph m_titleBoxTrack;
    CScrollTrackAxis m_scrollTrack;
    int m_ownsData = 0;
    int m_tool = 1;
    int m_sharedTool = 0;
    int m_cachedBitmapValid = 1; // 1: the cached picture must be drawn again
    int m_useBitmapCache = 1;
    int m_drawDirect = 0;        // each paint draws straight, without the cache
    int m_autoRange = 1;
    int m_printFlags = 0;

signals:
    void GraphNotify(int code, CGraphNotifyRecord *record);
    void PositionText(const QString &text);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void notify(int code, CGraphNotifyRecord &record);
    void notifyChanged();
    bool startTrack(CActionMouseTrack &track, QPoint point, bool buttonsSwapped = false);
    void onLeftDown(QPoint point, Qt::KeyboardModifiers keys);
    void drawPicture(QPainter &painter, const QRect &client, unsigned flags);
    // drawPicture that survives running out of memory: false then, with
    // text 43640 reported once until a pass succeeds again.
    bool drawSafely(QPainter &painter, const QRect &client, unsigned flags);
    void checkDpi();
    void updateCursor(QPoint point);
    void deleteSelection();
    void notAvailable();
    // The option dialog on `page` (-1: the page used last); redraws when accepted.
    // Opens the option dialog on `page`; on the curve page with the row of
    // `curve` current when it is one.
    void openOptions(int page, int curve = -1);
    void syncToolBar();
    // Scrolls X (bar 0) or the active Y axis (bar 1) by wheel notches.
    void wheelScroll(int bar, int notches);
    int scrollAxis(int bar) const;
    bool onObjectCommand(int id);
    bool onEmiCommand(int id);
    // A press on the slider's track or a move while it is held; true when
    // the slider took it.
    bool sliderMouse(QPoint point, bool press);
    void addEmiMenu(QMenu &menu);
    // Tools 8 to 10 on a left press; true when the press was theirs.
    bool startPlacing(int tool, QPoint point, Qt::KeyboardModifiers keys);
    // The end of a track that places or edits objects; true when it was one.
    bool objectTrackEnded(CActionMouseTrack *track, int result);

    CGraphToolBar *m_toolBar = nullptr;
    std::vector<CTextnLine *> m_selection; // not owned: the graph owns its objects
    CGraphCurve *m_graphData = nullptr;
    CGraphCursorBase *m_cursorObject = nullptr;
    QImage m_memoryBitmap;
    CBitmapScreenDraw m_backBuffer;
    bool m_pendingRows = false;
    bool m_drawFailed = false; // the last pass ran out of memory
    bool m_invalidWarned = false;
    CActionMouseTrack *m_activeTrack = nullptr;
    CViewRanges m_defaultView;
    CStepCounts m_stepCounts;
    CWheelSteps m_wheelSteps; // parts of a notch from fine wheels
    CAxisScroll m_scroll[2];  // X, and the Y axis in use
    CIntRect m_axisMargins;
    bool m_marginsSet = false;
    QByteArray m_undoObjects;    // the objects before the last edit
    QByteArray m_pendingUndo;    // before a move or resize that may not happen
    bool m_haveUndo = false;
    bool m_sliderDrag = false;
};
