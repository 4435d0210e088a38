#include "graphdata/pages/xaxis2page.h"

#include "graphdata/pages/axisfields.h"
#include "support/languagestring.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace {

enum : int {
    TextTitle = 43848,
    TextScopeNote = 43859,
};

} // namespace

CXAxis_2_Page::CXAxis_2_Page(CGraphOptionsCopy &copy, QWidget *parent)
    : COptionsPage(copy, parent), m_fields(new CAxisFieldsBox(this)), m_title(new QLineEdit(this)),
      m_scopeNote(new QLabel(LanguageString(TextScopeNote), this))
{
    auto *layout = new QVBoxLayout(this);
    auto *form = new QFormLayout;
    form->addRow(LanguageString(TextTitle), m_title);
    layout->addLayout(form);
    layout->addWidget(m_fields);
    layout->addWidget(m_scopeNote);
    layout->addStretch(1);
    m_scopeNote->setWordWrap(true);
    setTabOrder(m_title, m_fields->m_automatic);
}

void CXAxis_2_Page::Load()
{
    CAxisFields f;
    f.automatic = m_copy.m_xAuto != 0;
    f.min = m_copy.m_xMin;
    f.max = m_copy.m_xMax;
    f.tick = m_copy.m_xTick;
    f.log = m_copy.m_xLog != 0;
    f.flags = m_copy.m_xAxisFlags;
    f.more = {m_copy.m_xRotation,  m_copy.m_xSubDivisions, (m_copy.m_xAxisFlags & CGraph_Range::AxisIntegerTicks) != 0,
              m_copy.m_majorPenStyle, m_copy.m_majorColor, m_copy.m_minorPenStyle,
              m_copy.m_minorColor, (m_copy.m_xAxisFlags & CGraph_Range::AxisDateDays) != 0};
    m_fields->SetDateOffered(true);
    m_fields->Load(f);
    m_fields->SetLogShown(!m_copy.m_spectrum);
    m_title->setText(m_copy.m_xAxisName);

    const bool scope = m_copy.m_scope != 0;
    m_fields->setVisible(!scope);
    m_scopeNote->setVisible(scope);
}

bool CXAxis_2_Page::Store(COptionsFault &fault)
{
    fault.page = COptionsFault::PageXAxis;
    fault.index = 0;
    if (!m_copy.m_scope) {
        CAxisFields f;
        f.flags = m_copy.m_xAxisFlags;
        if (!m_fields->Store(f, fault))
            return false;
        m_copy.m_xAuto = f.automatic;
        if (!f.automatic) {
            m_copy.m_xMin = f.min;
            m_copy.m_xMax = f.max;
            m_copy.m_xTick = f.tick;
        }
        if (!m_copy.m_spectrum)
            m_copy.m_xLog = f.log;
        m_copy.m_xAxisFlags =
            (f.flags & ~std::uint32_t(CGraph_Range::AxisIntegerTicks | CGraph_Range::AxisDateDays)) |
            (f.more.integerTicks ? CGraph_Range::AxisIntegerTicks : 0u) |
            (f.more.dateAxis ? CGraph_Range::AxisDateDays : 0u);
        m_copy.m_xRotation = f.more.rotation;
        m_copy.m_xSubDivisions = f.more.subDivisions;
        m_copy.m_majorPenStyle = f.more.majorStyle;
        m_copy.m_majorColor = f.more.majorColor;
        m_copy.m_minorPenStyle = f.more.minorStyle;
        m_copy.m_minorColor = f.more.minorColor;
    }
    m_copy.m_xAxisName = m_title->text();
    return true;
}

void CXAxis_2_Page::Focus(const COptionsFault &fault) { m_fields->Focus(fault.field); }
