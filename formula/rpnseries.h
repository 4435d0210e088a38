#pragma once
// Series over host columns, a block of rows at a time.
//
// When a tree is one expression of REAL constants, variables bound to host
// columns or read through the host's getter, operators with a real path
// (see RpnRealPath), `iif` on such a condition and calls of script functions
// whose body is one `return` of such an expression, EvaluateSeries does not walk the tree once per row: the
// expression is turned into a short list of steps, and each step runs over a
// block of rows in a tight loop.  A getter is called for each variable node
// and row (also where the tree would pass a node over: the branch an `iif`
// does not take, the right side of a short cut); a value that is no REAL
// sends the row to the tree.  A function's body is compiled in place of the
// call, its parameters standing for the arguments' operands.
// Rows where the plain doubles do not tell the whole story (a column value
// that is not valid, a zero divisor, an ApplyReal that fails) are marked and
// evaluated again through the tree, row by row, so that every row gets
// exactly the value, the validity and the error report it would get there.

#include "formula/rpndata.h"

#include <memory>
#include <vector>

class CEquationTree;
class CRpnNode;
class CRpnUserFunction;

// Clears the upper halves of the vector registers where the processor has
// them.  Some library routines (Qt's string hashing among them) use the wide
// registers and return without clearing them; from then on every switch
// between our plain SSE code and the VEX-encoded routines of the maths
// library (sin, exp, log) costs the processor a state change of tens of
// cycles, which made a sine thirty times slower.  Loops that call the maths
// library row by row call this before they start, and again after anything
// that may have hashed a string.
void RpnClearUpperVectorState();
struct CRpnColumnBinding;

class CRpnSeriesProgram
{
public:
    // Rows per block.
    static constexpr int BlockRows = 256;
    // Longer or deeper expressions stay with the tree, whose long chains
    // run in a loop: the compile goes one frame deeper per level, and each
    // step keeps a block of its own.
    static constexpr int MaxDepth = 500;
    static constexpr int MaxSteps = 2000;

    // The program for the tree's root, or null when the root is not such an
    // expression.
    static std::unique_ptr<CRpnSeriesProgram> Build(CEquationTree *tree);
    // The same for `node`, a part of the tree's text (an operand that a
    // function evaluates over all samples before the run).
    static std::unique_ptr<CRpnSeriesProgram> Build(CEquationTree *tree, CRpnNode *node);

    // As CEquationTree::EvaluateSeries; -1 (and nothing done) when the tree's
    // getter is no longer the one the program was made for.
    int Run(CEquationTree *tree, double *values, unsigned char *valid, int first, int last);

    int GetStepCount() const { return int(m_steps.size()); }

private:
    enum Op : int {
        OpAdd, OpSub, OpMul, OpDiv, OpMod, OpPow, OpNeg, OpPos,
        OpLess, OpGreater, OpLessEqual, OpGreaterEqual, OpAnd, OpOr, OpNot,
        OpApplyReal1, OpApplyReal2, // any other node with a real path, through its ApplyReal
        OpSelect,                   // iif: c != 0 ? a : b
    };
    struct Operand
    {
        enum Kind { Register, Column, Host, Constant } kind = Constant;
        int index = 0;       // register, column or host variable
        double value = 0.0;  // constant
        bool real = true;    // the tree's value here is a REAL (no list inside)
    };
    struct Step
    {
        Op op;
        CRpnNode *node;
        Operand a, b, c;
        bool shortCut;       // the left operand may decide alone (`*`, AND, OR)
        int out;             // register
    };

    bool compile(CRpnNode *node, Operand &out, int depth = 0);
    bool compileChoice(CRpnNode *node, Operand &out, int depth);
    bool compileCall(CRpnNode *node, Operand &out, int depth);

    // The calls whose body is being compiled in place: the function and the
    // operands of its arguments, innermost last.
    struct Inlined
    {
        const CRpnUserFunction *function;
        std::vector<Operand> arguments;
    };
    std::vector<Inlined> m_inlined;
    const double *data(const Operand &o) const;

    std::vector<Step> m_steps;
    std::vector<const CRpnColumnBinding *> m_columns;
    std::vector<CRpnNode *> m_hostVariables;  // read through the getter
    void *m_getter = nullptr;                 // the getter they were made for
    CRpnNode *m_root = nullptr;               // what a marked row evaluates
    Operand m_result;
    // Scratch for one block: a register per step, a column copy where a
    // block reaches past a column's end, the rows to evaluate again.
    std::vector<std::vector<double>> m_registers;
    std::vector<std::vector<double>> m_columnCopies;
    std::vector<const double *> m_columnData;
    std::vector<std::vector<double>> m_hostData;
    std::vector<unsigned char> m_again;
    CRpnData m_scratch; // what the getter fills
};
