#include "graphdata/draw/drawtools.h"

#include "support/languagestring.h"

#include <cmath>

namespace {

const int kTextNoLine = 43125;

} // namespace

QFont FontFromDescription(const CGraphFont &description, double scale)
{
    QFont font;
    if (!description.m_faceName.isEmpty())
        font.setFamily(description.m_faceName);
    else
        font.setStyleHint(QFont::SansSerif);
    int pixels = std::abs(description.m_height);
    if (pixels == 0)
        pixels = 11;
    font.setPixelSize(std::max(1, int(std::lround(pixels * scale))));
    font.setWeight(description.m_weight >= 600 ? QFont::Bold : QFont::Normal);
    font.setItalic(description.m_italic != 0);
    return font;
}

QPen CurvePen(int thickness, const QColor &color, double lineScale, bool overview)
{
    if (overview)
        return QPen(color, 1, Qt::SolidLine);
    if (thickness == ThicknessNone)
        return QPen(Qt::NoPen);
    if (thickness == ThicknessDash || thickness == ThicknessDot) {
        QPen pen(color, 1, thickness == ThicknessDash ? Qt::DashLine : Qt::DotLine);
        return pen;
    }
    double width = thickness < 1 ? 1 : thickness;
    if (thickness > 1)
        width *= lineScale;
    QPen pen(color, width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    return pen;
}

QString ThicknessName(int thickness)
{
    switch (thickness) {
    case ThicknessDot:
        return QStringLiteral("Dot");
    case ThicknessDash:
        return QStringLiteral("Dash");
    case ThicknessNone:
        return LanguageString(kTextNoLine);
    default:
        return QString::number(thickness);
    }
}

Qt::PenStyle PenStyleFromCode(int style)
{
    switch (style) {
    case 0:
        return Qt::SolidLine;
    case 1:
        return Qt::DashLine;
    case 2:
        return Qt::DotLine;
    case 3:
        return Qt::DashDotLine;
    case 4:
        return Qt::DashDotDotLine;
    default:
        return Qt::NoPen;
    }
}
