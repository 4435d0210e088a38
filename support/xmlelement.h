#pragma once
// A small XML document model: reference-counted nodes for elements,
// attributes and text, a tolerant single-pass parser over UTF-16 text
// (xmlparser.cpp) and a writer back to text (xmlwriter.cpp).
//
// Ownership: a node starts with no reference.  CXmlElementPtr holds one, and
// so does every array that lists the node (a parent's children or
// attributes).  An element may stand under several parents; AddChild refuses
// anything that would close a cycle, so the nodes always form a directed
// acyclic graph and counting is enough to free them.
//
// One shared null object stands for "no element".  Every operation treats a
// null pointer and that object alike, and the null object is never counted.
//
// Nodes are not thread-safe: a tree belongs to one thread at a time.

#include "support/arraysharedptr.h"

#include <QString>
#include <cstdint>

class CXmlElement;

// The list of attributes or children of an element.  It holds one reference
// to each node it lists and drops it when the last copy of the list goes.
class CArrayXmlElement : public CArraySharedPtr
{
public:
    CArrayXmlElement();

    CXmlElement *GetAt(int i) const { return static_cast<CXmlElement *>(CArraySharedPtr::GetAt(i)); }
    CXmlElement *operator[](int i) const { return GetAt(i); }
    // Adds a reference to the node.
    int Add(CXmlElement *node);
    // Removes the node at i and drops the list's reference to it.
    void RemoveAt(int i);
};

class CXmlElement
{
public:
    enum Kind : std::int32_t { KindNone = 0, KindElement = 1, KindAttribute = 2, KindText = 3 };

    // An element of kind 1 with an empty name.
    CXmlElement();
    CXmlElement(const QString &name, int kind);
    CXmlElement(const CXmlElement &) = delete;
    CXmlElement &operator=(const CXmlElement &) = delete;

    // The shared null object, and the test for "no element".
    static CXmlElement *Null();
    static bool IsNull(const CXmlElement *node) { return node == nullptr || node == Null(); }

    void AddRef();
    // Drops one reference; the last one frees the node and, through their
    // own counts, the nodes below it (without recursion, so that deep trees
    // are safe).
    void Release();
    int RefCount() const { return m_refCount; }

    int GetKind() const { return m_kind; }
    const QString &GetName() const { return m_name; }
    void SetName(const QString &name) { m_name = name; }
    const QString &GetData() const { return m_data; }
    void SetData(const QString &data) { m_data = data; }
    const QString &GetNamespace() const { return m_namespace; }
    void SetNamespace(const QString &ns) { m_namespace = ns; }

    // Attributes, in the order they were added.  AddAttribute does not look
    // for a duplicate; it gives null for a null name or on a node of kind 0.
    CXmlElement *AddAttribute(const QString &name, const QString &value);
    // Replaces the value of the first attribute of that name, else adds one.
    CXmlElement *SetAttribute(const QString &name, const QString &value);
    CXmlElement *FindAttribute(const QString &name, Qt::CaseSensitivity cs = Qt::CaseSensitive) const;
    // The value, or an empty text (and *found false) when there is none.
    QString GetAttribute(const QString &name, bool *found = nullptr) const;
    // Removes the first attribute of that name: 1 when one was removed, else 0.
    int RemoveAttribute(const QString &name);
    int GetAttributeCount() const { return m_attributes.GetSize(); }
    CXmlElement *GetAttributeAt(int i) const { return m_attributes.GetAt(i); }
    const CArrayXmlElement &Attributes() const { return m_attributes; }

    // Appends a child.  Refused (false) for a null child, the null object, a
    // node of kind 0, a child that is this node, or one that already holds
    // this node at any depth.  On success the child takes this node's
    // namespace and gains a reference.
    bool AddChild(CXmlElement *child);
    // Removes the child at i; 1 when done, 0 for a bad index.
    int RemoveChildAt(int i);
    int GetChildCount() const { return m_children.GetSize(); }
    CXmlElement *GetChildAt(int i) const { return m_children.GetAt(i); }
    const CArrayXmlElement &Children() const { return m_children; }
    // True when `node` is this node or lies anywhere below it.
    bool Contains(const CXmlElement *node) const;

    // Parses text[start .. min(end, length)) into `root`, whose new children
    // are the top-level elements of the text.  On a malformed text the result
    // is false and `position` is the index of the offending character (0 when
    // the text merely ended with elements still open).
    static bool Parse(CXmlElement *root, const QChar *text, int length, int start, int end, int &position);
    static bool Parse(CXmlElement *root, const QString &text, int &position);

    // Writes the document of `root` as UTF-16 text.  False for the null
    // element or when memory runs out.
    static bool WriteDocument(const CXmlElement *root, QString &text);

    std::uint32_t m_attributeFlag = 0;
    std::uint32_t m_childFlag = 0;
    std::uint32_t m_userData1 = 0;
    std::uint32_t m_userData2 = 0;
    std::uint64_t m_userData64 = 0;

private:
    ~CXmlElement();
    friend class CXmlElementPtr;

    std::int32_t m_kind;
    QString m_name;
    QString m_data;
    CArrayXmlElement m_attributes;
    CArrayXmlElement m_children;
    QString m_namespace;
    std::int32_t m_refCount = 0;
};

// Holds one reference to a node.
class CXmlElementPtr
{
public:
    CXmlElementPtr() = default;
    CXmlElementPtr(CXmlElement *node) : m_node(node) { addRef(); }
    CXmlElementPtr(const CXmlElementPtr &other) : m_node(other.m_node) { addRef(); }
    CXmlElementPtr(CXmlElementPtr &&other) noexcept : m_node(other.m_node) { other.m_node = nullptr; }
    CXmlElementPtr &operator=(const CXmlElementPtr &other)
    {
        CXmlElementPtr copy(other);
        std::swap(m_node, copy.m_node);
        return *this;
    }
    CXmlElementPtr &operator=(CXmlElementPtr &&other) noexcept
    {
        std::swap(m_node, other.m_node);
        return *this;
    }
    ~CXmlElementPtr()
    {
        if (m_node)
            m_node->Release();
    }

    CXmlElement *Get() const { return m_node; }
    CXmlElement *operator->() const { return m_node; }
    CXmlElement &operator*() const { return *m_node; }
    explicit operator bool() const { return !CXmlElement::IsNull(m_node); }

    // A new node of the given kind.
    static CXmlElementPtr Create(const QString &name, int kind = CXmlElement::KindElement);
    static CXmlElementPtr Create(const QChar *name, int nameLength, int kind);

private:
    void addRef()
    {
        if (m_node)
            m_node->AddRef();
    }
    CXmlElement *m_node = nullptr;
};

// The creation functions by their usual names.
inline CXmlElementPtr CreateElement(const QString &name, int kind = CXmlElement::KindElement)
{
    return CXmlElementPtr::Create(name, kind);
}
inline CXmlElementPtr CreateElement(const QChar *name, int nameLength, int kind)
{
    return CXmlElementPtr::Create(name, nameLength, kind);
}
