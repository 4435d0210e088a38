#include "traceliftfixture.h"

#include <string_view>

#include "tool/capture/capturesteps.h"
#include "tool/capture/numbertext.h"
#include "tool/tracelifttoolapp.h"

#include <QComboBox>
#include <QLabel>
#include <QFile>
#include <QPushButton>
#include <QTimer>
#include <cmath>

namespace {

double saturation(double x) { return 100.0 * (1 - std::exp(-x / 2.5)); }
double exponential(double x) { return 1e-3 * std::pow(10.0, x / 2.2); }

QList<double> samples()
{
    QList<double> xs;
    for (double x = 0.2; x < 10; x += 0.8)
        xs << x;
    return xs;
}

// The pairs of a written point text file, and its header line.
QList<QPair<double, double>> readPairs(const QString &path, QString &header)
{
    QFile f(path);
    EXPECT_TRUE(f.open(QIODevice::ReadOnly));
    QList<QPair<double, double>> pairs;
    const QList<QByteArray> lines = f.readAll().split('\n');
    for (const QByteArray &raw : lines) {
        const QByteArray line = raw.trimmed();
        if (line.isEmpty())
            continue;
        const QList<QByteArray> t = line.split(' ');
        bool okX = false, okY = false;
        const double x = t.value(0).toDouble(&okX);
        const double y = t.value(1).toDouble(&okY);
        if (okX && okY)
            pairs.append({x, y});
        else
            header = QString::fromLatin1(line);
    }
    return pairs;
}

bool within5Digits(double a, double b)
{
    return std::fabs(a - b) <= 5e-5 * std::fabs(b) + 1e-12;
}

} // namespace

TEST_F(TraceliftTest, FromPastedPictureToSavedFile)
{
    for (const bool logY : {false, true}) {
        SCOPED_TRACE(logY ? "logarithmic Y" : "linear Y");
        const CGraphPicture g = MakeGraphPicture(logY, logY ? exponential : saturation, samples());
        if (mode() == ModePlotted)
            prompts.answers = {PromptAnswer::Yes}; // discard the first curve
        reach(ModeTrace, g);
        ASSERT_EQ(mode(), ModeTrace);
        EXPECT_EQ(canvas()->Bitmap().size(), g.image.size());
        EXPECT_TRUE(canvas()->isVisible());
        type(IdXName, QStringLiteral("VCE"));
        type(IdYName, QStringLiteral("IC"));
        for (QPoint v : g.vertices)
            click(v);
        EXPECT_EQ(canvas()->m_capture.m_points.count, g.vertices.size());
        next();
        ASSERT_EQ(mode(), ModePlotted);
        EXPECT_FALSE(canvas()->isVisible());
        EXPECT_TRUE(control(CTraceliftToolDlg::IdPlot)->isVisible());
        EXPECT_FALSE(action(CTraceliftToolDlg::IdBack)->isEnabled());
        ASSERT_EQ(plotGraph().CurveCount(), 1);
        EXPECT_EQ(plotGraph().m_data.RowCount(), g.vertices.size());
        EXPECT_EQ(plotGraph().Range(0)->m_logScale != 0, logY);

        const QString path = files.filePath(logY ? QStringLiteral("log.txt") : QStringLiteral("lin.txt"));
        prompts.fileNames = {path};
        control<QPushButton>(CTraceliftToolDlg::IdOk)->click();
        // The second picture replaced the first curve after a question.
        EXPECT_EQ(prompts.MessageTexts(), logY ? QStringList{message(27525)} : QStringList());
        EXPECT_EQ(text(IdFileName), path);
        EXPECT_TRUE(dialog->isVisible()); // OK saves and stays

        QString header;
        const auto pairs = readPairs(path, header);
        EXPECT_EQ(header, QStringLiteral("VCE IC"));
        ASSERT_EQ(pairs.size(), g.vertices.size());
        for (int i = 0; i < pairs.size(); ++i) {
            EXPECT_TRUE(within5Digits(pairs[i].first, g.XAt(g.vertices[i].x())))
                << i << ": " << pairs[i].first << " vs " << g.XAt(g.vertices[i].x());
            EXPECT_TRUE(within5Digits(pairs[i].second, g.YAt(g.vertices[i].y())))
                << i << ": " << pairs[i].second << " vs " << g.YAt(g.vertices[i].y());
        }
        prompts.messages.clear();
    }
}

TEST_F(TraceliftTest, BackFromEachMode)
{
    struct Case {
        CaptureMode from;
        CaptureMode to;
        bool backEnabled;
    };
    const Case cases[] = {
        {ModeWaitPicture, ModeWaitPicture, false},
        {ModePicturePlaced, ModeWaitPicture, false},
        {ModeCorner1, ModePicturePlaced, true},
        {ModeCorner2, ModeCorner1, true},
        {ModeCornersSet, ModeCorner1, true},
        {ModeValuesAwaited, ModeCorner1, true},
        {ModeTrace, ModeValuesAwaited, true},
    };
    const CGraphPicture g = MakeGraphPicture(false, saturation, samples());
    for (const Case &c : cases) {
        SCOPED_TRACE(int(c.from));
        dialog = std::make_unique<CTraceliftToolDlg>();
        dialog->show();
        reach(c.from, g);
        ASSERT_EQ(mode(), c.from);
        edit(IdReadout)->setText(QStringLiteral("(1,2)"));
        EXPECT_EQ(action(CTraceliftToolDlg::IdBack)->isEnabled(), c.from != ModeWaitPicture);
        dialog->OnBack();
        EXPECT_EQ(mode(), c.to);
        EXPECT_EQ(action(CTraceliftToolDlg::IdBack)->isEnabled(), c.backEnabled);
        EXPECT_EQ(control<QLabel>(IdHint)->text(), LanguageString(*HintTextId(c.to)));
        EXPECT_TRUE(text(IdReadout).isEmpty());
        EXPECT_EQ(canvas()->m_capture.m_calibration.pictureShown, c.from != ModePicturePlaced && c.from != ModeWaitPicture);
        EXPECT_TRUE(prompts.messages.isEmpty());
    }
}

TEST_F(TraceliftTest, NextRefusesWhatIsMissing)
{
    const CGraphPicture g = MakeGraphPicture(false, saturation, samples());
    next();
    next(); // the clipboard is empty
    EXPECT_EQ(mode(), ModeWaitPicture);
    EXPECT_EQ(prompts.MessageTexts(), QStringList{message(27526)});

    // Text on the clipboard is no picture either.
    QGuiApplication::clipboard()->setText(QStringLiteral("(1,2)"));
    next();
    EXPECT_EQ(mode(), ModeWaitPicture);
    EXPECT_EQ(prompts.messages.size(), 2);

    QGuiApplication::clipboard()->setImage(g.image);
    next();
    next();
    next(); // no corner yet
    EXPECT_EQ(mode(), ModeCorner1);
    click(g.lowerLeft);
    next(); // one corner
    EXPECT_EQ(mode(), ModeCorner1);
    EXPECT_EQ(prompts.MessageTexts().mid(2), (QStringList{message(27527), message(27527)}));

    click(g.lowerLeft);
    click(g.upperRight);
    ASSERT_EQ(mode(), ModeCornersSet);
    prompts.messages.clear();
    // The first refusal of the values only marks them; from then on Next
    // says what is wrong (the order of the checks is the model's).
    type(IdXAtFirst, QStringLiteral("1"));
    type(IdXAtSecond, QStringLiteral("10"));
    type(IdYAtFirst, QStringLiteral("0"));
    type(IdYAtSecond, QStringLiteral("1"));
    control<QCheckBox>(IdYLog)->click();
    next();
    EXPECT_EQ(mode(), ModeValuesAwaited);
    EXPECT_TRUE(prompts.messages.isEmpty());
    next();
    EXPECT_EQ(mode(), ModeValuesAwaited);
    EXPECT_EQ(prompts.MessageTexts(), QStringList{message(27531)});
    prompts.messages.clear();
    typeValues(g);
    next();
    EXPECT_EQ(mode(), ModeTrace);
    next(); // no point traced
    EXPECT_EQ(mode(), ModeTrace);
    EXPECT_EQ(prompts.MessageTexts(), QStringList{message(27533)});
}

TEST_F(TraceliftTest, StartOverAndNewCaptureAskFirst)
{
    const CGraphPicture g = MakeGraphPicture(false, saturation, samples());
    reach(ModeTrace, g);
    click(g.vertices[0]);
    click(g.vertices[1]);
    const QString points = text(IdPoints);
    ASSERT_FALSE(points.isEmpty());

    prompts.answers = {PromptAnswer::No};
    control<QPushButton>(IdStartOver)->click();
    EXPECT_EQ(mode(), ModeTrace);
    EXPECT_EQ(text(IdPoints), points);
    EXPECT_EQ(prompts.MessageTexts(), QStringList{message(27537)});

    prompts.answers = {PromptAnswer::Yes};
    control<QPushButton>(IdStartOver)->click();
    EXPECT_EQ(mode(), ModeIdle);
    EXPECT_TRUE(text(IdPoints).isEmpty());
    EXPECT_FALSE(canvas()->isVisible());
    EXPECT_FALSE(canvas()->m_capture.m_calibration.pictureLoaded);
    EXPECT_FALSE(canvas()->m_capture.m_calibration.HasRectangle());
    EXPECT_EQ(control<QLabel>(IdHint)->text(), LanguageString(27551));
    // Below mode 10 Start over does nothing.
    prompts.messages.clear();
    control<QPushButton>(IdStartOver)->click();
    EXPECT_TRUE(prompts.messages.isEmpty());

    // A new capture over traced points asks; Cancel keeps them.
    reach(ModeTrace, g);
    click(g.vertices[0]);
    next();
    ASSERT_EQ(mode(), ModePlotted);
    prompts.messages.clear();
    prompts.answers = {PromptAnswer::Cancel};
    next();
    EXPECT_EQ(mode(), ModePlotted);
    EXPECT_EQ(prompts.MessageTexts(), QStringList{message(27525)});
    EXPECT_EQ(prompts.messages[0].buttons, PromptButtons::YesNoCancel);
}

TEST_F(TraceliftTest, SecondCurveOnTheSamePictureIsRefusedAtTheSameTemperature)
{
    const CGraphPicture g = MakeGraphPicture(false, saturation, samples());
    reach(ModeTrace, g);
    for (QPoint v : g.vertices)
        click(v);
    next();
    ASSERT_EQ(mode(), ModePlotted);

    control<QPushButton>(CTraceliftToolDlg::IdAddCurve)->click();
    EXPECT_EQ(mode(), ModeCornersSet);
    EXPECT_TRUE(canvas()->isVisible());
    EXPECT_TRUE(text(IdPoints).isEmpty());
    EXPECT_EQ(text(IdXAtSecond), QStringLiteral("10")); // the calibration stays
    next();
    ASSERT_EQ(mode(), ModeTrace);
    for (int i = 0; i < g.vertices.size(); ++i)
        click(g.vertices[i] + QPoint(0, -20));
    next();
    ASSERT_EQ(mode(), ModePlotted);

    prompts.fileNames = {files.filePath(QStringLiteral("two.txt"))};
    control<QPushButton>(CTraceliftToolDlg::IdOk)->click();
    ASSERT_EQ(prompts.messages.size(), 1);
    EXPECT_EQ(prompts.messages[0].text, message(27534, QStringLiteral("25")));
    EXPECT_EQ(prompts.messages[0].icon, PromptIcon::Stop);
    EXPECT_TRUE(prompts.filePrompts.isEmpty());
    EXPECT_FALSE(QFile::exists(files.filePath(QStringLiteral("two.txt"))));
}

TEST_F(TraceliftTest, LoadShowsTheColumnsOfAFile)
{
    const QString path = files.filePath(QStringLiteral("in.txt"));
    {
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("; measured at 25 degrees\n// second comment\n\nVce Ic Ib\n0.5 1e-3 7\n1 2.5D-3 8\n\t2,4e-3,9\n");
    }
    type(IdXName, QStringLiteral("U"));
    prompts.fileNames = {path};
    control<QPushButton>(IdLoad)->click();
    EXPECT_TRUE(prompts.messages.isEmpty());
    ASSERT_EQ(prompts.filePrompts.size(), 1);
    EXPECT_FALSE(prompts.filePrompts[0].save);
    EXPECT_EQ(prompts.filePrompts[0].filter, QStringLiteral("Text Files (*.txt);;All files (*)"));

    EXPECT_EQ(text(IdXAtFirst), QStringLiteral("0.5"));
    EXPECT_EQ(text(IdXAtSecond), QStringLiteral("2"));
    EXPECT_EQ(text(IdYAtFirst), QStringLiteral("1e-3"));
    EXPECT_EQ(text(IdYAtSecond), QStringLiteral("9"));
    EXPECT_EQ(text(IdPoints), QStringLiteral("(0.5,1e-3,7)(1,2.5E-3,8)(2,4e-3,9)"));
    EXPECT_EQ(text(IdXName), QStringLiteral("U")); // the field's name wins over the file's
    EXPECT_EQ(text(IdFileName), path);
    EXPECT_EQ(mode(), ModeIdle);
    EXPECT_EQ(canvas()->m_capture.m_points.count, 3);
    ASSERT_EQ(plotGraph().CurveCount(), 1);
    EXPECT_DOUBLE_EQ(plotValue(1, 1), 2.5e-3);

    // Files that cannot be taken leave the fields alone.
    struct Bad {
        const char *name;
        std::string_view content; // empty: no such file
        int message;          // -1: the system's report
        int line;             // the line a message names
    };
    const Bad bad[] = {
        {"comments.txt", "; nothing\n// at all\n", 27594, 0},
        {"commas.txt", ",,,\n , ,\n", 27594, 0},
        {"letters.txt", "1 2\n3 x\n", 27593, 2},
        {"single.txt", "; x only\n1\n2\n", 27593, 2},
        {"nul.txt", std::string_view("1 2\n3 4\0 5 6\n", 13), 27593, 2},
        {"oneword.txt", "Vce\n1\n2\n", 27591, 0},
        {"missing.txt", {}, -1, 0},
    };
    for (const Bad &b : bad) {
        SCOPED_TRACE(b.name);
        const QString p = files.filePath(QString::fromLatin1(b.name));
        if (!b.content.empty()) {
            QFile f(p);
            ASSERT_TRUE(f.open(QIODevice::WriteOnly));
            f.write(b.content.data(), qint64(b.content.size()));
        }
        prompts.messages.clear();
        prompts.fileNames = {p};
        control<QPushButton>(IdLoad)->click();
        EXPECT_EQ(text(IdPoints), QStringLiteral("(0.5,1e-3,7)(1,2.5E-3,8)(2,4e-3,9)"));
        EXPECT_EQ(text(IdFileName), path);
        ASSERT_EQ(prompts.messages.size(), 1);
        EXPECT_EQ(prompts.messages[0].icon, PromptIcon::Stop);
        if (b.message > 0) {
            QString expected = message(b.message, QString::fromLatin1(b.name));
            if (b.line)
                expected = expected.arg(b.line);
            EXPECT_EQ(prompts.messages[0].text, expected);
        } else {
            EXPECT_TRUE(prompts.messages[0].text.contains(QString::fromLatin1(b.name)));
        }
    }
    // A cancelled dialog does nothing.
    prompts.messages.clear();
    control<QPushButton>(IdLoad)->click();
    EXPECT_TRUE(prompts.messages.isEmpty());
    EXPECT_EQ(text(IdFileName), path);
}

TEST_F(TraceliftTest, ExchangeOfXAndYAndBack)
{
    type(IdXAtFirst, QStringLiteral("1"));
    type(IdXAtSecond, QStringLiteral("20"));
    type(IdYAtFirst, QStringLiteral("0.001"));
    type(IdYAtSecond, QStringLiteral("5e3"));
    type(IdXName, QStringLiteral("VCE"));
    type(IdYName, QStringLiteral("IC"));
    type(IdPoints, QStringLiteral("(1,0.5)(2,1k)"));
    control<QCheckBox>(IdYLog)->click();
    control<QComboBox>(IdXUnit)->setCurrentIndex(5); // k
    control<QComboBox>(IdYUnit)->setCurrentIndex(3); // m

    auto *exchange = control<QCheckBox>(IdExchangeXY);
    exchange->click();
    EXPECT_EQ(text(IdPoints), QStringLiteral("(0.5,1)(1000,2)"));
    EXPECT_EQ(text(IdXAtSecond), QStringLiteral("5000"));
    EXPECT_EQ(text(IdXName), QStringLiteral("IC"));
    EXPECT_EQ(text(IdYName), QStringLiteral("VCE"));
    EXPECT_TRUE(control<QCheckBox>(IdXLog)->isChecked());
    EXPECT_FALSE(control<QCheckBox>(IdYLog)->isChecked());
    EXPECT_EQ(control<QComboBox>(IdXUnit)->currentText(), QStringLiteral("m"));
    EXPECT_EQ(control<QComboBox>(IdYUnit)->currentText(), QStringLiteral("k"));
    // The canvas follows at once.
    EXPECT_EQ(canvas()->m_capture.m_points.count, 2);
    EXPECT_DOUBLE_EQ(canvas()->m_capture.m_points.pairs[2], 1000.0);
    EXPECT_TRUE(canvas()->m_capture.m_calibration.xLog);

    exchange->click();
    EXPECT_EQ(text(IdPoints), QStringLiteral("(1,0.5)(2,1000)"));
    EXPECT_EQ(text(IdYAtSecond), QStringLiteral("5000"));
    EXPECT_EQ(text(IdXName), QStringLiteral("VCE"));
    EXPECT_EQ(control<QComboBox>(IdXUnit)->currentText(), QStringLiteral("k"));
}

TEST_F(TraceliftTest, TypedCurveIsCheckedAndPlotted)
{
    ASSERT_EQ(mode(), ModeTyped);
    EXPECT_TRUE(action(CTraceliftToolDlg::IdNext)->isEnabled());
    type(IdXAtFirst, QStringLiteral("2"));
    type(IdXAtSecond, QStringLiteral("2"));
    type(IdYAtFirst, QStringLiteral("0"));
    type(IdYAtSecond, QStringLiteral("10"));
    type(IdPoints, QStringLiteral("(0,1)(1,4)(2,9)"));
    control<QPushButton>(CTraceliftToolDlg::IdOk)->click(); // OK in mode 1 applies the typed curve
    EXPECT_EQ(prompts.MessageTexts(), QStringList{message(27540)});
    EXPECT_EQ(mode(), ModeTyped);

    type(IdXAtFirst, QStringLiteral("0"));
    control<QPushButton>(CTraceliftToolDlg::IdApplyTyped)->click();
    EXPECT_EQ(mode(), ModePlotted);
    EXPECT_EQ(prompts.messages.size(), 1);
    ASSERT_EQ(plotGraph().CurveCount(), 1);
    EXPECT_EQ(plotGraph().m_data.RowCount(), 3);
    EXPECT_DOUBLE_EQ(plotValue(1, 2), 9.0);
    EXPECT_EQ(text(IdPoints), QStringLiteral("(0,1)(1,4)(2,9)"));
    EXPECT_EQ(control<QLabel>(IdHint)->text(), LanguageString(27552));

    // Replot fits the plot to the points.
    control<QPushButton>(CTraceliftToolDlg::IdReplot)->click();
    EXPECT_DOUBLE_EQ(plotGraph().m_xViewMax, 2.0);
    EXPECT_DOUBLE_EQ(plotGraph().Range(0)->m_viewMin, 1.0);

    // Saving: a cancelled dialog writes nothing, an unwritable place is reported.
    control<QPushButton>(CTraceliftToolDlg::IdOk)->click();
    EXPECT_EQ(prompts.filePrompts.size(), 1);
    EXPECT_TRUE(prompts.filePrompts[0].save);
    EXPECT_EQ(prompts.filePrompts[0].defaultSuffix, QStringLiteral("txt"));
    EXPECT_TRUE(text(IdFileName).isEmpty());
    prompts.fileNames = {files.filePath(QStringLiteral("no/such/folder/x.txt"))};
    control<QPushButton>(CTraceliftToolDlg::IdOk)->click();
    ASSERT_EQ(prompts.messages.size(), 2);
    EXPECT_EQ(prompts.messages[1].icon, PromptIcon::Stop);
    EXPECT_TRUE(prompts.messages[1].text.contains(QStringLiteral("x.txt")));
    EXPECT_TRUE(text(IdFileName).isEmpty());
}

TEST_F(TraceliftTest, DirtyFieldsApplyOnTheNextMouseMove)
{
    const CGraphPicture g = MakeGraphPicture(false, saturation, samples());
    reach(ModeTrace, g);
    click(g.vertices[3]);
    ASSERT_EQ(canvas()->m_capture.m_points.count, 1);
    type(IdPoints, QStringLiteral("(1,2)(3,4)"));
    EXPECT_TRUE(dialog->FieldsDirty());
    EXPECT_EQ(canvas()->m_capture.m_points.count, 1); // not applied while typing
    QTest::mouseMove(canvas(), g.lowerLeft);
    EXPECT_FALSE(dialog->FieldsDirty());
    EXPECT_EQ(canvas()->m_capture.m_points.count, 2);
    EXPECT_EQ(text(IdReadout), QStringLiteral("(0,0)"));
}

TEST_F(TraceliftTest, PicturesFromFilesAndCtrlV)
{
    const CGraphPicture g = MakeGraphPicture(false, saturation, samples());
    const QString picture = files.filePath(QStringLiteral("graph.png"));
    ASSERT_TRUE(g.image.save(picture));
    const QString notPicture = files.filePath(QStringLiteral("notes.png"));
    {
        QFile f(notPicture);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write("no picture here");
    }
    dialog->OfferPictureFile(picture); // only while waiting for a picture
    EXPECT_EQ(mode(), ModeTyped);
    next();
    dialog->OfferPictureFile(notPicture);
    EXPECT_EQ(mode(), ModeWaitPicture);
    EXPECT_EQ(prompts.MessageTexts(), QStringList{message(27590, QStringLiteral("notes.png"))});
    dialog->OfferPictureFile(picture);
    EXPECT_EQ(mode(), ModePicturePlaced);
    EXPECT_EQ(canvas()->Bitmap().pixel(g.vertices[4]), g.image.pixel(g.vertices[4]));
    EXPECT_TRUE(action(CTraceliftToolDlg::IdBack)->isEnabled());

    // Ctrl+V: from a finished curve, a new capture and the paste at once.
    dialog = std::make_unique<CTraceliftToolDlg>();
    dialog->show();
    dialog->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(dialog.get()));
    QGuiApplication::clipboard()->setImage(g.image);
    control<QPushButton>(CTraceliftToolDlg::IdReplot)->setFocus();
    QTest::keyClick(dialog.get(), Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(mode(), ModePicturePlaced);
    // Escape does not close the dialog; Close does, without a question.
    QTest::keyClick(dialog.get(), Qt::Key_Escape);
    EXPECT_TRUE(dialog->isVisible());
    prompts.messages.clear();
    control<QPushButton>(CTraceliftToolDlg::IdCancel)->click();
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(dialog->result(), QDialog::Rejected);
    EXPECT_TRUE(prompts.messages.isEmpty());
}

TEST_F(TraceliftTest, EveryControlHasItsIdAndATooltip)
{
    const int ids[] = {CTraceliftToolDlg::IdOk, CTraceliftToolDlg::IdCancel, IdXAtFirst, IdXAtSecond,
                       IdYAtSecond, IdYAtFirst, IdXLog, IdYLog, IdPoints, IdReadout,
                       CTraceliftToolDlg::IdAddCurve, IdXUnit, IdXName,
                       IdYName, IdFileName, IdStartOver, IdLoad, IdYUnit,
                       CTraceliftToolDlg::IdApplyTyped, CTraceliftToolDlg::IdReplot, IdExchangeXY};
    for (int id : ids) {
        QWidget *w = control(id);
        ASSERT_NE(w, nullptr);
        EXPECT_FALSE(w->toolTip().isEmpty()) << id;
    }
    for (int id : {int(CTraceliftToolDlg::IdNext), int(CTraceliftToolDlg::IdBack)})
        EXPECT_FALSE(action(id)->toolTip().isEmpty()) << id;
    EXPECT_NE(control(IdHint), nullptr);
    EXPECT_NE(control(CTraceliftWnd::IdCanvas), nullptr);
    EXPECT_NE(control(CTraceliftToolDlg::IdPlot), nullptr);
    EXPECT_NE(control(CTraceliftToolDlg::IdToolBar), nullptr);
    EXPECT_FALSE(control(CTraceliftToolDlg::IdAddCurve)->isVisible());
    EXPECT_NE(dialog->findChild<QAction *>(QString::number(CTraceliftToolDlg::IdPaste)), nullptr);
    // The window may be made smaller, down to half its first size.
    EXPECT_EQ(dialog->minimumSize(), QSize(550, 380));
}

TEST(TraceliftApp, StartStopsWithoutTheEnglishTexts)
{
    QTemporaryDir empty;
    qputenv("TARN_LANG_DIR", empty.path().toUtf8());
    UnloadLanguageModule();
    CScriptedPrompts prompts;
    CTraceliftToolApp app;
    EXPECT_FALSE(app.InitInstance());
    EXPECT_EQ(app.m_exitCode, 1);
    ASSERT_EQ(prompts.messages.size(), 1);
    EXPECT_EQ(prompts.messages[0].text, QStringLiteral("Missing file en.lang. Please re-install TARN."));
    EXPECT_EQ(prompts.messages[0].icon, PromptIcon::Stop);

    // With the texts the dialog runs modally until it is closed.
    qputenv("TARN_LANG_DIR", TARN_SOURCE_DIR "/lang");
    UnloadLanguageModule();
    bool sawDialog = false;
    QTimer::singleShot(0, [&] {
        auto *dlg = qobject_cast<CTraceliftToolDlg *>(QApplication::activeModalWidget());
        sawDialog = dlg != nullptr;
        if (dlg)
            dlg->reject();
    });
    EXPECT_FALSE(app.InitInstance());
    EXPECT_TRUE(sawDialog);
    EXPECT_EQ(app.m_exitCode, 0);
    EXPECT_EQ(QCoreApplication::organizationName(), QStringLiteral("HELIOMAR"));
    EXPECT_EQ(QCoreApplication::applicationName(), QStringLiteral("Tracelift"));
    qunsetenv("TARN_LANG_DIR");
    UnloadLanguageModule();
}

TEST(TraceliftArguments, OnePictureFileAtMost)
{
    const struct {
        QStringList args;
        bool run;
        int exitCode;
        const char *picture;
    } cases[] = {
        {{"tracelift"}, true, 0, ""},
        {{"tracelift", "graph.png"}, true, 0, "graph.png"},
        {{"tracelift", "--", "-odd name.png"}, true, 0, "-odd name.png"},
        {{"tracelift", "-"}, true, 0, "-"},
        {{"tracelift", "--help"}, false, 0, ""},
        {{"tracelift", "a.png", "-h"}, false, 0, ""},
        {{"tracelift", "a.png", "b.png"}, false, 2, ""},
        {{"tracelift", "--picture=a.png"}, false, 2, ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(qPrintable(c.args.join(u' ')));
        CTraceliftToolApp app;
        QString usage;
        EXPECT_EQ(app.ParseArguments(c.args, usage), c.run);
        if (!c.run) {
            EXPECT_EQ(app.m_exitCode, c.exitCode);
            EXPECT_TRUE(usage.contains(QLatin1String("Usage: tracelift"))) << qPrintable(usage);
        } else {
            EXPECT_EQ(app.m_pictureFile, QString::fromLatin1(c.picture));
        }
    }
}

TEST_F(TraceliftTest, APictureFileOfTheCommandLineOpensReadyForItsCorners)
{
    const CGraphPicture g = MakeGraphPicture(false, saturation, samples());
    const QString picture = files.filePath(QStringLiteral("graph.png"));
    ASSERT_TRUE(g.image.save(picture));
    const struct {
        QString path;
        bool opens;
    } cases[] = {
        {files.filePath(QStringLiteral("missing.png")), false},
        {QString(settingsDir.path()), false}, // a folder
        {picture, true},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(qPrintable(c.path));
        dialog = std::make_unique<CTraceliftToolDlg>();
        prompts.messages.clear();
        EXPECT_EQ(dialog->OpenPictureFile(c.path), c.opens);
        EXPECT_EQ(mode(), c.opens ? ModePicturePlaced : ModeWaitPicture);
        EXPECT_EQ(prompts.messages.size(), c.opens ? 0 : 1);
        if (c.opens) {
            EXPECT_EQ(canvas()->Bitmap().size(), g.image.size());
            next();
            EXPECT_EQ(mode(), ModeCorner1);
        }
    }
}
