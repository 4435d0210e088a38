#include "graphdata/graphdata.h"

#include "graphdata/columntransform.h"
#include "graphdata/grapherrors.h"
#include "graphdata/opendatatable.h"

#include <climits>
#include <cstdlib>
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

namespace {

const int kMessageNoMemory = 41210;
const int kDefaultGrowBy = 1000;
// The arrays hold count + 10 entries, so a capacity stays below this.
const int kMaxCapacity = INT_MAX - 16;

} // namespace

CGraphAttachment::~CGraphAttachment() = default;

// ---- CGraphData_Data -------------------------------------------------------

CGraphData_Data::CGraphData_Data()
{
    m_globalSlot = RegisterOpenGraphData(this);
}

CGraphData_Data::~CGraphData_Data()
{
    UnregisterOpenGraphData(this);
    if (m_ownsColumns) {
        releaseTable(m_columns, m_columnCount);
        releaseTable(m_logColumns, m_columnCount);
    }
    if (m_attachment)
        m_attachment->Release();
}

void CGraphData_Data::releaseTable(CGraphColumn **&table, int columns)
{
    if (!table)
        return;
    for (int i = 0; i < columns; ++i) {
        if (table[i])
            table[i]->Release();
    }
    delete[] table;
    table = nullptr;
}

void CGraphData_Data::Allocate(int columnCount, int capacity)
{
    if (columnCount < 0)
        columnCount = 0;
    if (capacity < 0)
        capacity = 0;
    if (capacity > kMaxCapacity)
        capacity = kMaxCapacity;
    CGraphColumn **table = new CGraphColumn *[std::size_t(columnCount)]();
    try {
        for (int i = 0; i < columnCount; ++i)
            table[i] = CGraphColumn::Create(capacity);
    } catch (...) {
        releaseTable(table, columnCount);
        throw;
    }
    m_columns = table;
    m_columnCount = columnCount;
    m_capacity = capacity;
    m_rowCount = 0;
}

CGraphColumn *CGraphData_Data::GetColumn(int index) const
{
    if (index < 0 || index >= m_columnCount || !m_columns)
        return nullptr;
    return m_columns[index];
}

CGraphColumn *CGraphData_Data::GetLogColumn(int index) const
{
    if (index < 0 || index >= m_columnCount || !m_logColumns)
        return nullptr;
    return m_logColumns[index];
}

int CGraphData_Data::GrowthStep() const
{
    const int base = m_growBy < 1 ? kDefaultGrowBy : m_growBy;
    const int half = m_capacity / 2;
    if (half > base)
        return half - half % base;
    return base;
}

CGraphColumn **CGraphData_Data::growTable(CGraphColumn **table, int columns, int copyRows, int target)
{
    CGraphColumn **fresh = new CGraphColumn *[std::size_t(columns)]();
    try {
        for (int i = 0; i < columns; ++i) {
            CGraphColumn *old = table[i];
            if (!old)
                continue;
            int rows = copyRows;
            if (rows > old->m_count)
                rows = old->m_count;
            if (old->RefCount() == 1) {
                // Nobody but this table holds the column (references are
                // only taken under the data lock, which we hold), so its
                // arrays can be resized where they are: for large blocks the
                // system moves the pages instead of copying them.  The
                // column joins the new table with a reference of its own;
                // releasing the old table drops the other.
                resizeInPlace(old, rows, target);
                old->AddRef();
                fresh[i] = old;
                continue;
            }
            CGraphColumn *column = CGraphColumn::Create(target);
            fresh[i] = column;
            column->CopySettingsFrom(*old);
            column->m_hostObject = old->m_hostObject;
            if (rows > 0) {
                std::memcpy(column->m_values, old->m_values, sizeof(double) * std::size_t(rows));
                std::memcpy(column->m_valid, old->m_valid, std::size_t(rows));
            }
        }
    } catch (...) {
        releaseTable(fresh, columns);
        throw;
    }
    return fresh;
}

void CGraphData_Data::resizeInPlace(CGraphColumn *column, int keepRows, int target)
{
    const std::size_t n = std::size_t(target) + 10;
    // Each block is replaced only when its realloc succeeds, and the count
    // only when both did, so a failure leaves a consistent column.
    auto *values = static_cast<double *>(std::realloc(column->m_values, n * sizeof(double)));
    if (!values)
        throw std::bad_alloc();
    column->m_values = values;
    auto *valid = static_cast<std::uint8_t *>(std::realloc(column->m_valid, n));
    if (!valid)
        throw std::bad_alloc();
    column->m_valid = valid;
    // Rows past those kept are missing.  Their values are left as they
    // come: nothing reads the value of a row whose byte is not 1.
    std::memset(valid + keepRows, 0, n - std::size_t(keepRows));
    column->m_count = target;
}

bool CGraphData_Data::growLocked(int target)
{
    if (m_resizing.load())
        return false;
    if (target < 0)
        target = 0;
    if (target > kMaxCapacity)
        target = kMaxCapacity;
    m_resizing.store(1);
    const int copyRows = m_rowCount < target ? m_rowCount : target;
    CGraphColumn **columns = nullptr;
    CGraphColumn **logColumns = nullptr;
    try {
        columns = growTable(m_columns, m_columnCount, copyRows, target);
        if (m_logColumns)
            logColumns = growTable(m_logColumns, m_columnCount, copyRows, target);
    } catch (const std::bad_alloc &) {
        releaseTable(columns, m_columnCount);
        m_resizing.store(0);
        return false;
    }
    // The old columns go by reference: a reader's snapshot keeps its own.
    // A host object belongs to the newest column only when its kind says
    // the column owns it; the old one must not delete it as well.
    for (int i = 0; i < m_columnCount; ++i) {
        if (m_columns[i] && m_columns[i] != columns[i] && m_columns[i]->m_kind == 2)
            m_columns[i]->m_hostObject = nullptr;
    }
    if (m_ownsColumns) {
        releaseTable(m_columns, m_columnCount);
        releaseTable(m_logColumns, m_columnCount);
    }
    m_columns = columns;
    m_logColumns = logColumns;
    m_ownsColumns = 1;
    m_capacity = target;
    m_rowCount = copyRows;
    m_resizing.store(0);
    return true;
}

bool CGraphData_Data::ensureRowsLocked(int row)
{
    if (m_columnCount == 0)
        return true;
    if (m_resizing.load())
        return false;
    if (row < m_capacity)
        return true;
    if (row < 0 || row >= kMaxCapacity)
        return false;
    const std::int64_t step = GrowthStep();
    std::int64_t target = std::int64_t(row) + 1;
    target -= target % step;
    while (target <= std::int64_t(row) + step)
        target += step;
    if (target > kMaxCapacity)
        target = kMaxCapacity;
    return growLocked(int(target));
}

bool CGraphData_Data::EnsureRows(int row)
{
    bool ok;
    {
        CCS_helper guard(m_lock);
        ok = ensureRowsLocked(row);
        if (ok || m_resizing.load())
            return ok;
    }
    ReportGraphError(kMessageNoMemory);
    return false;
}

bool CGraphData_Data::Grow(int target)
{
    {
        CCS_helper guard(m_lock);
        if (m_resizing.load())
            return false;
        if (growLocked(target))
            return true;
    }
    ReportGraphError(kMessageNoMemory);
    return false;
}

void CGraphData_Data::WriteCells(CGraphColumn *column, CGraphColumn *logColumn, const double *src,
                                 std::size_t stride, const std::uint8_t *srcValid, int firstRow, int rows)
{
    const int end = firstRow + rows;
    if (!column || column->m_count < end)
        return;
    double *dst = column->m_values + firstRow;
    std::uint8_t *dstValid = column->m_valid + firstRow;
    double lo = column->m_minValue, hi = column->m_maxValue;
    int r = 0;
    if (firstRow == 0) {
        // Row 0 sets the extents when it is valid; otherwise they stay.
        if ((!srcValid || srcValid[0] == 1) && std::isfinite(src[0]))
            lo = hi = src[0];
    }
    if (srcValid) {
        for (; r < rows; ++r) {
            const double v = src[r * stride];
            // A value that is not a finite number is never valid.
            const std::uint8_t b = std::isfinite(v) ? srcValid[r * stride] : 2;
            dst[r] = v;
            dstValid[r] = b;
            if (b == 1) {
                lo = v < lo ? v : lo;
                hi = v > hi ? v : hi;
            } else {
                column->m_hasInvalid = 1;
            }
        }
    } else {
        std::memset(dstValid, 1, std::size_t(rows));
        for (; r < rows; ++r) {
            const double v = src[r * stride];
            dst[r] = v;
            if (!std::isfinite(v)) {
                dstValid[r] = 2;
                column->m_hasInvalid = 1;
                continue;
            }
            lo = v < lo ? v : lo;
            hi = v > hi ? v : hi;
        }
    }
    column->m_minValue = lo;
    column->m_maxValue = hi;
    WriteLogCells(column, logColumn, firstRow, rows);
}

void CGraphData_Data::WriteLogCells(const CGraphColumn *column, CGraphColumn *logColumn, int firstRow, int rows)
{
    const int end = firstRow + rows;
    if (!logColumn || logColumn->m_count < end || column->m_count < end)
        return;
    double llo = logColumn->m_minValue, lhi = logColumn->m_maxValue;
    for (int row = firstRow; row < end; ++row) {
        const double v = column->m_values[row];
        if (column->m_valid[row] == 1 && v > 0) {
            const double l = std::log10(v);
            logColumn->m_values[row] = l;
            logColumn->m_valid[row] = 1;
            if (row == 0) {
                llo = lhi = l;
            } else {
                llo = l < llo ? l : llo;
                lhi = l > lhi ? l : lhi;
            }
        } else {
            logColumn->m_values[row] = 0;
            logColumn->m_valid[row] = 2;
            logColumn->m_hasInvalid = 1;
        }
    }
    logColumn->m_minValue = llo;
    logColumn->m_maxValue = lhi;
}

void CGraphData_Data::writeRowsLocked(const double *values, const std::uint8_t *validBytes, int firstColumn,
                                      int columnsInRow, int firstRow, int rows)
{
    const std::size_t stride = std::size_t(columnsInRow);
    for (int c = 0; c < columnsInRow; ++c) {
        const int index = firstColumn + c;
        WriteCells(m_columns[index], m_logColumns ? m_logColumns[index] : nullptr, values + c, stride,
                   validBytes ? validBytes + c : nullptr, firstRow, rows);
    }
}

int CGraphData_Data::AppendRows(const double *values, const std::uint8_t *validBytes, int firstColumn,
                                int columnsInRow, int firstRow, int rows)
{
    bool noMemory = false;
    {
        CCS_helper guard(m_lock);
        if (!values || firstColumn < 0 || firstColumn >= m_columnCount || columnsInRow < 1
            || columnsInRow > m_columnCount - firstColumn || rows < 1 || firstRow < 0
            || std::int64_t(firstRow) + rows > kMaxCapacity)
            return 0;
        const int end = firstRow + rows;
        if (end > m_capacity) {
            // Grow by whole steps; the step widens with the capacity, so
            // that appending stays linear however long the run.
            std::int64_t target = m_capacity;
            while (target < end)
                target += GrowthStep();
            if (target > kMaxCapacity)
                target = kMaxCapacity;
            if (m_resizing.load())
                return 0;
            if (!growLocked(int(target))) {
                noMemory = true;
            }
        }
        if (!noMemory) {
            writeRowsLocked(values, validBytes, firstColumn, columnsInRow, firstRow, rows);
            // The producer does not know of a row number column added for
            // the X axis: the rows it writes are numbered here.
            if (m_rowNumberColumn >= 0
                && (m_rowNumberColumn < firstColumn || m_rowNumberColumn >= firstColumn + columnsInRow))
                numberRowsLocked(firstRow, rows);
            if (firstRow < m_rowCount)
                ++m_generation; // rows already there were rewritten
            if (end > m_rowCount)
                m_rowCount = end;
            return rows;
        }
    }
    ReportGraphError(kMessageNoMemory);
    return 0;
}

bool CGraphData_Data::SwapColumns(int a, int b)
{
    CCS_helper guard(m_lock);
    if (a < 0 || b < 0 || a >= m_columnCount || b >= m_columnCount || !m_columns)
        return false;
    std::swap(m_columns[a], m_columns[b]);
    if (m_logColumns)
        std::swap(m_logColumns[a], m_logColumns[b]);
    if (m_rowNumberColumn == a || m_rowNumberColumn == b)
        m_rowNumberColumn = m_rowNumberColumn == a ? b : a;
    return true;
}

QString CGraphData_Data::RowNumberColumnName()
{
    return QStringLiteral("Index");
}

int CGraphData_Data::EnsureRowNumberColumn()
{
    CCS_helper guard(m_lock);
    const int named = ColumnByName(RowNumberColumnName());
    if (named >= 0)
        return named;
    if (IsScope() || !m_ownsColumns || m_resizing.load() || m_columnCount >= INT_MAX - 1)
        return -1;
    // The new tables are made before anything changes, so that running out
    // of memory leaves the data as they were.  Readers reach columns through
    // the lock or by reference, never through the old table.
    CGraphColumn *column = nullptr;
    CGraphColumn **table = nullptr;
    CGraphColumn **logTable = nullptr;
    try {
        column = CGraphColumn::Create(m_capacity, RowNumberColumnName());
        table = new CGraphColumn *[std::size_t(m_columnCount) + 1]();
        if (m_logColumns)
            logTable = new CGraphColumn *[std::size_t(m_columnCount) + 1]();
    } catch (const std::bad_alloc &) {
        if (column)
            column->Release();
        delete[] table;
        return -1;
    }
    for (int i = 0; i < m_columnCount; ++i)
        table[i] = m_columns ? m_columns[i] : nullptr;
    table[m_columnCount] = column;
    delete[] m_columns;
    m_columns = table;
    if (logTable) {
        for (int i = 0; i < m_columnCount; ++i)
            logTable[i] = m_logColumns[i];
        delete[] m_logColumns;
        m_logColumns = logTable;
    }
    m_rowNumberColumn = m_columnCount++;
    column->m_orderFlags = CGraphColumn::OrderAscending | CGraphColumn::OrderEvenStep;
    column->m_minStep = 1;
    numberRowsLocked(0, m_rowCount);
    return m_rowNumberColumn;
}

void CGraphData_Data::numberRowsLocked(int firstRow, int rows)
{
    CGraphColumn *column = GetColumn(m_rowNumberColumn);
    if (!column || rows < 1)
        return;
    std::vector<double> numbers(static_cast<std::size_t>(rows));
    for (int r = 0; r < rows; ++r)
        numbers[std::size_t(r)] = double(firstRow) + r + 1;
    WriteCells(column, GetLogColumn(m_rowNumberColumn), numbers.data(), 1, nullptr, firstRow, rows);
}

int CGraphData_Data::ColumnByName(const QString &name, int start) const
{
    if (start < 0)
        start = 0;
    for (int i = start; i < m_columnCount; ++i) {
        const CGraphColumn *column = m_columns[i];
        if (column && column->m_name.compare(name, Qt::CaseInsensitive) == 0)
            return i;
    }
    return -1;
}

CGraphColumn *CGraphData_Data::EnsureLogColumn(int index)
{
    CCS_helper guard(m_lock);
    if (index < 0 || index >= m_columnCount || !m_columns || !m_columns[index])
        return nullptr;
    try {
        if (!m_logColumns)
            m_logColumns = new CGraphColumn *[std::size_t(m_columnCount)]();
        if (!m_logColumns[index]) {
            CGraphColumn *log = CGraphColumn::Create(m_capacity);
            bool hasInvalid = false;
            LogOf(m_columns[index], log, m_rowCount, hasInvalid);
            m_logColumns[index] = log;
        }
    } catch (const std::bad_alloc &) {
        return nullptr;
    }
    return m_logColumns[index];
}

void CGraphData_Data::AssignIds()
{
    CCS_helper guard(m_lock);
    for (int i = 0; i < m_columnCount; ++i)
        AssignColumnId(m_columns[i]);
}

// ---- CScopeData_Data -------------------------------------------------------

CScopeData_Data::CScopeData_Data() = default;

CScopeData_Data::~CScopeData_Data()
{
    releaseTable(m_inputColumns, m_columnCount);
    releaseTable(m_minColumns, m_columnCount);
    releaseTable(m_maxColumns, m_columnCount);
    releaseTable(m_rawInput, m_columnCount);
}

void CScopeData_Data::Allocate(int columnCount, int capacity)
{
    CGraphData_Data::Allocate(columnCount, capacity);
    for (CGraphColumn ***table : {&m_inputColumns, &m_minColumns, &m_maxColumns, &m_rawInput}) {
        *table = new CGraphColumn *[std::size_t(m_columnCount)]();
        for (int i = 0; i < m_columnCount; ++i)
            (*table)[i] = CGraphColumn::Create(m_capacity);
    }
    m_channels.clear();
    m_channels.resize(std::size_t(m_columnCount));
    m_channelStates.assign(std::size_t(m_columnCount), 0);
    m_channelLog.Reset(CBufferIO::ModeWrite, 0);
    for (int channel = 1; channel < m_columnCount; ++channel) {
        m_channels[std::size_t(channel)].m_variableName = m_columns[channel]->m_name;
        std::int32_t kind = 1, index = channel;
        double input[3] = {0, 0, 0};
        m_channelLog.Transfer(kind);
        m_channelLog.Transfer(index);
        for (double &v : input)
            m_channelLog.Transfer(v);
    }
}

bool CScopeData_Data::growLocked(int target)
{
    const int copyRows = m_rowCount < target ? m_rowCount : target;
    CGraphColumn **tables[4] = {m_inputColumns, m_minColumns, m_maxColumns, m_rawInput};
    CGraphColumn **grown[4] = {nullptr, nullptr, nullptr, nullptr};
    try {
        for (int t = 0; t < 4; ++t) {
            if (tables[t])
                grown[t] = growTable(tables[t], m_columnCount, copyRows, target);
        }
    } catch (const std::bad_alloc &) {
        for (CGraphColumn **&table : grown)
            releaseTable(table, m_columnCount);
        return false;
    }
    if (!CGraphData_Data::growLocked(target)) {
        for (CGraphColumn **&table : grown)
            releaseTable(table, m_columnCount);
        return false;
    }
    CGraphColumn ***members[4] = {&m_inputColumns, &m_minColumns, &m_maxColumns, &m_rawInput};
    for (int t = 0; t < 4; ++t) {
        releaseTable(*members[t], m_columnCount);
        *members[t] = grown[t];
    }
    return true;
}

// ---- CGraphData ------------------------------------------------------------

CGraphData::CGraphData(bool scope)
{
    attach(scope ? new CScopeData_Data : new CGraphData_Data);
}

CGraphData::CGraphData(const CGraphData &other)
{
    attach(other.m_data);
}

CGraphData &CGraphData::operator=(const CGraphData &other)
{
    if (m_data != other.m_data) {
        CGraphData_Data *old = m_data;
        m_data = nullptr;
        attach(other.m_data);
        if (old && old->m_refCount.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete old;
    }
    return *this;
}

CGraphData::~CGraphData()
{
    detach();
}

CGraphData CGraphData::Adopt(CGraphData_Data *data)
{
    return CGraphData(data, AdoptTag{});
}

void CGraphData::attach(CGraphData_Data *data)
{
    m_data = data;
    m_data->m_refCount.fetch_add(1, std::memory_order_relaxed);
}

void CGraphData::detach()
{
    if (m_data && m_data->m_refCount.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete m_data;
    m_data = nullptr;
}

int CGraphData::RowCountLocked() const
{
    CCS_helper guard(m_data->m_lock);
    return m_data->m_rowCount;
}

void CGraphData::Create(int graphKind, int columnCount, int capacity, int growBy)
{
    const int oldGrowBy = m_data ? m_data->m_growBy : 0;
    CGraphData_Data *data = graphKind == 2 ? new CScopeData_Data : new CGraphData_Data;
    try {
        data->Allocate(columnCount, capacity);
    } catch (...) {
        delete data;
        throw;
    }
    data->m_growBy = growBy >= 1 ? growBy : oldGrowBy;
    detach();
    attach(data);
}
