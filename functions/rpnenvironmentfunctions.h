#pragma once
// The functions that tie a script to the outside: message boxes, printed
// output and the log, options of the run, waiting for the host's jobs, lists
// of files, and other scripts.  They reach the host through the tree's
// environment (formula/rpnenvironment.h).

#include "functions/rpnfunctionbase.h"

#include <QString>

class CRpnPrototypeArray;

enum RpnEnvironmentNodeKind : int {
    RPN_NODE_PRINT = 202,
    RPN_NODE_CLEAR = 203,
    RPN_NODE_WAIT = 410,
    RPN_NODE_GET_FILES = 411,
    RPN_NODE_SCRIPT_OPTION = 550,
    RPN_NODE_MESSAGE_BOX = 557,
    RPN_NODE_LOAD_SCRIPT = 570,
};

// MessageBox(text..., BUTTON = YESNO, ICON = QUESTION, TITLE = "..."): the
// texts of the plain parameters joined; the answer as "OK", "YES", ... or
// null when no box could be shown.
class CNodeMessageBox : public CNodeScriptFunction
{
public:
    int GetKind() const override { return RPN_NODE_MESSAGE_BOX; }
    QString GetName() const override { return QStringLiteral("MessageBox"); }
    CRpnNode *CreateSame() const override { return new CNodeMessageBox; }
    bool TakesBareWords() const override { return true; }
    int DoFunction(CRpnData &result, QString &errorText) override;
};

// Print(values...): one line to the host's output (and the log file); a
// blank between two neighbouring numbers, nothing between other values.
class CNodePrint : public CNodeScriptFunction
{
public:
    int GetKind() const override { return RPN_NODE_PRINT; }
    QString GetName() const override { return QStringLiteral("Print"); }
    CRpnNode *CreateSame() const override { return new CNodePrint; }
    int DoFunction(CRpnData &result, QString &errorText) override;
};

// Clear(): the host clears its output pane; the log file gets an empty line.
class CNodeClear : public CNodeScriptFunction
{
public:
    int GetKind() const override { return RPN_NODE_CLEAR; }
    QString GetName() const override { return QStringLiteral("Clear"); }
    CRpnNode *CreateSame() const override { return new CNodeClear; }
    int DoFunction(CRpnData &result, QString &errorText) override;
};

// ScriptOption(options...): PRECISION = n, LOGFILE = "path", "LOG names",
// "NOLOG names" (also "NO LOG", "LOGOFF"), "PRECISION n".  Null.
class CNodeScriptOption : public CNodeMultiOperand
{
public:
    int GetKind() const override { return RPN_NODE_SCRIPT_OPTION; }
    QString GetName() const override { return QStringLiteral("ScriptOption"); }
    CRpnNode *CreateSame() const override { return new CNodeScriptOption; }
    bool TakesBareWords() const override { return true; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// Wait(n): with no n, or n 0, until no job of the host runs; with n, at once
// when fewer than n run, else until none runs.  Null.
class CNodeWait : public CNodeScriptFunction
{
public:
    int GetKind() const override { return RPN_NODE_WAIT; }
    QString GetName() const override { return QStringLiteral("Wait"); }
    CRpnNode *CreateSame() const override { return new CNodeWait; }
    int DoFunction(CRpnData &result, QString &errorText) override;
};

// GetFiles(folder, filters..., SUBFOLDERS = 0): the paths of the files in the
// folder (and its sub-folders) whose names match one of the wildcard
// filters, in the order found.
class CNodeGetFiles : public CNodeScriptFunction
{
public:
    int GetKind() const override { return RPN_NODE_GET_FILES; }
    QString GetName() const override { return QStringLiteral("GetFiles"); }
    CRpnNode *CreateSame() const override { return new CNodeGetFiles; }
    int DoFunction(CRpnData &result, QString &errorText) override;
};

// LoadScript(path, parameters...): runs the script file in a tree of its own
// whose variables are a new dictionary (filled from the parameters); the
// dictionary, with what the script left in it, is the result.
class CNodeScriptLoad : public CNodeScriptFunction
{
public:
    int GetKind() const override { return RPN_NODE_LOAD_SCRIPT; }
    QString GetName() const override { return QStringLiteral("LoadScript"); }
    CRpnNode *CreateSame() const override { return new CNodeScriptLoad; }
    int DoFunction(CRpnData &result, QString &errorText) override;
};

// The wildcard rule of GetFiles: "*" at the end matches the rest of the name,
// inside the filter any run of characters (tried from the left); "?" and "!"
// match one character; others match after case folding; the name must end
// with the filter.  An empty filter matches every name.
bool RpnWildcardMatch(const QString &filter, const QString &name);

void ProvideEnvironmentFunctions(CRpnPrototypeArray &prototypes);
