// The option dialog from the keyboard: Tab reaches every field of every page
// and never gets caught inside one control, Enter accepts, Escape cancels
// and leaves the graph as it was.
#include "optionsfixture.h"

#include "graphdata/pages/axisfields.h"
#include "graphdata/pages/options2dlg.h"
#include "graphdata/pages/xaxis2page.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QTabWidget>
#include <QTest>

#include <set>

namespace {

// The widgets of `page` that a keyboard user must be able to reach.
std::set<QWidget *> reachableFields(QWidget *page)
{
    std::set<QWidget *> fields;
    for (QWidget *w : page->findChildren<QWidget *>()) {
        if (w->isVisibleTo(page) && w->isEnabled() && (w->focusPolicy() & Qt::TabFocus) &&
            !w->focusProxy() && w->window() == page->window())
            fields.insert(w);
    }
    return fields;
}

QWidget *focused()
{
    return QApplication::focusWidget();
}

} // namespace

// Walks the Tab chain from the page's tab until it comes back to a widget
// seen before; every field of the page must be on the way.  A control that
// keeps Tab to itself ends the walk early and leaves the fields behind it
// unreached.
TEST_F(Options2Dlg, TabReachesEveryFieldOfEveryPage)
{
    COptions2_Dlg dialog(m_graph, COptionsFault::PageCurves);
    dialog.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
    for (int index = 0; index < dialog.Tabs()->count(); ++index) {
        QWidget *page = dialog.Tabs()->widget(index);
        SCOPED_TRACE(dialog.Tabs()->tabText(index).toStdString());
        dialog.Tabs()->setCurrentIndex(index);
        dialog.activateWindow();
        dialog.Tabs()->tabBar()->setFocus(Qt::TabFocusReason);
        QApplication::processEvents();
        ASSERT_EQ(focused(), dialog.Tabs()->tabBar());

        std::set<QWidget *> missing = reachableFields(page);
        ASSERT_FALSE(missing.empty());
        std::set<QWidget *> seen;
        for (int step = 0; step < 400; ++step) {
            QWidget *w = focused();
            ASSERT_NE(w, nullptr);
            QTest::keyClick(w, Qt::Key_Tab);
            QWidget *next = focused();
            ASSERT_NE(next, nullptr);
            missing.erase(next);
            if (seen.count(next))
                break;
            seen.insert(next);
        }
        for (QWidget *w : missing)
            ADD_FAILURE() << "not reached by Tab: " << w->metaObject()->className() << " "
                          << w->objectName().toStdString();
        EXPECT_EQ(dialog.Tabs()->currentIndex(), index) << "Tab changed the page";
    }
    dialog.reject();
}

// Enter in a field accepts the dialog with what was typed; Escape cancels
// whatever was typed on any page.
TEST_F(Options2Dlg, EnterAcceptsAndEscapeCancels)
{
    const struct
    {
        const char *name;
        Qt::Key key;
        bool accepted;
    } cases[] = {
        {"Enter", Qt::Key_Return, true},
        {"keypad Enter", Qt::Key_Enter, true},
        {"Escape", Qt::Key_Escape, false},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        CGraphCurve graph;
        fill(graph);
        const std::string before = fingerprint(graph);
        COptions2_Dlg dialog(graph, COptionsFault::PageXAxis);
        dialog.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&dialog));
        QLineEdit *min = dialog.m_xPage->m_fields->m_automatic->isChecked() ? nullptr : dialog.m_xPage->m_fields->m_min;
        if (!min) {
            dialog.m_xPage->m_fields->m_automatic->setChecked(false);
            min = dialog.m_xPage->m_fields->m_min;
        }
        min->setFocus();
        min->selectAll();
        QTest::keyClicks(min, QStringLiteral("7"));
        QTest::keyClick(min, c.key);
        EXPECT_FALSE(dialog.isVisible());
        EXPECT_EQ(dialog.result(), c.accepted ? QDialog::Accepted : QDialog::Rejected);
        if (c.accepted)
            EXPECT_EQ(graph.m_xViewMin, 7);
        else
            EXPECT_EQ(fingerprint(graph), before);
    }
}
