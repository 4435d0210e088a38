#pragma once
// What the programs that take the README's pictures of the graph window
// share: the start of a run, showing a window, saving a picture, and the
// switching waveform that several pictures show.

#include "graphdata/graphdata.h"
#include "graphwnd/graphcursors.h"
#include "support/languagestring.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QPixmap>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>
#include <cstdio>
#include <numbers>
#include <vector>

// One run of a picture program: the application, the folder named on the
// command line, the English texts, the graph cursors, and settings that
// live for this run only, so that nothing of the user's shows in a picture.
class CScreenshotRun
{
public:
    CScreenshotRun(int &argc, char **argv) : m_app(argc, argv)
    {
        if (argc < 2) {
            std::fprintf(stderr, "usage: %s OUTPUT_FOLDER\n", qPrintable(QFileInfo(QString::fromLocal8Bit(argv[0])).fileName()));
            m_exitCode = 2;
            return;
        }
        m_out = QDir(QString::fromLocal8Bit(argv[1]));
        if (!LoadLanguageFile(QStringLiteral(TARN_SOURCE_DIR "/lang/en.lang"))) {
            m_exitCode = 1;
            return;
        }
        LoadGraphCursors();
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settings.path());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settings.path());
    }

    // 0 while the run can go on, else the code the program ends with.
    int ExitCode() const { return m_exitCode; }

    // Writes the picture under `name` in the folder and says so; false when
    // it could not be written.
    bool Save(const QPixmap &picture, const QString &name) const
    {
        const QString path = m_out.filePath(name);
        const bool ok = picture.save(path);
        std::printf("%s %s\n", ok ? "wrote" : "could not write", qPrintable(path));
        return ok;
    }

private:
    QApplication m_app;
    QTemporaryDir m_settings;
    QDir m_out;
    int m_exitCode = 0;
};

// Shows the widget and waits until it is on the screen; a picture is taken
// even when it does not get there, but the run says so.
inline void ShowExposed(QWidget &widget)
{
    widget.show();
    if (!QTest::qWaitForWindowExposed(&widget))
        std::fprintf(stderr, "the window did not show\n");
}

// The node of a switching converter sampled at 100 MHz over `rows` rows:
// a 400 kHz square wave with a ringing at 7.3 MHz over it, and, when asked
// for, the input current beside it.
inline CGraphData SwitchingNode(int rows, bool withInputCurrent)
{
    const int columns = withInputCurrent ? 3 : 2;
    CGraphData data;
    data.Create(1, columns, 0, 0);
    std::vector<double> values;
    for (int i = 0; i < rows; ++i) {
        const double t = i * 1e-8;
        const double square = std::fmod(t * 400e3, 1.0) < 0.3 ? 1.0 : 0.0;
        values.insert(values.end(), {t, 0.05 * square + 0.002 * std::sin(2 * std::numbers::pi * 7.3e6 * t)});
        if (withInputCurrent)
            values.push_back(0.8 + 0.1 * std::sin(2 * std::numbers::pi * 400e3 * t));
    }
    data.AppendRows(values.data(), nullptr, 0, columns, 0, rows);
    data.GetColumn(0)->m_name = QStringLiteral("t");
    data.GetColumn(1)->m_name = QStringLiteral("node");
    if (withInputCurrent)
        data.GetColumn(2)->m_name = QStringLiteral("I_in");
    return data;
}
