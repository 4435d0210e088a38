#pragma once
// The parser: scanner items to a tree of nodes, in passes.
//
//   1. item to node: one node per significant item, with the sign of + and -,
//      soft statement ends at line ends and implicit commas (list mode), and
//      directive nodes rearranged into IF shape with section marks;
//   2. rewriting of adjacent nodes: tags, joined texts, negative constants,
//      NULL in empty list places, argument lists of list functions;
//   3. the sequence check of neighbours;
//   4. block building: braces and square brackets become nested lists;
//   5. per list, the shunting yard into postfix order (every operator is
//      left-associative), then
//   6. folding the postfix order into trees, IF statements by a state counter;
//   7. the structure check, which also lists the variables in first-use order.
//
// Any failing pass reports at the node where it failed (row, column, the
// node's text, message) and frees everything made so far.

#include "formula/rpnnode.h"

#include <QSet>
#include <QString>
#include <QStringList>
#include <vector>

class CEquationTree;
class CMapStringToRpnData;
class CRpnNode;
class CRpnNodeList;
class CRpnParserItem;
class CRpnParserItemArray;
class CRpnFormatArg;

class CRpnParser
{
public:
    // `locals` names the variables that count as local (may be null).  In a
    // function body the tree's main dictionary is not consulted: names there
    // are the call's own.
    CRpnParser(CEquationTree *tree, CMapStringToRpnData *locals, bool allowNewVariables, bool functionBody,
               QStringList *outVariableNames);
    CRpnParser(const CRpnParser &) = delete;
    CRpnParser &operator=(const CRpnParser &) = delete;
    ~CRpnParser();

    // All passes over the items; the root (a list), or null after reporting.
    CRpnNode *Parse(const CRpnParserItemArray &items);

private:
    // Pass 1.
    bool itemsToNodes(const CRpnParserItemArray &items);
    CRpnNode *makeNode(const CRpnParserItem &item);
    CRpnNode *makeWord(const CRpnParserItem &item);
    CRpnNode *makeOperator(const CRpnParserItem &item);
    void lineEnd(const CRpnParserItem &item);
    void place(CRpnNode *node, const CRpnParserItem &item);
    bool isTagPattern() const;
    void arrangeDirective(CRpnNode *node);
    void appendSectionMark(bool open, int role, const CRpnNode *at);
    void dropSoftEnd();
    // Pass 2.
    bool rewrite();
    int matchingParenthesis(int open) const;
    // A comma at the group's own level between `open` and `close`.
    bool hasCommaInside(int open, int close) const;
    void turnIntoBraces(int open, int close);
    // Pass 3.
    bool checkSequence();
    // Pass 4.
    CRpnNodeList *buildBlocks();
    // Passes 5 and 6, lists inside first.
    bool processList(CRpnNodeList *list);
    bool processNode(CRpnNode *node);
    bool order(CRpnNodeList *list);
    bool fold(CRpnNodeList *list);
    // Pass 7.
    bool checkStructure(CRpnNode *node);
    bool useVariable(CRpnNode *node);

    bool fail(const CRpnNode *at, int messageId, std::initializer_list<CRpnFormatArg> args);
    bool failAtItem(const CRpnParserItem &item, int messageId, std::initializer_list<CRpnFormatArg> args);
    CRpnNode *previous() const { return m_nodes.empty() ? nullptr : m_nodes.back(); }
    // A new node of class T bound to the tree at the given place.
    template <typename T>
    T *make(int position, int row, int col)
    {
        T *node = new T;
        node->m_tree = m_tree;
        node->m_position = position;
        node->m_row = row;
        node->m_col = col;
        return node;
    }

    CEquationTree *m_tree;
    CMapStringToRpnData *m_locals;
    bool m_allowNew;
    bool m_functionBody;
    QStringList *m_outNames;
    QSet<QString> m_newNames;          // names of new variables met so far
    QSet<const CRpnNode *> m_firstUses; // the node where each was met first
    QStringList m_known;     // variables known to the structure check
    QStringList m_seen;      // variables in first-use order
    std::vector<CRpnNode *> m_nodes; // the flat array of passes 1 to 4 (owned while there)
    // Directives waiting for what follows them: an IF-like one opens its
    // section at the first token of the next line; "#define" takes its
    // name in front of it.
    const CRpnNode *m_sectionPending = nullptr;
    bool m_sectionLineEnded = false;
    const CRpnNode *m_definePending = nullptr;
};
