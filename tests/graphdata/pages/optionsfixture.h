#pragma once
// What the option dialog's tests share: a graph of two curves to edit, the
// settings kept in a folder of their own, messages recorded instead of shown,
// and a fingerprint of everything the dialog can change.
#include "graphdata/graphcurve.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"

#include <QSettings>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string>
#include <vector>

struct RecordingPrompts : CUserPrompts
{
    QStringList messages;
    PromptAnswer Message(const CMessagePrompt &prompt) override
    {
        messages << prompt.text;
        return PromptAnswer::Ok;
    }
};

// Everything of a graph that the dialog can change, as text, so that "left
// as it was" can be checked in one comparison.
inline std::string fingerprint(const CGraphCurve &g)
{
    QString s = QStringLiteral("x %1 %2 %3 log%4 flags%5 rot%6 name[%7] back%8 fore%9 grid%10 on%11 hide%12\n")
                    .arg(g.m_xViewMin, 0, 'g', 17)
                    .arg(g.m_xViewMax, 0, 'g', 17)
                    .arg(g.m_xTick, 0, 'g', 17)
                    .arg(g.m_xLog)
                    .arg(g.m_xAxisFlags)
                    .arg(g.m_xRotation)
                    .arg(g.m_xAxisName)
                    .arg(g.m_backColor)
                    .arg(g.m_foreColor)
                    .arg(g.m_gridColor)
                    .arg(g.m_gridOn)
                    .arg(g.m_hideLabels);
    for (int i = 0; i < g.RangeCount(); ++i) {
        const CGraph_Range *r = g.Range(i);
        s += QStringLiteral("range %1 %2 %3 auto%4 log%5 db%6 layout%7 color%8 grid%9 flags%10 side%11\n")
                 .arg(r->m_viewMin, 0, 'g', 17)
                 .arg(r->m_viewMax, 0, 'g', 17)
                 .arg(r->m_tick, 0, 'g', 17)
                 .arg(r->m_autoScale)
                 .arg(r->m_logScale)
                 .arg(r->m_dbScale)
                 .arg(r->m_layout)
                 .arg(r->m_textColor)
                 .arg(r->m_gridColor)
                 .arg(r->m_axisFlags)
                 .arg(r->m_axisSide);
    }
    for (const CCurveInfo *c : g.m_curves)
        s += QStringLiteral("curve %1 [%2] color%3 thick%4 sym%5 conn%6 axis%7\n")
                 .arg(c->m_colIndex)
                 .arg(c->m_colLabel)
                 .arg(c->m_color)
                 .arg(c->m_lineThickness)
                 .arg(c->m_symbol)
                 .arg(c->m_connect)
                 .arg(c->m_yAxisIndex);
    return s.toStdString();
}

class Options2Dlg : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(LoadLanguageFile(QStringLiteral(TARN_EN_LANG))); }
    void SetUp() override
    {
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settings.path());
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, m_settings.path());
        m_old = SetUserPrompts(&m_prompts);
        fill(m_graph);
    }
    void TearDown() override { SetUserPrompts(m_old); }

    // X 1..100, U = X, V = 200 - 2X, on one axis.
    static void fill(CGraphCurve &graph)
    {
        graph.m_data.Create(1, 3, 100, 0);
        graph.m_data.GetColumn(0)->m_name = QStringLiteral("Time");
        graph.m_data.GetColumn(1)->m_name = QStringLiteral("U");
        graph.m_data.GetColumn(2)->m_name = QStringLiteral("V");
        std::vector<double> rows;
        for (int i = 1; i <= 100; ++i)
            rows.insert(rows.end(), {double(i), double(i), 200.0 - 2 * i});
        graph.m_data.AppendRows(rows.data(), nullptr, 0, 3, 0, 100);
        bool changed;
        graph.AddCurve(1, 0, false, changed);
        graph.AddCurve(2, 0, false, changed);
        graph.FitRanges();
    }

    QTemporaryDir m_settings;
    RecordingPrompts m_prompts;
    CUserPrompts *m_old = nullptr;
    CGraphCurve m_graph;
};

