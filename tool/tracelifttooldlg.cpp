#include "tool/tracelifttooldlg.h"

#include "support/controls/exeditctrl.h"
#include "support/languagestring.h"
#include "tool/curvewnd.h"
#include "tool/hintline.h"
#include "tool/traceliftwnd.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

// Texts of the labels and buttons.
enum : int {
    TextTitle = 27560,
    TextYAtSecond = 27561,
    TextYAtFirst = 27562,
    TextXAtFirst = 27563,
    TextXAtSecond = 27564,
    TextXName = 27565,
    TextYName = 27566,
    TextUnitPrefix = 27567,
    TextLogarithmic = 27568,
    TextPoints = 27569,
    TextPosition = 27570,
    TextFile = 27571,
    TextBack = 27572,
    TextNext = 27573,
    TextAddCurve = 27574,
    TextApplyTyped = 27575,
    TextReplot = 27576,
    TextExchange = 27577,
    TextStartOver = 27578,
    TextLoad = 27579,
    TextSave = 27581,
    TextClose = 27584,
    TextCopyPoints = 27597,
    TextTraceAnother = 27599,
    TextSaveFamily = 27620,
    TextCalibrateFromPicture = 27640,
};

// The canvas and the plot lie over each other and always get the same
// rectangle, whichever of them is shown.
class CPaneWidget : public QFrame
{
public:
    explicit CPaneWidget(QWidget *parent) : QFrame(parent)
    {
        setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    }

protected:
    void resizeEvent(QResizeEvent *event) override
    {
        QFrame::resizeEvent(event);
        for (QObject *child : children())
            if (auto *w = qobject_cast<QWidget *>(child))
                w->setGeometry(contentsRect());
    }
};

// The program's icon: a small graph with a traced curve.
QIcon traceliftIcon()
{
    QIcon icon;
    for (int size : {16, 32, 48, 64}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        const qreal s = size / 16.0;
        p.setPen(QPen(QColor(60, 60, 60), s));
        p.setBrush(Qt::white);
        p.drawRect(QRectF(0.5 * s, 0.5 * s, 15 * s, 15 * s));
        p.setPen(QPen(QColor(128, 128, 255), 0.6 * s));
        for (int k = 1; k < 4; ++k) {
            p.drawLine(QPointF(4 * k * s, 1 * s), QPointF(4 * k * s, 15 * s));
            p.drawLine(QPointF(1 * s, 4 * k * s), QPointF(15 * s, 4 * k * s));
        }
        p.setPen(QPen(QColor(220, 40, 40), 1.6 * s));
        QPainterPath curve(QPointF(2 * s, 14 * s));
        curve.cubicTo(QPointF(5 * s, 3 * s), QPointF(9 * s, 3 * s), QPointF(14 * s, 2.5 * s));
        p.setBrush(Qt::NoBrush);
        p.drawPath(curve);
        icon.addPixmap(pixmap);
    }
    return icon;
}

template <typename W>
W *named(W *widget, int id)
{
    widget->setObjectName(QString::number(id));
    widget->setToolTip(LanguageString(id));
    return widget;
}

QLabel *label(int textId, QWidget *buddy)
{
    auto *l = new QLabel(LanguageString(textId));
    l->setBuddy(buddy);
    return l;
}

} // namespace

CTraceliftToolDlg::CTraceliftToolDlg(QWidget *parent) : QDialog(parent)
{
    setWindowTitle(LanguageString(TextTitle));
    setWindowIcon(traceliftIcon());
    setWindowFlags(windowFlags() | Qt::WindowMinMaxButtonsHint);
    setSizeGripEnabled(true);
    buildControls();
    connectControls();
    setMinimumSize(m_minTrackWidth, m_minTrackHeight);
    resize(1100, 760);

    m_records.Init(TraceliftTypeLib());
    m_nextAction->setEnabled(false);
    OnAddCurve();
}

CTraceliftToolDlg::~CTraceliftToolDlg()
{
    // The cursor editor goes before the plot does.
    m_plot->SetCursorObject(nullptr);
}

void CTraceliftToolDlg::buildControls()
{
    // Top: Back and Next, the hint line, and the (hidden) Add curve button.
    m_toolBar = new QToolBar(this);
    m_toolBar->setObjectName(QString::number(IdToolBar));
    m_toolBar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_toolBar->setIconSize(QSize(20, 20));
    m_backAction = m_toolBar->addAction(style()->standardIcon(QStyle::SP_ArrowBack), LanguageString(TextBack));
    named(m_backAction, IdBack);
    m_nextAction = m_toolBar->addAction(style()->standardIcon(QStyle::SP_ArrowForward), LanguageString(TextNext));
    named(m_nextAction, IdNext);
    m_backAction->setEnabled(false);
    m_calibrateAction = m_toolBar->addAction(style()->standardIcon(QStyle::SP_FileDialogContentsView),
                                             LanguageString(TextCalibrateFromPicture));
    named(m_calibrateAction, IdCalibrateFromPicture);
    m_calibrateAction->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_K));
    m_calibrateAction->setShortcutContext(Qt::WindowShortcut);

    m_hint = new CHintLine(this);
    m_hint->setObjectName(QString::number(IdHint));
    m_hint->setFrameShape(QFrame::StyledPanel);
    m_hint->setContentsMargins(6, 2, 6, 2);
    {
        QPalette pal = m_hint->palette();
        pal.setColor(QPalette::Window, QColor(255, 250, 220));
        m_hint->setPalette(pal);
        m_hint->setAutoFillBackground(true);
    }

    m_addCurveButton = named(new QPushButton(LanguageString(TextAddCurve), this), IdAddCurve);
    m_addCurveButton->setAutoDefault(false);
    m_addCurveButton->hide();

    auto *top = new QHBoxLayout;
    top->addWidget(m_toolBar);
    top->addWidget(m_hint, 1);
    top->addWidget(m_addCurveButton);
    m_traceAnotherButton = named(new QPushButton(LanguageString(TextTraceAnother), this), IdTraceAnother);
    m_traceAnotherButton->setAutoDefault(false);
    m_traceAnotherButton->setEnabled(false);
    top->addWidget(m_traceAnotherButton);

    // The pane: canvas and plot over each other.
    m_pane = new CPaneWidget(this);
    m_pane->setMinimumSize(200, 150);
    m_pane->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    m_canvas = new CTraceliftWnd(m_pane);
    m_canvas->hide();
    // No tooltips over the panes: they would cover the spot being aimed at.
    createPlot();

    // Y axis, left of the pane: the second corner's value at the top, the
    // first corner's at the bottom, as the corners lie on the picture.
    auto makeValue = [this](int id) {
        auto *e = named(new CExEditCtrl(this, ExEditAxisValue), id);
        e->SetLimitText(49);
        e->setMaximumWidth(140);
        return e;
    };
    m_yAtSecondEdit = makeValue(IdYAtSecond);
    m_yAtFirstEdit = makeValue(IdYAtFirst);
    m_xAtFirstEdit = makeValue(IdXAtFirst);
    m_xAtSecondEdit = makeValue(IdXAtSecond);

    auto makeUnit = [this](int id) {
        auto *c = named(new QComboBox(this), id);
        for (const CUnitPrefix &p : g_unitPrefixes)
            c->addItem(QString::fromLatin1(p.text), p.exponent);
        c->setCurrentIndex(4); // no prefix
        return c;
    };
    m_xUnitCombo = makeUnit(IdXUnit);
    m_yUnitCombo = makeUnit(IdYUnit);
    m_xLogCheck = named(new QCheckBox(LanguageString(TextLogarithmic), this), IdXLog);
    m_yLogCheck = named(new QCheckBox(LanguageString(TextLogarithmic), this), IdYLog);
    m_xNameEdit = named(new QLineEdit(this), IdXName);
    m_yNameEdit = named(new QLineEdit(this), IdYName);
    m_xNameEdit->setMaximumWidth(140);
    m_yNameEdit->setMaximumWidth(140);

    auto *yColumn = new QVBoxLayout;
    yColumn->addWidget(label(TextYAtSecond, m_yAtSecondEdit));
    yColumn->addWidget(m_yAtSecondEdit);
    yColumn->addStretch(1);
    yColumn->addWidget(label(TextYName, m_yNameEdit));
    yColumn->addWidget(m_yNameEdit);
    yColumn->addWidget(label(TextUnitPrefix, m_yUnitCombo));
    yColumn->addWidget(m_yUnitCombo);
    yColumn->addWidget(m_yLogCheck);
    yColumn->addStretch(1);
    yColumn->addWidget(label(TextYAtFirst, m_yAtFirstEdit));
    yColumn->addWidget(m_yAtFirstEdit);

    // X axis, below the pane: first corner's value left, second's right.
    auto *xRow = new QHBoxLayout;
    xRow->addWidget(label(TextXAtFirst, m_xAtFirstEdit));
    xRow->addWidget(m_xAtFirstEdit);
    xRow->addStretch(1);
    xRow->addWidget(label(TextXName, m_xNameEdit));
    xRow->addWidget(m_xNameEdit);
    xRow->addWidget(label(TextUnitPrefix, m_xUnitCombo));
    xRow->addWidget(m_xUnitCombo);
    xRow->addWidget(m_xLogCheck);
    xRow->addStretch(1);
    xRow->addWidget(label(TextXAtSecond, m_xAtSecondEdit));
    xRow->addWidget(m_xAtSecondEdit);

    // The point text, the read-out and the curve commands.
    m_pointsEdit = named(new CExEditCtrl(this, ExEditAnyText), IdPoints);
    m_pointsEdit->SetLimitText(255);
    auto *pointsRow = new QHBoxLayout;
    pointsRow->addWidget(label(TextPoints, m_pointsEdit));
    pointsRow->addWidget(m_pointsEdit, 1);

    m_readout = named(new QLineEdit(this), IdReadout);
    m_cursorEditor.SetReadout(m_readout);
    m_readout->setReadOnly(true);
    m_readout->setFocusPolicy(Qt::NoFocus);
    m_readout->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("(-0.00000e-000,-0.00000e-000)")));
    m_exchangeCheck = named(new QCheckBox(LanguageString(TextExchange), this), IdExchangeXY);
    auto button = [this](int textId, int id) {
        auto *b = named(new QPushButton(LanguageString(textId), this), id);
        b->setAutoDefault(false);
        return b;
    };
    QPushButton *applyTyped = button(TextApplyTyped, IdApplyTyped);
    QPushButton *replot = button(TextReplot, IdReplot);
    QPushButton *startOver = button(TextStartOver, IdStartOver);
    QPushButton *copyPoints = button(TextCopyPoints, IdCopyPoints);
    auto *toolsRow = new QHBoxLayout;
    pointsRow->addWidget(buildAutoTraceControls());
    toolsRow->addWidget(label(TextPosition, m_readout));
    toolsRow->addWidget(m_readout);
    toolsRow->addSpacing(12);
    toolsRow->addWidget(m_exchangeCheck);
    toolsRow->addStretch(1);
    toolsRow->addWidget(copyPoints);
    toolsRow->addWidget(applyTyped);
    toolsRow->addWidget(replot);
    toolsRow->addWidget(startOver);

    // Bottom: the file, Load, Save (OK) and Close (Cancel).
    m_fileName = named(new QLineEdit(this), IdFileName);
    m_fileName->setReadOnly(true);
    m_fileName->setFocusPolicy(Qt::NoFocus);
    m_loadButton = button(TextLoad, IdLoad);
    QPushButton *saveFamily = button(TextSaveFamily, IdSaveFamily);
    connect(saveFamily, &QPushButton::clicked, this, &CTraceliftToolDlg::OnSaveFamilyCsv);
    m_okButton = named(new QPushButton(LanguageString(TextSave), this), IdOk);
    m_okButton->setDefault(true);
    m_cancelButton = button(TextClose, IdCancel);
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(label(TextFile, m_fileName));
    bottom->addWidget(m_fileName, 1);
    bottom->addWidget(m_loadButton);
    bottom->addWidget(saveFamily);
    bottom->addSpacing(12);
    bottom->addWidget(m_okButton);
    bottom->addWidget(m_cancelButton);

    auto *grid = new QGridLayout;
    grid->addLayout(yColumn, 0, 0);
    grid->addWidget(m_pane, 0, 1);
    grid->addLayout(xRow, 1, 1);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(0, 1);

    auto *main = new QVBoxLayout(this);
    main->addLayout(top);
    main->addLayout(grid, 1);
    main->addLayout(pointsRow);
    main->addLayout(toolsRow);
    main->addLayout(bottom);

    // Ctrl+V pastes a picture unless a text field takes it; always enabled.
    auto *paste = new QAction(this);
    paste->setObjectName(QString::number(IdPaste));
    paste->setShortcut(QKeySequence::Paste);
    paste->setShortcutContext(Qt::WindowShortcut);
    addAction(paste);
    connect(paste, &QAction::triggered, this, &CTraceliftToolDlg::OnPaste);
    // Ctrl+Shift+C copies the points, whichever control has the keyboard.
    auto *copy = new QAction(this);
    copy->setShortcut(QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
    copy->setShortcutContext(Qt::WindowShortcut);
    addAction(copy);
    connect(copy, &QAction::triggered, this, &CTraceliftToolDlg::OnCopyPoints);
    connect(copyPoints, &QPushButton::clicked, this, &CTraceliftToolDlg::OnCopyPoints);

    QWidget *const order[] = {m_xAtFirstEdit, m_xAtSecondEdit, m_yAtFirstEdit, m_yAtSecondEdit, m_xNameEdit,
                 m_xUnitCombo, m_xLogCheck, m_yNameEdit, m_yUnitCombo, m_yLogCheck, m_pointsEdit,
                 m_exchangeCheck, copyPoints, applyTyped, replot, startOver, m_loadButton, m_okButton,
                 m_cancelButton};
    for (std::size_t i = 1; i < std::size(order); ++i)
        setTabOrder(order[i - 1], order[i]);
}

void CTraceliftToolDlg::connectControls()
{
    connect(m_nextAction, &QAction::triggered, this, &CTraceliftToolDlg::OnNext);
    connect(m_backAction, &QAction::triggered, this, &CTraceliftToolDlg::OnBack);
    connect(m_calibrateAction, &QAction::triggered, this, &CTraceliftToolDlg::OnCalibrateFromPicture);
    connect(m_addCurveButton, &QPushButton::clicked, this, &CTraceliftToolDlg::OnAddCurve);
    connect(m_traceAnotherButton, &QPushButton::clicked, this, &CTraceliftToolDlg::OnTraceAnotherCurve);
    connect(findChild<QPushButton *>(QString::number(IdApplyTyped)), &QPushButton::clicked, this,
            &CTraceliftToolDlg::OnApplyTypedCurve);
    connect(findChild<QPushButton *>(QString::number(IdReplot)), &QPushButton::clicked, this,
            &CTraceliftToolDlg::OnReplot);
    connect(findChild<QPushButton *>(QString::number(IdStartOver)), &QPushButton::clicked, this,
            &CTraceliftToolDlg::OnStartOver);
    connect(m_exchangeCheck, &QCheckBox::clicked, this, &CTraceliftToolDlg::OnExchangeXY);
    connect(m_loadButton, &QPushButton::clicked, this, &CTraceliftToolDlg::OnLoad);
    connect(m_okButton, &QPushButton::clicked, this, &CTraceliftToolDlg::OnOk);
    connect(m_cancelButton, &QPushButton::clicked, this, &CTraceliftToolDlg::reject);

    for (CExEditCtrl *e : {m_xAtFirstEdit, m_xAtSecondEdit, m_yAtSecondEdit, m_yAtFirstEdit, m_pointsEdit})
        connect(e, &QLineEdit::textChanged, this, &CTraceliftToolDlg::markDirty);
    connect(m_xLogCheck, &QCheckBox::clicked, this, &CTraceliftToolDlg::markDirty);
    connect(m_yLogCheck, &QCheckBox::clicked, this, &CTraceliftToolDlg::markDirty);
    connect(m_xUnitCombo, &QComboBox::activated, this, &CTraceliftToolDlg::ApplyFields);
    connect(m_yUnitCombo, &QComboBox::activated, this, &CTraceliftToolDlg::ApplyFields);

    // With another tool of the plot's toolbar the window reads out itself.
    connect(m_plot, &CGraphWnd::PositionText, m_readout, &QLineEdit::setText);
    connect(m_canvas, &CTraceliftWnd::clicked, this, &CTraceliftToolDlg::onCanvasClicked);
    connect(m_canvas, &CTraceliftWnd::valueUnderMouse, this, &CTraceliftToolDlg::onValueUnderMouse);
    connect(m_canvas, &CTraceliftWnd::pictureFileOffered, this, &CTraceliftToolDlg::OfferPictureFile);
    connect(m_canvas, &CTraceliftWnd::pointDragged, this, &CTraceliftToolDlg::DragPointTo);
    connect(m_canvas, &CTraceliftWnd::curvePicked, this, &CTraceliftToolDlg::PickCurveAt);
}

void CTraceliftToolDlg::createPlot()
{
    m_plot = new CCurveWnd(m_pane);
    auto *graph = new CGraphCurve(1, m_plot->m_dpi);
    graph->m_backColor = 0xFFFFFF;
    graph->m_foreColor = 0;
    m_plot->SetGraphData(graph, 1, true, &font());
    // Moves and clicks over the plot go to the cursor editor, which reads
    // the values out; each paint draws the graph straight.
    m_plot->SetCursorObject(&m_cursorEditor);
    m_plot->SetTool(11);
    m_plot->m_drawDirect = 1;
    // A little room above the plot, and room at the right and bottom for the
    // last X label and the axis title.
    m_plot->SetAxisMargins(0, 2, 20, 20);
}

CToolFields CTraceliftToolDlg::ReadFields() const
{
    CToolFields f;
    f.xAtFirst = m_xAtFirstEdit->text();
    f.xAtSecond = m_xAtSecondEdit->text();
    f.yAtSecond = m_yAtSecondEdit->text();
    f.yAtFirst = m_yAtFirstEdit->text();
    f.xLog = m_xLogCheck->checkState() == Qt::Checked;
    f.yLog = m_yLogCheck->checkState() == Qt::Checked;
    f.points = m_pointsEdit->text();
    f.xUnit = m_xUnitCombo->currentText();
    f.xName = m_xNameEdit->text();
    f.yName = m_yNameEdit->text();
    f.fileName = m_fileName->text();
    f.yUnit = m_yUnitCombo->currentText();
    f.exchangeXY = m_exchangeCheck->isChecked();
    return f;
}

void CTraceliftToolDlg::selectUnit(QComboBox *combo, const QString &prefix)
{
    // By letter: the first item whose text starts as the prefix does.
    const QChar letter = prefix.isEmpty() ? QChar(u' ') : prefix.at(0);
    for (int i = 0; i < combo->count(); ++i)
        if (combo->itemText(i).startsWith(letter)) {
            combo->setCurrentIndex(i);
            return;
        }
}

void CTraceliftToolDlg::writeFields(const CToolFields &f)
{
    m_xAtFirstEdit->setText(f.xAtFirst);
    m_xAtSecondEdit->setText(f.xAtSecond);
    m_yAtSecondEdit->setText(f.yAtSecond);
    m_yAtFirstEdit->setText(f.yAtFirst);
    m_xLogCheck->setChecked(f.xLog);
    m_yLogCheck->setChecked(f.yLog);
    m_pointsEdit->setText(f.points);
    selectUnit(m_xUnitCombo, f.xUnit);
    selectUnit(m_yUnitCombo, f.yUnit);
    m_xNameEdit->setText(f.xName);
    m_yNameEdit->setText(f.yName);
    m_exchangeCheck->setChecked(f.exchangeXY);
}

void CTraceliftToolDlg::keyPressEvent(QKeyEvent *event)
{
    // Escape never closes the dialog; Close does.
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        event->accept();
        return;
    }
    // Enter in a field would press Save, the default button.  While a curve
    // is captured it moves on as Next does instead (and does nothing where
    // Next is disabled).
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    const CaptureMode mode = m_canvas->Mode();
    if (enter && mode >= ModeWaitPicture && mode <= ModeTrace) {
        event->accept();
        if (m_nextAction->isEnabled() && m_nextAction->isVisible())
            OnNext();
        return;
    }
    if (tracing() && pointEditKey(event)) {
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

bool CTraceliftToolDlg::pointEditKey(QKeyEvent *event)
{
    const Qt::KeyboardModifiers mods = event->modifiers() & ~Qt::KeypadModifier;
    const bool shift = mods == Qt::ShiftModifier;
    if (event->key() == Qt::Key_Z && mods == Qt::ControlModifier)
        return OnUndoPoint();
    if (event->key() == Qt::Key_Z && mods == (Qt::ControlModifier | Qt::ShiftModifier))
        return OnRedoPoint();
    if (event->key() == Qt::Key_Delete && mods == Qt::NoModifier) {
        const QPointF at = m_canvas->MousePosition();
        return DeletePointNear(at.x(), at.y());
    }
    if (mods != Qt::NoModifier && !shift)
        return false;
    // An eighth of a pixel, as fine as the magnifier places a point.
    const double step = shift ? 1.0 : 1.0 / 8;
    switch (event->key()) {
    case Qt::Key_Left:
        return MoveLastPoint(-step, 0);
    case Qt::Key_Right:
        return MoveLastPoint(step, 0);
    case Qt::Key_Up:
        return MoveLastPoint(0, -step);
    case Qt::Key_Down:
        return MoveLastPoint(0, step);
    default:
        return false;
    }
}

void CTraceliftToolDlg::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (m_initialised)
        return;
    m_initialised = true;
    m_minTrackWidth = width() / 2;
    m_minTrackHeight = height() / 2;
    setMinimumSize(m_minTrackWidth, m_minTrackHeight);
    if (m_viewOnly > 0) {
        m_backAction->setVisible(false);
        m_nextAction->setVisible(false);
    }
}
