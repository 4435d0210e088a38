#pragma once
// The language's handles on formulas as values: Formula, Eval, EvalM,
// EvalVars and ReplaceF, and the substitution that Replace shares with
// ReplaceF.
//
// A FORMULA value owns a tree of its own (see rpnformulavalue.h).  The trees
// made here take over the creator's callbacks, run data, throwing mode, case
// mode and keyword hook, share its main dictionary and borrow its user
// functions, so that a formula sees what its creator sees.  They are built
// with the factor 1.0.  Failures inside a formula's own tree come back to the
// calling tree as one message, "Error: <text>  at row: <r>   col = <c>  ",
// with the row and column inside the formula.

#include "formula/rpnnodes.h"

#include <vector>

class CRpnPrototypeArray;

enum RpnFormulaNodeKind : int {
    RPN_NODE_FORMULA = 141,
    RPN_NODE_EVAL = 142,
    RPN_NODE_EVAL_MARKED = 143,
    RPN_NODE_REPLACE_FORMULA = 144,
    RPN_NODE_EVAL_VARS = 145,
};

// Formula(x): x kept unevaluated.  Formula("text") compiles the text;
// Formula(a+b) keeps a copy of the expression a+b.  The operand is evaluated
// once, quietly (unknown names, failures and exceptions are forgiven), only
// to tell a text from an expression.
class CNodeFormula : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_FORMULA; }
    QString GetName() const override { return QStringLiteral("Formula"); }
    std::uint64_t GetTraits() const override { return CNodeMultiOperand::GetTraits() | RPN_TRAIT_FORMULA; }
    CRpnNode *CreateSame() const override { return new CNodeFormula; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// Eval(f, name, value, ...) or Eval(f, dictionary): the formula (or a text,
// compiled for the call) run with the names bound to the values for this
// run only; names without a binding are read as the formula reads them.
class CNodeEval : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_EVAL; }
    QString GetName() const override { return QStringLiteral("Eval"); }
    std::uint64_t GetTraits() const override { return CNodeMultiOperand::GetTraits() | RPN_TRAIT_EVAL; }
    CRpnNode *CreateSame() const override { return new CNodeEval; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// EvalM(f, names...): the formula run through the caller's variable
// callbacks, with the variables named marked: a marked variable is read
// from the caller's scope as it stands at the call (inside a user function
// that is the function's own variable), the others as the formula reads
// them.
class CNodeEvalUnMarked : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_EVAL_MARKED; }
    QString GetName() const override { return QStringLiteral("EvalM"); }
    std::uint64_t GetTraits() const override { return CNodeMultiOperand::GetTraits() | RPN_TRAIT_EVAL; }
    CRpnNode *CreateSame() const override { return new CNodeEvalUnMarked; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// EvalVars(f, names...): the value of the formula, provided that every
// variable in it is among the names given (texts, variables standing for
// their own names, or arrays of texts); otherwise "Invalid variable ..."
// names the first stranger.
class CNodeEvalVars : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_EVAL_VARS; }
    QString GetName() const override { return QStringLiteral("EvalVars"); }
    std::uint64_t GetTraits() const override { return CNodeMultiOperand::GetTraits() | RPN_TRAIT_EVAL; }
    CRpnNode *CreateSame() const override { return new CNodeEvalVars; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// ReplaceF(f, name1, value1, ...): a new formula in which every variable
// called name1 (in any case) is replaced by the expression of value1, and
// so on pair by pair.  A text as f is compiled first, so only whole names
// are hit.
class CNodeReplaceFormula : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_REPLACE_FORMULA; }
    QString GetName() const override { return QStringLiteral("ReplaceF"); }
    CRpnNode *CreateSame() const override { return new CNodeReplaceFormula; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// One name and the text that takes its place.
struct CRpnSubstitution
{
    QString name;
    QString text;
};

// Reads the pairs of a substitution call from operand `first` on: a name
// operand that is a variable stands for its own name, any other gives its
// text (16 digits); a value operand that is a variable stands for its name
// too, any other gives its text.  False when the call must end with
// `result` as left here (a failed operand, a name without its value).
bool ReadSubstitutions(CRpnNodeList *call, int first, std::vector<CRpnSubstitution> &pairs, CRpnData &result,
                       unsigned char &status);

// The substitution of ReplaceF and Replace on a FORMULA: `result` becomes a
// new formula, the one of `formula` with each pair applied in turn.  A value
// whose text does not compile fails the call (status 0, reported at `call`).
void SubstituteInFormula(CRpnNode *call, const CRpnData &formula, const std::vector<CRpnSubstitution> &pairs,
                         CRpnData &result, unsigned char &status);

void ProvideFormulaNodes(CRpnPrototypeArray &prototypes);
