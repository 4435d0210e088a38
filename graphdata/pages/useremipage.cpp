#include "graphdata/pages/useremipage.h"

#include "graphdata/emi/emiimport.h"
#include "support/controls/userprompts.h"
#include "support/languagestring.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QLocale>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QTextBlock>
#include <QTextCursor>
#include <QVBoxLayout>

#include <cmath>

namespace {

enum : int {
    TextImportLimit = 43787,
    TextLimitFilter = 43788,
    TextUserLimits = 43886,
    TextKey = 43887,
    TextLabel = 43888,
    TextPairs = 43889,
    TextAdd = 43890,
    TextRemove = 43891,
    TextLoad = 43892,
    TextNoKey = 43893,
    TextBadPair = 43894,
    TextNoPairs = 43895,
    TextTaken = 43896,
};

// The section of a limit file that holds the limit's header.
const char kImportSection[] = "Limit";

// The short key of a limit: its level column's name (ColName and ColLabel
// both hold the name shown).
QString limitKey(const CCurveInfo &limit)
{
    return limit.m_displayColumn ? limit.m_displayColumn->m_name : limit.m_colName;
}

} // namespace

bool ParseLimitPairs(const QString &text, std::vector<CEmiPair> &pairs, int &badLine)
{
    pairs.clear();
    badLine = 0;
    static const QRegularExpression parting(QStringLiteral("[\\s,;]+"));
    const QStringList lines = text.split(u'\n');
    for (int i = 0; i < lines.size(); ++i) {
        const QString line = lines.at(i).trimmed();
        if (line.isEmpty())
            continue;
        const QStringList parts = line.split(parting, Qt::SkipEmptyParts);
        bool okF = false, okL = false;
        const double f = parts.size() == 2 ? QLocale::c().toDouble(parts.at(0), &okF) : 0;
        const double l = parts.size() == 2 ? QLocale::c().toDouble(parts.at(1), &okL) : 0;
        if (!okF || !okL || !std::isfinite(f) || !std::isfinite(l)) {
            badLine = i + 1;
            return false;
        }
        pairs.push_back({f, l});
    }
    return true;
}

QString FormatLimitPairs(const std::vector<CEmiPair> &pairs)
{
    QStringList lines;
    for (const CEmiPair &p : pairs)
        lines << QStringLiteral("%1 %2").arg(p.frequency, 0, 'g', 15).arg(p.level, 0, 'g', 15);
    return lines.join(u'\n');
}

CUserEMI::CUserEMI(CGraphOptionsCopy &copy, QWidget *parent)
    : COptionsPage(copy, parent), m_list(new QListWidget(this)), m_key(new QLineEdit(this)),
      m_label(new QLineEdit(this)), m_pairs(new QPlainTextEdit(this)),
      m_add(new QPushButton(LanguageString(TextAdd), this)), m_remove(new QPushButton(LanguageString(TextRemove), this)),
      m_load(new QPushButton(LanguageString(TextLoad), this))
{
    m_pairs->setTabChangesFocus(true);
    m_pairs->setLineWrapMode(QPlainTextEdit::NoWrap);
    for (QPushButton *b : {m_add, m_remove, m_load})
        b->setAutoDefault(false);

    auto *layout = new QHBoxLayout(this);
    auto *left = new QVBoxLayout;
    left->addWidget(new QLabel(LanguageString(TextUserLimits), this));
    left->addWidget(m_list, 1);
    left->addWidget(m_remove);
    layout->addLayout(left, 2);

    auto *right = new QVBoxLayout;
    auto *form = new QFormLayout;
    form->addRow(LanguageString(TextKey), m_key);
    form->addRow(LanguageString(TextLabel), m_label);
    right->addLayout(form);
    auto *pairsLabel = new QLabel(LanguageString(TextPairs), this);
    pairsLabel->setWordWrap(true);
    right->addWidget(pairsLabel);
    right->addWidget(m_pairs, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_load);
    buttons->addStretch(1);
    buttons->addWidget(m_add);
    right->addLayout(buttons);
    layout->addLayout(right, 3);

    connect(m_add, &QPushButton::clicked, this, &CUserEMI::AddLimit);
    connect(m_remove, &QPushButton::clicked, this, &CUserEMI::RemoveSelected);
    connect(m_load, &QPushButton::clicked, this, [this] { LoadFile(); });
    connect(m_list, &QListWidget::currentRowChanged, this, &CUserEMI::showLimit);

    setTabOrder(m_list, m_remove);
    setTabOrder(m_remove, m_key);
    setTabOrder(m_key, m_label);
    setTabOrder(m_label, m_pairs);
    setTabOrder(m_pairs, m_load);
    setTabOrder(m_load, m_add);
}

void CUserEMI::Load()
{
    const QSignalBlocker block(m_list);
    m_list->clear();
    const CCurveInfoArray &limits = GetEmiLimits();
    for (int i = EmiBuiltInCount(); i < limits.GetSize(); ++i) {
        const CCurveInfo &limit = *limits.GetAt(i);
        const QString label = limit.m_colLabel.isEmpty() ? limit.m_colName : limit.m_colLabel;
        const QString key = limitKey(limit);
        m_list->addItem(label == key ? label : QStringLiteral("%1 (%2)").arg(label, key));
    }
    m_remove->setEnabled(m_list->count() > 0);
}

// Nothing to store: the limits took effect when added or removed.
bool CUserEMI::Store(COptionsFault &) { return true; }

void CUserEMI::Focus(const COptionsFault &) {}

void CUserEMI::showLimit(int row)
{
    const CCurveInfoArray &limits = GetEmiLimits();
    const int index = EmiBuiltInCount() + row;
    if (row < 0 || index >= limits.GetSize())
        return;
    const CCurveInfo &limit = *limits.GetAt(index);
    m_key->setText(limitKey(limit));
    m_label->setText(limit.m_colLabel);
    m_pairs->setPlainText(FormatLimitPairs(EmiLimitPairs(limit)));
}

void CUserEMI::refuse(QWidget *field, const QString &text)
{
    ShowMessage(this, text);
    field->setFocus(Qt::OtherFocusReason);
    if (auto *edit = qobject_cast<QLineEdit *>(field))
        edit->selectAll();
}

bool CUserEMI::AddLimit()
{
    const QString key = m_key->text().trimmed();
    QString label = m_label->text().trimmed();
    if (key.isEmpty()) {
        refuse(m_key, LanguageString(TextNoKey));
        return false;
    }
    if (label.isEmpty())
        label = key;
    std::vector<CEmiPair> pairs;
    int badLine = 0;
    if (!ParseLimitPairs(m_pairs->toPlainText(), pairs, badLine)) {
        refuse(m_pairs, LanguageString(TextBadPair).arg(badLine).arg(m_pairs->toPlainText().split(u'\n').at(badLine - 1)));
        // The line at fault, selected.
        QTextCursor cursor(m_pairs->document()->findBlockByNumber(badLine - 1));
        cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        m_pairs->setTextCursor(cursor);
        return false;
    }
    if (pairs.empty()) {
        refuse(m_pairs, LanguageString(TextNoPairs));
        return false;
    }
    const CCurveInfoArray &limits = GetEmiLimits();
    // Names compare as the limit file import compares them.
    for (const CCurveInfo *limit : limits) {
        for (const QString &name : {key, label}) {
            for (const QString &taken : {limitKey(*limit), limit->m_colName, limit->m_colLabel}) {
                if (taken.compare(name, Qt::CaseInsensitive) == 0) {
                    refuse(name == key ? m_key : m_label, LanguageString(TextTaken).arg(name));
                    return false;
                }
            }
        }
    }
    const int index = AddUserLimit(key, label, pairs);
    SaveUserLimits(true);
    Load();
    m_list->setCurrentRow(index - EmiBuiltInCount());
    return true;
}

bool CUserEMI::RemoveSelected()
{
    const int row = m_list->currentRow();
    const int index = EmiBuiltInCount() + row;
    if (row < 0 || index >= GetEmiLimits().GetSize())
        return false;
    const QString key = GetEmiLimits().GetAt(index)->m_colName;
    if (!RemoveUserLimit(index))
        return false;
    // A graph that shows the limit loses it when the dialog is accepted;
    // the limits behind it moved down by one.
    for (int i = m_copy.m_curves.GetSize() - 1; i >= 0; --i) {
        CCurveBasicInfo *curve = m_copy.m_curves.GetAt(i);
        if (!curve->IsLimitLine())
            continue;
        if (curve->m_colName == key)
            m_copy.m_curves.DeleteAt(i);
        else if (curve->m_colIndex > index)
            --curve->m_colIndex;
    }
    if (m_copy.m_emiLimit == index)
        m_copy.m_emiLimit = -1;
    else if (m_copy.m_emiLimit > index)
        --m_copy.m_emiLimit;
    Load();
    if (m_list->count() > 0)
        m_list->setCurrentRow(std::min(row, m_list->count() - 1));
    return true;
}

int ImportUserLimitFile(QWidget *parent, QString path)
{
    if (path.isEmpty()) {
        CFilePrompt prompt;
        prompt.parent = parent;
        prompt.caption = LanguageString(TextImportLimit);
        prompt.filter = LanguageString(TextLimitFilter);
        path = AskFileName(prompt);
        if (path.isEmpty())
            return -1;
    }
    CEmiImport result;
    if (!ImportEmiLimit(path, QString::fromLatin1(kImportSection), GetEmiLimits(), result)) {
        ShowMessage(parent, result.message);
        return -1;
    }
    const int index = AddUserLimit(result.key, result.label, result.pairs);
    SaveUserLimits(true);
    return index;
}

bool CUserEMI::LoadFile(QString path)
{
    const int index = ImportUserLimitFile(this, path);
    if (index < 0)
        return false;
    Load();
    m_list->setCurrentRow(index - EmiBuiltInCount());
    return true;
}
