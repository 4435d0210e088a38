#pragma once
// Controls described by small creator objects and built at run time, for
// dialogs whose number of rows is known only when they open.  A creator
// holds one control of a row (its kind, text, style bits, rectangle and
// font); CreateInRow builds it in a parent, moved by an offset, with the id
// of its row.
//
// The id of a control becomes its objectName(), as a number in text ("1052"),
// so that code and tests find the controls of row n with findChild.

#include <QFont>
#include <QObject>
#include <QPoint>
#include <QRect>
#include <QString>
#include <cstdint>
#include <optional>

class QWidget;

// Style bits the creators understand; the rest of a style word is kept but
// has no effect here.
enum : std::uint32_t {
    CreatorStyleVisible = 0x10000000,
    CreatorStyleDisabled = 0x08000000,
    CreatorStyleTabStop = 0x00010000,
    // Buttons: the low four bits choose the kind.
    CreatorButtonPush = 0x0,
    CreatorButtonDefault = 0x1,
    CreatorButtonCheckBox = 0x2,
    CreatorButtonAutoCheckBox = 0x3,
    CreatorButtonRadio = 0x4,
    CreatorButtonGroupBox = 0x7,
    CreatorButtonAutoRadio = 0x9,
    CreatorButtonKindMask = 0xF,
    // Statics and edits: the alignment of the text.
    CreatorAlignCenter = 0x1,
    CreatorAlignRight = 0x2,
    // Edits.
    CreatorEditPassword = 0x20,
    CreatorEditReadOnly = 0x800,
};

class CAnyWindowCreator
{
public:
    CAnyWindowCreator() = default;
    CAnyWindowCreator(const QString &text, const QRect &rect, int baseId = -1, int idStep = 1,
                      std::uint32_t style = CreatorStyleVisible);
    virtual ~CAnyWindowCreator() = default;

    // The kind of a plain window; "STATIC" for a plain one.  Kept on the
    // built widget as its "className" property.
    QString m_className = QStringLiteral("STATIC");
    std::uint32_t m_exStyle = 0;
    std::uint32_t m_style = CreatorStyleVisible;
    // Given to the control when set.
    std::optional<QFont> m_font;
    // The place of the control within its row.
    QRect m_rect;
    QString m_text;
    // -1: the controls get no id.
    int m_baseId = -1;
    int m_idStep = 1;

    void SetFont(const QFont &font) { m_font = font; }

    // The id of the control in row `rowIndex` when rows are `rowStep` ids
    // apart; -1 when the creator has no base id.
    int RowId(int rowIndex, int rowStep) const;

    // Builds the control of row `rowIndex` in `parent`, with m_rect moved by
    // `offset`.  Null when it could not be built (no parent).
    QWidget *CreateInRow(QWidget *parent, QPoint offset, int rowIndex, int rowStep);

    // Makes the control itself; the derived creators only change what kind
    // of widget this is.  Null, with nothing left behind, on failure.
    virtual QWidget *Build(const QString &text, const QRect &rect, QWidget *parent, int id);

protected:
    // What every creator does to its widget: geometry, id, style bits.
    void Setup(QWidget *widget, const QRect &rect, int id) const;
};

// A push button, check box, radio button or group box, by the kind bits of
// the style.
class CAnyButtonCreator : public CAnyWindowCreator
{
public:
    using CAnyWindowCreator::CAnyWindowCreator;
    QWidget *Build(const QString &text, const QRect &rect, QWidget *parent, int id) override;
};

// A label.
class CAnyStaticCreator : public CAnyWindowCreator
{
public:
    using CAnyWindowCreator::CAnyWindowCreator;
    QWidget *Build(const QString &text, const QRect &rect, QWidget *parent, int id) override;
};

// A one-line edit field.
class CAnyEditCreator : public CAnyWindowCreator
{
public:
    using CAnyWindowCreator::CAnyWindowCreator;
    QWidget *Build(const QString &text, const QRect &rect, QWidget *parent, int id) override;
};

// The object name a control of id `id` carries.
QString ControlIdName(int id);
