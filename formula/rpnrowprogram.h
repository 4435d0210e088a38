#pragma once
// CRpnRowProgram: a formula on plain numbers evaluated once per row of a
// series as a short list of steps (rpnsteps.h, shared with the `while`
// loop's steps) instead of a walk of its node tree.
//
// A formula qualifies when it is one expression of REAL constants,
// variables, operators with a real path, `iif` on numbers and calls of
// script functions whose body is one `return` of such an expression (the
// body is compiled in place of the call, its parameters standing for the
// arguments); or several statements: assignments `v = operation` of such
// expressions to the script's variables, other such expressions, perhaps a
// `return` last.  The condition of an `iif` may also be `==` or `!=` of
// texts, constants and the script's variables that the formula does not
// assign: it is the same on every row and is evaluated by its node once per
// series (and again after a row the tree did).
//
// Variables are read at the start of each row, each the way its node reads
// it: a bound host column straight from the column, the host's variable
// through its getter, any other from its place; a name assigned earlier in
// the row is read from the cell of that assignment, and the assignments
// reach their variables when the row is done.
//
// A row gives up whenever the doubles do not tell the whole story: a column
// value that is not valid or past the column's end, a variable that holds
// no REAL or has no place (yet), a zero divisor, an ApplyReal that fails, a
// user function running, a run that logs its assignments.  Nothing then is
// left behind (what a failing function reported, or threw, is taken back),
// and the row is evaluated through the tree, which gives the value, the
// validity and the error report (or, in the throwing mode, the exception) of
// that row.  So every row ends as the tree would have left it.
//
// Both branches of an `iif` and both sides of a short cut are computed
// (but for a choice on a condition evaluated once per series: only the
// branch it takes runs, and what only the other branch needs is left out),
// and the getter is called for every host variable node of the formula: a
// getter may so be called for a node that the tree would have passed over,
// and again for a row that the tree then does.
//
// The run looks at a stop request every StopRows rows (counted from the
// first row of the series), as the block evaluator does between its blocks.
// A formula that comes down to one step on one bound column and constants
// (`x*2+1`, or `iif(mode == "on", x*2, x)` once the choice is made) runs in
// a loop of its own made for that step; still a row at a time, each row
// computed, checked and stored before the next one, and a row the step
// cannot tell going to the tree as above.

#include "formula/rpndata.h"
#include "formula/rpnsteps.h"

#include <memory>
#include <vector>

class CEquationTree;
class CNodeVariable;
class CRpnUserFunction;
struct CRpnColumnBinding;

class CRpnRowProgram
{
public:
    // Longer formulas stay with the tree.
    static constexpr int MaxDepth = 200;
    static constexpr int MaxSteps = 1000;
    static constexpr int StopRows = 256;

    // The program of `root` (a node of `tree`), or null when it does not
    // qualify.  The program holds the tree's current getter; see IsFor.
    static std::unique_ptr<CRpnRowProgram> Build(CEquationTree *tree, CRpnNode *root);

    // As CEquationTree::EvaluateSeries, row by row: the program where it
    // can, else `top` (the node the program was made of) through the tree.
    int Series(CEquationTree *tree, CRpnNode *top, double *values, unsigned char *valid, int first, int last);

    // False when the tree's getter is no longer the one the program was
    // made for (a variable read from its place may be the host's now).
    bool IsFor(const CEquationTree *tree) const;

    // Whether the rows inside the column go through the one-step loop, as
    // the choices stood at the end of the last series.
    bool RunsOneStep() const { return m_kernel != nullptr; }

private:
    class Builder;
    static inline bool guarded(CEquationTree *tree, const CRpnStep *begin, const CRpnStep *end);
    // The value of the formula for `row` into `out`; false (and nothing
    // changed but the program's own cells) when the row needs the tree.
    template <bool Pure>
    RPN_STEPS_INLINE bool run(CEquationTree *tree, int row, double &out);
    template <bool Pure>
    int series(CEquationTree *tree, CRpnNode *top, double *values, unsigned char *valid, int first, int last);
    // Rows `row` to `end` (within one stretch between stop checks) by the
    // steps; returns the row to go on from.
    template <bool Pure>
    int rows(CEquationTree *tree, CRpnNode *top, double *values, unsigned char *valid, int row, int end, int &good);
    // The same by the one-step loop of the program's kernel, for rows inside
    // the column; returns early after a row done through the tree, whose
    // choices may have changed the steps.
    template <CRpnStep::Code K, bool AColumn, bool BColumn>
    int kernel(CEquationTree *tree, CRpnNode *top, double *values, unsigned char *valid, int row, int end, int &good);
    // A row through the tree, then the conditions evaluated once per series
    // again (the row may have changed what they read).
    void treeRow(CEquationTree *tree, CRpnNode *top, double *values, unsigned char *valid, int row, int &good);
    // The steps that run (m_active) from m_steps and the current value of
    // each hoisted condition, and the kernel that fits them, if any.
    void resolve();
    // Marks in m_live the cells that m_active's result, the assignments and
    // the unread statements need.
    void markLive();
    void pickKernel();
    template <CRpnStep::Code K>
    void pickOperands();

    using Kernel = int (CRpnRowProgram::*)(CEquationTree *, CRpnNode *, double *, unsigned char *, int, int, int &);

    struct ColumnRead
    {
        const CRpnColumnBinding *column;
        double *slot;
    };
    struct NodeRead
    {
        CNodeVariable *node;
        double *slot;
    };

    std::vector<CRpnStep> m_steps;
    // The steps that run: m_steps with each choice on a hoisted condition
    // made, copies passed through and steps whose value nobody reads left
    // out.  Same capacity as m_steps, so it is never reallocated.
    std::vector<CRpnStep> m_active;
    const double *m_activeResult = nullptr;
    bool m_activeApplies = false;
    Kernel m_kernel = nullptr;
    std::vector<unsigned char> m_live; // per cell, while resolving
    // The cells of statements whose value no later step reads: the tree
    // evaluates them all the same, so their steps always run.
    std::vector<const double *> m_unread;
    std::vector<ColumnRead> m_columnReads;
    std::vector<NodeRead> m_hostReads;  // through the getter
    std::vector<NodeRead> m_placeReads; // from the variable's place
    std::vector<NodeRead> m_writes;     // assignments: the node and the cell of its value
    std::vector<CRpnData *> m_writePlaces;
    std::vector<CRpnStep> m_invariants; // run once per series, not per row
    bool m_invariantsHold = true;       // they ran to their end
    // Constants, the variables' values of the row, temporaries: the steps
    // point into it, so it is sized once and never grows after the build.
    std::vector<double> m_cells;
    const double *m_result = nullptr;
    bool m_pure = false;    // columns and steps only: no getter, no place, no assignment
    void *m_getter = nullptr;
    CRpnData m_scratch; // what the getter fills
};
