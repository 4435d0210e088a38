#pragma once
// The rules of CExEditCtrl, free of any widget: which typed character an edit
// field takes, what a pasted text keeps, and the integer step.  The flag word
// says what may be typed.

#include <QString>
#include <cstdint>

enum ExEditFlag : std::uint16_t {
    ExEditDigits = 0x1,         // digits
    ExEditText = 0x2,           // letters and blank + , - . _
    ExEditOther = 0x4,          // any other character
    ExEditFloat = 0x10,         // the characters of a floating number: + - . E e
    ExEditMinusAnywhere = 0x20, // a minus may stand anywhere
    ExEditSiSuffix = 0x40,      // an SI letter may end the text ("4.7k")
    ExEditBlanks = 0x80,        // blanks
    ExEditNoPoint = 0x100,      // no decimal point
};

// Not a mask: the identifier field, which takes letters, digits and '_' alone.
constexpr std::uint16_t ExEditIdentifier = 767;

// The flag words the digitiser uses: axis values (digits, a floating number,
// a minus anywhere) and the point text (everything).
constexpr std::uint16_t ExEditAxisValue = 49;
constexpr std::uint16_t ExEditAnyText = 255;

// The field as a typed character finds it.
struct CExEditState {
    QString text;
    int selectionStart = 0; // the caret when nothing is selected
    bool readOnly = false;
};

struct CExEditKeyResult {
    enum Action {
        Drop,    // the character is swallowed
        Default, // the field inserts it as any edit field would
        Replace, // the field's text becomes `text`, caret at `cursor`
    };
    Action action = Drop;
    QString text;
    int cursor = 0;
};

// Filters one typed character.  `acceptedByControl` is the answer of the
// control's own AcceptChar (asked only for printable characters).
//  - Control codes go to the default handling.  In an identifier field a
//    letter, a digit or '_' does, and anything else is dropped.
//  - A blank needs ExEditBlanks; a point is dropped with ExEditNoPoint.
//  - In a digit field without ExEditMinusAnywhere a minus is taken only right
//    behind an exponent letter E or e (from the third position on).
//  - A character whose class (digit, floating, text, other) is allowed goes
//    to the default handling; in a text or read-only field anything else is
//    dropped.
//  - Otherwise a '-' puts a minus in front of the whole text, and a '+' takes
//    a leading minus away, wherever the caret stands.
//  - With ExEditSiSuffix an SI letter (k K M G g T t m u U n N p P) replaces
//    whatever follows the last digit; it is dropped when the text has no
//    digit, or its only digit is a leading zero.
CExEditKeyResult ExEditFilterChar(std::uint16_t flags, const CExEditState &state, QChar c,
                                  bool acceptedByControl = true);

// What a pasted text keeps: blanks only with ExEditBlanks, points never with
// ExEditNoPoint; in an identifier field letters, digits and '_'; otherwise
// the characters of an allowed class.  Line breaks stay in a multi-line field
// only, and other control characters always go.  No sign or suffix logic.
QString ExEditFilterPaste(std::uint16_t flags, const QString &text, bool multiLine = false);

// The integer step of a field: direction 1 counts down, 0 up.  False, with
// `text` untouched, when the text is no integer or the new value would be
// 32768 or more.
bool ExEditStepText(QString &text, int direction);
