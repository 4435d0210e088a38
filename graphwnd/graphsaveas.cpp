#include "graphwnd/graphsaveas.h"

#include "graphdata/exchange/savefilters.h"
#include "graphdata/graphcurve.h"
#include "graphdata/graphsnapshot.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"

#include <QStringList>

namespace {

enum : int {
    TextSaveFailed = 43114,
    TextSaveAsCaption = 14012,
};

QStringList dialogFilters(const CGraphCurve &graph)
{
    QString first;
    {
        CGraphDataSnapshot snapshot;
        snapshot.Take(graph.m_data, {graph.m_xColumnIndex});
        if (snapshot.Size() > 0 && snapshot.Column(0))
            first = snapshot.Column(0)->m_name;
    }
    QStringList out;
    for (const QString &filter : SaveFilters(graph.m_spectrumMode != 0, first)) {
        const qsizetype bar = filter.indexOf(QLatin1Char('|'));
        out << QStringLiteral("%1 (%2)").arg(filter.left(bar), filter.mid(bar + 1));
    }
    return out;
}

} // namespace

QString SaveAsDialogFilter(const CGraphCurve &graph) { return dialogFilters(graph).join(QStringLiteral(";;")); }

int SaveGraphAs(QWidget *parent, CGraphCurve &graph, const std::function<bool(const QString &path)> &saveRecord)
{
    int position = 0;
    CFilePrompt prompt;
    prompt.parent = parent;
    prompt.save = true;
    prompt.caption = LanguageString(TextSaveAsCaption);
    prompt.filter = SaveAsDialogFilter(graph);
    prompt.filterPosition = &position;
    const QString path = AskFileName(prompt);
    if (path.isEmpty())
        return 0;
    const int kind = position > 0 ? SaveKindOfFilter(graph.m_spectrumMode != 0, position) : SaveKindOfName(path);
    if (kind == SaveKindRecord && saveRecord)
        return saveRecord(path) ? 1 : 0;
    QString error;
    if (!ExportGraphs({&graph}, path, kind, &error)) {
        ShowMessage(parent, LanguageString(TextSaveFailed).arg(path, error));
        return 0;
    }
    return 1;
}
