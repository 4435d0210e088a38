#pragma once
// Writing a compiled tree back as source text.  The text need not repeat the
// source character for character (spacing, comments inside expressions and
// the spelling of `<>` are normalised), but compiled again it gives an equal
// tree, and written again the same text.  Line ends are CR LF.

#include <QString>

class CRpnNode;
class CRpnData;

// The source of `node` and its subtree appended to `out`.  `indent` is
// passed down to the children unchanged.
void WriteNodeText(const CRpnNode *node, QString &out, int indent);

// A value as a literal that compiles back to it (numbers, texts, NULL);
// false for values that have no literal.
bool WriteValueLiteral(const CRpnData &value, QString &out);
