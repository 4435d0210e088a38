#pragma once
// CEquationTree: one compiled text with everything needed to run it, the
// only object that hosts of the language hold.
//
// A host makes a tree, calls Compile once and runs it as often as it likes:
// Run for a script, EvaluateTree for a value, EvaluateSeries for one double
// per data row.  Variables live, by the first that knows the name:
//   - a column the host bound to the name with BindColumn;
//   - while a user function runs, the call's own dictionary;
//   - the host's getter and setter (SetVariableAccess), when set;
//   - the locals given to Compile, then the tree's main dictionary, which
//     scripts see as "MainVariables".
// Values in the main dictionary survive between runs and between compiles.
//
// One thread compiles and runs a tree; another thread may only call Stop.

#include "formula/rpndata.h"
#include "formula/rpndictionary.h"
#include "formula/rpnenvironment.h"
#include "formula/rpnexception.h"
#include "formula/rpnkeywords.h"
#include "formula/rpnscanner.h"

#include "support/criticalsection.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <atomic>
#include <cstring>
#include <memory>
#include <vector>

class CRpnNode;
class CRpnNodeList;
class CRpnBuffer;
class CRpnUserFunction;
class CEquationTree;
class CRpnSeriesProgram;
class CRpnRowProgram;
class CRpnCallFrame;

// The host's variables.  The getter fills `result` and clears `found` when it
// does not know the name; `node` may be null.  The setter receives the new
// value and returns what is to be kept (usually the value itself).
using CRpnVariableGetter = void (*)(CRpnData &result, int index, int rowIndex, void *runData1,
                                     void *runData2, CRpnNode *node, const QString &name, int &found);
using CRpnVariableSetter = CRpnData (*)(const CRpnData &value, int index, int rowIndex, void *runData1,
                                         void *runData2, CRpnNode *node, const QString &name, double extra);

// Where the guarded run shows "Unknown Error..." when message boxes are
// allowed; null (the default) shows nothing.
using CRpnMessageBoxHook = void (*)(const QString &text, const QString &caption);
void SetRpnMessageBoxHook(CRpnMessageBoxHook hook);

// A column of doubles that a host binds to a variable name for series runs:
// the value of row r is values[r] when r < count and the row is valid
// (valid null, or valid[r] == 1), and the empty value otherwise.
struct CRpnColumnBinding
{
    QString name;
    const double *values = nullptr;
    const unsigned char *valid = nullptr;
    int count = 0;
};

// An object that lives as long as the tree that holds it.
class CEquationExtraData
{
public:
    virtual ~CEquationExtraData() = default;
};

// Keeps a further tree alive with its owner (formulas made during a run).
class CEquationExtra_Formula : public CEquationExtraData
{
public:
    explicit CEquationExtra_Formula(CEquationTree *tree) : m_tree(tree) {}
    ~CEquationExtra_Formula() override;
    CEquationTree *m_tree; // owned
};

class CEquationTree : public CRpnErrorFields
{
public:
    explicit CEquationTree(double hostFactor = 1.0);
    CEquationTree(const CEquationTree &) = delete;
    CEquationTree &operator=(const CEquationTree &) = delete;
    ~CEquationTree() override;

    // --- compiling -------------------------------------------------------------
    // Compiles `text`: its FUNCTION definitions, then the main text.  Names in
    // `localVariables` count as known and are read and written there at run
    // time (the map must outlive the runs); names of the main dictionary count
    // as known too.  Without `allowNewVariables` an unknown name is an error.
    // `variableMatcher` lets the host claim names as its own (index-bound)
    // variables.  `outVariableNames` receives the variables in the order of
    // their first use.  Returns 1, or 0 with the error fields set.
    int Compile(const QString &text, CMapStringToRpnData *localVariables = nullptr,
                bool allowNewVariables = true, const CRpnVariableMatcher &variableMatcher = {},
                QStringList *outVariableNames = nullptr);
    // Compiles the items of one function body; `parameters` holds the
    // parameter names.  The root is returned (null on failure).
    CRpnNode *CompileFunctionBody(const CRpnParserItemArray &items, CMapStringToRpnData &parameters);

    // --- running ---------------------------------------------------------------
    int SetVariableAccess(CRpnVariableGetter getter, CRpnVariableSetter setter);
    // Runs the root once with the given host pointers: ResetRun, PrepareRun(a,
    // b), evaluation.  A final status of 10 counts as 1.  The status is also
    // written to `status` when given.  The root's value is not kept.
    int Run(void *runData1 = nullptr, void *runData2 = nullptr, void *resultData = nullptr,
            unsigned char *status = nullptr, int a = 0, int b = 0);
    // The same, keeping the value: a text of one statement gives that
    // statement's value, a longer one the ARRAY of all.
    int Run(CRpnData &value);
    // Evaluates the root into `result`.
    void EvaluateTree(CRpnData &result, unsigned char &status);
    // For rowIndex from first to last: the root's value as a double into
    // values[rowIndex] and its validity into valid[rowIndex]: 0 when the
    // evaluation failed, 2 for a NaN or an infinity, 1 otherwise (a denormal
    // result becomes 0.0).  Both arrays are indexed by row.  Returns the
    // number of rows marked 1.
    int EvaluateSeries(double *values, unsigned char *valid, int first, int last);
    void ResetRun();
    // PrepareRun(a, b) on every node in tree order, until an error appears.
    int PrepareRun(int a, int b);

    // --- host columns ----------------------------------------------------------
    // Binds the variables called `name` to a column (see CRpnColumnBinding);
    // a binding replaces an earlier one of the same name.  The data must stay
    // in place while the tree runs.  Series over bound columns only are
    // evaluated a block of rows at a time.
    void BindColumn(const QString &name, const double *values, const unsigned char *valid, int count);
    void ClearColumnBindings();
    // A bound name counts as a known (host) variable when texts are compiled.
    bool HasColumnBinding(const QString &name) const;

    // --- the compiled tree -------------------------------------------------------
    CRpnNode *GetRoot() const { return m_root; }
    // Replaces (and deletes) the root, and finds the host-bound variables again.
    void SetRoot(CRpnNode *root);
    // Gives the root to the caller; the tree is left without one.
    CRpnNode *TakeRoot();
    const QString &GetSource() const { return m_source; }
    // The tree written back as source: each user function ("Function name(
    // parameters) { body }", by name), then the root.  Compiled again it
    // gives an equal tree.  `indent` is passed to the nodes.
    void GetFormulaText(QString &out, int indent = 0) const;
    void SetSource(const QString &source) { m_source = source; }
    void SetHostData(void *hostData) { m_hostData = hostData; }
    void *GetHostData() const { return m_hostData; }

    // --- the guarded run ----------------------------------------------------------
    // Runs the root with the given host pointers and callbacks and restores
    // the former ones afterwards.  Every exception is caught.  Returns the
    // status (1 good, 0 failed); on failure `message` receives the text:
    // "Error:  %s at Row: %i   Col: %i" for an error of the tree, the
    // exception's own message, or "Unknown Error during formula calculation...".
    int ReportCalculation(void *runData1, void *runData2, void *resultData, CRpnVariableGetter getter,
                          CRpnVariableSetter setter, QString &message, bool allowMessageBoxes = false);

    // --- extras and stopping -------------------------------------------------------
    virtual int AddExtra(CEquationExtraData *data);
    // Asks a running evaluation to end at the next node; any thread may call it.
    virtual int Stop();
    bool IsStopping() const { return m_stop.load(std::memory_order_relaxed) != 0; }

    // --- variables ---------------------------------------------------------------
    CMapStringToRpnData *GetVariables() const { return m_variables.GetDictionary(); }
    // Shares another DICTIONARY value as the main dictionary (a host that
    // keeps variables over several trees).
    void SetVariables(const CRpnData &dictionary);
    const CRpnData &GetVariablesValue() const { return m_variables; }
    CMapStringToRpnData *GetLocalVariables() const { return m_locals; }
    // Puts other locals in their place (names bound for one run of a
    // formula) and returns the former ones.
    CMapStringToRpnData *SwapLocalVariables(CMapStringToRpnData *locals)
    {
        CMapStringToRpnData *former = m_locals;
        m_locals = locals;
        return former;
    }

    // --- user functions ---------------------------------------------------------------
    CRpnUserFunction *FindFunction(const QString &name) const { return m_functions.value(name); }
    const QHash<QString, CRpnUserFunction *> &GetFunctions() const { return m_functions; }
    // Uses the function records of another tree without owning them.
    void BorrowFunctions(const CEquationTree &other);
    // Adds a record and takes it over (when this tree owns its records).
    void AddFunction(CRpnUserFunction *function);

    // --- saving -------------------------------------------------------------------------
    // Writes or reads (after the buffer's mode) the whole compiled tree: the
    // buffer's version words, a word 0, the user functions, the node stream.
    // False when what was read is not a tree.
    bool Serialize(CRpnBuffer &buffer);

    // Takes over the host-facing settings of `other`: callbacks, run data,
    // throwing mode, case mode, keyword hook, angle setting, and shares its
    // main dictionary (formulas see the variables of the tree that made them).
    void CopySettingsFrom(const CEquationTree &other);

    // What the script reaches outside itself: output, message boxes, the
    // log, jobs.  Shared with the trees that CopySettingsFrom or
    // ShareEnvironment fill from this one.
    CRpnEnvironment &Environment() const { return *m_environment; }
    void ShareEnvironment(const CEquationTree &other)
    {
        m_environment = other.m_environment;
        m_defaultPrecision = other.m_defaultPrecision;
    }
    // Logs a stored variable when the environment logs (after each assignment).
    void LogVariable(const QString &name, const CRpnData &value)
    {
        if (m_environment->IsLogging())
            m_environment->LogVariable(this, name, value, m_defaultPrecision);
    }

    // The frame of the user function that runs now (null outside calls).
    CRpnCallFrame *GetCallFrame() const { return m_callFrame; }

    // A variable by name, as a text evaluated at run time sees it: in the
    // running call's frame, else (without a host getter) in the locals given
    // to Compile, then in the main dictionary.  Null when no place holds it.
    CRpnData *FindVariable(const QString &name);
    // Sets a variable by name in the same places; a new name is made in the
    // running call's frame, or else in the main dictionary.  False when the
    // host's setter holds the variables (it is then called instead).
    bool SetVariable(const QString &name, const CRpnData &value);

    // The tree's lock, for formula values shared between runs.
    CMyCriticalSection &GetLock() { return m_lock; }

    // --- sampling -------------------------------------------------------------------
    // A formula that runs once per sample of a curve (a series run) reads its
    // sampling context here: the step between samples and, where the samples
    // are not evenly spaced, the x value of each (`count` doubles, not owned,
    // may be null).  The sample index is m_rowIndex, which series runs
    // advance.  A tree without a context has step 0 and no x values.
    void SetSampling(double step, const double *x = nullptr, int count = 0);
    double GetSamplingStep() const { return m_samplingStep; }
    const double *GetSamplingX() const { return m_samplingX; }
    int GetSamplingCount() const { return m_samplingCount; }
    bool HasSampling() const { return m_samplingStep != 0.0 || m_samplingX; }
    std::uint32_t GetSampleIndex() const { return std::uint32_t(m_rowIndex); }
    // The x of sample `index`: the x value where the buffer has one, else
    // (index + 1) times the step (so the sample before the first lies at 0).
    double GetSampleX(std::int64_t index) const
    {
        if (m_samplingX && index >= 0 && index < m_samplingCount)
            return m_samplingX[index];
        return double(index + 1) * m_samplingStep;
    }

    // --- messages of failed functions -------------------------------------------------
    // Functions that report their failures as a text add each message here
    // (its source line in front) unless the tree throws.  The list keeps the
    // first MaxErrorList messages of a compiled text; Compile empties it.
    static constexpr int MaxErrorList = 1000;
    void AddToErrorList(const QString &message);
    const QStringList &GetErrorList() const { return m_errorList; }
    // Drops the messages after the first `count` (a series pass that takes
    // back what it reported).
    void TruncateErrorList(int count);

    // --- fields -----------------------------------------------------------------------
    std::int32_t m_quietUnknown = 0;   // an unknown variable is no error
    std::int32_t m_freeVariables = 0;  // names used before an assignment are no compile error
    std::vector<std::unique_ptr<CEquationExtraData>> m_extras;
    QString m_mainVariablesName = QStringLiteral("MainVariables");
    std::int32_t m_defaultPrecision = 16; // digits of printed and logged values, 1 to 31
    std::int32_t m_caseSensitiveNames = 1;
    std::int32_t m_listMode = 1;       // implicit commas while parsing
    std::int32_t m_compileMode = 0;    // the host's; the engine only keeps it
    std::int32_t m_angleMode = 0;      // 1: angles in degrees
    double m_hostFactor = 1.0;
    std::vector<CRpnNode *> m_macroNodes; // the variables bound to host slots (not owned)

    // Run data.
    std::int32_t m_rowIndex = 0;
    void *m_runData1 = nullptr;
    void *m_runData2 = nullptr;
    void *m_resultData = nullptr;
    unsigned char *m_statusOut = nullptr;
    std::int32_t m_runState = 0;
    CRpnVariableGetter m_getVariable = nullptr;
    CRpnVariableSetter m_setVariable = nullptr;
    QStringList m_warnings;
    CRpnKeywordHook m_keywordHook = nullptr;

    // Host columns, in a deque-like store so that nodes may point at them.
    std::vector<std::unique_ptr<CRpnColumnBinding>> m_columns;

private:
    friend class CNode_Function;
    friend class CRpnParser;

    void clear();
    void bindColumns();
    // Drops the programs made for series runs; the next series makes them again.
    void forgetSeriesPrograms();
    CRpnData m_variables;                  // always a DICTIONARY
    CMapStringToRpnData *m_locals = nullptr; // from Compile, not owned
    CRpnCallFrame *m_callFrame = nullptr;
    int m_callDepth = 0;
    std::atomic<int> m_stop{0};
    QHash<QString, CRpnUserFunction *> m_functions;
    bool m_ownsFunctions = true;
    CMyCriticalSection m_lock;
    CRpnNode *m_root = nullptr;
    QString m_source;
    void *m_hostData = nullptr;
    std::unique_ptr<CRpnSeriesProgram> m_series; // a block of rows at a time
    bool m_seriesChecked = false;
    std::unique_ptr<CRpnRowProgram> m_rows;      // a row at a time
    bool m_rowsChecked = false;
    double m_samplingStep = 0.0;
    const double *m_samplingX = nullptr; // not owned
    int m_samplingCount = 0;
    QStringList m_errorList;
    std::shared_ptr<CRpnEnvironment> m_environment = std::make_shared<CRpnEnvironment>();
};

// The validity byte of one series row: 0 when the status is not good (10
// counts as good), 2 for a NaN or an infinity, 1 otherwise; a denormal `x`
// becomes 0.0.
// The same for a good status, without branches, for the block loops.
inline unsigned char RpnSeriesValidityGood(double &x)
{
    std::uint64_t bits;
    std::memcpy(&bits, &x, sizeof bits);
    const std::uint64_t exponent = bits & 0x7FF0000000000000ull;
    const bool denormal = exponent == 0 && (bits & 0x000FFFFFFFFFFFFFull) != 0;
    x = denormal ? 0.0 : x;
    return exponent == 0x7FF0000000000000ull ? 2 : 1;
}

inline unsigned char RpnSeriesValidity(double &x, unsigned char status)
{
    return status == 1 || status == 10 ? RpnSeriesValidityGood(x) : 0;
}
