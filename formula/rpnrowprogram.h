#pragma once
// CRpnRowProgram: a formula on plain numbers evaluated once per row of a
// series as a short list of steps (rpnsteps.h) instead of a walk of its
// node tree.
//
// A formula qualifies when it is one expression of REAL constants,
// variables, operators with a real path, `iif` on numbers and calls of
// script functions whose body is one `return` of such an expression (the
// body is compiled in place of the call, its parameters standing for the
// arguments).  Its variables are read at the start of each row, each the way
// the variable node reads it: a bound host column straight from the column,
// the host's variable through its getter, any other from its place.
//
// Run gives up (false) whenever the doubles do not tell the whole story: a
// column value that is not valid or past the column's end, a variable that
// holds no REAL or has no place, a zero divisor, an ApplyReal that fails, a
// user function running.  Nothing then is left behind (what a failing
// function reported is taken back), and the caller evaluates that row
// through the tree, which gives the value, the validity and the error
// report (or, in the throwing mode, the exception) of that row.  So every
// row ends as the tree would have left it.
//
// Both branches of an `iif` and both sides of a short cut are computed, and
// the getter is called for every host variable node of the formula: a
// getter may so be called for a node that the tree would have passed over.

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

    // The program of `root` (a node of `tree`), or null when it does not
    // qualify.  The program holds the tree's current getter; see IsFor.
    static std::unique_ptr<CRpnRowProgram> Build(CEquationTree *tree, CRpnNode *root);

    // The value of the formula for `row` into `out`; false (and nothing
    // changed but the program's own scratch) when the row needs the tree.
    bool Run(CEquationTree *tree, int row, double &out);
    // As CEquationTree::EvaluateSeries, row by row: the program where it
    // can, else `top` (the node the program was made of) through the tree.
    int Series(CEquationTree *tree, CRpnNode *top, double *values, unsigned char *valid, int first, int last);

    // False when the tree's getter is no longer the one the program was
    // made for (a variable read from its place may be the host's now).
    bool IsFor(const CEquationTree *tree) const;
    int StepCount() const { return int(m_steps.size()); }

private:
    class Builder;
    static bool guarded(CEquationTree *tree, const CRpnStep *begin, const CRpnStep *end);
    template <bool Pure>
    RPN_STEPS_INLINE bool run(CEquationTree *tree, int row, double &out);
    template <bool Pure>
    int series(CEquationTree *tree, CRpnNode *top, double *values, unsigned char *valid, int first, int last);

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
    bool m_applies = false; // some step calls an ApplyReal or a node's Evaluate
    bool m_pure = false;    // columns and steps only: no getter, no place, no assignment
    void *m_getter = nullptr;
    CRpnData m_scratch; // what the getter fills
};
