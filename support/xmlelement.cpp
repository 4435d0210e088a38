#include "support/xmlelement.h"

#include <unordered_set>
#include <vector>

namespace {

void releaseNode(void *node)
{
    static_cast<CXmlElement *>(node)->Release();
}

} // namespace

CArrayXmlElement::CArrayXmlElement() : CArraySharedPtr(releaseNode) {}

int CArrayXmlElement::Add(CXmlElement *node)
{
    node->AddRef();
    return CArraySharedPtr::Add(node);
}

void CArrayXmlElement::RemoveAt(int i)
{
    if (auto *node = static_cast<CXmlElement *>(CArraySharedPtr::RemoveAt(i)))
        node->Release();
}

CXmlElement::CXmlElement() : m_kind(KindElement) {}

CXmlElement::CXmlElement(const QString &name, int kind) : m_kind(kind), m_name(name) {}

CXmlElement::~CXmlElement() = default;

CXmlElement *CXmlElement::Null()
{
    // Kind 0, so that every operation that adds to it or adds it refuses.
    static CXmlElement *const null = new CXmlElement(QString(), KindNone);
    return null;
}

void CXmlElement::AddRef()
{
    if (this != Null())
        ++m_refCount;
}

void CXmlElement::Release()
{
    if (this == Null() || --m_refCount > 0)
        return;
    // Free this node and every node whose last reference it held, with a
    // work list instead of recursion.  Only lists whose body is not shared
    // with another list give up their references here; a shared body keeps
    // them until its last list goes.
    std::vector<void *> pending{this};
    std::vector<void *> taken;
    while (!pending.empty()) {
        auto *node = static_cast<CXmlElement *>(pending.back());
        pending.pop_back();
        taken.clear();
        if (node->m_attributes.GetBodyRefCount() == 1)
            node->m_attributes.TakeAll(taken);
        if (node->m_children.GetBodyRefCount() == 1)
            node->m_children.TakeAll(taken);
        for (void *p : taken) {
            auto *child = static_cast<CXmlElement *>(p);
            if (child != Null() && --child->m_refCount <= 0)
                pending.push_back(child);
        }
        delete node;
    }
}

CXmlElement *CXmlElement::AddAttribute(const QString &name, const QString &value)
{
    if (IsNull(this) || m_kind == KindNone || name.isNull())
        return nullptr;
    CXmlElementPtr attribute = CXmlElementPtr::Create(name, KindAttribute);
    attribute->SetData(value);
    m_attributes.Add(attribute.Get());
    return attribute.Get();
}

CXmlElement *CXmlElement::SetAttribute(const QString &name, const QString &value)
{
    if (CXmlElement *attribute = FindAttribute(name)) {
        attribute->SetData(value);
        return attribute;
    }
    return AddAttribute(name, value);
}

CXmlElement *CXmlElement::FindAttribute(const QString &name, Qt::CaseSensitivity cs) const
{
    if (IsNull(this))
        return nullptr;
    const int n = m_attributes.GetSize();
    for (int i = 0; i < n; ++i) {
        CXmlElement *attribute = m_attributes.GetAt(i);
        if (!IsNull(attribute) && attribute->m_name.compare(name, cs) == 0)
            return attribute;
    }
    return nullptr;
}

QString CXmlElement::GetAttribute(const QString &name, bool *found) const
{
    const CXmlElement *attribute = FindAttribute(name);
    if (found)
        *found = attribute != nullptr;
    return attribute ? attribute->m_data : QString();
}

int CXmlElement::RemoveAttribute(const QString &name)
{
    if (IsNull(this))
        return 0;
    const int i = m_attributes.Find(FindAttribute(name));
    if (i < 0)
        return 0;
    m_attributes.RemoveAt(i);
    return 1;
}

bool CXmlElement::AddChild(CXmlElement *child)
{
    if (IsNull(this) || IsNull(child) || m_kind == KindNone || child->m_kind == KindNone)
        return false;
    // A child that holds this node (or is it) would close a cycle.
    if (child->Contains(this))
        return false;
    child->m_namespace = m_namespace;
    m_children.Add(child);
    return true;
}

int CXmlElement::RemoveChildAt(int i)
{
    if (IsNull(this) || i < 0 || i >= m_children.GetSize())
        return 0;
    m_children.RemoveAt(i);
    return 1;
}

bool CXmlElement::Contains(const CXmlElement *node) const
{
    if (IsNull(this) || IsNull(node))
        return false;
    // Depth-first over a graph whose nodes may be shared, so each node is
    // visited once.
    std::vector<const CXmlElement *> stack{this};
    std::unordered_set<const CXmlElement *> seen;
    while (!stack.empty()) {
        const CXmlElement *e = stack.back();
        stack.pop_back();
        if (e == node)
            return true;
        const int n = e->m_children.GetSize();
        for (int i = 0; i < n; ++i) {
            const CXmlElement *child = e->m_children.GetAt(i);
            if (!IsNull(child) && seen.insert(child).second)
                stack.push_back(child);
        }
    }
    return false;
}

CXmlElementPtr CXmlElementPtr::Create(const QString &name, int kind)
{
    return CXmlElementPtr(new CXmlElement(name, kind));
}

CXmlElementPtr CXmlElementPtr::Create(const QChar *name, int nameLength, int kind)
{
    return Create(name ? QString(name, nameLength) : QString(), kind);
}
