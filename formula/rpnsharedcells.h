#pragma once
// Results of one walk over nested arrays, kept for the arrays that several
// cells hold.  A value built by doubling (`a = {a, a}` thirty times) has a
// billion cells but only thirty arrays: a walk that takes again the result it
// made for an array it meets a second time does sixty steps instead of a
// billion, and its result shares its parts the way the operand does.
//
// Only arrays held by more than one handle are kept: an array that one cell
// alone holds is met again only through a holder that is kept already.

#include "formula/rpndata.h"

#include <cstddef>
#include <cstdint>
#include <unordered_map>

class CRpnSharedCells
{
public:
    // True for an array that some other handle than the walk's own
    // `walkHandles` copies holds too.
    static bool IsShared(const CRpnData &cell, int walkHandles)
    {
        return cell.GetKind() == RPN_ARRAY && cell.GetRefs() > 1 + walkHandles;
    }

    // The result kept for the operands (a, b), or null.
    const CRpnData *Find(const CRpnData &a, const CRpnData &b) const
    {
        if (m_results.empty())
            return nullptr;
        const auto it = m_results.find(keyOf(a, b));
        return it == m_results.end() ? nullptr : &it->second;
    }
    void Keep(const CRpnData &a, const CRpnData &b, const CRpnData &result) { m_results[keyOf(a, b)] = result; }

private:
    struct Key
    {
        std::uint64_t a, b;
        std::uint32_t kindA, kindB;
        bool operator==(const Key &) const = default;
    };
    struct KeyHash
    {
        std::size_t operator()(const Key &k) const
        {
            std::uint64_t h = k.a * 0x9E3779B97F4A7C15ull;
            h ^= (k.b + 0x632BE59BD9B4E019ull + (h << 6) + (h >> 2));
            h ^= (std::uint64_t(k.kindA) << 32) | k.kindB;
            return std::size_t(h ^ (h >> 29));
        }
    };
    static Key keyOf(const CRpnData &a, const CRpnData &b)
    {
        return {a.GetIdentity(), b.GetIdentity(), a.GetKind(), b.GetKind()};
    }

    std::unordered_map<Key, CRpnData, KeyHash> m_results;
};
