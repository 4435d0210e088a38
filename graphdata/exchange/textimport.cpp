#include "graphdata/exchange/textimport.h"

#include "graphdata/exchange/textformat.h"

#include <QByteArray>
#include <QFile>
#include <QStringDecoder>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <new>
#include <thread>

#ifdef __SSE2__
#include <emmintrin.h>
#endif
#ifdef __linux__
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace {

// Work is done and reported in steps of this many bytes.
const std::size_t kStep = std::size_t(4) << 20;
// Below this size one thread reads the whole file.
const std::size_t kParallelFrom = std::size_t(8) << 20;
// Room a column takes besides its arrays.
const std::uint64_t kColumnOverhead = 256;
const std::int64_t kMaxRows = INT_MAX - 16;

// The bytes being read.  Pages of a mapped file that were read are given
// back as the reading goes on, so that the file does not stay in memory
// beside the columns.
struct Source
{
    const char *bytes = nullptr;
    std::size_t size = 0;
    bool mapped = false;

    void release(const char *from, const char *to) const
    {
#ifdef __linux__
        if (!mapped)
            return;
        const auto page = std::uintptr_t(sysconf(_SC_PAGESIZE));
        const std::uintptr_t a = (std::uintptr_t(from) + page - 1) / page * page;
        const std::uintptr_t b = std::uintptr_t(to) / page * page;
        if (b > a)
            madvise(reinterpret_cast<void *>(a), b - a, MADV_DONTNEED);
#else
        (void)from;
        (void)to;
#endif
    }
};

class Progress
{
public:
    Progress(const CTextImportOptions &options, std::uint64_t total) : m_options(options), m_total(std::max<std::uint64_t>(total, 1)) {}

    // False once the reading is to stop.
    bool add(std::uint64_t bytes)
    {
        const std::uint64_t done = m_done.fetch_add(bytes, std::memory_order_relaxed) + bytes;
        if (m_options.progress)
            m_options.progress->store(int(std::min<std::uint64_t>(1000, done * 1000 / m_total)),
                                      std::memory_order_relaxed);
        return !cancelled();
    }
    bool cancelled() const { return m_options.cancel && m_options.cancel->load(std::memory_order_relaxed); }

private:
    const CTextImportOptions &m_options;
    std::uint64_t m_total;
    std::atomic<std::uint64_t> m_done{0};
};

// One block of whole lines, read by one thread.
struct Chunk
{
    const char *begin = nullptr;
    const char *end = nullptr;
    std::int64_t lines = 0;     // line starts in the block
    std::int64_t firstLine = 0; // 0-based number of its first line in the file
    std::int64_t firstRow = 0;  // row its first line would take
    std::int64_t rows = 0;      // rows written
    std::int64_t invalid = 0, missing = 0, extra = 0;
    std::vector<std::int64_t> badLines;
    std::vector<double> minValue, maxValue;
    std::vector<std::uint8_t> hasValid, hasOther;
};

// Line ends in [p, end).  With SSE2, sixteen bytes at a time: each match
// subtracts one (0xFF) from a byte counter, and the counters are summed
// before any of them can wrap.  Otherwise eight at a time: a byte of
// w ^ "\n\n.." is zero exactly where a line end stands, and the sum below
// sets the top bit of every byte that is not zero, without carries.
std::int64_t countLineEnds(const char *p, const char *end)
{
    std::int64_t n = 0;
#ifdef __SSE2__
    const __m128i newline = _mm_set1_epi8('\n');
    while (end - p >= 16) {
        __m128i counters = _mm_setzero_si128();
        for (int i = 0; i < 255 && end - p >= 16; ++i, p += 16) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
            counters = _mm_sub_epi8(counters, _mm_cmpeq_epi8(bytes, newline));
        }
        const __m128i sums = _mm_sad_epu8(counters, _mm_setzero_si128());
        n += _mm_cvtsi128_si64(sums) + _mm_cvtsi128_si64(_mm_unpackhi_epi64(sums, sums));
    }
#else
    const std::uint64_t ones = 0x0101010101010101ull;
    const std::uint64_t low7 = 0x7F7F7F7F7F7F7F7Full;
    const std::uint64_t pattern = ones * '\n';
    for (; end - p >= 8; p += 8) {
        std::uint64_t w;
        std::memcpy(&w, p, 8);
        const std::uint64_t t = w ^ pattern;
        const std::uint64_t nonzero = ((t & low7) + low7) | t;
        // One in the low bit of each byte that matched, summed by the multiply.
        n += std::int64_t((((~nonzero & ~low7) >> 7) * ones) >> 56);
    }
#endif
    for (; p < end; ++p)
        n += *p == '\n';
    return n;
}

void countLines(Chunk &chunk, const Source &source, Progress &progress)
{
    std::int64_t lines = 0;
    for (const char *p = chunk.begin; p < chunk.end;) {
        const char *stop = p + std::min<std::size_t>(kStep, std::size_t(chunk.end - p));
        lines += countLineEnds(p, stop);
        source.release(p, stop);
        const std::size_t done = std::size_t(stop - p);
        p = stop;
        if (!progress.add(done))
            return;
    }
    if (chunk.end > chunk.begin && chunk.end[-1] != '\n')
        ++lines;
    chunk.lines = lines;
}

void noteBadLine(std::vector<std::int64_t> &lines, std::int64_t line)
{
    if (lines.size() < CTextImportReport::kBadLinesKept && (lines.empty() || lines.back() != line))
        lines.push_back(line);
}

void parseChunk(Chunk &chunk, const CTextFormat &format, double *const *values, std::uint8_t *const *valid,
                const Source &source, Progress &progress)
{
    const int columns = format.columns;
    chunk.minValue.assign(std::size_t(columns), 0);
    chunk.maxValue.assign(std::size_t(columns), 0);
    chunk.hasValid.assign(std::size_t(columns), 0);
    chunk.hasOther.assign(std::size_t(columns), 0);
    std::size_t row = std::size_t(chunk.firstRow);
    // The block's lines were counted: it never writes past them.
    const std::size_t rowLimit = std::size_t(chunk.firstRow + chunk.lines);
    std::int64_t line = chunk.firstLine;
    const char *p = chunk.begin;
    const char *reported = p;
    while (p < chunk.end && row < rowLimit) {
        const char *nl = static_cast<const char *>(std::memchr(p, '\n', std::size_t(chunk.end - p)));
        const char *next = nl ? nl + 1 : chunk.end;
        const char *e = nl ? nl : chunk.end;
        if (e > p && e[-1] == '\r')
            --e;
        ++line;
        const char first = *p;
        const bool surelyData = (first >= '0' && first <= '9') || first == '-' || first == '.';
        if (surelyData || !IsSkippedLine(p, e, format.separator)) {
            const CLineCells cells = ReadTextLine(p, e, format, values, valid, row);
            if (cells.invalid + cells.missing + cells.extra > 0) {
                chunk.invalid += cells.invalid;
                chunk.missing += cells.missing;
                chunk.extra += cells.extra;
                noteBadLine(chunk.badLines, line);
            }
            for (int c = 0; c < columns; ++c) {
                if (valid[c][row] == 1) {
                    const double v = values[c][row];
                    if (!chunk.hasValid[std::size_t(c)]) {
                        chunk.hasValid[std::size_t(c)] = 1;
                        chunk.minValue[std::size_t(c)] = chunk.maxValue[std::size_t(c)] = v;
                    } else {
                        chunk.minValue[std::size_t(c)] = std::min(chunk.minValue[std::size_t(c)], v);
                        chunk.maxValue[std::size_t(c)] = std::max(chunk.maxValue[std::size_t(c)], v);
                    }
                } else {
                    chunk.hasOther[std::size_t(c)] = 1;
                }
            }
            ++row;
        }
        p = next;
        if (std::size_t(p - reported) >= kStep || p >= chunk.end) {
            source.release(reported, p);
            const std::size_t done = std::size_t(p - reported);
            reported = p;
            if (!progress.add(done))
                break;
        }
    }
    chunk.rows = std::int64_t(row) - chunk.firstRow;
}

template <typename F>
void runChunks(std::vector<Chunk> &chunks, F work)
{
    if (chunks.size() == 1) {
        work(chunks[0]);
        return;
    }
    std::vector<std::thread> threads;
    threads.reserve(chunks.size());
    for (Chunk &chunk : chunks)
        threads.emplace_back([&work, &chunk] { work(chunk); });
    for (std::thread &t : threads)
        t.join();
}

bool checkMemory(std::uint64_t rows, int columns, const CTextImportOptions &options, CTextImportReport &report)
{
    report.bytesNeeded = (rows + 10) * std::uint64_t(columns) * (sizeof(double) + 1) +
                         std::uint64_t(columns) * kColumnOverhead;
    report.bytesAvailable = options.memoryLimit ? options.memoryLimit : AvailableMemory();
    return std::int64_t(rows) <= kMaxRows && report.bytesNeeded <= report.bytesAvailable;
}

// Sets the extents and flags of the columns from the rows read.
void finishColumns(CGraphData &data, const std::vector<Chunk> &chunks, std::int64_t rows)
{
    for (int c = 0; c < data.ColumnCount(); ++c) {
        CGraphColumn *column = data.GetColumn(c);
        bool any = false, other = false;
        double lo = 0, hi = 0;
        for (const Chunk &chunk : chunks) {
            other = other || chunk.hasOther[std::size_t(c)];
            if (!chunk.hasValid[std::size_t(c)])
                continue;
            lo = any ? std::min(lo, chunk.minValue[std::size_t(c)]) : chunk.minValue[std::size_t(c)];
            hi = any ? std::max(hi, chunk.maxValue[std::size_t(c)]) : chunk.maxValue[std::size_t(c)];
            any = true;
        }
        column->m_minValue = lo;
        column->m_maxValue = hi;
        column->m_orderFlags = 0;
        column->m_hasInvalid = other ? 1 : 0;
    }
    data->m_rowCount = int(rows);
}

void mergeReport(const std::vector<Chunk> &chunks, CTextImportReport &report)
{
    for (const Chunk &chunk : chunks) {
        report.invalidCells += chunk.invalid;
        report.missingCells += chunk.missing;
        report.extraCells += chunk.extra;
        for (std::int64_t line : chunk.badLines)
            noteBadLine(report.firstBadLines, line);
    }
}

// A file of one row: each cell a row of one column.
TextImport readSeries(const char *begin, const char *end, std::int64_t lineNo, const CTextFormat &format,
                      const Source &source, CGraphData &data, CTextImportReport &report,
                      const CTextImportOptions &options, Progress &progress)
{
    // An upper bound of the cells: fields by separators, or runs of blanks.
    std::uint64_t cells = 0;
    if (format.separator == ' ') {
        bool inField = false;
        for (const char *p = begin; p < end; ++p) {
            const bool blank = *p == ' ' || *p == '\t' || *p == '\r';
            cells += !blank && !inField;
            inField = !blank;
        }
    } else {
        cells = std::uint64_t(std::count(begin, end, format.separator)) + 1;
    }
    if (!checkMemory(cells, 1, options, report))
        return TextImport::TooLarge;
    CGraphData fresh;
    try {
        fresh.Create(1, 1, int(cells), 0);
    } catch (const std::bad_alloc &) {
        return TextImport::TooLarge;
    }
    CGraphColumn *column = fresh.GetColumn(0);
    double *values = column->m_values;
    std::uint8_t *valid = column->m_valid;
    Chunk chunk;
    chunk.minValue.assign(1, 0);
    chunk.maxValue.assign(1, 0);
    chunk.hasValid.assign(1, 0);
    chunk.hasOther.assign(1, 0);
    const bool runs = format.separator == ' ';
    std::size_t row = 0;
    const char *reported = begin;
    for (const char *p = begin; p < end && row < cells;) {
        while (p < end && (*p == ' ' || *p == '\r' || (*p == '\t' && format.separator != '\t')))
            ++p;
        if (p >= end)
            break;
        const char *e = TextFieldEnd(p, end, format.separator);
        double v = 0;
        const std::uint8_t byte = ReadTextCell(p, e, format.decimalComma, v);
        values[row] = byte == 1 ? v : 0;
        valid[row] = byte;
        if (byte == 1) {
            chunk.minValue[0] = chunk.hasValid[0] ? std::min(chunk.minValue[0], v) : v;
            chunk.maxValue[0] = chunk.hasValid[0] ? std::max(chunk.maxValue[0], v) : v;
            chunk.hasValid[0] = 1;
        } else {
            chunk.hasOther[0] = 1;
            (byte == 2 ? chunk.invalid : chunk.missing) += 1;
            noteBadLine(chunk.badLines, lineNo);
        }
        ++row;
        p = (!runs && e < end) ? e + 1 : e;
        if (std::size_t(p - reported) >= kStep) {
            source.release(reported, p);
            if (!progress.add(std::uint64_t(p - reported) * 2))
                return TextImport::Cancelled;
            reported = p;
        }
    }
    // A separator at the end of the line ends the series without a cell.
    while (row > 0 && valid[row - 1] == 0 && !runs) {
        --row;
        --chunk.missing;
    }
    if (chunk.missing == 0 && chunk.invalid == 0)
        chunk.badLines.clear();
    if (row == 0)
        return TextImport::NoData;
    std::vector<Chunk> chunks{chunk};
    finishColumns(fresh, chunks, std::int64_t(row));
    mergeReport(chunks, report);
    report.rows = std::int64_t(row);
    report.columns = 1;
    report.transposed = true;
    data = fresh;
    return TextImport::Read;
}

// The line after the first row, when there is one: a file of more rows.
bool holdsOneRow(const char *p, const char *end, char separator, const char **rowBegin, const char **rowEnd,
                 std::int64_t *rowLine)
{
    int found = 0;
    for (std::int64_t line = 0; p < end; ++line) {
        const char *nl = static_cast<const char *>(std::memchr(p, '\n', std::size_t(end - p)));
        const char *e = nl ? nl : end;
        if (!IsSkippedLine(p, e, separator)) {
            if (++found > 1)
                return false;
            *rowBegin = p;
            *rowEnd = e > p && e[-1] == '\r' ? e - 1 : e;
            *rowLine = line;
        }
        p = nl ? nl + 1 : end;
    }
    return found == 1;
}

TextImport importUtf8(const Source &source, CGraphData &data, CTextImportReport &report,
                      const CTextImportOptions &options)
{
    report = CTextImportReport();
    const char *bytes = source.bytes;
    const char *end = bytes + source.size;
    const CTextFormat format = SniffTextFormat(bytes, source.size);
    if (format.columns < 1)
        return TextImport::NoData;
    const char *dataBegin = bytes + format.dataStart;

    const std::size_t dataSize = std::size_t(end - dataBegin);
    Progress progress(options, std::uint64_t(dataSize) * 2);

    if (!format.hasHeader) {
        const char *rowBegin = nullptr, *rowEnd = nullptr;
        std::int64_t rowLine = 0;
        if (holdsOneRow(dataBegin, end, format.separator, &rowBegin, &rowEnd, &rowLine)) {
            report.lines = std::count(bytes, end, '\n') + (end > bytes && end[-1] != '\n');
            return readSeries(rowBegin, rowEnd, format.linesBeforeData + rowLine + 1, format, source, data, report,
                              options, progress);
        }
    }

    // Blocks of whole lines, one per thread.
    unsigned threads = options.threads > 0 ? unsigned(options.threads) : std::max(1u, std::thread::hardware_concurrency());
    threads = std::min(threads, 16u);
    if (dataSize < kParallelFrom)
        threads = 1;
    std::vector<Chunk> chunks;
    const char *p = dataBegin;
    for (unsigned i = 0; i < threads && p < end; ++i) {
        const char *stop = i + 1 == threads ? end : dataBegin + dataSize / threads * (i + 1);
        if (stop < p)
            stop = p;
        if (stop < end) {
            const char *nl = static_cast<const char *>(std::memchr(stop, '\n', std::size_t(end - stop)));
            stop = nl ? nl + 1 : end;
        }
        Chunk chunk;
        chunk.begin = p;
        chunk.end = stop;
        chunks.push_back(std::move(chunk));
        p = stop;
    }
    if (chunks.empty())
        return TextImport::NoData;

    runChunks(chunks, [&](Chunk &chunk) { countLines(chunk, source, progress); });
    if (progress.cancelled())
        return TextImport::Cancelled;
    std::int64_t lines = 0;
    for (Chunk &chunk : chunks) {
        chunk.firstLine = format.linesBeforeData + lines;
        chunk.firstRow = lines;
        lines += chunk.lines;
    }
    report.lines = format.linesBeforeData + lines;
    report.columns = format.columns;
    if (lines < 1)
        return TextImport::NoData;
    if (!checkMemory(std::uint64_t(lines), format.columns, options, report))
        return TextImport::TooLarge;

    CGraphData fresh;
    try {
        fresh.Create(1, format.columns, int(lines), 0);
    } catch (const std::bad_alloc &) {
        return TextImport::TooLarge;
    }
    std::vector<double *> values(std::size_t(format.columns));
    std::vector<std::uint8_t *> valid(std::size_t(format.columns));
    for (int c = 0; c < format.columns; ++c) {
        CGraphColumn *column = fresh.GetColumn(c);
        values[std::size_t(c)] = column->m_values;
        valid[std::size_t(c)] = column->m_valid;
        if (c < format.names.size())
            column->m_name = format.names[c];
    }
    runChunks(chunks, [&](Chunk &chunk) {
        parseChunk(chunk, format, values.data(), valid.data(), source, progress);
    });
    if (progress.cancelled())
        return TextImport::Cancelled;

    // Skipped lines leave holes between the blocks' rows: close them.
    std::int64_t rows = 0;
    for (const Chunk &chunk : chunks) {
        if (chunk.firstRow != rows && chunk.rows > 0) {
            for (int c = 0; c < format.columns; ++c) {
                std::memmove(values[std::size_t(c)] + rows, values[std::size_t(c)] + chunk.firstRow,
                             std::size_t(chunk.rows) * sizeof(double));
                std::memmove(valid[std::size_t(c)] + rows, valid[std::size_t(c)] + chunk.firstRow,
                             std::size_t(chunk.rows));
            }
        }
        rows += chunk.rows;
    }
    if (rows < 1)
        return TextImport::NoData;
    finishColumns(fresh, chunks, rows);
    mergeReport(chunks, report);
    report.rows = rows;
    data = fresh;
    return TextImport::Read;
}

// 0: not UTF-16; 1 little-endian; 2 big-endian.  `bom` is set when a byte
// order mark says so.
int utf16Kind(const char *bytes, std::size_t size, bool &bom)
{
    bom = false;
    if (size >= 2) {
        const auto b0 = static_cast<unsigned char>(bytes[0]), b1 = static_cast<unsigned char>(bytes[1]);
        if (b0 == 0xFF && b1 == 0xFE) {
            bom = true;
            return 1;
        }
        if (b0 == 0xFE && b1 == 0xFF) {
            bom = true;
            return 2;
        }
    }
    // Without a mark: ASCII text in UTF-16 has a zero in every other byte.
    const std::size_t n = std::min<std::size_t>(size, 256) & ~std::size_t(1);
    if (n < 4)
        return 0;
    std::size_t evenZeros = 0, oddZeros = 0;
    for (std::size_t i = 0; i < n; i += 2) {
        evenZeros += bytes[i] == 0;
        oddZeros += bytes[i + 1] == 0;
    }
    if (oddZeros * 10 >= n / 2 * 9 && evenZeros == 0)
        return 1;
    if (evenZeros * 10 >= n / 2 * 9 && oddZeros == 0)
        return 2;
    return 0;
}

TextImport importAny(const Source &source, CGraphData &data, CTextImportReport &report,
                     const CTextImportOptions &options)
{
    bool bom = false;
    if (const int kind = utf16Kind(source.bytes, source.size, bom)) {
        const std::size_t skip = bom ? 2 : 0;
        QStringDecoder decoder(kind == 1 ? QStringDecoder::Utf16LE : QStringDecoder::Utf16BE);
        const QString text = decoder.decode(QByteArrayView(source.bytes + skip, qsizetype(source.size - skip)));
        const QByteArray utf8 = text.toUtf8();
        Source converted;
        converted.bytes = utf8.constData();
        converted.size = std::size_t(utf8.size());
        return importUtf8(converted, data, report, options);
    }
    Source rest = source;
    // Line ends of a lone CR, as old Macintosh programs write them.
    const std::size_t sample = std::min<std::size_t>(rest.size, 64 * 1024);
    if (!std::memchr(rest.bytes, '\n', sample) && std::memchr(rest.bytes, '\r', sample)) {
        QByteArray lines(rest.bytes, qsizetype(rest.size));
        lines.replace('\r', '\n');
        Source converted;
        converted.bytes = lines.constData();
        converted.size = std::size_t(lines.size());
        return importAny(converted, data, report, options);
    }
    if (rest.size >= 3 && std::memcmp(rest.bytes, "\xEF\xBB\xBF", 3) == 0) {
        rest.bytes += 3;
        rest.size -= 3;
    }
    return importUtf8(rest, data, report, options);
}

} // namespace

std::uint64_t AvailableMemory()
{
#ifdef __linux__
    if (std::FILE *f = std::fopen("/proc/meminfo", "r")) {
        char line[256];
        unsigned long long kb = 0;
        bool found = false;
        while (std::fgets(line, sizeof line, f)) {
            if (std::sscanf(line, "MemAvailable: %llu kB", &kb) == 1) {
                found = true;
                break;
            }
        }
        std::fclose(f);
        if (found)
            return std::uint64_t(kb) * 1024;
    }
    const long pages = sysconf(_SC_AVPHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGESIZE);
    if (pages > 0 && pageSize > 0)
        return std::uint64_t(pages) * std::uint64_t(pageSize);
#endif
    return std::uint64_t(1) << 40;
}

TextImport ImportTextBytes(const char *bytes, std::size_t size, CGraphData &data, CTextImportReport &report,
                           const CTextImportOptions &options)
{
    report = CTextImportReport();
    if (!bytes || size == 0)
        return TextImport::NoData;
    Source source;
    source.bytes = bytes;
    source.size = size;
    return importAny(source, data, report, options);
}

TextImport ImportTextFile(const QString &path, CGraphData &data, CTextImportReport &report,
                          const CTextImportOptions &options)
{
    report = CTextImportReport();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        report.error = file.errorString();
        return TextImport::OpenFailed;
    }
    const qint64 size = file.size();
    if (file.isSequential() || size <= 0) {
        // A pipe or a special file: read what it gives.
        const QByteArray all = file.readAll();
        if (file.error() != QFileDevice::NoError) {
            report.error = file.errorString();
            return TextImport::OpenFailed;
        }
        return ImportTextBytes(all.constData(), std::size_t(all.size()), data, report, options);
    }
    uchar *mapped = file.map(0, size);
    if (!mapped) {
        report.error = file.errorString();
        return TextImport::OpenFailed;
    }
    Source source;
    source.bytes = reinterpret_cast<const char *>(mapped);
    source.size = std::size_t(size);
    source.mapped = true;
    const TextImport result = importAny(source, data, report, options);
    file.unmap(mapped);
    return result;
}
