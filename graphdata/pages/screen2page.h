#pragma once
// The screen page: background, foreground and grid colours with their
// swatches, the grid switch (a "No grid" check, the inverse of gridOn) and
// the switch that hides the labels.

#include "graphdata/pages/optionspage.h"

class QCheckBox;

class CScreen_2_Page : public COptionsPage
{
    Q_OBJECT
public:
    explicit CScreen_2_Page(CGraphOptionsCopy &copy, QWidget *parent = nullptr);
    void Load() override;
    bool Store(COptionsFault &fault) override;
    void Focus(const COptionsFault &fault) override;

    CColorField *m_back, *m_fore, *m_grid;
    QCheckBox *m_noGrid, *m_hideLabels;

private:
    CColorField *m_failed = nullptr;
};
