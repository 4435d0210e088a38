#pragma once
// The in-memory device store the digitiser keeps its curves in: a type
// library describes record types and their elements, a database holds records
// of those types, and each record holds one generic value per element.  Only
// what the digitiser needs is here; nothing is ever written to a device file.

#include <QString>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

// An ordered array of untyped pointers that owns its elements: removing an
// element, and destroying the array, destroys the element with the array's
// destructor function; copying the array copies each element with its copy
// function.  An array without a destructor owns nothing and copies pointers.
class CArrayOfPtr
{
public:
    using Destructor = void (*)(void *);
    using Copier = void *(*)(const void *);

    explicit CArrayOfPtr(Destructor destruct = nullptr, Copier copy = nullptr);
    CArrayOfPtr(const CArrayOfPtr &other);
    CArrayOfPtr &operator=(const CArrayOfPtr &other);
    ~CArrayOfPtr();

    int GetSize() const { return int(m_items.size()); }
    // Null for an index outside the array.
    void *GetPtrAt(int index) const;
    // Appends; returns the index.
    int AddPtr(void *p);
    // Inserts before `index`, which is first brought into 0..size and then
    // tells where the element went.
    void InsertPtrAt(int &index, void *p);
    // Removes and destroys the element; false for an index outside the array.
    bool RemoveItem(int index);
    // The index of an element, -1 when it is not in the array.
    int Find(const void *p) const;
    void RemoveAll();
    // The element block, for sorting in place.
    void **GetData() { return m_items.data(); }

private:
    void copyFrom(const CArrayOfPtr &other);

    Destructor m_destruct;
    Copier m_copy;
    std::vector<void *> m_items;
};

// A value of a record's element.  Only the array kind (9) is used: it owns a
// CArrayOfPtr.  Copying a value copies the array and its elements.
class CGenericType
{
public:
    enum Kind : std::uint8_t { KindEmpty = 0, KindArray = 9 };

    CGenericType() = default;
    // An array value; takes the array over.
    explicit CGenericType(CArrayOfPtr *array, std::uint8_t subKind = 0);
    CGenericType(const CGenericType &other);
    CGenericType &operator=(const CGenericType &other);
    CGenericType(CGenericType &&other) noexcept = default;
    CGenericType &operator=(CGenericType &&other) noexcept = default;

    std::uint8_t GetKind() const { return m_kind; }
    std::uint8_t GetSubKind() const { return m_subKind; }
    CArrayOfPtr *GetArray() const { return m_array.get(); }
    void Clear();

private:
    std::uint8_t m_kind = KindEmpty;
    std::uint8_t m_subKind = 0;
    std::unique_ptr<CArrayOfPtr> m_array;
};

// One element of a record type: its name, description, a further text, a
// number for the editors of the store, and the value new records start with.
class CDTypeElement
{
public:
    CDTypeElement(const QString &name, const QString &description, const QString &comment,
                  int number, const CGenericType &defaultValue);

    QString m_name;
    QString m_description;
    QString m_comment;
    int m_number;
    CGenericType m_defaultValue;
};

// A record type: a type constant and its elements.
class CDType
{
public:
    explicit CDType(int typeConstant) : m_typeConstant(typeConstant) {}

    int GetTypeConstant() const { return m_typeConstant; }
    int GetSize() const { return int(m_elements.size()); }
    CDTypeElement *GetElementAt(int index) const;
    // Takes the element over.
    void Add(CDTypeElement *element);
    // The element of that name, or null.
    CDTypeElement *GetAt(const QString &name) const;

private:
    int m_typeConstant;
    std::vector<std::unique_ptr<CDTypeElement>> m_elements;
};

// The record types known to a store.
class CDTypeLib
{
public:
    bool IsEmpty() const { return m_types.empty(); }
    int GetSize() const { return int(m_types.size()); }
    CDType *GetTypeAt(int index) const;
    // Takes the type over.
    void Add(CDType *type);
    void RemoveAll() { m_types.clear(); }

private:
    std::vector<std::unique_ptr<CDType>> m_types;
};

// A record: its type and one value per element of the type.
class CDeviceData
{
public:
    explicit CDeviceData(CDType *type);

    CDType *GetType() const { return m_type; }
    // The value of the element of that name, or null.
    CGenericType *GetValue(const QString &name);

private:
    CDType *m_type;
    std::vector<std::pair<QString, CGenericType>> m_values;
};

// The records of a store, in order.
class CDeviceDataArray
{
public:
    int GetSize() const { return int(m_records.size()); }
    // Null for an index outside the array.
    CDeviceData *GetAt(int index) const;

private:
    friend class CDeviceDatabase;
    std::vector<std::unique_ptr<CDeviceData>> m_records;
};

class CDeviceDatabase
{
public:
    CDeviceDatabase() = default;
    // Assignment copies every record; the type library is shared.
    CDeviceDatabase(const CDeviceDatabase &other);
    CDeviceDatabase &operator=(const CDeviceDatabase &other);

    // Builds the store over a type library, which must outlive it.
    void Init(CDTypeLib &typeLib);
    // Removes every record.
    void Clear();

    // Finds the type of a type constant: nonzero when found, with the type
    // and its index in the library.
    int GetType_TypeConstant(int typeConstant, CDType *&type, int &index) const;
    // A new record of a type, with each element's starting value; the
    // caller owns it until it is added.  Null for a null type.
    CDeviceData *New_CDeviceData(CDType *type) const;
    // Adds a record and takes it over; nonzero on success, with its index and
    // the new number of records.
    int Add(CDeviceData *record, int &index, int &count);

    CDeviceDataArray &GetData() { return m_data; }
    const CDeviceDataArray &GetData() const { return m_data; }
    CDTypeLib *GetTypeLib() const { return m_typeLib; }

private:
    CDTypeLib *m_typeLib = nullptr;
    CDeviceDataArray m_data;
};
