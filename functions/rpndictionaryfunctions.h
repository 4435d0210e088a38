#pragma once
// The functions of dictionaries: Dictionary, Dict_Set, Dict_Get and
// ConvertToArray (keyword DICTIONARYTOARRAY).
//
// A dictionary maps texts to values; keys are compared exactly.  Like an
// array, its record is shared on assignment, so Dict_Set changes it for
// every variable that holds it; Copy makes an independent one.  Keys must be
// texts: a number is refused, not converted.

#include "functions/rpnfunctionbase.h"
#include "functions/rpnfunctionkinds.h"

// Dictionary(): a new empty dictionary; parameters are not read.
class CNodeNewDictionary : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_NEW_DICTIONARY; }
    QString GetName() const override { return QStringLiteral("Dictionary"); }
    CRpnNode *CreateSame() const override { return new CNodeNewDictionary; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// Dict_Set(dictionary, "key", value): stores (shares) the value; null.
class CNodeDictSet : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_DICT_SET; }
    QString GetName() const override { return QStringLiteral("Dict_Set"); }
    CRpnNode *CreateSame() const override { return new CNodeDictSet; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// Dict_Get(dictionary, "key"): the stored value, shared; null for a key
// that is not there.
class CNodeDictGet : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_DICT_GET; }
    QString GetName() const override { return QStringLiteral("Dict_Get"); }
    CRpnNode *CreateSame() const override { return new CNodeDictGet; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// ConvertToArray(dictionary, names, values): an array of {key, value} pairs
// in the dictionary's order; variables as names and values receive the
// arrays of all keys and all values.
class CNodeConvertToArray : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_DICT_TO_ARRAY; }
    QString GetName() const override { return QStringLiteral("ConvertToArray"); }
    CRpnNode *CreateSame() const override { return new CNodeConvertToArray; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

class CRpnPrototypeArray;
void ProvideDictionaryFunctions(CRpnPrototypeArray &prototypes);
