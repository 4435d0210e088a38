#include "graphdata/exchange/savefilters.h"

#include "graphdata/exchange/exportcolumns.h"
#include "graphdata/exchange/matexport.h"
#include "graphdata/exchange/textexport.h"
#include "graphdata/graphcurve.h"

#include <QFileInfo>

QStringList SaveFilters(bool spectrumMode, const QString &firstColumnName)
{
    QStringList filters;
    if (spectrumMode) {
        filters << QStringLiteral("FFT files|*.fft");
    } else {
        filters << QStringLiteral("Mirador files|*.mrd");
        bool frequency = false;
        for (const char *n : {"Frequency", "Freq", "Freq."})
            if (firstColumnName.compare(QLatin1String(n), Qt::CaseInsensitive) == 0)
                frequency = true;
        filters << (frequency ? QStringLiteral("Text files|*.fra") : QStringLiteral("Text files|*.txt"));
    }
    filters << QStringLiteral("Tab separated text file (Excel compatible)|*.txt")
            << QStringLiteral("Comma separated file|*.csv") << QStringLiteral("MAT-files|*.mat");
    return filters;
}

int SaveKindOfFilter(bool spectrumMode, int position)
{
    if (spectrumMode)
        return position == 2 ? SaveKindTab : position == 3 ? SaveKindComma : position == 4 ? SaveKindMat : SaveKindText;
    return position == 1   ? SaveKindRecord
           : position == 3 ? SaveKindTab
           : position == 4 ? SaveKindComma
           : position == 5 ? SaveKindMat
                           : SaveKindText;
}

int SaveKindOfName(const QString &path, int index)
{
    const QString ext = QFileInfo(path).suffix().toLower();
    if (ext == QLatin1String("txt") || ext == QLatin1String("fra") || ext == QLatin1String("csv"))
        return index >= 0 ? index : SaveKindText;
    return SaveKindRecord;
}

int ExportGraphs(const std::vector<CGraphCurve *> &graphs, const QString &path, int kind, QString *error)
{
    const CExportSelection selection = CollectExportColumns(graphs);
    if (selection.columns.empty()) {
        if (error)
            *error = QStringLiteral("there is nothing to save");
        return 0;
    }
    const std::vector<const CGraphColumn *> columns = selection.Pointers();
    const int count = int(columns.size());
    const bool spectrum = !graphs.empty() && graphs.front() && graphs.front()->m_spectrumMode;
    if (spectrum && kind != SaveKindMat && kind != SaveKindRecord) {
        // The fixed form heads its index with the X label; the delimited
        // ones, whose first column after the index is that X, with "Index".
        const CGraphCurve *g = graphs.front();
        const int index = kind == SaveKindComma ? 2 : kind == SaveKindTab ? 1 : 0;
        return SaveSpectrumFile(path, index, columns.data(), count, selection.rows, g->m_spectrumStart,
                                g->m_spectrumEnd, index == 0 ? selection.firstHeader : QString(), error);
    }
    const int mode = kind == SaveKindRecord ? ExportRecordFile
                     : kind == SaveKindMat  ? ExportMatFile
                     : kind == SaveKindTab  ? ExportTab
                     : kind == SaveKindComma ? ExportComma
                                            : ExportFixed;
    const int r = SaveAsText(path, columns.data(), count, selection.rows, mode, nullptr, error);
    if (!r && error && error->isEmpty())
        *error = QStringLiteral("the file could not be written");
    return r;
}
