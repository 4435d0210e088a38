#pragma once
// The tabbed dialog that edits a graph.  Its pages work on private copies
// of the graph's curves, ranges, X axis and screen fields; the graph
// changes only when the dialog is accepted, and a Cancel leaves it as it
// was.  A page with a wrong field keeps the dialog open with that field
// focused.  The dialog remembers its size and its last page.

#include "graphdata/pages/optionscopy.h"

#include <QDialog>

class CGraphCurve;
class COptionsPage;
class CCurve_2_Page;
class CDisplay_2_Page;
class CUserEMI;
class CXAxis_2_Page;
class CYAxis_2_Page;
class CScreen_2_Page;
class QTabWidget;

class COptions2_Dlg : public QDialog
{
    Q_OBJECT
public:
    // startPage: a COptionsFault::Page, or -1 for the page used last.
    COptions2_Dlg(CGraphCurve &graph, int startPage = -1, QWidget *parent = nullptr);
    ~COptions2_Dlg() override;

    void accept() override;
    void done(int result) override;
    // Makes what the pages show (the screen, the X axis and the style of the
    // first Y axis) the defaults of new graphs, kept for the next start;
    // the graph itself changes only on OK.  False, with the fault shown,
    // when a field is wrong.
    bool SaveAsDefault();

    QTabWidget *Tabs() const { return m_tabs; }
    COptionsPage *Page(COptionsFault::Page page) const;
    // Whether the last acceptance dropped a formula curve that failed.
    bool NotFound() const { return m_notFound; }

    CCurve_2_Page *m_curvePage;
    CXAxis_2_Page *m_xPage;
    CYAxis_2_Page *m_yPage;
    CScreen_2_Page *m_screenPage;
    CDisplay_2_Page *m_displayPage;
    CUserEMI *m_emiPage;

private:
    void pageChanging(int index);
    // Shows the fault: its page, the message, the field focused.
    void showFault(const COptionsFault &fault);
    COptionsPage *pageAt(int index) const;

    CGraphCurve &m_graph;
    CGraphOptionsCopy m_copy;
    QTabWidget *m_tabs;
    int m_shown = -1;
    bool m_notFound = false;
};
