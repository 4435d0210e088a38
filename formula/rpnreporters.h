#pragma once
// The nodes through which a script reports: Error, which stops the run with
// an exception, Warning (also MESSAGE), which adds a line to the tree's
// warnings, and GetLastError, which reads what the nearest Catch caught.

#include "formula/rpnnodes.h"

// The base of Error and Warning: a list of operands that form one message.
class CNodeErrorWarningBase : public CNodeMultiOperand
{
public:
    // Every operand evaluated and appended as its text with 16 digits; a
    // list operand gives the texts of its elements one after the other,
    // without quotes.  The operands are evaluated with a status of their own;
    // one that fails adds nothing and leaves no error in the tree.
    QString FormMessage();
};

// Error(text...): the status turns to 0, the message (message 41659 when it
// is empty) goes to the tree's error fields, first error winning, and a
// CRpnErrorException carrying the message unwinds to the nearest Catch or
// to the host.
class CNodeError : public CNodeErrorWarningBase
{
public:
    int GetKind() const override { return RPN_NODE_ERROR; }
    QString GetName() const override { return QStringLiteral("Error"); }
    std::uint64_t GetTraits() const override { return CNodeErrorWarningBase::GetTraits() | RPN_TRAIT_ERROR; }
    CRpnNode *CreateSame() const override { return new CNodeError; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// Warning(text...) and MESSAGE(text...): a message that is not empty is
// appended to the tree's warnings; the status is 1 and the value empty.
class CNodeWarning : public CNodeErrorWarningBase
{
public:
    int GetKind() const override { return RPN_NODE_WARNING; }
    QString GetName() const override { return QStringLiteral("Warning"); }
    std::uint64_t GetTraits() const override { return CNodeErrorWarningBase::GetTraits() | RPN_TRAIT_WARNING; }
    CRpnNode *CreateSame() const override { return new CNodeWarning; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// GetLastError(): the "LastError" entry that Catch left in "MainVariables",
// which it removes, so that a second call does not find it; without one the
// tree's current error text, as a STRING.
class CNodeGetError : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_GET_ERROR; }
    QString GetName() const override { return QStringLiteral("GetLastError"); }
    CRpnNode *CreateSame() const override { return new CNodeGetError; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};
