// The channels of the oscilloscope form: the raw input as the producer
// appends it, and each channel's formula over it.

#include "graphdata/graphdata.h"

#include "formula/rpnnode.h"
#include "formula/rpnnodes.h"
#include "formula/rpntree.h"
#include "support/criticalsection.h"
#include "support/languagestring.h"

#include <algorithm>
#include <new>

namespace {

enum : int {
    kTextUsedBeforeAssigned = 43166,
    kTextErrorAt = 43771,
    kTextNoColumn = 43780,
    kTextNoChannel = 44200,
};

// Whether a column name can be written as a variable of a formula.
bool isVariableName(const QString &name)
{
    if (name.isEmpty() || !(name[0].isLetter() || name[0] == u'_'))
        return false;
    return std::all_of(name.begin(), name.end(), [](QChar c) { return c.isLetterOrNumber() || c == u'_'; });
}

// The index in `text` of line `row` (from 1), column `col` (from 0); -1
// when the text has no such place.
int positionOf(const QString &text, int row, int col)
{
    if (row < 1 || col < 0)
        return -1;
    qsizetype start = 0;
    for (int r = 1; r < row; ++r) {
        start = text.indexOf(u'\n', start);
        if (start < 0)
            return -1;
        ++start;
    }
    return int(std::min<qsizetype>(start + col, text.size()));
}

} // namespace

CScopeChannel::CScopeChannel() = default;
CScopeChannel::~CScopeChannel() = default;
CScopeChannel::CScopeChannel(CScopeChannel &&) noexcept = default;
CScopeChannel &CScopeChannel::operator=(CScopeChannel &&) noexcept = default;

QString CScopeData_Data::ChannelFormula(int channel) const
{
    CCS_helper guard(const_cast<CMyCriticalSection &>(m_lock));
    if (channel < 1 || channel >= int(m_channels.size()))
        return QString();
    return m_channels[std::size_t(channel)].m_formulaText;
}

bool CScopeData_Data::SetChannelFormula(int channel, const QString &text, QString *error, int *errorPosition)
{
    if (error)
        error->clear();
    if (errorPosition)
        *errorPosition = -1;
    std::unique_ptr<CEquationTree> tree;
    std::vector<int> inputs;
    QStringList inputNames;
    {
        CCS_helper guard(m_lock);
        if (channel < 1 || channel >= m_columnCount || channel >= int(m_channels.size())) {
            if (error)
                *error = LanguageString(kTextNoChannel).arg(channel);
            return false;
        }
        if (!text.trimmed().isEmpty()) {
            tree = std::make_unique<CEquationTree>();
            // The first of several columns of one name is the one read.
            for (int i = m_columnCount - 1; i >= 0; --i) {
                const CGraphColumn *column = m_columns[i];
                if (column && isVariableName(column->m_name))
                    tree->BindColumn(column->m_name, nullptr, nullptr, 0);
            }
        }
    }
    if (tree) {
        if (!tree->Compile(text, nullptr, true)) {
            if (error) {
                QString why = tree->errorText;
                if (!tree->errorToken.isEmpty() && why == LanguageString(kTextUsedBeforeAssigned)
                    && isVariableName(tree->errorToken))
                    why = LanguageString(kTextNoColumn).arg(tree->errorToken);
                *error = tree->errorRow >= 1 && tree->errorCol >= 0
                    ? LanguageString(kTextErrorAt).arg(why).arg(tree->errorRow).arg(tree->errorCol + 1)
                    : why;
            }
            if (errorPosition)
                *errorPosition = positionOf(text, tree->errorRow, tree->errorCol);
            return false;
        }
        // The columns the formula reads at its row.
        WalkTree(tree->GetRoot(), [&](CRpnNode *node) {
            const CNodeVariable *variable = node->AsVariable();
            if (variable && variable->m_column && !inputNames.contains(variable->m_name))
                inputNames.append(variable->m_name);
            return 0;
        });
    }
    CCS_helper guard(m_lock);
    if (channel >= m_columnCount)
        return false;
    for (const QString &name : inputNames) {
        int at = -1;
        for (int i = 0; i < m_columnCount && at < 0; ++i) {
            if (m_columns[i] && m_columns[i]->m_name == name)
                at = i;
        }
        inputs.push_back(at);
    }
    CScopeChannel &c = m_channels[std::size_t(channel)];
    // Rows already drawn are never rewritten in place: the channel gets a
    // fresh column, and readers keep the old one by their reference.
    CGraphColumn *fresh = nullptr, *freshLog = nullptr;
    try {
        fresh = CGraphColumn::Create(m_capacity);
        if (m_logColumns && m_logColumns[channel])
            freshLog = CGraphColumn::Create(m_capacity);
    } catch (const std::bad_alloc &) {
        if (fresh)
            fresh->Release();
        if (error)
            *error = LanguageString(41210);
        return false;
    }
    if (CGraphColumn *old = m_columns[channel]) {
        fresh->CopySettingsFrom(*old);
        if (freshLog && m_logColumns[channel])
            freshLog->CopySettingsFrom(*m_logColumns[channel]);
        old->Release();
    }
    m_columns[channel] = fresh;
    if (freshLog) {
        m_logColumns[channel]->Release();
        m_logColumns[channel] = freshLog;
    }
    c.m_formulaText = tree ? text : QString();
    c.m_formula = std::move(tree);
    c.m_inputs = std::move(inputs);
    c.m_inputNames = std::move(inputNames);
    c.m_boundTable = nullptr;
    fresh->m_minValue = fresh->m_maxValue = 0;
    fresh->m_hasInvalid = 0;
    if (m_rowCount > 0) {
        if (c.m_formula) {
            evaluateChannelLocked(channel, 0, m_rowCount - 1);
        } else if (const CGraphColumn *raw = m_rawInput ? m_rawInput[channel] : nullptr) {
            WriteCells(fresh, freshLog, raw->m_values, 1, raw->m_valid, 0, m_rowCount);
        }
    }
    ++m_generation;
    return true;
}

void CScopeData_Data::writeRowsLocked(const double *values, const std::uint8_t *validBytes, int firstColumn,
                                      int columnsInRow, int firstRow, int rows)
{
    const std::size_t stride = std::size_t(columnsInRow);
    for (int c = 0; c < columnsInRow; ++c) {
        const int index = firstColumn + c;
        const double *src = values + c;
        const std::uint8_t *srcValid = validBytes ? validBytes + c : nullptr;
        if (m_rawInput)
            WriteCells(m_rawInput[index], nullptr, src, stride, srcValid, firstRow, rows);
        const bool computed = index < int(m_channels.size()) && m_channels[std::size_t(index)].m_formula;
        if (!computed)
            WriteCells(m_columns[index], m_logColumns ? m_logColumns[index] : nullptr, src, stride, srcValid,
                       firstRow, rows);
    }
    // A channel's formula may read any raw column of these rows.
    for (int channel = 1; channel < int(m_channels.size()) && channel < m_columnCount; ++channel) {
        if (m_channels[std::size_t(channel)].m_formula)
            evaluateChannelLocked(channel, firstRow, firstRow + rows - 1);
    }
}

void CScopeData_Data::evaluateChannelLocked(int channel, int first, int last)
{
    CScopeChannel &c = m_channels[std::size_t(channel)];
    CGraphColumn *column = m_columns[channel];
    if (!column || !m_rawInput || last >= column->m_count || last < first)
        return;
    if (c.m_boundTable != m_rawInput) {
        // Bound again after the store grew: the raw columns are new ones.
        for (std::size_t i = 0; i < c.m_inputs.size(); ++i) {
            const CGraphColumn *raw = c.m_inputs[i] >= 0 ? m_rawInput[c.m_inputs[i]] : nullptr;
            c.m_formula->BindColumn(c.m_inputNames[int(i)], raw ? raw->m_values : nullptr,
                                    raw ? raw->m_valid : nullptr, raw ? raw->m_count : 0);
        }
        c.m_boundTable = m_rawInput;
    }
    c.m_formula->ResetRun();
    c.m_formula->ResetError();
    if (!c.m_formula->PrepareRun(first, last)) {
        std::fill(column->m_valid + first, column->m_valid + last + 1, std::uint8_t(2));
        column->m_hasInvalid = 1;
        return;
    }
    c.m_formula->EvaluateSeries(column->m_values, column->m_valid, first, last);
    double lo = column->m_minValue, hi = column->m_maxValue;
    bool seen = first > 0;
    for (int r = first; r <= last; ++r) {
        // A row where an input is not valid takes its validity (invalid
        // before missing); a row where the formula failed is invalid.
        std::uint8_t gap = 1;
        for (int input : c.m_inputs) {
            const CGraphColumn *raw = input >= 0 ? m_rawInput[input] : nullptr;
            const std::uint8_t v = raw && r < raw->m_count ? raw->m_valid[r] : 0;
            if (v != 1)
                gap = gap == 1 ? v : std::max(gap, v);
        }
        std::uint8_t &valid = column->m_valid[r];
        valid = gap != 1 ? gap : valid == 0 ? 2 : valid;
        if (valid != 1) {
            column->m_hasInvalid = 1;
            continue;
        }
        const double v = column->m_values[r];
        if (!seen) {
            lo = hi = v;
            seen = true;
        }
        lo = v < lo ? v : lo;
        hi = v > hi ? v : hi;
    }
    column->m_minValue = lo;
    column->m_maxValue = hi;
    column->m_orderFlags = 0;
    WriteLogCells(column, m_logColumns ? m_logColumns[channel] : nullptr, first, last - first + 1);
}
