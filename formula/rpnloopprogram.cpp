// CRpnLoopProgram: building the steps of a loop on plain numbers, binding
// them to the variables' places, and running them.

#include "formula/rpnloopprogram.h"

#include "formula/rpnnodes.h"
#include "formula/rpnoperators.h"
#include "formula/rpnstatements.h"
#include "formula/rpnvariableplace.h"

#include <cmath>

namespace {

// Expressions nested deeper than this are left to the node tree (the
// builder recurses once per level).
constexpr int MaxDepth = 24;
// Loops with more steps than this are not worth a program of their own.
constexpr int MaxSteps = 256;

bool isPlainReal(const CRpnData &value)
{
    return value.IsReal() && value.GetFlags() == 0;
}

} // namespace

class CRpnLoopProgram::Builder
{
public:
    explicit Builder(CRpnLoopProgram &program) : p(program) {}

    // The value of `node` as an operand; when `into` is given and the node
    // is an operation, its last step writes there.  False when the node
    // does not qualify.
    bool expression(CRpnNode *node, Ref &out, const Ref *into, int depth)
    {
        if (!node || depth > MaxDepth || int(p.m_plan.size()) > MaxSteps)
            return false;
        if (node->m_variableNode)
            return variable(static_cast<CNodeVariable *>(node), out);
        switch (node->GetKind()) {
        case RPN_NODE_CONSTANT: {
            const CRpnData &value = static_cast<CNodeConstant *>(node)->m_value;
            if (!value.IsReal())
                return false;
            out = constant(value.GetRealValue());
            return true;
        }
        case RPN_NODE_SINGLE_MINUS: {
            Ref a;
            if (!expression(static_cast<CNodeSingleOperand *>(node)->m_operand, a, nullptr, depth + 1))
                return false;
            out = into ? *into : temporary();
            p.m_plan.push_back({CRpnStep::Negate, out, a, a});
            return true;
        }
        default: break;
        }
        Code code;
        if (!binaryCode(node, code))
            return false;
        auto *binary = static_cast<CNodeDoubleOperand *>(node);
        Ref a, b;
        if (!expression(binary->m_left, a, nullptr, depth + 1) || !expression(binary->m_right, b, nullptr, depth + 1))
            return false;
        out = into ? *into : temporary();
        p.m_plan.push_back({code, out, a, b});
        return true;
    }

    // One statement of the body.
    bool statement(CRpnNode *node)
    {
        switch (node->GetKind()) {
        case RPN_NODE_INCREMENT:
        case RPN_NODE_DECREMENT: {
            CRpnNode *operand = static_cast<CNodeSingleOperand *>(node)->m_operand;
            if (!operand || !operand->m_variableNode
                || (node->m_fastOp != RPN_FAST_OP_STEP_UP && node->m_fastOp != RPN_FAST_OP_STEP_DOWN))
                return false;
            Ref v;
            if (!target(static_cast<CNodeVariable *>(operand), v))
                return false;
            p.m_plan.push_back({CRpnStep::Add, v, v, constant(node->m_fastOp == RPN_FAST_OP_STEP_UP ? 1.0 : -1.0)});
            return true;
        }
        case RPN_NODE_ASSIGN:
        case RPN_NODE_ADD_ASSIGN:
        case RPN_NODE_SUB_ASSIGN:
        case RPN_NODE_MUL_ASSIGN: break;
        default: return false;
        }
        auto *assignment = static_cast<CNodeDoubleOperand *>(node);
        CRpnNode *left = assignment->m_left, *right = assignment->m_right;
        if (!left || !right || !left->m_variableNode)
            return false;
        Ref v;
        if (!target(static_cast<CNodeVariable *>(left), v))
            return false;
        if (node->GetKind() == RPN_NODE_ASSIGN) {
            // A stored constant keeps its flags (a display exponent), which a
            // step does not carry: only a constant without any qualifies.
            if (right->GetKind() == RPN_NODE_CONSTANT) {
                const CRpnData &value = static_cast<CNodeConstant *>(right)->m_value;
                if (!isPlainReal(value))
                    return false;
                p.m_plan.push_back({CRpnStep::Move, v, constant(value.GetRealValue()), Ref()});
                return true;
            }
            // A variable or a list on the right is stored as it is, flags
            // and all; an operation gives a fresh number.
            if (right->m_variableNode || right->IsList())
                return false;
            Ref ignored;
            return expression(right, ignored, &v, 0);
        }
        Ref r;
        if (!expression(right, r, nullptr, 0))
            return false;
        const Code code = node->GetKind() == RPN_NODE_ADD_ASSIGN   ? CRpnStep::Add
                          : node->GetKind() == RPN_NODE_SUB_ASSIGN ? CRpnStep::Subtract
                                                                   : CRpnStep::Multiply;
        p.m_plan.push_back({code, v, v, r});
        return true;
    }

private:
    CRpnLoopProgram &p;

    bool binaryCode(CRpnNode *node, Code &code)
    {
        switch (node->m_fastOp) {
        case RPN_FAST_OP_ADD: code = CRpnStep::Add; return true;
        case RPN_FAST_OP_SUBTRACT: code = CRpnStep::Subtract; return true;
        // `0 * x` is 0 whatever x is, as the operator has it.
        case RPN_FAST_OP_MULTIPLY: code = CRpnStep::MultiplyCut; return true;
        case RPN_FAST_OP_LESS: code = CRpnStep::Less; return true;
        case RPN_FAST_OP_GREATER: code = CRpnStep::Greater; return true;
        case RPN_FAST_OP_LESS_EQUAL: code = CRpnStep::LessEqual; return true;
        case RPN_FAST_OP_GREATER_EQUAL: code = CRpnStep::GreaterEqual; return true;
        default: break;
        }
        const int kind = node->GetKind();
        if (kind != RPN_NODE_DIVIDE && kind != RPN_NODE_MOD)
            return false;
        // Only a divisor that cannot be zero: a zero one is an error to report.
        CRpnNode *divisor = static_cast<CNodeDoubleOperand *>(node)->m_right;
        if (!divisor || divisor->GetKind() != RPN_NODE_CONSTANT)
            return false;
        const CRpnData &value = static_cast<CNodeConstant *>(divisor)->m_value;
        if (!value.IsReal() || value.GetRealValue() == 0.0)
            return false;
        code = kind == RPN_NODE_DIVIDE ? CRpnStep::Divide : CRpnStep::Modulo;
        return true;
    }

    bool variable(CNodeVariable *node, Ref &out)
    {
        if (node->IsConstant()) {
            if (!node->m_value.IsReal())
                return false;
            out = constant(node->m_value.GetRealValue());
            return true;
        }
        if (node->m_column)
            return false;
        p.m_variables.push_back(node);
        out = {Ref::Variable, int(p.m_variables.size()) - 1};
        return true;
    }

    bool target(CNodeVariable *node, Ref &out)
    {
        if (node->IsConstant() || !variable(node, out))
            return false;
        p.m_written.push_back(out.index);
        return true;
    }

    Ref constant(double x)
    {
        p.m_constants.push_back(x);
        return {Ref::Constant, int(p.m_constants.size()) - 1};
    }

    Ref temporary()
    {
        p.m_temporaries.push_back(0.0);
        return {Ref::Temporary, int(p.m_temporaries.size()) - 1};
    }
};

std::unique_ptr<CRpnLoopProgram> CRpnLoopProgram::Build(CRpnNode *condition, CRpnNode *body)
{
    if (!condition || !body)
        return nullptr;
    std::unique_ptr<CRpnLoopProgram> program(new CRpnLoopProgram);
    Builder builder(*program);
    if (body->GetKind() == RPN_NODE_LIST) {
        for (CRpnNode *child : static_cast<CRpnNodeList *>(body)->m_children) {
            if (child && !builder.statement(child))
                return nullptr;
        }
    } else if (!builder.statement(body)) {
        return nullptr;
    }
    program->m_conditionStart = program->m_plan.size();
    if (!builder.expression(condition, program->m_conditionRef, nullptr, 0))
        return nullptr;
    if (int(program->m_plan.size()) > MaxSteps)
        return nullptr;
    program->m_places.assign(program->m_variables.size(), nullptr);
    program->m_steps.resize(program->m_plan.size());
    return program;
}

bool CRpnLoopProgram::Bind()
{
    if (m_variables.empty())
        return false;
    CEquationTree *tree = m_variables.front()->m_tree;
    if (!tree || tree->Environment().IsLogging() || (tree->m_setVariable && !tree->GetCallFrame()))
        return false;
    for (std::size_t i = 0; i < m_variables.size(); ++i) {
        CRpnData *place = m_variables[i]->FindPlace();
        if (!place || !place->IsReal())
            return false;
        m_places[i] = place;
    }
    // Two statements that write one variable would leave their nodes
    // different last values; such a loop runs the ordinary way.
    for (std::size_t i = 0; i < m_written.size(); ++i) {
        for (std::size_t j = i + 1; j < m_written.size(); ++j) {
            if (m_places[std::size_t(m_written[i])] == m_places[std::size_t(m_written[j])])
                return false;
        }
    }
    // A written number loses its display exponent, as a stored result does;
    // every written variable is written in every pass, so doing it now is
    // the same.
    for (int w : m_written) {
        CRpnData *place = m_places[std::size_t(w)];
        place->SetDouble(place->GetRealValue());
    }
    const auto address = [this](const Ref &r) -> double * {
        switch (r.kind) {
        case Ref::Variable: return m_places[std::size_t(r.index)]->RealPlace();
        case Ref::Constant: return &m_constants[std::size_t(r.index)];
        case Ref::Temporary: return &m_temporaries[std::size_t(r.index)];
        }
        return nullptr;
    };
    for (std::size_t i = 0; i < m_plan.size(); ++i) {
        const Plan &plan = m_plan[i];
        m_steps[i] = {plan.code, address(plan.out), address(plan.a), address(plan.b), nullptr, nullptr};
    }
    m_condition = address(m_conditionRef);
    return true;
}

void CRpnLoopProgram::Finish()
{
    for (int w : m_written)
        m_variables[std::size_t(w)]->m_value.SetDouble(m_places[std::size_t(w)]->GetRealValue());
}

void CRpnLoopProgram::Run(int limit, const CEquationTree *tree)
{
    const CRpnStep *const begin = m_steps.data();
    const CRpnStep *const middle = begin + m_conditionStart, *const end = begin + m_steps.size();
    for (int passes = 1;; ++passes) {
        RpnRunSteps(begin, middle);
        if (passes >= limit || tree->IsStopping())
            return;
        RpnRunSteps(middle, end);
        if (*m_condition == 0.0)
            return;
    }
}
