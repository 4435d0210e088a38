#pragma once
// A dialog built at run time from creators and run modally: fixed controls
// once, and a row of controls repeated for each row, each row a fixed
// distance below the one before and its ids a fixed step above.  Push
// buttons with the ids 1 and 2 accept and cancel the dialog.

#include "support/controls/windowcreator.h"

#include <QDialog>
#include <memory>
#include <vector>

class CGraphCreating : public QDialog
{
    Q_OBJECT
public:
    enum : int { IdOk = 1, IdCancel = 2 };

    explicit CGraphCreating(QWidget *owner, const QString &title = {});
    ~CGraphCreating() override;

    // Built once, at the place the creator gives.
    void AddFixed(std::unique_ptr<CAnyWindowCreator> creator);
    // Built in every row.
    void AddRowControl(std::unique_ptr<CAnyWindowCreator> creator);
    // `count` rows from `origin` down, `rowHeight` pixels and `rowStep` ids apart.
    void SetRows(int count, QPoint origin, int rowHeight, int rowStep);
    int RowCount() const { return m_rowCount; }

    // Builds the controls (once) and sizes the dialog round them.
    void Build();
    // Builds, runs the modal loop and returns QDialog::Accepted or Rejected.
    // While it runs the owner takes no input.
    int DoModal();

    // The controls of one row, in the order of their creators; empty before
    // Build.
    const std::vector<QWidget *> &RowControls(int row) const;

protected:
    // Called after the controls were built, before the dialog shows.
    virtual void OnBuilt() {}

private:
    void wireButton(QWidget *widget);

    std::vector<std::unique_ptr<CAnyWindowCreator>> m_fixed;
    std::vector<std::unique_ptr<CAnyWindowCreator>> m_rowControls;
    std::vector<std::vector<QWidget *>> m_rows;
    int m_rowCount = 0;
    QPoint m_origin;
    int m_rowHeight = 0;
    int m_rowStep = 0;
    bool m_built = false;
};
