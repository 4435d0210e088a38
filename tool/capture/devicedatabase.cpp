#include "tool/capture/devicedatabase.h"

#include <algorithm>

// ---- CArrayOfPtr ------------------------------------------------------------

CArrayOfPtr::CArrayOfPtr(Destructor destruct, Copier copy) : m_destruct(destruct), m_copy(copy)
{
}

CArrayOfPtr::CArrayOfPtr(const CArrayOfPtr &other)
    : m_destruct(other.m_destruct), m_copy(other.m_copy)
{
    copyFrom(other);
}

CArrayOfPtr &CArrayOfPtr::operator=(const CArrayOfPtr &other)
{
    if (this != &other) {
        RemoveAll();
        m_destruct = other.m_destruct;
        m_copy = other.m_copy;
        copyFrom(other);
    }
    return *this;
}

CArrayOfPtr::~CArrayOfPtr()
{
    RemoveAll();
}

void CArrayOfPtr::copyFrom(const CArrayOfPtr &other)
{
    // Owned elements cannot be shared; without a copy function they stay
    // behind.
    if (m_destruct && !m_copy)
        return;
    m_items.reserve(other.m_items.size());
    for (void *p : other.m_items)
        m_items.push_back(m_destruct && p ? m_copy(p) : p);
}

void *CArrayOfPtr::GetPtrAt(int index) const
{
    return index >= 0 && index < GetSize() ? m_items[std::size_t(index)] : nullptr;
}

int CArrayOfPtr::AddPtr(void *p)
{
    m_items.push_back(p);
    return GetSize() - 1;
}

void CArrayOfPtr::InsertPtrAt(int &index, void *p)
{
    index = std::clamp(index, 0, GetSize());
    m_items.insert(m_items.begin() + index, p);
}

bool CArrayOfPtr::RemoveItem(int index)
{
    if (index < 0 || index >= GetSize())
        return false;
    void *p = m_items[std::size_t(index)];
    m_items.erase(m_items.begin() + index);
    if (m_destruct && p)
        m_destruct(p);
    return true;
}

int CArrayOfPtr::Find(const void *p) const
{
    const auto it = std::find(m_items.begin(), m_items.end(), p);
    return it == m_items.end() ? -1 : int(it - m_items.begin());
}

void CArrayOfPtr::RemoveAll()
{
    std::vector<void *> items;
    items.swap(m_items);
    if (m_destruct)
        for (void *p : items)
            if (p)
                m_destruct(p);
}

// ---- CGenericType -----------------------------------------------------------

CGenericType::CGenericType(CArrayOfPtr *array, std::uint8_t subKind)
    : m_kind(KindArray), m_subKind(subKind), m_array(array)
{
}

CGenericType::CGenericType(const CGenericType &other)
    : m_kind(other.m_kind), m_subKind(other.m_subKind),
      m_array(other.m_array ? std::make_unique<CArrayOfPtr>(*other.m_array) : nullptr)
{
}

CGenericType &CGenericType::operator=(const CGenericType &other)
{
    if (this != &other) {
        CGenericType copy(other);
        *this = std::move(copy);
    }
    return *this;
}

void CGenericType::Clear()
{
    m_kind = KindEmpty;
    m_subKind = 0;
    m_array.reset();
}

// ---- types ------------------------------------------------------------------

CDTypeElement::CDTypeElement(const QString &name, const QString &description,
                             const QString &comment, int number,
                             const CGenericType &defaultValue)
    : m_name(name), m_description(description), m_comment(comment), m_number(number),
      m_defaultValue(defaultValue)
{
}

CDTypeElement *CDType::GetElementAt(int index) const
{
    return index >= 0 && index < GetSize() ? m_elements[std::size_t(index)].get() : nullptr;
}

void CDType::Add(CDTypeElement *element)
{
    if (element)
        m_elements.emplace_back(element);
}

CDTypeElement *CDType::GetAt(const QString &name) const
{
    for (const auto &e : m_elements)
        if (e->m_name == name)
            return e.get();
    return nullptr;
}

CDType *CDTypeLib::GetTypeAt(int index) const
{
    return index >= 0 && index < GetSize() ? m_types[std::size_t(index)].get() : nullptr;
}

void CDTypeLib::Add(CDType *type)
{
    if (type)
        m_types.emplace_back(type);
}

// ---- records ----------------------------------------------------------------

CDeviceData::CDeviceData(CDType *type) : m_type(type)
{
    if (!type)
        return;
    m_values.reserve(std::size_t(type->GetSize()));
    for (int i = 0; i < type->GetSize(); ++i) {
        const CDTypeElement *e = type->GetElementAt(i);
        m_values.emplace_back(e->m_name, e->m_defaultValue);
    }
}

CGenericType *CDeviceData::GetValue(const QString &name)
{
    for (auto &v : m_values)
        if (v.first == name)
            return &v.second;
    return nullptr;
}

CDeviceData *CDeviceDataArray::GetAt(int index) const
{
    return index >= 0 && index < GetSize() ? m_records[std::size_t(index)].get() : nullptr;
}

CDeviceDatabase::CDeviceDatabase(const CDeviceDatabase &other) : m_typeLib(other.m_typeLib)
{
    for (const auto &r : other.m_data.m_records)
        m_data.m_records.push_back(std::make_unique<CDeviceData>(*r));
}

CDeviceDatabase &CDeviceDatabase::operator=(const CDeviceDatabase &other)
{
    if (this != &other) {
        CDeviceDatabase copy(other);
        m_typeLib = copy.m_typeLib;
        m_data.m_records.swap(copy.m_data.m_records);
    }
    return *this;
}

void CDeviceDatabase::Init(CDTypeLib &typeLib)
{
    Clear();
    m_typeLib = &typeLib;
}

void CDeviceDatabase::Clear()
{
    m_data.m_records.clear();
}

int CDeviceDatabase::GetType_TypeConstant(int typeConstant, CDType *&type, int &index) const
{
    if (m_typeLib) {
        for (int i = 0; i < m_typeLib->GetSize(); ++i) {
            CDType *t = m_typeLib->GetTypeAt(i);
            if (t->GetTypeConstant() == typeConstant) {
                type = t;
                index = i;
                return 1;
            }
        }
    }
    type = nullptr;
    index = -1;
    return 0;
}

CDeviceData *CDeviceDatabase::New_CDeviceData(CDType *type) const
{
    return type ? new CDeviceData(type) : nullptr;
}

int CDeviceDatabase::Add(CDeviceData *record, int &index, int &count)
{
    if (!record) {
        index = -1;
        count = m_data.GetSize();
        return 0;
    }
    m_data.m_records.emplace_back(record);
    index = m_data.GetSize() - 1;
    count = m_data.GetSize();
    return 1;
}
