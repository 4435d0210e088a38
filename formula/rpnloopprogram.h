#pragma once
// CRpnLoopProgram: a WHILE loop on plain numbers run as a short list of
// three-address steps instead of a walk of its node tree.
//
// A loop qualifies when its condition and every statement of its body are
// made of plain arithmetic (+ - *, / and % by a non-zero constant, a sign)
// and comparisons on variables and constants, and the statements are
// `v = expression`, `v = constant`, `v += expression` (also -= and *=),
// `v++` and `v--`.  Such a body can neither fail nor make a new variable nor
// call anything, so the places of its variables stay where they are for the
// whole loop: they are looked up once when the loop starts (Bind), and every
// step then reads and writes the doubles where they lie.
//
// Bind refuses (and the loop runs the ordinary way) when a variable has no
// place of its own yet, holds anything but a REAL, is the host's, or when
// the run logs its assignments; each value then is exactly what the node
// tree would have given, because every step is the same double operation as
// the operator's own fast path.

#include "formula/rpnsteps.h"

#include <cstdint>
#include <memory>
#include <vector>

class CRpnNode;
class CNodeVariable;
class CRpnData;
class CEquationTree;

class CRpnLoopProgram
{
public:
    // The program of a loop with this condition and body; null when the
    // loop does not qualify.
    static std::unique_ptr<CRpnLoopProgram> Build(CRpnNode *condition, CRpnNode *body);

    // Finds the places of the variables for a run that starts now.  False
    // when the program cannot run now (see above).
    bool Bind();
    // Passes of the body, each followed by the condition, while it holds:
    // at most `limit` passes (the last without the condition, as the loop's
    // own count ends it), fewer when `tree` is asked to stop.
    void Run(int limit, const CEquationTree *tree);
    // After the last pass: the variable nodes that were written keep the
    // value each wrote last, as the ordinary assignments leave them.
    void Finish();

    int StepCount() const { return int(m_steps.size()); }

private:
    using Code = CRpnStep::Code;
    // An operand before binding: a variable's place, a constant or a temporary.
    struct Ref
    {
        enum Kind : std::uint8_t { Variable, Constant, Temporary } kind = Constant;
        int index = 0; // into m_variables, m_constants or m_temporaries
    };
    struct Plan
    {
        Code code;
        Ref out, a, b;
    };
    class Builder;

    // Each variable node the loop reads or writes, with its place once bound.
    std::vector<CNodeVariable *> m_variables;
    std::vector<CRpnData *> m_places;
    std::vector<int> m_written; // indices into m_variables of the assigned nodes
    std::vector<double> m_constants;
    std::vector<double> m_temporaries;
    std::vector<Plan> m_plan;  // the body's steps, then the condition's
    std::size_t m_conditionStart = 0;
    std::vector<CRpnStep> m_steps; // m_plan with addresses, after Bind
    Ref m_conditionRef;        // where the condition's value lies
    const double *m_condition = nullptr;
};
