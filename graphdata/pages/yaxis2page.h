#pragma once
// The Y axis page: one child per range, each a page of the scrolled parent
// that lays them out one under the other, with its title, the shared axis
// fields, dB, the layout and the axis and grid colours.

#include "graphdata/pages/axisfields.h"
#include "graphdata/pages/optionspage.h"
#include "support/controls/scrollparentdlg.h"

#include <vector>

class CColorField;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLineEdit;

class CYAxis_Multi_Child : public CScrollParentDlg
{
    Q_OBJECT
public:
    // With a scrolled parent the child goes into it at once.
    CYAxis_Multi_Child(int index, CScrollParent *parent = nullptr);
    void Load(const CGraph_Range &range, bool spectrum);
    bool Store(CGraph_Range &range, COptionsFault &fault);

    int m_index;
    QLineEdit *m_title;
    CAxisFieldsBox *m_fields;
    QCheckBox *m_db;
    QComboBox *m_layout;
    CColorField *m_textColor, *m_gridColor;
};

class CYAxis_2_Page : public COptionsPage
{
    Q_OBJECT
public:
    explicit CYAxis_2_Page(CGraphOptionsCopy &copy, QWidget *parent = nullptr);
    void Load() override;
    bool Store(COptionsFault &fault) override;
    void Focus(const COptionsFault &fault) override;

    std::vector<CYAxis_Multi_Child *> m_children;
    CScrollParent *m_scroll;
};
