#include "graphdata/pages/yaxis2page.h"

#include "graphdata/graphrange.h"
#include "support/languagestring.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QVBoxLayout>

namespace {

enum : int {
    TextDb = 43839,
    TextLayout = 43840,
    TextShared = 43841,
    TextFitted = 43842,
    TextSlices = 43843,
    TextAxisColor = 43844,
    TextGridColor = 43845,
    TextAxisN = 43847,
    TextTitle = 43848,
};

} // namespace

CYAxis_Multi_Child::CYAxis_Multi_Child(int index, CScrollParent *parent)
    : CScrollParentDlg(parent), m_index(index), m_title(new QLineEdit(this)), m_fields(new CAxisFieldsBox(this)),
      m_db(new QCheckBox(LanguageString(TextDb), this)),
      m_layout(new QComboBox(this)), m_textColor(new CColorField(this)), m_gridColor(new CColorField(this))
{
    auto *box = new QGroupBox(LanguageString(TextAxisN).arg(index + 1), this);
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(box);
    auto *layout = new QVBoxLayout(box);
    auto *titleRow = new QFormLayout;
    titleRow->addRow(LanguageString(TextTitle), m_title);
    layout->addLayout(titleRow);
    layout->addWidget(m_fields);
    setTabOrder(m_title, m_fields->m_automatic);
    auto *form = new QFormLayout;
    form->addRow(QString(), m_db);
    form->addRow(LanguageString(TextLayout), m_layout);
    form->addRow(LanguageString(TextAxisColor), m_textColor);
    form->addRow(LanguageString(TextGridColor), m_gridColor);
    layout->addLayout(form);
    // The grid colour is in "More..." too; the field shows what it chose.
    connect(m_fields, &CAxisFieldsBox::MoreChanged, this,
            [this](const CAxisMore &more) { m_gridColor->SetColor(more.majorColor); });
    m_layout->addItem(LanguageString(TextShared), int(CGraph_Range::LayoutShared));
    m_layout->addItem(LanguageString(TextFitted), int(CGraph_Range::LayoutAutoFit));
    m_layout->addItem(LanguageString(TextSlices), int(CGraph_Range::LayoutSlices));
}

void CYAxis_Multi_Child::Load(const CGraph_Range &r, bool spectrum)
{
    CAxisFields f;
    f.automatic = r.m_autoScale != 0;
    f.min = r.m_viewMin;
    f.max = r.m_viewMax;
    f.tick = r.m_tick;
    f.log = r.m_logScale != 0;
    f.flags = r.m_axisFlags;
    f.more = {r.m_labelRotation, r.m_subDivisions, (r.m_axisFlags & CGraph_Range::AxisIntegerTicks) != 0,
              r.m_gridPenStyle,  r.m_gridColor,    r.m_secondPenStyle,
              r.m_secondColor};
    m_title->setText(r.m_title);
    m_fields->SetDbMode(r.m_dbScale != 0);
    m_fields->Load(f);
    m_db->setChecked(r.m_dbScale != 0);
    m_db->setVisible(spectrum || r.m_dbScale);
    const int at = m_layout->findData(int(r.m_layout));
    m_layout->setCurrentIndex(at >= 0 ? at : 0);
    m_textColor->SetColor(r.m_textColor);
    m_gridColor->SetColor(r.m_gridColor);
}

bool CYAxis_Multi_Child::Store(CGraph_Range &r, COptionsFault &fault)
{
    fault.page = COptionsFault::PageYAxis;
    fault.index = m_index;
    CAxisFields f;
    f.flags = r.m_axisFlags;
    m_fields->SetDbMode(m_db->isChecked());
    if (!m_fields->Store(f, fault))
        return false;
    std::uint32_t textColor, gridColor;
    for (CColorField *field : {m_textColor, m_gridColor}) {
        std::uint32_t &color = field == m_textColor ? textColor : gridColor;
        if (!field->GetColor(color)) {
            fault.field = COptionsFault::FieldColor;
            fault.text = BadColorText(field->Edit()->text());
            field->setProperty("failed", true);
            return false;
        }
        field->setProperty("failed", false);
    }
    r.m_autoScale = f.automatic;
    if (!f.automatic) {
        r.m_viewMin = f.min;
        r.m_viewMax = f.max;
        r.m_tick = f.tick;
    }
    r.m_logScale = f.log;
    r.m_dbScale = m_db->isChecked();
    r.m_axisFlags = (f.flags & ~std::uint32_t(CGraph_Range::AxisIntegerTicks)) |
                    (f.more.integerTicks ? CGraph_Range::AxisIntegerTicks : 0u);
    r.m_labelRotation = f.more.rotation;
    r.m_subDivisions = f.more.subDivisions;
    r.m_gridPenStyle = f.more.majorStyle;
    r.m_secondPenStyle = f.more.minorStyle;
    r.m_secondColor = f.more.minorColor;
    r.m_layout = m_layout->currentData().toInt();
    r.m_title = m_title->text().trimmed();
    r.m_textColor = textColor;
    r.m_gridColor = gridColor;
    return true;
}

CYAxis_2_Page::CYAxis_2_Page(CGraphOptionsCopy &copy, QWidget *parent)
    : COptionsPage(copy, parent), m_scroll(new CScrollParent(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_scroll);
}

void CYAxis_2_Page::Load()
{
    for (CYAxis_Multi_Child *child : m_children)
        delete child;
    m_children.clear();
    QWidget *previous = nullptr;
    for (int i = 0; i < m_copy.m_ranges.GetSize(); ++i) {
        auto *child = new CYAxis_Multi_Child(i, m_scroll);
        child->Load(*m_copy.m_ranges.GetAt(i), m_copy.m_spectrum != 0);
        if (previous)
            setTabOrder(previous, child);
        previous = child;
        m_children.push_back(child);
    }
}

bool CYAxis_2_Page::Store(COptionsFault &fault)
{
    for (CYAxis_Multi_Child *child : m_children) {
        if (child->m_index >= m_copy.m_ranges.GetSize())
            continue;
        if (!child->Store(*m_copy.m_ranges.GetAt(child->m_index), fault))
            return false;
    }
    return true;
}

void CYAxis_2_Page::Focus(const COptionsFault &fault)
{
    if (fault.index < 0 || fault.index >= int(m_children.size()))
        return;
    CYAxis_Multi_Child *child = m_children[std::size_t(fault.index)];
    m_scroll->ShowPage(fault.index);
    if (fault.field == COptionsFault::FieldColor) {
        CColorField *field = child->m_textColor->property("failed").toBool() ? child->m_textColor : child->m_gridColor;
        FocusField(field->Edit());
    } else {
        child->m_fields->Focus(fault.field);
    }
}
