#pragma once
// List boxes whose rows carry a small picture before their text.
// CExListBox: a colour swatch per row (curves, limit lines).
// CExListBox2: a check box per row, for lists where rows are switched on
// and off (the columns a graph shows).

#include <QListWidget>
#include <cstdint>

class CExListBox : public QListWidget
{
    Q_OBJECT
public:
    explicit CExListBox(QWidget *parent = nullptr);

    // Adds a row with a swatch of `color` (0x00BBGGRR); its index.
    int AddItem(const QString &text, std::uint32_t color);
    void SetItemColor(int row, std::uint32_t color);
    // The row's colour; 0 for a row that does not exist.
    std::uint32_t ItemColor(int row) const;
    // The swatch as it is drawn, for a row of the list's font height.
    QPixmap Swatch(std::uint32_t color) const;
};

class CExListBox2 : public QListWidget
{
    Q_OBJECT
public:
    explicit CExListBox2(QWidget *parent = nullptr);

    int AddItem(const QString &text, bool checked);
    void SetChecked(int row, bool checked);
    bool IsChecked(int row) const;
    // The rows ticked, in order.
    QList<int> CheckedRows() const;

signals:
    void CheckChanged(int row, bool checked);
};
