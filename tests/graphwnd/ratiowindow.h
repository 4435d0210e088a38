#pragma once
// A graph window over 50 rows of t and ratio = 1 / (1 + 10 t), with the
// ratio marked invalid in every ninth row from the fifth on, for the tests
// that work through a window; its message boxes and file dialogs are
// answered from a script.

#include "../common/scriptedprompts.h"

#include "graphwnd/graphwnd.h"
#include "support/languagestring.h"

#include <gtest/gtest.h>

#include <cstdint>

class RatioWindowTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG))); }

    void SetUp() override
    {
        CGraphData data;
        data.Create(1, 2, 50, 0);
        for (int i = 0; i < 50; ++i) {
            const double row[2] = {i * 0.1, 1.0 / (1 + i)};
            const std::uint8_t valid[2] = {1, std::uint8_t(i % 9 == 4 ? 2 : 1)};
            data.AppendRows(row, valid, 0, 2, i, 1);
        }
        data.GetColumn(0)->m_name = QStringLiteral("t");
        data.GetColumn(1)->m_name = QStringLiteral("ratio");
        m_wnd.SetGraphDataCopy(data);
    }

    CScriptedPrompts m_prompts;
    CGraphWnd m_wnd;
};
