#pragma once
// An owning array of object pointers: it deletes its members when they are
// removed through DeleteAll or when the array goes.  Find gives the index of
// a member or -1.

#include <vector>

template <typename T>
class CArrayPlus
{
public:
    CArrayPlus() = default;
    CArrayPlus(const CArrayPlus &) = delete;
    CArrayPlus &operator=(const CArrayPlus &) = delete;
    virtual ~CArrayPlus() { DeleteAll(); }

    int GetSize() const { return int(m_items.size()); }
    bool IsEmpty() const { return m_items.empty(); }
    T *GetAt(int i) const { return m_items[std::size_t(i)]; }
    T *operator[](int i) const { return GetAt(i); }
    // Takes ownership.
    int Add(T *item)
    {
        m_items.push_back(item);
        return int(m_items.size()) - 1;
    }
    void InsertAt(int i, T *item) { m_items.insert(m_items.begin() + i, item); }
    // Replaces the member at i and deletes the old one.
    void SetAt(int i, T *item)
    {
        T *old = m_items[std::size_t(i)];
        m_items[std::size_t(i)] = item;
        if (old != item)
            delete old;
    }
    // Takes the member out without deleting it; the caller owns it now.
    T *Detach(int i)
    {
        T *item = m_items[std::size_t(i)];
        m_items.erase(m_items.begin() + i);
        return item;
    }
    void DeleteAt(int i) { delete Detach(i); }
    void DeleteAll()
    {
        std::vector<T *> items;
        items.swap(m_items);
        for (T *item : items)
            delete item;
    }
    int Find(const T *item) const
    {
        for (std::size_t i = 0; i < m_items.size(); ++i) {
            if (m_items[i] == item)
                return int(i);
        }
        return -1;
    }
    // Exchanges the members of two arrays.
    void Swap(CArrayPlus &other) { m_items.swap(other.m_items); }
    typename std::vector<T *>::const_iterator begin() const { return m_items.begin(); }
    typename std::vector<T *>::const_iterator end() const { return m_items.end(); }

private:
    std::vector<T *> m_items;
};
