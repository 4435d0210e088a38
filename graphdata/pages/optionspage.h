#pragma once
// The base of the option dialog's pages, the colour field the pages share,
// and the parsing of their number fields.  A page shows the private copies
// (Load), writes its controls back into them (Store, false with the fault
// when a field is wrong) and can put the focus on a failing field.

#include "graphdata/pages/optionscopy.h"

#include <QWidget>
#include <cstdint>

class QLineEdit;
class QToolButton;

class COptionsPage : public QWidget
{
    Q_OBJECT
public:
    COptionsPage(CGraphOptionsCopy &copy, QWidget *parent = nullptr);
    virtual void Load() = 0;
    virtual bool Store(COptionsFault &fault) = 0;
    // Focuses the field of `fault` with its text selected.
    virtual void Focus(const COptionsFault &fault) = 0;

protected:
    CGraphOptionsCopy &m_copy;
};

// A colour as text (#RRGGBB or a colour name) with a swatch that shows it
// and opens the colour chooser.  Colours are 0x00BBGGRR words.
class CColorField : public QWidget
{
    Q_OBJECT
public:
    explicit CColorField(QWidget *parent = nullptr);
    void SetColor(std::uint32_t color);
    // False when the text is no colour.
    bool GetColor(std::uint32_t &color) const;
    QLineEdit *Edit() const { return m_edit; }

signals:
    void Changed();

private:
    void showSwatch();
    QLineEdit *m_edit;
    QToolButton *m_swatch;
};

// The number in `edit`; false (with the text for the user) when it is none.
bool ReadNumberField(const QLineEdit *edit, double &value, QString &error);
// The text for a colour field that holds no colour.
QString BadColorText(const QString &typed);
// Selects the whole text of `edit` and gives it the focus.
void FocusField(QLineEdit *edit);
