#pragma once
// The record of a function defined in a script with FUNCTION: its name, its
// parameters with their defaults and flags, and its compiled body.  The
// scanner fills in the name and the parameters; the compiler adds the body.

#include "formula/rpndata.h"

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <memory>
#include <vector>

class CRpnNode;
class CEquationTree;
class CMapStringToRpnData;
class CRpnUserFunction;

// The variables of one running call.  Every name the body uses has a slot,
// fixed when the body is compiled: the parameters first, in their order,
// then the other names in the order of their first appearance.  A slot is
// either set or not (a name the call has not assigned yet is unknown).
// Names that the body does not hold and that come into being while it runs
// (made by the host or by a text evaluated at run time) go to a dictionary
// of their own, made on first need.
//
// A frame and its slots are one heap block (the slots follow the frame), made
// by the function's TakeFrame and kept by it for the next call.
class CRpnCallFrame
{
public:
    CRpnCallFrame(const CRpnCallFrame &) = delete;
    CRpnCallFrame &operator=(const CRpnCallFrame &) = delete;

    const CRpnUserFunction *GetFunction() const { return m_function; }
    // Slot i, or null while it is not set.
    CRpnData *Slot(int i) { return entries()[i].set ? &entries()[i].value : nullptr; }
    void SetSlot(int i, const CRpnData &value)
    {
        entries()[i].value = value;
        entries()[i].set = true;
    }
    void SetSlot(int i, CRpnData &&value)
    {
        entries()[i].value = std::move(value);
        entries()[i].set = true;
    }
    void SetDoubleSlot(int i, double x)
    {
        entries()[i].value.SetDouble(x);
        entries()[i].set = true;
    }
    // By name: the slots, then the names made at run time; null when unknown.
    CRpnData *Find(const QString &name);
    void Set(const QString &name, const CRpnData &value);
    // Unsets every slot and forgets the names made at run time, so that the
    // frame can serve the next call.
    void Clear()
    {
        // The values go now, not when the frame is next used: an array that a
        // finished call held must not stay shared (an assignment would copy it).
        SlotEntry *entry = entries();
        for (int i = 0; i < m_count; ++i) {
            if (entry[i].set) {
                entry[i].value.SetNull();
                entry[i].set = false;
            }
        }
        if (m_extra)
            dropExtra();
    }

private:
    friend class CRpnUserFunction;
    struct SlotEntry
    {
        CRpnData value;
        bool set = false;
    };
    CRpnCallFrame(const CRpnUserFunction *function, int count);
    ~CRpnCallFrame();
    static CRpnCallFrame *create(const CRpnUserFunction *function);
    static void destroy(CRpnCallFrame *frame);
    SlotEntry *entries()
    {
        return reinterpret_cast<SlotEntry *>(reinterpret_cast<unsigned char *>(this) + slotsOffset());
    }
    static constexpr std::size_t slotsOffset()
    {
        return (sizeof(CRpnCallFrame) + alignof(SlotEntry) - 1) / alignof(SlotEntry) * alignof(SlotEntry);
    }
    void dropExtra();

    const CRpnUserFunction *m_function;
    int m_count;
    std::unique_ptr<CMapStringToRpnData> m_extra;
    CRpnCallFrame *m_nextSpare = nullptr; // the function's list of spare frames
};

// One step of a body that runs on the fast path (CNode_Function::EvaluateFast):
// the body's `if` and `return` statements laid out in a row, so that a call
// runs them with a loop instead of walking the blocks.
struct CRpnFastStep
{
    enum Code : std::uint8_t {
        Test,   // the condition `expr`; when it is 0, go on at `target`
        Return, // the value of `expr` is the call's
        Store,  // `expr` is `v = expression`: the number goes into v's slot
        Jump,   // go on at `target`
    };
    Code code = Jump;
    int target = 0;
    CRpnNode *expr = nullptr; // not owned: a node of the body
};

// One step of a body that ends in `return`, run the ordinary way (any
// values): the blocks and the `if`s of the body laid out in a row, and
// every other statement a step of its own, run by its node.  A call runs
// them with a loop instead of walking the blocks.
struct CRpnBodyStep
{
    enum Code : std::uint8_t {
        Run,    // `node` is a statement, run for its effect
        Test,   // `node` is the condition of the `if` `at`; when false, go on at `target`
        Return, // `at` is a `return` of `node` (null: of the empty value)
        Jump,   // go on at `target`
    };
    Code code = Jump;
    int target = 0;
    CRpnNode *node = nullptr;  // not owned: a node of the body
    CRpnNode *at = nullptr;    // the `if` or `return` of a step
    // The statement of a block that holds the step's node (or the node
    // itself): where a failure that left no message is noted.
    CRpnNode *noted = nullptr;
};

class CRpnUserFunction
{
public:
    enum : std::uint32_t { ParamByReference = 1 };

    CRpnUserFunction() = default;
    CRpnUserFunction(const CRpnUserFunction &) = delete;
    CRpnUserFunction &operator=(const CRpnUserFunction &) = delete;
    virtual ~CRpnUserFunction();

    int GetParameterCount() const { return int(m_parameterNames.size()); }
    bool IsByReference(int i) const { return (m_parameterFlags.value(i) & ParamByReference) != 0; }
    // Whether any parameter is passed by reference; known after BindSlots.
    bool HasByReference() const { return m_hasByReference; }
    // Whether the body's last statement is a `return`, so that it may run
    // for its effect only (Execute); known after BindSlots.
    bool EndsInReturn() const { return m_endsInReturn; }

    // The slot of a name in the call's frame, -1 when the body has no such
    // name.  The name is compared as the owner tree's case mode says.
    int SlotOf(const QString &name) const;
    // Gives slots to all variables of the body (after compiling or reading it).
    void BindSlots(bool caseSensitive);
    int GetSlotCount() const { return int(m_slotNames.size()); }
    int GetMainSlot() const { return m_mainSlot; }

    // A frame for a call: a spare one left by an earlier call, or a new one.
    // A recursion deep n keeps n frames for the calls to come, so that a call
    // allocates nothing once its depth has been reached before.
    CRpnCallFrame *TakeFrame()
    {
        if (CRpnCallFrame *frame = m_spareFrames) {
            m_spareFrames = frame->m_nextSpare;
            frame->m_nextSpare = nullptr;
            return frame;
        }
        return CRpnCallFrame::create(this);
    }
    void GiveBackFrame(CRpnCallFrame *frame)
    {
        frame->Clear();
        frame->m_nextSpare = m_spareFrames;
        m_spareFrames = frame;
    }

    QString m_name;
    QStringList m_parameterNames;
    QList<CRpnData> m_defaults;         // the null value where none was written
    QList<std::uint32_t> m_parameterFlags;
    CRpnNode *m_body = nullptr;         // owned
    CEquationTree *m_owner = nullptr;   // not owned
    // Whether calls may take the fast path (CNode_Function::EvaluateFast):
    // -1 not yet known, 0 no (the body's form, a parameter passed by
    // reference, or a call on the fast path that had to give up), 1 yes.
    std::int8_t m_fastBody = -1;
    // The body as steps for the fast path, laid out when m_fastBody turns 1.
    std::vector<CRpnFastStep> m_fastSteps;
    // The body as steps for the ordinary way, laid out at the first call of
    // a body that ends in `return` (empty until then, and for other bodies).
    std::vector<CRpnBodyStep> m_bodySteps;

private:
    void dropSpareFrames();

    QString key(const QString &name) const { return m_caseSensitive ? name : name.toUpper(); }

    QStringList m_slotNames;            // stored as key() gives them
    QHash<QString, int> m_slotIndex;
    int m_mainSlot = -1;                // the slot of "MainVariables", if the body names it
    bool m_caseSensitive = true;
    bool m_hasByReference = false;
    bool m_endsInReturn = false;
    CRpnCallFrame *m_spareFrames = nullptr; // owned, linked by m_nextSpare
};
