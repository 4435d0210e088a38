// tracelift: the datasheet graph digitiser.  `tracelift [picture]`.
#include "graphwnd/grapherrorbox.h"
#include "tool/tracelifttoolapp.h"

#include <QApplication>
#include <cstdio>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    InstallGraphErrorBox(QStringLiteral("tracelift"));
    CTraceliftToolApp app;
    QString usage;
    if (!app.ParseArguments(QCoreApplication::arguments(), usage)) {
        std::fputs(usage.toLocal8Bit().constData(), app.m_exitCode ? stderr : stdout);
        return app.m_exitCode;
    }
    app.InitInstance();
    return app.m_exitCode;
}
