// tracelift: the datasheet graph digitiser.  It takes no argument.
#include "graphwnd/grapherrorbox.h"
#include "tool/tracelifttoolapp.h"

#include <QApplication>

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    InstallGraphErrorBox(QStringLiteral("tracelift"));
    CTraceliftToolApp app;
    app.InitInstance();
    return app.m_exitCode;
}
