// Pictures of the stock dialogs, to look at them at any scale: run it on the
// offscreen platform or under a display, with QT_SCALE_FACTOR=2 for 200%:
//     stockdialog_screens OUTPUT_FOLDER
// It writes stock-messagecheck.png, stock-inputbox.png, stock-progress.png,
// stock-scrollparent.png, stock-creating.png and stock-exlistbox.png.

#include "support/controls/colorbar.h"
#include "support/controls/exlistbox.h"
#include "support/controls/graphcreating.h"
#include "support/controls/inputboxdlg.h"
#include "support/controls/messageboxcheck.h"
#include "support/controls/progressworkingdlg.h"
#include "support/controls/scrollparentdlg.h"
#include "support/languagestring.h"

#include <QApplication>
#include <QDir>
#include <QFormLayout>
#include <QLineEdit>
#include <QProgressBar>

#include <cstdio>

namespace {

bool save(QWidget &widget, const QString &folder, const char *name)
{
    widget.show();
    widget.adjustSize();
    QApplication::processEvents();
    const QString path = QDir(folder).filePath(QLatin1String(name));
    if (!widget.grab().save(path)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
        return false;
    }
    widget.hide();
    return true;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QApplication::setApplicationDisplayName(QStringLiteral("graphview"));
    if (argc < 2) {
        std::fprintf(stderr, "usage: stockdialog_screens OUTPUT_FOLDER\n");
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    QDir().mkpath(folder);
    LoadLanguageFile(QStringLiteral(TARN_SOURCE_DIR "/lang/en.lang"));
    bool ok = true;

    CMessageBoxCheck message(nullptr, LanguageString(43090));
    ok &= save(message, folder, "stock-messagecheck.png");

    CInputBoxDlg input(nullptr, LanguageString(43784), QString(), QStringLiteral("overshoot 29 %"));
    ok &= save(input, folder, "stock-inputbox.png");

    CProgressWorkingDlg progress(nullptr, LanguageString(43194),
                                 QStringLiteral("%1: %2").arg(LanguageString(43194), QStringLiteral("sqrt(t)*2")));
    progress.SetShowDelay(60000);
    progress.Begin();
    progress.Step(0.4);
    ok &= save(progress, folder, "stock-progress.png");
    progress.End();

    CScrollParent scroll;
    for (int i = 0; i < 3; ++i) {
        auto *page = new CScrollParentDlg(&scroll);
        auto *form = new QFormLayout(page);
        form->addRow(QStringLiteral("Axis %1 min").arg(i + 1), new QLineEdit(QStringLiteral("0")));
        form->addRow(QStringLiteral("Axis %1 max").arg(i + 1), new QLineEdit(QStringLiteral("10")));
        auto *bar = new CColorBar;
        bar->SetColors({0x000000FF, 0x00008000, 0x00FF0000, 0x0000C0C0, 0x00800080});
        bar->SetCurrent(i);
        form->addRow(QStringLiteral("Colour"), bar);
    }
    scroll.resize(300, 160);
    scroll.show();
    QApplication::processEvents();
    ok &= scroll.grab().save(QDir(folder).filePath(QStringLiteral("stock-scrollparent.png")));

    CGraphCreating creating(nullptr, QStringLiteral("Rows"));
    creating.AddRowControl(std::make_unique<CAnyStaticCreator>(QStringLiteral("Curve"), QRect(0, 4, 50, 20), 3000, 1));
    creating.AddRowControl(std::make_unique<CAnyEditCreator>(QStringLiteral("1.5"), QRect(56, 0, 70, 24), 3001, 1));
    creating.AddRowControl(std::make_unique<CAnyButtonCreator>(QStringLiteral("Log"), QRect(134, 0, 60, 24), 3002, 1,
                                                               CreatorStyleVisible | CreatorButtonAutoCheckBox));
    creating.AddFixed(std::make_unique<CAnyButtonCreator>(QStringLiteral("OK"), QRect(50, 100, 70, 26),
                                                          CGraphCreating::IdOk, 0));
    creating.AddFixed(std::make_unique<CAnyButtonCreator>(QStringLiteral("Cancel"), QRect(128, 100, 70, 26),
                                                          CGraphCreating::IdCancel, 0));
    creating.SetRows(3, QPoint(8, 8), 30, 10);
    creating.Build();
    creating.show();
    QApplication::processEvents();
    ok &= creating.grab().save(QDir(folder).filePath(QStringLiteral("stock-creating.png")));

    CExListBox list;
    list.AddItem(QStringLiteral("U(out)"), 0x000000FF);
    list.AddItem(QStringLiteral("I(load)"), 0x00008000);
    list.resize(160, 80);
    ok &= save(list, folder, "stock-exlistbox.png");
    return ok ? 0 : 1;
}
