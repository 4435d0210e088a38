#pragma once
// CGraphToolBar: the toolbar at the top of a graph window.  Each button
// carries a command id (its object name is the id as text); its tooltip is
// the language text of the same number.  The four tool buttons show which
// mouse tool is in force.

#include <QToolBar>

class QAction;

class CGraphToolBar : public QToolBar
{
    Q_OBJECT
public:
    explicit CGraphToolBar(QWidget *parent = nullptr);

    // Checks the button of `tool` (1 select, 2 pan, 3 and 4 zoom, 8 line,
    // 9 rectangle, 10 text); other
    // tools leave none checked.
    void ShowTool(int tool);
    QAction *ActionFor(int command) const;

signals:
    void Command(int id);
};
