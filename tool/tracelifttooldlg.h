#pragma once
// CTraceliftToolDlg: the one dialog of the digitiser.  The picture canvas and
// the plot lie over each other in one pane, exactly one of them visible; the
// fields around them hold the axis values, the names, the unit prefixes and
// the point text, which is the master copy of the traced points.  Every
// command is a thin layer over the capture model in tool/capture.
//
// Each control's objectName() is its control id as text ("1052").

#include "support/controls/userprompts.h"
#include "tool/capture/capturemodel.h"
#include "tool/capture/capturesteps.h"
#include "tool/capture/curverecords.h"
#include "tool/capture/toolfields.h"
#include "tool/curvecursoreditor.h"
#include "tool/curvetracer.h"
#include "tool/plotfeed.h"

#include <QDialog>
#include <memory>

class CCurveWnd;
class CExEditCtrl;
class CTraceliftWnd;
class QAction;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolBar;

class CTraceliftToolDlg : public QDialog
{
    Q_OBJECT
public:
    // Control ids besides those of the fields (ToolControlId).
    enum : int {
        IdOk = 1,
        IdCancel = 2,
        IdAddCurve = 1127,
        IdApplyTyped = 1842,
        IdReplot = 1844,
        IdToolBar = 13666,
        IdPaste = 32774,
        IdNext = 33104,
        IdBack = 33105,
        IdPlot = 10101,
        IdCopyPoints = 27598,
        IdTraceAnother = 27600,
        IdSaveFamily = 27621,
        IdTraceSpacing = 27625,
        IdTraceSpacingValue = 27629,
        IdAcceptTrace = 27631,
        IdCalibrateFromPicture = 27641,
    };

    explicit CTraceliftToolDlg(QWidget *parent = nullptr);
    ~CTraceliftToolDlg() override;

    // Set by a caller before the dialog is shown; this program leaves both 0.
    // Kind 595 uses the texts of that device kind and skips the X-range check
    // of saving; a positive m_viewOnly hides Back and Next.
    int m_deviceKind = 0;
    int m_viewOnly = 0;

    // The commands, as the controls, the toolbar and the keys call them.
    void OnNext();
    void OnBack();
    void OnAddCurve();
    void OnStartOver();
    void OnReplot();
    void OnExchangeXY();
    void OnApplyTypedCurve();
    void OnOk();
    void OnLoad();
    // Every finished curve in one CSV file: a shared X column, a column per
    // curve interpolated at those X values.  False when nothing was written.
    bool OnSaveFamilyCsv();
    void OnPaste();
    // A picture that did not come from the clipboard (a dropped or chosen
    // file), taken while the canvas waits for a picture as a paste would be.
    void OfferPicture(const QImage &picture);
    void OfferPictureFile(const QString &path);
    // A picture file to work on (the command line's): a new capture is
    // started as Next starts one, and the file is offered to it.  False, with
    // a message, when it is no picture; the canvas then waits for one.
    bool OpenPictureFile(const QString &path);

    // Point edits while a curve is traced; each rewrites the point text and
    // applies the fields as a click does.  Undo and redo step through the
    // clicks and edits of the present trace.  Moves are in canvas pixels
    // (y down); the point removed is the one nearest the canvas position.
    // Each returns false when there was nothing to do.
    bool OnUndoPoint();
    bool OnRedoPoint();
    bool MoveLastPoint(double dxPixels, double dyPixels);
    bool DeletePointNear(double px, double py);
    // Point `index` taken to a canvas position by a drag; the whole drag is
    // one step of undo.  False when the position maps to no value.
    bool DragPointTo(int index, double px, double py, bool finished);
    // The points of the curve to the clipboard as two tab-separated columns.
    void OnCopyPoints();
    // After a curve of a picture is finished: a new curve is added as Add
    // curve adds one, and the picture, its corners and the axis values are
    // kept, so that the new curve is traced at once.  Does nothing (false)
    // unless a curve of a calibrated picture is finished.
    bool OnTraceAnotherCurve();
    // Reads the calibration off the shown picture: the frame, the grid and
    // the tick labels.  A proposal places the two corners and fills the axis
    // fields as clicks and typing would (Back and the fields work as after
    // them); where the picture leaves doubt, the hint says what was found
    // and the corners are left to the user.  False when nothing was proposed.
    bool OnCalibrateFromPicture();

    // Automatic tracing, while a curve is traced: the curve at a canvas
    // position (Shift+click) is followed across the calibrated rectangle,
    // and points along it at the chosen spacing are proposed on the canvas.
    // Accepting the proposal makes it the point text (one step of undo).
    // Each returns false when there was nothing to do (no curve there, no
    // proposal, a spacing that is no number).
    bool PickCurveAt(double px, double py);
    bool AcceptProposal();
    // The spacing: 0 every N pixels, 1 N points a decade, 2 at X values; the
    // text is N, or the X values apart by blanks or semicolons.
    void SetTraceSpacing(int kind, const QString &text);

    // The fields to the record and back (save true), or back only.  The
    // rules of what the record keeps are CCurveRecords'.
    bool UpdateData(bool save);
    // The fields into the record and back again, as the commands that settle
    // a curve on the plot do.
    bool StoreFields();
    // Makes record `index` of the curve list the current curve: the fields
    // go into the present one first, then the chosen one is loaded.  The
    // template (the last record) shows every curve of the list in the plot.
    // False for an index outside the list.
    bool SelectRecord(int index);
    // What every change of the fields ends in: the point text is parsed again
    // and the canvas and the plot follow the fields.
    void ApplyFields();

    CTraceliftWnd *Canvas() const { return m_canvas; }
    CCurveWnd *Plot() const { return m_plot; }
    CCurveCursorEditor &CursorEditor() { return m_cursorEditor; }
    CCurveRecords &Records() { return m_records; }
    bool FieldsDirty() const { return m_fieldsDirty; }
    CToolFields ReadFields() const;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void buildControls();
    void connectControls();
    void writeFields(const CToolFields &fields);
    void selectUnit(QComboBox *combo, const QString &prefix);
    void perform(const CStepActions &actions, const QImage *offered = nullptr);
    void nextStep(const QImage *offered);
    void setHint(std::optional<int> id);
    void markDirty();
    bool tracing() const;
    bool canTraceAnother() const;
    bool pointEditKey(QKeyEvent *event);
    void editPoints(const QString &text);
    void onCanvasClicked(const CClickResult &result, int modeBefore);
    void onValueUnderMouse(double x, double y);
    bool showProposal();
    void dropProposal();
    QWidget *buildAutoTraceControls();
    void showPane(bool canvas);
    void showMessage(int id, const QString &argument = QString(),
                     PromptIcon icon = PromptIcon::Warning);
    StepAnswer ask(int id, PromptButtons buttons);
    bool saveCurves();
    bool writeCurve(const CGraphInfoData &curve, const CToolFields &fields);

    // The plot pane: everything the plot is fed goes through these.
    void createPlot();
    void plotCurrentCurve(const CToolFields &fields, const CMyDoubleArray &pairs, int count);
    void plotAllCurves(const CToolFields &fields);
    void plotColumns(const CToolFields &fields, const CMyDoubleArray2D &values);
    void replotFromData(bool xLog, bool yLog);
    void repaintPlot();

    CCurveRecords m_records;
    CCurveCursorEditor m_cursorEditor;
    CTraceliftWnd *m_canvas = nullptr;
    CCurveWnd *m_plot = nullptr;
    QString m_lastFileName;
    QLineEdit *m_readout = nullptr;
    QPushButton *m_okButton = nullptr;
    QPushButton *m_cancelButton = nullptr;
    QPushButton *m_loadButton = nullptr;
    QLineEdit *m_fileName = nullptr;
    CExEditCtrl *m_yAtSecondEdit = nullptr;
    CExEditCtrl *m_yAtFirstEdit = nullptr;
    CExEditCtrl *m_xAtSecondEdit = nullptr;
    CExEditCtrl *m_xAtFirstEdit = nullptr;
    QCheckBox *m_xLogCheck = nullptr;
    QCheckBox *m_yLogCheck = nullptr;
    QCheckBox *m_exchangeCheck = nullptr;
    QToolBar *m_toolBar = nullptr;
    QAction *m_backAction = nullptr;
    QAction *m_nextAction = nullptr;
    QAction *m_calibrateAction = nullptr;
    CExEditCtrl *m_pointsEdit = nullptr;
    QLabel *m_hint = nullptr;
    QComboBox *m_xUnitCombo = nullptr;
    QComboBox *m_yUnitCombo = nullptr;
    QLineEdit *m_xNameEdit = nullptr;
    QLineEdit *m_yNameEdit = nullptr;
    QPushButton *m_addCurveButton = nullptr;
    QPushButton *m_traceAnotherButton = nullptr;
    QWidget *m_pane = nullptr;
    bool m_fieldsDirty = false;
    // The point texts before each edit of the trace, and those undone; both
    // are dropped once the text changes by other means (m_editedText differs).
    QStringList m_undoTexts;
    QStringList m_redoTexts;
    QString m_editedText;
    bool m_pointDragUnderWay = false; // its undo step is taken
    // The last automatic trace (picture positions), while it is proposed.
    std::unique_ptr<CCurveTrace> m_autoTrace;
    QComboBox *m_spacingCombo = nullptr;
    QLineEdit *m_spacingEdit = nullptr;
    QPushButton *m_acceptTraceButton = nullptr;
    QString m_xName;
    QString m_yName;
    int m_minTrackWidth = 50;
    int m_minTrackHeight = 100;
    bool m_initialised = false;
};
