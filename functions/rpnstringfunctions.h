#pragma once
// The functions that search and cut texts: Find, FindReverse, Replace,
// Split, Split2, SubStr, and the Trim family (Trim, TrimLeft, TrimRight,
// MakeUpper, MakeLower).
//
// Texts are Unicode, held as UTF-16 as everywhere in the program.  Positions
// and lengths (Find, FindReverse, SubStr, SizeOf) are 0-based and counted in
// UTF-16 code units: every letter of the European and Asian scripts is one
// unit; a character beyond the basic plane (an emoji, say) counts as two.
// Find and FindReverse compare after case folding, so "ÄB" is found in
// "xäby"; MakeUpper and MakeLower follow the Unicode case rules ("straße"
// becomes "STRASSE").  Replace and Split2 compare exactly.  Values that are
// no text are turned into text with 16 significant digits.

#include "functions/rpnfunctionbase.h"
#include "functions/rpnfunctionkinds.h"

// Find(text, what, start): the position of the first match at or behind
// start, -1 when there is none.  `what` may be an array of texts: the
// smallest position of any of them.
class CNodeFindChar : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_FIND; }
    QString GetName() const override { return QStringLiteral("Find"); }
    CRpnNode *CreateSame() const override { return new CNodeFindChar; }
    void Evaluate(CRpnData &result, unsigned char &status) override;

protected:
    // The search of one text: `start` as the caller gave it (or -1 for none).
    virtual qsizetype Search(const QString &text, const QString &what, int start, bool hasStart) const;
};

// FindReverse(text, what, start): the match that ends nearest before or on
// the character at start (default the last one).
class CNodeFindReverseChar : public CNodeFindChar
{
public:
    int GetKind() const override { return RPN_NODE_FIND_REVERSE; }
    QString GetName() const override { return QStringLiteral("FindReverse"); }
    CRpnNode *CreateSame() const override { return new CNodeFindReverseChar; }

protected:
    qsizetype Search(const QString &text, const QString &what, int start, bool hasStart) const override;
};

// Replace(text, what, with, ...): each pair in turn, every occurrence.  A
// variable as `what` stands for its own name, and as `with` for the text of
// its name.  On a formula it replaces whole variables, as ReplaceF does, and
// gives a new formula.
class CNodeReplaceThis : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_REPLACE; }
    QString GetName() const override { return QStringLiteral("Replace"); }
    CRpnNode *CreateSame() const override { return new CNodeReplaceThis; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// Split(text, separators): tokens between any of the separator characters.
// Blanks and tabs as separators fold into one and trim the tokens; other
// separators keep empty tokens.
class CNodeSplit : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_SPLIT; }
    QString GetName() const override { return QStringLiteral("Split"); }
    CRpnNode *CreateSame() const override { return new CNodeSplit; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// Split2(text, begin, end, keep): the pieces between begin and end markers,
// or (without end) the text cut at each begin; keep 1 keeps the markers.
class CNodeSplit2 : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_SPLIT2; }
    QString GetName() const override { return QStringLiteral("Split2"); }
    CRpnNode *CreateSame() const override { return new CNodeSplit2; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// SubStr(text, start, count): a negative start counts from the end; a
// negative count takes the rest.
class CNodeSubString : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_SUBSTR; }
    QString GetName() const override { return QStringLiteral("SubStr"); }
    CRpnNode *CreateSame() const override { return new CNodeSubString; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// The Trim family: one evaluation, one operation per class.  The further
// parameters form a set of characters (trimming) that the case functions
// ignore.  A variable as first parameter receives the new text.
class CNodeString_base : public CNodeMultiOperand
{
public:
    void Evaluate(CRpnData &result, unsigned char &status) override;
    // `set` is the texts of the further parameters joined.
    virtual QString Operate(const QString &text, const QString &set) const = 0;
};

class CNodeTrimChar : public CNodeString_base
{
public:
    int GetKind() const override { return RPN_NODE_TRIM; }
    QString GetName() const override { return QStringLiteral("Trim"); }
    CRpnNode *CreateSame() const override { return new CNodeTrimChar; }
    QString Operate(const QString &text, const QString &set) const override;
};

class CNodeTrimLeftChar : public CNodeString_base
{
public:
    int GetKind() const override { return RPN_NODE_TRIM_LEFT; }
    QString GetName() const override { return QStringLiteral("TrimLeft"); }
    CRpnNode *CreateSame() const override { return new CNodeTrimLeftChar; }
    QString Operate(const QString &text, const QString &set) const override;
};

class CNodeTrimRightChar : public CNodeString_base
{
public:
    int GetKind() const override { return RPN_NODE_TRIM_RIGHT; }
    QString GetName() const override { return QStringLiteral("TrimRight"); }
    CRpnNode *CreateSame() const override { return new CNodeTrimRightChar; }
    QString Operate(const QString &text, const QString &set) const override;
};

class CNodeMakeUpperChar : public CNodeString_base
{
public:
    int GetKind() const override { return RPN_NODE_MAKE_UPPER; }
    QString GetName() const override { return QStringLiteral("MakeUpper"); }
    CRpnNode *CreateSame() const override { return new CNodeMakeUpperChar; }
    QString Operate(const QString &text, const QString &set) const override;
};

class CNodeMakeLowerChar : public CNodeString_base
{
public:
    int GetKind() const override { return RPN_NODE_MAKE_LOWER; }
    QString GetName() const override { return QStringLiteral("MakeLower"); }
    CRpnNode *CreateSame() const override { return new CNodeMakeLowerChar; }
    QString Operate(const QString &text, const QString &set) const override;
};

class CRpnPrototypeArray;
void ProvideStringFunctions(CRpnPrototypeArray &prototypes);
