#include "graphdata/pages/axisfields.h"

#include "graphdata/graphrange.h"
#include "graphdata/pages/optionspage.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>

#include <cmath>

namespace {

enum : int {
    TextFrom = 43830,
    TextTo = 43831,
    TextTick = 43832,
    TextLog = 43833,
    TextLabels = 43834,
    TextMajorGrid = 43835,
    TextMinorGrid = 43836,
    TextLabelAngle = 43837,
    TextAutomatic = 43838,
    TextMore = 43846,
    TextSubDivisions = 43849,
    TextIntegerTicks = 43851,
    TextMajorPen = 43853,
    TextMinorPen = 43854,
    TextMajorColor = 43855,
    TextMinorColor = 43856,
    TextDot = 43857,
    TextDateAxis = 44000,
};

QString number(double v) { return QString::number(v, 'g', 15); }

} // namespace

void FillPenStyles(QComboBox *box, std::int32_t current)
{
    // The styles' numbers are those of the pens: 0 solid, 1 dash, 2 dot,
    // 3 dash-dot, 4 dash-dot-dot.
    box->clear();
    box->addItem(QStringLiteral("Solid Line"), 0);
    box->addItem(QStringLiteral("Dash"), 1);
    box->addItem(QStringLiteral("Dash-Dot"), 3);
    box->addItem(QStringLiteral("Dash-Dot-Dot"), 4);
    // The dotted grid of new graphs is kept selectable, so that opening and
    // accepting the box does not change it.
    box->addItem(LanguageString(TextDot), 2);
    const int at = box->findData(current);
    box->setCurrentIndex(at >= 0 ? at : 0);
}

std::int32_t ChosenPenStyle(const QComboBox *box) { return box->currentData().toInt(); }

CAxisFieldsBox::CAxisFieldsBox(QWidget *parent)
    : QWidget(parent), m_automatic(new QCheckBox(LanguageString(TextAutomatic), this)),
      m_min(new QLineEdit(this)), m_max(new QLineEdit(this)), m_tick(new QLineEdit(this)),
      m_log(new QCheckBox(LanguageString(TextLog), this)), m_labels(new QCheckBox(LanguageString(TextLabels), this)),
      m_majorGrid(new QCheckBox(LanguageString(TextMajorGrid), this)),
      m_minorGrid(new QCheckBox(LanguageString(TextMinorGrid), this)),
      m_moreButton(new QPushButton(LanguageString(TextMore), this))
{
    auto *grid = new QGridLayout(this);
    grid->addWidget(m_automatic, 0, 0, 1, 2);
    const struct
    {
        int text;
        QLineEdit *edit;
    } rows[] = {{TextFrom, m_min}, {TextTo, m_max}, {TextTick, m_tick}};
    int row = 1;
    for (const auto &r : rows) {
        auto *label = new QLabel(LanguageString(r.text), this);
        label->setBuddy(r.edit);
        grid->addWidget(label, row, 0);
        grid->addWidget(r.edit, row, 1);
        ++row;
    }
    grid->addWidget(m_log, 1, 2);
    grid->addWidget(m_labels, 2, 2);
    grid->addWidget(m_majorGrid, 3, 2);
    grid->addWidget(m_minorGrid, 4, 2);
    grid->addWidget(m_moreButton, 4, 0, 1, 2, Qt::AlignLeft);
    grid->setColumnStretch(1, 1);
    setTabOrder(m_automatic, m_min);
    setTabOrder(m_min, m_max);
    setTabOrder(m_max, m_tick);
    setTabOrder(m_tick, m_log);
    setTabOrder(m_log, m_labels);
    setTabOrder(m_labels, m_majorGrid);
    setTabOrder(m_majorGrid, m_minorGrid);
    setTabOrder(m_minorGrid, m_moreButton);
    connect(m_automatic, &QCheckBox::toggled, this, &CAxisFieldsBox::syncEnabled);
    connect(m_moreButton, &QPushButton::clicked, this, [this] {
        CAxisMoreDlg more(m_more, m_dateOffered, this);
        if (more.exec() == QDialog::Accepted && more.Read(m_more)) {
            syncEnabled();
            emit MoreChanged(m_more);
        }
    });
}

void CAxisFieldsBox::Load(const CAxisFields &f)
{
    m_automatic->setChecked(f.automatic);
    const bool powers = f.log && !m_db;
    m_min->setText(number(powers ? std::pow(10.0, f.min) : f.min));
    m_max->setText(number(powers ? std::pow(10.0, f.max) : f.max));
    m_loaded = f;
    m_loadedMin = m_min->text();
    m_loadedMax = m_max->text();
    m_tick->setText(number(f.tick));
    m_log->setChecked(f.log);
    m_labels->setChecked(f.flags & CGraph_Range::AxisLabels);
    m_majorGrid->setChecked(f.flags & CGraph_Range::AxisMajorGrid);
    m_minorGrid->setChecked(f.flags & CGraph_Range::AxisMinorGrid);
    m_more = f.more;
    syncEnabled();
}

bool CAxisFieldsBox::Store(CAxisFields &f, COptionsFault &fault) const
{
    CAxisFields out = f;
    out.automatic = m_automatic->isChecked();
    out.log = m_log->isChecked();
    if (!out.automatic) {
        const struct
        {
            QLineEdit *edit;
            double *value;
            COptionsFault::Field field;
        } numbers[] = {{m_min, &out.min, COptionsFault::FieldMin},
                       {m_max, &out.max, COptionsFault::FieldMax},
                       {m_tick, &out.tick, COptionsFault::FieldTick}};
        for (const auto &n : numbers) {
            QString error;
            if (!ReadNumberField(n.edit, *n.value, error)) {
                fault.field = n.field;
                fault.text = error;
                return false;
            }
        }
        const bool powers = out.log && !m_db;
        COptionsFault::Field field;
        const QString error = CheckAxisFields(out.min, out.max, out.tick, powers, field);
        if (!error.isEmpty()) {
            fault.field = field;
            fault.text = error;
            return false;
        }
        if (powers) {
            out.min = std::log10(out.min);
            out.max = std::log10(out.max);
        }
        // The shown text of an end is rounded; one left as it was keeps the
        // value it stood for.
        if (out.log == m_loaded.log && !m_loaded.automatic) {
            if (m_min->text() == m_loadedMin)
                out.min = m_loaded.min;
            if (m_max->text() == m_loadedMax)
                out.max = m_loaded.max;
        }
    }
    const std::uint32_t switches = CGraph_Range::AxisLabels | CGraph_Range::AxisMajorGrid | CGraph_Range::AxisMinorGrid;
    out.flags = (out.flags & ~switches) | (m_labels->isChecked() ? CGraph_Range::AxisLabels : 0u) |
                (m_majorGrid->isChecked() ? CGraph_Range::AxisMajorGrid : 0u) |
                (m_minorGrid->isChecked() ? CGraph_Range::AxisMinorGrid : 0u);
    out.more = m_more;
    f = out;
    return true;
}

void CAxisFieldsBox::Focus(COptionsFault::Field field)
{
    switch (field) {
    case COptionsFault::FieldMax: FocusField(m_max); break;
    case COptionsFault::FieldTick: FocusField(m_tick); break;
    default: FocusField(m_min); break;
    }
}

void CAxisFieldsBox::SetLogShown(bool shown) { m_log->setVisible(shown); }

void CAxisFieldsBox::SetDateOffered(bool offered)
{
    m_dateOffered = offered;
    syncEnabled();
}

void CAxisFieldsBox::syncEnabled()
{
    const bool byHand = !m_automatic->isChecked();
    m_min->setEnabled(byHand);
    m_max->setEnabled(byHand);
    m_tick->setEnabled(byHand);
    const bool date = m_dateOffered && m_more.dateAxis;
    if (date)
        m_log->setChecked(false);
    m_log->setEnabled(!date);
}

CAxisMoreDlg::CAxisMoreDlg(const CAxisMore &more, bool dateOffered, QWidget *parent)
    : QDialog(parent), m_rotation(new QSpinBox(this)), m_subDivisions(new QSpinBox(this)),
      m_integerTicks(new QCheckBox(LanguageString(TextIntegerTicks), this)),
      m_dateAxis(new QCheckBox(LanguageString(TextDateAxis), this)), m_majorStyle(new QComboBox(this)),
      m_minorStyle(new QComboBox(this)), m_majorColor(new CColorField(this)), m_minorColor(new CColorField(this))
{
    setWindowTitle(LanguageString(TextMore).remove(QStringLiteral("...")));
    auto *form = new QFormLayout(this);
    m_rotation->setRange(-90, 90);
    m_rotation->setValue(more.rotation);
    m_subDivisions->setRange(1, 100);
    m_subDivisions->setValue(more.subDivisions);
    m_integerTicks->setChecked(more.integerTicks);
    FillPenStyles(m_majorStyle, more.majorStyle);
    FillPenStyles(m_minorStyle, more.minorStyle);
    m_majorColor->SetColor(more.majorColor);
    m_minorColor->SetColor(more.minorColor);
    form->addRow(LanguageString(TextLabelAngle), m_rotation);
    form->addRow(LanguageString(TextSubDivisions), m_subDivisions);
    form->addRow(QString(), m_integerTicks);
    m_dateAxis->setChecked(more.dateAxis);
    if (dateOffered)
        form->addRow(QString(), m_dateAxis);
    else
        m_dateAxis->hide();
    form->addRow(LanguageString(TextMajorPen), m_majorStyle);
    form->addRow(LanguageString(TextMajorColor), m_majorColor);
    form->addRow(LanguageString(TextMinorPen), m_minorStyle);
    form->addRow(LanguageString(TextMinorColor), m_minorColor);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &CAxisMoreDlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CAxisMoreDlg::reject);
}

bool CAxisMoreDlg::Read(CAxisMore &more)
{
    CAxisMore out;
    out.rotation = m_rotation->value();
    out.subDivisions = m_subDivisions->value();
    out.integerTicks = m_integerTicks->isChecked();
    out.dateAxis = m_dateAxis->isChecked();
    out.majorStyle = ChosenPenStyle(m_majorStyle);
    out.minorStyle = ChosenPenStyle(m_minorStyle);
    for (CColorField *field : {m_majorColor, m_minorColor}) {
        std::uint32_t color;
        if (!field->GetColor(color)) {
            ShowMessage(this, BadColorText(field->Edit()->text()));
            FocusField(field->Edit());
            return false;
        }
        (field == m_majorColor ? out.majorColor : out.minorColor) = color;
    }
    more = out;
    return true;
}

void CAxisMoreDlg::accept()
{
    CAxisMore probe;
    if (Read(probe))
        QDialog::accept();
}
