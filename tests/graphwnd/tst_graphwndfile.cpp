#include "ratiowindow.h"

#include "graphdata/file/graphfileload.h"
#include "graphdata/graphcurve.h"
#include "graphwnd/graphtoolbar.h"
#include "graphwnd/graphwnd.h"
#include "support/controls/progressworkingdlg.h"
#include "support/languagestring.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QFile>
#include <QTemporaryDir>
#include <cstring>

namespace {

class GraphWndFile : public RatioWindowTest
{
protected:
    QTemporaryDir m_dir;
};

} // namespace

// The toolbar's Save asks for a name through the prompts and writes the
// shown columns, bit for bit.
TEST_F(GraphWndFile, SaveWritesTheShownColumns)
{
    const QString path = m_dir.filePath(QStringLiteral("shown.mrd"));
    m_prompts.fileNames << path;
    m_wnd.ToolBar()->ActionFor(CmdSaveAs)->trigger();
    ASSERT_EQ(m_prompts.filePrompts.size(), 1);
    EXPECT_TRUE(m_prompts.filePrompts[0].save);
    EXPECT_TRUE(m_prompts.filePrompts[0].filter.contains(QStringLiteral("*.mrd")));
    EXPECT_TRUE(m_prompts.messages.isEmpty()) << qPrintable(m_prompts.MessageTexts().join('\n'));

    CGraphFileContent content;
    QString message;
    ASSERT_TRUE(ReadGraphFile(path, content, message)) << qPrintable(message);
    const CGraphData &shown = m_wnd.GetGraphData()->m_data;
    ASSERT_EQ(content.data.ColumnCount(), shown.ColumnCount());
    ASSERT_EQ(content.data.RowCount(), shown.RowCount());
    for (int c = 0; c < shown.ColumnCount(); ++c) {
        EXPECT_EQ(content.data.GetColumn(c)->m_name, shown.GetColumn(c)->m_name);
        EXPECT_EQ(std::memcmp(content.data.GetColumn(c)->m_values, shown.GetColumn(c)->m_values, 8 * 50), 0);
        EXPECT_EQ(std::memcmp(content.data.GetColumn(c)->m_valid, shown.GetColumn(c)->m_valid, 50), 0);
    }
}

TEST_F(GraphWndFile, CancelledOrFailedSaves)
{
    // Cancelled: nothing is written and nothing said.
    EXPECT_FALSE(m_wnd.SaveDataFile());
    EXPECT_TRUE(m_prompts.messages.isEmpty());
    // A folder that does not exist: one box that names the file.
    const QString path = m_dir.filePath(QStringLiteral("missing/folder/x.mrd"));
    EXPECT_FALSE(m_wnd.SaveDataFile(path));
    ASSERT_EQ(m_prompts.messages.size(), 1);
    EXPECT_TRUE(m_prompts.messages[0].text.contains(path)) << qPrintable(m_prompts.messages[0].text);
    EXPECT_FALSE(QFile::exists(path));
    // The busy box of the write is gone with it.
    EXPECT_TRUE(m_wnd.findChildren<CProgressWorkingDlg *>().isEmpty());
}
