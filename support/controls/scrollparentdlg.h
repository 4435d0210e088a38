#pragma once
// Child pages in a scrolled parent: a page (CScrollParentDlg) hands itself
// to its CScrollParent when it is made, and the parent lays its pages out one
// under the other, as wide as the view, scrolling when they are taller.

#include <QScrollArea>
#include <QWidget>
#include <vector>

class CScrollParentDlg;
class QVBoxLayout;

class CScrollParent : public QScrollArea
{
    Q_OBJECT
public:
    explicit CScrollParent(QWidget *parent = nullptr);
    ~CScrollParent() override;

    // Puts the page under the ones it has; a page it has already stays where it is.
    void TakePage(CScrollParentDlg *page);
    int PageCount() const { return int(m_pages.size()); }
    CScrollParentDlg *Page(int index) const;
    // Brings the page into view.
    void ShowPage(int index);

private:
    void pageGone(QObject *page);

    QWidget *m_content;
    QVBoxLayout *m_layout;
    std::vector<CScrollParentDlg *> m_pages;
};

class CScrollParentDlg : public QWidget
{
    Q_OBJECT
public:
    // With a scrolled parent the page goes into it at once.
    explicit CScrollParentDlg(CScrollParent *parent = nullptr);

    CScrollParent *ScrollParent() const { return m_scrollParent; }

private:
    friend class CScrollParent;
    CScrollParent *m_scrollParent = nullptr;
};
