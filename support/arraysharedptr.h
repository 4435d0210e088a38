#pragma once
// A growable array of untyped pointers whose body is shared by reference
// count: copying the array shares the body, so every copy sees the same
// elements; the last copy to go frees the body and hands each element to
// the element destructor, when one is set.

#include <cstdint>
#include <vector>

class CArraySharedPtr
{
public:
    using ElementDestructor = void (*)(void *element);

    explicit CArraySharedPtr(ElementDestructor destructor = nullptr);
    CArraySharedPtr(const CArraySharedPtr &other);
    CArraySharedPtr &operator=(const CArraySharedPtr &other);
    virtual ~CArraySharedPtr();

    int GetSize() const { return m_body->count; }
    bool IsEmpty() const { return m_body->count == 0; }
    void *GetAt(int i) const { return m_body->data[i]; }
    void **GetData() const { return m_body->data; }
    void SetAt(int i, void *element) { m_body->data[i] = element; }

    int Add(void *element);
    void InsertAt(int i, void *element);
    // Takes the element out without destroying it.
    void *RemoveAt(int i);
    // Destroys every element through the element destructor and empties the array.
    void RemoveAll();
    // Empties the array and gives its elements to the caller, who now owns them.
    void TakeAll(std::vector<void *> &out);
    int Find(const void *element) const;

    int GetGrowBy() const { return m_body->growBy; }
    void SetGrowBy(int growBy) { m_body->growBy = growBy > 0 ? growBy : 10; }
    // Number of arrays sharing this body.
    int GetBodyRefCount() const { return m_body->refCount; }

protected:
    struct Body
    {
        void **data = nullptr;
        std::int32_t count = 0;
        std::int32_t capacity = 0;
        std::int32_t growBy = 10;
        ElementDestructor destructor = nullptr;
        std::int32_t refCount = 1;
    };

private:
    void reserveFor(int count);
    void releaseBody();

    Body *m_body;
};
