#pragma once
// The version of the system as scripts see it: GetVersion gives it as a text
// and hands its parts to variables, IsVersionGE compares it with a version a
// script needs.

#include "formula/rpnnodes.h"

class CRpnPrototypeArray;

enum RpnVersionNodeKind : int {
    RPN_NODE_GET_VERSION = 205,
    RPN_NODE_IS_VERSION_GE = 206,
};

// The parts of the version: major, minor, build, revision, and the number of
// the build's configuration.
inline constexpr int kTarnVersionParts[5] = {26, 0, 0, 7209, 564};

// GetVersion(major, minor, build, revision, configuration): the version as
// "26.0.0.7209"; each argument that is a variable receives its part.
class CNode_GetVersion : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_GET_VERSION; }
    QString GetName() const override { return QStringLiteral("GetVersion"); }
    CRpnNode *CreateSame() const override { return new CNode_GetVersion; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// IsVersionGE(major, minor, build, revision): INT 1 when the system is at
// least that version.  The parts are compared in order; the first that
// differs decides, and one that cannot be evaluated is passed over.
class CNode_IsVersion_GE : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_IS_VERSION_GE; }
    QString GetName() const override { return QStringLiteral("IsVersionGE"); }
    CRpnNode *CreateSame() const override { return new CNode_IsVersion_GE; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

void ProvideVersionFunctions(CRpnPrototypeArray &prototypes);
