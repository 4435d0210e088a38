#pragma once
// The X axis page: the shown range and tick, log, labels and grids, the
// axis title, and "More..." for the rest (with the switch that makes the X
// values days shown as dates).  In an oscilloscope
// graph the X controls are hidden; in spectrum mode the log switch is.

#include "graphdata/pages/optionspage.h"

class CAxisFieldsBox;
class QLabel;
class QLineEdit;

class CXAxis_2_Page : public COptionsPage
{
    Q_OBJECT
public:
    explicit CXAxis_2_Page(CGraphOptionsCopy &copy, QWidget *parent = nullptr);
    void Load() override;
    bool Store(COptionsFault &fault) override;
    void Focus(const COptionsFault &fault) override;

    CAxisFieldsBox *m_fields;
    QLineEdit *m_title;
    QLabel *m_scopeNote;
};
