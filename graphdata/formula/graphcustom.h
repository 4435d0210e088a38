#pragma once
// The user's own named expressions for graph curves, kept per user under
// "Software\HELIOMAR\TARN\UserFunction": post-process formulas (kind 3,
// "PostProcessCount" and "PostProcess1"...), user functions (kind 2,
// "FunctionCount", "Function1"...) and plain formulas (kind 1,
// "FormulaCount", "Formula1"...).  Values are numbered from 1.
//
// Every item is one text: a head, '{', a body and '}'.  The head of a
// post-process item is a name with a parenthesised parameter list,
// "scale(a, b) { a*GRAPH+b }".

#include <QString>
#include <QStringList>

// Splits an item.  `open` is the index of the first '{', `close` that of
// the last '}'; the item fails when open is below 1 or close is not above
// it, and when the head (the text before open, trimmed) is empty.  With
// `params`, a head "name(a,b)" gives the name and the parameters between
// its first '(' and last ')'.  With `blank`, the text is rewritten into a
// statement of the body alone: every printable character up to and with
// the '{' becomes a blank (so that positions in the body still agree with
// the stored text) and the text ends before the '}'.  The body is
// text.mid(open + 1, close - open - 1) of the unchanged text.
bool ParseItem(QString &text, bool blank, int &open, int &close, QString &head, QStringList *params = nullptr);

class CGraphCustom
{
public:
    enum Kind : int { KindFormula = 1, KindFunction = 2, KindPostProcess = 3 };

    // Reads the items of one kind into the lists (emptied first); items that
    // do not parse are skipped.  0 for an unknown kind; otherwise whether the
    // count value exists.
    int LoadKind(int kind, QStringList &names, QStringList &bodies, QStringList *params = nullptr);
    // The three kinds, in the order 3, 2, 1.
    void LoadAll();

    // Copies the user functions into the arrays; returns their count.
    int GetFunctions(QStringList &names, QStringList &bodies) const;
    // Writes whole items ("head{body}") as the user functions, numbered from
    // 1, drops values left over from a longer list, and reads them back.
    void SaveFunctions(const QStringList &items);

    QStringList m_postProcessBodies;
    QStringList m_postProcessNames;
    QStringList m_postProcessParams; // "a,b" for each item
    QStringList m_functionNames;
    QStringList m_functionBodies;
    QStringList m_formulaNames;
    QStringList m_formulaBodies;
};

// The program's instance, loaded on first use.  Used on the user-interface
// thread only.
CGraphCustom &GetGraphCustom();
// Forgets what was loaded: the next GetGraphCustom reads the settings again.
void ResetGraphCustom();
