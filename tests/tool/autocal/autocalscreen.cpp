// The README's picture of "Calibrate from the picture": a generated
// datasheet graph (logarithmic axes with unit prefixes, JPEG, turned by half
// a degree) pasted and calibrated with one command.  Run under a display
// (xvfb-run works):
//     autocal_screen OUTPUT_FOLDER
// It writes tracelift-autocal.png, and prints how long the reading of a
// 2000 x 1500 picture took, from the paste to the proposal.

#include "datasheetpicture.h"

#include "support/languagestring.h"
#include "tool/autocal/calibrationproposal.h"
#include "tool/tracelifttooldlg.h"
#include "tool/traceliftwnd.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QElapsedTimer>
#include <QTest>

#include <cstdio>

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: autocal_screen OUTPUT_FOLDER\n");
        return 2;
    }
    QDir out(QString::fromLocal8Bit(argv[1]));
    if (!LoadLanguageFile(QStringLiteral(TARN_SOURCE_DIR "/lang/en.lang")))
        return 1;

    CDatasheetLayout sheet;
    sheet.size = QSize(760, 520);
    sheet.x = {true, -1, 1, 4, LabelStyle::Prefixed};
    sheet.y = {true, -6, 1, 4, LabelStyle::Prefixed};
    sheet.fontPixels = 12;
    sheet.jpegQuality = 70;
    sheet.rotationDegrees = 0.5;
    sheet.curves = 2;
    const CDatasheetPicture pic = MakeDatasheetPicture(sheet);

    CTraceliftToolDlg dialog;
    dialog.resize(1100, 760);
    dialog.show();
    if (!QTest::qWaitForWindowExposed(&dialog))
        return 1;
    auto trigger = [&](int id) { dialog.findChild<QAction *>(QString::number(id))->trigger(); };
    trigger(CTraceliftToolDlg::IdNext);
    QGuiApplication::clipboard()->setImage(pic.image);
    trigger(CTraceliftToolDlg::IdNext);
    const bool proposed = dialog.OnCalibrateFromPicture();
    std::printf("proposal %s\n", proposed ? "made" : "declined");
    QApplication::processEvents();
    const QString path = out.filePath(QStringLiteral("tracelift-autocal.png"));
    const bool ok = dialog.grab().save(path);
    std::printf("%s %s\n", ok ? "wrote" : "could not write", qPrintable(path));

    // From the paste to the proposal, for a large picture: the first run
    // starts the OCR engine, the second is what every later paste costs.
    CDatasheetLayout large = sheet;
    large.size = QSize(2000, 1500);
    large.fontPixels = 20;
    const QImage big = MakeDatasheetPicture(large).image;
    for (int run = 1; run <= 2; ++run) {
        QElapsedTimer t;
        t.start();
        const CCalibrationProposal p = ProposeCalibration(big);
        std::printf("2000 x 1500 picture, run %d: %lld ms, %s\n", run, qlonglong(t.elapsed()),
                    p.Proposed() ? "proposed" : "declined");
    }
    return ok ? 0 : 1;
}
