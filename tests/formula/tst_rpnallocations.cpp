// Loops of scripts take no heap block per round: each script runs with N and
// with 2N rounds, and both runs must take the same number of blocks.  The
// blocks are counted by this program's own malloc family, which hands over to
// the GNU C library's (operator new and Qt's containers end there too); so
// this test is built on Linux without the sanitizers only.

#include "formulatest.h"

#include "formula/rpntree.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>

extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);
void *__libc_memalign(std::size_t alignment, std::size_t size);
}

namespace {
std::atomic<long long> g_blocks{0};
void countBlock()
{
    g_blocks.fetch_add(1, std::memory_order_relaxed);
}
} // namespace

extern "C" {
void *malloc(std::size_t size)
{
    countBlock();
    return __libc_malloc(size);
}
void *calloc(std::size_t count, std::size_t size)
{
    countBlock();
    return __libc_calloc(count, size);
}
void *realloc(void *block, std::size_t size)
{
    countBlock();
    return __libc_realloc(block, size);
}
void *memalign(std::size_t alignment, std::size_t size)
{
    countBlock();
    return __libc_memalign(alignment, size);
}
void *aligned_alloc(std::size_t alignment, std::size_t size)
{
    countBlock();
    return __libc_memalign(alignment, size);
}
int posix_memalign(void **out, std::size_t alignment, std::size_t size)
{
    countBlock();
    void *block = __libc_memalign(alignment, size);
    if (!block)
        return 12; // ENOMEM
    *out = block;
    return 0;
}
}

namespace {

struct LoopCase
{
    const char *name;
    const char *text; // N rounds: the main variable N, set before the compile
    bool allocatesPerRound;
};

void PrintTo(const LoopCase &c, std::ostream *os)
{
    *os << c.name;
}

// Blocks taken by the run alone (not the compile), or -1 when it failed.
long long blocksOfRun(const char *text, int rounds)
{
    CEquationTree tree;
    tree.SetVariable(QStringLiteral("N"), CRpnData(double(rounds)));
    if (!tree.Compile(QString::fromUtf8(text), nullptr, true))
        return -1;
    CRpnData value;
    const long long before = g_blocks.load();
    const int status = tree.Run(value);
    const long long after = g_blocks.load();
    return status == 1 && !tree.HasError() ? after - before : -1;
}

class LoopAllocations : public ::testing::TestWithParam<LoopCase>
{
};

TEST_P(LoopAllocations, DoNotGrowWithTheRounds)
{
    const LoopCase &c = GetParam();
    const long long n = blocksOfRun(c.text, 500);
    const long long twice = blocksOfRun(c.text, 1000);
    ASSERT_GE(n, 0) << c.text;
    ASSERT_GE(twice, 0) << c.text;
    if (c.allocatesPerRound)
        EXPECT_GE(twice - n, 500) << c.text; // the count sees what a round takes
    else
        EXPECT_EQ(twice, n) << c.text;
}

const LoopCase kLoops[] = {
    {"numbers_as_steps", "i = 0; s = 0; while (i < N) { s = s + i * 2; i++ }; s", false},
    {"numbers_on_the_tree", "x = 1.5; i = 0; while (i < N) { x = x * 0.5 + 3 / (i + 1) + x ^ 0.5; i++ }; x", false},
    {"index_writes", "a = {0, 0, 0, 0}; i = 0; while (i < N) { a[i % 4] = i; i++ }; a[0]", false},
    {"calls_short", "function f(x) { t = x * 2; return t + 1 }; i = 0; s = 0; while (i < N) { s = s + f(i); i++ }; s",
     false},
    {"calls_ordinary",
     "function g(x) { w = \"ab\"; t = x * 2; return t + 1 }; i = 0; s = 0; while (i < N) { s = s + g(i); i++ }; s",
     false},
    {"recursion_short", "function d(n) { if (n == 0) { return 0 }; return d(n - 1) + 1 }; i = 0; "
                        "while (i < N) { d(12); i++ }; i",
     false},
    {"recursion_ordinary", "function e(n) { w = \"ab\"; if (n == 0) { return 0 }; t = e(n - 1); return t + 1 }; "
                           "i = 0; while (i < N) { e(12); i++ }; i",
     false},
    {"new_text_each_round", "u = \"ab\"; i = 0; while (i < N) { t = u + u; i++ }; 0", true},
};

INSTANTIATE_TEST_SUITE_P(Rounds, LoopAllocations, ::testing::ValuesIn(kLoops),
                         [](const auto &info) { return std::string(info.param.name); });

} // namespace
