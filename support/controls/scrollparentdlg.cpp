#include "support/controls/scrollparentdlg.h"

#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

CScrollParent::CScrollParent(QWidget *parent) : QScrollArea(parent), m_content(new QWidget)
{
    m_layout = new QVBoxLayout(m_content);
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->addStretch(1);
    setWidget(m_content);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setFrameShape(QFrame::NoFrame);
}

CScrollParent::~CScrollParent()
{
    // The pages go with the view after this object has stopped being a
    // CScrollParent: they must not call back into it then.
    for (CScrollParentDlg *page : m_pages)
        disconnect(page, nullptr, this, nullptr);
}

void CScrollParent::TakePage(CScrollParentDlg *page)
{
    if (!page || std::find(m_pages.begin(), m_pages.end(), page) != m_pages.end())
        return;
    page->m_scrollParent = this;
    // Above the stretch that keeps the pages at the top.
    m_layout->insertWidget(m_layout->count() - 1, page);
    m_pages.push_back(page);
    connect(page, &QObject::destroyed, this, &CScrollParent::pageGone);
    page->show();
}

CScrollParentDlg *CScrollParent::Page(int index) const
{
    return index >= 0 && index < PageCount() ? m_pages[index] : nullptr;
}

void CScrollParent::ShowPage(int index)
{
    if (CScrollParentDlg *page = Page(index))
        ensureWidgetVisible(page, 0, 0);
}

void CScrollParent::pageGone(QObject *page)
{
    m_pages.erase(std::remove(m_pages.begin(), m_pages.end(), page), m_pages.end());
}

CScrollParentDlg::CScrollParentDlg(CScrollParent *parent) : QWidget(nullptr)
{
    if (parent)
        parent->TakePage(this);
}
