#pragma once
// The machinery that every built-in function of the language stands on: how
// a function node reads its arguments and reports its failures, the bases of
// numeric list functions and of script functions, named parameters, and
// parameters passed by reference.
//
// A call is a node whose children are the argument expressions; there is no
// function table at run time.  Four shapes of node exist:
//   - CNodeSingleOperand (formula/rpnoperators.h): one child.  Implement
//     ApplyReal (and ApplyComplex where complex numbers make sense); the base
//     spreads the call over arrays, refuses complex numbers with message
//     43217, makes a formula of a formula operand and gives null for a graph.
//     Return RPN_REAL_PATH_PLAIN from GetRealPath when the value on a REAL is
//     exactly REAL(ApplyReal(x)): series then run it block by block.
//   - CNodeDoubleOperand (formula/rpnoperators.h): two children, the same
//     with ApplyReal(a, b).
//   - CNodeMultiOperand_Numbers (below): any number of numeric arguments,
//     arrays of numbers and complex numbers; implement RealList and, where
//     it means something, ComplexList.
//   - CNodeScriptFunction (below): anything else.  Implement DoFunction,
//     which evaluates the children itself (EvaluateOperand), may skip some or
//     look at their source form (a variable passed by reference, a named
//     parameter `name = value`), and returns a count above zero on success or
//     0 with a message.
//
// How a new function joins:
//   1. Write the node class under the fitting base with GetKind (a new class
//      number, never reused: saved trees refer to it), GetName (the display
//      name), CreateSame, and Clone where the class has fields of its own.
//      Functions have precedence RPN_PREC_FUNCTION, which the bases give.
//   2. Put one prototype of it into the prototype array in the provider of
//      its family (see functions/rpnfunctions.cpp); the array has 2,000
//      slots indexed by class number and is filled once, on first use.
//   3. If the class answers to a keyword of the language's table
//      (formula/rpnkeywords.cpp), the name enters the keyword table as soon
//      as the prototype exists; aliases are further rows with the same class
//      number.  The parser clones the prototype for each call.
//   4. Add the class to the keyword walk of tests/functions/tst_rpnkeywordwalk.cpp.

#include "formula/rpnnodes.h"

#include <QString>
#include <complex>
#include <vector>

class CMapStringToRpnData;

// --- reporting ----------------------------------------------------------------------------

// The line of `source` that holds `position`: from behind the line feed
// before it up to and including the next line feed.
QString RpnSourceLine(const QString &source, int position);

// The failure of a function that reports by itself: status 0; with a tree,
// the source line of the node followed by `text` becomes the tree's message
// (unless an earlier error stands) with the node's row, column and display
// name; a tree in throwing mode throws a CRpnException with that message;
// otherwise the message joins the tree's error list.
void ReportFunctionFailure(CRpnNode *node, unsigned char &status, const QString &text);

// The failure of a list, array, dictionary or string function: as above but
// the message is `text` alone and nothing joins the error list.  With
// `withName` false the token stays empty.
void ReportFunctionText(CRpnNode *node, unsigned char &status, const QString &text, bool withName = true);

// A call that reads a parameter it was not given (Replace with an odd pair,
// RemoveCell without its index): the message names the function and the
// 1-based parameter.
void ReportMissingParameter(CRpnNode *node, unsigned char &status, int oneBased);

// The most cells one array may have: value arrays hold a handle and a
// record per cell, real arrays a double.  Larger requests are refused with a
// message that names the function, instead of exhausting the memory.
inline constexpr std::int64_t RpnMaxArrayCells = std::int64_t(1) << 24;
inline constexpr std::int64_t RpnMaxRealArrayCells = std::int64_t(1) << 27;
// True when `cells` (a count that may be fractional, huge, infinite or NaN)
// fits; otherwise the refusal is reported and false returned.
bool CheckArrayCells(CRpnNode *node, unsigned char &status, double cells, bool reals);
// The refusal of an allocation that failed although the count was allowed.
void ReportOutOfMemory(CRpnNode *node, unsigned char &status, double cells);

// --- arguments ----------------------------------------------------------------------------

// Reads one argument into `map`: a named parameter `name = value` (the name
// a variable's own name, or the text of the left side), a DICTIONARY whose
// entries are all taken over, or nothing for any other value.  With
// `upperNames` the names are made upper case.  The status is the children's.
void ReadNamedParam(CRpnNode *node, CMapStringToRpnData &map, unsigned char &status, bool upperNames);

// Evaluates argument i of a list-shaped call into `value`.  False when the
// call must end at once with `result` as left here: null after a failure,
// the argument's value while a `return` unwinds or a stop is asked.  A
// missing child counts as null.
inline bool EvaluateArgument(CRpnNodeList *node, int i, CRpnData &value, CRpnData &result, unsigned char &status)
{
    CRpnNode *child = node->m_children[std::size_t(i)];
    if (!child) {
        value.SetNull();
        return true;
    }
    return node->EvaluateOrPass(child, value, result, status);
}

// Parameters passed by reference: a built-in that writes back into its
// argument tests the argument's source form.  True when `argument` is a
// variable, which then receives `value`; false (and nothing written) for
// any other expression, so that `f(1)` is allowed and writes nowhere.
bool WriteBackParameter(CRpnNode *argument, const CRpnData &value, unsigned char &status);

// A short list of values: on the stack up to eight, on the heap beyond.  The
// evaluation of a list function takes one per call.
class CRpnValueList
{
public:
    static constexpr int InlineCount = 8;

    explicit CRpnValueList(int count);
    ~CRpnValueList();
    CRpnValueList(const CRpnValueList &) = delete;
    CRpnValueList &operator=(const CRpnValueList &) = delete;

    int size() const { return m_count; }
    CRpnData &operator[](int i) { return m_items[i]; }
    const CRpnData *data() const { return m_items; }

private:
    alignas(CRpnData) unsigned char m_inline[InlineCount * sizeof(CRpnData)];
    CRpnData *m_items;
    int m_count;
};

// --- numeric list functions --------------------------------------------------------------

// A function of a list of numbers: hypot, min, max, sum.  The arguments are
// evaluated in order into one temporary list; then ClassifyAndCompute looks
// at them all:
//   - an ARRAY_R, ARRAY or CURVE makes it an array call: it must be the only
//     argument, a CURVE is refused, an empty ARRAY gives null, an ARRAY whose
//     first cell is COMPLEX goes to ComplexList, any other to RealList;
//   - else a COMPLEX among them makes it a complex call (ComplexList);
//   - else all are read as reals (numeric texts count) for RealList.
// Numbers the call cannot read fail with "Cell %i of the array is not a valid
// number." or "Parameter %i is not a valid number." (1-based).
class CNodeMultiOperand_Numbers : public CNodeMultiOperand
{
public:
    void Evaluate(CRpnData &result, unsigned char &status) override;
    bool EvaluateFast(double &out) override;
    // The list of one or two operands, for the series blocks.
    double ApplyReal(double a, double b, unsigned char &status) override;
    // One or two operands take the real path; more take the fast path only.
    int GetRealPath() const override;

    virtual void ClassifyAndCompute(CRpnData &result, const CRpnData *values, int count, unsigned char &status);
    // The function of `count` reals (count may be 0).
    virtual double RealList(const double *values, int count, unsigned char &status) = 0;
    // The function of count / 2 complex numbers given as (re, im) pairs.  The
    // base refuses complex numbers with message 43217 and gives null.
    virtual void ComplexList(CRpnData &result, const double *pairs, int count, unsigned char &status);
};

// --- script functions ----------------------------------------------------------------------

// A function that reports its failures as a text.  Evaluate (and Apply,
// which drops its operands) go to RunFunction, which calls DoFunction with an
// empty text and a null result: a count above zero is success and the value
// is the result.  On failure the result is null and the text is reported by
// ReportFunctionFailure.  A DoFunction whose child failed returns 0 with the
// text left empty: the child's report stands, and nothing is added.
class CNodeScriptFunction : public CNodeMultiOperand
{
public:
    std::uint64_t GetTraits() const override
    {
        return CNodeMultiOperand::GetTraits() | RPN_TRAIT_SCRIPT_FUNCTION;
    }
    void Evaluate(CRpnData &result, unsigned char &status) override;
    void Apply(CRpnData &result, const CRpnData &a, const CRpnData &b, unsigned char &status) override;

    virtual int DoFunction(CRpnData &result, QString &errorText) = 0;
    void RunFunction(CRpnData &result, unsigned char &status);

protected:
    // Evaluates argument i (0-based) into `value`; false when it is missing
    // or failed (the failure is then reported already).  A `return` inside
    // an argument counts as a value.
    bool EvaluateOperand(int i, CRpnData &value);
};
