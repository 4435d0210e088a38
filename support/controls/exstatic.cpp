#include "support/controls/exstatic.h"

QColor ColorFromRgbWord(std::uint32_t color)
{
    return QColor(int(color & 0xFF), int((color >> 8) & 0xFF), int((color >> 16) & 0xFF));
}

std::uint32_t RgbWordFromColor(const QColor &color)
{
    const QColor rgb = color.toRgb();
    return std::uint32_t(rgb.red()) | std::uint32_t(rgb.green()) << 8 | std::uint32_t(rgb.blue()) << 16;
}

CExStatic::CExStatic(QWidget *parent) : QLabel(parent) {}

CExStatic::CExStatic(const QString &text, QWidget *parent) : QLabel(text, parent) {}

void CExStatic::SetTextColor(std::uint32_t color)
{
    m_textColor = color;
    applyColors();
}

void CExStatic::SetBackColor(std::uint32_t color)
{
    m_backColor = color;
    applyColors();
}

void CExStatic::ClearColors()
{
    m_textColor.reset();
    m_backColor.reset();
    setPalette(QPalette());
    setAutoFillBackground(false);
}

void CExStatic::applyColors()
{
    QPalette p = palette();
    if (m_textColor)
        p.setColor(QPalette::WindowText, ColorFromRgbWord(*m_textColor));
    if (m_backColor)
        p.setColor(QPalette::Window, ColorFromRgbWord(*m_backColor));
    setPalette(p);
    setAutoFillBackground(m_backColor.has_value());
}
