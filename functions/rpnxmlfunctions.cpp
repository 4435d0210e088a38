// XML elements in scripts.

#include "functions/rpnxmlfunctions.h"

#include "formula/rpndictionary.h"
#include "formula/rpnexception.h"
#include "formula/rpnkeywords.h"
#include "formula/rpnnodes.h"
#include "formula/rpntree.h"
#include "support/xmlelement.h"

#include <algorithm>
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

// Calls body(element) with the element that parameter 1 names, once the
// call has at least `needed` parameters (else the message `countMessage`),
// and returns what body returns.  0 when there is no element: with a
// message, or without one when the parameter failed.  The element is held
// for the length of the call.
template <class Body>
int onTarget(CNodeScriptFunction *node, int needed, int countMessage, QString &errorText, const Body &body)
{
    if (node->GetOperandCount() < needed)
        return failWith(errorText, countMessage, node->GetName());
    CRpnData holder;
    unsigned char status = 1;
    if (CRpnNode *child = node->m_children[0])
        child->Evaluate(holder, status);
    if (status == 0)
        return 0;
    if (!holder.IsXml() || CXmlElement::IsNull(holder.GetXml())) {
        errorText = RpnMessage(kMsgNotXml, {node->GetName()});
        return 0;
    }
    return body(holder.GetXml());
}

// Calls onPair(name, text) for each entry of a dictionary: names keep their
// case, values become text of 16 digits.
template <class OnPair>
void forEachEntry(const CMapStringToRpnData &map, const OnPair &onPair)
{
    for (int k = 0; k < map.GetCount(); ++k)
        onPair(map.GetSpelling(map.GetKeyAt(k)), text16(map.GetValueAt(k)));
}

// forEachEntry over the pairs of a name=value parameter; false when a value
// failed.
template <class OnPair>
bool forEachNamedPair(CRpnNode *child, const OnPair &onPair)
{
    CMapStringToRpnData map;
    unsigned char status = 1;
    ReadNamedParam(child, map, status, false);
    if (status == 0)
        return false;
    forEachEntry(map, onPair);
    return true;
}

// Walks the parameters from `from` on: the pairs of a name=value parameter
// go to onPair(name, text), the value of any other to onValue(value).
// False when one failed.
template <class OnPair, class OnValue>
bool forEachItem(CRpnNodeList *node, int from, const OnPair &onPair, const OnValue &onValue)
{
    for (int i = from; i < node->GetOperandCount(); ++i) {
        CRpnNode *child = node->m_children[std::size_t(i)];
        if (!child)
            continue;
        if (child->IsPlainAssignment()) {
            if (!forEachNamedPair(child, onPair))
                return false;
            continue;
        }
        unsigned char status = 1;
        CRpnData value;
        child->Evaluate(value, status);
        if (status == 0)
            return false;
        onValue(value);
    }
    return true;
}

// Attributes and data from the item parameters of XML_New and XML_AddNew:
// pairs and dictionaries give attributes, any other value the data.
bool applyItems(CRpnNodeList *node, int from, CXmlElement *element)
{
    const auto setAttribute = [element](const QString &name, const QString &text) {
        element->SetAttribute(name, text);
    };
    return forEachItem(node, from, setAttribute, [&](const CRpnData &value) {
        if (value.IsDictionary())
            forEachEntry(*value.GetDictionary(), setAttribute);
        else
            element->SetData(text16(value));
    });
}

// The element that the tag parameter at `at` gives to XML_New and
// XML_AddNew: an XML value as it is, or a new element of that name with the
// item parameters after the tag applied.  Null when the call ends.
CXmlElementPtr tagElement(CNodeScriptFunction *node, int at, int emptyMessage, QString &errorText)
{
    CRpnData tag;
    if (!readNameOrValue(node, node->m_children[std::size_t(at)], tag))
        return {};
    if (tag.IsXml() && !CXmlElement::IsNull(tag.GetXml()))
        return CXmlElementPtr(tag.GetXml());
    const QString tagText = tag.GetText();
    if (tagText.isEmpty()) {
        failWith(errorText, emptyMessage, node->GetName());
        return {};
    }
    CXmlElementPtr element = CreateElement(tagText);
    if (!applyItems(node, at + 1, element.Get()))
        return {};
    return element;
}

bool hasTag(const CXmlElement *element, const QString &tag)
{
    return tag.isEmpty() || element->GetName().compare(tag, Qt::CaseInsensitive) == 0;
}

// The child that the parameters after the element ask for: the first with
// the tag of a text parameter (any tag without one) whose attributes match
// every name=value pair, without regard to case.  `at` is -1 when none
// does; false when a parameter failed.
bool findQueried(CRpnNodeList *node, const CXmlElement *element, int &at)
{
    QString tag;
    std::vector<std::pair<QString, QString>> tests;
    const bool read = forEachItem(
        node, 1, [&](const QString &name, const QString &text) { tests.emplace_back(name, text); },
        [&](const CRpnData &value) {
            if (value.IsString())
                tag = value.GetTextValue();
        });
    if (!read)
        return false;
    at = -1;
    for (int i = 0; i < element->GetChildCount() && at < 0; ++i) {
        const CXmlElement *child = element->GetChildAt(i);
        const bool match = hasTag(child, tag) && std::all_of(tests.begin(), tests.end(), [&](const auto &test) {
            const CXmlElement *attribute = child->FindAttribute(test.first, Qt::CaseInsensitive);
            return attribute && attribute->GetData().compare(test.second, Qt::CaseInsensitive) == 0;
        });
        if (match)
            at = i;
    }
    return true;
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
    if (GetOperandCount() < 1)
        return failWith(errorText, kMsgNewCount, GetName());
    const CXmlElementPtr element = tagElement(this, 0, kMsgNewEmptyTag, errorText);
    if (!element)
        return 0;
    result.SetXml(element.Get());
    return 1;
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
    const CXmlElementPtr element = tagElement(this, 1, kMsgAddNewEmptyTag, errorText);
    if (!element)
        return 0;
    if (hasParent)
        parent.GetXml()->AddChild(element.Get());
    result.SetXml(element.Get());
    return 1;
}

// --- attributes ----------------------------------------------------------------------------

int CNodeXML_SetAttribute::DoFunction(CRpnData &result, QString &errorText)
{
    return onTarget(this, 2, kMsgSetCount, errorText, [&](CXmlElement *element) {
        const int count = GetOperandCount();
        // XML_SetAttribute(x, "name", value) names one attribute by a text.
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
                return failWith(errorText, kMsgSetName, GetName());
        }
        const auto setAttribute = [element](const QString &name, const QString &text) {
            element->SetAttribute(name, text);
        };
        for (int i = 1; i < count; ++i) {
            if (!forEachNamedPair(m_children[std::size_t(i)], setAttribute))
                return 0;
        }
        result.SetNull();
        return 1;
    });
}

namespace {

int attributeCall(CNodeScriptFunction *node, bool remove, CRpnData &result, QString &errorText)
{
    return onTarget(node, 2, kMsgGetCount, errorText, [&](CXmlElement *element) {
        CRpnData key;
        unsigned char status = 1;
        node->m_children[1]->Evaluate(key, status);
        if (status == 0)
            return 0;
        if (!key.IsString())
            return failWith(errorText, kMsgGetName, node->GetName());
        if (remove)
            result.SetInt(element->RemoveAttribute(key.GetTextValue()));
        else
            result.SetText(element->GetAttribute(key.GetTextValue()));
        return 1;
    });
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
    return onTarget(this, 1, kMsgObjectOnly, errorText, [&](CXmlElement *element) {
        result.SetDictionary();
        for (int i = 0; i < element->GetAttributeCount(); ++i) {
            const CXmlElement *attribute = element->GetAttributeAt(i);
            result.GetDictionary()->SetAt(attribute->GetName(), CRpnData(attribute->GetData()));
        }
        return 1;
    });
}

// --- children ------------------------------------------------------------------------------

int CNodeXML_AddChild::DoFunction(CRpnData &result, QString &errorText)
{
    return onTarget(this, 2, kMsgAddChildCount, errorText, [&](CXmlElement *element) {
        auto stop = [&] {
            errorText = RpnMessage(kMsgAddChildKind, {GetName()});
            return 0;
        };
        for (int i = 1; i < GetOperandCount(); ++i) {
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
    });
}

int CNodeXML_FindChild::DoFunction(CRpnData &result, QString &errorText)
{
    return onTarget(this, 1, kMsgFindCount, errorText, [&](CXmlElement *element) {
        int at = -1;
        if (!findQueried(this, element, at))
            return 0;
        if (at < 0)
            result.SetNull();
        else
            result.SetXml(element->GetChildAt(at));
        return 1;
    });
}

int CNodeXML_DelChild::DoFunction(CRpnData &result, QString &errorText)
{
    return onTarget(this, 1, kMsgDelCount, errorText, [&](CXmlElement *element) {
        int at = -1;
        if (!findQueried(this, element, at))
            return 0;
        result.SetInt(at < 0 ? 0 : element->RemoveChildAt(at));
        return 1;
    });
}

int CNodeXML_GetAllChildren::DoFunction(CRpnData &result, QString &errorText)
{
    return onTarget(this, 1, kMsgObjectOnly, errorText, [&](CXmlElement *element) {
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
            if (hasTag(element->GetChildAt(i), tag))
                chosen.push_back(element->GetChildAt(i));
        }
        result.SetArray(int(chosen.size()));
        for (std::size_t i = 0; i < chosen.size(); ++i)
            result.SetAt(int(i), CRpnData(chosen[i]));
        return 1;
    });
}

// --- name and data -------------------------------------------------------------------------

int CNodeXML_GetName::DoFunction(CRpnData &result, QString &errorText)
{
    return onTarget(this, 1, kMsgObjectOnly, errorText, [&](CXmlElement *element) {
        result.SetText(element->GetName());
        return 1;
    });
}

int CNodeXML_GetData::DoFunction(CRpnData &result, QString &errorText)
{
    return onTarget(this, 1, kMsgObjectOnly, errorText, [&](CXmlElement *element) {
        result.SetText(element->GetData());
        return 1;
    });
}

int CNodeXML_SetData::DoFunction(CRpnData &result, QString &errorText)
{
    return onTarget(this, 2, kMsgSetDataCount, errorText, [&](CXmlElement *element) {
        CRpnData data;
        if (!EvaluateOperand(1, data))
            return 0;
        element->SetData(text16(data));
        result.SetNull();
        return 1;
    });
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
