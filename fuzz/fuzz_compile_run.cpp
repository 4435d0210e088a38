// Arbitrary text through the whole language: compile, save and read back,
// run, and evaluate as a series.  Nothing may crash, and three things must
// hold: a failed compile leaves a message; a tree read back from its saved
// form saves to the same bytes; and a series over bound columns gives what
// the node tree gives row by row through a getter.
//
// Runs are capped: a watchdog thread stops any run that takes longer than
// a tenth of a second (loops run up to a million passes, and may nest).

#include "functions/rpnfunctions.h"
#include "formula/rpnbuffer.h"
#include "formula/rpnexception.h"
#include "formula/rpnseries.h"
#include "formula/rpntree.h"
#include "fuzzwatchdog.h"

#include <QString>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

namespace {

void check(bool ok)
{
    if (!ok)
        std::abort();
}

CFuzzWatchdog &watchdog()
{
    static CFuzzWatchdog *dog = new CFuzzWatchdog(std::chrono::milliseconds(100), std::chrono::milliseconds(10));
    return *dog;
}

constexpr int kRows = 16;
double g_x[kRows], g_y[kRows];
unsigned char g_xValid[kRows], g_yValid[kRows];

void columnGet(CRpnData &result, int index, int row, void *, void *, CRpnNode *, const QString &, int &found)
{
    if (row < 0 || row >= kRows) {
        found = 0;
        return;
    }
    if ((index == 0 ? g_xValid : g_yValid)[row] == 1)
        result.SetDouble((index == 0 ? g_x : g_y)[row]);
    else
        result.SetNull();
}

int runGuarded(CEquationTree &tree, CRpnData &value)
{
    watchdog().Begin(&tree);
    int status = 0;
    try {
        status = tree.Run(value);
    } catch (const CRpnException &) {
    }
    watchdog().End();
    return status;
}

QByteArray saved(CEquationTree &tree)
{
    CRpnBuffer buffer(10);
    buffer.Reset(CBufferIO::ModeWrite, 256);
    tree.Serialize(buffer);
    return buffer.ToByteArray();
}

void series(CEquationTree &tree, double *values, unsigned char *valid)
{
    watchdog().Begin(&tree);
    try {
        tree.EvaluateSeries(values, valid, 0, kRows - 1);
    } catch (const CRpnException &) {
    }
    watchdog().End();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    RegisterFunctionLibrary();
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));

    CEquationTree tree;
    if (!tree.Compile(text)) {
        check(tree.HasError());
        return 0;
    }

    // The saved form reads back to a tree that saves the same.
    const QByteArray bytes = saved(tree);
    CRpnBuffer reading(10);
    reading.LoadForReading(bytes);
    CEquationTree copy;
    check(copy.Serialize(reading));
    // (Saved texts end at a NUL character, by the buffer's text form.)
    if (!text.contains(QChar(0)))
        check(saved(copy) == bytes);

    CRpnData value;
    runGuarded(tree, value);
    (void)value.GetText(16);

    // The text as an expression over the columns x and y.
    for (int r = 0; r < kRows; ++r) {
        g_x[r] = (r % 7) * 0.5 - 1.5;
        g_y[r] = r % 3 == 0 ? 0.0 : 1.0 / (r + 1);
        g_xValid[r] = r % 5 == 4 ? 0 : 1;
        g_yValid[r] = r % 6 == 5 ? 2 : 1;
    }
    CEquationTree bound, read;
    bound.BindColumn(QStringLiteral("x"), g_x, g_xValid, kRows);
    bound.BindColumn(QStringLiteral("y"), g_y, g_yValid, kRows - 2); // the last rows lie past its end
    if (!bound.Compile(text, nullptr, false))
        return 0;
    // Only trees the block evaluator takes are compared: they read nothing but the columns.
    if (!CRpnSeriesProgram::Build(&bound))
        return 0;
    for (int r = kRows - 2; r < kRows; ++r)
        g_yValid[r] = 0;
    read.SetVariableAccess(columnGet, nullptr);
    // x and y as the scanner would take them as words.
    const CRpnVariableMatcher matcher = [](QStringView rest, int &index) {
        const bool x = rest.startsWith(u'x'), y = rest.startsWith(u'y');
        index = x ? 0 : 1;
        if (!x && !y)
            return 0;
        if (rest.size() == 1)
            return 1;
        const char16_t c = rest[1].unicode();
        static const char16_t ends[] = u"\t\n\r \"#%&'()*+,-/;<=>[]^{|}~";
        const bool wordEnd = std::char_traits<char16_t>::find(ends, std::size(ends) - 1, c) != nullptr
            || (c == u'!' && rest.size() > 2 && rest[2] == u'=');
        return wordEnd ? 1 : 0;
    };
    if (!read.Compile(text, nullptr, false, matcher))
        return 0;
    double v1[kRows], v2[kRows];
    unsigned char ok1[kRows], ok2[kRows];
    series(bound, v1, ok1);
    series(read, v2, ok2);
    if (bound.IsStopping() || read.IsStopping())
        return 0;
    check(bound.GetErrorMessage() == read.GetErrorMessage());
    for (int r = 0; r < kRows; ++r) {
        check(ok1[r] == ok2[r]);
        check(ok1[r] == 0 || (std::isnan(v1[r]) && std::isnan(v2[r])) || std::memcmp(&v1[r], &v2[r], sizeof(double)) == 0);
    }
    return 0;
}
