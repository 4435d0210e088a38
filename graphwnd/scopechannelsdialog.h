#pragma once
// The oscilloscope's channel formulas: one line per channel, each a formula
// over the input columns ("sine*2", "square - sawtooth"); an empty line
// shows the channel's own input.  OK applies all the changed lines at once:
// should one not compile, the lines applied before it go back to what they
// were, the dialog stays open with the message (line and column) under the
// lines, and the caret stands at the place in the failing line.

#include <QDialog>
#include <QStringList>
#include <vector>

class CGraphWnd;
class QLabel;
class QLineEdit;

class CScopeChannelsDialog : public QDialog
{
    Q_OBJECT
public:
    // The window's graph must be of the oscilloscope form (see Applies).
    explicit CScopeChannelsDialog(CGraphWnd &window);

    // Whether the window shows an oscilloscope graph with a channel.
    static bool Applies(const CGraphWnd &window);

    // The line of channel `channel` (from 1); null when there is none.
    QLineEdit *FormulaEdit(int channel) const;
    QLabel *ErrorLabel() const { return m_error; }

public slots:
    void accept() override;

private:
    CGraphWnd &m_window;
    std::vector<QLineEdit *> m_edits; // index channel - 1
    QStringList m_names;              // the channels' column names
    QLabel *m_error;
};
