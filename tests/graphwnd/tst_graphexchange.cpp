// The graph window's Save As and its spectrum switch, answered by a
// stand-in for the file dialog and the message boxes.
#include "graphdata/graphcurve.h"
#include "graphwnd/graphsaveas.h"
#include "graphwnd/graphwnd.h"
#include "graphwnd/spectrumprogress.h"
#include "support/controls/progressworkingdlg.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"

#include <QFile>
#include <QTimer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

struct FilePrompts : CUserPrompts
{
    QString answer;
    int position = 0;
    QString filterSeen;
    QStringList messages;
    QString FileName(const CFilePrompt &prompt) override
    {
        filterSeen = prompt.filter;
        if (prompt.filterPosition)
            *prompt.filterPosition = position;
        return answer;
    }
    PromptAnswer Message(const CMessagePrompt &prompt) override
    {
        messages << prompt.text;
        return PromptAnswer::Ok;
    }
};

class GraphExchange : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG))); }
    void SetUp() override
    {
        m_previous = SetUserPrompts(&m_prompts);
        CGraphData data;
        data.Create(1, 2, 64, 0);
        data.GetColumn(0)->m_name = u"Time"_qs;
        data.GetColumn(1)->m_name = u"U(out)"_qs;
        std::vector<double> v;
        for (int r = 0; r < 64; ++r)
            v.insert(v.end(), {r * 0.5, std::sin(r * 0.3)});
        data.AppendRows(v.data(), nullptr, 0, 2, 0, 64);
        m_wnd.SetGraphDataCopy(data);
        m_wnd.GetGraphData()->FitRanges();
    }
    void TearDown() override { SetUserPrompts(m_previous); }

    QByteArray firstLine(const QString &path)
    {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readLine() : QByteArray();
    }

    FilePrompts m_prompts;
    CUserPrompts *m_previous = nullptr;
    CGraphWnd m_wnd;
    QTemporaryDir m_dir;
};

} // namespace

TEST_F(GraphExchange, SaveAsWritesTheKindOfTheChosenFilter)
{
    const struct
    {
        const char *file;
        int position;
        const char *firstLine;
    } cases[] = {
        {"a.txt", 2, "    Time            U(out)          \r\n"},
        {"b.txt", 3, "Time\tU(out)\r\n"},
        {"c.csv", 4, "Time,U(out)\r\n"},
        {"d.mat", 5, "MATLAB 5.0 MAT-file"},
        {"e.csv", 0, "    Time            U(out)          \r\n"}, // no filter known: a .csv name is fixed columns
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.file);
        m_prompts.answer = m_dir.filePath(QString::fromLatin1(c.file));
        m_prompts.position = c.position;
        EXPECT_TRUE(m_wnd.OnCommand(CmdSaveAs));
        EXPECT_TRUE(m_prompts.messages.isEmpty());
        EXPECT_TRUE(firstLine(m_prompts.answer).startsWith(c.firstLine)) << firstLine(m_prompts.answer).toStdString();
    }
    EXPECT_EQ(m_prompts.filterSeen,
              u"Mirador files (*.mrd);;Text files (*.txt);;Tab separated text file (Excel compatible) (*.txt);;"
              "Comma separated file (*.csv);;MAT-files (*.mat)"_qs);

    // Cancelled: nothing written, nothing said.
    m_prompts.answer.clear();
    EXPECT_EQ(SaveGraphAs(&m_wnd, *m_wnd.GetGraphData()), 0);
    EXPECT_TRUE(m_prompts.messages.isEmpty());

    // A folder that is not there: the message names the file.
    m_prompts.answer = m_dir.filePath(u"missing/f.csv"_qs);
    m_prompts.position = 4;
    EXPECT_EQ(SaveGraphAs(&m_wnd, *m_wnd.GetGraphData()), 0);
    ASSERT_EQ(m_prompts.messages.size(), 1);
    EXPECT_TRUE(m_prompts.messages[0].contains(m_prompts.answer));
}

TEST_F(GraphExchange, SpectrumSwitchAndItsFilters)
{
    CGraphCurve &graph = *m_wnd.GetGraphData();
    ASSERT_EQ(SwitchSpectrumMode(&m_wnd, graph, true, u"test"_qs), 1);
    EXPECT_EQ(graph.m_xAxisName, u"Frequency"_qs);
    EXPECT_TRUE(SaveAsDialogFilter(graph).startsWith(u"FFT files (*.fft);;"_qs));

    m_prompts.answer = m_dir.filePath(u"s.fft"_qs);
    m_prompts.position = 1;
    EXPECT_EQ(SaveGraphAs(&m_wnd, graph), 1);
    EXPECT_TRUE(firstLine(m_prompts.answer).startsWith(";; FFT Data from 0 (s)\t to   31.5 (s)"));

    ASSERT_EQ(SwitchSpectrumMode(&m_wnd, graph, false, u"test"_qs), 1);
    EXPECT_EQ(graph.m_xAxisName, u"Time"_qs);

    // A data set of one row has no spectrum: a message, and time stays.
    CGraphData one;
    one.Create(1, 2, 1, 0);
    const double row[] = {1, 2};
    one.AppendRows(row, nullptr, 0, 2, 0, 1);
    m_wnd.SetGraphDataCopy(one);
    EXPECT_EQ(SwitchSpectrumMode(&m_wnd, *m_wnd.GetGraphData(), true, u"one row"_qs), 0);
    EXPECT_EQ(m_wnd.GetGraphData()->m_spectrumMode, 0);
    ASSERT_EQ(m_prompts.messages.size(), 1);
    EXPECT_TRUE(m_prompts.messages[0].contains(u"one row"_qs));
}

TEST_F(GraphExchange, SpectrumCancelLeavesTheOtherCurvesUndone)
{
    // Three curves; Cancel on the busy box as soon as the first transform
    // reports stops the rest, and the box is gone afterwards.
    CGraphData data;
    data.Create(1, 4, 256, 0);
    std::vector<double> v;
    for (int r = 0; r < 256; ++r)
        v.insert(v.end(), {r * 0.5, std::sin(r * 0.3), std::cos(r * 0.2), r * 0.01});
    data.AppendRows(v.data(), nullptr, 0, 4, 0, 256);
    for (const bool cancel : {false, true}) {
        m_wnd.SetGraphDataCopy(data);
        CGraphCurve &graph = *m_wnd.GetGraphData();
        ASSERT_EQ(graph.CurveCount(), 3);
        QTimer press;
        press.setInterval(0);
        QObject::connect(&press, &QTimer::timeout, [this] {
            for (CProgressWorkingDlg *box : m_wnd.findChildren<CProgressWorkingDlg *>())
                box->Cancel();
        });
        if (cancel)
            press.start();
        EXPECT_EQ(SwitchSpectrumMode(&m_wnd, graph, true, u"three"_qs), 1);
        press.stop();
        EXPECT_EQ(bool(graph.Curve(1)->m_spectrumMagnitude), !cancel);
        EXPECT_EQ(bool(graph.Curve(2)->m_spectrumMagnitude), !cancel);
        EXPECT_TRUE(m_prompts.messages.isEmpty()); // a cancel is no failure
        EXPECT_TRUE(m_wnd.findChildren<CProgressWorkingDlg *>().isEmpty());
    }
}
