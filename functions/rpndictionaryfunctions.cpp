// Dictionaries of the language.

#include "functions/rpndictionaryfunctions.h"

#include "formula/rpndictionary.h"
#include "formula/rpnkeywords.h"

namespace {

const char *const kSetCount = "Dict_Set requires 3 parameters. Dict_Set(dictinary, \"text\", val);";
const char *const kSetFirst =
    "Dict_Set's first parameter must be of type Dictionary. Dict_Set(dictinary, \"text\", val);";
const char *const kSetSecond = "Dict_Set's second parameter must be of type Text. Dict_Set(dictinary, \"text\", val);";
const char *const kGetCount = "Dict_Get requires 2 parameters. val = Dict_Get(dictinary, \"text\");";
const char *const kGetFirst =
    "Dict_Get's first parameter must be of type Dictionary. val = Dict_Get(dictinary, \"text\");";
const char *const kGetSecond = "Dict_Get's second parameter must be of type Text. val = Dict_Get(dictinary, \"text\");";
const char *const kToArrayNone =
    "DictionaryToArray requires a parameter of type Dictionary:   DictionaryToArray(dictionary, arrNames, arrValues); ";
const char *const kToArrayKind =
    "DictionaryToArray requires 1 parameter of type Dictionary:   DictionaryToArray(dictionary, arrNames, arrValues); ";

void fail(CRpnNode *node, CRpnData &result, unsigned char &status, const char *text)
{
    ReportFunctionText(node, status, QString::fromLatin1(text));
    result.SetNull();
}

// The dictionary and the key of Dict_Set and Dict_Get; false when the call
// ends (result set).
bool dictionaryAndKey(CRpnNodeList *node, CRpnData &dictionary, CRpnData &key, CRpnData &result,
                      unsigned char &status, const char *firstMessage, const char *secondMessage)
{
    if (!EvaluateArgument(node, 0, dictionary, result, status))
        return false;
    if (!dictionary.IsDictionary() || !dictionary.GetDictionary()) {
        fail(node, result, status, firstMessage);
        return false;
    }
    if (!EvaluateArgument(node, 1, key, result, status))
        return false;
    if (!key.IsString()) {
        fail(node, result, status, secondMessage);
        return false;
    }
    return true;
}

} // namespace

void CNodeNewDictionary::Evaluate(CRpnData &result, unsigned char &)
{
    result.SetDictionary();
}

void CNodeDictSet::Evaluate(CRpnData &result, unsigned char &status)
{
    if (GetOperandCount() != 3) {
        fail(this, result, status, kSetCount);
        return;
    }
    CRpnData dictionary, key, value;
    if (!dictionaryAndKey(this, dictionary, key, result, status, kSetFirst, kSetSecond))
        return;
    if (!EvaluateArgument(this, 2, value, result, status))
        return;
    // A value that holds the dictionary itself goes in as a copy of what it
    // is now, so that the dictionary never holds itself.
    if (value.Holds(dictionary)) {
        CRpnData copy;
        copy.DeepCopy(value);
        value = std::move(copy);
    }
    dictionary.GetDictionary()->SetAt(key.GetTextValue(), value);
    result.SetNull();
}

void CNodeDictGet::Evaluate(CRpnData &result, unsigned char &status)
{
    if (GetOperandCount() != 2) {
        fail(this, result, status, kGetCount);
        return;
    }
    CRpnData dictionary, key;
    if (!dictionaryAndKey(this, dictionary, key, result, status, kGetFirst, kGetSecond))
        return;
    if (CRpnData *stored = dictionary.GetDictionary()->FindHere(key.GetTextValue()))
        result = *stored;
    else
        result.SetNull();
}

void CNodeConvertToArray::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = GetOperandCount();
    if (count == 0) {
        fail(this, result, status, kToArrayNone);
        return;
    }
    CRpnData dictionary;
    if (!EvaluateArgument(this, 0, dictionary, result, status))
        return;
    const CMapStringToRpnData *map = dictionary.IsDictionary() ? dictionary.GetDictionary() : nullptr;
    if (!map) {
        fail(this, result, status, kToArrayKind);
        return;
    }
    const int n = map->GetCount();
    CRpnData pairs, keys, values;
    pairs.SetArray(n);
    keys.SetArray(n);
    values.SetArray(n);
    for (int i = 0; i < n; ++i) {
        const CRpnData key(map->GetSpelling(map->GetKeyAt(i)));
        const CRpnData &value = map->GetValueAt(i);
        CRpnData &pair = pairs.GetItems()[i];
        pair.SetArray(2);
        pair.GetItems()[0] = key;
        pair.GetItems()[1] = value;
        keys.GetItems()[i] = key;
        values.GetItems()[i] = value;
    }
    // Parameters that are no variables are not evaluated at all.
    if (count > 1)
        WriteBackParameter(m_children[1], keys, status);
    if (count > 2)
        WriteBackParameter(m_children[2], values, status);
    if (status == 0) {
        result.SetNull();
        return;
    }
    result = std::move(pairs);
}

void ProvideDictionaryFunctions(CRpnPrototypeArray &prototypes)
{
    CRpnNode *const nodes[] = {new CNodeNewDictionary, new CNodeDictSet, new CNodeDictGet, new CNodeConvertToArray};
    for (CRpnNode *node : nodes)
        prototypes.SetAt(node->GetKind(), node);
}
