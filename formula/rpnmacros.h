#pragma once
// The directive nodes: #define, #undef, #if, #ifdef, #ifndef, #elif, #else,
// #endif, #error and the section marks that stand for their braces.
//
// They are not a text pass before compiling: they are statements that run
// at evaluation time against the same variables as the rest of the script.
// A line of source that starts with "#" is scanned as one text and so stays
// an inert text statement; these nodes are made only from word tokens that
// reach the keyword table with the hash sign, and from saved trees.
//
// While the parser turns items into nodes (rpnparser.cpp) the directives are
// rearranged into the shape of IF statements: the body of "#if" runs from
// the end of its line to the next section mark, "#else" is put between a
// closing and an opening mark, "#elif" becomes a closing mark, an else and
// an IF, "#endif" a closing mark.  So
//     #if a / x / #else / y / #endif
// folds to the same tree as  if (a) { x } else { y }.
//
// Each class keeps the text it is written back with (DirectiveText), for the
// printing of a tree as source.

#include "formula/rpnreporters.h"
#include "formula/rpnstatements.h"

// "#define a b": the assignment a = b, to a name that may be new.
class CNodeMacroDefine : public CNodeAssignment
{
public:
    static constexpr const char *DirectiveText = "#define ";

    CNodeMacroDefine() { m_flags |= RPN_NODE_MACRO; }
    int GetKind() const override { return RPN_NODE_MACRO_DEFINE; }
    QString GetName() const override { return QStringLiteral("#define"); }
    CRpnNode *CreateSame() const override { return new CNodeMacroDefine; }
};

// "#undef a": assigns the null value to a.  One operand.
class CNodeMacroUnDefine : public CNodeAssignment
{
public:
    static constexpr const char *DirectiveText = "#undef ";

    CNodeMacroUnDefine() { m_flags |= RPN_NODE_MACRO; }
    int GetKind() const override { return RPN_NODE_MACRO_UNDEFINE; }
    QString GetName() const override { return QStringLiteral("#undef"); }
    CRpnNode *CreateSame() const override { return new CNodeMacroUnDefine; }
    int GetOperandCount() const override { return 1; }
    void Evaluate(CRpnData &result, unsigned char &status) override;
};

// "#if condition": evaluates as IF.
class CNodeMacroIf : public CNode_IF
{
public:
    static constexpr const char *DirectiveText = "#if ";

    CNodeMacroIf() { m_flags |= RPN_NODE_MACRO; }
    int GetKind() const override { return RPN_NODE_MACRO_IF; }
    QString GetName() const override { return QStringLiteral("#if"); }
    CRpnNode *CreateSame() const override { return new CNodeMacroIf; }
};

// "#ifdef name" and "#ifndef name" share the truth test of IF: the body of
// each runs when the condition's value is true, so a name that holds the
// null value does not count as defined.  "#ifndef" is not the negation.
class CNodeMacroIfDef : public CNode_IF
{
public:
    static constexpr const char *DirectiveText = "#ifdef ";

    CNodeMacroIfDef() { m_flags |= RPN_NODE_MACRO; }
    int GetKind() const override { return RPN_NODE_MACRO_IFDEF; }
    QString GetName() const override { return QStringLiteral("#ifdef"); }
    CRpnNode *CreateSame() const override { return new CNodeMacroIfDef; }
};

class CNodeMacroIfNDef : public CNode_IF
{
public:
    static constexpr const char *DirectiveText = "#ifndef ";

    CNodeMacroIfNDef() { m_flags |= RPN_NODE_MACRO; }
    int GetKind() const override { return RPN_NODE_MACRO_IFNDEF; }
    QString GetName() const override { return QStringLiteral("#ifndef"); }
    CRpnNode *CreateSame() const override { return new CNodeMacroIfNDef; }
};

// "#elif condition": the IF in the else-part of the section before.
class CNodeMacroElseIf : public CNode_IF
{
public:
    static constexpr const char *DirectiveText = "#elif ";

    CNodeMacroElseIf() { m_flags |= RPN_NODE_MACRO | RPN_NODE_MACRO_ELIF; }
    int GetKind() const override { return RPN_NODE_MACRO_ELSE_IF; }
    QString GetName() const override { return QStringLiteral("#elif"); }
    CRpnNode *CreateSame() const override { return new CNodeMacroElseIf; }
};

// "#else": folded away like `else`.
class CNodeMacroElse : public CNode_ELSE
{
public:
    static constexpr const char *DirectiveText = "#else\r\n";

    CNodeMacroElse() { m_flags |= RPN_NODE_MACRO; }
    int GetKind() const override { return RPN_NODE_MACRO_ELSE; }
    QString GetName() const override { return QStringLiteral("#else"); }
    CRpnNode *CreateSame() const override { return new CNodeMacroElse; }
};

// "#endif": the parser puts a closing section mark in its place.
class CNodeMacroEndIf : public CNode_IF
{
public:
    static constexpr const char *DirectiveText = "#endif\r\n";

    CNodeMacroEndIf() { m_flags |= RPN_NODE_MACRO | RPN_NODE_MACRO_ENDIF; }
    int GetKind() const override { return RPN_NODE_MACRO_END_IF; }
    QString GetName() const override { return QStringLiteral("#endif"); }
    CRpnNode *CreateSame() const override { return new CNodeMacroEndIf; }
};

// A section mark: a brace that a directive stands for.  m_role tells the
// directive: 1 the section closed by "#elif" (or opened after an IF-like
// directive), 2 "#else", 3 "#endif"; the name follows the role.
class CNodeMacroBracket : public CNodeBracket
{
public:
    enum Role : std::int32_t { RoleElseIf = 1, RoleElse = 2, RoleEndIf = 3 };

    CNodeMacroBracket() { m_flags |= RPN_NODE_MACRO; }
    int GetKind() const override { return RPN_NODE_MACRO_BRACKET; }
    QString GetName() const override;
    CRpnNode *CreateSame() const override { return new CNodeMacroBracket; }
    CRpnNode *Clone(CEquationTree *tree, int position, int row, int col) const override;
    void SerializeNode(CRpnBuffer &buffer) override;

    std::int32_t m_role = RoleElseIf;
};

// "#error {text}": Error, when reached.
class CNodeMacroError : public CNodeError
{
public:
    static constexpr const char *DirectiveText = "#error {\"";

    CNodeMacroError() { m_flags |= RPN_NODE_MACRO; }
    int GetKind() const override { return RPN_NODE_MACRO_ERROR; }
    QString GetName() const override { return QStringLiteral("#error"); }
    CRpnNode *CreateSame() const override { return new CNodeMacroError; }
};

// The text a directive node is written back with: "#define ", "#if ", ...,
// "#else\r\n", "#endif\r\n", and for "#error" the whole line
// #error {"text"} with its line end.  Empty for other nodes (section marks
// too).
QString GetDirectiveSource(const CRpnNode *node, const QString &errorText = QString());
