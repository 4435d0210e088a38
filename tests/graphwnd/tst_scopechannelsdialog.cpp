// The oscilloscope's channel formulas in a window: lines applied together,
// a failing line with its message at its place and nothing changed.
#include "../common/scriptedprompts.h"

#include "graphdata/graphcurve.h"
#include "graphdata/scopegraph.h"
#include "graphwnd/graphwnd.h"
#include "graphwnd/scopechannelsdialog.h"
#include "support/languagestring.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace {

class ScopeChannelsWindow : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG))); }

    void SetUp() override
    {
        CGraphData data(true);
        data.Create(2, 3, 8, 8);
        const char *names[3] = {"t", "a", "b"};
        for (int c = 0; c < 3; ++c)
            data.GetColumn(c)->m_name = QString::fromLatin1(names[c]);
        for (int r = 0; r < 8; ++r) {
            const double row[3] = {r * 0.5, double(r), 10.0 - r};
            data.AppendRows(row, nullptr, 0, 3, r, 1);
        }
        m_wnd.SetGraphData(MakeScopeGraph(data), 0, true);
        m_wnd.resize(600, 400);
    }
    CScopeData_Data &scope() { return *m_wnd.GetGraphData()->m_data->AsScope(); }
    double cell(int channel, int row) { return m_wnd.GetGraphData()->m_data.GetColumn(channel)->m_values[row]; }

    CScriptedPrompts m_prompts;
    CGraphWnd m_wnd;
};

} // namespace

TEST_F(ScopeChannelsWindow, LinesApplyTogetherOrNotAtAll)
{
    const struct
    {
        const char *a, *b;       // the two lines as typed
        bool accepted;
        const char *formulaA;    // channel a's formula afterwards
        double a3, b3;           // the channels at row 3 afterwards
        int failing;             // the channel whose line is refused, 0 none
        int position;            // where the caret stands in it, -1 none
        const char *selected;
    } cases[] = {
        {"a*2", "", true, "a*2", 6, 7, 0, -1, ""},
        {"a*2", "b - a", true, "a*2", 6, 4, 0, -1, ""},
        // b's line fails: a's change goes back as well.
        {"a*2", "b + nothing", false, "", 3, 7, 2, 4, "nothing"},
        {"a*2", "  b + nothing", false, "", 3, 7, 2, 6, "nothing"},
        {"a +", "b", false, "", 3, 7, 1, -1, ""},
    };
    for (const auto &c : cases) {
        ASSERT_TRUE(scope().SetChannelFormula(1, QString()));
        ASSERT_TRUE(scope().SetChannelFormula(2, QString()));
        CScopeChannelsDialog dialog(m_wnd);
        ASSERT_TRUE(dialog.FormulaEdit(1) && dialog.FormulaEdit(2) && !dialog.FormulaEdit(3));
        dialog.FormulaEdit(1)->setText(QString::fromLatin1(c.a));
        dialog.FormulaEdit(2)->setText(QString::fromLatin1(c.b));
        dialog.accept();
        const std::string what = std::string(c.a) + " | " + c.b;
        EXPECT_EQ(dialog.result() == QDialog::Accepted, c.accepted) << what;
        EXPECT_EQ(scope().ChannelFormula(1), QString::fromLatin1(c.formulaA)) << what;
        EXPECT_DOUBLE_EQ(cell(1, 3), c.a3) << what;
        EXPECT_DOUBLE_EQ(cell(2, 3), c.b3) << what;
        EXPECT_EQ(dialog.ErrorLabel()->text().isEmpty(), c.failing == 0) << what;
        if (c.failing) {
            // The message names the channel, and its place where it has one.
            EXPECT_TRUE(dialog.ErrorLabel()->text().contains(c.failing == 1 ? u"a"_s : u"b"_s)) << what;
            if (c.position >= 0) {
                EXPECT_TRUE(dialog.ErrorLabel()->text().contains(u"line 1"_s)) << what;
                EXPECT_EQ(dialog.FormulaEdit(c.failing)->selectionStart(), c.position) << what;
                EXPECT_EQ(dialog.FormulaEdit(c.failing)->selectedText(), QString::fromLatin1(c.selected)) << what;
            }
        }
    }
}

TEST_F(ScopeChannelsWindow, OfferedOnlyForAnOscilloscope)
{
    EXPECT_TRUE(CScopeChannelsDialog::Applies(m_wnd));
    CGraphWnd plain;
    CGraphData data;
    data.Create(1, 2, 4, 0);
    plain.SetGraphDataCopy(data);
    EXPECT_FALSE(CScopeChannelsDialog::Applies(plain));
    EXPECT_FALSE(plain.OnCommand(CmdScopeChannels));
    // The dialog opens with the formulas the channels have.
    ASSERT_TRUE(scope().SetChannelFormula(2, u"b*a"_s));
    CScopeChannelsDialog dialog(m_wnd);
    EXPECT_EQ(dialog.FormulaEdit(1)->text(), QString());
    EXPECT_EQ(dialog.FormulaEdit(2)->text(), u"b*a"_s);
}
