#pragma once
// How much of the calling thread's stack is left.
//
// Recursive walks over user-made structures (parsing, evaluating nested
// formulas, calls of script functions) cannot know in advance how deep they
// will go.  Each such step asks IsStackLow() first and gives up with a message
// instead of running off the end of the stack.  The limit is measured once per
// thread from the thread's real stack, so worker threads with small stacks are
// covered as well as the main thread; a part of the stack is held back for the
// work that follows the last check (formatting a message, throwing, the
// library calls of a leaf operation).

#include <cstddef>

#if defined(_MSC_VER)
#include <intrin.h>
#define TARN_FRAME_ADDRESS() static_cast<const char *>(_AddressOfReturnAddress())
#else
// The frame itself, not a local: under AddressSanitizer locals may live on a
// heap-allocated fake stack.
#define TARN_FRAME_ADDRESS() static_cast<const char *>(__builtin_frame_address(0))
#endif

namespace StackRoom {

// The lowest frame address the calling thread may reach before a walk stops;
// null until measured.  Constant-initialised, so that reading it costs no
// initialisation check.
extern constinit thread_local const char *t_limit;

const char *Measure();

// Stack held back on a thread of `size` bytes: a quarter, at least 64 KiB and at most 2 MiB.
std::size_t ReserveFor(std::size_t size);

// True when the caller's frame lies within the held-back part of the stack.
inline bool IsStackLow()
{
    const char *limit = t_limit ? t_limit : Measure();
    return TARN_FRAME_ADDRESS() < limit;
}

// For tests: lowers the limit so that only `room` more bytes below the
// caller's frame may be used, or with 0 measures the thread's stack again.
void SetRoomForTesting(std::size_t room);

} // namespace StackRoom
