#include "support/controls/graphcreating.h"
#include "support/controls/windowcreator.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <gtest/gtest.h>

namespace {

struct IdCase {
    int baseId, idStep, rowIndex, rowStep, expected;
};

class CreatorIds : public ::testing::TestWithParam<IdCase> {};

} // namespace

TEST_P(CreatorIds, RowIdAndObjectName)
{
    const IdCase c = GetParam();
    QWidget parent;
    CAnyStaticCreator creator(QStringLiteral("x"), QRect(0, 0, 10, 10), c.baseId, c.idStep);
    EXPECT_EQ(creator.RowId(c.rowIndex, c.rowStep), c.expected);
    QWidget *built = creator.CreateInRow(&parent, QPoint(), c.rowIndex, c.rowStep);
    ASSERT_NE(built, nullptr);
    EXPECT_EQ(built->objectName(), c.expected == -1 ? QString() : QString::number(c.expected));
}

INSTANTIATE_TEST_SUITE_P(Rows, CreatorIds,
                         ::testing::Values(IdCase{1000, 1, 0, 10, 1000}, IdCase{1000, 1, 3, 10, 1030},
                                           IdCase{1000, 2, 3, 10, 1060}, IdCase{1000, 1, 3, 0, 1000},
                                           IdCase{1000, -1, 2, 5, 990}, IdCase{0, 1, 4, 1, 4},
                                           // No base id: no id in any row.
                                           IdCase{-1, 1, 0, 10, -1}, IdCase{-1, 5, 7, 10, -1}));

TEST(WindowCreator, OffsetMovesTheRectangleAndFontIsApplied)
{
    QWidget parent;
    CAnyEditCreator creator(QStringLiteral("3.5"), QRect(10, 4, 60, 20), 2000, 1);
    QFont font(QStringLiteral("Sans"), 17);
    creator.SetFont(font);
    struct { QPoint offset; QRect expected; } cases[] = {
        {{0, 0}, {10, 4, 60, 20}}, {{5, 30}, {15, 34, 60, 20}}, {{-10, -4}, {0, 0, 60, 20}}};
    for (const auto &c : cases) {
        QWidget *built = creator.CreateInRow(&parent, c.offset, 1, 1);
        ASSERT_NE(built, nullptr);
        EXPECT_EQ(built->geometry(), c.expected);
        EXPECT_EQ(built->font().pointSize(), 17);
    }
    // The creator's own rectangle stays where it was.
    EXPECT_EQ(creator.m_rect, QRect(10, 4, 60, 20));
    // Without a font the control keeps its parent's.
    CAnyStaticCreator plain(QStringLiteral("a"), QRect(0, 0, 5, 5));
    EXPECT_EQ(plain.CreateInRow(&parent, {}, 0, 0)->font(), parent.font());
}

TEST(WindowCreator, EachCreatorBuildsItsKindOfControl)
{
    QWidget parent;
    const QRect r(0, 0, 80, 20);
    const struct {
        std::unique_ptr<CAnyWindowCreator> creator;
        const char *className;
    } cases[] = {
        {std::make_unique<CAnyButtonCreator>(QStringLiteral("Go"), r, 1, 1, CreatorStyleVisible), "QPushButton"},
        {std::make_unique<CAnyButtonCreator>(QStringLiteral("Log"), r, 1, 1,
                                             CreatorStyleVisible | CreatorButtonAutoCheckBox), "QCheckBox"},
        {std::make_unique<CAnyButtonCreator>(QStringLiteral("A"), r, 1, 1, CreatorButtonAutoRadio), "QRadioButton"},
        {std::make_unique<CAnyButtonCreator>(QStringLiteral("Box"), r, 1, 1, CreatorButtonGroupBox), "QGroupBox"},
        {std::make_unique<CAnyStaticCreator>(QStringLiteral("Min"), r), "QLabel"},
        {std::make_unique<CAnyEditCreator>(QStringLiteral("1"), r), "QLineEdit"},
        {std::make_unique<CAnyWindowCreator>(QStringLiteral("w"), r), "QWidget"},
    };
    for (const auto &c : cases) {
        QWidget *built = c.creator->CreateInRow(&parent, {}, 0, 0);
        ASSERT_NE(built, nullptr) << c.className;
        EXPECT_STREQ(built->metaObject()->className(), c.className);
        EXPECT_EQ(built->parentWidget(), &parent);
        // Nothing is built without a parent.
        EXPECT_EQ(c.creator->CreateInRow(nullptr, {}, 0, 0), nullptr) << c.className;
    }
    EXPECT_EQ(qobject_cast<QPushButton *>(cases[0].creator->CreateInRow(&parent, {}, 0, 0))->text(), u"Go");
    EXPECT_EQ(qobject_cast<QLineEdit *>(cases[5].creator->CreateInRow(&parent, {}, 0, 0))->text(), u"1");
}

TEST(WindowCreator, StyleBits)
{
    QWidget parent;
    parent.show();
    const QRect r(0, 0, 40, 20);
    CAnyEditCreator readOnly(QString(), r, -1, 1, CreatorStyleVisible | CreatorEditReadOnly | CreatorAlignRight);
    auto *edit = qobject_cast<QLineEdit *>(readOnly.CreateInRow(&parent, {}, 0, 0));
    ASSERT_NE(edit, nullptr);
    EXPECT_TRUE(edit->isReadOnly());
    EXPECT_TRUE(edit->alignment() & Qt::AlignRight);
    // A control made in a window on screen shows, unless it is made hidden.
    EXPECT_TRUE(edit->isVisible());
    CAnyStaticCreator hidden(QString(), r, -1, 1, CreatorStyleDisabled);
    QWidget *label = hidden.CreateInRow(&parent, {}, 0, 0);
    EXPECT_FALSE(label->isVisible());
    EXPECT_FALSE(label->isEnabled());
}

namespace {

struct ModalCase {
    int press;
    int result;
};

class GraphCreatingModal : public ::testing::TestWithParam<ModalCase> {};

} // namespace

TEST_P(GraphCreatingModal, RowsAreBuiltAndButtonsEndTheLoop)
{
    QWidget owner;
    CGraphCreating dialog(&owner, QStringLiteral("Rows"));
    dialog.AddFixed(std::make_unique<CAnyButtonCreator>(QStringLiteral("OK"), QRect(10, 100, 60, 24),
                                                        CGraphCreating::IdOk, 0));
    dialog.AddFixed(std::make_unique<CAnyButtonCreator>(QStringLiteral("Cancel"), QRect(80, 100, 60, 24),
                                                        CGraphCreating::IdCancel, 0));
    dialog.AddRowControl(std::make_unique<CAnyStaticCreator>(QStringLiteral("Min"), QRect(0, 0, 40, 20), 3000, 1));
    dialog.AddRowControl(std::make_unique<CAnyEditCreator>(QString(), QRect(50, 0, 60, 20), 3001, 1));
    dialog.SetRows(3, QPoint(8, 8), 26, 10);
    QTimer::singleShot(0, &dialog, [&] {
        if (auto *button = dialog.findChild<QPushButton *>(QString::number(GetParam().press)))
            button->click();
    });
    EXPECT_EQ(dialog.DoModal(), GetParam().result);
    ASSERT_EQ(dialog.RowControls(2).size(), 2u);
    EXPECT_EQ(dialog.RowControls(2)[1]->objectName(), u"3021");
    EXPECT_EQ(dialog.RowControls(2)[1]->geometry(), QRect(58, 60, 60, 20));
    EXPECT_TRUE(dialog.RowControls(3).empty());
    // Every control lies inside the dialog.
    for (QWidget *child : dialog.findChildren<QWidget *>())
        EXPECT_TRUE(dialog.rect().contains(child->geometry())) << qPrintable(child->objectName());
}

INSTANTIATE_TEST_SUITE_P(Buttons, GraphCreatingModal,
                         ::testing::Values(ModalCase{CGraphCreating::IdOk, QDialog::Accepted},
                                           ModalCase{CGraphCreating::IdCancel, QDialog::Rejected}));
