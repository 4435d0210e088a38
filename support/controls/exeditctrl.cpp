#include "support/controls/exeditctrl.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QMimeData>

#include <climits>

CExEditCtrl::CExEditCtrl(QWidget *parent, std::uint16_t flags) : QLineEdit(parent), m_flags(flags)
{
}

int CExEditCtrl::room() const
{
    if (m_limitText <= 0)
        return INT_MAX;
    const int kept = int(text().size() - selectedText().size());
    return m_limitText > kept ? m_limitText - kept : 0;
}

void CExEditCtrl::PasteText(const QString &text)
{
    if (isReadOnly())
        return;
    QString filtered = ExEditFilterPaste(m_flags, text);
    const int left = room();
    if (filtered.size() > left)
        filtered.truncate(left);
    if (!filtered.isEmpty() || hasSelectedText())
        insert(filtered);
}

void CExEditCtrl::Step(int direction)
{
    QString t = text();
    if (ExEditStepText(t, direction))
        setText(t);
    else
        OnBadStep();
    selectAll();
}

bool CExEditCtrl::AcceptChar(QChar)
{
    return true;
}

void CExEditCtrl::OnBadStep()
{
    QApplication::beep();
}

void CExEditCtrl::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Paste)) {
        if (const QClipboard *clipboard = QGuiApplication::clipboard())
            PasteText(clipboard->text());
        event->accept();
        return;
    }
    const QString typed = event->text();
    const bool command = event->modifiers() & (Qt::ControlModifier | Qt::MetaModifier);
    if (typed.size() != 1 || typed.at(0).unicode() < 32 || typed.at(0).unicode() == 127 || command
        || isReadOnly()) {
        QLineEdit::keyPressEvent(event);
        return;
    }
    const QChar c = typed.at(0);
    CExEditState state;
    state.text = text();
    state.selectionStart = hasSelectedText() ? selectionStart() : cursorPosition();
    state.readOnly = isReadOnly();
    const CExEditKeyResult r = ExEditFilterChar(m_flags, state, c, AcceptChar(c));
    switch (r.action) {
    case CExEditKeyResult::Drop:
        event->accept();
        break;
    case CExEditKeyResult::Default:
        if (room() > 0)
            QLineEdit::keyPressEvent(event);
        else
            event->accept();
        break;
    case CExEditKeyResult::Replace:
        if (m_limitText > 0 && r.text.size() > m_limitText && r.text.size() > text().size()) {
            event->accept();
            break;
        }
        setText(r.text);
        setCursorPosition(r.cursor);
        emit textEdited(r.text);
        event->accept();
        break;
    }
}

void CExEditCtrl::contextMenuEvent(QContextMenuEvent *event)
{
    QMenu *menu = createStandardContextMenu();
    // The menu's Paste goes through the filter like every other paste.
    for (QAction *action : menu->actions()) {
        if (action->objectName() == QLatin1String("edit-paste")) {
            disconnect(action, &QAction::triggered, nullptr, nullptr);
            connect(action, &QAction::triggered, this, [this] {
                if (const QClipboard *clipboard = QGuiApplication::clipboard())
                    PasteText(clipboard->text());
            });
        }
    }
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->popup(event->globalPos());
    event->accept();
}

void CExEditCtrl::dropEvent(QDropEvent *event)
{
    if (isReadOnly() || !event->mimeData()->hasText()) {
        event->ignore();
        return;
    }
    setCursorPosition(cursorPositionAt(event->position().toPoint()));
    PasteText(event->mimeData()->text());
    event->acceptProposedAction();
}
