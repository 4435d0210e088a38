// EMI limit lines over a spectrum in the graph window: the pop-up menu of a
// spectrum lists the limits of the global list (built-ins and the user's),
// each shown or hidden with a click, and imports a limit from a file.  A
// limit's levels are in dB over a microvolt, so showing one puts the first
// Y axis into dB.
#include "graphwnd/graphwnd.h"

#include "graphdata/emi/emilimits.h"
#include "graphdata/pages/useremipage.h"
#include "graphdata/spectrum/spectrumjob.h"
#include "support/languagestring.h"

#include <QMenu>

namespace {

enum : int {
    TextEmiLimits = 43786,
    TextImportLimit = 43787,
};

} // namespace

int CGraphWnd::EmiLimitCurve(int index) const
{
    if (!m_graphData)
        return -1;
    for (int i = 0; i < m_graphData->CurveCount(); ++i) {
        const CCurveInfo &c = *m_graphData->Curve(i);
        if (c.IsLimitLine() && c.m_colIndex == index)
            return i;
    }
    return -1;
}

bool CGraphWnd::ShowEmiLimit(int index, bool on)
{
    if (!m_graphData || index < 0 || index >= GetEmiLimits().GetSize())
        return false;
    CGraphCurve &g = *m_graphData;
    const int present = EmiLimitCurve(index);
    if (on == (present >= 0))
        return true;
    if (on) {
        if (AddEmiLimitToGraph(g, index) < 0)
            return false;
        g.Range(0)->m_dbScale = 1;
    } else {
        g.m_curves.DeleteAt(present);
        g.m_highlightedCurve = -1;
        g.m_curveHitRects.clear();
    }
    if (g.m_spectrumMode)
        FitSpectrumRanges(g);
    else
        g.SetYRange(0, true, false, 0, 0, 0, false, true);
    StoreDefaultView();
    Redraw(1);
    notifyChanged();
    return true;
}

bool CGraphWnd::ImportEmiLimitFile(QString path)
{
    const int index = ImportUserLimitFile(this, path);
    return index >= 0 && ShowEmiLimit(index, true);
}

void CGraphWnd::addEmiMenu(QMenu &menu)
{
    if (!m_graphData || !m_graphData->m_spectrumMode)
        return;
    QMenu *limits = menu.addMenu(LanguageString(TextEmiLimits));
    limits->setObjectName(QString::number(CmdEmiFirst));
    const CCurveInfoArray &list = GetEmiLimits();
    for (int i = 0; i < list.GetSize() && CmdEmiFirst + i < CmdEmiLast; ++i) {
        QAction *a = limits->addAction(list.GetAt(i)->m_colLabel);
        a->setData(CmdEmiFirst + i);
        a->setObjectName(QString::number(CmdEmiFirst + i));
        a->setCheckable(true);
        a->setChecked(EmiLimitCurve(i) >= 0);
    }
    limits->addSeparator();
    QAction *import = limits->addAction(LanguageString(TextImportLimit));
    import->setData(int(CmdEmiImport));
    import->setObjectName(QString::number(CmdEmiImport));
}

bool CGraphWnd::onEmiCommand(int id)
{
    if (id == CmdEmiImport) {
        ImportEmiLimitFile();
        return true;
    }
    if (id < CmdEmiFirst || id >= CmdEmiLast)
        return false;
    const int index = id - CmdEmiFirst;
    ShowEmiLimit(index, EmiLimitCurve(index) < 0);
    return true;
}
