#pragma once
// Message boxes of the graph window go through this one object, so that a
// host or a test can answer them without a person.  By default they are
// the standard Qt boxes.

#include <QString>

class QWidget;

class CGraphPrompts
{
public:
    virtual ~CGraphPrompts() = default;
    // An information or warning box with an OK button.
    virtual void Message(QWidget *parent, const QString &text, bool warning);
    // A warning with a check box "do not show again"; true when the box was
    // ticked.
    virtual bool WarningWithDontShow(QWidget *parent, const QString &text);
};

// Puts `prompts` in charge (null: the standard boxes) and returns the one
// that was.  The caller keeps ownership.
CGraphPrompts *SetGraphPrompts(CGraphPrompts *prompts);
CGraphPrompts &GraphPrompts();
