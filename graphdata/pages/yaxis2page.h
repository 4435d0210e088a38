#pragma once
// The Y axis page: one child per range in a scrolled list, each with its
// title, the shared axis fields, dB, the layout and the axis and grid
// colours.

#include "graphdata/pages/axisfields.h"
#include "graphdata/pages/optionspage.h"

#include <vector>

class CColorField;
class QCheckBox;
class QComboBox;
class QGroupBox;
class QLineEdit;
class QScrollArea;
class QVBoxLayout;

class CYAxis_Multi_Child : public QWidget
{
    Q_OBJECT
public:
    CYAxis_Multi_Child(int index, QWidget *parent = nullptr);
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

private:
    QScrollArea *m_scroll;
    QWidget *m_list;
    QVBoxLayout *m_listLayout;
};
