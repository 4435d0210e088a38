#pragma once
// The steps of the number-only programs: three-address operations on doubles
// that lie where the program put them (a variable's value, a constant, a
// temporary, the value of a host column for the current row).
//
// A `while` loop on plain numbers (CRpnLoopProgram) and a formula evaluated
// once per row of a series (CRpnRowProgram) both run their steps here.  The
// loop's steps never fail.  The steps after `FirstGuarded` may: a zero
// divisor, a function whose ApplyReal does not keep its status at 1.  Each
// step is exactly the double operation that the node's own fast path does,
// so a program that runs to its end gives what the node tree would have
// given; a program that fails has written nothing but its temporaries, and
// its caller evaluates the ordinary way, which then reports what needs
// reporting.

#include "formula/rpnnode.h"
#include "formula/rpnoperators.h"

#include <cmath>
#include <cstdint>

struct CRpnStep
{
    enum Code : std::uint8_t {
        Move, Add, Subtract, Multiply, MultiplyCut, Divide, Modulo, Negate,
        Less, Greater, LessEqual, GreaterEqual,
        NotEqualBoth,   // a != 0 && b != 0, as 1.0 or 0.0
        AndCut,         // a == 0 ? a : (b != 0 ? 1.0 : 0.0)
        EitherNotZero,  // a != 0 || b != 0, as 1.0 or 0.0
        IsZero,         // a == 0, as 1.0 or 0.0
        Power,          // RpnPower(a, b)
        Square,         // a * a
        Select,         // *c != 0 ? a : b
        MultiplyAdd,    // MultiplyCut of a and b, then + *c: two roundings, as two steps
        FirstGuarded,
        DivideChecked = FirstGuarded, // fails on a zero divisor
        ModuloChecked,
        Apply1,         // node->ApplyReal(a, 0), fails unless the status stays 1
        Apply2,         // node->ApplyReal(a, b), the same
        Truth,          // node->Evaluate: 1.0 for a true REAL or INT, 0.0 for a false one;
                        // fails on anything else or when the status does not stay 1
    };
    Code code = Move;
    double *out = nullptr;
    const double *a = nullptr;
    const double *b = nullptr;
    const double *c = nullptr;
    CRpnNode *node = nullptr;
};

#if defined(__GNUC__) || defined(__clang__)
#define RPN_STEPS_INLINE inline __attribute__((always_inline))
#else
#define RPN_STEPS_INLINE inline
#endif

// One step of the codes that need no node, on its operands' values; false
// where a guarded step fails (`out` is then not written).  The one-step
// loops of a series (rpnrowprogram.cpp) compute here; each code is the very
// operation of its case in RpnRunSteps below, which reads its operands
// where they lie (a product by zero does not even read its other side), as
// the loops of several steps run fastest that way.
template <CRpnStep::Code K>
RPN_STEPS_INLINE bool RpnStep(double a, double b, double c, double &out)
{
    using S = CRpnStep;
    if constexpr (K == S::Move) out = a;
    else if constexpr (K == S::Add) out = a + b;
    else if constexpr (K == S::Subtract) out = a - b;
    else if constexpr (K == S::Multiply) out = a * b;
    else if constexpr (K == S::MultiplyCut) out = a == 0.0 ? a : a * b;
    else if constexpr (K == S::Divide) out = a / b;
    else if constexpr (K == S::Modulo) out = std::fmod(a, b);
    else if constexpr (K == S::Negate) out = -a;
    else if constexpr (K == S::Less) out = a < b ? 1.0 : 0.0;
    else if constexpr (K == S::Greater) out = a > b ? 1.0 : 0.0;
    else if constexpr (K == S::LessEqual) out = a <= b ? 1.0 : 0.0;
    else if constexpr (K == S::GreaterEqual) out = a >= b ? 1.0 : 0.0;
    else if constexpr (K == S::NotEqualBoth) out = a != 0.0 && b != 0.0 ? 1.0 : 0.0;
    else if constexpr (K == S::AndCut) out = a == 0.0 ? a : (b != 0.0 ? 1.0 : 0.0);
    else if constexpr (K == S::EitherNotZero) out = a != 0.0 || b != 0.0 ? 1.0 : 0.0;
    else if constexpr (K == S::IsZero) out = a == 0.0 ? 1.0 : 0.0;
    else if constexpr (K == S::Power) out = RpnPower(a, b);
    else if constexpr (K == S::Square) out = a * a;
    else if constexpr (K == S::Select) out = c != 0.0 ? a : b;
    else if constexpr (K == S::MultiplyAdd) {
        const double product = a == 0.0 ? a : a * b;
        out = product + c;
    } else if constexpr (K == S::DivideChecked) {
        if (b == 0.0)
            return false;
        out = a / b;
    } else if constexpr (K == S::ModuloChecked) {
        if (b == 0.0)
            return false;
        out = std::fmod(a, b);
    } else {
        static_assert(K == S::Move, "this step needs its node");
    }
    return true;
}

// Runs the steps from `s` to `end`; false at the first step that fails.
// Always inlined: a row of a series is often two or three steps, and the
// call would cost as much as they do.
RPN_STEPS_INLINE bool RpnRunSteps(const CRpnStep *s, const CRpnStep *end)
{
    for (; s != end; ++s) {
        const double a = *s->a;
        switch (s->code) {
        case CRpnStep::Move: *s->out = a; break;
        case CRpnStep::Add: *s->out = a + *s->b; break;
        case CRpnStep::Subtract: *s->out = a - *s->b; break;
        case CRpnStep::Multiply: *s->out = a * *s->b; break;
        case CRpnStep::MultiplyCut: *s->out = a == 0.0 ? a : a * *s->b; break;
        case CRpnStep::Divide: *s->out = a / *s->b; break;
        case CRpnStep::Modulo: *s->out = std::fmod(a, *s->b); break;
        case CRpnStep::Negate: *s->out = -a; break;
        case CRpnStep::Less: *s->out = a < *s->b ? 1.0 : 0.0; break;
        case CRpnStep::Greater: *s->out = a > *s->b ? 1.0 : 0.0; break;
        case CRpnStep::LessEqual: *s->out = a <= *s->b ? 1.0 : 0.0; break;
        case CRpnStep::GreaterEqual: *s->out = a >= *s->b ? 1.0 : 0.0; break;
        case CRpnStep::NotEqualBoth: *s->out = a != 0.0 && *s->b != 0.0 ? 1.0 : 0.0; break;
        case CRpnStep::AndCut: *s->out = a == 0.0 ? a : (*s->b != 0.0 ? 1.0 : 0.0); break;
        case CRpnStep::EitherNotZero: *s->out = a != 0.0 || *s->b != 0.0 ? 1.0 : 0.0; break;
        case CRpnStep::IsZero: *s->out = a == 0.0 ? 1.0 : 0.0; break;
        case CRpnStep::Power: *s->out = RpnPower(a, *s->b); break;
        case CRpnStep::Square: *s->out = a * a; break;
        case CRpnStep::Select: *s->out = *s->c != 0.0 ? a : *s->b; break;
        case CRpnStep::MultiplyAdd: {
            const double product = a == 0.0 ? a : a * *s->b;
            *s->out = product + *s->c;
            break;
        }
        case CRpnStep::DivideChecked:
            if (*s->b == 0.0)
                return false;
            *s->out = a / *s->b;
            break;
        case CRpnStep::ModuloChecked:
            if (*s->b == 0.0)
                return false;
            *s->out = std::fmod(a, *s->b);
            break;
        case CRpnStep::Apply1:
        case CRpnStep::Apply2: {
            unsigned char status = 1;
            *s->out = s->node->ApplyReal(a, s->code == CRpnStep::Apply2 ? *s->b : 0.0, status);
            if (status != 1)
                return false;
            break;
        }
        case CRpnStep::Truth: {
            CRpnData value;
            unsigned char status = 1;
            s->node->Evaluate(value, status);
            if (status != 1 || (!value.IsReal() && value.GetKind() != RPN_INT))
                return false;
            *s->out = value.GetDouble() != 0.0 ? 1.0 : 0.0;
            break;
        }
        }
    }
    return true;
}
