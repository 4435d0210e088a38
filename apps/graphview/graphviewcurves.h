#pragma once
// Computed curves in graphview:
//   --curve 'NAME=FORMULA'   adds the curve NAME computed from FORMULA over
//                            the columns (repeatable; "=FORMULA" names it
//                            after the formula)
// and the window's command to add one (menu "Curves").

#include <QCommandLineOption>
#include <QString>

class CGraphWnd;
class QCommandLineParser;
class QMainWindow;

class CGraphviewCurves
{
public:
    // Adds the option to the parser.
    explicit CGraphviewCurves(QCommandLineParser &parser);

    // Splits 'NAME=FORMULA' at the first '=' that is not part of an
    // operator ("==", "<=", ">=", "!=") ; false when there is none.
    static bool SplitCurveArgument(const QString &argument, QString &name, QString &formula);

    // Computes the curves asked for on the window's graph, with the progress
    // box unless `headless`.  A formula that fails is told on standard error
    // with its line and column; returns the exit code then (1), else -1.
    int Apply(CGraphWnd &window, bool headless);

    // Adds the command "Computed curve..." (Ctrl+K) to the window's menu bar.
    static void SetUpWindow(QMainWindow &window, CGraphWnd &graphWnd);

private:
    QCommandLineParser &m_parser;
    QCommandLineOption m_curve;
};
