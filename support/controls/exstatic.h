#pragma once
// CExStatic: a label whose text and background colours are set by the
// program, as 0x00BBGGRR words.

#include <QLabel>
#include <cstdint>
#include <optional>

class CExStatic : public QLabel
{
    Q_OBJECT
public:
    explicit CExStatic(QWidget *parent = nullptr);
    explicit CExStatic(const QString &text, QWidget *parent = nullptr);

    void SetTextColor(std::uint32_t color);
    // The background is painted only once a colour is set.
    void SetBackColor(std::uint32_t color);
    void ClearColors();
    std::optional<std::uint32_t> TextColor() const { return m_textColor; }
    std::optional<std::uint32_t> BackColor() const { return m_backColor; }

private:
    void applyColors();

    std::optional<std::uint32_t> m_textColor;
    std::optional<std::uint32_t> m_backColor;
};

// The QColor of a 0x00BBGGRR word, and back.
QColor ColorFromRgbWord(std::uint32_t color);
std::uint32_t RgbWordFromColor(const QColor &color);
