#pragma once
// Shared by the tests of the series row steps: a formula over a column x of
// eight rows (NaN, an infinity, a zero, a denormal, a cell that is not
// valid), run as a series by the row steps (by the tree's series where the
// formula makes none) and, as the reference, row by row through the nodes with their fast paths
// closed.  Both outcomes print as one line, to be compared as a whole.

#include "formula/rpnexception.h"
#include "formula/rpnnode.h"
#include "formula/rpnrowprogram.h"
#include "formula/rpntree.h"

#include <gtest/gtest.h>

#include <QString>
#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace rowcompare {

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInf = std::numeric_limits<double>::infinity();
inline constexpr int kRows = 8;
inline constexpr double kUntouched = -12345.0;

// x of each row; a cell that is not valid is marked in kValid.
inline const double kX[kRows] = {1.0, -2.0, 0.0, 4.0, kNaN, kInf, 2.0, 1e-310};
inline const unsigned char kValid[kRows] = {1, 1, 1, 1, 1, 1, 0, 1};

struct Outcome
{
    std::vector<double> values = std::vector<double>(kRows, kUntouched);
    std::vector<unsigned char> valid = std::vector<unsigned char>(kRows, 9);
    int good = -1;
    std::string thrown; // "row: message" in the throwing mode
    std::string error;  // the tree's error message after the series
    std::string listed; // the tree's list of failed functions' messages
    bool oneStep = false; // the row steps ended in their one-step loop
};

inline std::string describe(const Outcome &o)
{
    std::string out;
    for (int r = 0; r < kRows; ++r) {
        out += std::to_string(o.valid[std::size_t(r)]) + ':';
        const double v = o.values[std::size_t(r)];
        out += std::isnan(v) ? std::string("nan") : QString::number(v, 'g', 17).toStdString();
        out += ' ';
    }
    return out + "| good " + std::to_string(o.good) + " | thrown " + o.thrown + " | error " + o.error + " | listed "
        + o.listed;
}

// The host's variables for the getter cases: x from the column, `gone` known
// only on even rows.
inline void hostGet(CRpnData &result, int, int row, void *, void *, CRpnNode *, const QString &name, int &found)
{
    if (name == QLatin1String("x") && row >= 0 && row < kRows && kValid[row] == 1)
        result.SetDouble(kX[row]);
    else if (name == QLatin1String("gone") && row % 2 == 0)
        result.SetDouble(row);
    else
        found = 0;
}

enum Host { Column, Getter };

struct Setup
{
    Host host = Column;
    bool throwing = false;
    const char *variables = nullptr; // a script run first in the tree (main variables)
};

// The host claims x and `gone` as its own, as a graph host claims its columns.
inline const CRpnVariableMatcher kMatcher = [](QStringView rest, int &index) {
    index = 0;
    for (QStringView name : {QStringView(u"x"), QStringView(u"gone")}) {
        if (rest.startsWith(name) && (rest.size() == name.size() || !rest[name.size()].isLetterOrNumber()))
            return int(name.size());
    }
    return 0;
};

inline bool prepare(CEquationTree &tree, const char *text, const Setup &setup)
{
    if (setup.host == Column)
        tree.BindColumn(QStringLiteral("x"), kX, kValid, kRows);
    else
        tree.SetVariableAccess(hostGet, nullptr);
    if (setup.variables) {
        if (!tree.Compile(QString::fromLatin1(setup.variables)))
            return false;
        CRpnData ignored;
        tree.Run(ignored);
    }
    tree.throwOnError = setup.throwing;
    const bool compiled = tree.Compile(QString::fromLatin1(text), nullptr, true, kMatcher) != 0;
    EXPECT_TRUE(compiled) << text << ": " << tree.GetErrorMessage().toStdString();
    return compiled;
}

inline std::string message(const std::exception &e)
{
    if (const auto *rpn = dynamic_cast<const CRpnException *>(&e))
        return rpn->GetErrorMessage().toStdString();
    return e.what();
}

inline Outcome bySeries(const char *text, const Setup &setup, bool *program)
{
    CEquationTree tree;
    Outcome o;
    if (!prepare(tree, text, setup))
        return o;
    CRpnNode *top = tree.GetRoot();
    while (top && top->IsList() && !top->IsMultiOperand() && top->GetOperandCount() == 1)
        top = top->GetOperand(0);
    // The steps themselves, where they are made: outside the throwing mode
    // the series would take the block evaluator first.
    std::unique_ptr<CRpnRowProgram> steps = CRpnRowProgram::Build(&tree, top);
    *program = steps != nullptr;
    try {
        if (steps)
            o.good = steps->Series(&tree, top, o.values.data(), o.valid.data(), 0, kRows - 1);
        else
            o.good = tree.EvaluateSeries(o.values.data(), o.valid.data(), 0, kRows - 1);
    } catch (const std::exception &e) {
        o.thrown = std::to_string(tree.m_rowIndex) + ": " + message(e);
    }
    o.error = tree.GetErrorMessage().toStdString();
    o.listed = tree.GetErrorList().join(QLatin1Char('|')).toStdString();
    o.oneStep = steps && steps->RunsOneStep();
    return o;
}

inline Outcome byNodes(const char *text, const Setup &setup)
{
    CEquationTree tree;
    Outcome o;
    if (!prepare(tree, text, setup))
        return o;
    WalkTree(tree.GetRoot(), [](CRpnNode *node) {
        node->m_fastPath = node->m_fastValue = false;
        return 0;
    });
    CRpnNode *top = tree.GetRoot();
    o.good = 0;
    for (int r = 0; r < kRows; ++r) {
        tree.m_rowIndex = r;
        unsigned char st = 1;
        try {
            double x = top->EvaluateReal(st);
            o.valid[std::size_t(r)] = RpnSeriesValidity(x, st);
            o.values[std::size_t(r)] = x;
            o.good += o.valid[std::size_t(r)] == 1;
        } catch (const std::exception &e) {
            o.thrown = std::to_string(r) + ": " + message(e);
            o.good = -1;
            break;
        }
    }
    o.error = tree.GetErrorMessage().toStdString();
    o.listed = tree.GetErrorList().join(QLatin1Char('|')).toStdString();
    return o;
}


} // namespace rowcompare
