#pragma once
// The per-sample signal functions: Int, Avg, HIPass and AvgX.  A formula
// over a curve evaluates its tree once per sample, the tree's sample index
// advancing (CEquationTree::GetSampleIndex), and these nodes keep running
// state between the evaluations.  The state is cleared by ResetRun, which a
// host calls before a series of runs; Clone copies it.  The x of a sample
// comes from the tree's sampling context (CEquationTree::GetSampleX): a tree
// without one has no x span, so Int and Avg give 0.
//
// Over an array operand the state advances once per element.

#include "functions/rpnfunctionkinds.h"
#include "formula/rpnoperators.h"

#include <memory>
#include <vector>

// A one-operand function with a running integral.
class CNodeMoving : public CNodeSingleOperand
{
public:
    CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const override;
    void ResetRun() override;
    // The state makes every evaluation count: no second try on a fast path.
    bool EvaluateFast(double &) override { return false; }

    std::int32_t m_count = 0; // samples seen
    double m_sum = 0.0;       // running integral
    double m_width = 0.0;     // running x span
    double m_last = 0.0;      // previous sample value
};

// Int(y): the trapezoid integral over x, the curve taken to start at x = 0
// with the value 0.
class CNodeIntegral : public CNodeMoving
{
public:
    int GetKind() const override { return RPN_NODE_INTEGRAL; }
    QString GetName() const override { return QStringLiteral("Int"); }
    CRpnNode *CreateSame() const override { return new CNodeIntegral; }
    double ApplyReal(double a, double b, unsigned char &status) override;
};

// Avg(y): the running mean over x; a first sample takes its weight from the
// next x step.
class CNodeAvg : public CNodeMoving
{
public:
    int GetKind() const override { return RPN_NODE_AVG; }
    QString GetName() const override { return QStringLiteral("Avg"); }
    CRpnNode *CreateSame() const override { return new CNodeAvg; }
    double ApplyReal(double a, double b, unsigned char &status) override;
};

// HIPass(y): a fixed second-order high-pass filter over the step of the
// sampling context (1.0 without a tree or without a context).  The result is
// the filter's second state.
class CNodeHiPassFilter : public CNodeSingleOperand
{
public:
    int GetKind() const override { return RPN_NODE_HIPASS; }
    QString GetName() const override { return QStringLiteral("HIPass"); }
    CRpnNode *CreateSame() const override { return new CNodeHiPassFilter; }
    CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const override;
    void ResetRun() override;
    bool EvaluateFast(double &) override { return false; }
    double ApplyReal(double a, double b, unsigned char &status) override;

    double m_state1 = 0.0;
    double m_state2 = 0.0;
    double m_state3 = 0.0;
};

// AvgX(y, width): the curve y replaced by its averages over blocks of the x
// axis, `width` wide.  PrepareRun evaluates y over all samples of the run and
// averages the blocks (weighted by x steps, over the valid samples only);
// Evaluate then gives the block average of the present sample, or null where
// the block had no valid sample.  Without a prepared run (no tree, or a tree
// without a sampling context) it is y itself.
class CNodeAvgX : public CRpnNode
{
public:
    ~CNodeAvgX() override;

    int GetKind() const override { return RPN_NODE_AVGX; }
    int GetPrecedence() const override { return RPN_PREC_FUNCTION; }
    QString GetName() const override { return QStringLiteral("AvgX"); }
    std::uint64_t GetTraits() const override { return RPN_TRAIT_OPERATION | RPN_TRAIT_BINARY; }
    CRpnNode *CreateSame() const override { return new CNodeAvgX; }
    CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const override;

    int GetOperandCount() const override { return 2; }
    CRpnNode *GetOperand(int i) const override { return i == 0 ? m_operand : i == 1 ? m_widthNode : nullptr; }
    bool SetOperand(int i, CRpnNode *node) override;

    void Evaluate(CRpnData &result, unsigned char &status) override;
    // With a prepared run: the flag of the first operand's sample as an INT.
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;
    void ResetRun() override;
    int PrepareRun(CEquationTree *tree, int first, int last) override;

    // Flags of the prepared samples.
    enum : unsigned char { FlagFailed = 0, FlagValid = 1, FlagNoValue = 2 };

    CRpnNode *m_operand = nullptr;   // owned
    CRpnNode *m_widthNode = nullptr; // owned
    // Block averages and flags by sample, shared with clones.
    std::shared_ptr<std::vector<double>> m_values;
    std::shared_ptr<std::vector<unsigned char>> m_validity;
    std::int32_t m_first = 0;
    std::int32_t m_last = 0;
    double m_span = 0.0;
};

class CRpnPrototypeArray;
void ProvideSamplingFunctions(CRpnPrototypeArray &prototypes);
