// The stack bounds of the calling thread: the one place that asks the system.

#include "support/stackroom.h"

#include <algorithm>
#include <cstdint>

#if defined(__linux__) || defined(__APPLE__)
#include <pthread.h>
#elif defined(_WIN32)
#define NOMINMAX
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#endif

namespace StackRoom {

constinit thread_local const char *t_limit = nullptr;

namespace {

// Stacks grow downward on every platform the project builds for.  Without a
// way to ask, the thread is taken to have at least this much below the first
// frame that measured it.
constexpr std::size_t kAssumedStack = 512 * 1024;

bool threadStack(const char *&low, std::size_t &size)
{
#if defined(__linux__)
    pthread_attr_t attr;
    if (pthread_getattr_np(pthread_self(), &attr) != 0)
        return false;
    void *address = nullptr;
    const bool ok = pthread_attr_getstack(&attr, &address, &size) == 0;
    pthread_attr_destroy(&attr);
    low = static_cast<const char *>(address);
    return ok && address && size > 0;
#elif defined(__APPLE__)
    const char *high = static_cast<const char *>(pthread_get_stackaddr_np(pthread_self()));
    size = pthread_get_stacksize_np(pthread_self());
    low = high - size;
    return high && size > 0;
#elif defined(_WIN32)
    ULONG_PTR lowest = 0, highest = 0;
    GetCurrentThreadStackLimits(&lowest, &highest);
    low = reinterpret_cast<const char *>(lowest);
    size = std::size_t(highest - lowest);
    return lowest != 0 && highest > lowest;
#else
    (void)low;
    (void)size;
    return false;
#endif
}

} // namespace

std::size_t ReserveFor(std::size_t size)
{
    return std::clamp<std::size_t>(size / 4, 64 * 1024, 2 * 1024 * 1024);
}

const char *Measure()
{
    const char *low = nullptr;
    std::size_t size = 0;
    if (!threadStack(low, size)) {
        const char *here = TARN_FRAME_ADDRESS();
        size = kAssumedStack;
        low = here - size;
    }
    t_limit = low + ReserveFor(size);
    return t_limit;
}

void SetRoomForTesting(std::size_t room)
{
    if (room == 0) {
        t_limit = nullptr;
        Measure();
        return;
    }
    t_limit = TARN_FRAME_ADDRESS() - room;
}

} // namespace StackRoom
