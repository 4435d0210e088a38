// Reporting, argument reading and the bases of list and script functions.

#include "functions/rpnfunctionbase.h"

#include "formula/rpndictionary.h"
#include "formula/rpnformulavalue.h"
#include "formula/rpntree.h"

#include <cmath>
#include <new>

namespace {

constexpr int kMsgNotForComplex = 43217;
constexpr int kMostFastOperands = 16;

const char *const kOnlyParameter = "If first parameter is an Array or Graph. It must be the only parameter.";
const char *const kInvalidEntry = "Invalid entry.";
const char *const kBadCell = "Cell %i of the array is not a valid number.";
const char *const kBadParameter = "Parameter %i is not a valid number.";

// Row, column and the message, no function name: the reading of numbers.
void reportNumber(CRpnNode *node, unsigned char &status, const char *pattern, int oneBased)
{
    ReportFunctionText(node, status, RpnFormat(QString::fromLatin1(pattern), {oneBased}), false);
}

void mergeDictionary(CMapStringToRpnData &map, const CRpnData &dictionary, bool upperNames)
{
    const CMapStringToRpnData *from = dictionary.GetDictionary();
    if (!from)
        return;
    for (int i = 0; i < from->GetCount(); ++i) {
        const QString name = from->GetSpelling(from->GetKeyAt(i));
        map.SetAt(upperNames ? name.toUpper() : name, from->GetValueAt(i));
    }
}

// Doubles for RealList: on the stack for short lists.
class RealBuffer
{
public:
    explicit RealBuffer(int count)
    {
        if (count > Inline) {
            m_heap.resize(std::size_t(count));
            m_data = m_heap.data();
        }
    }
    double *data() { return m_data; }

private:
    static constexpr int Inline = 16;
    double m_inline[Inline];
    double *m_data = m_inline;
    std::vector<double> m_heap;
};

} // namespace

// --- reporting ------------------------------------------------------------------------------

QString RpnSourceLine(const QString &source, int position)
{
    if (position < 0)
        position = 0;
    if (position > source.size())
        position = int(source.size());
    const qsizetype begin = position > 0 ? source.lastIndexOf(u'\n', position - 1) + 1 : 0;
    qsizetype end = source.indexOf(u'\n', position);
    end = end < 0 ? source.size() : end + 1;
    return source.mid(begin, end - begin);
}

void ReportFunctionFailure(CRpnNode *node, unsigned char &status, const QString &text)
{
    status = 0;
    CEquationTree *tree = node->m_tree;
    if (!tree)
        return;
    // A series of failing rows: once the message stands and the list is
    // full, nothing is kept and no text needs making.
    const bool listFull = tree->GetErrorList().size() >= CEquationTree::MaxErrorList;
    if (tree->HasError() && listFull && !tree->throwOnError)
        return;
    // The line keeps its own line feed; the last line of a text has none,
    // and a blank keeps it apart from the message.
    QString message = RpnSourceLine(tree->GetSource(), node->m_position);
    if (!message.isEmpty() && !message.back().isSpace())
        message += u' ';
    message += text;
    // In throwing mode this throws and nothing joins the list.
    tree->ReportError(status, message, node->GetName(), node->m_row, node->m_col);
    tree->AddToErrorList(message);
}

void ReportFunctionText(CRpnNode *node, unsigned char &status, const QString &text, bool withName)
{
    ReportRpnError(node->m_tree, status, text, withName ? node->GetName() : QString(), node->m_row, node->m_col);
}

namespace {
constexpr int kMsgTooManyCells = 43310;
constexpr int kMsgMissingParameter = 43311;
constexpr int kMsgNoMemory = 43314;

QString countText(double cells)
{
    if (std::isnan(cells))
        return QStringLiteral("NaN");
    if (std::isinf(cells))
        return QStringLiteral("infinitely many");
    return QString::number(cells, 'g', 16);
}
} // namespace

void ReportMissingParameter(CRpnNode *node, unsigned char &status, int oneBased)
{
    ReportFunctionText(node, status, RpnMessage(kMsgMissingParameter, {node->GetName(), oneBased}));
}

bool CheckArrayCells(CRpnNode *node, unsigned char &status, double cells, bool reals)
{
    const std::int64_t most = reals ? RpnMaxRealArrayCells : RpnMaxArrayCells;
    if (cells <= double(most))
        return true;
    ReportFunctionText(node, status,
                       RpnMessage(kMsgTooManyCells, {node->GetName(), countText(cells), std::int64_t(most)}));
    return false;
}

void ReportOutOfMemory(CRpnNode *node, unsigned char &status, double cells)
{
    ReportFunctionText(node, status, RpnMessage(kMsgNoMemory, {node->GetName(), countText(cells)}));
}

// --- arguments ------------------------------------------------------------------------------

void ReadNamedParam(CRpnNode *node, CMapStringToRpnData &map, unsigned char &status, bool upperNames)
{
    if (!node)
        return;
    if (node->IsPlainAssignment()) {
        CRpnNode *left = node->GetOperand(0);
        CRpnNode *right = node->GetOperand(1);
        if (!left || !right)
            return;
        QString name;
        if (CNodeVariable *variable = left->AsVariable()) {
            name = variable->m_name;
        } else {
            CRpnData key;
            left->Evaluate(key, status);
            if (status == 0 || !key.IsString())
                return;
            name = key.GetTextValue();
        }
        CRpnData value;
        right->Evaluate(value, status);
        if (status != 1 || name.isEmpty())
            return;
        if (upperNames)
            name = name.toUpper();
        if (value.IsDictionary())
            mergeDictionary(map, value, upperNames);
        else
            map.SetAt(name, value);
        return;
    }
    CRpnData value;
    node->Evaluate(value, status);
    if (status != 0 && value.IsDictionary())
        mergeDictionary(map, value, upperNames);
}

bool WriteBackParameter(CRpnNode *argument, const CRpnData &value, unsigned char &status)
{
    CNodeVariable *variable = argument ? argument->AsVariable() : nullptr;
    if (!variable || variable->IsConstant())
        return false;
    variable->SetValue(value, status);
    return true;
}

CRpnValueList::CRpnValueList(int count) : m_count(count)
{
    if (count <= InlineCount) {
        m_items = reinterpret_cast<CRpnData *>(m_inline);
    } else {
        m_items = static_cast<CRpnData *>(::operator new(sizeof(CRpnData) * std::size_t(count)));
    }
    for (int i = 0; i < count; ++i)
        new (m_items + i) CRpnData;
}

CRpnValueList::~CRpnValueList()
{
    for (int i = 0; i < m_count; ++i)
        m_items[i].~CRpnData();
    if (m_count > InlineCount)
        ::operator delete(m_items);
}

// --- numeric list functions ---------------------------------------------------------------------

void CNodeMultiOperand_Numbers::Evaluate(CRpnData &result, unsigned char &status)
{
    if (!HasStackRoom(status)) {
        result.SetNull();
        return;
    }
    if (m_fastValue && !IsStopping()) {
        double x;
        if (EvaluateFast(x)) {
            result.SetDouble(x);
            return;
        }
    }
    const int count = GetOperandCount();
    CRpnValueList values(count);
    bool formula = false;
    for (int i = 0; i < count; ++i) {
        CRpnNode *child = m_children[std::size_t(i)];
        if (child)
            child->Evaluate(values[i], status);
        if (status == 0) {
            result.SetNull();
            return;
        }
        if (status == 10 || IsStopping()) {
            result = values[i];
            return;
        }
        formula = formula || values[i].IsFormula();
    }
    if (formula) {
        MakeFormulaOfNode(this, values.data(), count, result);
        return;
    }
    ClassifyAndCompute(result, values.data(), count, status);
}

bool CNodeMultiOperand_Numbers::EvaluateFast(double &out)
{
    const int count = GetOperandCount();
    if (count < 1 || count > kMostFastOperands)
        return false;
    double values[kMostFastOperands];
    for (int i = 0; i < count; ++i) {
        CRpnNode *child = m_children[std::size_t(i)];
        if (!child || !child->EvaluateFast(values[i]))
            return false;
    }
    unsigned char st = 1;
    out = RealList(values, count, st);
    return st == 1;
}

double CNodeMultiOperand_Numbers::ApplyReal(double a, double b, unsigned char &status)
{
    const double values[2] = {a, b};
    return RealList(values, GetOperandCount() >= 2 ? 2 : 1, status);
}

int CNodeMultiOperand_Numbers::GetRealPath() const
{
    const int count = GetOperandCount();
    return count >= 1 && count <= kMostFastOperands ? RPN_REAL_PATH_PLAIN : RPN_REAL_PATH_NONE;
}

void CNodeMultiOperand_Numbers::ClassifyAndCompute(CRpnData &result, const CRpnData *values, int count,
                                                   unsigned char &status)
{
    bool array = false, complex = false;
    for (int i = 0; i < count; ++i) {
        array = array || values[i].IsArrayOrCurve();
        complex = complex || values[i].IsComplex();
    }

    if (array) {
        if (count > 1) {
            ReportFunctionText(this, status, QString::fromLatin1(kOnlyParameter), false);
            result.SetNull();
            return;
        }
        const CRpnData &v = values[0];
        const int n = v.GetSize();
        if (v.GetKind() == RPN_ARRAY_R) {
            result.SetDouble(RealList(v.GetRealData(), n, status));
            return;
        }
        if (v.GetKind() != RPN_ARRAY) {
            ReportFunctionText(this, status, QString::fromLatin1(kInvalidEntry), false);
            result.SetNull();
            return;
        }
        if (n == 0) {
            result.SetNull();
            return;
        }
        const CRpnData *cells = v.GetItems();
        if (cells[0].IsComplex()) {
            RealBuffer pairs(2 * n);
            for (int i = 0; i < n; ++i) {
                int ok = 0;
                const std::complex<double> z = cells[i].GetComplexChecked(ok);
                if (!ok) {
                    reportNumber(this, status, kBadCell, i + 1);
                    result.SetNull();
                    return;
                }
                pairs.data()[2 * i] = z.real();
                pairs.data()[2 * i + 1] = z.imag();
            }
            ComplexList(result, pairs.data(), 2 * n, status);
            return;
        }
        RealBuffer reals(n);
        for (int i = 0; i < n; ++i) {
            int ok = 0;
            reals.data()[i] = cells[i].GetDoubleChecked(ok);
            if (!ok) {
                reportNumber(this, status, kBadCell, i + 1);
                result.SetNull();
                return;
            }
        }
        result.SetDouble(RealList(reals.data(), n, status));
        return;
    }

    if (complex) {
        RealBuffer pairs(2 * count);
        for (int i = 0; i < count; ++i) {
            int ok = 0;
            const std::complex<double> z = values[i].GetComplexChecked(ok);
            if (!ok) {
                reportNumber(this, status, kBadParameter, i + 1);
                result.SetNull();
                return;
            }
            pairs.data()[2 * i] = z.real();
            pairs.data()[2 * i + 1] = z.imag();
        }
        ComplexList(result, pairs.data(), 2 * count, status);
        return;
    }

    RealBuffer reals(count);
    for (int i = 0; i < count; ++i) {
        int ok = 0;
        reals.data()[i] = values[i].GetDoubleChecked(ok);
        if (!ok) {
            reportNumber(this, status, kBadParameter, i + 1);
            result.SetNull();
            return;
        }
    }
    result.SetDouble(RealList(reals.data(), count, status));
}

void CNodeMultiOperand_Numbers::ComplexList(CRpnData &result, const double *, int, unsigned char &status)
{
    ReportError(status, kMsgNotForComplex, {GetName()});
    result.SetNull();
}

// --- script functions -------------------------------------------------------------------------------

void CNodeScriptFunction::Evaluate(CRpnData &result, unsigned char &status)
{
    result.SetNull();
    if (HasStackRoom(status))
        RunFunction(result, status);
}

void CNodeScriptFunction::Apply(CRpnData &result, const CRpnData &, const CRpnData &, unsigned char &status)
{
    RunFunction(result, status);
}

void CNodeScriptFunction::RunFunction(CRpnData &result, unsigned char &status)
{
    QString errorText;
    CRpnData value;
    if (DoFunction(value, errorText) > 0) {
        result = std::move(value);
        return;
    }
    result.SetNull();
    if (errorText.isEmpty() && m_tree && m_tree->HasError()) {
        status = 0; // a child failed and reported
        return;
    }
    ReportFunctionFailure(this, status, errorText);
}

bool CNodeScriptFunction::EvaluateOperand(int i, CRpnData &value)
{
    CRpnNode *child = i >= 0 && i < GetOperandCount() ? m_children[std::size_t(i)] : nullptr;
    if (!child) {
        value.SetNull();
        return false;
    }
    unsigned char st = 1;
    child->Evaluate(value, st);
    return st != 0;
}
