#pragma once
// A running digitiser dialog on the offscreen platform, with its message
// boxes and file dialogs answered by a script and its settings in a
// temporary folder.

#include "../common/scriptedprompts.h"
#include "graphpicture.h"
#include "graphdata/graphcurve.h"
#include "support/languagestring.h"
#include "tool/curvewnd.h"
#include "tool/tracelifttooldlg.h"
#include "tool/traceliftwnd.h"

#include <QAction>
#include <QCheckBox>
#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>
#include <memory>

class TraceliftTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(settingsDir.isValid());
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, settingsDir.path());
        ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_SOURCE_DIR "/lang/en.lang")));
        QGuiApplication::clipboard()->clear();
        dialog = std::make_unique<CTraceliftToolDlg>();
        dialog->resize(1100, 760);
        dialog->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog.get()));
    }
    void TearDown() override
    {
        dialog.reset();
        UnloadLanguageModule();
    }

    template <typename W = QWidget>
    W *control(int id) const
    {
        W *w = dialog->findChild<W *>(QString::number(id));
        EXPECT_NE(w, nullptr) << "control " << id;
        return w;
    }
    QLineEdit *edit(int id) const { return control<QLineEdit>(id); }
    QString text(int id) const { return edit(id)->text(); }
    QAction *action(int id) const { return control<QAction>(id); }
    CTraceliftWnd *canvas() const { return dialog->Canvas(); }
    CaptureMode mode() const { return canvas()->Mode(); }
    CCurveWnd *plot() const { return dialog->Plot(); }
    CGraphCurve &plotGraph() const { return *plot()->GetGraphData(); }
    // A value of the plot's data set (column curves).
    double plotValue(int column, int row) const
    {
        const CGraphColumn *c = plotGraph().m_data.GetColumn(column);
        EXPECT_NE(c, nullptr) << "column " << column;
        return c && row < c->m_count ? c->m_values[row] : NAN;
    }

    void type(int id, const QString &t)
    {
        QLineEdit *e = edit(id);
        e->clear();
        QTest::keyClicks(e, t);
    }
    void next() { action(CTraceliftToolDlg::IdNext)->trigger(); }
    void back() { action(CTraceliftToolDlg::IdBack)->trigger(); }
    void click(QPoint p) { QTest::mouseClick(canvas(), Qt::LeftButton, {}, p); }

    // The numbered text as a message shows it.
    static QString message(int id, const QString &argument = QString())
    {
        const QString t = LanguageString(id);
        return t.contains(QLatin1String("%1")) ? t.arg(argument) : t;
    }

    // The road of a picture up to the given mode: the picture pasted, the
    // corners placed at its plot area, the axis values typed.
    void reach(CaptureMode target, const CGraphPicture &g)
    {
        next();
        if (target == ModeWaitPicture)
            return;
        QGuiApplication::clipboard()->setImage(g.image);
        next();
        if (target == ModePicturePlaced)
            return;
        next();
        if (target == ModeCorner1)
            return;
        click(g.lowerLeft);
        if (target == ModeCorner2)
            return;
        click(g.upperRight);
        typeValues(g, target == ModeValuesAwaited);
        if (target == ModeCornersSet)
            return;
        next();
    }
    void typeValues(const CGraphPicture &g, bool equalX = false)
    {
        type(IdXAtFirst, QString::number(g.xLow));
        type(IdXAtSecond, QString::number(equalX ? g.xLow : g.xHigh));
        type(IdYAtFirst, QString::number(g.yLow));
        type(IdYAtSecond, QString::number(g.yHigh));
        if (g.yLog != control<QCheckBox>(IdYLog)->isChecked())
            control<QCheckBox>(IdYLog)->click();
    }

    QTemporaryDir settingsDir;
    QTemporaryDir files;
    CScriptedPrompts prompts;
    std::unique_ptr<CTraceliftToolDlg> dialog;
};
