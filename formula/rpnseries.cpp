// Series over host columns, block by block.

#include "formula/rpnseries.h"

#include "formula/rpnfunctioncall.h"
#include "formula/rpnoperators.h"
#include "formula/rpnstatements.h"
#include "formula/rpnuserfunction.h"
#include "formula/rpntree.h"
#include "support/stackroom.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#if defined(__x86_64__) || defined(__i386__)
#include <immintrin.h>
#endif

namespace {

// Runs f over a block with each operand either a pointer or a constant, in
// loops simple enough for the compiler to vectorise.
template <typename F>
void binary(const double *a, double av, const double *b, double bv, double *out, int n, F f)
{
    if (a && b) {
        for (int i = 0; i < n; ++i)
            out[i] = f(a[i], b[i]);
    } else if (a) {
        for (int i = 0; i < n; ++i)
            out[i] = f(a[i], bv);
    } else if (b) {
        for (int i = 0; i < n; ++i)
            out[i] = f(av, b[i]);
    } else {
        const double x = f(av, bv);
        for (int i = 0; i < n; ++i)
            out[i] = x;
    }
}

template <typename F>
void unary(const double *a, double av, double *out, int n, F f)
{
    if (a) {
        for (int i = 0; i < n; ++i)
            out[i] = f(a[i]);
    } else {
        const double x = f(av);
        for (int i = 0; i < n; ++i)
            out[i] = x;
    }
}

// Marks the rows where the left value would take a short cut: zero, or
// (for OR) not zero.
void markCut(const double *a, double av, bool nonZero, unsigned char *again, int n)
{
    if (a) {
        for (int i = 0; i < n; ++i)
            again[i] |= (a[i] != 0.0) == nonZero;
    } else if ((av != 0.0) == nonZero) {
        std::fill(again, again + n, 1);
    }
}

// Marks the rows whose divisor is zero.
void markZero(const double *b, double bv, unsigned char *again, int n)
{
    if (b) {
        for (int i = 0; i < n; ++i)
            again[i] |= b[i] == 0.0;
    } else if (bv == 0.0) {
        std::fill(again, again + n, 1);
    }
}

// The values of a block as RpnSeriesValidityGood gives them (a denormal
// becomes 0.0; NaN and the infinities are invalid, 2), in loops that the
// compiler turns into vector code: a row at a time this sweep cost as much
// as the formula.  Returns the number of valid rows.
int sweepResult(const double *result, double *values, unsigned char *valid, int n)
{
    for (int i = 0; i < n; ++i) {
        const double x = result[i];
        values[i] = std::fabs(x) < DBL_MIN && x != 0.0 ? 0.0 : x;
    }
    for (int i = 0; i < n; ++i)
        valid[i] = std::fabs(result[i]) <= DBL_MAX ? 1 : 2;
    int good = 0;
    for (int i = 0; i < n; ++i)
        good += valid[i] == 1;
    return good;
}

} // namespace

void RpnClearUpperVectorState()
{
#if defined(__AVX__)
    _mm256_zeroupper();
#elif (defined(__x86_64__) || defined(__i386__)) && (defined(__GNUC__) || defined(__clang__))
    // Built for plain SSE: the compiler keeps nothing in the upper halves,
    // so the instruction may run behind its back.
    static const bool avx = __builtin_cpu_supports("avx");
    if (avx)
        asm volatile("vzeroupper");
#endif
}

std::unique_ptr<CRpnSeriesProgram> CRpnSeriesProgram::Build(CEquationTree *tree)
{
    return Build(tree, tree->GetRoot());
}

std::unique_ptr<CRpnSeriesProgram> CRpnSeriesProgram::Build(CEquationTree *, CRpnNode *root)
{
    if (!root)
        return nullptr;
    std::unique_ptr<CRpnSeriesProgram> program(new CRpnSeriesProgram);
    program->m_root = root;
    if (!program->compile(root, program->m_result))
        return nullptr;
    program->m_registers.assign(program->m_steps.size(), std::vector<double>(BlockRows));
    program->m_columnCopies.assign(program->m_columns.size(), std::vector<double>(BlockRows));
    program->m_columnData.assign(program->m_columns.size(), nullptr);
    program->m_hostData.assign(program->m_hostVariables.size(), std::vector<double>(BlockRows));
    program->m_again.assign(BlockRows, 0);
    return program;
}

bool CRpnSeriesProgram::compile(CRpnNode *node, Operand &out, int depth)
{
    if (!node || depth > MaxDepth || int(m_steps.size()) >= MaxSteps || StackRoom::IsStackLow())
        return false;
    // A list of one element has that element's double.
    if (node->IsList() && !node->IsMultiOperand()) {
        if (node->GetOperandCount() != 1 || !compile(node->GetOperand(0), out, depth + 1))
            return false;
        out.real = false; // an ARRAY of one
        return true;
    }
    if (node->IsIIF())
        return compileChoice(node, out, depth);
    if (node->IsFunctionCall())
        return compileCall(node, out, depth);
    if (CNodeVariable *variable = node->AsVariable()) {
        if (!m_inlined.empty() && !variable->IsConstant()) {
            // Inside a body compiled in place only the parameters are known.
            const Inlined &call = m_inlined.back();
            if (variable->m_slotFunction != call.function || variable->m_slot < 0
                || variable->m_slot >= int(call.arguments.size()))
                return false;
            out = call.arguments[std::size_t(variable->m_slot)];
            return true;
        }
        if (variable->IsConstant()) {
            if (!variable->m_value.IsReal())
                return false;
            out = {Operand::Constant, 0, variable->m_value.GetRealValue(), true};
            return true;
        }
        if (!variable->m_column) {
            CEquationTree *tree = variable->m_tree;
            if (!tree || !tree->m_getVariable || tree->GetCallFrame())
                return false;
            m_getter = reinterpret_cast<void *>(tree->m_getVariable);
            out = {Operand::Host, int(m_hostVariables.size()), 0.0, true};
            m_hostVariables.push_back(variable);
            return true;
        }
        auto it = std::find(m_columns.begin(), m_columns.end(), variable->m_column);
        if (it == m_columns.end())
            it = m_columns.insert(m_columns.end(), variable->m_column);
        out = {Operand::Column, int(it - m_columns.begin()), 0.0, true};
        return true;
    }
    if (node->IsValue()) {
        double x;
        if (!node->EvaluateFast(x))
            return false;
        out = {Operand::Constant, 0, x, true};
        return true;
    }
    const int path = node->GetRealPath();
    const int count = node->GetOperandCount();
    if (path == RPN_REAL_PATH_NONE || count < 1 || count > 2)
        return false;
    Step step{OpApplyReal1, node, {}, {}, {}, false, 0};
    if (!compile(node->GetOperand(0), step.a, depth + 1))
        return false;
    if (count == 2 && !compile(node->GetOperand(1), step.b, depth + 1))
        return false;
    // The short cuts need a REAL on the left; a list inside makes an ARRAY.
    step.shortCut = count == 2 && step.a.real;
    switch (node->GetKind()) {
    case RPN_NODE_PLUS: step.op = OpAdd; break;
    case RPN_NODE_MINUS: step.op = OpSub; break;
    case RPN_NODE_MULTIPLY: step.op = OpMul; break;
    case RPN_NODE_DIVIDE: step.op = OpDiv; break;
    case RPN_NODE_MOD: step.op = OpMod; break;
    case RPN_NODE_POWER:
    case RPN_NODE_POWER2: step.op = OpPow; break;
    case RPN_NODE_SINGLE_MINUS: step.op = OpNeg; break;
    case RPN_NODE_SINGLE_PLUS: step.op = OpPos; break;
    case RPN_NODE_LESS: step.op = OpLess; break;
    case RPN_NODE_GREATER: step.op = OpGreater; break;
    case RPN_NODE_LESS_EQUAL: step.op = OpLessEqual; break;
    case RPN_NODE_GREATER_EQUAL: step.op = OpGreaterEqual; break;
    case RPN_NODE_AND: step.op = OpAnd; break;
    case RPN_NODE_OR: step.op = OpOr; break;
    case RPN_NODE_NOT: step.op = OpNot; break;
    default:
        step.op = count == 2 ? OpApplyReal2 : OpApplyReal1;
        // The cuts and the divisor test of other classes stay with the tree.
        if (path != RPN_REAL_PATH_PLAIN)
            return false;
        break;
    }
    step.out = int(m_steps.size());
    m_steps.push_back(step);
    out = {Operand::Register, step.out, 0.0, step.a.real && (count == 1 || step.b.real)};
    return true;
}

bool CRpnSeriesProgram::compileChoice(CRpnNode *node, Operand &out, int depth)
{
    // A condition that may be an array picks element by element: the tree's.
    // Both branches must be numbers too, whichever is taken.
    Step step{OpSelect, node, {}, {}, {}, false, 0};
    if (node->GetOperandCount() != 3 || !compile(node->GetOperand(0), step.c, depth + 1) || !step.c.real
        || !compile(node->GetOperand(1), step.a, depth + 1) || !step.a.real
        || !compile(node->GetOperand(2), step.b, depth + 1) || !step.b.real)
        return false;
    step.out = int(m_steps.size());
    m_steps.push_back(step);
    out = {Operand::Register, step.out, 0.0, true};
    return true;
}

bool CRpnSeriesProgram::compileCall(CRpnNode *node, Operand &out, int depth)
{
    CNode_Function *call = node->AsFunctionCall();
    const CRpnUserFunction *function = call ? call->m_function : nullptr;
    if (!function || !function->m_body || function->GetMainSlot() >= 0)
        return false;
    // The body: a block of one `return` of an expression.
    CRpnNode *body = function->m_body;
    if (!body->IsList() || body->IsMultiOperand() || body->GetOperandCount() != 1)
        return false;
    CRpnNode *statement = body->GetOperand(0);
    if (!statement || statement->GetKind() != RPN_NODE_RETURN)
        return false;
    CRpnNode *expression = static_cast<CNodeReturn *>(statement)->m_operand;
    // Every parameter given, none by reference, and no recursion.
    const int parameters = function->GetParameterCount();
    if (!expression || call->GetOperandCount() != parameters)
        return false;
    for (const Inlined &outer : m_inlined) {
        if (outer.function == function)
            return false;
    }
    Inlined inlined{function, std::vector<Operand>(std::size_t(parameters))};
    for (int p = 0; p < parameters; ++p) {
        if (function->IsByReference(p) || !compile(call->GetOperand(p), inlined.arguments[std::size_t(p)], depth + 1))
            return false;
    }
    m_inlined.push_back(std::move(inlined));
    const bool compiled = compile(expression, out, depth + 1);
    m_inlined.pop_back();
    return compiled;
}

const double *CRpnSeriesProgram::data(const Operand &o) const
{
    switch (o.kind) {
    case Operand::Register: return m_registers[std::size_t(o.index)].data();
    case Operand::Column: return m_columnData[std::size_t(o.index)];
    case Operand::Host: return m_hostData[std::size_t(o.index)].data();
    default: return nullptr;
    }
}

int CRpnSeriesProgram::Run(CEquationTree *tree, double *values, unsigned char *valid, int first, int last)
{
    if (!m_hostVariables.empty() && reinterpret_cast<void *>(tree->m_getVariable) != m_getter)
        return -1;
    int good = 0;
    unsigned char *again = m_again.data();
    for (int row0 = first; row0 <= last; row0 += BlockRows) {
        if (tree->IsStopping()) {
            for (int r = row0; r <= last; ++r)
                valid[r] = 0;
            break;
        }
        const int n = std::min(BlockRows, last - row0 + 1);
        std::fill(again, again + n, 0);
        // A getter or a row done again through the tree may have hashed a
        // name since the last block.
        RpnClearUpperVectorState();

        // The columns of this block; rows that are not valid are done again.
        for (std::size_t c = 0; c < m_columns.size(); ++c) {
            const CRpnColumnBinding *column = m_columns[c];
            if (row0 >= 0 && row0 + n <= column->count) {
                m_columnData[c] = column->values + row0;
            } else {
                double *copy = m_columnCopies[c].data();
                for (int i = 0; i < n; ++i) {
                    const int r = row0 + i;
                    const bool inside = r >= 0 && r < column->count;
                    copy[i] = inside ? column->values[r] : 0.0;
                    again[i] |= !inside;
                }
                m_columnData[c] = copy;
            }
            if (column->valid && row0 >= 0 && row0 + n <= column->count) {
                // The whole block inside the column: a loop without tests.
                const unsigned char *valid = column->valid + row0;
                for (int i = 0; i < n; ++i)
                    again[i] |= valid[i] != 1;
            } else if (column->valid) {
                for (int i = 0; i < n; ++i) {
                    const int r = row0 + i;
                    if (r >= 0 && r < column->count)
                        again[i] |= column->valid[r] != 1;
                }
            }
        }

        // The host's variables, row by row through its getter.
        for (std::size_t h = 0; h < m_hostVariables.size(); ++h) {
            auto *variable = static_cast<CNodeVariable *>(m_hostVariables[h]);
            double *out = m_hostData[h].data();
            for (int i = 0; i < n; ++i) {
                const int r = row0 + i;
                tree->m_rowIndex = r;
                int found = 1;
                tree->m_getVariable(m_scratch, variable->m_index, r, tree->m_runData1, tree->m_runData2, variable,
                                    variable->m_name, found);
                const bool real = found && m_scratch.IsReal();
                out[i] = real ? m_scratch.GetRealValue() : 0.0;
                again[i] |= !real;
            }
        }

        // ApplyReal of other classes may report; what it reports for rows
        // the tree then evaluates again is taken back.
        const QString errorText = tree->errorText, errorToken = tree->errorToken;
        const int errorRow = tree->errorRow, errorCol = tree->errorCol;
        const int listed = int(tree->GetErrorList().size());
        bool reported = false;

        for (const Step &s : m_steps) {
            const double *a = data(s.a), *b = data(s.b);
            const double av = s.a.value, bv = s.b.value;
            double *out = m_registers[std::size_t(s.out)].data();
            // Without a sure REAL on the left, a row where a short cut would
            // decide goes through the tree (it may hold an ARRAY there).
            if (!s.shortCut && (s.op == OpMul || s.op == OpAnd || s.op == OpOr))
                markCut(a, av, s.op == OpOr, again, n);
            switch (s.op) {
            case OpAdd: binary(a, av, b, bv, out, n, [](double x, double y) { return x + y; }); break;
            case OpSub: binary(a, av, b, bv, out, n, [](double x, double y) { return x - y; }); break;
            case OpMul:
                if (s.shortCut)
                    binary(a, av, b, bv, out, n, [](double x, double y) { return x == 0.0 ? x : x * y; });
                else
                    binary(a, av, b, bv, out, n, [](double x, double y) { return x * y; });
                break;
            case OpDiv:
                markZero(b, bv, again, n);
                binary(a, av, b, bv, out, n, [](double x, double y) { return x / y; });
                break;
            case OpMod:
                markZero(b, bv, again, n);
                binary(a, av, b, bv, out, n, [](double x, double y) { return std::fmod(x, y); });
                break;
            case OpPow:
                if (!b && bv == 2.0)
                    unary(a, av, out, n, [](double x) { return x * x; });
                else
                    binary(a, av, b, bv, out, n, [](double x, double y) { return RpnPower(x, y); });
                break;
            case OpNeg: unary(a, av, out, n, [](double x) { return -x; }); break;
            case OpPos: unary(a, av, out, n, [](double x) { return x; }); break;
            case OpLess: binary(a, av, b, bv, out, n, [](double x, double y) { return x < y ? 1.0 : 0.0; }); break;
            case OpGreater: binary(a, av, b, bv, out, n, [](double x, double y) { return x > y ? 1.0 : 0.0; }); break;
            case OpLessEqual: binary(a, av, b, bv, out, n, [](double x, double y) { return x <= y ? 1.0 : 0.0; }); break;
            case OpGreaterEqual: binary(a, av, b, bv, out, n, [](double x, double y) { return x >= y ? 1.0 : 0.0; }); break;
            case OpAnd:
                if (s.shortCut)
                    binary(a, av, b, bv, out, n, [](double x, double y) { return x == 0.0 ? x : (y != 0.0 ? 1.0 : 0.0); });
                else
                    binary(a, av, b, bv, out, n, [](double x, double y) { return x != 0.0 && y != 0.0 ? 1.0 : 0.0; });
                break;
            case OpOr: binary(a, av, b, bv, out, n, [](double x, double y) { return x != 0.0 || y != 0.0 ? 1.0 : 0.0; }); break;
            case OpNot: unary(a, av, out, n, [](double x) { return x == 0.0 ? 1.0 : 0.0; }); break;
            case OpSelect: {
                const double *c = data(s.c);
                const double cv = s.c.value;
                for (int i = 0; i < n; ++i)
                    out[i] = (c ? c[i] : cv) != 0.0 ? (a ? a[i] : av) : (b ? b[i] : bv);
                break;
            }
            case OpApplyReal1:
                reported = s.node->ApplyRealBlock(a, av, nullptr, 0.0, out, again, n) || reported;
                break;
            case OpApplyReal2:
                reported = s.node->ApplyRealBlock(a, av, b, bv, out, again, n) || reported;
                break;
            }
        }
        if (reported) {
            tree->errorText = errorText;
            tree->errorToken = errorToken;
            tree->errorRow = errorRow;
            tree->errorCol = errorCol;
            tree->TruncateErrorList(listed);
        }

        // The plain rows in one sweep, then the marked ones through the tree.
        double *outValues = values + row0;
        unsigned char *outValid = valid + row0;
        if (const double *result = data(m_result)) {
            good += sweepResult(result, outValues, outValid, n);
        } else {
            double x = m_result.value;
            const unsigned char v = RpnSeriesValidityGood(x);
            std::fill(outValues, outValues + n, x);
            std::fill(outValid, outValid + n, v);
            good += v == 1 ? n : 0;
        }
        int marked = 0;
        for (int i = 0; i < n; ++i)
            marked += again[i];
        for (int i = 0; marked > 0 && i < n; ++i) {
            if (!again[i])
                continue;
            --marked;
            good -= outValid[i] == 1;
            tree->m_rowIndex = row0 + i;
            unsigned char st = 1;
            double x = m_root->EvaluateReal(st);
            outValid[i] = RpnSeriesValidity(x, st);
            outValues[i] = x;
            good += outValid[i] == 1;
        }
    }
    return good;
}
