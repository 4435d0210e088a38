// The series row steps with the library's functions: a function that fails
// on a row (and, in the throwing mode, throws) inside the steps leaves no
// trace, and the row done again through the tree reports, or throws, as it
// would have; a failing function in a branch that is not taken fails nothing.

#include "functionstest.h"
#include "rowcompare.h"

#include <gtest/gtest.h>

using namespace rowcompare;

namespace {

struct FunctionRowCase
{
    const char *text;
    bool throwing;
};

class RowFunctions : public testing::TestWithParam<FunctionRowCase>
{
};

TEST_P(RowFunctions, SameRowsAsTheNodes)
{
    const FunctionRowCase &c = GetParam();
    const rowcompare::Setup setup{Column, c.throwing};
    bool program = false;
    const Outcome steps = bySeries(c.text, setup, &program);
    const Outcome nodes = byNodes(c.text, setup);
    EXPECT_TRUE(program) << c.text;
    EXPECT_EQ(describe(steps), describe(nodes)) << c.text;
}

const FunctionRowCase kFunctionRowCases[] = {
    {"sqrt(x)", false},
    {"sqrt(x)", true},
    {"log10(x) + ln(x+3)", false},
    {"log10(x) + 1", true},
    {"iif(x > 0, sqrt(x), -1)", true},
    {"iif(x > 0, log10(x), 0) + sqrt(x*x)", false},
    {"sin(x)*cos(x) + exp(-x)*x", true},
    {"min(x, 0.5) + max(x, 0.25)", true},
    {"function f(t) { return sqrt(t) + 1 }; f(x) * 2", true},
};

INSTANTIATE_TEST_SUITE_P(Cases, RowFunctions, testing::ValuesIn(kFunctionRowCases));

} // namespace
