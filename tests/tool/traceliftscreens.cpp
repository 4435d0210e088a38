// Pictures of a digitising session for the README: the picture with its
// grid, the magnifier open over it, an automatic trace of a second curve
// proposed on the picture, and the plot of both curves on logarithmic axes.
// Run under a display (xvfb-run works):
//     tracelift_screens OUTPUT_FOLDER
// It writes tracelift-grid.png, tracelift-magnifier.png,
// tracelift-autotrace.png and tracelift-plot.png.

#include "graphpicture.h"
#include "support/languagestring.h"
#include "tool/curvewnd.h"
#include "tool/tracelifttooldlg.h"
#include "tool/traceliftwnd.h"
#include "tool/traceliftzoom.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <cmath>
#include <cstdio>

namespace {

double secondCurve(double mV)
{
    return 2.5 * std::pow(mV / 1000, 1.35);
}

template <typename W>
W *control(QWidget *dialog, int id)
{
    return dialog->findChild<W *>(QString::number(id));
}

void setText(QWidget *dialog, int id, const QString &text)
{
    control<QLineEdit>(dialog, id)->setText(text);
}

void trace(CTraceliftWnd *canvas, const CLogLogPicture &g, double (*f)(double), int count)
{
    for (int i = 0; i < count; ++i) {
        const double x = 120 * std::pow(80000 / 120.0, i / double(count - 1));
        canvas->ClickAt(g.PixelX(x), g.PixelY(f(x)));
    }
}

bool save(QWidget *widget, const QString &path)
{
    QApplication::processEvents();
    const bool ok = widget->grab().save(path);
    std::printf("%s %s\n", ok ? "wrote" : "could not write", qPrintable(path));
    return ok;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: tracelift_screens OUTPUT_FOLDER\n");
        return 2;
    }
    const QDir out(QString::fromLocal8Bit(argv[1]));
    if (!LoadLanguageFile(QStringLiteral(TARN_SOURCE_DIR "/lang/en.lang")))
        return 1;

    CTraceliftToolDlg dialog;
    dialog.resize(1100, 760);
    dialog.show();
    if (!QTest::qWaitForWindowExposed(&dialog))
        return 1;
    CTraceliftWnd *canvas = dialog.Canvas();
    const CLogLogPicture g = MakeLogLogPicture({IdOfVds, secondCurve});

    // A new capture, the picture, the corners and the values.
    dialog.OnNext();
    dialog.OfferPicture(g.image);
    dialog.OnNext();
    canvas->ClickAt(g.lowerLeft.x(), g.lowerLeft.y());
    canvas->ClickAt(g.upperRight.x(), g.upperRight.y());
    setText(&dialog, IdXAtFirst, QStringLiteral("100"));
    setText(&dialog, IdXAtSecond, QStringLiteral("100000"));
    setText(&dialog, IdYAtFirst, QStringLiteral("1"));
    setText(&dialog, IdYAtSecond, QStringLiteral("10000"));
    setText(&dialog, IdXName, QStringLiteral("VDS"));
    setText(&dialog, IdYName, QStringLiteral("ID"));
    control<QCheckBox>(&dialog, IdXLog)->setChecked(true);
    control<QCheckBox>(&dialog, IdYLog)->setChecked(true);
    auto *xUnit = control<QComboBox>(&dialog, IdXUnit);
    xUnit->setCurrentIndex(xUnit->findText(QStringLiteral("m")));
    auto *yUnit = control<QComboBox>(&dialog, IdYUnit);
    yUnit->setCurrentIndex(yUnit->findText(QStringLiteral("u")));
    dialog.OnNext();

    // The first curve, half traced: the grid and the points so far.
    trace(canvas, g, IdOfVds, 12);
    QTest::mouseMove(canvas, QPoint(qRound(g.PixelX(20000)), qRound(g.PixelY(IdOfVds(20000)))));
    bool ok = save(&dialog, out.filePath(QStringLiteral("tracelift-grid.png")));

    // The magnifier over the next spot on the curve.
    const QPoint spot(qRound(g.PixelX(30000)), qRound(g.PixelY(IdOfVds(30000))));
    canvas->Magnifier()->OpenAt(spot);
    QTest::mouseMove(canvas->Magnifier(), QPoint(83, 78));
    ok = save(&dialog, out.filePath(QStringLiteral("tracelift-magnifier.png"))) && ok;
    canvas->HideMagnifier();

    // Finish it; the second curve of the picture is traced automatically:
    // Shift+click on it, five points a decade proposed, then accepted.
    dialog.OnNext();
    dialog.OnTraceAnotherCurve();
    dialog.SetTraceSpacing(1, QStringLiteral("5"));
    const QPointF onSecond(g.PixelX(3000), g.PixelY(secondCurve(3000)));
    QTest::mouseClick(canvas, Qt::LeftButton, Qt::ShiftModifier, onSecond.toPoint());
    ok = save(&dialog, out.filePath(QStringLiteral("tracelift-autotrace.png"))) && ok;
    dialog.AcceptProposal();
    dialog.OnNext();
    dialog.SelectRecord(dialog.Records().Size() - 1);
    QTest::mouseMove(dialog.Plot(), dialog.Plot()->rect().center());
    ok = save(&dialog, out.filePath(QStringLiteral("tracelift-plot.png"))) && ok;
    return ok ? 0 : 1;
}
