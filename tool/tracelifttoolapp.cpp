#include "tool/tracelifttoolapp.h"

#include "support/controls/userprompts.h"
#include "support/languagestring.h"
#include "tool/tracelifttooldlg.h"

#include <QApplication>

const char *const MissingLanguageFileText = "Missing file en.lang. Please re-install TARN.";

bool CTraceliftToolApp::InitInstance()
{
    QCoreApplication::setOrganizationName(QStringLiteral("HELIOMAR"));
    QCoreApplication::setApplicationName(QStringLiteral("Tracelift"));
    QGuiApplication::setApplicationDisplayName(QStringLiteral("tracelift"));

    if (!LoadLanguageModule(QCoreApplication::applicationDirPath())) {
        ShowMessage(nullptr, QString::fromLatin1(MissingLanguageFileText), PromptButtons::Ok,
                    PromptIcon::Stop);
        m_exitCode = 1;
        return false;
    }

    CTraceliftToolDlg dialog;
    dialog.exec();
    m_exitCode = 0;
    return false;
}
