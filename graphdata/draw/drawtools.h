#pragma once
// Small translations from the graph model to the painter: 0x00BBGGRR colour
// words, font descriptions, line pens by thickness and grid pen styles.

#include "graphdata/graphrange.h"

#include <QColor>
#include <QFont>
#include <QPen>
#include <QRect>
#include <QString>
#include <cstdint>

// Line thickness values with a meaning of their own.
enum : int { ThicknessNone = 0, ThicknessDash = -11, ThicknessDot = -12 };

inline QColor ColorFromRef(std::uint32_t color)
{
    return QColor(int(color & 0xFF), int((color >> 8) & 0xFF), int((color >> 16) & 0xFF));
}

inline std::uint32_t RefFromColor(const QColor &color)
{
    return std::uint32_t(color.red()) | (std::uint32_t(color.green()) << 8) | (std::uint32_t(color.blue()) << 16);
}

// A font from its description, its pixel height multiplied by `scale`.  A
// negative height is the character height, a positive one the cell height;
// both are taken as the pixel size here.  An empty face gives the
// application's sans serif face.
QFont FontFromDescription(const CGraphFont &font, double scale);

// The pen of a curve line: width `thickness` (times lineScale above 1),
// -11 a dash pen and -12 a dot pen of width 1; Qt::NoPen for 0.  In the
// overview form every line is solid and one pixel wide.
QPen CurvePen(int thickness, const QColor &color, double lineScale, bool overview);

// The name of a thickness value in lists: "Dot", "Dash", text 43125 for 0,
// and the digits of 1 to 6.
QString ThicknessName(int thickness);

// The Qt style of a stored pen style: 0 solid, 1 dash, 2 dot, 3 dash-dot,
// 4 dash-dot-dot, 5 none.
Qt::PenStyle PenStyleFromCode(int style);

// Rectangles of the graph model are edges: the plot's frame lies on left,
// top, right and bottom, and a value at the end of the view maps onto the
// right or top edge itself.  A QRect of the same pixels has both edges inside.
inline QRect EdgesToQRect(const CIntRect &r)
{
    return QRect(QPoint(r.left, r.top), QPoint(r.right, r.bottom));
}

inline CIntRect QRectToEdges(const QRect &r)
{
    return CIntRect{r.left(), r.top(), r.right(), r.bottom()};
}
