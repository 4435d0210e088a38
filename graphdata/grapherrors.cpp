#include "graphdata/grapherrors.h"

#include "support/languagestring.h"

#include <QDebug>
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
    QString text = stringId ? LanguageString(stringId) : QString();
    if (text.isEmpty() && stringId)
        text = QString::number(stringId);
    if (!detail.isEmpty())
        text += (text.isEmpty() ? QString() : QStringLiteral(": ")) + detail;
    qWarning().noquote() << text;
}
