// Pictures of every page of the option dialog for the README, each over
// the graph it edits.  Run under a display (xvfb-run works) or on the
// offscreen platform, at any QT_SCALE_FACTOR:
//     options_screens OUTPUT_FOLDER
// It writes options-curves.png, options-display.png, options-xaxis.png,
// options-yaxes.png, options-screen.png and options-emi.png.

#include "screenshots.h"

#include "graphdata/emi/emilimits.h"
#include "graphdata/formula/formulacurve.h"
#include "graphdata/pages/display2page.h"
#include "graphdata/pages/options2dlg.h"
#include "graphdata/pages/useremipage.h"
#include "graphdata/spectrum/spectrumjob.h"
#include "graphwnd/graphwnd.h"

#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QPen>
#include <QPlainTextEdit>
#include <QTabWidget>

namespace {

// The window with the dialog drawn over its lower right part.
QPixmap overWindow(CGraphWnd &wnd, COptions2_Dlg &dialog)
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
    return picture;
}

} // namespace

int main(int argc, char **argv)
{
    const CScreenshotRun run(argc, argv);
    if (run.ExitCode() != 0)
        return run.ExitCode();
    InstallFormulaCurves();
    AddUserLimit(QStringLiteral("Lab_QP"), QStringLiteral("Lab quasi-peak"),
                 {{150000, 70}, {500000, 62}, {5000000, 56}, {30000000, 56}});
    bool ok = true;

    CGraphWnd wnd;
    wnd.resize(980, 640);
    wnd.SetGraphDataCopy(SwitchingNode(1 << 14, true));
    CGraphCurve &g = *wnd.GetGraphData();
    g.m_backColor = 0xFFFFFF;
    g.m_xLog = 1;
    SetSpectrumMode(g, true);
    wnd.ShowEmiLimit(0, true);
    ShowExposed(wnd);
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
        ShowExposed(dialog);
        ok = run.Save(overWindow(wnd, dialog), QString::fromLatin1(p.file)) && ok;
        dialog.reject();
    }
    return ok ? 0 : 1;
}
