#include "graphwnd/graphprompts.h"

#include "support/languagestring.h"

#include <QCheckBox>
#include <QMessageBox>

namespace {

const int kTextDontShowAgain = 43602;

CGraphPrompts g_standardPrompts;
CGraphPrompts *g_prompts = nullptr;

} // namespace

void CGraphPrompts::Message(QWidget *parent, const QString &text, bool warning)
{
    if (warning)
        QMessageBox::warning(parent, QString(), text);
    else
        QMessageBox::information(parent, QString(), text);
}

bool CGraphPrompts::WarningWithDontShow(QWidget *parent, const QString &text)
{
    QMessageBox box(QMessageBox::Warning, QString(), text, QMessageBox::Ok, parent);
    auto *check = new QCheckBox(LanguageString(kTextDontShowAgain), &box);
    box.setCheckBox(check);
    box.exec();
    return check->isChecked();
}

CGraphPrompts *SetGraphPrompts(CGraphPrompts *prompts)
{
    CGraphPrompts *old = g_prompts;
    g_prompts = prompts;
    return old;
}

CGraphPrompts &GraphPrompts()
{
    return g_prompts ? *g_prompts : g_standardPrompts;
}
