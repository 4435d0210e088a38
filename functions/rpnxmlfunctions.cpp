// XML elements in scripts.

#include "functions/rpnxmlfunctions.h"

#include "formula/rpndictionary.h"
#include "formula/rpnexception.h"
#include "formula/rpnkeywords.h"
#include "formula/rpnnodes.h"
#include "formula/rpntree.h"
#include "support/xmlelement.h"

#include <utility>
#include <vector>

namespace {

constexpr int kMsgNewCount = 43440;
constexpr int kMsgAddNewCount = 43441;
constexpr int kMsgParent = 43442;
constexpr int kMsgNewEmptyTag = 43443;
constexpr int kMsgAddNewEmptyTag = 43444;
constexpr int kMsgSetCount = 43445;
constexpr int kMsgNotXml = 43446;
constexpr int kMsgSetName = 43447;
constexpr int kMsgGetName = 43448;
constexpr int kMsgGetCount = 43449;
constexpr int kMsgObjectOnly = 43450;
constexpr int kMsgAddChildCount = 43451;
constexpr int kMsgAddChildKind = 43452;
constexpr int kMsgFindCount = 43453;
constexpr int kMsgDelCount = 43454;
constexpr int kMsgSetDataCount = 43455;
constexpr int kMsgParseCount = 43456;
constexpr int kMsgParseKind = 43457;
constexpr int kMsgParseFailed = 43458;
constexpr int kMsgTooDeep = 43459;

QString text16(const CRpnData &v)
{
    return v.GetText(16);
}

int failWith(QString &errorText, int id, const QString &name)
{
    errorText = RpnMessage(id, {name, name});
    return 0;
}

// A text parameter that may be a bare word: a variable gives its own name,
// unless the tree's resolver knows it.
bool readNameOrValue(CNodeScriptFunction *node, CRpnNode *child, CRpnData &value)
{
    if (!child) {
        value.SetNull();
        return false;
    }
    if (CNodeVariable *variable = child->AsVariable()) {
        CEquationTree *tree = node->m_tree;
        if (tree && tree->m_getVariable && variable->GetValue(value))
            return true;
        value.SetText(variable->m_name);
        return true;
    }
    unsigned char status = 1;
    child->Evaluate(value, status);
    return status != 0;
}

// The element that parameter 1 names, once the call has at least `needed`
// parameters (else the message `countMessage`).  Null when the call ends:
// with the message, or without one when the parameter failed.  `holder`
// keeps the element alive for the call.
CXmlElement *targetOf(CNodeScriptFunction *node, int needed, int countMessage, CRpnData &holder,
                      QString &errorText)
{
    if (node->GetOperandCount() < needed) {
        failWith(errorText, countMessage, node->GetName());
        return nullptr;
    }
    unsigned char status = 1;
    if (CRpnNode *child = node->m_children[0])
        child->Evaluate(holder, status);
    if (status == 0)
        return nullptr;
    if (!holder.IsXml() || CXmlElement::IsNull(holder.GetXml())) {
        errorText = RpnMessage(kMsgNotXml, {node->GetName()});
        return nullptr;
    }
    return holder.GetXml();
}

// Calls onPair(name, text) for each pair of a name=value parameter (names
// keep their case, values become text of 16 digits); false when a value
// failed.
template <class OnPair>
bool forEachNamedPair(CRpnNode *child, const OnPair &onPair)
{
    CMapStringToRpnData map;
    unsigned char status = 1;
    ReadNamedParam(child, map, status, false);
    if (status == 0)
        return false;
    for (int k = 0; k < map.GetCount(); ++k)
        onPair(map.GetSpelling(map.GetKeyAt(k)), text16(map.GetValueAt(k)));
    return true;
}

void setAttributesOf(CXmlElement *element, CRpnNode *child, bool &ok)
{
    ok = forEachNamedPair(child, [&](const QString &name, const QString &text) { element->SetAttribute(name, text); });
}

// Attributes and data from the item parameters of XML_New and XML_AddNew.
bool applyItems(CRpnNodeList *node, int from, CXmlElement *element)
{
    const int count = node->GetOperandCount();
    for (int i = from; i < count; ++i) {
        CRpnNode *child = node->m_children[std::size_t(i)];
        if (!child)
            continue;
        if (child->IsPlainAssignment()) {
            bool ok = true;
            setAttributesOf(element, child, ok);
            if (!ok)
                return false;
            continue;
        }
        unsigned char status = 1;
        CRpnData value;
        child->Evaluate(value, status);
        if (status == 0)
            return false;
        if (value.IsDictionary()) {
            const CMapStringToRpnData *map = value.GetDictionary();
            for (int k = 0; k < map->GetCount(); ++k)
                element->SetAttribute(map->GetSpelling(map->GetKeyAt(k)), text16(map->GetValueAt(k)));
        } else {
            element->SetData(text16(value));
        }
    }
    return true;
}

struct ChildQuery
{
    QString tag;
    std::vector<std::pair<QString, QString>> tests;
};

bool readQuery(CRpnNodeList *node, ChildQuery &query)
{
    for (int i = 1; i < node->GetOperandCount(); ++i) {
        CRpnNode *child = node->m_children[std::size_t(i)];
        if (!child)
            continue;
        if (child->IsPlainAssignment()) {
            if (!forEachNamedPair(child, [&](const QString &name, const QString &text) {
                    query.tests.emplace_back(name, text);
                }))
                return false;
            continue;
        }
        unsigned char status = 1;
        CRpnData value;
        child->Evaluate(value, status);
        if (status == 0)
            return false;
        if (value.IsString())
            query.tag = value.GetTextValue();
    }
    return true;
}

int findMatch(const CXmlElement *element, const ChildQuery &query)
{
    for (int i = 0; i < element->GetChildCount(); ++i) {
        const CXmlElement *child = element->GetChildAt(i);
        if (!query.tag.isEmpty() && child->GetName().compare(query.tag, Qt::CaseInsensitive) != 0)
            continue;
        bool all = true;
        for (const auto &test : query.tests) {
            bool found = false;
            const CXmlElement *attribute = child->FindAttribute(test.first, Qt::CaseInsensitive);
            found = attribute && attribute->GetData().compare(test.second, Qt::CaseInsensitive) == 0;
            if (!found) {
                all = false;
                break;
            }
        }
        if (all)
            return i;
    }
    return -1;
}

// The deepest nesting below `root`, walked without recursion; stops counting
// once `limit` is passed.
int depthOf(const CXmlElement *root, int limit)
{
    std::vector<std::pair<const CXmlElement *, int>> stack{{root, 0}};
    int deepest = 0;
    while (!stack.empty()) {
        auto [node, depth] = stack.back();
        stack.pop_back();
        deepest = std::max(deepest, depth);
        if (deepest > limit)
            return deepest;
        for (int i = 0; i < node->GetChildCount(); ++i)
            stack.emplace_back(node->GetChildAt(i), depth + 1);
    }
    return deepest;
}

} // namespace

// --- building ------------------------------------------------------------------------------

int CNodeXML_ITEM::DoFunction(CRpnData &result, QString &errorText)
{
    const QString name = GetName();
    if (GetOperandCount() < 1)
        return failWith(errorText, kMsgNewCount, name);
    CRpnData tag;
    if (!readNameOrValue(this, m_children[0], tag))
        return 0;
    if (tag.IsXml() && !CXmlElement::IsNull(tag.GetXml())) {
        result = tag;
        return 1;
    }
    const QString tagText = tag.GetText();
    if (tagText.isEmpty())
        return failWith(errorText, kMsgNewEmptyTag, name);
    CXmlElementPtr element = CreateElement(tagText);
    result.SetXml(element.Get());
    return applyItems(this, 1, element.Get()) ? 1 : 0;
}

int CNodeXML_ITEM2::DoFunction(CRpnData &result, QString &errorText)
{
    const QString name = GetName();
    if (GetOperandCount() < 2)
        return failWith(errorText, kMsgAddNewCount, name);
    CRpnData parent;
    if (!EvaluateOperand(0, parent))
        return 0;
    const bool hasParent = parent.IsXml() && !CXmlElement::IsNull(parent.GetXml());
    if (!hasParent && !parent.IsNull() && !parent.IsXml())
        return failWith(errorText, kMsgParent, name);
    CRpnData tag;
    if (!readNameOrValue(this, m_children[1], tag))
        return 0;
    CXmlElementPtr element;
    if (tag.IsXml() && !CXmlElement::IsNull(tag.GetXml())) {
        element = CXmlElementPtr(tag.GetXml());
    } else {
        const QString tagText = tag.GetText();
        if (tagText.isEmpty())
            return failWith(errorText, kMsgAddNewEmptyTag, name);
        element = CreateElement(tagText);
        if (!applyItems(this, 2, element.Get()))
            return 0;
    }
    if (hasParent)
        parent.GetXml()->AddChild(element.Get());
    result.SetXml(element.Get());
    return 1;
}

// --- attributes ----------------------------------------------------------------------------

int CNodeXML_SetAttribute::DoFunction(CRpnData &result, QString &errorText)
{
    const QString name = GetName();
    const int count = GetOperandCount();
    CRpnData holder;
    CXmlElement *element = targetOf(this, 2, kMsgSetCount, holder, errorText);
    if (!element)
        return 0;
    if (count == 3 && m_children[1] && !m_children[1]->IsPlainAssignment()) {
        CRpnData key;
        if (!EvaluateOperand(1, key))
            return 0;
        if (key.IsString()) {
            CRpnData value;
            if (!EvaluateOperand(2, value))
                return 0;
            element->SetAttribute(key.GetTextValue(), text16(value));
            result.SetNull();
            return 1;
        }
        if (!key.IsDictionary() && !key.IsArray())
            return failWith(errorText, kMsgSetName, name);
    }
    for (int i = 1; i < count; ++i) {
        bool ok = true;
        setAttributesOf(element, m_children[std::size_t(i)], ok);
        if (!ok)
            return 0;
    }
    result.SetNull();
    return 1;
}

namespace {

int attributeCall(CNodeScriptFunction *node, bool remove, CRpnData &result, QString &errorText)
{
    const QString name = node->GetName();
    CRpnData holder;
    CXmlElement *element = targetOf(node, 2, kMsgGetCount, holder, errorText);
    if (!element)
        return 0;
    CRpnData key;
    unsigned char status = 1;
    node->m_children[1]->Evaluate(key, status);
    if (status == 0)
        return 0;
    if (!key.IsString())
        return failWith(errorText, kMsgGetName, name);
    if (remove)
        result.SetInt(element->RemoveAttribute(key.GetTextValue()));
    else
        result.SetText(element->GetAttribute(key.GetTextValue()));
    return 1;
}

} // namespace

int CNodeXML_GetAttribute::DoFunction(CRpnData &result, QString &errorText)
{
    return attributeCall(this, false, result, errorText);
}

int CNodeXML_DelAttribute::DoFunction(CRpnData &result, QString &errorText)
{
    return attributeCall(this, true, result, errorText);
}

int CNodeXML_GetAllAttributes::DoFunction(CRpnData &result, QString &errorText)
{
    CRpnData holder;
    CXmlElement *element = targetOf(this, 1, kMsgObjectOnly, holder, errorText);
    if (!element)
        return 0;
    result.SetDictionary();
    for (int i = 0; i < element->GetAttributeCount(); ++i) {
        const CXmlElement *attribute = element->GetAttributeAt(i);
        result.GetDictionary()->SetAt(attribute->GetName(), CRpnData(attribute->GetData()));
    }
    return 1;
}

// --- children ------------------------------------------------------------------------------

int CNodeXML_AddChild::DoFunction(CRpnData &result, QString &errorText)
{
    const QString name = GetName();
    const int count = GetOperandCount();
    CRpnData holder;
    CXmlElement *element = targetOf(this, 2, kMsgAddChildCount, holder, errorText);
    if (!element)
        return 0;
    auto stop = [&] {
        errorText = RpnMessage(kMsgAddChildKind, {name});
        return 0;
    };
    for (int i = 1; i < count; ++i) {
        CRpnData value;
        if (!EvaluateOperand(i, value))
            return 0;
        if (value.IsXml()) {
            element->AddChild(value.GetXml());
        } else if (value.IsArray()) {
            for (int k = 0; k < value.GetSize(); ++k) {
                const CRpnData cell = value.GetAt(k);
                if (!cell.IsXml())
                    return stop();
                element->AddChild(cell.GetXml());
            }
        } else {
            return stop();
        }
    }
    result.SetNull();
    return 1;
}

int CNodeXML_FindChild::DoFunction(CRpnData &result, QString &errorText)
{
    CRpnData holder;
    CXmlElement *element = targetOf(this, 1, kMsgFindCount, holder, errorText);
    if (!element)
        return 0;
    ChildQuery query;
    if (!readQuery(this, query))
        return 0;
    const int at = findMatch(element, query);
    if (at < 0)
        result.SetNull();
    else
        result.SetXml(element->GetChildAt(at));
    return 1;
}

int CNodeXML_DelChild::DoFunction(CRpnData &result, QString &errorText)
{
    CRpnData holder;
    CXmlElement *element = targetOf(this, 1, kMsgDelCount, holder, errorText);
    if (!element)
        return 0;
    ChildQuery query;
    if (!readQuery(this, query))
        return 0;
    const int at = findMatch(element, query);
    result.SetInt(at < 0 ? 0 : element->RemoveChildAt(at));
    return 1;
}

int CNodeXML_GetAllChildren::DoFunction(CRpnData &result, QString &errorText)
{
    CRpnData holder;
    CXmlElement *element = targetOf(this, 1, kMsgObjectOnly, holder, errorText);
    if (!element)
        return 0;
    QString tag;
    if (GetOperandCount() > 1) {
        CRpnData v;
        if (!EvaluateOperand(1, v))
            return 0;
        if (v.IsString())
            tag = v.GetTextValue();
    }
    std::vector<CXmlElement *> chosen;
    for (int i = 0; i < element->GetChildCount(); ++i) {
        CXmlElement *child = element->GetChildAt(i);
        if (tag.isEmpty() || child->GetName().compare(tag, Qt::CaseInsensitive) == 0)
            chosen.push_back(child);
    }
    result.SetArray(int(chosen.size()));
    for (std::size_t i = 0; i < chosen.size(); ++i)
        result.SetAt(int(i), CRpnData(chosen[i]));
    return 1;
}

// --- name and data -------------------------------------------------------------------------

int CNodeXML_GetName::DoFunction(CRpnData &result, QString &errorText)
{
    CRpnData holder;
    CXmlElement *element = targetOf(this, 1, kMsgObjectOnly, holder, errorText);
    if (!element)
        return 0;
    result.SetText(element->GetName());
    return 1;
}

int CNodeXML_GetData::DoFunction(CRpnData &result, QString &errorText)
{
    CRpnData holder;
    CXmlElement *element = targetOf(this, 1, kMsgObjectOnly, holder, errorText);
    if (!element)
        return 0;
    result.SetText(element->GetData());
    return 1;
}

int CNodeXML_SetData::DoFunction(CRpnData &result, QString &errorText)
{
    CRpnData holder;
    CXmlElement *element = targetOf(this, 2, kMsgSetDataCount, holder, errorText);
    if (!element)
        return 0;
    CRpnData data;
    if (!EvaluateOperand(1, data))
        return 0;
    element->SetData(text16(data));
    result.SetNull();
    return 1;
}

// --- parsing -------------------------------------------------------------------------------

int CNodeXML_Parse::DoFunction(CRpnData &result, QString &errorText)
{
    const QString name = GetName();
    if (GetOperandCount() < 1)
        return failWith(errorText, kMsgParseCount, name);
    CRpnData value;
    if (!EvaluateOperand(0, value))
        return 0;
    QString text;
    if (value.IsString()) {
        text = value.GetTextValue();
    } else if (value.IsArray() && value.GetSize() > 0 && value.GetAt(0).IsString()) {
        for (int i = 0; i < value.GetSize(); ++i)
            text += value.GetAt(i).GetText();
    } else {
        errorText = RpnMessage(kMsgParseKind, {name});
        return 0;
    }
    CXmlElementPtr root = CreateElement(QString());
    int position = 0;
    if (!CXmlElement::Parse(root.Get(), text, position)) {
        errorText = RpnMessage(kMsgParseFailed);
        return 0;
    }
    if (depthOf(root.Get(), RpnMaxXmlDepth) > RpnMaxXmlDepth) {
        errorText = RpnMessage(kMsgTooDeep, {name, RpnMaxXmlDepth});
        return 0;
    }
    // The text's first top-level element is the parsed root.
    CXmlElement *top = root->GetChildCount() > 0 ? root->GetChildAt(0) : nullptr;
    result.SetXml(top ? top : root.Get());
    return 1;
}

void ProvideXmlFunctions(CRpnPrototypeArray &prototypes)
{
    CRpnNode *const nodes[] = {
        new CNodeXML_ITEM,        new CNodeXML_ITEM2,       new CNodeXML_SetAttribute, new CNodeXML_GetAttribute,
        new CNodeXML_DelAttribute, new CNodeXML_GetAllAttributes, new CNodeXML_AddChild, new CNodeXML_FindChild,
        new CNodeXML_DelChild,    new CNodeXML_GetAllChildren, new CNodeXML_GetName,   new CNodeXML_GetData,
        new CNodeXML_SetData,     new CNodeXML_Parse,
    };
    for (CRpnNode *node : nodes)
        prototypes.SetAt(node->GetKind(), node);
}
