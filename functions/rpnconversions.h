#pragma once
// Values to texts and back: String, ToString and Value (keywords VALUE and
// TOVALUE).

#include "functions/rpnfunctionbase.h"
#include "functions/rpnfunctionkinds.h"

// String(value, digits): the value as text with 16 significant digits, or
// with `digits` (a number; anything else means 6; outside 1 to 31, 16).
class CNodeToString : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_TO_STRING; }
    QString GetName() const override { return QStringLiteral("String"); }
    CRpnNode *CreateSame() const override { return new CNodeToString; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// ToString(value, NAME = option, ...): the value through the print formatter
// with the named options (upper-case names: PRECISION, QUOTE, REAL, BEGIN,
// END, SEP, MAX, FORMAT, ITEMBEGIN, ITEMEND, ITEMSEP).  A dictionary among
// the options gives all its entries.
class CNode_ToString2 : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_TO_STRING2; }
    QString GetName() const override { return QStringLiteral("ToString"); }
    CRpnNode *CreateSame() const override { return new CNode_ToString2; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// Value(text, name = value, ...): the text run as a formula, with the named
// values and the variables of the calling tree.  A text that does not
// compile gives 0, or itself when it is written in braces.  Any other kind
// than a text or a formula is given back unchanged.
class CNodeToValue : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_TO_VALUE; }
    QString GetName() const override { return QStringLiteral("Value"); }
    std::uint64_t GetTraits() const override { return CNodeMultiOperand::GetTraits() | RPN_TRAIT_TO_VALUE; }
    CRpnNode *CreateSame() const override { return new CNodeToValue; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

class CRpnPrototypeArray;
void ProvideConversionFunctions(CRpnPrototypeArray &prototypes);
