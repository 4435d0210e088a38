// Explicit copies of values: DeepCopy, and CopyRange behind the language's Copy.

#include "formula/rpndata.h"

#include "formula/rpndictionary.h"
#include "formula/rpnseams.h"

#include <QVarLengthArray>

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {

// Kinds that are never changed in place, so a copy may share them.
bool isImmutableKind(std::uint32_t kind)
{
    return kind == RPN_NULL || kind == RPN_REAL || kind == RPN_INT || kind == RPN_STRING
        || kind == RPN_COMPLEX;
}

CRpnData cloneFormula(const CRpnData &from)
{
    CRpnData copy;
    CRpnFormulaSupport *f = GetRpnFormulaSupport();
    if (f && from.GetFormula())
        copy.SetFormula(f->CloneTree(from.GetFormula()));
    return copy;
}

CRpnData cloneDictionary(const CRpnData &from)
{
    CRpnData copy;
    copy.SetDictionary();
    if (const CMapStringToRpnData *map = from.GetDictionary()) {
        CRpnPayload *p = CRpnDataAccess::Payload(copy);
        delete p->m_map;
        p->m_map = map->Clone();
    }
    return copy;
}

} // namespace

void CRpnData::DeepCopy(const CRpnData &from)
{
    if (this == &from)
        return;
    // Built aside first: `from` may live inside the value being replaced.
    CRpnData copy;
    const std::uint32_t kind = from.m_kind;
    if (!boxed(kind)) {
        *this = from;
        return;
    }
    const CRpnPayload *p = from.m_u.p;
    switch (kind) {
    case RPN_NULL:
        break;
    case RPN_STRING:
        copy.SetText(QString(p->Text()));
        break;
    case RPN_ARRAY_R:
        copy.SetRealArray(p->m_count);
        std::memcpy(copy.m_u.p->m_reals, p->m_reals, sizeof(double) * std::size_t(p->m_count));
        copy.m_u.p->m_flags = p->m_flags & ~RPN_FLAG_BORROWED;
        break;
    case RPN_ARRAY: {
        // Arrays inside arrays are copied from a list of pending pairs
        // (source, fresh copy), not by recursion: they may nest deeply.  An
        // array that several cells hold is copied once, and its copy is held
        // by the same cells of the copy: the copy shares within itself what
        // the original shares (a value built by thirty doublings is thirty
        // arrays, not a billion cells), and nothing with the original.
        copy.SetArray(p->m_count);
        copy.m_u.p->m_flags = p->m_flags & ~RPN_FLAG_BORROWED;
        std::vector<std::pair<const CRpnPayload *, CRpnPayload *>> pending{{p, copy.m_u.p}};
        std::unordered_map<const CRpnPayload *, CRpnData> copied;
        while (!pending.empty()) {
            const auto [source, target] = pending.back();
            pending.pop_back();
            for (int i = 0; i < source->m_count; ++i) {
                const CRpnData &item = source->m_items[i];
                CRpnData &slot = target->m_items[i];
                if (isImmutableKind(item.GetKind())) {
                    slot = item;
                } else if (item.GetKind() == RPN_ARRAY) {
                    const bool shared = item.m_u.p->m_refs > 1;
                    if (shared) {
                        const auto it = copied.find(item.m_u.p);
                        if (it != copied.end()) {
                            slot = it->second;
                            continue;
                        }
                    }
                    slot.SetArray(item.m_u.p->m_count);
                    slot.m_u.p->m_flags = item.m_u.p->m_flags & ~RPN_FLAG_BORROWED;
                    pending.emplace_back(item.m_u.p, slot.m_u.p);
                    if (shared)
                        copied.emplace(item.m_u.p, slot);
                } else {
                    slot.DeepCopy(item);
                }
            }
        }
        break;
    }
    case RPN_FORMULA:
        copy = cloneFormula(from);
        break;
    case RPN_DICTIONARY:
        copy = cloneDictionary(from);
        break;
    case RPN_REAL:
    case RPN_INT:
    case RPN_COMPLEX:
    case RPN_POINTER:
    case RPN_DOCUMENT:
    case RPN_TARNPART:
    case RPN_FUNCTION:
    case RPN_TABLE:
    case RPN_LOOKUP_TABLE:
    case RPN_XML:
        copy = from; // shared
        break;
    default: // CURVE and unknown kinds: the target stays as it is
        return;
    }
    *this = std::move(copy);
}

bool CRpnData::HoldsAny(const CRpnData *const *containers, std::size_t count) const
{
    const auto isContainer = [](const CRpnData &v) { return v.m_kind == RPN_ARRAY || v.m_kind == RPN_DICTIONARY; };
    if (!isContainer(*this))
        return false;
    const auto isTarget = [&](const CRpnPayload *p) {
        for (std::size_t i = 0; i < count; ++i) {
            if (isContainer(*containers[i]) && containers[i]->m_u.p == p)
                return true;
        }
        return false;
    };
    // Walked from a list of pending payloads; one that several cells hold
    // is gone into once.
    QVarLengthArray<const CRpnPayload *, 32> pending{m_u.p};
    std::unordered_set<const CRpnPayload *> seen;
    const auto visit = [&](const CRpnData &item) {
        if (!isContainer(item))
            return;
        if (item.m_u.p->m_refs > 1 && !seen.insert(item.m_u.p).second)
            return;
        pending.push_back(item.m_u.p);
    };
    while (!pending.empty()) {
        const CRpnPayload *p = pending.back();
        pending.pop_back();
        if (isTarget(p))
            return true;
        if (p->m_kind == RPN_ARRAY) {
            for (int i = 0; i < p->m_count; ++i)
                visit(p->m_items[i]);
        } else if (const CMapStringToRpnData *map = p->m_map) {
            for (int i = 0; i < map->GetCount(); ++i)
                visit(map->GetValueAt(i));
        }
    }
    return false;
}

void CRpnData::CopyRange(const CRpnData &from, int start, int length)
{
    const std::uint32_t kind = from.m_kind;
    if (!boxed(kind)) {
        *this = from;
        return;
    }
    const CRpnPayload *p = from.m_u.p;
    const bool isText = kind == RPN_STRING;
    if (kind == RPN_ARRAY || kind == RPN_ARRAY_R || isText) {
        const int size = isText ? int(std::min<qsizetype>(p->Text().size(), INT32_MAX)) : p->m_count;
        // Start -1 takes the last `length` cells; -1 as the length takes all.
        std::int64_t s = start;
        std::int64_t n = length;
        if (s == -1)
            s = std::int64_t(size) - n;
        if (s < 0)
            s = 0;
        if (n == -1)
            n = size;
        if (s + n > size)
            n = size - s;
        if (n < 0)
            n = 0;
        CRpnData copy;
        if (isText) {
            copy.SetText(p->Text().mid(qsizetype(s), qsizetype(n)));
        } else if (kind == RPN_ARRAY_R) {
            copy.SetRealArray(int(n));
            if (n > 0)
                std::memcpy(copy.m_u.p->m_reals, p->m_reals + s, sizeof(double) * std::size_t(n));
        } else {
            // The cells' arrays are copied whole from a list of pending pairs
            // (source, fresh copy) rather than by recursion, as DeepCopy
            // does, and one that several cells hold is copied once.
            copy.SetArray(int(n));
            std::vector<std::pair<const CRpnPayload *, CRpnPayload *>> pending;
            std::unordered_map<const CRpnPayload *, CRpnData> copied;
            const auto copyCell = [&pending, &copied](const CRpnData &item, CRpnData &slot) {
                if (isImmutableKind(item.GetKind())) {
                    slot = item;
                    return;
                }
                if (item.GetKind() != RPN_ARRAY) {
                    slot.CopyRange(item, 0, -1); // holds no arrays of its own to go into
                    return;
                }
                const bool shared = item.m_u.p->m_refs > 1;
                if (shared) {
                    const auto it = copied.find(item.m_u.p);
                    if (it != copied.end()) {
                        slot = it->second;
                        return;
                    }
                }
                slot.SetArray(item.m_u.p->m_count);
                pending.emplace_back(item.m_u.p, slot.m_u.p);
                if (shared)
                    copied.emplace(item.m_u.p, slot);
            };
            for (int i = 0; i < int(n); ++i)
                copyCell(p->m_items[s + i], copy.m_u.p->m_items[i]);
            while (!pending.empty()) {
                const auto [source, target] = pending.back();
                pending.pop_back();
                for (int i = 0; i < source->m_count; ++i)
                    copyCell(source->m_items[i], target->m_items[i]);
            }
        }
        *this = std::move(copy);
        return;
    }
    switch (kind) {
    case RPN_FORMULA:
        *this = cloneFormula(from);
        break;
    case RPN_DICTIONARY:
        *this = cloneDictionary(from);
        break;
    case RPN_TARNPART: {
        CRpnData copy;
        copy.SetPart(p->m_pointer);
        *this = std::move(copy);
        break;
    }
    case RPN_CURVE:
        SetNull();
        break;
    default:
        *this = from;
        break;
    }
}
