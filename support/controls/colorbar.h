#pragma once
// CColorBar: a row of colour swatches, one of them chosen.  A click on a
// swatch, or the arrow keys, choose; the colours are 0x00BBGGRR words.

#include <QWidget>
#include <cstdint>
#include <vector>

class CColorBar : public QWidget
{
    Q_OBJECT
public:
    explicit CColorBar(QWidget *parent = nullptr);

    void SetColors(const std::vector<std::uint32_t> &colors);
    const std::vector<std::uint32_t> &Colors() const { return m_colors; }
    // -1 for none.  A choice outside the colours is none.
    void SetCurrent(int index);
    int Current() const { return m_current; }
    // The chosen colour; `fallback` when none is chosen.
    std::uint32_t CurrentColor(std::uint32_t fallback = 0) const;

    // The swatch under a point of the widget, or -1.
    int IndexAt(QPoint point) const;
    // The rectangle of a swatch in the widget.
    QRect SwatchRect(int index) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    void ColorChosen(int index, std::uint32_t color);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void choose(int index);

    std::vector<std::uint32_t> m_colors;
    int m_current = -1;
};
