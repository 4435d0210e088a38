#pragma once
// The scanner: source text to parser items.
//
// The main text becomes one flat list of items (significant tokens and the
// white space, line ends and comments between them).  Each FUNCTION
// definition is taken out of the main text into a list of its own, with its
// name, its parameter items and its body items.  Rows count from 1, columns
// from 0 (characters since the last line feed; a CR counts as a character).

#include <QString>
#include <QStringView>
#include <functional>
#include <vector>

class CRpnErrorFields;
class CRpnUserFunction;
class CRpnParserFunction;

// Item kinds.
enum RpnTokenKind : int {
    RPN_TOKEN_WORD = 0,
    RPN_TOKEN_NUMBER = 1,
    RPN_TOKEN_CALL = 3,          // a word followed by "(", blanks between not counting
    RPN_TOKEN_OPERATOR = 4,
    RPN_TOKEN_BRACKET = 5,       // ( ) [ ] { }
    RPN_TOKEN_TEXT = 7,          // quoted text with its quotes, a # line, _CRLF words, <--BEGIN--> blocks
    RPN_TOKEN_HOST_VARIABLE = 8, // claimed by the host's variable matcher; m_index is its slot
    RPN_TOKEN_BLANK = 20,
    RPN_TOKEN_LINE_END = 21,
    RPN_TOKEN_COMMENT = 22,
    RPN_TOKEN_OTHER = 99,        // a character that fits nothing
};

class CRpnParserItem
{
public:
    CRpnParserItem() = default;
    CRpnParserItem(const QString &text, int kind, int position, int length, int row, int col);
    CRpnParserItem(const CRpnParserItem &) = delete;
    CRpnParserItem &operator=(const CRpnParserItem &) = delete;
    virtual ~CRpnParserItem();

    virtual CRpnParserFunction *AsFunction() { return nullptr; }
    virtual const CRpnParserFunction *AsFunction() const { return nullptr; }
    bool IsSignificant() const { return m_significant != 0; }
    bool Is(int kind, QStringView text) const { return m_kind == kind && m_text == text; }

    QString m_text;
    int m_kind = RPN_TOKEN_OTHER;
    int m_significant = 0; // 1 for tokens, 0 for white space, line ends and comments
    int m_position = 0;    // character offset in the source
    int m_length = 0;      // characters of the source the item spans
    int m_row = 1;
    int m_col = 0;
    int m_index = -1;      // host variable slot (kind 8)
};

// A list of items; it owns them.
class CRpnParserItemArray : public CRpnParserItem
{
public:
    CRpnParserItemArray() = default;
    ~CRpnParserItemArray() override;

    int GetSize() const { return int(m_items.size()); }
    CRpnParserItem *GetAt(int i) const { return m_items[std::size_t(i)]; }
    void Add(CRpnParserItem *item) { m_items.push_back(item); }
    void RemoveAll();

    std::vector<CRpnParserItem *> m_items;
};

// One FUNCTION definition: name(parameters) { body }.
class CRpnParserFunction : public CRpnParserItemArray
{
public:
    CRpnParserFunction *AsFunction() override { return this; }
    const CRpnParserFunction *AsFunction() const override { return this; }

    QString m_name;
    CRpnParserItemArray m_parameters;
    CRpnParserItemArray m_body;
    CRpnParserItemArray *m_current = nullptr; // the list being filled while scanning
};

// The host's variable matcher: receives the rest of the text at a word and
// returns how many characters it claims as one of its variables (0 for none),
// with the variable's slot in `index`.
using CRpnVariableMatcher = std::function<int(QStringView rest, int &index)>;

// Scans `text` into `root` (the main items) and `functions` (one
// CRpnParserFunction for each definition).  Returns 1, or 0 after reporting
// the error in `tree`'s error fields (43241 bad or repeated function name,
// 43242 a token expected, 43243 FUNCTION in a wrong place, 43029 and 43170
// for brackets of a definition).
int Scan(CRpnErrorFields *tree, const QString &text, CRpnParserItemArray &root,
         CRpnParserItemArray &functions, const CRpnVariableMatcher &matcher = {});

// A function name: an ASCII letter or "_", then letters, digits and "_".
bool IsValidFunctionName(QStringView name);

// Reads the parameter items of a definition into `record`: names, flags
// (`_ref` marks a parameter passed by reference) and defaults after "=": a
// number with an optional sign, a text literal, or a list in braces that is
// compiled and evaluated as a formula.  Without a default a parameter gets
// the null value.  `source` is the text that was scanned.  False after
// reporting 43028 at the item that does not fit.
bool ParseParameterList(CRpnErrorFields *tree, const QString &source,
                        const CRpnParserFunction &function, CRpnUserFunction &record);
