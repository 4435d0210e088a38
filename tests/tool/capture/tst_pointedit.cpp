// Moving and removing one point of a point text: only the group holding it
// is rewritten, every other character stays as it was.

#include "tool/capture/pointedit.h"

#include <gtest/gtest.h>

namespace {

struct EditCase {
    const char *text;
    int index;
    bool remove;
    double x, y;
    const char *expected;
};

class PointEditTest : public ::testing::TestWithParam<EditCase> {};

TEST_P(PointEditTest, RewritesOnlyTheGroupOfThePoint)
{
    const EditCase &c = GetParam();
    const QString text = QString::fromLatin1(c.text);
    const QString out = c.remove ? RemovePointFromText(text, c.index) : ReplacePointInText(text, c.index, c.x, c.y);
    EXPECT_EQ(out, QString::fromLatin1(c.expected));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, PointEditTest,
    ::testing::Values(
        // The last click moved; typed groups before it keep their digits.
        EditCase{"(1.234567,2)(3,4)", 1, false, 5.5, 6.25, "(1.234567,2)(5.5,6.25)"},
        // Blanks, square brackets and text between groups survive.
        EditCase{"a [1 2] b (3,4) c", 0, false, 7, 8, "a (7,8) b (3,4) c"},
        // A group of two pairs becomes one group a pair.
        EditCase{"(1,2,3,4)(5,6)", 1, false, 9, 9, "(1,2)(9,9)(5,6)"},
        EditCase{"(1,2,3,4)(5,6)", 0, true, 0, 0, "(3,4)(5,6)"},
        // A group of one number holds no pair and does not count.
        EditCase{"(1)(2,3)(4,5)", 1, true, 0, 0, "(1)(2,3)"},
        EditCase{"(1k,2)(3,4)", 0, true, 0, 0, "(3,4)"},
        // Outside the pairs nothing changes.
        EditCase{"(1,2)", 1, true, 0, 0, "(1,2)"},
        EditCase{"(1,2)", -1, false, 3, 3, "(1,2)"},
        EditCase{"", 0, true, 0, 0, ""}));

TEST(PointTextColumns, PairsBecomeTabSeparatedLines)
{
    EXPECT_EQ(PointTextAsColumns(u"(1,2)(3.5,-4e-3) (2k,1)"), QStringLiteral("1\t2\n3.5\t-0.004\n2000\t1\n"));
    EXPECT_EQ(PointTextAsColumns(u"(1)"), QString());
    EXPECT_EQ(PointTextCount(u"(1,2,3,4)(5)"), 2);
}

} // namespace
