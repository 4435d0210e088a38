#pragma once
// The display page: which columns, formulas and limit line the graph shows,
// and what it draws them over.
//
// The source list offers the data's columns not shown yet and the user's
// saved formulas; the display list holds the graph's curves in their order.
// A formula typed in the entry (with the insertion buttons putting function
// names at the caret) becomes a computed curve; it is compiled when the
// dialog is accepted, and one that does not compile brings the dialog back
// here with the text in the entry, selected.

#include "graphdata/pages/optionspage.h"

#include <functional>
#include <memory>
#include <vector>

class CGraphCurve;
class QComboBox;
class QLabel;
class QListWidget;
class QPushButton;

// The formula entry with its insertion buttons.
class CDisplay_2_VectorChild : public QWidget
{
    Q_OBJECT
public:
    explicit CDisplay_2_VectorChild(QWidget *parent = nullptr);
    // The texts of the insertion buttons, in their order.
    static const QStringList &InsertTexts();

    QLineEdit *m_formula;
    QPushButton *m_add;
    std::vector<QPushButton *> m_inserts;
};

class CDisplay_2_Page : public COptionsPage
{
    Q_OBJECT
public:
    // The first entries of the X list stand for the kinds of X axis; the
    // data's columns follow them.
    enum XEntry { XTime, XFrequency, XIndex, XFirstColumn };

    explicit CDisplay_2_Page(CGraphOptionsCopy &copy, QWidget *parent = nullptr);
    ~CDisplay_2_Page() override;
    void Load() override;
    bool Store(COptionsFault &fault) override;
    void Focus(const COptionsFault &fault) override;

    // Moves the selected source entries to the end of the display list;
    // takes the selected display entries out of it.
    void AddSelected();
    void RemoveSelected();
    // Appends the formula in the entry as a computed curve and empties the
    // entry; false when it is empty, or (with the message shown and the
    // text selected) when m_formulaCheck refuses it.
    bool AddFormula();

    // Says why a formula cannot be used, or nothing when it can; the dialog
    // compiles it against its graph.  Unset, every formula is taken here
    // and compiled only when the dialog is accepted.
    std::function<QString(const QString &formula)> m_formulaCheck;

    QListWidget *m_source;
    QListWidget *m_display;
    QPushButton *m_addButton, *m_removeButton;
    QComboBox *m_xColumn;
    QComboBox *m_emi;
    CDisplay_2_VectorChild *m_vector;

private:
    void fillSource();
    void showLimit();
    bool addFormula(QString &message);
    void addDisplayRow(std::unique_ptr<CCurveBasicInfo> entry);
    std::uint32_t freeColor() const;

    QLabel *m_xLabel = nullptr;

    // The entries of the display list, row for row.
    std::vector<std::unique_ptr<CCurveBasicInfo>> m_entries;
};

// The name a curve goes by in the lists: a column with its spectrum
// component prefix ("Real_U"), a formula or limit by its label.
QString DisplayEntryName(const CCurveBasicInfo &curve, const QStringList &columnNames);

// Why `formula` does not compile against the columns of `graph` (text
// 43880 with the error and where it stands), or nothing when it does.
QString FormulaCompileError(const CGraphCurve &graph, const QString &formula);

// Compiles every formula of the copies that the graph does not show yet.
// False with the fault (display page, the entry's index, the message) for
// the first that does not compile.
bool CheckNewFormulas(const CGraphCurve &graph, const CGraphOptionsCopy &copy, COptionsFault &fault);
