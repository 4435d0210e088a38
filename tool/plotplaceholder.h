#pragma once
// The plot pane of the digitiser until the graph window takes its place: it
// draws what it was fed as plain polylines inside a frame, without axes.

#include "tool/plotfeed.h"

#include <QWidget>

class QPainter;

class CPlotPlaceholder : public QWidget
{
    Q_OBJECT
public:
    explicit CPlotPlaceholder(QWidget *parent = nullptr);

    void SetFeed(const CPlotFeed &feed);
    const CPlotFeed &Feed() const { return m_feed; }

    void Paint(QPainter &painter, const QSize &size) const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    CPlotFeed m_feed;
};
