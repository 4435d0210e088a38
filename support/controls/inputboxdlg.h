#pragma once
// CInputBoxDlg: asks for one line of text.  Control 1173 is the value and
// 1257 the prompt above it, shown only when there is one.  The title is the
// one given, or the application's name.

#include "support/controls/exeditfilter.h"

#include <QDialog>

class CExEditCtrl;
class QLabel;

class CInputBoxDlg : public QDialog
{
    Q_OBJECT
public:
    enum : int { IdValue = 1173, IdPrompt = 1257 };

    // `flags` filter what may be typed, as in CExEditCtrl.
    CInputBoxDlg(QWidget *parent, const QString &prompt, const QString &title = {}, const QString &value = {},
                 std::uint16_t flags = ExEditAnyText);

    QString Value() const;
    CExEditCtrl *Edit() const { return m_edit; }

private:
    QLabel *m_prompt;
    CExEditCtrl *m_edit;
};
