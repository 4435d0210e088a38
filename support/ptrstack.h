#pragma once
// A stack of untyped pointers.

#include <vector>

class CPtrStack
{
public:
    void Push(void *p) { m_items.push_back(p); }
    void *Pop()
    {
        if (m_items.empty())
            return nullptr;
        void *p = m_items.back();
        m_items.pop_back();
        return p;
    }
    void *Top() const { return m_items.empty() ? nullptr : m_items.back(); }
    bool IsEmpty() const { return m_items.empty(); }
    int GetSize() const { return int(m_items.size()); }
    void *GetAt(int i) const { return m_items[std::size_t(i)]; }
    void RemoveAll() { m_items.clear(); }

private:
    std::vector<void *> m_items;
};
