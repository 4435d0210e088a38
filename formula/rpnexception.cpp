#include "formula/rpnexception.h"

#include "support/languagestring.h"

#include <algorithm>

CRpnException::CRpnException(const QString &message_, const QString &token_, int row_, int col_)
    : token(token_), message(message_), row(row_), col(col_), m_what(message_.toUtf8())
{
}

QString CRpnException::GetErrorMessage() const
{
    return message.left(999);
}

void ThrowRpnException(const QString &message, const QString &token, int row, int col)
{
    throw CRpnException(message, token, row, col);
}

void ThrowRpnErrorException(const QString &message, const QString &token, int row, int col)
{
    throw CRpnErrorException(message, token, row, col);
}

QString GetMessageText(int id)
{
    return LanguageString(id);
}

QString RpnFormat(const QString &pattern, std::initializer_list<CRpnFormatArg> args)
{
    QString out;
    out.reserve(pattern.size() + 32);
    auto next = args.begin();
    const qsizetype n = pattern.size();
    for (qsizetype i = 0; i < n; ++i) {
        const QChar c = pattern[i];
        if (c != u'%' || i + 1 >= n) {
            out += c;
            continue;
        }
        const QChar f = pattern[i + 1];
        if (f == u'%') {
            out += u'%';
            ++i;
        } else if (f == u's' || f == u'i' || f == u'd' || f == u'u' || f == u'c') {
            if (next != args.end())
                out += (next++)->Text();
            ++i;
        } else {
            out += c;
        }
    }
    return out;
}

QString RpnMessage(int id, std::initializer_list<CRpnFormatArg> args)
{
    return RpnFormat(GetMessageText(id), args);
}

QString FormatPosition(const QString &text, int position)
{
    const qsizetype pos = std::clamp<qsizetype>(position, 0, text.size());
    qsizetype begin = pos;
    while (begin > 0 && text[begin - 1] != u'\n')
        --begin;
    qsizetype end = pos;
    while (end < text.size() && text[end] != u'\n' && text[end] != u'\r')
        ++end;
    QString out = text.mid(begin, end - begin);
    out += u'\n';
    for (qsizetype i = begin; i < pos; ++i)
        out += text[i] == u'\t' ? u'\t' : u' ';
    out += u'^';
    return out;
}

void CRpnErrorFields::ReportError(unsigned char &status, const QString &message, const QString &token,
                                  int row, int col)
{
    status = 0;
    if (errorText.isEmpty()) {
        // An empty message would let a later error overwrite this one.
        errorText = message.isEmpty() ? QStringLiteral(" ") : message;
        errorRow = row;
        errorCol = col;
        errorToken = token;
    }
    if (throwOnError)
        ThrowRpnException(errorText, errorToken, errorRow, errorCol);
}

void CRpnErrorFields::ReportError(unsigned char &status, int messageId,
                                  std::initializer_list<CRpnFormatArg> args, const QString &token,
                                  int row, int col)
{
    // The text is only made when it will be kept.
    ReportError(status, errorText.isEmpty() ? RpnMessage(messageId, args) : QString(), token, row, col);
}

void CRpnErrorFields::ResetError()
{
    errorRow = -1;
    errorCol = -1;
    errorToken.clear();
    errorText.clear();
    silentName.clear();
    silentRow = -1;
    silentCol = -1;
}

void ReportRpnError(CRpnErrorFields *tree, unsigned char &status, const QString &message,
                    const QString &token, int row, int col)
{
    if (tree)
        tree->ReportError(status, message, token, row, col);
    else
        status = 0;
}
