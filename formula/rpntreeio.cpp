// Saving and reading compiled trees.
//
// A tree in a buffer:
//   the buffer's four 16-bit version words
//   a 32-bit word, 0
//   the 32-bit count of user functions, then for each a 32-bit word with
//   bit 0 set and a counted block: name, parameter count, for each parameter
//   its name, its flags and its default value, then the body's node stream
//   the node stream of the root
//
// A node stream holds one entry per node: the class number (32 bits), the
// number of operand places (32 bits) and a counted block with what the
// node's SerializeNode writes.  A missing operand is the lone word 999.  The
// stream starts with the root's entry and ends with a word 0.  In between, a
// stack is worked without recursion: a node with operands is pushed when its
// entry is written; the top node is popped and the entries of all its
// operands are written in order.  Reading mirrors this, making each node from
// the prototype of its class.

#include "formula/rpntree.h"

#include "formula/rpnbuffer.h"
#include "formula/rpnfunctioncall.h"
#include "formula/rpnuserfunction.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace {

constexpr std::uint32_t kMissing = 999;

CRpnBuffer blockFor(const CRpnBuffer &outer)
{
    CRpnBuffer block(outer.m_versionA, outer.m_versionB, outer.m_versionC, outer.m_versionD);
    block.m_depth = outer.m_depth + 1;
    return block;
}

void writeWord(CRpnBuffer &b, std::uint32_t word)
{
    b.Transfer(word);
}

void writeEntry(CRpnBuffer &b, CRpnNode *node)
{
    writeWord(b, std::uint32_t(node->GetKind()));
    writeWord(b, std::uint32_t(GetOperandPlaces(node)));
    CRpnBuffer block = blockFor(b);
    block.Reset(CBufferIO::ModeWrite, 64);
    node->SerializeNode(block);
    b.TransferBlock(block);
}

void writeNodes(CRpnBuffer &b, CRpnNode *root)
{
    if (!root) {
        writeWord(b, kMissing);
        writeWord(b, 0);
        return;
    }
    writeEntry(b, root);
    std::vector<CRpnNode *> stack;
    if (GetOperandPlaces(root) > 0)
        stack.push_back(root);
    while (!stack.empty()) {
        CRpnNode *node = stack.back();
        stack.pop_back();
        const int places = GetOperandPlaces(node);
        for (int i = 0; i < places; ++i) {
            CRpnNode *child = node->GetOperand(i);
            if (!child) {
                writeWord(b, kMissing);
                continue;
            }
            writeEntry(b, child);
            if (GetOperandPlaces(child) > 0)
                stack.push_back(child);
        }
    }
    writeWord(b, 0);
}

// One entry; null for a missing operand or when the entry is not valid
// (`ok` false then).
CRpnNode *readEntry(CRpnBuffer &b, CEquationTree *tree, int &places, bool &ok)
{
    places = 0;
    const std::uint32_t kind = b.ReadWord();
    if (kind == kMissing)
        return nullptr;
    const std::int32_t count = std::int32_t(b.ReadWord());
    CRpnBuffer block = blockFor(b);
    b.TransferBlock(block);
    CRpnNode *node = kind < 2000 ? CreateNodeOfKind(int(kind), tree) : nullptr;
    // Every entry takes at least a word, which bounds what a count may promise.
    if (!node || count < 0 || count > b.GetRemaining() / 4
        || (!node->IsList() && count > GetOperandPlaces(node)) || block.m_depth > CRpnBuffer::MaxDepth) {
        delete node;
        ok = false;
        return nullptr;
    }
    node->SerializeNode(block);
    node->m_tree = tree;
    places = count;
    return node;
}

CRpnNode *readNodes(CRpnBuffer &b, CEquationTree *tree, bool &ok)
{
    ok = true;
    int places = 0;
    CRpnNode *root = readEntry(b, tree, places, ok);
    if (!ok)
        return nullptr;
    std::vector<std::pair<CRpnNode *, int>> stack;
    if (root && places > 0)
        stack.emplace_back(root, places);
    while (!stack.empty() && ok) {
        auto [node, count] = stack.back();
        stack.pop_back();
        for (int i = 0; i < count && ok; ++i) {
            int childPlaces = 0;
            CRpnNode *child = readEntry(b, tree, childPlaces, ok);
            node->SetOperand(i, child);
            if (child && childPlaces > 0)
                stack.emplace_back(child, childPlaces);
        }
    }
    if (ok && b.ReadWord() != 0)
        ok = false;
    if (!ok) {
        DeleteSubtree(root);
        return nullptr;
    }
    return root;
}

void writeFunction(CRpnBuffer &b, CRpnUserFunction *f)
{
    QString name = f->m_name;
    b.TransferString(name);
    std::int32_t count = f->GetParameterCount();
    b.Transfer(count);
    for (int i = 0; i < count; ++i) {
        QString parameter = f->m_parameterNames[i];
        b.TransferString(parameter);
        std::uint32_t flags = f->m_parameterFlags.value(i);
        b.Transfer(flags);
        CRpnData value = f->m_defaults.value(i);
        value.Serialize(b);
    }
    writeNodes(b, f->m_body);
}

CRpnUserFunction *readFunction(CRpnBuffer &b, CEquationTree *tree)
{
    auto *f = new CRpnUserFunction;
    f->m_owner = tree;
    b.TransferString(f->m_name);
    const std::int32_t count = std::int32_t(b.ReadWord());
    if (count < 0 || count > b.GetRemaining() / 4) {
        delete f;
        return nullptr;
    }
    for (int i = 0; i < count; ++i) {
        QString parameter;
        b.TransferString(parameter);
        const std::uint32_t flags = b.ReadWord();
        CRpnData value;
        value.Serialize(b);
        f->m_parameterNames.append(parameter);
        f->m_parameterFlags.append(flags);
        f->m_defaults.append(value);
    }
    bool ok = true;
    f->m_body = readNodes(b, tree, ok);
    if (!ok || f->m_name.isEmpty()) {
        delete f;
        return nullptr;
    }
    return f;
}

} // namespace

bool CEquationTree::Serialize(CRpnBuffer &buffer)
{
    buffer.TransferVersion();
    if (buffer.IsWriting()) {
        writeWord(buffer, 0);
        QStringList names = m_functions.keys();
        names.sort();
        writeWord(buffer, std::uint32_t(names.size()));
        for (const QString &name : names) {
            writeWord(buffer, 1);
            CRpnBuffer block = blockFor(buffer);
            block.Reset(CBufferIO::ModeWrite, 256);
            writeFunction(block, m_functions.value(name));
            buffer.TransferBlock(block);
        }
        writeNodes(buffer, m_root);
        return true;
    }
    if (!buffer.IsReading())
        return false;

    clear();
    ResetError();
    buffer.ReadWord();
    const std::int32_t count = std::int32_t(buffer.ReadWord());
    if (count < 0 || count > buffer.GetRemaining() / 4)
        return false;
    for (int i = 0; i < count; ++i) {
        const std::uint32_t flags = buffer.ReadWord();
        CRpnBuffer block = blockFor(buffer);
        buffer.TransferBlock(block);
        if (!(flags & 1))
            continue;
        CRpnUserFunction *f = readFunction(block, this);
        if (!f) {
            clear();
            return false;
        }
        AddFunction(f);
    }
    bool ok = true;
    CRpnNode *root = readNodes(buffer, this, ok);
    if (!ok) {
        clear();
        return false;
    }
    // Calls find their functions again by name.
    auto bindCalls = [this](CRpnNode *node) {
        if (CNode_Function *call = node->AsFunctionCall())
            call->m_function = FindFunction(call->m_functionName);
        return 0;
    };
    for (CRpnUserFunction *f : std::as_const(m_functions)) {
        WalkTree(f->m_body, bindCalls);
        f->BindSlots(m_caseSensitiveNames != 0);
        PrepareFastPath(f->m_body);
    }
    WalkTree(root, bindCalls);
    SetRoot(root);
    return true;
}
