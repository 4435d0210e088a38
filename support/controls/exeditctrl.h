#pragma once
// CExEditCtrl: a one-line edit field that filters what is typed or pasted
// into it by a flag word (see exeditfilter.h), and steps an integer value.

#include "support/controls/exeditfilter.h"

#include <QLineEdit>

class CExEditCtrl : public QLineEdit
{
    Q_OBJECT
public:
    explicit CExEditCtrl(QWidget *parent = nullptr, std::uint16_t flags = ExEditAnyText);

    std::uint16_t m_flags;

    void SetFlags(std::uint16_t flags) { m_flags = flags; }
    std::uint16_t Flags() const { return m_flags; }

    // The most characters a person may type or paste; text set by the program
    // may be longer.  Zero for no limit.
    void SetLimitText(int limit) { m_limitText = limit; }
    int LimitText() const { return m_limitText; }

    // Inserts a text as a paste does: filtered, and cut to the limit.
    void PasteText(const QString &text);

    // The integer in the field goes down (direction 1) or up (0) by one;
    // OnBadStep is called when it cannot.  The whole text is selected after.
    void Step(int direction);

    // Asked for every printable character typed; false drops it.
    virtual bool AcceptChar(QChar c);
    // A step that failed; beeps.
    virtual void OnBadStep();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    // Room left for typing or pasting, with the selection replaced.
    int room() const;

    int m_limitText = 0;
};

// The same control with a message table of its own in the original toolkit;
// here it is the same class under its own name.
class CExEditCtrl2 : public CExEditCtrl
{
    Q_OBJECT
public:
    using CExEditCtrl::CExEditCtrl;
};
