#pragma once
// The keyword table: upper-case names of keywords and built-in functions to
// the class numbers of their node classes, and the prototype array, indexed by
// class number, from which the parser clones one node per call site.
//
// Both are shared by all formulas of the process.  They are built once, on
// first use (the first equation tree makes them); the build is guarded, so
// that two threads that start at once still get one build.  Afterwards they
// are read without a lock; whatever adds to them (graph trees add their own
// functions) does so before other threads compile.
//
// Node classes join by a prototype provider: a function that puts one
// prototype of each of its classes into the array.  The providers are
// registered before the first build, and a name of the language enters the
// table only when its class has a prototype.

#include <QHash>
#include <QString>
#include <vector>

class CRpnNode;
class CEquationTree;

// One row of the language's own table.
struct CRpnKeywordRow
{
    const char *name;      // upper case
    int classNumber;       // the node's GetKind
    const char *className; // the node class that answers to it
};

// The 160 names of the language, in table order.
const std::vector<CRpnKeywordRow> &GetLanguageKeywords();

class CRpnKeywordTable
{
public:
    // The class number of an upper-case name, -1 when it is not in the table.
    int Lookup(const QString &upperName) const { return m_map.value(upperName, -1); }
    void Add(const QString &upperName, int classNumber) { m_map.insert(upperName, classNumber); }
    int GetCount() const { return int(m_map.size()); }
    bool Contains(const QString &upperName) const { return m_map.contains(upperName); }

private:
    QHash<QString, int> m_map;
};

class CRpnPrototypeArray
{
public:
    static constexpr int Size = 2000;

    CRpnPrototypeArray() = default;
    CRpnPrototypeArray(const CRpnPrototypeArray &) = delete;
    CRpnPrototypeArray &operator=(const CRpnPrototypeArray &) = delete;
    ~CRpnPrototypeArray();

    CRpnNode *GetAt(int classNumber) const
    {
        return classNumber >= 0 && classNumber < Size ? m_nodes[classNumber] : nullptr;
    }
    // Takes ownership; a prototype already in the slot is deleted.
    void SetAt(int classNumber, CRpnNode *prototype);

private:
    CRpnNode *m_nodes[Size] = {};
};

using CRpnPrototypeProvider = void (*)(CRpnPrototypeArray &prototypes);

// Registers a provider.  Before the first build it simply waits for it; after
// it, the provider runs at once and its names are entered (not thread-safe).
void AddPrototypeProvider(CRpnPrototypeProvider provider);

// Builds the table and the prototypes once; later calls return at once.
void BuildKeywordTable();
CRpnKeywordTable &GetKeywordTable();
CRpnPrototypeArray &GetPrototypes();

// A host's hook for names that are not in the table: returns a node, or null
// to let the language go on with its own rules.  A status of 11 tells that the
// host refuses the name.
using CRpnKeywordHook = CRpnNode *(*)(CEquationTree *tree, const QString &name, int position,
                                       int row, int col, unsigned char &status);

// The node for a word: the name is upper-cased and looked up; a prototype
// found is cloned for `tree` at the position given.  Otherwise `hook`, when
// given, is asked.  Null when neither knows the word.
CRpnNode *LookupKeyword(CEquationTree *tree, const QString &name, int position, int row, int col,
                        unsigned char &status, CRpnKeywordHook hook = nullptr);
