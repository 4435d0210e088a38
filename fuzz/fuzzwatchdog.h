#pragma once
// Stops the equation tree being run once it has run longer than a limit, so
// that a fuzz input may loop without hanging the fuzzer.  One watchdog per
// process; its thread lives as long as the process.

#include "formula/rpntree.h"

#include <chrono>
#include <mutex>
#include <thread>

class CFuzzWatchdog
{
public:
    CFuzzWatchdog(std::chrono::milliseconds limit, std::chrono::milliseconds tick)
        : m_limit(limit), m_tick(tick), m_thread([this] { watch(); })
    {
        m_thread.detach();
    }
    void Begin(CEquationTree *tree)
    {
        std::lock_guard guard(m_lock);
        m_tree = tree;
        m_started = std::chrono::steady_clock::now();
    }
    void End()
    {
        std::lock_guard guard(m_lock);
        m_tree = nullptr;
    }

private:
    void watch()
    {
        for (;;) {
            std::this_thread::sleep_for(m_tick);
            std::lock_guard guard(m_lock);
            if (m_tree && std::chrono::steady_clock::now() - m_started > m_limit)
                m_tree->Stop();
        }
    }
    const std::chrono::milliseconds m_limit, m_tick;
    std::mutex m_lock;
    CEquationTree *m_tree = nullptr;
    std::chrono::steady_clock::time_point m_started;
    std::thread m_thread;
};
