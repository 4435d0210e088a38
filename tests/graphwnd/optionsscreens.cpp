// Pictures of every page of the option dialog for the README, each over
// the graph it edits.  Run under a display (xvfb-run works) or on the
// offscreen platform, at any QT_SCALE_FACTOR:
//     options_screens OUTPUT_FOLDER
// It writes options-curves.png, options-display.png, options-xaxis.png,
// options-yaxes.png, options-screen.png and options-emi.png.

#include "graphdata/emi/emilimits.h"
#include "graphdata/formula/formulacurve.h"
#include "graphdata/pages/display2page.h"
#include "graphdata/pages/options2dlg.h"
#include "graphdata/pages/useremipage.h"
#include "graphdata/spectrum/spectrumjob.h"
#include "graphwnd/graphcursors.h"
#include "graphwnd/graphwnd.h"
#include "support/languagestring.h"

#include <QApplication>
#include <QDir>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPen>
#include <QPlainTextEdit>
#include <QSettings>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <cstdio>
#include <numbers>

namespace {

// A switching node sampled at 100 MHz, with the input current beside it.
CGraphData switchingNode()
{
    CGraphData data;
    data.Create(1, 3, 0, 0);
    std::vector<double> rows;
    const int n = 1 << 14;
    for (int i = 0; i < n; ++i) {
        const double t = i * 1e-8;
        const double square = std::fmod(t * 400e3, 1.0) < 0.3 ? 1.0 : 0.0;
        rows.insert(rows.end(), {t, 0.05 * square + 0.002 * std::sin(2 * std::numbers::pi * 7.3e6 * t),
                                 0.8 + 0.1 * std::sin(2 * std::numbers::pi * 400e3 * t)});
    }
    data.AppendRows(rows.data(), nullptr, 0, 3, 0, n);
    data.GetColumn(0)->m_name = QStringLiteral("t");
    data.GetColumn(1)->m_name = QStringLiteral("node");
    data.GetColumn(2)->m_name = QStringLiteral("I_in");
    return data;
}

// The window with the dialog drawn over its lower right part.
bool save(CGraphWnd &wnd, COptions2_Dlg &dialog, const QString &path)
{
    const QPixmap back = wnd.grab();
    const QPixmap front = dialog.grab();
    const QPoint offset(std::max(0, back.width() - front.width()) / 2 + 60,
                        std::max(0, back.height() - front.height()) / 2 + 20);
    QPixmap picture(std::max(back.width(), offset.x() + front.width()), std::max(back.height(), offset.y() + front.height()));
    picture.setDevicePixelRatio(back.devicePixelRatio());
    picture.fill(Qt::white);
    {
        QPainter painter(&picture);
        painter.drawPixmap(0, 0, back);
        const qreal ratio = back.devicePixelRatio();
        const QPointF corner(offset.x() / ratio, offset.y() / ratio);
        painter.drawPixmap(corner, front);
        // a frame where the window manager would draw one
        painter.setPen(QPen(QColor(90, 90, 90), 1));
        painter.drawRect(QRectF(corner, QSizeF(front.width() / ratio, front.height() / ratio)).adjusted(-1, -1, 0, 0));
    }
    const bool ok = picture.save(path);
    std::printf("%s %s\n", ok ? "wrote" : "could not write", qPrintable(path));
    return ok;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: options_screens OUTPUT_FOLDER\n");
        return 2;
    }
    const QDir out(QString::fromLocal8Bit(argv[1]));
    if (!LoadLanguageFile(QStringLiteral(TARN_SOURCE_DIR "/lang/en.lang")))
        return 1;
    LoadGraphCursors();
    InstallFormulaCurves();
    QTemporaryDir settings;
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settings.path());
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, settings.path());
    AddUserLimit(QStringLiteral("Lab_QP"), QStringLiteral("Lab quasi-peak"),
                 {{150000, 70}, {500000, 62}, {5000000, 56}, {30000000, 56}});
    bool ok = true;

    CGraphWnd wnd;
    wnd.resize(980, 640);
    wnd.SetGraphDataCopy(switchingNode());
    CGraphCurve &g = *wnd.GetGraphData();
    g.m_backColor = 0xFFFFFF;
    g.m_xLog = 1;
    SetSpectrumMode(g, true);
    wnd.ShowEmiLimit(0, true);
    wnd.show();
    if (!QTest::qWaitForWindowExposed(&wnd))
        std::fprintf(stderr, "the window did not show\n");
    const struct
    {
        COptionsFault::Page page;
        const char *file;
    } pages[] = {
        {COptionsFault::PageCurves, "options-curves.png"}, {COptionsFault::PageDisplay, "options-display.png"},
        {COptionsFault::PageXAxis, "options-xaxis.png"},   {COptionsFault::PageYAxis, "options-yaxes.png"},
        {COptionsFault::PageScreen, "options-screen.png"}, {COptionsFault::PageEmi, "options-emi.png"},
    };
    for (const auto &p : pages) {
        COptions2_Dlg dialog(g, p.page, &wnd);
        if (p.page == COptionsFault::PageDisplay) {
            dialog.m_displayPage->m_vector->m_formula->setText(QStringLiteral("ABS(node)*1000"));
            dialog.m_displayPage->m_vector->m_formula->setCursorPosition(4);
        }
        if (p.page == COptionsFault::PageEmi)
            dialog.m_emiPage->m_list->setCurrentRow(0);
        dialog.show();
        if (!QTest::qWaitForWindowExposed(&dialog))
            std::fprintf(stderr, "the dialog did not show\n");
        ok = save(wnd, dialog, out.filePath(QString::fromLatin1(p.file))) && ok;
        dialog.reject();
    }
    return ok ? 0 : 1;
}
