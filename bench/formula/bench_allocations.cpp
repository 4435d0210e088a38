// How many heap blocks a script's run takes, per round of its loop.
//
// Each script is compiled and run in a fresh tree twice over, once with N
// rounds and once with 2N; the blocks taken by the run alone (after the
// compile) are counted, and the difference divided by N is what one round
// costs.  A loop whose rounds allocate nothing shows 0 however large N is;
// what a run takes once (the first frame of each depth of a recursion, an
// array's growth by doubling) falls out of the difference.
//
// The count comes from this program's own malloc, calloc, realloc and the
// aligned forms, which hand over to the C library's: operator new and Qt's
// containers end there too.  So this needs the GNU C library, and is not
// built with the sanitizers (which bring their own allocator).
//
//   bench_allocations [--rounds N]

#include "functions/rpnfunctions.h"
#include "formula/rpndata.h"
#include "formula/rpntree.h"
#include "support/languagestring.h"

#include <QCoreApplication>
#include <QString>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#if !defined(__GLIBC__)
#error "bench_allocations counts through the GNU C library's allocator"
#endif

extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void *__libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {
std::atomic<long long> g_blocks{0};
} // namespace

extern "C" {
void *malloc(std::size_t size)
{
    g_blocks.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(size);
}
void *calloc(std::size_t count, std::size_t size)
{
    g_blocks.fetch_add(1, std::memory_order_relaxed);
    return __libc_calloc(count, size);
}
void *realloc(void *block, std::size_t size)
{
    g_blocks.fetch_add(1, std::memory_order_relaxed);
    return __libc_realloc(block, size);
}
void *memalign(std::size_t alignment, std::size_t size)
{
    g_blocks.fetch_add(1, std::memory_order_relaxed);
    return __libc_memalign(alignment, size);
}
void *aligned_alloc(std::size_t alignment, std::size_t size)
{
    g_blocks.fetch_add(1, std::memory_order_relaxed);
    return __libc_memalign(alignment, size);
}
int posix_memalign(void **out, std::size_t alignment, std::size_t size)
{
    g_blocks.fetch_add(1, std::memory_order_relaxed);
    void *block = __libc_memalign(alignment, size);
    if (!block)
        return 12; // ENOMEM
    *out = block;
    return 0;
}
}

namespace {

struct Script
{
    const char *what;
    const char *text; // the rounds are the main variable N, set before the compile
};

// Each loop runs its N rounds after whatever it sets up.
const Script kScripts[] = {
    {"while loop on numbers (runs as steps)", "i = 0; s = 0; while (i < N) { s = s + i * 2; i++ }; s"},
    {"while loop, arithmetic on the node tree (a division by a variable, sqrt)",
     "x = 1.5; i = 0; while (i < N) { x = x * 0.5 + 3 / (i + 1) + sqrt(x); i++ }; x"},
    {"index writes a[i] = x into a made array",
     "a = {}; i = 0; while (i < 1000) { a[] = 0; i++ }; i = 0; while (i < N) { a[i % 1000] = i; i++ }; 0"},
    {"appends a[] = x (the array grows by doubling)", "a = {}; i = 0; while (i < N) { a[] = i; i++ }; 0"},
    {"call of a function on numbers (short way)",
     "function f(x) { return x * 2 + 1 }; i = 0; s = 0; while (i < N) { s = s + f(i); i++ }; s"},
    {"call of a function with a local on numbers (short way)",
     "function g(x) { t = x * 2; return t + 1 }; i = 0; s = 0; while (i < N) { s = s + g(i); i++ }; s"},
    {"call of a function with a text local (ordinary way)",
     "function k(x) { w = \"ab\"; t = x * 2; return t + 1 }; i = 0; s = 0; while (i < N) { s = s + k(i); i++ }; s"},
    {"call of a function with a text argument",
     "function h(x, y) { t = x; return t + 1 }; i = 0; s = 0; while (i < N) { s = s + h(i, \"ab\"); i++ }; s"},
    {"recursion 20 deep per round (short way)",
     "function d(n) { if (n == 0) { return 0 }; return d(n - 1) + 1 }; i = 0; s = 0; "
     "while (i < N) { s = s + d(20); i++ }; s"},
    {"recursion 20 deep per round (ordinary way)",
     "function e(n) { w = \"ab\"; if (n == 0) { return 0 }; t = e(n - 1); return t + 1 }; i = 0; s = 0; "
     "while (i < N) { s = s + e(20); i++ }; s"},
    {"text appends s += \"ab\"", "s = \"\"; i = 0; while (i < N) { s += \"ab\"; i++ }; 0"},
    // A check of the count: each round joins two texts into a new one, which
    // needs a block of its own.
    {"a new text each round (allocates by its nature)", "u = \"ab\"; i = 0; while (i < N) { t = u + u; i++ }; 0"},
};

// Blocks taken by one run with `rounds` rounds, the compile left out; -1
// when the script does not compile or run.
long long blocksOfRun(const Script &script, int rounds)
{
    CEquationTree tree;
    tree.SetVariable(QStringLiteral("N"), CRpnData(double(rounds)));
    if (!tree.Compile(QString::fromUtf8(script.text), nullptr, true)) {
        std::fprintf(stderr, "%s: %s\n", script.what, qPrintable(tree.GetErrorMessage()));
        return -1;
    }
    CRpnData value;
    const long long before = g_blocks.load(std::memory_order_relaxed);
    const int status = tree.Run(value);
    const long long after = g_blocks.load(std::memory_order_relaxed);
    if (status != 1 || tree.HasError()) {
        std::fprintf(stderr, "%s: %s\n", script.what, qPrintable(tree.GetErrorMessage()));
        return -1;
    }
    return after - before;
}

} // namespace

int main(int argc, char **argv)
{
    int rounds = 100000;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--rounds") && i + 1 < argc) {
            rounds = std::max(1, std::atoi(argv[++i]));
        } else {
            std::fprintf(stderr, "usage: %s [--rounds N]\n", argv[0]);
            return 2;
        }
    }
    QCoreApplication app(argc, argv);
    LoadLanguageModule(); // for the messages of a script that fails
    RegisterFunctionLibrary();
    std::printf("Heap blocks taken by a run (malloc, calloc, realloc and the aligned forms), N = %d.\n\n", rounds);
    std::printf("| script | run with N rounds | run with 2N rounds | per round |\n|---|---|---|---|\n");
    int failures = 0;
    for (const Script &script : kScripts) {
        const long long once = blocksOfRun(script, rounds);
        const long long twice = blocksOfRun(script, 2 * rounds);
        if (once < 0 || twice < 0) {
            ++failures;
            std::printf("| %s | failed | failed | - |\n", script.what);
            continue;
        }
        std::printf("| %s | %lld | %lld | %.4f |\n", script.what, once, twice, double(twice - once) / rounds);
    }
    return failures ? 1 : 0;
}
