#include "graphdata/pages/curve2page.h"

#include "support/languagestring.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

enum : int {
    TextNoSymbol = 43120, // 43120..43124: none, circle, square, triangle, star
    TextNoLine = 43125,
    TextLabel = 43820,
    TextColor = 43821,
    TextLine = 43822,
    TextSymbol = 43823,
    TextConnect = 43824,
    TextUp = 43826,
    TextDown = 43827,
    TextDelete = 43828,
    TextAxisN = 43847,
};

const int kNewAxis = -1;

void fillLines(QComboBox *box, int current)
{
    box->addItem(QStringLiteral("Dot"), -12);
    box->addItem(QStringLiteral("Dash"), -11);
    box->addItem(LanguageString(TextNoLine), 0);
    for (int t = 1; t <= 6; ++t)
        box->addItem(QString::number(t), t);
    int at = box->findData(current);
    if (at < 0) {
        // A thickness the list does not name stays as it is.
        box->addItem(QString::number(current), current);
        at = box->count() - 1;
    }
    box->setCurrentIndex(at);
}

void fillSymbols(QComboBox *box, int current)
{
    for (int s = 0; s <= 4; ++s)
        box->addItem(LanguageString(TextNoSymbol + s), s);
    box->addItem(QStringLiteral("Pixel"), 10);
    int at = box->findData(current);
    if (at < 0) {
        box->addItem(QString::number(current), current);
        at = box->count() - 1;
    }
    box->setCurrentIndex(at);
}

} // namespace

CCurve2List::CCurve2List(QWidget *parent) : QTableWidget(0, ColumnCount, parent)
{
    setHorizontalHeaderLabels({LanguageString(TextLabel), LanguageString(TextColor), LanguageString(TextLine),
                               LanguageString(TextSymbol), LanguageString(TextConnect), QStringLiteral("Y-Axis")});
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    // The editors take what they need; the label the rest, and at least
    // room for a few words.
    horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    horizontalHeader()->setSectionResizeMode(ColLabel, QHeaderView::Stretch);
    horizontalHeader()->setMinimumSectionSize(fontMetrics().averageCharWidth() * 6);
    verticalHeader()->setVisible(false);
    setTabKeyNavigation(false);
}

QComboBox *CCurve2List::LineBox(int row) const { return qobject_cast<QComboBox *>(cellWidget(row, ColLine)); }
QComboBox *CCurve2List::SymbolBox(int row) const { return qobject_cast<QComboBox *>(cellWidget(row, ColSymbol)); }
QComboBox *CCurve2List::AxisBox(int row) const { return qobject_cast<QComboBox *>(cellWidget(row, ColAxis)); }
CColorField *CCurve2List::ColorField(int row) const { return qobject_cast<CColorField *>(cellWidget(row, ColColor)); }

CCurve_2_Page::CCurve_2_Page(CGraphOptionsCopy &copy, QWidget *parent)
    : COptionsPage(copy, parent), m_list(new CCurve2List(this)), m_up(new QPushButton(LanguageString(TextUp), this)),
      m_down(new QPushButton(LanguageString(TextDown), this)), m_delete(new QPushButton(LanguageString(TextDelete), this))
{
    auto *layout = new QHBoxLayout(this);
    layout->addWidget(m_list, 1);
    auto *buttons = new QVBoxLayout;
    buttons->addWidget(m_up);
    buttons->addWidget(m_down);
    buttons->addWidget(m_delete);
    buttons->addStretch(1);
    layout->addLayout(buttons);
    connect(m_up, &QPushButton::clicked, this, [this] { MoveCurrent(-1); });
    connect(m_down, &QPushButton::clicked, this, [this] { MoveCurrent(1); });
    connect(m_delete, &QPushButton::clicked, this, &CCurve_2_Page::DeleteCurrent);
}

void CCurve_2_Page::fillAxes(QComboBox *box, int axis)
{
    const QSignalBlocker block(box);
    box->clear();
    for (int i = 0; i < std::max(1, m_copy.m_ranges.GetSize()); ++i)
        box->addItem(LanguageString(TextAxisN).arg(i + 1), i);
    box->addItem(QStringLiteral("[New Y-Axis]"), kNewAxis);
    box->setCurrentIndex(std::clamp(axis, 0, box->count() - 2));
}

void CCurve_2_Page::addRow(const CCurveBasicInfo &curve, int entry)
{
    const int row = m_list->rowCount();
    m_list->insertRow(row);
    auto *label = new QTableWidgetItem(curve.m_colLabel.isEmpty() ? curve.m_colName : curve.m_colLabel);
    label->setData(Qt::UserRole, entry);
    m_list->setItem(row, CCurve2List::ColLabel, label);
    auto *color = new CColorField;
    color->SetColor(curve.m_color);
    m_list->setCellWidget(row, CCurve2List::ColColor, color);
    auto *line = new QComboBox;
    fillLines(line, curve.m_lineThickness);
    m_list->setCellWidget(row, CCurve2List::ColLine, line);
    auto *symbol = new QComboBox;
    fillSymbols(symbol, curve.m_symbol);
    m_list->setCellWidget(row, CCurve2List::ColSymbol, symbol);
    auto *connect = new QTableWidgetItem;
    connect->setFlags(Qt::ItemIsUserCheckable | Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    connect->setCheckState(curve.m_connect ? Qt::Checked : Qt::Unchecked);
    m_list->setItem(row, CCurve2List::ColConnect, connect);
    auto *axis = new QComboBox;
    fillAxes(axis, curve.m_yAxisIndex);
    m_list->setCellWidget(row, CCurve2List::ColAxis, axis);
    QObject::connect(axis, &QComboBox::activated, this, [this, axis](int index) {
        if (axis->itemData(index).toInt() != kNewAxis)
            return;
        // A new range with the first one's settings; every row's list
        // offers it from now on, and this row takes it.
        const int added = m_copy.AddRange();
        for (int r = 0; r < m_list->rowCount(); ++r) {
            QComboBox *box = m_list->AxisBox(r);
            fillAxes(box, box == axis ? added : box->currentData().toInt());
        }
    });
}

int CCurve_2_Page::entryOf(int row) const { return m_list->item(row, CCurve2List::ColLabel)->data(Qt::UserRole).toInt(); }

void CCurve_2_Page::Load()
{
    m_list->setRowCount(0);
    for (int i = 0; i < m_copy.m_curves.GetSize(); ++i)
        addRow(*m_copy.m_curves.GetAt(i), i);
    if (m_list->rowCount() > 0)
        m_list->selectRow(0);
}

bool CCurve_2_Page::Store(COptionsFault &fault)
{
    // Read every row before changing the copies, so that a wrong colour
    // leaves them as they were.
    std::vector<CCurveBasicInfo *> ordered;
    for (int row = 0; row < m_list->rowCount(); ++row) {
        std::uint32_t color;
        CColorField *field = m_list->ColorField(row);
        if (!field->GetColor(color)) {
            for (CCurveBasicInfo *c : ordered)
                delete c;
            fault = {COptionsFault::PageCurves, row, COptionsFault::FieldColor, BadColorText(field->Edit()->text())};
            return false;
        }
        auto *curve = new CCurveBasicInfo(*m_copy.m_curves.GetAt(entryOf(row)));
        const QString label = m_list->item(row, CCurve2List::ColLabel)->text();
        if (label != curve->m_colName || !curve->m_colLabel.isEmpty())
            curve->m_colLabel = label;
        curve->m_color = color;
        curve->m_lineThickness = m_list->LineBox(row)->currentData().toInt();
        curve->m_symbol = m_list->SymbolBox(row)->currentData().toInt();
        curve->m_connect = m_list->item(row, CCurve2List::ColConnect)->checkState() == Qt::Checked;
        curve->m_yAxisIndex = std::max(0, m_list->AxisBox(row)->currentData().toInt());
        ordered.push_back(curve);
    }
    m_copy.m_curves.DeleteAll();
    for (CCurveBasicInfo *c : ordered)
        m_copy.m_curves.Add(c);
    // The rows now stand for the entries in their own order.
    for (int row = 0; row < m_list->rowCount(); ++row)
        m_list->item(row, CCurve2List::ColLabel)->setData(Qt::UserRole, row);
    return true;
}

void CCurve_2_Page::Focus(const COptionsFault &fault)
{
    if (fault.index < 0 || fault.index >= m_list->rowCount())
        return;
    m_list->selectRow(fault.index);
    FocusField(m_list->ColorField(fault.index)->Edit());
}

void CCurve_2_Page::MoveCurrent(int step)
{
    const int row = m_list->currentRow();
    const int to = row + step;
    if (row < 0 || to < 0 || to >= m_list->rowCount())
        return;
    // Store the edits, swap the two entries, and show the list again.
    COptionsFault fault;
    if (!Store(fault)) {
        Focus(fault);
        return;
    }
    std::vector<CCurveBasicInfo *> entries;
    while (m_copy.m_curves.GetSize() > 0)
        entries.push_back(m_copy.m_curves.Detach(0));
    std::swap(entries[std::size_t(row)], entries[std::size_t(to)]);
    for (CCurveBasicInfo *c : entries)
        m_copy.m_curves.Add(c);
    Load();
    m_list->selectRow(to);
    m_list->setCurrentCell(to, CCurve2List::ColLabel);
}

void CCurve_2_Page::DeleteCurrent()
{
    const int row = m_list->currentRow();
    if (row < 0)
        return;
    COptionsFault fault;
    if (!Store(fault)) {
        Focus(fault);
        return;
    }
    m_copy.m_curves.DeleteAt(row);
    Load();
    if (m_list->rowCount() > 0) {
        const int next = std::min(row, m_list->rowCount() - 1);
        m_list->selectRow(next);
        m_list->setCurrentCell(next, CCurve2List::ColLabel);
    }
}
