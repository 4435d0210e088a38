#include "tool/tracelifttoolapp.h"

#include "support/controls/userprompts.h"
#include "support/languagestring.h"
#include "tool/tracelifttooldlg.h"

#include <QApplication>

const char *const MissingLanguageFileText = "Missing file en.lang. Please re-install TARN.";

bool CTraceliftToolApp::ParseArguments(const QStringList &arguments, QString &usage)
{
    const QString program = arguments.isEmpty() ? QStringLiteral("tracelift") : arguments.first();
    usage = QStringLiteral("Usage: %1 [PICTURE]\n"
                           "The datasheet graph digitiser.  PICTURE (PNG, JPEG, BMP, GIF...) opens\n"
                           "at once, ready for its corners, as a pasted picture would.\n").arg(program);
    QStringList files;
    bool optionsEnd = false;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString &a = arguments[i];
        if (!optionsEnd && (a == QLatin1String("-h") || a == QLatin1String("--help"))) {
            m_exitCode = 0;
            return false;
        }
        if (!optionsEnd && a == QLatin1String("--")) {
            optionsEnd = true;
            continue;
        }
        if (!optionsEnd && a.startsWith(u'-') && a.size() > 1) {
            usage.prepend(QStringLiteral("Unknown option %1\n").arg(a));
            m_exitCode = 2;
            return false;
        }
        files << a;
    }
    if (files.size() > 1) {
        usage.prepend(QStringLiteral("Only one picture can be opened.\n"));
        m_exitCode = 2;
        return false;
    }
    m_pictureFile = files.value(0);
    return true;
}

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
    if (!m_pictureFile.isEmpty())
        dialog.OpenPictureFile(m_pictureFile);
    dialog.exec();
    m_exitCode = 0;
    return false;
}
