// Threads and the formula core: the keyword table is built once when several
// threads ask for it together, and value payloads may be made on one thread
// and freed on another (each thread has its own free list).

#include "formula/rpndata.h"
#include "formula/rpnkeywords.h"
#include "formula/rpnnode.h"

#include "formulatest.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

namespace {

std::atomic<int> g_providerRuns{0};

class SinNode : public CRpnNode
{
public:
    int GetKind() const override { return 250; }
    CRpnNode *CreateSame() const override { return new SinNode; }
    QString GetName() const override { return QStringLiteral("sin"); }
};

void provideSin(CRpnPrototypeArray &prototypes)
{
    ++g_providerRuns;
    prototypes.SetAt(250, new SinNode);
}

} // namespace

TEST(FormulaThreads, KeywordTableIsBuiltOnce)
{
    AddPrototypeProvider(provideSin); // before any thread builds the table
    constexpr int kThreads = 8;
    std::atomic<int> ready{0};
    std::atomic<int> found{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            ++ready;
            while (ready.load() < kThreads) {
            }
            unsigned char status = 1;
            for (int i = 0; i < 200; ++i) {
                std::unique_ptr<CRpnNode> node(LookupKeyword(nullptr, QStringLiteral("Sin"), i, 1, i, status));
                if (node && node->GetKind() == 250 && node->m_position == i)
                    ++found;
            }
        });
    }
    for (std::thread &t : threads)
        t.join();
    EXPECT_EQ(g_providerRuns.load(), 1);
    EXPECT_EQ(found.load(), kThreads * 200);
}

TEST(FormulaThreads, ValuesMadeOnOneThreadAndFreedOnAnother)
{
    // Producers make arrays of values and hand them over; the consumer frees
    // them.  Each value is owned by one thread at a time.
    std::mutex lock;
    std::condition_variable changed;
    std::deque<CRpnData> queue;
    int producersLeft = 3;
    double total = 0;

    auto producer = [&](int seed) {
        for (int i = 0; i < 2000; ++i) {
            CRpnData v;
            v.SetArray(3);
            v.SetAt(0, CRpnData(double(seed)));
            v.SetAt(1, CRpnData(QStringLiteral("x")));
            v.SetAt(2, RealBlock({1, 2}));
            CRpnData sum = CRpnData::Add(v, CRpnData(1.0));
            std::lock_guard guard(lock);
            queue.push_back(std::move(sum));
            changed.notify_one();
        }
        std::lock_guard guard(lock);
        --producersLeft;
        changed.notify_one();
    };
    std::thread consumer([&] {
        for (;;) {
            std::unique_lock guard(lock);
            changed.wait(guard, [&] { return !queue.empty() || producersLeft == 0; });
            if (queue.empty())
                return;
            CRpnData v = std::move(queue.front());
            queue.pop_front();
            guard.unlock();
            total += v.GetAt(0).GetDouble();
        }
    });
    std::thread p1(producer, 1), p2(producer, 2), p3(producer, 3);
    p1.join();
    p2.join();
    p3.join();
    consumer.join();
    EXPECT_EQ(total, 2000.0 * (2 + 3 + 4));
    // The consumer's free list went back to the shared pool when it ended;
    // this thread can still take payloads.
    CRpnData after(1.0);
    EXPECT_EQ(after.GetDouble(), 1.0);
}

TEST(FormulaThreads, ListsOfEndedThreadsAreTakenOverWhole)
{
    // Threads end one after the other, each leaving a free list of its own
    // size behind; later threads take their payloads from those lists.  Every
    // payload handed out must be held by one value only: the values of the
    // last thread keep their texts, on payloads of their own.
    const int sizes[] = {10, 3000, 1, 700, 5000};
    for (const int size : sizes) {
        std::thread([size] {
            std::vector<CRpnData> made;
            for (int i = 0; i < size; ++i)
                made.emplace_back(QString::number(i));
        }).join();
    }
    std::thread([] {
        constexpr int kLive = 9000;
        std::vector<CRpnData> live;
        live.reserve(kLive);
        for (int i = 0; i < kLive; ++i)
            live.emplace_back(QStringLiteral("v%1").arg(i));
        std::vector<const void *> payloads;
        for (int i = 0; i < kLive; ++i) {
            ASSERT_EQ(live[std::size_t(i)].GetTextValue(), QStringLiteral("v%1").arg(i));
            payloads.push_back(CRpnDataAccess::Payload(live[std::size_t(i)]));
        }
        std::sort(payloads.begin(), payloads.end());
        EXPECT_EQ(std::adjacent_find(payloads.begin(), payloads.end()), payloads.end());
    }).join();
}
