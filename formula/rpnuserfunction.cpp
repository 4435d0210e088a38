#include "formula/rpnuserfunction.h"

#include "formula/rpndictionary.h"
#include "formula/rpnnodes.h"
#include "formula/rpntree.h"

#include <new>

// --- CRpnCallFrame ---------------------------------------------------------------------

CRpnCallFrame::CRpnCallFrame(const CRpnUserFunction *function, int count) : m_function(function), m_count(count)
{
    SlotEntry *entry = entries();
    for (int i = 0; i < count; ++i)
        new (entry + i) SlotEntry;
}

CRpnCallFrame::~CRpnCallFrame()
{
    SlotEntry *entry = entries();
    for (int i = 0; i < m_count; ++i)
        entry[i].~SlotEntry();
}

CRpnCallFrame *CRpnCallFrame::create(const CRpnUserFunction *function)
{
    const int count = function->GetSlotCount();
    void *block = ::operator new(slotsOffset() + sizeof(SlotEntry) * std::size_t(count));
    return new (block) CRpnCallFrame(function, count);
}

void CRpnCallFrame::destroy(CRpnCallFrame *frame)
{
    frame->~CRpnCallFrame();
    ::operator delete(static_cast<void *>(frame));
}

void CRpnCallFrame::dropExtra()
{
    m_extra.reset();
}

CRpnData *CRpnCallFrame::Find(const QString &name)
{
    const int slot = m_function->SlotOf(name);
    if (slot >= 0)
        return Slot(slot);
    return m_extra ? m_extra->FindHere(name) : nullptr;
}

void CRpnCallFrame::Set(const QString &name, const CRpnData &value)
{
    const int slot = m_function->SlotOf(name);
    if (slot >= 0) {
        SetSlot(slot, value);
        return;
    }
    if (!m_extra) {
        m_extra = std::make_unique<CMapStringToRpnData>();
        m_extra->m_caseSensitive = !m_function->m_owner || m_function->m_owner->m_caseSensitiveNames != 0;
    }
    m_extra->SetAt(name, value);
}

// --- CRpnUserFunction --------------------------------------------------------------------

CRpnUserFunction::~CRpnUserFunction()
{
    dropSpareFrames();
    delete m_body;
}

void CRpnUserFunction::dropSpareFrames()
{
    while (CRpnCallFrame *frame = m_spareFrames) {
        m_spareFrames = frame->m_nextSpare;
        CRpnCallFrame::destroy(frame);
    }
}

int CRpnUserFunction::SlotOf(const QString &name) const
{
    return m_slotIndex.value(key(name), -1);
}

void CRpnUserFunction::BindSlots(bool caseSensitive)
{
    m_caseSensitive = caseSensitive;
    m_fastBody = -1;
    m_fastSteps.clear();
    m_bodySteps.clear();
    m_slotNames.clear();
    m_slotIndex.clear();
    dropSpareFrames();
    m_hasByReference = false;
    for (int p = 0; p < GetParameterCount(); ++p)
        m_hasByReference = m_hasByReference || IsByReference(p);
    m_endsInReturn = false;
    if (m_body && (m_body->GetTraits() & RPN_TRAIT_LIST) && !(m_body->GetTraits() & RPN_TRAIT_MULTI_OPERAND)) {
        const auto &statements = static_cast<const CRpnNodeList *>(m_body)->m_children;
        m_endsInReturn = !statements.empty() && statements.back() && statements.back()->GetKind() == RPN_NODE_RETURN;
    }
    auto add = [this](const QString &name) {
        const QString k = key(name);
        auto it = m_slotIndex.constFind(k);
        if (it != m_slotIndex.cend())
            return *it;
        const int slot = int(m_slotNames.size());
        m_slotNames.append(k);
        m_slotIndex.insert(k, slot);
        return slot;
    };
    // The parameters take the first slots, one each, in their order.
    for (const QString &parameter : std::as_const(m_parameterNames)) {
        const QString k = key(parameter);
        if (!m_slotIndex.contains(k))
            m_slotIndex.insert(k, int(m_slotNames.size()));
        m_slotNames.append(k);
    }
    WalkTree(m_body, [&](CRpnNode *node) {
        if (CNodeVariable *variable = node->AsVariable(); variable && !variable->IsConstant()) {
            variable->m_slot = add(variable->m_name);
            variable->m_slotFunction = this;
        }
        return 0;
    });
    m_mainSlot = m_owner ? SlotOf(m_owner->m_mainVariablesName) : -1;
}

