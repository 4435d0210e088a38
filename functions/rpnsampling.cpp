// Int, Avg, HIPass and AvgX: running state over the samples of a curve.

#include "functions/rpnsampling.h"

#include "formula/rpnkeywords.h"
#include "formula/rpnseries.h"
#include "formula/rpntree.h"

#include <cmath>

// The x of sample i - 1 at i = 0 is 0 (CEquationTree::GetSampleX): the
// curve starts at x = 0.

// --- Int and Avg ----------------------------------------------------------------------------

CRpnNode *CNodeMoving::Clone(CEquationTree *tree, int position, int row, int col) const
{
    auto *node = static_cast<CNodeMoving *>(CNodeSingleOperand::Clone(tree, position, row, col));
    node->m_count = m_count;
    node->m_sum = m_sum;
    node->m_width = m_width;
    node->m_last = m_last;
    return node;
}

void CNodeMoving::ResetRun()
{
    m_count = 0;
    m_sum = 0.0;
    m_width = 0.0;
    m_last = 0.0;
}

double CNodeIntegral::ApplyReal(double a, double, unsigned char &)
{
    double dt = 0.0;
    if (m_tree) {
        const std::int64_t i = m_tree->GetSampleIndex();
        dt = m_tree->GetSampleX(i);
        if (m_count > 0)
            dt -= m_tree->GetSampleX(i - 1);
    }
    ++m_count;
    m_sum += (a + m_last) * dt * 0.5;
    m_width += dt;
    m_last = a;
    return m_sum;
}

double CNodeAvg::ApplyReal(double a, double, unsigned char &)
{
    double dt = 0.0;
    const std::int64_t i = m_tree ? std::int64_t(m_tree->GetSampleIndex()) : 0;
    if (m_count == 0) {
        if (m_tree)
            dt = m_tree->GetSampleX(i + 1) - m_tree->GetSampleX(i);
        m_sum = dt * a;
    } else {
        if (m_tree)
            dt = m_tree->GetSampleX(i) - m_tree->GetSampleX(i - 1);
        m_sum += (a + m_last) * dt * 0.5;
    }
    m_width += dt;
    m_last = a;
    ++m_count;
    return m_width != 0.0 ? m_sum / m_width : 0.0;
}

// --- HIPass ---------------------------------------------------------------------------------

CRpnNode *CNodeHiPassFilter::Clone(CEquationTree *tree, int position, int row, int col) const
{
    auto *node = static_cast<CNodeHiPassFilter *>(CNodeSingleOperand::Clone(tree, position, row, col));
    node->m_state1 = m_state1;
    node->m_state2 = m_state2;
    node->m_state3 = m_state3;
    return node;
}

void CNodeHiPassFilter::ResetRun()
{
    m_state1 = m_state2 = m_state3 = 0.0;
}

double CNodeHiPassFilter::ApplyReal(double input, double, unsigned char &)
{
    const double step = m_tree ? m_tree->GetSamplingStep() : 0.0;
    const double dt = step != 0.0 ? step : 1.0;
    const double a = 0.20264 / dt;
    const double b = dt / 0.02;
    const double p = m_state2 / a + m_state1;
    const double q = -m_state3 / b - m_state1;
    const double y = (p * a + q * b + input) / (b + 4.4563 + a);
    m_state1 = y;
    m_state2 = (y - p) * a;
    m_state3 = (y - q) * b;
    return m_state2;
}

// --- AvgX -------------------------------------------------------------------------------------

CNodeAvgX::~CNodeAvgX()
{
    DeleteSubtree(m_operand);
    DeleteSubtree(m_widthNode);
}

CRpnNode *CNodeAvgX::Clone(CEquationTree *tree, int position, int row, int col) const
{
    auto *node = static_cast<CNodeAvgX *>(CRpnNode::Clone(tree, position, row, col));
    node->m_values = m_values;
    node->m_validity = m_validity;
    node->m_first = m_first;
    node->m_last = m_last;
    node->m_span = m_span;
    return node;
}

bool CNodeAvgX::SetOperand(int i, CRpnNode *node)
{
    if (i == 0)
        m_operand = node;
    else if (i == 1)
        m_widthNode = node;
    else
        return false;
    if (node)
        node->m_parent = this;
    return true;
}

void CNodeAvgX::ResetRun()
{
    m_values.reset();
    m_validity.reset();
    m_first = m_last = 0;
    m_span = 0.0;
}

int CNodeAvgX::PrepareRun(CEquationTree *tree, int first, int last)
{
    // Without a sampling context there are no x positions to average over:
    // the node stays the operand itself.
    if (!tree || !tree->HasSampling() || last < first || first < 0 || !m_operand)
        return 0;
    // The block walk below goes by the sample index itself, also where the
    // run starts above 0 (it then reads what was stored for other samples);
    // room for last + 1 samples keeps that inside the buffers.
    const std::size_t size = std::size_t(last) + 1;
    auto values = std::make_shared<std::vector<double>>(size, 0.0);
    auto validity = std::make_shared<std::vector<unsigned char>>(size, FlagFailed);
    std::vector<double> &v = *values;
    std::vector<unsigned char> &f = *validity;

    const std::int32_t oldRow = tree->m_rowIndex;
    // An operand over bound columns runs a block of samples at a time; it
    // gives each sample the value and the flag the loop below would.
    std::unique_ptr<CRpnSeriesProgram> series;
    if (first == 0 && !tree->throwOnError)
        series = CRpnSeriesProgram::Build(tree, m_operand);
    if (!series || series->Run(tree, v.data(), f.data(), first, last) < 0) {
        for (int s = first; s <= last; ++s) {
            tree->m_rowIndex = s;
            RpnClearUpperVectorState(); // see rpnseries.h
            unsigned char st = 1;
            double y = m_operand->EvaluateReal(st);
            // Failed 0, NaN or infinity 2, else 1 (a denormal becomes 0.0).
            f[std::size_t(s - first)] = RpnSeriesValidity(y, st);
            v[std::size_t(s - first)] = y;
        }
    }
    unsigned char st = 1;
    m_span = m_widthNode ? m_widthNode->EvaluateReal(st) : 0.0;
    tree->m_rowIndex = oldRow;
    const double tolerance = std::pow(10.0, std::log10(m_span) - 7.0);

    // Where the run starts above 0, the "previous x" is the difference of
    // the first x and the one before, not a position; scripts see it so.
    double previous = first == 0 ? tree->GetSampleX(0) - tree->GetSamplingStep()
                                 : tree->GetSampleX(first) - tree->GetSampleX(first - 1);
    double covered = 0.0, weighted = 0.0, sum = 0.0;
    bool anyValid = false;
    int blockStart = first;
    for (int s = first; s <= last; ++s) {
        const double x = tree->GetSampleX(s);
        const double d = x - previous;
        previous = x;
        covered += d;
        if (f[std::size_t(s)] == FlagValid) {
            weighted += d;
            sum += d * v[std::size_t(s)];
            anyValid = true;
        }
        if (covered >= m_span - tolerance || s == last) {
            const double average = anyValid ? sum / weighted : 0.0;
            for (int k = blockStart; k <= s; ++k) {
                if (anyValid)
                    v[std::size_t(k)] = average;
                f[std::size_t(k)] = anyValid ? FlagValid : FlagNoValue;
            }
            covered = weighted = sum = 0.0;
            anyValid = false;
            blockStart = s + 1;
        }
    }
    m_values = std::move(values);
    m_validity = std::move(validity);
    m_first = first;
    m_last = last;
    return 1;
}

void CNodeAvgX::Evaluate(CRpnData &result, unsigned char &status)
{
    if (!m_values || !m_tree) {
        if (m_operand)
            m_operand->Evaluate(result, status);
        else
            result.SetNull();
        return;
    }
    const std::int64_t position = std::int64_t(m_tree->GetSampleIndex()) - m_first;
    if (position >= 0 && position < std::int64_t(m_validity->size())
        && (*m_validity)[std::size_t(position)] == FlagValid)
        result.SetDouble((*m_values)[std::size_t(position)]);
    else
        result.SetNull();
}

void CNodeAvgX::Apply(CRpnData &result, const CRpnData &a, const CRpnData &, unsigned char &)
{
    if (!m_validity || !m_tree) {
        result = a;
        return;
    }
    const std::int64_t position = std::int64_t(m_tree->GetSampleIndex()) - m_first;
    const bool inside = position >= 0 && position < std::int64_t(m_validity->size());
    result.SetInt(inside ? int((*m_validity)[std::size_t(position)]) : int(FlagFailed));
}

void ProvideSamplingFunctions(CRpnPrototypeArray &prototypes)
{
    CRpnNode *const nodes[] = {new CNodeAvg, new CNodeAvgX, new CNodeIntegral, new CNodeHiPassFilter};
    for (CRpnNode *node : nodes)
        prototypes.SetAt(node->GetKind(), node);
}
