#include "graphdata/grapherrors.h"

#include "support/languagestring.h"

#include <QDebug>
#include <cstdio>
#include <mutex>

namespace {
std::mutex g_reporterLock;
GraphErrorReporter g_reporter;
} // namespace

GraphErrorReporter SetGraphErrorReporter(GraphErrorReporter reporter)
{
    std::lock_guard<std::mutex> guard(g_reporterLock);
    std::swap(g_reporter, reporter);
    return reporter;
}

void ReportGraphError(int stringId, const QString &detail)
{
    GraphErrorReporter reporter;
    {
        std::lock_guard<std::mutex> guard(g_reporterLock);
        reporter = g_reporter;
    }
    if (reporter) {
        reporter(stringId, detail);
        return;
    }
    qWarning().noquote() << GraphErrorText(stringId, detail);
}

QString GraphErrorText(int stringId, const QString &detail)
{
    QString text = stringId ? LanguageString(stringId) : QString();
    if (text.isEmpty() && stringId)
        text = QString::number(stringId);
    else if (stringId)
        text += QStringLiteral(" (%1)").arg(stringId);
    if (!detail.isEmpty())
        text += (text.isEmpty() ? QString() : QStringLiteral(": ")) + detail;
    return text;
}

GraphErrorReporter ConsoleGraphErrorReporter(const QString &program)
{
    return [program](int stringId, const QString &detail) {
        const QByteArray line = (program + QStringLiteral(": ") + GraphErrorText(stringId, detail) + u'\n').toLocal8Bit();
        std::fwrite(line.constData(), 1, std::size_t(line.size()), stderr);
        std::fflush(stderr);
    };
}
