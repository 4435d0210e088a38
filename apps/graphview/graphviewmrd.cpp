#include "graphviewmrd.h"

#include "graphviewdata.h"

#include "graphdata/file/graphfileload.h"
#include "graphdata/file/graphfilesave.h"
#include "support/languagestring.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <cstdio>
#include <memory>

bool IsGraphDataFile(const QString &path)
{
    return QFileInfo(path).suffix().compare(QStringLiteral("mrd"), Qt::CaseInsensitive) == 0;
}

bool LoadGraphDataFile(const QString &path, CGraphData &data, QString &message)
{
    CGraphFileContent content;
    if (!ReadGraphFile(path, content, message))
        return false;
    data = content.data;
    // The window finds its drawing objects there, when it stored them.
    if (!content.attachments1.empty())
        data->m_fileBlocks[0] = content.attachments1.front();
    return true;
}

bool LoadGraphViewInput(const QString &path, CGraphData &data, QString &message)
{
    if (IsGraphDataFile(path))
        return LoadGraphDataFile(path, data, message);
    CTextImportReport report;
    const TextImport result = ImportTextFile(path, data, report);
    if (result != TextImport::Read) {
        message = ImportFailureText(path, result, report);
        return false;
    }
    PrepareFileData(data);
    const QString badCells = BadCellsText(QFileInfo(path).fileName(), report);
    if (!badCells.isEmpty())
        std::fprintf(stderr, "%s\n", qPrintable(badCells));
    return true;
}

bool RunSaveCommand(int argc, char **argv, int &exitCode)
{
    QString input, output;
    bool save = false;
    for (int i = 1; i < argc; ++i) {
        const QString argument = QString::fromLocal8Bit(argv[i]);
        if (argument == QStringLiteral("--save")) {
            save = true;
            if (i + 1 < argc)
                output = QString::fromLocal8Bit(argv[++i]);
        } else if (argument.startsWith(QStringLiteral("--save="))) {
            save = true;
            output = argument.mid(7);
        } else if (!argument.startsWith(u'-') && input.isEmpty()) {
            input = argument;
        }
    }
    if (!save)
        return false;
    // No display is needed: the core application is enough to find the texts.
    std::unique_ptr<QCoreApplication> app;
    if (!QCoreApplication::instance())
        app = std::make_unique<QCoreApplication>(argc, argv);
    if (!LoadLanguageModule()) {
        std::fputs("Missing file en.lang. Please re-install TARN.\n", stderr);
        exitCode = 1;
        return true;
    }
    if (input.isEmpty() || output.isEmpty()) {
        std::fputs("graphview: --save needs a data file and the name of the file to write\n", stderr);
        exitCode = 1;
        return true;
    }
    CGraphData data;
    QString message;
    if (!LoadGraphViewInput(input, data, message) || !SaveGraphData(output, data, nullptr, &message)) {
        std::fprintf(stderr, "%s\n", qPrintable(message));
        exitCode = 1;
        return true;
    }
    exitCode = 0;
    return true;
}
