#pragma once
// Computed curves in a graph window: a formula's run on a worker thread
// behind a modal progress box whose Cancel stops it, the dialog in which the
// user types a formula (its errors shown with line and column), and the
// evaluator that the programs install for the curves of origin 1.

#include <QDialog>

class CFormulaCurveJob;
class CGraphWnd;
class QLabel;
class QLineEdit;

// Runs a prepared job on a worker thread and returns when the worker has
// ended.  The events go on meanwhile; a progress box (text 43194 with the
// formula) comes up when the run takes more than a moment, and its Cancel
// stops the job (asked again and again until the worker has ended, so that
// a run deep in a long row ends too).
void RunFormulaCurveJob(QWidget *parent, CFormulaCurveJob &job);

// From now on the computed curves of every graph (ApplyCurveList) run
// through RunFormulaCurveJob over the active window.
void InstallFormulaCurveProgress();

// Computes `formula` over the window's graph and adds it as a curve named
// `name` (the formula when empty), redrawing the window.  1 added; 0 the
// formula failed (the job tells what and where); -1 stopped, or the window
// lost its graph meanwhile: the graph is as it was.  A second call while
// one runs gives 0 at once.
int AddFormulaCurveToWindow(CGraphWnd &window, const QString &name, const QString &formula, CFormulaCurveJob &job);

// The window's command: name and formula; OK computes the curve.  A formula
// that fails keeps the dialog open, with the message and its line and
// column under the formula and the caret at the place.
class CFormulaCurveDialog : public QDialog
{
    Q_OBJECT
public:
    explicit CFormulaCurveDialog(CGraphWnd &window);

    QLineEdit *NameEdit() const { return m_name; }
    QLineEdit *FormulaEdit() const { return m_formula; }
    QLabel *ErrorLabel() const { return m_error; }

public slots:
    void accept() override;

private:
    CGraphWnd &m_window;
    QLineEdit *m_name;
    QLineEdit *m_formula;
    QLabel *m_error;
};
