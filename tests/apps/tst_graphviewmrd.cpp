#include "graphviewmrd.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>
#include <cstring>
#include <vector>

namespace {

int runSave(const std::vector<QByteArray> &arguments)
{
    qputenv("TARN_LANG_DIR", TARN_LANG_FOLDER);
    std::vector<QByteArray> storage = arguments;
    std::vector<char *> argv;
    for (QByteArray &a : storage)
        argv.push_back(a.data());
    int code = -1;
    if (!RunSaveCommand(int(argv.size()), argv.data(), code))
        return -2;
    return code;
}

void writeText(const QString &path, const QByteArray &text)
{
    QFile f(path);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write(text);
}

} // namespace

// text -> .mrd -> graph: the same columns as the text gives, bit for bit;
// and the .mrd saved again from itself is the same graph.
TEST(GraphViewMrd, TextToDataFileKeepsEveryBit)
{
    const struct
    {
        const char *name;
        const char *text;
    } cases[] = {
        {"header and three columns", "Vce Ic Pd\n0.1 0.30000000000000004 1e-300\n0.2 -0 2.5e300\n0.35 7 3\n"},
        {"no header, one curve", "1 2\n2 4.000000000000001\n3 8\n4 16\n"},
        {"one row", "x y\n3.14159265358979 2.718281828459045\n"},
    };
    QTemporaryDir dir;
    for (const auto &c : cases) {
        const QString text = dir.filePath(QStringLiteral("in.txt"));
        const QString saved = dir.filePath(QStringLiteral("out.mrd"));
        const QString again = dir.filePath(QStringLiteral("again.mrd"));
        writeText(text, c.text);
        ASSERT_EQ(runSave({"graphview", text.toLocal8Bit(), "--save", saved.toLocal8Bit()}), 0) << c.name;
        ASSERT_EQ(runSave({"graphview", "--save=" + again.toLocal8Bit(), saved.toLocal8Bit()}), 0) << c.name;

        CGraphData fromText, fromFile, fromAgain;
        QString message;
        ASSERT_TRUE(LoadGraphViewInput(text, fromText, message)) << qPrintable(message);
        ASSERT_TRUE(LoadGraphViewInput(saved, fromFile, message)) << qPrintable(message);
        ASSERT_TRUE(LoadGraphDataFile(again, fromAgain, message)) << qPrintable(message);
        for (const CGraphData *read : {&fromFile, &fromAgain}) {
            ASSERT_EQ(read->ColumnCount(), fromText.ColumnCount()) << c.name;
            ASSERT_EQ(read->RowCount(), fromText.RowCount()) << c.name;
            const int rows = fromText.RowCount();
            for (int k = 0; k < fromText.ColumnCount(); ++k) {
                const CGraphColumn *a = read->GetColumn(k), *b = fromText.GetColumn(k);
                EXPECT_EQ(a->m_name, b->m_name) << c.name;
                EXPECT_EQ(std::memcmp(a->m_values, b->m_values, 8 * std::size_t(rows)), 0) << c.name << " column " << k;
                EXPECT_EQ(std::memcmp(a->m_valid, b->m_valid, std::size_t(rows)), 0) << c.name << " column " << k;
            }
            EXPECT_EQ((*read)->m_ordered, fromText->m_ordered) << c.name;
        }
    }
}

TEST(GraphViewMrd, SaveCommandFailures)
{
    QTemporaryDir dir;
    const QString out = dir.filePath(QStringLiteral("never.mrd"));
    const QString missing = dir.filePath(QStringLiteral("missing.txt"));
    const QString foreign = dir.filePath(QStringLiteral("picture.mrd"));
    writeText(foreign, QByteArray::fromHex("89504e470d0a1a0a") + QByteArray(500, 'x'));
    EXPECT_EQ(runSave({"graphview", missing.toLocal8Bit(), "--save", out.toLocal8Bit()}), 1);
    EXPECT_EQ(runSave({"graphview", foreign.toLocal8Bit(), "--save", out.toLocal8Bit()}), 1);
    EXPECT_EQ(runSave({"graphview", "--save"}), 1);
    EXPECT_FALSE(QFile::exists(out));
    EXPECT_EQ(runSave({"graphview", missing.toLocal8Bit(), "--logx"}), -2); // no --save: the window runs
    CGraphData data;
    QString message;
    EXPECT_FALSE(LoadGraphDataFile(foreign, data, message));
    EXPECT_TRUE(message.contains(foreign)) << qPrintable(message);
}
