#pragma once
// The hint line above the digitiser's panes.  It keeps the height of two lines
// of text whatever it says, so that the panes below it stay in place while
// the user works; a hint that needs more room at the present width ends in
// an ellipsis, and its whole text is shown as the tooltip.

#include <QLabel>

class CHintLine : public QLabel
{
    Q_OBJECT
public:
    static constexpr int Lines = 2;

    explicit CHintLine(QWidget *parent = nullptr);

    // The text as it is drawn, line by line.
    QString ShownText() const;
    // True when the hint needs more than two lines at the present width.
    bool Cut() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;
};

// `text` broken at blanks into lines of at most `width` pixels in `font`, the
// lines joined by '\n'.  When it needs more than `lines` lines, the last line
// kept takes the rest of the text and ends in an ellipsis; `cut` says so.
QString HintLinesFor(const QString &text, const QFont &font, int width, int lines, bool *cut = nullptr);
