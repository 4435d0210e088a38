#include "tool/hintline.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>
#include <QToolTip>

QString HintLinesFor(const QString &text, const QFont &font, int width, int lines, bool *cut)
{
    if (cut)
        *cut = false;
    if (text.isEmpty() || width <= 0 || lines <= 0)
        return text;
    QString flowing = text;
    flowing.replace(u'\n', QChar::LineSeparator);
    QTextLayout layout(flowing, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    QList<QPair<int, int>> spans;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        spans.append({line.textStart(), line.textLength()});
    }
    layout.endLayout();

    QStringList shown;
    const qsizetype kept = std::min<qsizetype>(spans.size(), lines);
    for (qsizetype i = 0; i < kept; ++i)
        shown << text.mid(spans[i].first, spans[i].second).trimmed();
    if (spans.size() > lines) {
        shown.last() = QFontMetrics(font).elidedText(text.mid(spans[kept - 1].first).simplified(), Qt::ElideRight,
                                                      width);
        if (cut)
            *cut = true;
    }
    return shown.join(u'\n');
}

CHintLine::CHintLine(QWidget *parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QString CHintLine::ShownText() const
{
    return HintLinesFor(text(), font(), contentsRect().width(), Lines);
}

bool CHintLine::Cut() const
{
    bool cut = false;
    HintLinesFor(text(), font(), contentsRect().width(), Lines, &cut);
    return cut;
}

QSize CHintLine::sizeHint() const
{
    // Neither the width nor the height asked for depends on the text: a new
    // hint never moves anything around it.
    const QMargins m = contentsMargins();
    const int frame = 2 * frameWidth();
    return QSize(40 * fontMetrics().averageCharWidth() + m.left() + m.right() + frame,
                 Lines * fontMetrics().lineSpacing() + m.top() + m.bottom() + frame);
}

QSize CHintLine::minimumSizeHint() const
{
    const QSize s = sizeHint();
    return QSize(std::min(s.width(), 12 * fontMetrics().averageCharWidth()), s.height());
}

void CHintLine::paintEvent(QPaintEvent *event)
{
    QFrame::paintEvent(event);
    QPainter p(this);
    style()->drawItemText(&p, contentsRect(), Qt::AlignLeft | Qt::AlignVCenter, palette(), isEnabled(), ShownText(),
                          foregroundRole());
}

bool CHintLine::event(QEvent *event)
{
    if (event->type() == QEvent::ToolTip) {
        if (Cut())
            QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(), text(), this);
        else
            QToolTip::hideText();
        return true;
    }
    return QLabel::event(event);
}
