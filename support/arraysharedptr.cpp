#include "support/arraysharedptr.h"

#include <cstdlib>
#include <cstring>
#include <new>

CArraySharedPtr::CArraySharedPtr(ElementDestructor destructor) : m_body(new Body)
{
    m_body->destructor = destructor;
}

CArraySharedPtr::CArraySharedPtr(const CArraySharedPtr &other) : m_body(other.m_body)
{
    ++m_body->refCount;
}

CArraySharedPtr &CArraySharedPtr::operator=(const CArraySharedPtr &other)
{
    if (m_body != other.m_body) {
        ++other.m_body->refCount;
        releaseBody();
        m_body = other.m_body;
    }
    return *this;
}

CArraySharedPtr::~CArraySharedPtr()
{
    releaseBody();
}

void CArraySharedPtr::releaseBody()
{
    if (--m_body->refCount > 0)
        return;
    Body *body = m_body;
    m_body = nullptr;
    if (body->destructor) {
        for (int i = 0; i < body->count; ++i)
            body->destructor(body->data[i]);
    }
    std::free(body->data);
    delete body;
}

void CArraySharedPtr::reserveFor(int count)
{
    if (count <= m_body->capacity)
        return;
    // Grow by the step, and never by less than half of what is there, so that
    // a long run of Add calls stays linear.
    int step = m_body->growBy > 0 ? m_body->growBy : 10;
    if (step < m_body->capacity / 2)
        step = m_body->capacity / 2;
    int capacity = m_body->capacity + step;
    if (capacity < count)
        capacity = count;
    void **data = static_cast<void **>(std::realloc(m_body->data, sizeof(void *) * std::size_t(capacity)));
    if (!data)
        throw std::bad_alloc();
    m_body->data = data;
    m_body->capacity = capacity;
}

int CArraySharedPtr::Add(void *element)
{
    reserveFor(m_body->count + 1);
    m_body->data[m_body->count] = element;
    return m_body->count++;
}

void CArraySharedPtr::InsertAt(int i, void *element)
{
    if (i < 0)
        i = 0;
    if (i > m_body->count)
        i = m_body->count;
    reserveFor(m_body->count + 1);
    std::memmove(m_body->data + i + 1, m_body->data + i, sizeof(void *) * std::size_t(m_body->count - i));
    m_body->data[i] = element;
    ++m_body->count;
}

void *CArraySharedPtr::RemoveAt(int i)
{
    if (i < 0 || i >= m_body->count)
        return nullptr;
    void *element = m_body->data[i];
    std::memmove(m_body->data + i, m_body->data + i + 1, sizeof(void *) * std::size_t(m_body->count - i - 1));
    --m_body->count;
    return element;
}

void CArraySharedPtr::RemoveAll()
{
    // The count is cleared first so that a destructor that looks at this
    // array again finds it empty.
    const int count = m_body->count;
    void **data = m_body->data;
    m_body->data = nullptr;
    m_body->count = 0;
    m_body->capacity = 0;
    if (m_body->destructor) {
        for (int i = 0; i < count; ++i)
            m_body->destructor(data[i]);
    }
    std::free(data);
}

void CArraySharedPtr::TakeAll(std::vector<void *> &out)
{
    out.insert(out.end(), m_body->data, m_body->data + m_body->count);
    m_body->count = 0;
}

int CArraySharedPtr::Find(const void *element) const
{
    for (int i = 0; i < m_body->count; ++i) {
        if (m_body->data[i] == element)
            return i;
    }
    return -1;
}
