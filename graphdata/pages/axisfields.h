#pragma once
// The fields every axis page has (automatic, from, to, tick step, log, and
// the label and grid switches) and the "More..." box with the rest (label
// angle, subdivisions, integer ticks, the two grid pens).

#include "graphdata/pages/optionscopy.h"

#include <QDialog>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;
class QSpinBox;
class CColorField;

// What "More..." edits.
struct CAxisMore
{
    std::int32_t rotation = 0;
    std::int32_t subDivisions = 5;
    bool integerTicks = false;
    std::int32_t majorStyle = 2;
    std::uint32_t majorColor = 0;
    std::int32_t minorStyle = 2;
    std::uint32_t minorColor = 0;
    // X axis only: the values are days, labelled as dates.
    bool dateAxis = false;
};

// The fields of one axis.  A log axis keeps its ends as powers of ten
// (min 0 and max 2 show 1 to 100); the fields show the values themselves,
// as the axis labels do, unless the axis is in dB.
struct CAxisFields
{
    bool automatic = false;
    double min = 0, max = 1, tick = 0; // tick in decades on a log axis
    bool log = false;
    std::uint32_t flags = 0; // CGraph_Range::Axis* bits
    CAxisMore more;
};

class CAxisFieldsBox : public QWidget
{
    Q_OBJECT
public:
    explicit CAxisFieldsBox(QWidget *parent = nullptr);
    void Load(const CAxisFields &fields);
    // False with the field and text when a number is wrong or the axis
    // fields do not agree (min below max, tick, log above 0).
    bool Store(CAxisFields &fields, COptionsFault &fault) const;
    void Focus(COptionsFault::Field field);
    // A spectrum hides the log switch (the frequency axis has its own form).
    void SetLogShown(bool shown);
    // In dB the ends are the dB values themselves, log or not.
    void SetDbMode(bool db) { m_db = db; }
    // The X axis offers the date switch in "More..."; a date axis is never
    // logarithmic, so its log switch is then off and disabled.
    void SetDateOffered(bool offered);

    QCheckBox *m_automatic;
    QLineEdit *m_min, *m_max, *m_tick;
    QCheckBox *m_log, *m_labels, *m_majorGrid, *m_minorGrid;
    QPushButton *m_moreButton;

signals:
    // "More..." was accepted with these settings.
    void MoreChanged(const CAxisMore &more);

private:
    void syncEnabled();
    CAxisMore m_more;
    bool m_db = false;
    bool m_dateOffered = false;
    // What Load showed, so that an end left alone keeps its exact value.
    CAxisFields m_loaded;
    QString m_loadedMin, m_loadedMax;
};

class CAxisMoreDlg : public QDialog
{
    Q_OBJECT
public:
    // With dateOffered the box has the date axis switch.
    CAxisMoreDlg(const CAxisMore &more, bool dateOffered, QWidget *parent = nullptr);
    // False with the message shown when a colour is wrong.
    bool Read(CAxisMore &more);
    void accept() override;

    QSpinBox *m_rotation, *m_subDivisions;
    QCheckBox *m_integerTicks;
    QCheckBox *m_dateAxis; // hidden unless offered
    QComboBox *m_majorStyle, *m_minorStyle;
    CColorField *m_majorColor, *m_minorColor;
};

// Fills a list with the grid pen styles, and reads the chosen one.
void FillPenStyles(QComboBox *box, std::int32_t current);
std::int32_t ChosenPenStyle(const QComboBox *box);
