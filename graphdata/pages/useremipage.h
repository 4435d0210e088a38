#pragma once
// The user's own limit lines: the list of them, and a key, a label and the
// (frequency, level) pairs for a new one, typed or loaded from a limit file.
// The limit list is shared by every graph of the program, so an added or
// removed limit takes effect, and reaches the settings, at once rather than
// when the dialog is accepted.

#include "graphdata/pages/optionspage.h"

#include "graphdata/emi/emilimits.h"

#include <vector>

class QListWidget;
class QPlainTextEdit;
class QPushButton;

// Imports the limit of a limit file (asks for one, over `parent`, when
// `path` is empty) into the user's limits and keeps them in the settings.
// The index of the new limit in the global list, or -1 when no file was
// chosen or the file was refused (its message shown).
int ImportUserLimitFile(QWidget *parent, QString path = QString());

class CUserEMI : public COptionsPage
{
    Q_OBJECT
public:
    explicit CUserEMI(CGraphOptionsCopy &copy, QWidget *parent = nullptr);
    void Load() override;
    bool Store(COptionsFault &fault) override;
    void Focus(const COptionsFault &fault) override;

    // Adds the limit of the fields; false (with the message shown and the
    // field focused) when they are wrong.
    bool AddLimit();
    // Removes the user limit selected in the list; false when none is.
    bool RemoveSelected();
    // Loads a limit file (asks for one when `path` is empty) and adds its
    // limit; false with the import's message when the file is refused.
    bool LoadFile(QString path = QString());

    QListWidget *m_list;
    QLineEdit *m_key, *m_label;
    QPlainTextEdit *m_pairs;
    QPushButton *m_add, *m_remove, *m_load;

private:
    void showLimit(int row);
    void refuse(QWidget *field, const QString &text);
};

// The pairs typed one to a line, frequency and level parted by blanks, a
// comma or a semicolon; empty lines are passed over.  False with the
// 1-based number of the first line that is no pair.
bool ParseLimitPairs(const QString &text, std::vector<CEmiPair> &pairs, int &badLine);
QString FormatLimitPairs(const std::vector<CEmiPair> &pairs);
