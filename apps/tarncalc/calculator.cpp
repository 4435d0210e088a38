#include "calculator.h"

#include "formula/rpnexception.h"

CTarnCalculator::CTarnCalculator(bool degrees)
{
    m_tree.m_angleMode = degrees ? 1 : 0;
}

bool CTarnCalculator::RunText(const QString &text, QString &output, QString &error, QStringList &warnings)
{
    output.clear();
    error.clear();
    m_tree.m_warnings.clear();
    auto errorLine = [this](const QString &message, int row, int col) {
        return RpnFormat(QString::fromLatin1(RPN_INNER_ERROR_FORMAT), {message, row, col});
    };
    if (!m_tree.Compile(text, nullptr, true)) {
        error = errorLine(m_tree.GetErrorMessage(), m_tree.GetErrorRow(), m_tree.GetErrorCol());
        return false;
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
    warnings = m_tree.m_warnings;
    if (status != 1) {
        error = errorLine(m_tree.GetErrorMessage(), m_tree.GetErrorRow(), m_tree.GetErrorCol());
        return false;
    }
    output = value.GetText(16);
    return true;
}
