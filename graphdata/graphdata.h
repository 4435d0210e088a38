#pragma once
// The data store of a graph: a table of named numeric columns that a
// producer thread may fill while the user-interface thread draws it.
//
// CGraphData is a one-pointer handle on a shared, counted CGraphData_Data
// (or CScopeData_Data for the oscilloscope form); copying a handle shares the
// data, the last handle deletes it.
//
// Locking.  Each data set has one lock, m_lock.  It is held to grow, to
// append rows and to take a snapshot (CGraphDataSnapshot): row count, column
// references and extents.  A reader then works on the referenced columns
// without the lock: rows below the snapshot's row count are never rewritten
// while a run goes on, and growing swaps in new columns and releases the old
// ones only by reference.  Lock order: a data lock before the global lock of
// the table of open data sets (opendatatable.h), never the other way round.
//
// Failures are return values: bad column or row arguments are refused
// silently with 0 (or false).

#include "graphdata/graphcolumn.h"
#include "support/bufferio.h"
#include "support/criticalsection.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

class CEquationTree;
class CScopeData_Data;

// A counted object a host hangs on a data set.
class CGraphAttachment
{
public:
    virtual ~CGraphAttachment();
    void AddRef() { m_refCount.fetch_add(1, std::memory_order_relaxed); }
    void Release()
    {
        if (m_refCount.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }

private:
    std::atomic<int> m_refCount{1};
};

class CGraphData_Data
{
public:
    // dataFlags
    enum : std::uint32_t {
        StyleMask = 0xF,                  // style nibble of the curves (4 bars, 5 bars and marks)
        ScopeAxesOnly = 0x1000000,        // an oscilloscope graph draws only its axes
        NoData = 0x10000000,              // no data: the plot shows m_messageText
    };

    CGraphData_Data();
    virtual ~CGraphData_Data();
    CGraphData_Data(const CGraphData_Data &) = delete;
    CGraphData_Data &operator=(const CGraphData_Data &) = delete;

    virtual int GetKind() const { return 1; }
    virtual int IsScope() const { return 0; }
    virtual CScopeData_Data *AsScope() { return nullptr; }

    // Allocates columnCount empty columns of `capacity` rows (none for a
    // capacity of 0).  For a fresh object only; CGraphData::Create uses it.
    virtual void Allocate(int columnCount, int capacity);

    // True when `row` is below the capacity, else grows the store so that
    // it is: to (row + 1) less its remainder by the step, raised by steps
    // until it exceeds row + step.  A store without columns counts as done;
    // false while the columns are being replaced or when memory runs out.
    bool EnsureRows(int row);

    // Replaces every column by one of `target` rows holding the first
    // min(rowCount, target) rows of the old one, under the same name and
    // settings.  Out of memory: message 41210, the old data stay, false.
    bool Grow(int target);

    // Writes `rows` rows of `columnsInRow` cells, row after row, into the
    // columns firstColumn.. from row firstRow on.  validBytes null means all
    // valid.  Grows as needed, keeps the extents (and those of existing log
    // columns) and raises the row count.  The only writer while a run goes
    // on.  Returns the rows written, 0 for bad arguments or no memory.
    int AppendRows(const double *values, const std::uint8_t *validBytes, int firstColumn, int columnsInRow,
                   int firstRow, int rows);

    // Exchanges two columns and their log columns.  False for a bad index.
    bool SwapColumns(int a, int b);
    // The column of row numbers (1, 2, ...) that an X axis over the rows
    // ("Index") draws against: the column named "Index" when there is one,
    // else a new column of that name at the end, which numbers the rows
    // there are and every row appended from then on.  -1 for the
    // oscilloscope form, for columns this data set does not own, while the
    // columns are being replaced, or when memory runs out.
    int EnsureRowNumberColumn();
    // The name of that column.
    static QString RowNumberColumnName();
    // First index from `start` on whose name equals `name`, ignoring case; -1.
    int ColumnByName(const QString &name, int start = 0) const;
    // The log10 form of column `index`, built on first need; null for a bad
    // index or when memory runs out.
    CGraphColumn *EnsureLogColumn(int index);
    // Gives every column without an id one (see AssignColumnId).
    void AssignIds();

    // Unlocked access, for the thread that owns the data while nobody
    // appends (loading, tests, single-threaded hosts).
    CGraphColumn *GetColumn(int index) const;
    CGraphColumn *GetLogColumn(int index) const;

    // The growth step for the current capacity: growBy (1000 below 1), or
    // half the capacity rounded down to a multiple of it when that is more,
    // so that a long run of appends stays linear.
    int GrowthStep() const;

    // Writes `rows` cells, `stride` doubles apart, into rows firstRow.. of
    // `column` (nothing when it is shorter), widening its extents (row 0 sets
    // them), and their log10 into `logColumn` when given.  A value that is
    // not finite is invalid whatever its byte says; srcValid null: valid.
    static void WriteCells(CGraphColumn *column, CGraphColumn *logColumn, const double *src, std::size_t stride,
                           const std::uint8_t *srcValid, int firstRow, int rows);
    // The log10 of rows firstRow.. of `column` into `logColumn`: a valid
    // positive cell its log, any other an invalid cell.
    static void WriteLogCells(const CGraphColumn *column, CGraphColumn *logColumn, int firstRow, int rows);

    std::atomic<int> m_refCount{0};
    std::int32_t m_ownsColumns = 1;
    CMyCriticalSection m_lock;
    std::atomic<std::int32_t> m_resizing{0};
    std::int32_t m_columnCount = 0;
    std::int32_t m_capacity = 0;
    std::int32_t m_rowCount = 0;
    std::int32_t m_growBy = 0;
    std::int32_t m_ordered = 0;
    CGraphColumn **m_columns = nullptr;
    CGraphColumn **m_logColumns = nullptr;
    std::uint32_t m_dataFlags = 0;
    std::int32_t m_generation = 0;
    QByteArray m_fileBlocks[3]; // blocks of the file the data came from; 0: its first attachment
    CGraphAttachment *m_attachment = nullptr;
    std::int32_t m_globalSlot = 0;
    QString m_messageText;
    // The column EnsureRowNumberColumn added, numbered on every append; -1.
    std::int32_t m_rowNumberColumn = -1;

protected:
    // Under the lock: the new capacity.  False (and nothing changed) when
    // memory runs out.
    virtual bool growLocked(int target);
    // Under the lock, with the rows allocated: stores the cells of
    // AppendRows (arguments checked) into the columns.
    virtual void writeRowsLocked(const double *values, const std::uint8_t *validBytes, int firstColumn,
                                 int columnsInRow, int firstRow, int rows);
    static CGraphColumn **growTable(CGraphColumn **table, int columns, int copyRows, int target);
    static void resizeInPlace(CGraphColumn *column, int keepRows, int target);
    static void releaseTable(CGraphColumn **&table, int columns);
    // Under the lock: rows firstRow.. of the row number column get their numbers.
    void numberRowsLocked(int firstRow, int rows);
    bool ensureRowsLocked(int row);
};

// A channel of the oscilloscope form.  What the producer appends is the
// raw input of the channels; what a channel shows is its formula over the
// raw input of the row, where every channel's column name stands for its
// raw value ("V1*10", "V1-V2").  A channel without a formula shows its own
// raw input unchanged.
struct CScopeChannel
{
    CScopeChannel();
    ~CScopeChannel();
    CScopeChannel(CScopeChannel &&) noexcept;
    CScopeChannel &operator=(CScopeChannel &&) noexcept;

    QString m_variableName;
    double m_tolerance = 1e-5;
    QString m_formulaText;
    std::unique_ptr<CEquationTree> m_formula;
    // The raw columns the formula reads, and the table it was bound to
    // (bound again when the table grows).
    std::vector<int> m_inputs;
    QStringList m_inputNames;
    CGraphColumn **m_boundTable = nullptr;
};

class CScopeData_Data : public CGraphData_Data
{
public:
    CScopeData_Data();
    ~CScopeData_Data() override;

    int GetKind() const override { return 2; }
    int IsScope() const override { return 1; }
    CScopeData_Data *AsScope() override { return this; }

    // Also allocates the input, minimum, maximum and raw input stores, and
    // sets up channels 1.. with a log record each: i32 1, i32 channel, and
    // the three 8-byte values of the channel's input (0 at creation).
    void Allocate(int columnCount, int capacity) override;

    // Compiles `text` as the formula of `channel` (1..) over the raw input,
    // naming the columns as variables, and computes the rows there are
    // again.  An empty text makes the channel its own raw input.  False when
    // the channel is none or the text does not compile: `error` tells why
    // (with line and column), and the former formula stays; `errorPosition`
    // (when given) the index in `text` where the error stands, -1 if none.
    bool SetChannelFormula(int channel, const QString &text, QString *error = nullptr, int *errorPosition = nullptr);
    // The formula text of a channel; empty when it shows its raw input.
    QString ChannelFormula(int channel) const;

    CBufferIO m_channelLog;
    double m_secsPerDiv = 0;
    CGraphColumn **m_inputColumns = nullptr;
    CGraphColumn **m_minColumns = nullptr;
    CGraphColumn **m_maxColumns = nullptr;
    CGraphColumn **m_rawInput = nullptr;
    // Slot 0 stands for the time base and holds nothing.
    std::vector<CScopeChannel> m_channels;
    std::vector<std::int32_t> m_channelStates;
    std::int32_t m_rollMode = 0;
    std::uint32_t m_rollLength = 0;
    // The channel whose level triggers a sweep (0: none) and that level,
    // shown as a mark at the plot's right edge.
    std::int32_t m_triggerChannel = 0;
    double m_triggerLevel = 0;

protected:
    bool growLocked(int target) override;
    void writeRowsLocked(const double *values, const std::uint8_t *validBytes, int firstColumn, int columnsInRow,
                         int firstRow, int rows) override;

private:
    // Channel `channel`'s formula over rows first..last into its column.
    void evaluateChannelLocked(int channel, int first, int last);
};

class CGraphData
{
public:
    // An empty data set; the oscilloscope form when `scope` is set.
    explicit CGraphData(bool scope = false);
    CGraphData(const CGraphData &other);
    CGraphData &operator=(const CGraphData &other);
    virtual ~CGraphData();

    // Drops the current data and makes new ones: the oscilloscope form when
    // graphKind is 2.  Negative capacity counts as 0; growBy below 1 keeps
    // the old growth step.
    void Create(int graphKind, int columnCount, int capacity, int growBy = 0);

    // A handle that takes over a reference the caller already added.
    static CGraphData Adopt(CGraphData_Data *data);

    CGraphData_Data *Data() const { return m_data; }
    CGraphData_Data *operator->() const { return m_data; }
    CMyCriticalSection &Lock() const { return m_data->m_lock; }
    bool IsScope() const { return m_data->IsScope() != 0; }

    int ColumnCount() const { return m_data->m_columnCount; }
    int RowCount() const { return m_data->m_rowCount; }
    int Capacity() const { return m_data->m_capacity; }
    // The row count read under the lock, for threads other than the writer.
    int RowCountLocked() const;
    CGraphColumn *GetColumn(int index) const { return m_data->GetColumn(index); }

    bool EnsureRows(int row) { return m_data->EnsureRows(row); }
    bool Grow(int target) { return m_data->Grow(target); }
    int AppendRows(const double *values, const std::uint8_t *validBytes, int firstColumn, int columnsInRow,
                   int firstRow, int rows)
    {
        return m_data->AppendRows(values, validBytes, firstColumn, columnsInRow, firstRow, rows);
    }
    bool SwapColumns(int a, int b) { return m_data->SwapColumns(a, b); }
    int EnsureRowNumberColumn() { return m_data->EnsureRowNumberColumn(); }
    int ColumnByName(const QString &name, int start = 0) const { return m_data->ColumnByName(name, start); }
    CGraphColumn *EnsureLogColumn(int index) { return m_data->EnsureLogColumn(index); }
    void AssignIds() { m_data->AssignIds(); }

private:
    struct AdoptTag {};
    CGraphData(CGraphData_Data *data, AdoptTag) : m_data(data) {}
    void attach(CGraphData_Data *data);
    void detach();

    CGraphData_Data *m_data = nullptr;
};
