#include "graphwnd/graphtoolbar.h"

#include "graphwnd/graphwnd.h"
#include "support/languagestring.h"

#include <QAction>
#include <QActionGroup>
#include <QPainter>
#include <QPainterPath>

namespace {

const int kIconSize = 20;

// The toolbar's pictures, drawn rather than loaded: each a few strokes on a
// 20 by 20 pixel square.
QIcon drawIcon(int command)
{
    QPixmap pixmap(kIconSize, kIconSize);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor ink(40, 40, 40);
    const QColor blue(40, 100, 190);
    p.setPen(QPen(ink, 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    auto glass = [&](QPointF c, double r) {
        p.setPen(QPen(ink, 1.5));
        p.setBrush(QColor(255, 255, 255, 220));
        p.drawEllipse(c, r, r);
        p.setPen(QPen(ink, 2.5, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(c + QPointF(r * 0.7, r * 0.7), c + QPointF(r * 1.6, r * 1.6));
        p.setPen(QPen(ink, 1.5, Qt::SolidLine, Qt::RoundCap));
    };
    auto arrowHead = [&](QPointF tip, QPointF dir) {
        const QPointF n(-dir.y(), dir.x());
        QPainterPath head;
        head.moveTo(tip);
        head.lineTo(tip - dir * 4 + n * 3);
        head.lineTo(tip - dir * 4 - n * 3);
        head.closeSubpath();
        p.fillPath(head, p.pen().color());
    };
    switch (command) {
    case CmdToolSelect: {
        QPainterPath arrow;
        arrow.moveTo(5, 2);
        arrow.lineTo(5, 16);
        arrow.lineTo(8.5, 12.5);
        arrow.lineTo(11, 18);
        arrow.lineTo(13, 17);
        arrow.lineTo(10.5, 11.5);
        arrow.lineTo(15, 11.5);
        arrow.closeSubpath();
        p.setBrush(Qt::white);
        p.drawPath(arrow);
        break;
    }
    case CmdToolPan: {
        p.setBrush(QColor(250, 225, 190));
        QPainterPath hand;
        hand.addRoundedRect(QRectF(5, 8, 10, 9), 3, 3);
        for (int i = 0; i < 4; ++i)
            hand.addRoundedRect(QRectF(5 + i * 2.6, 3 + (i == 0 || i == 3 ? 2 : 0), 2.4, 8), 1.2, 1.2);
        p.drawPath(hand.simplified());
        break;
    }
    case CmdToolZoomBox:
        p.setPen(QPen(blue, 1, Qt::DashLine));
        p.drawRect(QRectF(2, 2, 11, 9));
        glass(QPointF(10, 9), 4.5);
        break;
    case CmdToolZoomPath:
        p.setPen(QPen(blue, 1.5));
        p.drawPolyline(QPolygonF({QPointF(1, 17), QPointF(5, 9), QPointF(9, 13), QPointF(13, 3)}));
        glass(QPointF(10, 9), 4.5);
        break;
    case CmdFullView:
        p.drawRect(QRectF(6, 6, 8, 8));
        for (const QPointF &d : {QPointF(-1, -1), QPointF(1, -1), QPointF(-1, 1), QPointF(1, 1)}) {
            const QPointF c(10, 10);
            p.drawLine(c + d * 5, c + d * 9);
            arrowHead(c + d * 9.5, d / std::sqrt(2.0));
        }
        break;
    case CmdAutoscale:
        p.setPen(QPen(blue, 1.5));
        p.drawPolyline(QPolygonF({QPointF(2, 12), QPointF(7, 8), QPointF(12, 11), QPointF(18, 7)}));
        p.setPen(QPen(ink, 1.5));
        p.drawLine(QPointF(10, 2), QPointF(10, 18));
        arrowHead(QPointF(10, 1), QPointF(0, -1));
        arrowHead(QPointF(10, 19), QPointF(0, 1));
        break;
    case CmdZoomIn:
    case CmdZoomOut:
        glass(QPointF(8, 8), 6);
        p.drawLine(QPointF(5, 8), QPointF(11, 8));
        if (command == CmdZoomIn)
            p.drawLine(QPointF(8, 5), QPointF(8, 11));
        break;
    case CmdXAxis:
    case CmdYAxis: {
        p.drawLine(QPointF(3, 3), QPointF(3, 17));
        p.drawLine(QPointF(3, 17), QPointF(18, 17));
        QFont f = p.font();
        f.setPixelSize(10);
        f.setBold(true);
        p.setFont(f);
        p.setPen(blue);
        p.drawText(QRectF(5, 3, 13, 13), Qt::AlignCenter, command == CmdXAxis ? QStringLiteral("X") : QStringLiteral("Y"));
        break;
    }
    case CmdOptions: {
        p.setBrush(QColor(200, 200, 200));
        QPainterPath gear;
        for (int i = 0; i < 8; ++i) {
            QTransform t;
            t.translate(10, 10);
            t.rotate(i * 45);
            gear.addPolygon(t.map(QPolygonF(QRectF(-1.5, -9, 3, 4))));
        }
        gear.addEllipse(QPointF(10, 10), 6, 6);
        p.drawPath(gear.simplified());
        p.setBrush(Qt::white);
        p.drawEllipse(QPointF(10, 10), 2.2, 2.2);
        break;
    }
    case CmdToolLine:
        p.setPen(QPen(QColor(190, 30, 30), 1.5, Qt::SolidLine, Qt::RoundCap));
        p.drawLine(QPointF(17, 17), QPointF(5, 5));
        arrowHead(QPointF(3, 3), QPointF(-1, -1) / std::sqrt(2.0));
        break;
    case CmdToolRect:
        p.setPen(QPen(QColor(190, 30, 30), 1.5));
        p.drawRect(QRectF(3, 5, 14, 10));
        break;
    case CmdToolText: {
        QFont f = p.font();
        f.setPixelSize(15);
        f.setBold(true);
        p.setFont(f);
        p.drawText(QRectF(0, 0, kIconSize, kIconSize), Qt::AlignCenter, QStringLiteral("A"));
        break;
    }
    case CmdSaveAs:
        p.setBrush(QColor(90, 120, 180));
        p.drawRoundedRect(QRectF(3, 3, 14, 14), 1.5, 1.5);
        p.setBrush(Qt::white);
        p.drawRect(QRectF(6, 3, 8, 5));
        p.drawRect(QRectF(5.5, 11, 9, 6));
        break;
    default:
        break;
    }
    p.end();
    return QIcon(pixmap);
}

} // namespace

CGraphToolBar::CGraphToolBar(QWidget *parent) : QToolBar(parent)
{
    setIconSize(QSize(kIconSize, kIconSize));
    setMovable(false);
    setFloatable(false);
    auto *tools = new QActionGroup(this);
    tools->setExclusive(true);
    auto add = [&](int id, bool tool) {
        QAction *action = addAction(drawIcon(id), LanguageString(id));
        action->setObjectName(QString::number(id));
        action->setData(id);
        if (tool) {
            action->setCheckable(true);
            tools->addAction(action);
        }
        connect(action, &QAction::triggered, this, [this, id] { emit Command(id); });
    };
    add(CmdToolSelect, true);
    add(CmdToolPan, true);
    add(CmdToolZoomBox, true);
    add(CmdToolZoomPath, true);
    add(CmdToolLine, true);
    add(CmdToolRect, true);
    add(CmdToolText, true);
    addSeparator();
    add(CmdFullView, false);
    add(CmdAutoscale, false);
    add(CmdZoomIn, false);
    add(CmdZoomOut, false);
    addSeparator();
    add(CmdXAxis, false);
    add(CmdYAxis, false);
    add(CmdOptions, false);
    add(CmdSaveAs, false);
}

QAction *CGraphToolBar::ActionFor(int command) const
{
    for (QAction *action : actions()) {
        if (action->data().toInt() == command)
            return action;
    }
    return nullptr;
}

void CGraphToolBar::ShowTool(int tool)
{
    static const int commands[][2] = {{CmdToolSelect, 1}, {CmdToolPan, 2},  {CmdToolZoomBox, 3}, {CmdToolZoomPath, 4},
                                      {CmdToolLine, 8},   {CmdToolRect, 9}, {CmdToolText, 10}};
    for (const auto &c : commands) {
        if (QAction *action = ActionFor(c[0]))
            action->setChecked(tool == c[1]);
    }
}
