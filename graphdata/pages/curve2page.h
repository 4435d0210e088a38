#pragma once
// The curve page: the curves as rows of a list edited in place (label,
// colour, line, symbol, Connect and Y axis, where "[New Y-Axis]" adds a
// range), moved up and down and deleted with the buttons beside it.

#include "graphdata/pages/optionspage.h"

#include <QTableWidget>

class QComboBox;
class QPushButton;

class CCurve2List : public QTableWidget
{
    Q_OBJECT
public:
    enum Column { ColLabel, ColColor, ColLine, ColSymbol, ColConnect, ColAxis, ColumnCount };
    explicit CCurve2List(QWidget *parent = nullptr);

    // The editors of a row.
    QComboBox *LineBox(int row) const;
    QComboBox *SymbolBox(int row) const;
    QComboBox *AxisBox(int row) const;
    CColorField *ColorField(int row) const;
};

class CCurve_2_Page : public COptionsPage
{
    Q_OBJECT
public:
    explicit CCurve_2_Page(CGraphOptionsCopy &copy, QWidget *parent = nullptr);
    void Load() override;
    bool Store(COptionsFault &fault) override;
    void Focus(const COptionsFault &fault) override;

    // Moves the current row up (-1) or down (+1); deletes it.
    void MoveCurrent(int step);
    void DeleteCurrent();

    CCurve2List *m_list;
    QPushButton *m_up, *m_down, *m_delete;

private:
    void addRow(const CCurveBasicInfo &curve, int entry);
    void fillAxes(QComboBox *box, int axis);
    // The copies' entries, in the list's order (kept in the label item).
    int entryOf(int row) const;
};
