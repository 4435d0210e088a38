// Threads and the functions: trees on several threads compile against the
// shared prototypes and run functions with running state and series at once;
// each tree keeps its own state, messages and results.

#include "functions/rpnfunctions.h"
#include "formula/rpntree.h"

#include <gtest/gtest.h>
#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

TEST(FunctionsThreads, TreesOnSeveralThreadsKeepTheirOwnState)
{
    RegisterFunctionLibrary(); // before any thread compiles
    constexpr int kThreads = 4;
    constexpr int kRows = 2000;
    std::atomic<int> ready{0};
    std::vector<int> mismatches(kThreads, -1);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            ++ready;
            while (ready.load() < kThreads) {
            }
            // Each thread its own column, step and angle setting.
            std::vector<double> y(kRows);
            for (int i = 0; i < kRows; ++i)
                y[std::size_t(i)] = (t + 1) * std::sin(0.01 * i);
            const double step = 0.5 * (t + 1);
            CEquationTree tree;
            tree.m_angleMode = t % 2;
            tree.SetSampling(step);
            tree.BindColumn(QStringLiteral("y"), y.data(), nullptr, kRows);
            if (!tree.Compile(QStringLiteral("Int(y) + sin(y) * 0 + max(y, -100) - y + sqrt(y - 1000)"), nullptr, true))
                return;
            std::vector<double> values(kRows);
            std::vector<unsigned char> valid(kRows);
            tree.ResetRun();
            tree.EvaluateSeries(values.data(), valid.data(), 0, kRows - 1);
            // Every row fails at the square root: the tree's own message and list.
            int bad = 0;
            for (int i = 0; i < kRows; ++i)
                bad += valid[std::size_t(i)] != 0;
            bad += tree.GetErrorList().size() != CEquationTree::MaxErrorList;

            // The integral alone against the trapezoids of this thread's column.
            CEquationTree integral;
            integral.SetSampling(step);
            integral.BindColumn(QStringLiteral("y"), y.data(), nullptr, kRows);
            integral.Compile(QStringLiteral("Int(y)"), nullptr, true);
            integral.ResetRun();
            integral.EvaluateSeries(values.data(), valid.data(), 0, kRows - 1);
            double sum = 0.0, last = 0.0;
            for (int i = 0; i < kRows; ++i) {
                sum += (y[std::size_t(i)] + last) * step * 0.5;
                last = y[std::size_t(i)];
                bad += valid[std::size_t(i)] != 1 || values[std::size_t(i)] != sum;
            }
            mismatches[std::size_t(t)] = bad;
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    for (int t = 0; t < kThreads; ++t)
        EXPECT_EQ(mismatches[std::size_t(t)], 0) << "thread " << t;
}
