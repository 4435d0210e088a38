// graphview --export: the extension alone says what the user wants written.
#include "graphviewexchange.h"

#include "graphdata/graphcurve.h"
#include "support/languagestring.h"

#include <QCommandLineParser>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <vector>

namespace {

// X = 0..4 named "Time", U = 2x + 0.5.
void FillGraph(CGraphCurve &graph)
{
    graph.m_data.Create(1, 2, 5, 0);
    graph.m_data.GetColumn(0)->m_name = QStringLiteral("Time");
    graph.m_data.GetColumn(1)->m_name = QStringLiteral("U");
    std::vector<double> v;
    for (int r = 0; r < 5; ++r)
        v.insert(v.end(), {double(r), 2.0 * r + 0.5});
    graph.m_data.AppendRows(v.data(), nullptr, 0, 2, 0, 5);
    bool changed;
    graph.AddCurve(1, 0, false, changed);
    graph.FitRanges();
}

int Export(const QString &path)
{
    QCommandLineParser parser;
    CGraphviewExchange exchange(parser);
    if (!parser.parse({QStringLiteral("graphview"), QStringLiteral("--export"), path}))
        return -100;
    CGraphCurve graph;
    FillGraph(graph);
    return exchange.Run(graph, QStringLiteral("test"));
}

} // namespace

TEST(GraphViewExport, TheExtensionChoosesTheForm)
{
    LoadLanguageFile(QStringLiteral(TARN_LANG_FOLDER "/en.lang"));
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const struct
    {
        const char *name;
        int exitCode;
        const char *secondLineHas; // in a text form; nullptr for no text check
        const char *startsWith;    // the file's first bytes; nullptr for no file
    } cases[] = {
        {"a.csv", 0, "0,0.5", nullptr},
        {"a.CSV", 0, "0,0.5", nullptr},
        {"a.tsv", 0, "0\t0.5", nullptr},
        {"a.txt", 0, "  0.000000000E+00   5.000000000E-01", nullptr},
        {"a.mat", 0, nullptr, "MATLAB 5.0"},
        {"a.xyz", 2, nullptr, nullptr},
        {"noextension", 2, nullptr, nullptr},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const QString path = dir.filePath(QString::fromLatin1(c.name));
        EXPECT_EQ(Export(path), c.exitCode);
        QFile file(path);
        if (c.exitCode != 0) {
            EXPECT_FALSE(file.exists()) << "a refused export writes nothing";
            continue;
        }
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        if (c.startsWith) {
            EXPECT_TRUE(bytes.startsWith(c.startsWith));
        }
        if (c.secondLineHas) {
            const QList<QByteArray> lines = bytes.split('\n');
            ASSERT_GE(lines.size(), 2);
            EXPECT_TRUE(lines[1].contains(c.secondLineHas)) << lines[1].constData();
        }
    }
}
