#pragma once
// CTextAttributes: the dialog that edits a text object of a graph: its
// text, its font (face, size in points, bold, italic), its colour, where it
// stands against its point, and whether it runs upwards.  A preview shows
// the text as the fields have it.  OK with a colour that is no colour, or
// with no text, keeps the dialog open and says why.

#include <QDialog>

#include <cstdint>

class CColorField;
class CDrawText;
class QCheckBox;
class QComboBox;
class QFontComboBox;
class QLabel;
class QLineEdit;
class QSpinBox;

class CTextAttributes : public QDialog
{
    Q_OBJECT
public:
    explicit CTextAttributes(QWidget *parent = nullptr);

    // Shows the attributes of `text`.
    void Load(const CDrawText &text);
    // Writes the fields into `text`; the position and the axis stay.  Valid
    // after the dialog was accepted.
    void Store(CDrawText &text) const;

    QLineEdit *TextEdit() const { return m_text; }
    QFontComboBox *FaceBox() const { return m_face; }
    QSpinBox *SizeBox() const { return m_size; }
    QCheckBox *BoldBox() const { return m_bold; }
    QCheckBox *ItalicBox() const { return m_italic; }
    CColorField *ColorField() const { return m_color; }
    QComboBox *PlacementBox() const { return m_placement; }
    QCheckBox *VerticalBox() const { return m_vertical; }
    QLabel *Preview() const { return m_preview; }
    QLabel *ErrorLabel() const { return m_error; }

public slots:
    void accept() override;

private:
    void updatePreview();

    QLineEdit *m_text;
    QFontComboBox *m_face;
    QSpinBox *m_size;
    QCheckBox *m_bold;
    QCheckBox *m_italic;
    CColorField *m_color;
    QComboBox *m_placement;
    QCheckBox *m_vertical;
    QLabel *m_preview;
    QLabel *m_error;
    std::uint32_t m_colorValue = 0; // the last valid colour of the field
    int m_weight = 400;             // kept when bold is not changed
};
