#include "support/controls/exeditfilter.h"

namespace {

bool isFloatChar(QChar c)
{
    return c == u'+' || c == u'-' || c == u'.' || c == u'E' || c == u'e';
}

bool isDigit(QChar c)
{
    return c >= u'0' && c <= u'9';
}

bool isTextPunctuation(QChar c)
{
    return c == u' ' || c == u'+' || c == u',' || c == u'-' || c == u'.' || c == u'_';
}

bool isTextChar(QChar c)
{
    return c.isLetter() || isTextPunctuation(c);
}

bool isIdentifierChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_';
}

bool isSiLetter(QChar c)
{
    switch (c.unicode()) {
    case 'k': case 'G': case 'K': case 'M': case 'N': case 'P': case 'T':
    case 'U': case 'g': case 'm': case 'n': case 'p': case 't': case 'u':
        return true;
    default:
        return false;
    }
}

// The class bits of a typed character, tested against the flags.
std::uint16_t charClass(std::uint16_t flags, QChar c)
{
    if (c.unicode() < 32)
        return 0xff;
    if ((flags & ExEditFloat) && isFloatChar(c))
        return ExEditFloat;
    if (isDigit(c))
        return ExEditDigits;
    if (isTextChar(c))
        return ExEditText;
    return ExEditOther;
}

CExEditKeyResult result(CExEditKeyResult::Action action)
{
    CExEditKeyResult r;
    r.action = action;
    return r;
}

CExEditKeyResult replaced(QString text, int cursor)
{
    CExEditKeyResult r;
    r.action = CExEditKeyResult::Replace;
    r.text = std::move(text);
    r.cursor = cursor;
    return r;
}

} // namespace

CExEditKeyResult ExEditFilterChar(std::uint16_t flags, const CExEditState &state, QChar c,
                                  bool acceptedByControl)
{
    using R = CExEditKeyResult;
    if (c.unicode() < 32)
        return result(R::Default);
    if (flags == ExEditIdentifier)
        return result(isIdentifierChar(c) ? R::Default : R::Drop);
    if (!acceptedByControl)
        return result(R::Drop);
    if (c == u' ')
        return result(flags & ExEditBlanks ? R::Default : R::Drop);
    if (c == u'.' && (flags & ExEditNoPoint))
        return result(R::Drop);

    const QString &text = state.text;
    if (c == u'-' && (flags & ExEditDigits) && !(flags & ExEditMinusAnywhere)) {
        // Only the sign of an exponent may be typed in place.
        const int at = state.selectionStart;
        const bool exponent = at >= 2 && at <= text.size()
            && (text.at(at - 1) == u'E' || text.at(at - 1) == u'e');
        if (!exponent)
            return result(R::Drop);
    }

    if (charClass(flags, c) & flags)
        return result(R::Default);
    if ((flags & ExEditText) || state.readOnly)
        return result(R::Drop);

    // The sign keys change the sign of the whole number.
    const bool negative = text.startsWith(u'-');
    if (c == u'-' && !negative)
        return replaced(u'-' + text, state.selectionStart + 1);
    if (c == u'+' && negative)
        return replaced(text.mid(1), state.selectionStart > 0 ? state.selectionStart - 1 : 0);

    if ((flags & ExEditSiSuffix) && isSiLetter(c)) {
        int last = int(text.size()) - 1;
        while (last >= 0 && !isDigit(text.at(last)))
            --last;
        if (last < 0 || (last == 0 && text.at(0) == u'0'))
            return result(R::Drop);
        return replaced(text.left(last + 1) + c, last + 2);
    }
    return result(R::Drop);
}

QString ExEditFilterPaste(std::uint16_t flags, const QString &text, bool multiLine)
{
    QString out;
    out.reserve(text.size());
    for (QChar c : text) {
        bool keep = false;
        if (c == u' ')
            keep = (flags & ExEditBlanks) != 0;
        else if (c == u'.' && (flags & ExEditNoPoint))
            keep = false;
        else if (c == u'\r' || c == u'\n')
            keep = multiLine;
        else if (c.unicode() < 32)
            keep = false;
        else if (flags == ExEditIdentifier)
            keep = isIdentifierChar(c);
        else
            keep = ((flags & ExEditFloat) && isFloatChar(c)) || ((flags & ExEditDigits) && isDigit(c))
                || ((flags & ExEditText) && isTextChar(c)) || (flags & ExEditOther);
        if (keep)
            out += c;
    }
    return out;
}

bool ExEditStepText(QString &text, int direction)
{
    bool ok = false;
    const long long value = text.trimmed().toLongLong(&ok);
    if (!ok)
        return false;
    const long long stepped = direction == 1 ? value - 1 : value + 1;
    if (stepped >= 32768)
        return false;
    text = QString::number(stepped);
    return true;
}
