#include "graphdata/pages/display2page.h"

#include "graphdata/emi/emilimits.h"
#include "graphdata/formula/formulacurve.h"
#include "graphdata/formula/graphcustom.h"
#include "graphdata/graphcurve.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStandardItemModel>
#include <QVBoxLayout>

namespace {

enum : int {
    TextSource = 43871,
    TextShown = 43872,
    TextAdd = 43873,
    TextRemove = 43874,
    TextXOver = 43875,
    TextLimit = 43876,
    TextNoLimit = 43877,
    TextFormula = 43878,
    TextAddFormula = 43879,
    TextBadFormula = 43880,
};

// What a source row stands for: a data column, or a saved formula.
enum : int { SourceColumn = 1, SourceFormula = 2 };
const int kKindRole = Qt::UserRole;
const int kIndexRole = Qt::UserRole + 1;

QString componentPrefix(int component)
{
    switch (component) {
    case CCurveBasicInfo::ComponentAngleDeg: return QStringLiteral("Angle(D)_");
    case CCurveBasicInfo::ComponentAngleRad: return QStringLiteral("Angle(R)_");
    case CCurveBasicInfo::ComponentReal: return QStringLiteral("Real_");
    case CCurveBasicInfo::ComponentImag: return QStringLiteral("Img_");
    default: return QString();
    }
}

QString columnName(const QStringList &names, int column)
{
    const QString name = column >= 0 && column < names.size() ? names.at(column) : QString();
    return name.isEmpty() ? QString::number(column + 1) : name;
}

} // namespace

QString DisplayEntryName(const CCurveBasicInfo &curve, const QStringList &columnNames)
{
    if (curve.Origin() == CCurveBasicInfo::OriginColumn)
        return componentPrefix(curve.Component()) + columnName(columnNames, curve.m_colIndex);
    const QString label = curve.m_colLabel.isEmpty() ? curve.m_colName : curve.m_colLabel;
    return curve.IsLimitLine() ? label : componentPrefix(curve.Component()) + label;
}

QString FormulaCompileError(const CGraphCurve &graph, const QString &formula)
{
    CFormulaCurveJob job;
    if (job.Prepare(graph, formula))
        return QString();
    return LanguageString(TextBadFormula).arg(formula, FormulaErrorText(job));
}

bool CheckNewFormulas(const CGraphCurve &graph, const CGraphOptionsCopy &copy, COptionsFault &fault)
{
    for (int i = 0; i < copy.m_curves.GetSize(); ++i) {
        const CCurveBasicInfo &entry = *copy.m_curves.GetAt(i);
        if (entry.Origin() != CCurveBasicInfo::OriginComputed)
            continue;
        // A formula the graph shows already keeps its column.
        bool shown = false;
        for (const CCurveInfo *curve : graph.m_curves)
            shown = shown || (curve->Origin() == CCurveBasicInfo::OriginComputed && curve->m_colName == entry.m_colName);
        if (shown)
            continue;
        const QString message = FormulaCompileError(graph, entry.m_colName);
        if (!message.isEmpty()) {
            fault = {COptionsFault::PageDisplay, i, COptionsFault::FieldFormula, message};
            return false;
        }
    }
    return true;
}

// ---- the formula entry ----------------------------------------------------

const QStringList &CDisplay_2_VectorChild::InsertTexts()
{
    static const QStringList texts{QStringLiteral("SIN("), QStringLiteral("COS("),   QStringLiteral("TAN("),
                                   QStringLiteral("ATAN("), QStringLiteral("EXP("),  QStringLiteral("LOG("),
                                   QStringLiteral("LOG10("), QStringLiteral("ABS("), QStringLiteral("SIGN("),
                                   QStringLiteral("AVG("), QStringLiteral("AVGX(,"), QStringLiteral("INT(")};
    return texts;
}

CDisplay_2_VectorChild::CDisplay_2_VectorChild(QWidget *parent)
    : QWidget(parent), m_formula(new QLineEdit(this)), m_add(new QPushButton(LanguageString(TextAddFormula), this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *line = new QHBoxLayout;
    line->addWidget(new QLabel(LanguageString(TextFormula), this));
    line->addWidget(m_formula, 1);
    line->addWidget(m_add);
    layout->addLayout(line);
    auto *grid = new QGridLayout;
    grid->setSpacing(2);
    const QStringList &texts = InsertTexts();
    const int perRow = 6;
    QWidget *previous = m_add;
    for (int i = 0; i < texts.size(); ++i) {
        auto *button = new QPushButton(texts.at(i), this);
        // The caret stays in the entry; the buttons are reached with Tab.
        button->setFocusPolicy(Qt::TabFocus);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, [this, text = texts.at(i)] {
            m_formula->insert(text);
            m_formula->setFocus(Qt::OtherFocusReason);
        });
        grid->addWidget(button, i / perRow, i % perRow);
        setTabOrder(previous, button);
        previous = button;
        m_inserts.push_back(button);
    }
    layout->addLayout(grid);
    m_add->setAutoDefault(false);
    setTabOrder(m_formula, m_add);
}

// ---- the page ---------------------------------------------------------------

CDisplay_2_Page::CDisplay_2_Page(CGraphOptionsCopy &copy, QWidget *parent)
    : COptionsPage(copy, parent), m_source(new QListWidget(this)), m_display(new QListWidget(this)),
      m_addButton(new QPushButton(LanguageString(TextAdd), this)),
      m_removeButton(new QPushButton(LanguageString(TextRemove), this)), m_xColumn(new QComboBox(this)),
      m_emi(new QComboBox(this)), m_vector(new CDisplay_2_VectorChild(this))
{
    m_source->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_display->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_addButton->setAutoDefault(false);
    m_removeButton->setAutoDefault(false);

    auto *layout = new QVBoxLayout(this);
    auto *lists = new QHBoxLayout;
    auto *left = new QVBoxLayout;
    left->addWidget(new QLabel(LanguageString(TextSource), this));
    left->addWidget(m_source, 1);
    auto *middle = new QVBoxLayout;
    middle->addStretch(1);
    middle->addWidget(m_addButton);
    middle->addWidget(m_removeButton);
    middle->addStretch(1);
    auto *right = new QVBoxLayout;
    right->addWidget(new QLabel(LanguageString(TextShown), this));
    right->addWidget(m_display, 1);
    lists->addLayout(left, 1);
    lists->addLayout(middle);
    lists->addLayout(right, 1);
    layout->addLayout(lists, 1);

    auto *form = new QFormLayout;
    m_xLabel = new QLabel(LanguageString(TextXOver), this);
    form->addRow(m_xLabel, m_xColumn);
    form->addRow(LanguageString(TextLimit), m_emi);
    layout->addLayout(form);
    layout->addWidget(m_vector);

    connect(m_addButton, &QPushButton::clicked, this, &CDisplay_2_Page::AddSelected);
    connect(m_removeButton, &QPushButton::clicked, this, &CDisplay_2_Page::RemoveSelected);
    connect(m_source, &QListWidget::itemDoubleClicked, this, &CDisplay_2_Page::AddSelected);
    connect(m_display, &QListWidget::itemDoubleClicked, this, &CDisplay_2_Page::RemoveSelected);
    connect(m_vector->m_add, &QPushButton::clicked, this, &CDisplay_2_Page::AddFormula);
    connect(m_emi, &QComboBox::currentIndexChanged, this, &CDisplay_2_Page::showLimit);

    setTabOrder(m_source, m_addButton);
    setTabOrder(m_addButton, m_removeButton);
    setTabOrder(m_removeButton, m_display);
    setTabOrder(m_display, m_xColumn);
    setTabOrder(m_xColumn, m_emi);
    setTabOrder(m_emi, m_vector->m_formula);
}

CDisplay_2_Page::~CDisplay_2_Page() = default;

std::uint32_t CDisplay_2_Page::freeColor() const
{
    auto taken = [this](std::uint32_t color) {
        for (const auto &e : m_entries) {
            if (e->m_color == color)
                return true;
        }
        return false;
    };
    for (const CCurveStyle &style : g_curvePalette) {
        if (!taken(style.color))
            return style.color;
    }
    return g_curveFallbackColors[m_entries.size() % 12];
}

void CDisplay_2_Page::addDisplayRow(std::unique_ptr<CCurveBasicInfo> entry)
{
    auto *item = new QListWidgetItem(DisplayEntryName(*entry, m_copy.m_columnNames));
    if (entry->Origin() == CCurveBasicInfo::OriginComputed)
        item->setToolTip(entry->m_colName);
    m_display->addItem(item);
    m_entries.push_back(std::move(entry));
}

void CDisplay_2_Page::fillSource()
{
    m_source->clear();
    for (int c = 0; c < m_copy.m_columnNames.size(); ++c) {
        bool shown = false;
        for (const auto &e : m_entries)
            shown = shown || (e->Origin() == CCurveBasicInfo::OriginColumn && e->m_colIndex == c);
        if (shown)
            continue;
        auto *item = new QListWidgetItem(columnName(m_copy.m_columnNames, c));
        item->setData(kKindRole, SourceColumn);
        item->setData(kIndexRole, c);
        m_source->addItem(item);
    }
    const CGraphCustom &custom = GetGraphCustom();
    for (int i = 0; i < custom.m_formulaNames.size() && i < custom.m_formulaBodies.size(); ++i) {
        auto *item = new QListWidgetItem(custom.m_formulaNames.at(i));
        item->setToolTip(custom.m_formulaBodies.at(i));
        item->setData(kKindRole, SourceFormula);
        item->setData(kIndexRole, i);
        m_source->addItem(item);
    }
}

void CDisplay_2_Page::Load()
{
    m_display->clear();
    m_entries.clear();
    for (const CCurveBasicInfo *curve : m_copy.m_curves)
        addDisplayRow(std::make_unique<CCurveBasicInfo>(*curve));
    fillSource();

    // The X list: the kinds of axis, then the columns.
    const QSignalBlocker block(m_xColumn);
    m_xColumn->clear();
    m_xColumn->addItem(QStringLiteral("Time"));
    m_xColumn->addItem(QStringLiteral("Frequency"));
    m_xColumn->addItem(QStringLiteral("Index"));
    for (int c = 0; c < m_copy.m_columnNames.size(); ++c)
        m_xColumn->addItem(columnName(m_copy.m_columnNames, c));
    // Frequency comes from the transform and cannot be chosen here.
    if (auto *model = qobject_cast<QStandardItemModel *>(m_xColumn->model()))
        model->item(XFrequency)->setEnabled(m_copy.m_spectrum != 0);
    int x = XTime;
    if (m_copy.m_spectrum)
        x = XFrequency;
    else if (m_copy.m_xRowNumbers)
        x = XIndex;
    else if (m_copy.m_xyMode && m_copy.m_xColumnIndex >= 0 && m_copy.m_xColumnIndex < m_copy.m_columnNames.size())
        x = XFirstColumn + m_copy.m_xColumnIndex;
    m_xColumn->setCurrentIndex(x);
    m_xColumn->setEnabled(!m_copy.m_spectrum);
    m_xColumn->setVisible(!m_copy.m_scope);
    m_xLabel->setVisible(!m_copy.m_scope);

    // Limit lines belong over a spectrum.
    const QSignalBlocker blockLimits(m_emi);
    m_emi->clear();
    m_emi->addItem(LanguageString(TextNoLimit), -1);
    const CCurveInfoArray &limits = GetEmiLimits();
    for (int i = 0; i < limits.GetSize(); ++i)
        m_emi->addItem(limits.GetAt(i)->m_colLabel, i);
    int shownLimit = m_copy.m_emiLimit;
    for (const auto &e : m_entries) {
        if (e->IsLimitLine()) {
            shownLimit = e->m_colIndex;
            break;
        }
    }
    m_emi->setCurrentIndex(std::max(0, m_emi->findData(shownLimit)));
    m_emi->setEnabled(m_copy.m_spectrum != 0);
}

void CDisplay_2_Page::showLimit()
{
    // The display list shows the limit chosen, in place of any other.
    const int limit = m_emi->currentData().toInt();
    for (int row = int(m_entries.size()) - 1; row >= 0; --row) {
        if (m_entries[std::size_t(row)]->IsLimitLine() && m_entries[std::size_t(row)]->m_colIndex != limit) {
            delete m_display->takeItem(row);
            m_entries.erase(m_entries.begin() + row);
        }
    }
    const CCurveInfoArray &limits = GetEmiLimits();
    if (limit < 0 || limit >= limits.GetSize())
        return;
    for (const auto &e : m_entries) {
        if (e->IsLimitLine())
            return;
    }
    addDisplayRow(std::make_unique<CCurveBasicInfo>(static_cast<const CCurveBasicInfo &>(*limits.GetAt(limit))));
}

void CDisplay_2_Page::AddSelected()
{
    const QList<QListWidgetItem *> chosen = m_source->selectedItems();
    if (chosen.isEmpty())
        return;
    const CGraphCustom &custom = GetGraphCustom();
    for (int row = 0; row < m_source->count(); ++row) {
        const QListWidgetItem *item = m_source->item(row);
        if (!item->isSelected())
            continue;
        auto entry = std::make_unique<CCurveBasicInfo>();
        const int index = item->data(kIndexRole).toInt();
        if (item->data(kKindRole).toInt() == SourceColumn) {
            entry->m_source = CCurveBasicInfo::OriginColumn;
            entry->m_colIndex = index;
            entry->m_colName = entry->m_colLabel = columnName(m_copy.m_columnNames, index);
        } else {
            if (index >= custom.m_formulaBodies.size())
                continue;
            entry->m_source = CCurveBasicInfo::OriginComputed;
            entry->m_colIndex = -1;
            entry->m_colName = custom.m_formulaBodies.at(index).trimmed();
            entry->m_colLabel = custom.m_formulaNames.at(index);
        }
        entry->m_color = freeColor();
        addDisplayRow(std::move(entry));
    }
    fillSource();
}

void CDisplay_2_Page::RemoveSelected()
{
    for (int row = m_display->count() - 1; row >= 0; --row) {
        if (!m_display->item(row)->isSelected())
            continue;
        if (m_entries[std::size_t(row)]->IsLimitLine()) {
            const QSignalBlocker block(m_emi);
            m_emi->setCurrentIndex(0);
        }
        delete m_display->takeItem(row);
        m_entries.erase(m_entries.begin() + row);
    }
    fillSource();
}

bool CDisplay_2_Page::AddFormula()
{
    QString message;
    if (addFormula(message))
        return true;
    if (!message.isEmpty()) {
        ShowMessage(this, message);
        FocusField(m_vector->m_formula);
    }
    return false;
}

bool CDisplay_2_Page::addFormula(QString &message)
{
    message.clear();
    const QString text = m_vector->m_formula->text().trimmed();
    if (text.isEmpty())
        return false;
    if (m_formulaCheck) {
        message = m_formulaCheck(text);
        if (!message.isEmpty())
            return false;
    }
    auto entry = std::make_unique<CCurveBasicInfo>();
    entry->m_source = CCurveBasicInfo::OriginComputed;
    entry->m_colIndex = -1;
    entry->m_colName = entry->m_colLabel = text;
    entry->m_color = freeColor();
    addDisplayRow(std::move(entry));
    m_vector->m_formula->clear();
    return true;
}

bool CDisplay_2_Page::Store(COptionsFault &fault)
{
    // A formula left in the entry is meant to be shown.
    QString message;
    if (!addFormula(message) && !message.isEmpty()) {
        fault = {COptionsFault::PageDisplay, -1, COptionsFault::FieldFormula, message};
        return false;
    }

    const int limit = m_emi->currentData().toInt();
    m_copy.m_curves.DeleteAll();
    for (const auto &e : m_entries) {
        // One limit line at a time: the one chosen stays, others go.
        if (e->IsLimitLine() && e->m_colIndex != limit)
            continue;
        m_copy.m_curves.Add(new CCurveBasicInfo(*e));
    }
    if (limit >= 0 && limit != m_copy.m_emiLimit && m_copy.m_ranges.GetSize() > 0)
        m_copy.m_ranges.GetAt(0)->m_dbScale = 1; // levels are in dB over a microvolt
    m_copy.m_emiLimit = limit;

    if (!m_copy.m_scope && !m_copy.m_spectrum) {
        const int x = m_xColumn->currentIndex();
        m_copy.m_xRowNumbers = x == XIndex;
        if (x >= XFirstColumn) {
            m_copy.m_xyMode = 1;
            m_copy.m_xColumnIndex = x - XFirstColumn;
        } else if (x == XTime || x == XIndex) {
            // The row number column is found or made on acceptance.
            m_copy.m_xyMode = 0;
            m_copy.m_xColumnIndex = m_copy.m_timeColumn;
        }
    }
    Load();
    return true;
}

void CDisplay_2_Page::Focus(const COptionsFault &fault)
{
    // A fault of a shown formula (index 0 or more) is found once every page
    // stored its fields: show the copies, then take the formula back into
    // the entry for the user to mend.  One still in the entry is there.
    if (fault.index >= 0)
        Load();
    if (fault.field == COptionsFault::FieldFormula && fault.index >= 0 && fault.index < int(m_entries.size()) &&
        m_entries[std::size_t(fault.index)]->Origin() == CCurveBasicInfo::OriginComputed) {
        const QString text = m_entries[std::size_t(fault.index)]->m_colName;
        delete m_display->takeItem(fault.index);
        m_entries.erase(m_entries.begin() + fault.index);
        fillSource();
        m_vector->m_formula->setText(text);
    }
    FocusField(m_vector->m_formula);
}
