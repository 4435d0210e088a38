// Payload allocation: a free list per thread, filled in chunks.  The fast
// paths (taking and returning one payload) are inline in rpndata.h.
//
// Each thread keeps its own singly linked list of free payloads, so taking and
// returning one is a few instructions and needs no lock.  An empty list is
// refilled from the process-wide list (payloads that exited threads left
// behind) or from a new chunk.  Chunks are never returned to the system; the
// process-wide record keeps them reachable to the end.  When a thread ends,
// its free list goes to the process-wide list; payloads freed on a thread after
// its own list was handed over go there directly.

#include "formula/rpndata.h"

#include "formula/rpndictionary.h"
#include "formula/rpnseams.h"
#include "support/xmlelement.h"

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

namespace {

using RpnPool::FreeNode;
using RpnPool::ThreadCache;
using RpnPool::t_cache;

// The next link of a free payload, which lies poisoned under AddressSanitizer.
FreeNode *nextOf(FreeNode *n)
{
    RPN_POOL_UNPOISON(n);
    FreeNode *next = n->next;
    RPN_POOL_POISON(n);
    return next;
}

void setNext(FreeNode *n, FreeNode *next)
{
    RPN_POOL_UNPOISON(n);
    n->next = next;
    RPN_POOL_POISON(n);
}

constexpr int kChunkPayloads = 256;
constexpr int kRefillFromShared = 256;

struct SharedPool
{
    std::mutex lock;
    FreeNode *head = nullptr;
    int count = 0;
    std::vector<void *> chunks;
    // Lists of threads that ended, each taken over whole once `head` runs
    // dry: splicing one into `head` would first walk it to its end, which
    // for a list of 10^6 payloads is a walk through cold memory.
    struct Segment
    {
        FreeNode *head;
        int count;
    };
    std::vector<Segment> segments;
};

SharedPool &shared()
{
    // Never destroyed: payloads may be freed by static destructors at exit.
    static SharedPool *pool = new SharedPool;
    return *pool;
}

// Hands the thread's free list to the shared pool when the thread ends.
struct ThreadExitGuard
{
    ~ThreadExitGuard()
    {
        ThreadCache &c = t_cache;
        if (c.head) {
            SharedPool &s = shared();
            std::lock_guard guard(s.lock);
            s.segments.push_back({c.head, c.count});
        }
        c.head = nullptr;
        c.count = 0;
        c.ended = true;
    }
};

} // namespace

constinit thread_local RpnPool::ThreadCache RpnPool::t_cache{nullptr, 0, false};

CRpnPayload *RpnPool::Refill()
{
    static thread_local ThreadExitGuard exitGuard;
    (void)exitGuard;

    ThreadCache &c = t_cache;
    SharedPool &s = shared();
    std::lock_guard guard(s.lock);
    if (!s.head && !s.segments.empty()) {
        s.head = s.segments.back().head;
        s.count += s.segments.back().count;
        s.segments.pop_back();
    }
    if (!s.head) {
        auto *chunk = static_cast<CRpnPayload *>(::operator new(sizeof(CRpnPayload) * kChunkPayloads));
        s.chunks.push_back(chunk);
        for (int i = 0; i < kChunkPayloads; ++i) {
            auto *n = reinterpret_cast<FreeNode *>(chunk + i);
            setNext(n, s.head);
            s.head = n;
        }
        s.count += kChunkPayloads;
    }
    // Move a batch over to this thread.
    for (int i = 0; i < kRefillFromShared && s.head; ++i) {
        FreeNode *n = s.head;
        s.head = nextOf(n);
        --s.count;
        if (c.ended) { // no list of its own any more: take just one
            RPN_POOL_UNPOISON(n);
            return reinterpret_cast<CRpnPayload *>(n);
        }
        setNext(n, c.head);
        c.head = n;
        ++c.count;
    }
    FreeNode *n = c.head;
    RPN_POOL_UNPOISON(n);
    c.head = n->next;
    --c.count;
    return reinterpret_cast<CRpnPayload *>(n);
}

namespace {

// Payloads whose content waits to be destroyed, linked through m_imag (which
// only COMPLEX uses, and COMPLEX owns nothing).  A linked list of 300,000
// values would otherwise be freed 300,000 calls deep.
struct PendingFrees
{
    CRpnPayload *head;
    bool draining;
};
constinit thread_local PendingFrees t_pending{nullptr, false};

void setPendingNext(CRpnPayload *p, CRpnPayload *next)
{
    static_assert(sizeof(p->m_imag) >= sizeof(next));
    std::memcpy(&p->m_imag, &next, sizeof next);
}

CRpnPayload *pendingNext(const CRpnPayload *p)
{
    CRpnPayload *next;
    std::memcpy(&next, &p->m_imag, sizeof next);
    return next;
}

void destroyOwned(CRpnPayload *p);

// The payload to the calling thread's free list, as RpnPool::Free does.
void giveBack(CRpnPayload *payload)
{
    ThreadCache &c = t_cache;
    if (c.ended) {
        RpnPool::GiveBackShared(payload);
        return;
    }
    auto *n = reinterpret_cast<FreeNode *>(payload);
    n->next = c.head;
    RPN_POOL_POISON(n);
    c.head = n;
    ++c.count;
}

} // namespace

bool RpnPool::DestroyContent(CRpnPayload *p)
{
    PendingFrees &pending = t_pending;
    if (pending.draining) {
        // A text or a block of doubles holds no values, so it goes at once:
        // queued, it would be visited a second time, long after its memory
        // left the cache (an array of 10^5 texts frees 10^5 of them here).
        if (p->m_kind == RPN_STRING || p->m_kind == RPN_ARRAY_R) {
            destroyOwned(p);
            return true;
        }
        setPendingNext(p, pending.head);
        pending.head = p;
        return false;
    }
    pending.draining = true;
    destroyOwned(p);
    while (CRpnPayload *next = pending.head) {
        pending.head = pendingNext(next);
        destroyOwned(next);
        giveBack(next);
    }
    pending.draining = false;
    return true;
}

namespace {

void destroyOwned(CRpnPayload *p)
{
    const bool borrowed = (p->m_flags & RPN_FLAG_BORROWED) != 0;
    switch (p->m_kind) {
    case RPN_STRING:
        p->Text().~QString();
        break;
    case RPN_DICTIONARY:
        if (!borrowed)
            delete p->m_map;
        break;
    case RPN_ARRAY_R:
        if (!borrowed)
            std::free(p->m_reals);
        break;
    case RPN_ARRAY:
        if (!borrowed && p->m_items) {
            for (int i = 0; i < p->m_count; ++i)
                p->m_items[i].~CRpnData();
            ::operator delete(p->m_items);
        }
        break;
    case RPN_FORMULA:
        if (!borrowed && p->m_tree) {
            if (CRpnFormulaSupport *f = GetRpnFormulaSupport())
                f->DeleteTree(p->m_tree);
        }
        break;
    case RPN_DOCUMENT:
    case RPN_CURVE:
    case RPN_TABLE:
    case RPN_LOOKUP_TABLE:
        if (!borrowed)
            delete p->m_object;
        break;
    case RPN_XML:
        if (!CXmlElement::IsNull(p->m_xml))
            p->m_xml->Release();
        break;
    default: // null, numbers, POINTER, TARNPART, FUNCTION: nothing owned
        break;
    }
}

} // namespace

void RpnPool::GiveBackShared(CRpnPayload *payload)
{
    auto *n = reinterpret_cast<FreeNode *>(payload);
    SharedPool &s = shared();
    std::lock_guard guard(s.lock);
    setNext(n, s.head);
    s.head = n;
    ++s.count;
}
