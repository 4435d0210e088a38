#include "graphwnd/scopechannelsdialog.h"

#include "graphdata/graphcurve.h"
#include "graphwnd/graphwnd.h"
#include "support/languagestring.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace {

enum : int {
    TextTitle = 44600,
    TextHint = 44602,
    TextChannelError = 44603,
};

CScopeData_Data *scopeOf(const CGraphWnd &window)
{
    CGraphCurve *graph = window.GetGraphData();
    return graph && graph->m_data.IsScope() ? graph->m_data->AsScope() : nullptr;
}

} // namespace

bool CScopeChannelsDialog::Applies(const CGraphWnd &window)
{
    const CScopeData_Data *scope = scopeOf(window);
    return scope && scope->m_columnCount > 1;
}

CScopeChannelsDialog::CScopeChannelsDialog(CGraphWnd &window)
    : QDialog(&window), m_window(window), m_error(new QLabel(this))
{
    setWindowTitle(LanguageString(TextTitle));
    m_error->setObjectName(QStringLiteral("error"));
    m_error->setWordWrap(true);
    m_error->setStyleSheet(QStringLiteral("color: #b00000"));
    auto *hint = new QLabel(LanguageString(TextHint), this);
    hint->setWordWrap(true);
    auto *form = new QFormLayout;
    if (const CScopeData_Data *scope = scopeOf(window)) {
        const CGraphData &data = window.GetGraphData()->m_data;
        for (int c = 0; c < data.ColumnCount(); ++c)
            m_names << data.GetColumn(c)->m_name;
        for (int c = 1; c < m_names.size(); ++c) {
            auto *edit = new QLineEdit(scope->ChannelFormula(c), this);
            edit->setObjectName(QStringLiteral("formula%1").arg(c));
            edit->setMinimumWidth(320);
            edit->setPlaceholderText(m_names[c]);
            form->addRow(m_names[c], edit);
            m_edits.push_back(edit);
        }
    }
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &CScopeChannelsDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &CScopeChannelsDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(hint);
    layout->addLayout(form);
    layout->addWidget(m_error);
    layout->addWidget(buttons);
    m_error->hide();
}

QLineEdit *CScopeChannelsDialog::FormulaEdit(int channel) const
{
    return channel >= 1 && channel <= int(m_edits.size()) ? m_edits[std::size_t(channel - 1)] : nullptr;
}

void CScopeChannelsDialog::accept()
{
    CScopeData_Data *scope = scopeOf(m_window);
    if (!scope) { // the window lost its graph meanwhile
        QDialog::reject();
        return;
    }
    // The channels changed so far, with their former formulas.
    std::vector<std::pair<int, QString>> applied;
    for (int c = 1; c <= int(m_edits.size()); ++c) {
        const QString former = scope->ChannelFormula(c);
        const QString text = m_edits[std::size_t(c - 1)]->text().trimmed();
        if (text == former)
            continue;
        QString error;
        int position = -1;
        if (scope->SetChannelFormula(c, text, &error, &position)) {
            applied.emplace_back(c, former);
            continue;
        }
        // All or nothing: what compiled before compiles again.
        for (auto it = applied.rbegin(); it != applied.rend(); ++it)
            scope->SetChannelFormula(it->first, it->second);
        if (!applied.empty())
            m_window.Redraw(1);
        m_error->setText(LanguageString(TextChannelError).arg(m_names.value(c), error));
        m_error->show();
        QLineEdit *edit = m_edits[std::size_t(c - 1)];
        edit->setFocus();
        if (position >= 0) {
            // The edit holds the text untrimmed: the place moves by the blanks in front.
            const QString raw = edit->text();
            int at = position;
            for (int i = 0; i < raw.size() && raw[i].isSpace(); ++i)
                ++at;
            int end = at;
            while (end < raw.size() && (raw[end].isLetterOrNumber() || raw[end] == u'_'))
                ++end;
            edit->setCursorPosition(at);
            if (end > at)
                edit->setSelection(at, end - at);
        }
        return;
    }
    if (!applied.empty())
        m_window.Redraw(1);
    QDialog::accept();
}
