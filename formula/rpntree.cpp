// The equation tree: compiling, running, series, host columns, the guarded run.

#include "formula/rpntree.h"

#include "formula/rpnformulavalue.h"
#include "formula/rpnnodes.h"
#include "formula/rpnparser.h"
#include "formula/rpnprototypes.h"
#include "formula/rpnrowprogram.h"
#include "formula/rpnseries.h"
#include "formula/rpnuserfunction.h"

#include <cmath>
#include <exception>

namespace {

CRpnMessageBoxHook g_messageBoxHook = nullptr;

const char *const kUnknownError = "Unknown Error during formula calculation...";
const char *const kUnknownErrorBox = "Unknown Error...";
const char *const kCalculatorCaption = "TARN Calculator";

} // namespace

void SetRpnMessageBoxHook(CRpnMessageBoxHook hook)
{
    g_messageBoxHook = hook;
}

CEquationExtra_Formula::~CEquationExtra_Formula()
{
    delete m_tree;
}

CEquationTree::CEquationTree(double hostFactor) : m_hostFactor(hostFactor)
{
    RegisterLanguageCore();
    BuildKeywordTable();
    m_variables.SetDictionary();
    GetVariables()->m_caseSensitive = m_caseSensitiveNames != 0;
}

CEquationTree::~CEquationTree()
{
    clear();
}

void CEquationTree::clear()
{
    DeleteSubtree(m_root);
    m_root = nullptr;
    if (m_ownsFunctions)
        qDeleteAll(m_functions);
    m_functions.clear();
    m_ownsFunctions = true;
    m_macroNodes.clear();
    forgetSeriesPrograms();
}

void CEquationTree::forgetSeriesPrograms()
{
    m_series.reset();
    m_seriesChecked = false;
    m_rows.reset();
    m_rowsChecked = false;
}

// --- compiling ---------------------------------------------------------------------------

int CEquationTree::Compile(const QString &text, CMapStringToRpnData *localVariables, bool allowNewVariables,
                           const CRpnVariableMatcher &variableMatcher, QStringList *outVariableNames)
{
    clear();
    ResetError();
    m_errorList.clear();
    m_source = text;
    m_locals = localVariables;
    if (GetVariables()->IsEmpty())
        GetVariables()->m_caseSensitive = m_caseSensitiveNames != 0;

    // The locals follow the tree's case mode while their names are looked up.
    const bool localCase = localVariables ? localVariables->m_caseSensitive : true;
    if (localVariables)
        localVariables->m_caseSensitive = m_caseSensitiveNames != 0;
    struct RestoreCase
    {
        CMapStringToRpnData *map;
        bool value;
        ~RestoreCase()
        {
            if (map)
                map->m_caseSensitive = value;
        }
    } restore{localVariables, localCase};

    CRpnParserItemArray items, functionItems;
    if (!Scan(this, text, items, functionItems, variableMatcher)) {
        clear();
        return 0;
    }
    // All records first, so that functions may call each other.
    for (CRpnParserItem *item : functionItems.m_items) {
        auto *record = new CRpnUserFunction;
        record->m_owner = this;
        if (!ParseParameterList(this, text, *item->AsFunction(), *record)) {
            delete record;
            clear();
            return 0;
        }
        m_functions.insert(record->m_name, record);
    }
    for (CRpnParserItem *item : functionItems.m_items) {
        const CRpnParserFunction *definition = item->AsFunction();
        CRpnUserFunction *record = m_functions.value(definition->m_name);
        CMapStringToRpnData parameters;
        parameters.m_caseSensitive = m_caseSensitiveNames != 0;
        for (int i = 0; i < record->GetParameterCount(); ++i)
            parameters.SetAt(record->m_parameterNames[i], record->m_defaults.value(i));
        record->m_body = CompileFunctionBody(definition->m_body, parameters);
        if (!record->m_body) {
            clear();
            return 0;
        }
        record->BindSlots(m_caseSensitiveNames != 0);
    }
    CRpnParser parser(this, localVariables, allowNewVariables, false, outVariableNames);
    CRpnNode *root = parser.Parse(items);
    if (!root) {
        clear();
        return 0;
    }
    SetRoot(root);
    return 1;
}

CRpnNode *CEquationTree::CompileFunctionBody(const CRpnParserItemArray &items, CMapStringToRpnData &parameters)
{
    CRpnParser parser(this, &parameters, true, true, nullptr);
    CRpnNode *root = parser.Parse(items);
    PrepareFastPath(root);
    return root;
}

void CEquationTree::SetRoot(CRpnNode *root)
{
    if (root != m_root)
        DeleteSubtree(m_root);
    m_root = root;
    m_macroNodes.clear();
    WalkTree(m_root, [this](CRpnNode *node) {
        if (CNodeVariable *variable = node->AsVariable(); variable && variable->IsHostBound())
            m_macroNodes.push_back(variable);
        return 0;
    });
    PrepareFastPath(m_root);
    bindColumns();
}

CRpnData *CEquationTree::FindVariable(const QString &name)
{
    if (m_callFrame)
        return m_callFrame->Find(name);
    if (m_getVariable)
        return nullptr;
    if (m_locals) {
        if (CRpnData *value = m_locals->Find(name))
            return value;
    }
    return GetVariables()->FindHere(name);
}

bool CEquationTree::SetVariable(const QString &name, const CRpnData &value)
{
    if (m_callFrame) {
        m_callFrame->Set(name, value);
        return true;
    }
    if (m_setVariable) {
        m_setVariable(value, -1, m_rowIndex, m_runData1, m_runData2, nullptr, name, 0.0);
        return false;
    }
    if (m_locals) {
        if (CRpnData *slot = m_locals->Find(name)) {
            *slot = value;
            return true;
        }
    }
    GetVariables()->SetAt(name, value);
    return true;
}

CRpnNode *CEquationTree::TakeRoot()
{
    CRpnNode *root = m_root;
    m_root = nullptr;
    m_macroNodes.clear();
    forgetSeriesPrograms();
    return root;
}

// --- running -----------------------------------------------------------------------------

int CEquationTree::SetVariableAccess(CRpnVariableGetter getter, CRpnVariableSetter setter)
{
    m_getVariable = getter;
    m_setVariable = setter;
    forgetSeriesPrograms();
    return 1;
}

void CEquationTree::ResetRun()
{
    ResetRunTree(m_root);
    for (CRpnUserFunction *function : std::as_const(m_functions))
        ResetRunTree(function->m_body);
}

int CEquationTree::PrepareRun(int a, int b)
{
    const bool hadError = HasError();
    const int stopped = WalkTree(m_root, [&](CRpnNode *node) {
        node->PrepareRun(this, a, b);
        return !hadError && HasError() ? 1 : 0;
    });
    return stopped ? 0 : 1;
}

int CEquationTree::Run(void *runData1, void *runData2, void *resultData, unsigned char *status, int a, int b)
{
    m_runData1 = runData1;
    m_runData2 = runData2;
    m_resultData = resultData;
    m_statusOut = status;
    m_runState = 0;
    m_stop.store(0, std::memory_order_relaxed);
    ResetRun();
    silentName.clear();
    unsigned char st = 1;
    if (!PrepareRun(a, b)) {
        st = 0;
    } else if (m_root) {
        CRpnData value;
        m_root->Evaluate(value, st);
        if (st == 0 && !HasError())
            NoteSilentFailure(m_root->GetName(), m_root->m_row, m_root->m_col);
    }
    if (st == 10)
        st = 1;
    if (status)
        *status = st;
    return st;
}

int CEquationTree::Run(CRpnData &value)
{
    m_runState = 0;
    m_stop.store(0, std::memory_order_relaxed);
    ResetRun();
    silentName.clear();
    unsigned char st = 1;
    value.SetNull();
    if (!PrepareRun(0, 0)) {
        st = 0;
    } else if (m_root) {
        // A text of one statement has that statement's value.
        CRpnNode *root = m_root;
        if (root->IsList() && !root->IsMultiOperand() && root->GetOperandCount() == 1 && root->GetOperand(0))
            root = root->GetOperand(0);
        root->Evaluate(value, st);
        if (st == 0 && !HasError())
            NoteSilentFailure(root->GetName(), root->m_row, root->m_col);
    }
    if (st == 10)
        st = 1;
    return st;
}

void CEquationTree::EvaluateTree(CRpnData &result, unsigned char &status)
{
    if (m_root)
        m_root->Evaluate(result, status);
    else
        result.SetNull();
}

int CEquationTree::EvaluateSeries(double *values, unsigned char *valid, int first, int last)
{
    if (last < first)
        return 0;
    m_stop.store(0, std::memory_order_relaxed);
    if (!m_seriesChecked) {
        m_series = CRpnSeriesProgram::Build(this);
        m_seriesChecked = true;
    }
    if (m_series && !throwOnError) {
        const int good = m_series->Run(this, values, valid, first, last);
        if (good >= 0)
            return good;
        // Made for another getter: made again at the next series.
        m_series.reset();
        m_seriesChecked = false;
    }

    // The double of a one-element list is its element's: the lists round a
    // single expression are passed over.
    CRpnNode *top = m_root;
    while (top && top->IsList() && !top->IsMultiOperand() && top->GetOperandCount() == 1 && top->GetOperand(0))
        top = top->GetOperand(0);
    // A formula on plain numbers runs as steps; a row they cannot tell goes
    // through the tree (see rpnrowprogram.h).
    if (m_rows && !m_rows->IsFor(this))
        forgetSeriesPrograms();
    if (!m_rowsChecked) {
        m_rows = top ? CRpnRowProgram::Build(this, top) : nullptr;
        m_rowsChecked = true;
    }
    if (m_rows)
        return m_rows->Series(this, top, values, valid, first, last);
    int good = 0;
    for (int row = first; row <= last; ++row) {
        if (IsStopping()) {
            for (int r = row; r <= last; ++r)
                valid[r] = 0;
            break;
        }
        m_rowIndex = row;
        // A row may look names up (and so hash strings): see rpnseries.h.
        RpnClearUpperVectorState();
        unsigned char st = 1;
        double x = top ? top->EvaluateReal(st) : 0.0;
        valid[row] = RpnSeriesValidity(x, st);
        values[row] = x;
        good += valid[row] == 1;
    }
    return good;
}

// --- host columns --------------------------------------------------------------------------

void CEquationTree::BindColumn(const QString &name, const double *values, const unsigned char *valid, int count)
{
    CRpnColumnBinding *binding = nullptr;
    for (const auto &c : m_columns) {
        if (c->name == name)
            binding = c.get();
    }
    if (!binding) {
        m_columns.push_back(std::make_unique<CRpnColumnBinding>());
        binding = m_columns.back().get();
        binding->name = name;
    }
    binding->values = values;
    binding->valid = valid;
    binding->count = count;
    bindColumns();
}

bool CEquationTree::HasColumnBinding(const QString &name) const
{
    for (const auto &c : m_columns) {
        if (c->name == name)
            return true;
    }
    return false;
}

void CEquationTree::ClearColumnBindings()
{
    m_columns.clear();
    bindColumns();
}

void CEquationTree::bindColumns()
{
    WalkTree(m_root, [this](CRpnNode *node) {
        if (CNodeVariable *variable = node->AsVariable()) {
            variable->m_column = nullptr;
            for (const auto &c : m_columns) {
                if (c->name == variable->m_name && !variable->IsConstant())
                    variable->m_column = c.get();
            }
        }
        return 0;
    });
    forgetSeriesPrograms();
}

// --- the guarded run ------------------------------------------------------------------------

int CEquationTree::ReportCalculation(void *runData1, void *runData2, void *resultData, CRpnVariableGetter getter,
                                     CRpnVariableSetter setter, QString &message, bool allowMessageBoxes)
{
    void *const oldData1 = m_runData1, *const oldData2 = m_runData2, *const oldResult = m_resultData;
    const CRpnVariableGetter oldGetter = m_getVariable;
    const CRpnVariableSetter oldSetter = m_setVariable;
    m_getVariable = getter;
    m_setVariable = setter;
    message.clear();
    int status = 0;
    try {
        unsigned char st = 1;
        Run(runData1, runData2, resultData, &st);
        status = st;
        if (status != 1 && HasError())
            message = RpnFormat(QString::fromLatin1(RPN_GUARDED_ERROR_FORMAT), {errorText, errorRow, errorCol});
    } catch (const CRpnErrorException &e) {
        message = e.GetErrorMessage();
    } catch (const CRpnException &e) {
        message = e.GetErrorMessage();
    } catch (const std::exception &e) {
        message = QString::fromUtf8(e.what()).left(999);
    } catch (...) {
        message = QString::fromLatin1(kUnknownError);
        if (allowMessageBoxes && g_messageBoxHook)
            g_messageBoxHook(QString::fromLatin1(kUnknownErrorBox), QString::fromLatin1(kCalculatorCaption));
    }
    m_runData1 = oldData1;
    m_runData2 = oldData2;
    m_resultData = oldResult;
    m_getVariable = oldGetter;
    m_setVariable = oldSetter;
    return status;
}

// --- extras, stopping, variables, functions -------------------------------------------------------

int CEquationTree::AddExtra(CEquationExtraData *data)
{
    m_extras.emplace_back(data);
    return 0;
}

int CEquationTree::Stop()
{
    m_stop.store(1, std::memory_order_relaxed);
    return 1;
}

void CEquationTree::SetVariables(const CRpnData &dictionary)
{
    if (dictionary.IsDictionary() && dictionary.GetDictionary())
        m_variables = dictionary;
}

void CEquationTree::BorrowFunctions(const CEquationTree &other)
{
    if (&other == this)
        return;
    if (m_ownsFunctions)
        qDeleteAll(m_functions);
    m_functions = other.m_functions;
    m_ownsFunctions = false;
}

void CEquationTree::AddFunction(CRpnUserFunction *function)
{
    if (CRpnUserFunction *old = m_functions.value(function->m_name); old && old != function && m_ownsFunctions)
        delete old;
    m_functions.insert(function->m_name, function);
}

void CEquationTree::CopySettingsFrom(const CEquationTree &other)
{
    m_getVariable = other.m_getVariable;
    m_setVariable = other.m_setVariable;
    m_runData1 = other.m_runData1;
    m_runData2 = other.m_runData2;
    m_resultData = other.m_resultData;
    m_hostData = other.m_hostData;
    throwOnError = other.throwOnError;
    m_caseSensitiveNames = other.m_caseSensitiveNames;
    m_keywordHook = other.m_keywordHook;
    m_angleMode = other.m_angleMode;
    m_samplingStep = other.m_samplingStep;
    m_samplingX = other.m_samplingX;
    m_samplingCount = other.m_samplingCount;
    m_variables = other.m_variables;
    m_locals = other.m_locals;
    ShareEnvironment(other);
}

// --- sampling and the list of failed functions ---------------------------------------------------

void CEquationTree::SetSampling(double step, const double *x, int count)
{
    m_samplingStep = step;
    m_samplingX = count > 0 ? x : nullptr;
    m_samplingCount = m_samplingX ? count : 0;
}

void CEquationTree::AddToErrorList(const QString &message)
{
    if (m_errorList.size() < MaxErrorList)
        m_errorList.append(message);
}

void CEquationTree::TruncateErrorList(int count)
{
    if (count >= 0 && count < m_errorList.size())
        m_errorList.resize(count);
}
