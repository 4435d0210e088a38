// CRpnRowProgram: building the steps of a formula on plain numbers, and
// running them for one row.

#include "formula/rpnrowprogram.h"

#include "formula/rpnfunctioncall.h"
#include "formula/rpnnode.h"
#include "formula/rpnnodes.h"
#include "formula/rpnseries.h"
#include "formula/rpnstatements.h"
#include "formula/rpntree.h"
#include "formula/rpnuserfunction.h"
#include "formula/rpnvariableplace.h"
#include "support/stackroom.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

// Builds the steps with indices into the cells (which grow while building)
// and gives them their addresses at the end.
class CRpnRowProgram::Builder
{
public:
    Builder(CRpnRowProgram &program, CEquationTree *tree) : p(program), m_tree(tree) {}

    // The cell that holds the value of `node`; false when the node does not
    // qualify.
    bool expression(CRpnNode *node, int &out, int depth)
    {
        if (!node || depth > MaxDepth || int(m_plan.size()) >= MaxSteps || StackRoom::IsStackLow())
            return false;
        // A list inside (`{x}`) may make an ARRAY: the tree's.  The lists
        // round the whole formula are passed over by the caller.
        if (node->IsList() && !node->IsMultiOperand())
            return false;
        if (node->IsIIF())
            return choice(node, out, depth);
        if (node->IsFunctionCall())
            return call(node, out, depth);
        if (CNodeVariable *variable = node->AsVariable())
            return this->variable(variable, out);
        if (node->IsValue()) {
            double x;
            if (!node->EvaluateFast(x))
                return false;
            out = constant(x);
            return true;
        }
        const int path = node->GetRealPath();
        const int count = node->GetOperandCount();
        if (path == RPN_REAL_PATH_NONE || count < 1 || count > 2)
            return false;
        Plan step;
        step.node = node;
        if (!expression(node->GetOperand(0), step.a, depth + 1))
            return false;
        if (count == 2 && !expression(node->GetOperand(1), step.b, depth + 1))
            return false;
        switch (node->GetKind()) {
        case RPN_NODE_PLUS: step.code = CRpnStep::Add; break;
        case RPN_NODE_MINUS: step.code = CRpnStep::Subtract; break;
        // `0 * x` is 0 whatever x is, as the operator has it.
        case RPN_NODE_MULTIPLY: step.code = CRpnStep::MultiplyCut; break;
        case RPN_NODE_DIVIDE: step.code = CRpnStep::DivideChecked; break;
        case RPN_NODE_MOD: step.code = CRpnStep::ModuloChecked; break;
        case RPN_NODE_POWER:
        case RPN_NODE_POWER2:
            step.code = m_constant[std::size_t(step.b)] && p.m_cells[std::size_t(step.b)] == 2.0 ? CRpnStep::Square
                                                                                                : CRpnStep::Power;
            break;
        case RPN_NODE_SINGLE_MINUS: step.code = CRpnStep::Negate; break;
        case RPN_NODE_SINGLE_PLUS: step.code = CRpnStep::Move; break;
        case RPN_NODE_LESS: step.code = CRpnStep::Less; break;
        case RPN_NODE_GREATER: step.code = CRpnStep::Greater; break;
        case RPN_NODE_LESS_EQUAL: step.code = CRpnStep::LessEqual; break;
        case RPN_NODE_GREATER_EQUAL: step.code = CRpnStep::GreaterEqual; break;
        case RPN_NODE_AND: step.code = CRpnStep::AndCut; break;
        case RPN_NODE_OR: step.code = CRpnStep::EitherNotZero; break;
        case RPN_NODE_NOT: step.code = CRpnStep::IsZero; break;
        default:
            // The cuts and the divisor test of other classes stay with the tree.
            if (path != RPN_REAL_PATH_PLAIN && path != RPN_REAL_PATH_ROW)
                return false;
            step.code = count == 2 ? CRpnStep::Apply2 : CRpnStep::Apply1;
            break;
        }
        if (count == 1)
            step.b = step.a;
        out = step.out = temporary();
        m_plan.push_back(step);
        return true;
    }

    // Several statements: assignments `v = operation` of plain numbers and
    // expressions, perhaps a `return` last.  The value is the return's, or
    // else the first statement's (the double of the ARRAY of them all).
    bool statements(CRpnNode *list, int &out)
    {
        const int n = list->GetOperandCount();
        int first = -1;
        for (int i = 0; i < n; ++i) {
            CRpnNode *child = list->GetOperand(i);
            if (!child)
                return false;
            int value = -1;
            if (child->GetKind() == RPN_NODE_RETURN) {
                CRpnNode *returned = static_cast<CNodeReturn *>(child)->m_operand;
                if (i != n - 1 || !returned || !expression(returned, out, 1))
                    return false;
                return true;
            }
            if (child->GetKind() == RPN_NODE_ASSIGN ? !assignment(child, value) : !expression(child, value, 1))
                return false;
            if (i == 0)
                first = value;
        }
        out = first;
        return first >= 0;
    }

    // False when a name that a hoisted comparison reads is written by the
    // formula itself (its value would then change from row to row).
    bool invariantsHold() const
    {
        for (const QString &name : m_invariantNames) {
            if (m_assigned.contains(name))
                return false;
        }
        return true;
    }

    // Gives the steps their addresses; the cells do not move from now on.
    void finish(int result)
    {
        fuse(result);
        double *cells = p.m_cells.data();
        auto at = [cells](int i) { return i < 0 ? nullptr : cells + i; };
        p.m_steps.reserve(m_plan.size());
        for (const Plan &plan : m_plan)
            p.m_steps.push_back({plan.code, at(plan.out), at(plan.a), at(plan.b), at(plan.c), plan.node});
        for (std::size_t i = 0; i < m_columns.size(); ++i)
            p.m_columnReads.push_back({m_columns[i], at(m_columnCells[i])});
        for (const auto &[node, cell] : m_hosts)
            p.m_hostReads.push_back({node, at(cell)});
        for (const auto &[node, cell] : m_places)
            p.m_placeReads.push_back({node, at(cell)});
        for (const auto &[node, cell] : m_writes)
            p.m_writes.push_back({node, at(cell)});
        p.m_writePlaces.assign(m_writes.size(), nullptr);
        for (const Plan &plan : m_invariants)
            p.m_invariants.push_back({plan.code, at(plan.out), at(plan.a), at(plan.b), at(plan.c), plan.node});
        p.m_result = at(result);
    }

private:
    // A product whose only use is the left side of the next step's sum
    // becomes one step: `x*2+1` is one dispatch a row.
    void fuse(int result)
    {
        std::vector<int> uses(p.m_cells.size(), 0);
        for (const Plan &plan : m_plan) {
            for (int cell : {plan.a, plan.b, plan.c})
                if (cell >= 0)
                    ++uses[std::size_t(cell)];
        }
        if (result >= 0)
            ++uses[std::size_t(result)];
        for (const auto &write : m_writes)
            ++uses[std::size_t(write.second)];
        std::vector<Plan> fused;
        for (std::size_t i = 0; i < m_plan.size(); ++i) {
            const Plan &plan = m_plan[i];
            if (i + 1 < m_plan.size() && plan.code == CRpnStep::MultiplyCut) {
                const Plan &next = m_plan[i + 1];
                if (next.code == CRpnStep::Add && next.a == plan.out && next.b != plan.out
                    && uses[std::size_t(plan.out)] == 1) {
                    Plan both = plan;
                    both.code = CRpnStep::MultiplyAdd;
                    both.c = next.b;
                    both.out = next.out;
                    fused.push_back(both);
                    ++i;
                    continue;
                }
            }
            fused.push_back(plan);
        }
        m_plan = std::move(fused);
    }

    struct Plan
    {
        CRpnStep::Code code = CRpnStep::Move;
        int out = -1, a = -1, b = -1, c = -1;
        CRpnNode *node = nullptr;
    };
    // The calls whose body is being compiled in place: the function and the
    // cells of its arguments, innermost last.
    struct Inlined
    {
        const CRpnUserFunction *function;
        std::vector<int> arguments;
    };

    CRpnRowProgram &p;
    CEquationTree *m_tree;
    std::vector<Plan> m_plan;
    std::vector<bool> m_constant; // per cell
    std::vector<const CRpnColumnBinding *> m_columns;
    std::vector<int> m_columnCells;
    std::vector<std::pair<CNodeVariable *, int>> m_hosts, m_places, m_writes;
    std::vector<Inlined> m_inlined;
    QHash<QString, int> m_assigned;  // the cell that holds each name assigned so far in the row
    std::vector<Plan> m_invariants;  // comparisons that do not change from row to row
    QStringList m_invariantNames;    // the names they read

    QString fold(const QString &name) const { return m_tree->m_caseSensitiveNames ? name : name.toUpper(); }

    // `v = operation`: the value lands in a cell of its own, which later
    // reads of the name in the row take; the variable gets it when the row
    // is done.
    bool assignment(CRpnNode *node, int &out)
    {
        auto *assign = static_cast<CNodeDoubleOperand *>(node);
        CNodeVariable *target = assign->m_left ? assign->m_left->AsVariable() : nullptr;
        // Only where the assignment itself stores a plain double (see
        // CNodeAssignment::Evaluate); the host's variables are the host's.
        if (!node->m_plainStore || !target || target->IsConstant() || target->m_column || target->IsHostBound()
            || target->m_tree != m_tree || m_tree->m_getVariable || !m_inlined.empty())
            return false;
        if (!expression(assign->m_right, out, 1))
            return false;
        m_writes.emplace_back(target, out);
        m_assigned.insert(fold(target->m_name), out);
        return true;
    }

    // `a == b` or `a != b` of constants, texts and the script's variables
    // as the condition of a choice: evaluated by its node once per series
    // (again after a row that the tree did), not once per row.
    bool invariantTruth(CRpnNode *node, int &out)
    {
        if (!m_inlined.empty() || m_tree->m_getVariable || node->GetOperandCount() != 2)
            return false;
        QStringList names;
        for (int i = 0; i < 2; ++i) {
            CRpnNode *operand = node->GetOperand(i);
            if (!operand || !operand->IsValue())
                return false;
            if (CNodeVariable *variable = operand->AsVariable()) {
                if (variable->m_column || variable->IsHostBound() || variable->m_tree != m_tree)
                    return false;
                if (!variable->IsConstant())
                    names.append(fold(variable->m_name));
            }
        }
        for (const QString &name : names) {
            // Written earlier in the row: not the same in every row.
            if (m_assigned.contains(name))
                return false;
        }
        m_invariantNames.append(names);
        Plan step;
        step.code = CRpnStep::Truth;
        step.node = node;
        out = step.out = temporary();
        step.a = step.out; // every step reads its first operand, this one reads nothing
        m_invariants.push_back(step);
        return true;
    }

    int cell(double x, bool isConstant)
    {
        p.m_cells.push_back(x);
        m_constant.push_back(isConstant);
        return int(p.m_cells.size()) - 1;
    }
    int constant(double x) { return cell(x, true); }
    int temporary() { return cell(0.0, false); }

    bool variable(CNodeVariable *node, int &out)
    {
        if (node->IsConstant()) {
            if (!node->m_value.IsReal())
                return false;
            out = constant(node->m_value.GetRealValue());
            return true;
        }
        if (!m_inlined.empty()) {
            // Inside a body compiled in place only the parameters are known.
            const Inlined &call = m_inlined.back();
            if (node->m_slotFunction != call.function || node->m_slot < 0
                || node->m_slot >= int(call.arguments.size()))
                return false;
            out = call.arguments[std::size_t(node->m_slot)];
            return true;
        }
        if (node->m_tree != m_tree)
            return false;
        if (const CRpnColumnBinding *column = node->m_column) {
            // One cell per column: every node of it reads the same value.
            const auto it = std::find(m_columns.begin(), m_columns.end(), column);
            if (it != m_columns.end()) {
                out = m_columnCells[std::size_t(it - m_columns.begin())];
                return true;
            }
            m_columns.push_back(column);
            m_columnCells.push_back(out = temporary());
            return true;
        }
        // A name assigned earlier in the row: the cell that holds its value.
        if (!m_tree->m_getVariable) {
            if (const auto it = m_assigned.constFind(fold(node->m_name)); it != m_assigned.constEnd()) {
                out = it.value();
                return true;
            }
        }
        // The getter is called once per node and row, as the tree calls it.
        out = temporary();
        (m_tree->m_getVariable ? m_hosts : m_places).emplace_back(node, out);
        return true;
    }

    bool choice(CRpnNode *node, int &out, int depth)
    {
        // A condition that may be an array picks element by element: the
        // tree's.  Both branches are computed whichever is taken.
        Plan step;
        step.code = CRpnStep::Select;
        if (node->GetOperandCount() != 3)
            return false;
        CRpnNode *condition = node->GetOperand(0);
        const bool compared = condition && (condition->GetKind() == RPN_NODE_EQUAL
                                            || condition->GetKind() == RPN_NODE_NOT_EQUAL);
        if (compared ? !invariantTruth(condition, step.c) : !expression(condition, step.c, depth + 1))
            return false;
        if (!expression(node->GetOperand(1), step.a, depth + 1) || !expression(node->GetOperand(2), step.b, depth + 1))
            return false;
        out = step.out = temporary();
        m_plan.push_back(step);
        return true;
    }

    bool call(CRpnNode *node, int &out, int depth)
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
        Inlined inlined{function, std::vector<int>(std::size_t(parameters), -1)};
        for (int i = 0; i < parameters; ++i) {
            if (function->IsByReference(i)
                || !this->expression(call->GetOperand(i), inlined.arguments[std::size_t(i)], depth + 1))
                return false;
        }
        m_inlined.push_back(std::move(inlined));
        const bool compiled = this->expression(expression, out, depth + 1);
        m_inlined.pop_back();
        return compiled;
    }
};

std::unique_ptr<CRpnRowProgram> CRpnRowProgram::Build(CEquationTree *tree, CRpnNode *root)
{
    if (!tree || !root)
        return nullptr;
    std::unique_ptr<CRpnRowProgram> program(new CRpnRowProgram);
    Builder builder(*program, tree);
    int result = -1;
    const bool several = root->IsList() && !root->IsMultiOperand() && root->GetOperandCount() > 1;
    if (!(several ? builder.statements(root, result) : builder.expression(root, result, 0))
        || !builder.invariantsHold())
        return nullptr;
    builder.finish(result);
    program->m_getter = reinterpret_cast<void *>(tree->m_getVariable);
    program->m_pure = program->m_hostReads.empty() && program->m_placeReads.empty() && program->m_writes.empty();
    program->m_active.reserve(program->m_steps.size());
    program->m_live.assign(program->m_cells.size(), 0);
    // A statement whose value nobody reads still runs, as in the tree
    // (and may fail there): its cell is read as far as leaving steps out
    // goes.
    program->m_active.assign(program->m_steps.begin(), program->m_steps.end());
    program->m_activeResult = program->m_result;
    program->markLive();
    for (const CRpnStep &step : program->m_steps) {
        if (!program->m_live[std::size_t(step.out - program->m_cells.data())])
            program->m_unread.push_back(step.out);
    }
    return program;
}

void CRpnRowProgram::markLive()
{
    const double *cells = m_cells.data();
    std::fill(m_live.begin(), m_live.end(), 0);
    auto mark = [&](const double *cell) {
        if (cell)
            m_live[std::size_t(cell - cells)] = 1;
    };
    mark(m_activeResult);
    for (const NodeRead &write : m_writes)
        mark(write.slot);
    for (const double *cell : m_unread)
        mark(cell);
    // Each step writes a cell of its own that only later steps read, so one
    // pass from the end finds every step whose value is read.
    for (auto step = m_active.rbegin(); step != m_active.rend(); ++step) {
        if (m_live[std::size_t(step->out - cells)]) {
            mark(step->a);
            mark(step->b);
            mark(step->c);
        }
    }
}

void CRpnRowProgram::resolve()
{
    m_active.assign(m_steps.begin(), m_steps.end());
    m_activeResult = m_result;
    if (m_invariantsHold && !m_invariants.empty()) {
        // A choice on a condition of the series takes its branch now.
        for (CRpnStep &step : m_active) {
            if (step.code != CRpnStep::Select)
                continue;
            const bool hoisted = std::any_of(m_invariants.begin(), m_invariants.end(),
                                             [&step](const CRpnStep &truth) { return truth.out == step.c; });
            if (!hoisted)
                continue;
            step.a = *step.c != 0.0 ? step.a : step.b;
            step.b = step.a;
            step.c = nullptr;
            step.code = CRpnStep::Move;
        }
    }
    // A copy is passed through: whatever reads its cell reads what it
    // copies (the copy itself stays while an assignment stores its cell).
    for (std::size_t i = 0; i < m_active.size(); ++i) {
        const CRpnStep &copy = m_active[i];
        if (copy.code != CRpnStep::Move)
            continue;
        for (std::size_t j = i + 1; j < m_active.size(); ++j) {
            CRpnStep &later = m_active[j];
            for (const double **operand : {&later.a, &later.b, &later.c}) {
                if (*operand == copy.out)
                    *operand = copy.a;
            }
        }
        if (m_activeResult == copy.out)
            m_activeResult = copy.a;
    }
    // What only the branch not taken read is left out.
    markLive();
    const double *cells = m_cells.data();
    m_active.erase(std::remove_if(m_active.begin(), m_active.end(),
                                  [&](const CRpnStep &step) { return !m_live[std::size_t(step.out - cells)]; }),
                   m_active.end());
    m_activeApplies = std::any_of(m_active.begin(), m_active.end(), [](const CRpnStep &step) {
        return step.code == CRpnStep::Apply1 || step.code == CRpnStep::Apply2;
    });
    pickKernel();
}

template <CRpnStep::Code K>
void CRpnRowProgram::pickOperands()
{
    const CRpnStep &step = m_active.front();
    const double *column = m_columnReads.front().slot;
    const bool a = step.a == column, b = step.b == column;
    if (step.c == column)
        m_kernel = nullptr;
    else if (a)
        m_kernel = b ? &CRpnRowProgram::kernel<K, true, true> : &CRpnRowProgram::kernel<K, true, false>;
    else
        m_kernel = b ? &CRpnRowProgram::kernel<K, false, true> : nullptr;
}

void CRpnRowProgram::pickKernel()
{
    m_kernel = nullptr;
    // One step on the column and values that do not change within the
    // series (constants, hoisted conditions).
    if (!m_pure || !m_invariantsHold || m_activeApplies || m_columnReads.size() != 1 || m_active.size() != 1
        || m_active.front().out != m_activeResult)
        return;
    using S = CRpnStep;
    switch (m_active.front().code) {
    case S::Add: pickOperands<S::Add>(); break;
    case S::Subtract: pickOperands<S::Subtract>(); break;
    case S::MultiplyCut: pickOperands<S::MultiplyCut>(); break;
    case S::MultiplyAdd: pickOperands<S::MultiplyAdd>(); break;
    case S::DivideChecked: pickOperands<S::DivideChecked>(); break;
    case S::ModuloChecked: pickOperands<S::ModuloChecked>(); break;
    case S::Power: pickOperands<S::Power>(); break;
    case S::Square: pickOperands<S::Square>(); break;
    case S::Negate: pickOperands<S::Negate>(); break;
    case S::Less: pickOperands<S::Less>(); break;
    case S::Greater: pickOperands<S::Greater>(); break;
    case S::LessEqual: pickOperands<S::LessEqual>(); break;
    case S::GreaterEqual: pickOperands<S::GreaterEqual>(); break;
    default: break;
    }
}

bool CRpnRowProgram::IsFor(const CEquationTree *tree) const
{
    return reinterpret_cast<void *>(tree->m_getVariable) == m_getter;
}

namespace {

// What tells whether a report is new.
struct ErrorState
{
    bool hadError;
    int listed, errorRow, errorCol;
};

void takeBackReports(CEquationTree *tree, const ErrorState &before)
{
    if (!before.hadError && tree->HasError()) {
        tree->errorText.clear();
        tree->errorToken.clear();
        tree->errorRow = before.errorRow;
        tree->errorCol = before.errorCol;
    }
    tree->TruncateErrorList(before.listed);
}

} // namespace

RPN_STEPS_INLINE bool CRpnRowProgram::guarded(CEquationTree *tree, const CRpnStep *begin, const CRpnStep *end)
{
    // A function that fails may report, and in the throwing mode throw:
    // what it reported is taken back, since the tree does the row again
    // (and reports, or throws, if the row itself fails).  Nothing is saved
    // but what tells whether a report is new.
    const ErrorState before{tree->HasError(), int(tree->GetErrorList().size()), tree->errorRow, tree->errorCol};
    bool done = false;
    try {
        done = RpnRunSteps(begin, end);
    } catch (...) {
        done = false;
    }
    if (!done) [[unlikely]]
        takeBackReports(tree, before);
    return done;
}

template <bool Pure>
RPN_STEPS_INLINE bool CRpnRowProgram::run(CEquationTree *tree, int row, double &out)
{
    for (const ColumnRead &read : m_columnReads) {
        const CRpnColumnBinding *c = read.column;
        if (row < 0 || row >= c->count || (c->valid && c->valid[row] != 1))
            return false;
        *read.slot = c->values[row];
    }
    const CRpnStep *const begin = m_active.data(), *const end = begin + m_active.size();
    if constexpr (Pure) {
        // Columns and steps only: a column is read the same way inside a call.
        if (!m_invariantsHold || !(m_activeApplies ? guarded(tree, begin, end) : RpnRunSteps(begin, end)))
            return false;
        out = *m_activeResult;
        return true;
    } else {
        // Inside a call the names are the call's.
        if (!m_invariantsHold || tree->GetCallFrame())
            return false;
        for (const NodeRead &read : m_hostReads) {
            // Into the node's own value, as the tree reads it.
            CNodeVariable *node = read.node;
            int found = 1;
            tree->m_getVariable(node->m_value, node->m_index, row, tree->m_runData1, tree->m_runData2, node,
                                node->m_name, found);
            if (!found || !node->m_value.IsReal())
                return false;
            *read.slot = node->m_value.GetRealValue();
        }
        for (const NodeRead &read : m_placeReads) {
            const CRpnData *place = read.node->FindPlace();
            if (!place || !place->IsReal())
                return false;
            *read.slot = place->GetRealValue();
        }
        // The places written when the row is done: a name without one yet
        // is made by the tree, and a run that logs its assignments logs them
        // there.
        if (!m_writes.empty()) {
            if (tree->Environment().IsLogging())
                return false;
            for (std::size_t i = 0; i < m_writes.size(); ++i) {
                if (!(m_writePlaces[i] = m_writes[i].node->FindPlace()))
                    return false;
            }
        }
        if (!(m_activeApplies ? guarded(tree, begin, end) : RpnRunSteps(begin, end)))
            return false;
        // As the assignment stores a plain double: the place and the node's copy.
        for (std::size_t i = 0; i < m_writes.size(); ++i) {
            const double x = *m_writes[i].slot;
            m_writePlaces[i]->SetDouble(x);
            m_writes[i].node->m_value.SetDouble(x);
        }
        out = *m_activeResult;
        return true;
    }
}

namespace {

// The validity byte of a row the steps computed (see RpnSeriesValidityGood):
// a normal number, by far the commonest, takes one test.
RPN_STEPS_INLINE unsigned char rowValidity(double &x)
{
    std::uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    const unsigned exponent = unsigned(bits >> 52) & 0x7FFu;
    if (exponent - 1u < 0x7FEu) [[likely]]
        return 1;
    return RpnSeriesValidityGood(x);
}

} // namespace

int CRpnRowProgram::Series(CEquationTree *tree, CRpnNode *top, double *values, unsigned char *valid, int first,
                           int last)
{
    return m_pure ? series<true>(tree, top, values, valid, first, last)
                  : series<false>(tree, top, values, valid, first, last);
}

void CRpnRowProgram::treeRow(CEquationTree *tree, CRpnNode *top, double *values, unsigned char *valid, int row,
                             int &good)
{
    tree->m_rowIndex = row;
    RpnClearUpperVectorState();
    unsigned char st = 1;
    double x = top->EvaluateReal(st);
    // What the row did through the tree is seen from the next row on.
    if (!m_invariants.empty()) {
        m_invariantsHold = guarded(tree, m_invariants.data(), m_invariants.data() + m_invariants.size());
        resolve();
    }
    const unsigned char v = RpnSeriesValidity(x, st);
    valid[row] = v;
    values[row] = x;
    good += v == 1;
}

template <CRpnStep::Code K, bool AColumn, bool BColumn>
int CRpnRowProgram::kernel(CEquationTree *tree, CRpnNode *top, double *values, unsigned char *valid, int row,
                           int end, int &good)
{
    const CRpnStep &step = m_active.front();
    const CRpnColumnBinding *column = m_columnReads.front().column;
    const double *x = column->values;
    const unsigned char *cells = column->valid;
    // The operands that are not the column keep their value until a row
    // through the tree, after which the caller picks again.
    const double a = AColumn ? 0.0 : *step.a, b = BColumn ? 0.0 : *step.b, c = step.c ? *step.c : 0.0;
    // A step may call the maths library (pow, fmod): see rpnseries.h.
    RpnClearUpperVectorState();
    int n = 0;
    for (; row <= end; ++row) {
        const double v = x[row];
        double out;
        if ((cells && cells[row] != 1) || !RpnStep<K>(AColumn ? v : a, BColumn ? v : b, c, out)) {
            good += n;
            treeRow(tree, top, values, valid, row, good);
            return row + 1;
        }
        const unsigned char g = rowValidity(out);
        valid[row] = g;
        values[row] = out;
        n += g == 1;
    }
    good += n;
    tree->m_rowIndex = end;
    return row;
}

template <bool Pure>
int CRpnRowProgram::rows(CEquationTree *tree, CRpnNode *top, double *values, unsigned char *valid, int row, int end,
                         int &good)
{
    // Whatever looks names up (and so hashes strings) may leave the wide
    // registers dirty: see rpnseries.h.  The steps themselves do not; the
    // host's getter may, and a row done through the tree may.
    const bool callsOut = !Pure && !m_hostReads.empty();
    bool dirty = true;
    int n = 0;
    for (; row <= end; ++row) {
        tree->m_rowIndex = row;
        if (dirty || callsOut) {
            RpnClearUpperVectorState();
            dirty = false;
        }
        double x;
        if (!run<Pure>(tree, row, x)) {
            good += n;
            n = 0;
            treeRow(tree, top, values, valid, row, good);
            // The choices the row left may make the program one step.
            if (m_kernel)
                return row + 1;
            dirty = true;
            continue;
        }
        const unsigned char v = rowValidity(x);
        valid[row] = v;
        values[row] = x;
        n += v == 1;
    }
    good += n;
    return row;
}

template <bool Pure>
int CRpnRowProgram::series(CEquationTree *tree, CRpnNode *top, double *values, unsigned char *valid, int first,
                           int last)
{
    int good = 0;
    if (!m_invariants.empty()) {
        tree->m_rowIndex = first;
        m_invariantsHold = guarded(tree, m_invariants.data(), m_invariants.data() + m_invariants.size());
    }
    resolve();
    for (int row = first; row <= last;) {
        if (tree->IsStopping()) {
            for (int r = row; r <= last; ++r)
                valid[r] = 0;
            break;
        }
        // On to the next stop check, StopRows rows from the first row on.
        const long long left = StopRows - 1 - (static_cast<long long>(row) - first) % StopRows;
        const int end = last - row <= left ? last : row + int(left);
        const CRpnColumnBinding *column = Pure && m_kernel ? m_columnReads.front().column : nullptr;
        if (column && row >= 0 && end < column->count)
            row = (this->*m_kernel)(tree, top, values, valid, row, end, good);
        else
            row = rows<Pure>(tree, top, values, valid, row, end, good);
    }
    return good;
}
