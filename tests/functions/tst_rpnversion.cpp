// The version functions: the text and parts of GetVersion, and the
// comparison of IsVersionGE part by part.

#include "functionstest.h"

#include <gtest/gtest.h>

namespace {

struct VersionCase {
    const char *text;
    std::string expect;
};

class VersionFunctions : public ::testing::TestWithParam<VersionCase> {};

TEST_P(VersionFunctions, Answer)
{
    EXPECT_EQ(Eval(GetParam().text), GetParam().expect) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(Cases, VersionFunctions, ::testing::Values(
    VersionCase{"GetVersion()", "STRING:26.0.0.7209"},
    VersionCase{"p=0; q=0; r=0; s=0; t=0; GetVersion(p, q, r, s, t); {p, q, r, s, t}",
                "ARRAY:{0,0,0,0,0,26.0.0.7209,{26,0,0,7209,564}}"},
    VersionCase{"GetVersion(1)", "STRING:26.0.0.7209"},
    VersionCase{"IsVersionGE()", "INT:1"},
    VersionCase{"IsVersionGE(26)", "INT:1"},
    VersionCase{"IsVersionGE(27)", "INT:0"},
    VersionCase{"IsVersionGE(25, 9)", "INT:1"},
    VersionCase{"IsVersionGE(26, 0, 0, 7209)", "INT:1"},
    VersionCase{"IsVersionGE(26, 0, 0, 7210)", "INT:0"},
    VersionCase{"IsVersionGE(26, 1)", "INT:0"}));

} // namespace
