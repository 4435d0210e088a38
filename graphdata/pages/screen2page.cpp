#include "graphdata/pages/screen2page.h"

#include "support/languagestring.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QLineEdit>

namespace {

enum : int {
    TextBackground = 43860,
    TextForeground = 43861,
    TextGrid = 43862,
    TextNoGrid = 43863,
    TextHideLabels = 43864,
};

} // namespace

CScreen_2_Page::CScreen_2_Page(CGraphOptionsCopy &copy, QWidget *parent)
    : COptionsPage(copy, parent), m_back(new CColorField(this)), m_fore(new CColorField(this)),
      m_grid(new CColorField(this)), m_noGrid(new QCheckBox(LanguageString(TextNoGrid), this)),
      m_hideLabels(new QCheckBox(LanguageString(TextHideLabels), this))
{
    auto *form = new QFormLayout(this);
    form->addRow(LanguageString(TextBackground), m_back);
    form->addRow(LanguageString(TextForeground), m_fore);
    form->addRow(LanguageString(TextGrid), m_grid);
    form->addRow(QString(), m_noGrid);
    form->addRow(QString(), m_hideLabels);
}

void CScreen_2_Page::Load()
{
    m_back->SetColor(m_copy.m_backColor);
    m_fore->SetColor(m_copy.m_foreColor);
    m_grid->SetColor(m_copy.m_gridColor);
    m_noGrid->setChecked(!m_copy.m_gridOn);
    m_hideLabels->setChecked(m_copy.m_hideLabels != 0);
}

bool CScreen_2_Page::Store(COptionsFault &fault)
{
    std::uint32_t colors[3];
    CColorField *fields[3] = {m_back, m_fore, m_grid};
    for (int i = 0; i < 3; ++i) {
        if (!fields[i]->GetColor(colors[i])) {
            m_failed = fields[i];
            fault = {COptionsFault::PageScreen, i, COptionsFault::FieldColor, BadColorText(fields[i]->Edit()->text())};
            return false;
        }
    }
    m_copy.m_backColor = colors[0];
    m_copy.m_foreColor = colors[1];
    m_copy.m_gridColor = colors[2];
    m_copy.m_gridOn = !m_noGrid->isChecked();
    m_copy.m_hideLabels = m_hideLabels->isChecked();
    return true;
}

void CScreen_2_Page::Focus(const COptionsFault &)
{
    if (m_failed)
        FocusField(m_failed->Edit());
}
