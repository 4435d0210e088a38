#pragma once
// A lock that costs nothing until it is first used, and its scope guard.
//
// CMyCriticalSection wraps a std::mutex with an "initialised" flag: objects
// that carry one (every data set has one) can be built and copied around
// without touching it.  CCS_helper enters on construction, initialising the
// section on first use, and leaves on destruction.  Leave() may be called
// early; a second leave is a no-op because the guard forgets its section.
//
// The mutex is not recursive: code that holds a section must not enter it
// again.

#include <atomic>
#include <mutex>

class CMyCriticalSection
{
public:
    CMyCriticalSection() = default;
    CMyCriticalSection(const CMyCriticalSection &) = delete;
    CMyCriticalSection &operator=(const CMyCriticalSection &) = delete;

    void Init() { m_initialised.store(true, std::memory_order_relaxed); }
    bool IsInitialised() const { return m_initialised.load(std::memory_order_relaxed); }

    void Enter()
    {
        Init();
        m_mutex.lock();
    }
    bool TryEnter()
    {
        Init();
        return m_mutex.try_lock();
    }
    void Leave() { m_mutex.unlock(); }

private:
    std::mutex m_mutex;
    // Only a marker for callers that ask; std::mutex needs no set-up.
    std::atomic<bool> m_initialised{false};
};

class CCS_helper
{
public:
    explicit CCS_helper(CMyCriticalSection *section) : m_section(section)
    {
        if (m_section)
            m_section->Enter();
    }
    explicit CCS_helper(CMyCriticalSection &section) : CCS_helper(&section) {}
    CCS_helper(const CCS_helper &) = delete;
    CCS_helper &operator=(const CCS_helper &) = delete;
    ~CCS_helper() { Leave(); }

    void Leave()
    {
        if (m_section) {
            m_section->Leave();
            m_section = nullptr;
        }
    }
    bool IsHeld() const { return m_section != nullptr; }

private:
    CMyCriticalSection *m_section;
};
