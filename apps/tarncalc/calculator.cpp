#include "calculator.h"

#include "formula/rpnexception.h"

namespace {

constexpr int kMsgSilentFailure = 43904;
constexpr int kMsgNoReason = 43905;

} // namespace

CTarnCalculator::CTarnCalculator(bool degrees)
{
    m_tree.m_angleMode = degrees ? 1 : 0;
    m_tree.Environment().SetOutput(&CTarnCalculator::output, this);
}

void CTarnCalculator::output(CEquationTree *, CRpnNode *, void *user1, void *, int, const QString &text, int code)
{
    auto *self = static_cast<CTarnCalculator *>(user1);
    if (self->m_output)
        self->m_output(text, code);
}

void CTarnCalculator::SetOutput(std::function<void(const QString &, int)> output)
{
    m_output = std::move(output);
}

void CTarnCalculator::SetArguments(const QStringList &arguments)
{
    CRpnData list;
    list.SetArray(int(arguments.size()));
    for (qsizetype i = 0; i < arguments.size(); ++i)
        list.GetItems()[i].SetText(arguments[i]);
    m_tree.GetVariables()->SetAt(QStringLiteral("Arguments"), list);
}

QString CTarnCalculator::FormatError(const QString &text, const QString &sourceName, const QString &message, int row,
                                     int col)
{
    // An error handed on from a formula run by Eval or Formula comes already in
    // the block's form, with its place inside that formula; it is shown as it
    // is, and the lines below give its place in the script.
    const QString head = QString::fromLatin1(RPN_INNER_ERROR_FORMAT).section(u'%', 0, 0);
    QString out = message.startsWith(head) ? message
                                           : RpnFormat(QString::fromLatin1(RPN_INNER_ERROR_FORMAT), {message, row, col});
    const QStringList lines = text.split(u'\n');
    if (row < 1 || row > lines.size() || col < 0)
        return out;
    QString line = lines[row - 1];
    if (line.endsWith(u'\r'))
        line.chop(1);
    if (!sourceName.isEmpty())
        out += QStringLiteral("\n  in %1 at row %2, col %3:").arg(sourceName).arg(row).arg(col);
    // The caret's line copies the tabs of the source line, so that it lines
    // up however wide the terminal draws a tab.
    QString pad;
    for (qsizetype i = 0; i < std::min<qsizetype>(col, line.size()); ++i)
        pad += line[i] == u'\t' ? u'\t' : u' ';
    if (col > line.size())
        pad += QString(col - line.size(), u' ');
    const QString gutter = QString::number(row);
    out += QStringLiteral("\n  %1 | %2\n  %3 | %4^").arg(gutter, line, QString(gutter.size(), u' '), pad);
    return out;
}

CTarnResult CTarnCalculator::Run(const QString &text, const QString &sourceName)
{
    CTarnResult r;
    m_tree.m_warnings.clear();
    if (!m_tree.Compile(text, nullptr, true)) {
        r.error = FormatError(text, sourceName, m_tree.GetErrorMessage(), m_tree.GetErrorRow(), m_tree.GetErrorCol());
        r.warnings = m_tree.m_warnings;
        return r;
    }
    CRpnData value;
    int status = 0;
    try {
        status = m_tree.Run(value);
    } catch (const CRpnException &e) {
        // The tree holds the first error; an exception raised on purpose
        // carries its own when the tree has none.
        if (!m_tree.HasError()) {
            m_tree.errorText = e.GetErrorMessage();
            m_tree.errorRow = e.row;
            m_tree.errorCol = e.col;
        }
        status = 0;
    }
    r.warnings = m_tree.m_warnings;
    if (status != 1) {
        QString message = m_tree.GetErrorMessage();
        int row = m_tree.GetErrorRow(), col = m_tree.GetErrorCol();
        if (message.isEmpty() && !m_tree.silentName.isEmpty()) {
            // A step failed and said nothing: name it and show where it stands.
            message = RpnMessage(kMsgSilentFailure, {m_tree.silentName});
            row = m_tree.silentRow;
            col = m_tree.silentCol;
        } else if (message.isEmpty()) {
            message = RpnMessage(kMsgNoReason);
        }
        r.error = FormatError(text, sourceName, message, row, col);
        return r;
    }
    r.ok = true;
    r.value = value.GetText(std::uint32_t(m_tree.m_defaultPrecision));
    // Nothing to show: the empty value, or a block of statements that had
    // no value (a loop of Print calls).  An empty text is still shown.
    r.isNull = value.IsNull() || (r.value.isEmpty() && !value.IsString());
    return r;
}
