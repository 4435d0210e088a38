// Formula, Eval, EvalM, EvalVars, ReplaceF, and the substitution in formulas.

#include "formula/rpnformulanodes.h"

#include "formula/rpndictionary.h"
#include "formula/rpnkeywords.h"
#include "formula/rpntree.h"
#include "formula/rpnuserfunction.h"
#include "formula/rpnwritetext.h"

#include <exception>
#include <memory>

namespace {

constexpr int kMsgMissingParameter = 43311;
constexpr std::uint32_t kDigits = 16;

// --- trees of formulas ---------------------------------------------------------------------------

// A blank tree for a formula made while `creator` runs: the creator's
// settings, main dictionary and user functions.  The creator's locals are
// not taken: they may live on the stack of a call that ends before the
// formula does.
CEquationTree *newFormulaTree(const CEquationTree *creator)
{
    auto *tree = new CEquationTree(1.0);
    // The names of a formula stand for values to come.
    tree->m_freeVariables = 1;
    if (creator) {
        tree->CopySettingsFrom(*creator);
        tree->BorrowFunctions(*creator);
        tree->SwapLocalVariables(nullptr);
    }
    return tree;
}

// The text of a tree's expression, as a formula's text reads.
QString expressionText(const CEquationTree *tree)
{
    QString out;
    if (tree && tree->GetRoot())
        WriteNodeText(tree->GetRoot(), out, 0);
    return out;
}

// The expression of a tree: the root without the one-child lists round it.
CRpnNode *expressionOf(CRpnNode *root)
{
    while (root && root->IsList() && !root->IsMultiOperand() && root->GetOperandCount() == 1)
        root = root->GetOperand(0);
    return root;
}

// The message of a failure inside a formula's tree, for the calling tree.
QString innerMessage(const QString &text, int row, int col)
{
    return RpnFormat(QString::fromLatin1(RPN_INNER_ERROR_FORMAT), {text, row, col});
}

void reportInner(CRpnNode *node, unsigned char &status, const CEquationTree &inner)
{
    node->ReportText(status, innerMessage(inner.GetErrorMessage(), inner.GetErrorRow(), inner.GetErrorCol()));
}

// `text` compiled as a formula of `creator`, new names allowed.  Null after
// a failed compile, which is then reported at `node`.
CEquationTree *compileFormula(CRpnNode *node, const CEquationTree *creator, const QString &text,
                              unsigned char &status)
{
    CEquationTree *tree = newFormulaTree(creator);
    // The creator's throwing mode is for runs; a failed compile is reported
    // to the caller, which throws if it is so minded.
    const std::int32_t throwing = tree->throwOnError;
    tree->throwOnError = 0;
    if (tree->Compile(text, nullptr, true) != 1) {
        reportInner(node, status, *tree);
        delete tree;
        return nullptr;
    }
    tree->throwOnError = throwing;
    return tree;
}

// A FORMULA of a copy of `root` (a subtree of another tree).
void formulaOfSubtree(const CEquationTree *creator, const CRpnNode *expression, CRpnData &result)
{
    CEquationTree *tree = newFormulaTree(creator);
    auto *root = new CRpnNodeList;
    root->m_tree = tree;
    root->Append(expression ? CloneSubtree(expression, tree) : nullptr);
    tree->SetRoot(root);
    // The nodes keep their places in the creator's text, which messages of
    // the formula's runs quote; the formula's own text is written anew.
    tree->SetSource(creator ? creator->GetSource() : expressionText(tree));
    result.SetFormula(tree);
}

// The operand's name without evaluating a variable, or its text.
bool nameOfOperand(CRpnNodeList *call, int i, QString &name, CRpnData &result, unsigned char &status)
{
    CRpnNode *child = call->m_children[std::size_t(i)];
    if (!child) {
        name.clear();
        return true;
    }
    if (CNodeVariable *variable = child->AsVariable()) {
        name = variable->m_name;
        return true;
    }
    CRpnData value;
    if (!call->EvaluateOrPass(child, value, result, status))
        return false;
    name = value.GetText(kDigits);
    return true;
}

// The formula a call works on: a FORMULA as it is, a text compiled into a
// temporary formula (owned by `temporary`).  Null with status 0 for other
// values or a text that does not compile; only the latter is reported.
CEquationTree *formulaOfValue(CRpnNode *call, const CRpnData &value, std::unique_ptr<CEquationTree> &temporary,
                              unsigned char &status)
{
    if (value.IsFormula()) {
        if (value.GetFormula())
            return value.GetFormula();
        status = 0;
        return nullptr;
    }
    if (!value.IsString()) {
        status = 0;
        return nullptr;
    }
    temporary.reset(compileFormula(call, call->m_tree, value.GetTextValue(), status));
    return temporary.get();
}

// --- running a formula -------------------------------------------------------------------------

// Names bound for one run of a formula whose variables are read through a
// getter: the getter of the tree is replaced for the run by one that looks
// at the bindings first.  Runs nest (a formula that evaluates another), so
// the bindings of the running formulas of a thread form a stack.
struct ActiveBindings
{
    const CEquationTree *tree;
    CMapStringToRpnData *names;
    CRpnVariableGetter getter;
    ActiveBindings *outer;
};
thread_local ActiveBindings *t_bindings = nullptr;

void boundGetter(CRpnData &result, int index, int rowIndex, void *runData1, void *runData2, CRpnNode *node,
                 const QString &name, int &found)
{
    const CEquationTree *tree = node ? node->m_tree : nullptr;
    for (ActiveBindings *b = t_bindings; b; b = b->outer) {
        if (tree && b->tree != tree)
            continue;
        if (CRpnData *value = b->names->Find(name)) {
            result = *value;
            found = 1;
            return;
        }
        if (b->getter) {
            b->getter(result, index, rowIndex, runData1, runData2, node, name, found);
            return;
        }
        break;
    }
    found = 0;
}

// Runs `formula` for a call at `node` of the calling tree, with `bound`
// (may be null) holding names bound for this run.  With `callerCallbacks`
// the run goes through the calling tree's variable callbacks and run data.
// A failure is reported in the calling tree; false then.
bool runFormula(CRpnNode *node, CEquationTree &formula, CMapStringToRpnData *bound, bool callerCallbacks,
                CRpnData &result, unsigned char &status)
{
    CEquationTree *caller = node->m_tree;
    const std::int32_t throwing = formula.throwOnError;
    const CRpnVariableGetter getter = formula.m_getVariable;
    const CRpnVariableSetter setter = formula.m_setVariable;
    void *const runData1 = formula.m_runData1;
    void *const runData2 = formula.m_runData2;
    const std::int32_t rowIndex = formula.m_rowIndex;
    if (callerCallbacks && caller) {
        formula.m_getVariable = caller->m_getVariable;
        formula.m_setVariable = caller->m_setVariable;
        formula.m_runData1 = caller->m_runData1;
        formula.m_runData2 = caller->m_runData2;
    }
    if (caller)
        formula.m_rowIndex = caller->m_rowIndex;

    // Bound names come first: through the locals when the formula keeps its
    // own variables, through the getter when it has one.
    CMapStringToRpnData *formerLocals = nullptr;
    ActiveBindings binding{&formula, bound, formula.m_getVariable, t_bindings};
    if (bound) {
        bound->m_parent = formula.GetLocalVariables();
        formerLocals = formula.SwapLocalVariables(bound);
        if (formula.m_getVariable) {
            t_bindings = &binding;
            formula.m_getVariable = boundGetter;
        }
    }
    formula.throwOnError = 0;
    formula.ResetError();

    QString failure;
    int row = 0, col = 0;
    bool ok = false;
    try {
        ok = formula.Run(result) == 1;
        if (!ok) {
            failure = formula.GetErrorMessage();
            row = formula.GetErrorRow();
            col = formula.GetErrorCol();
        }
    } catch (const CRpnException &e) {
        failure = e.GetErrorMessage();
        row = e.row;
        col = e.col;
    } catch (const std::exception &e) {
        failure = QString::fromUtf8(e.what());
    }

    if (bound) {
        formula.SwapLocalVariables(formerLocals);
        bound->m_parent = nullptr;
        if (t_bindings == &binding)
            t_bindings = binding.outer;
    }
    formula.throwOnError = throwing;
    formula.m_getVariable = getter;
    formula.m_setVariable = setter;
    formula.m_runData1 = runData1;
    formula.m_runData2 = runData2;
    formula.m_rowIndex = rowIndex;
    if (ok)
        return true;
    result.SetNull();
    node->ReportText(status, innerMessage(failure, row, col));
    return false;
}

// A variable of the calling tree as it stands now: in the running call's
// frame, through the host's getter, or in the locals and main dictionary.
bool readCallerVariable(CEquationTree *caller, const QString &name, CRpnData &value)
{
    if (!caller)
        return false;
    if (!caller->GetCallFrame() && caller->m_getVariable) {
        int found = 1;
        caller->m_getVariable(value, -1, caller->m_rowIndex, caller->m_runData1, caller->m_runData2, nullptr, name,
                              found);
        return found != 0;
    }
    if (CRpnData *slot = caller->FindVariable(name)) {
        value = *slot;
        return true;
    }
    return false;
}

} // namespace

// --- Formula ---------------------------------------------------------------------------------------

void CNodeFormula::Evaluate(CRpnData &result, unsigned char &status)
{
    CRpnNode *operand = GetOperandCount() > 0 ? m_children[0] : nullptr;
    if (!operand) {
        result.SetNull();
        return;
    }
    if (!HasStackRoom(status)) {
        result.SetNull();
        return;
    }

    // The operand is looked at, not judged: names without a value, a
    // division by zero or an exception leave no trace in the calling tree.
    CEquationTree *tree = m_tree;
    CRpnData value;
    {
        std::int32_t quiet = 0, row = -1, col = -1;
        QString token, text;
        int listed = 0;
        if (tree) {
            quiet = tree->m_quietUnknown;
            tree->m_quietUnknown = 1;
            row = tree->errorRow;
            col = tree->errorCol;
            token = tree->errorToken;
            text = tree->errorText;
            listed = int(tree->GetErrorList().size());
        }
        unsigned char own = 1;
        try {
            operand->Evaluate(value, own);
        } catch (const std::exception &) {
            own = 0;
        }
        if (own == 0)
            value.SetNull();
        if (tree) {
            tree->m_quietUnknown = quiet;
            tree->errorRow = row;
            tree->errorCol = col;
            tree->errorToken = token;
            tree->errorText = text;
            tree->TruncateErrorList(listed);
        }
    }

    if (value.IsString()) {
        if (CEquationTree *formula = compileFormula(this, tree, value.GetTextValue(), status))
            result.SetFormula(formula);
        else
            result.SetNull();
        return;
    }
    if (operand->IsFormula() && value.IsFormula()) {
        result = value;
        return;
    }
    formulaOfSubtree(tree, operand, result);
}

// --- Eval ------------------------------------------------------------------------------------------

void CNodeEval::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    CRpnData value;
    if (count == 0 || !m_children[0]) {
        result.SetNull();
        return;
    }
    if (!EvaluateOrPass(m_children[0], value, result, status))
        return;
    if (!value.IsFormula() && !value.IsString()) {
        // Anything else is its own value.
        result = std::move(value);
        return;
    }

    CMapStringToRpnData bound;
    bound.m_caseSensitive = !m_tree || m_tree->m_caseSensitiveNames;
    if (count == 2) {
        CRpnData names;
        if (!EvaluateOrPass(m_children[1], names, result, status))
            return;
        if (!names.IsDictionary() || !names.GetDictionary()) {
            ReportText(status, RpnMessage(kMsgMissingParameter, {GetName(), 3}));
            result.SetNull();
            return;
        }
        const CMapStringToRpnData *map = names.GetDictionary();
        for (int i = 0; i < map->GetCount(); ++i)
            bound.SetAt(map->GetSpelling(map->GetKeyAt(i)), map->GetValueAt(i));
    } else {
        for (int i = 1; i < count; i += 2) {
            QString name;
            if (!nameOfOperand(this, i, name, result, status))
                return;
            if (i + 1 >= count) {
                ReportText(status, RpnMessage(kMsgMissingParameter, {GetName(), i + 2}));
                result.SetNull();
                return;
            }
            CRpnData bind;
            if (m_children[std::size_t(i) + 1] && !EvaluateOrPass(m_children[std::size_t(i) + 1], bind, result, status))
                return;
            bound.SetAt(name, bind);
        }
    }

    std::unique_ptr<CEquationTree> temporary;
    CEquationTree *formula = formulaOfValue(this, value, temporary, status);
    if (!formula) {
        result.SetNull();
        return;
    }
    runFormula(this, *formula, bound.IsEmpty() ? nullptr : &bound, false, result, status);
}

// --- EvalM -----------------------------------------------------------------------------------------

void CNodeEvalUnMarked::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    CRpnData value;
    if (count == 0 || !m_children[0]) {
        result.SetNull();
        status = 0;
        return;
    }
    if (!EvaluateOrPass(m_children[0], value, result, status))
        return;
    std::unique_ptr<CEquationTree> temporary;
    CEquationTree *formula = formulaOfValue(this, value, temporary, status);
    if (!formula) {
        result.SetNull();
        return;
    }
    QStringList names;
    for (int i = 1; i < count; ++i) {
        QString name;
        if (!nameOfOperand(this, i, name, result, status))
            return;
        names.append(name);
    }

    // The marked variables take the caller's value of their name.
    const Qt::CaseSensitivity cs = formula->m_caseSensitiveNames ? Qt::CaseSensitive : Qt::CaseInsensitive;
    CMapStringToRpnData marked;
    WalkTree(formula->GetRoot(), [&](CRpnNode *node) {
        CNodeVariable *variable = node->AsVariable();
        if (!variable || variable->IsConstant() || marked.FindHere(variable->m_name))
            return 0;
        for (const QString &name : names) {
            CRpnData current;
            if (variable->m_name.compare(name, cs) == 0 && readCallerVariable(m_tree, variable->m_name, current)) {
                marked.SetAt(variable->m_name, current);
                break;
            }
        }
        return 0;
    });

    // A failed run is reported unless an error stands already (the first wins).
    runFormula(this, *formula, marked.IsEmpty() ? nullptr : &marked, true, result, status);
}

// --- EvalVars --------------------------------------------------------------------------------------

void CNodeEvalVars::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    CRpnData value;
    if (count == 0 || !m_children[0]) {
        result.SetNull();
        status = 0;
        return;
    }
    if (!EvaluateOrPass(m_children[0], value, result, status))
        return;
    std::unique_ptr<CEquationTree> temporary;
    CEquationTree *formula = formulaOfValue(this, value, temporary, status);
    if (!formula) {
        result.SetNull();
        return;
    }

    QStringList allowed;
    for (int i = 1; i < count; ++i) {
        CRpnNode *child = m_children[std::size_t(i)];
        if (!child)
            continue;
        if (CNodeVariable *variable = child->AsVariable(); variable && !variable->IsConstant()) {
            allowed.append(variable->m_name);
            continue;
        }
        CRpnData names;
        if (!EvaluateOrPass(child, names, result, status))
            return;
        if (names.GetKind() == RPN_ARRAY) {
            for (int k = 0; k < names.GetSize(); ++k)
                allowed.append(CRpnData(names.GetItems()[k]).GetText(kDigits));
        } else {
            allowed.append(names.GetText(kDigits));
        }
    }

    // The formula's text is compiled again to list the names it uses.
    const QString text = expressionText(formula);
    CEquationTree check;
    check.CopySettingsFrom(*formula);
    check.BorrowFunctions(*formula);
    check.SwapLocalVariables(nullptr);
    check.m_freeVariables = 1;
    check.throwOnError = 0;
    QStringList used;
    if (check.Compile(text, nullptr, true, {}, &used) != 1) {
        reportInner(this, status, check);
        result.SetNull();
        return;
    }
    const Qt::CaseSensitivity cs = formula->m_caseSensitiveNames ? Qt::CaseSensitive : Qt::CaseInsensitive;
    for (const QString &name : used) {
        if (!allowed.contains(name, cs)) {
            ReportText(status, RpnFormat(QStringLiteral("Invalid variable \"%s\"  in formula: %s "), {name, text}));
            result.SetNull();
            return;
        }
    }
    runFormula(this, *formula, nullptr, false, result, status);
}

// --- ReplaceF and the substitution ----------------------------------------------------------------

bool ReadSubstitutions(CRpnNodeList *call, int first, std::vector<CRpnSubstitution> &pairs, CRpnData &result,
                       unsigned char &status)
{
    const int count = call->GetOperandCount();
    for (int i = first; i < count; i += 2) {
        CRpnSubstitution pair;
        if (!nameOfOperand(call, i, pair.name, result, status))
            return false;
        if (i + 1 >= count) {
            call->ReportText(status, RpnMessage(kMsgMissingParameter, {call->GetName(), i + 2}));
            result.SetNull();
            return false;
        }
        if (!nameOfOperand(call, i + 1, pair.text, result, status))
            return false;
        pairs.push_back(pair);
    }
    return true;
}

void SubstituteInFormula(CRpnNode *call, const CRpnData &formula, const std::vector<CRpnSubstitution> &pairs,
                         CRpnData &result, unsigned char &status)
{
    const CEquationTree *from = formula.IsFormula() ? formula.GetFormula() : nullptr;
    if (!from) {
        status = 0;
        result.SetNull();
        return;
    }
    // The result is a new formula; the one given stays as it was.
    CEquationTree *tree = newFormulaTree(from);
    tree->SetRoot(from->GetRoot() ? CloneSubtree(from->GetRoot(), tree) : nullptr);
    std::unique_ptr<CEquationTree> owner(tree);

    for (const CRpnSubstitution &pair : pairs) {
        std::vector<CNodeVariable *> hits;
        WalkTree(tree->GetRoot(), [&](CRpnNode *node) {
            if (CNodeVariable *variable = node->AsVariable();
                variable && !variable->IsConstant() && variable->m_name.compare(pair.name, Qt::CaseInsensitive) == 0)
                hits.push_back(variable);
            return 0;
        });
        if (hits.empty())
            continue;
        std::unique_ptr<CEquationTree> replacement(compileFormula(call, tree, pair.text, status));
        if (!replacement) {
            result.SetNull();
            return;
        }
        // An empty text puts NULL in the place.
        const CRpnNode *expression = expressionOf(replacement->GetRoot());
        if (expression && (expression->IsEnd() || (expression->IsList() && !expression->HasOperands())))
            expression = nullptr;
        for (CNodeVariable *variable : hits) {
            CRpnNode *copy = expression ? CloneSubtree(expression, tree) : new CNodeNULL;
            copy->m_tree = tree;
            CRpnNode *parent = variable->m_parent;
            const int index = parent ? parent->IndexOfChild(variable) : -1;
            if (index >= 0) {
                parent->SetOperand(index, copy);
                copy->m_parent = parent;
                DeleteSubtree(variable);
            } else {
                tree->SetRoot(copy); // the variable was the root; SetRoot frees it
            }
        }
    }
    // The root again, for the bound variables and the fast paths.
    tree->SetRoot(tree->TakeRoot());
    tree->SetSource(from->GetSource());
    result.SetFormula(owner.release());
}

void CNodeReplaceFormula::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    CRpnData value;
    if (count == 0 || !m_children[0]) {
        result.SetNull();
        status = 0;
        return;
    }
    if (!EvaluateOrPass(m_children[0], value, result, status))
        return;
    std::vector<CRpnSubstitution> pairs;
    if (!ReadSubstitutions(this, 1, pairs, result, status))
        return;
    if (value.IsString()) {
        // Compiled first, so that only whole names are hit.
        CEquationTree *compiled = compileFormula(this, m_tree, value.GetTextValue(), status);
        if (!compiled) {
            result.SetNull();
            return;
        }
        value.SetFormula(compiled);
    }
    SubstituteInFormula(this, value, pairs, result, status);
}

void ProvideFormulaNodes(CRpnPrototypeArray &prototypes)
{
    CRpnNode *const nodes[] = {new CNodeFormula, new CNodeEval, new CNodeEvalUnMarked, new CNodeEvalVars,
                               new CNodeReplaceFormula};
    for (CRpnNode *node : nodes)
        prototypes.SetAt(node->GetKind(), node);
}
