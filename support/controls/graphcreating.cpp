#include "support/controls/graphcreating.h"

#include <QPushButton>

namespace {

const int kMargin = 8;

} // namespace

CGraphCreating::CGraphCreating(QWidget *owner, const QString &title) : QDialog(owner)
{
    if (!title.isEmpty())
        setWindowTitle(title);
}

CGraphCreating::~CGraphCreating() = default;

void CGraphCreating::AddFixed(std::unique_ptr<CAnyWindowCreator> creator)
{
    m_fixed.push_back(std::move(creator));
}

void CGraphCreating::AddRowControl(std::unique_ptr<CAnyWindowCreator> creator)
{
    m_rowControls.push_back(std::move(creator));
}

void CGraphCreating::SetRows(int count, QPoint origin, int rowHeight, int rowStep)
{
    m_rowCount = std::max(count, 0);
    m_origin = origin;
    m_rowHeight = rowHeight;
    m_rowStep = rowStep;
}

void CGraphCreating::wireButton(QWidget *widget)
{
    auto *button = qobject_cast<QPushButton *>(widget);
    if (!button)
        return;
    const QString name = button->objectName();
    if (name == ControlIdName(IdOk))
        connect(button, &QPushButton::clicked, this, &QDialog::accept);
    else if (name == ControlIdName(IdCancel))
        connect(button, &QPushButton::clicked, this, &QDialog::reject);
}

void CGraphCreating::Build()
{
    if (m_built)
        return;
    m_built = true;
    QRect used;
    for (const auto &creator : m_fixed) {
        if (QWidget *widget = creator->CreateInRow(this, QPoint(), 0, 0)) {
            wireButton(widget);
            used |= widget->geometry();
        }
    }
    m_rows.assign(m_rowCount, {});
    for (int row = 0; row < m_rowCount; ++row) {
        const QPoint offset = m_origin + QPoint(0, row * m_rowHeight);
        for (const auto &creator : m_rowControls) {
            QWidget *widget = creator->CreateInRow(this, offset, row, m_rowStep);
            m_rows[row].push_back(widget);
            if (widget) {
                wireButton(widget);
                used |= widget->geometry();
            }
        }
    }
    // The controls sit at fixed places: the dialog takes their extent.
    setFixedSize(std::max(used.right(), 0) + 1 + kMargin, std::max(used.bottom(), 0) + 1 + kMargin);
    OnBuilt();
}

int CGraphCreating::DoModal()
{
    Build();
    // Application-modal: no window of the program but this one takes input
    // until it closes, and the owner is itself again after.
    setWindowModality(Qt::ApplicationModal);
    return exec();
}

const std::vector<QWidget *> &CGraphCreating::RowControls(int row) const
{
    static const std::vector<QWidget *> none;
    return row >= 0 && row < int(m_rows.size()) ? m_rows[row] : none;
}
