// Tick label texts as OCR gives them, and the axis fit over read labels.

#include "tool/autocal/axisfit.h"
#include "tool/autocal/labelvalue.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

struct CLabelCase {
    const char *text;
    const char *exponent;
    bool ok;
    double value;
    int prefix;
};

class LabelValue : public ::testing::TestWithParam<CLabelCase> {};

} // namespace

TEST_P(LabelValue, Parses)
{
    const CLabelCase &c = GetParam();
    const CLabelValue v = ParseLabelValue(QString::fromUtf8(c.text), QString::fromUtf8(c.exponent));
    ASSERT_EQ(v.ok, c.ok) << c.text;
    if (!c.ok)
        return;
    EXPECT_NEAR(v.value, c.value, std::abs(c.value) * 1e-12) << c.text;
    EXPECT_EQ(v.prefixExponent, c.prefix) << c.text;
}

INSTANTIATE_TEST_SUITE_P(
    , LabelValue,
    ::testing::Values(CLabelCase{"0", "", true, 0, 0}, CLabelCase{"-40", "", true, -40, 0},
                      CLabelCase{"\xe2\x88\x92" "40", "", true, -40, 0}, // printed minus sign
                      CLabelCase{"2,5", "", true, 2.5, 0}, CLabelCase{"0.5", "", true, 0.5, 0},
                      CLabelCase{"100m", "", true, 0.1, -3}, CLabelCase{"4.7k", "", true, 4700, 3},
                      CLabelCase{"10 u", "", true, 1e-5, -6}, CLabelCase{"1\xc2\xb5", "", true, 1e-6, -6},
                      CLabelCase{"1\xce\xbc", "", true, 1e-6, -6}, CLabelCase{"3n", "", true, 3e-9, -9},
                      CLabelCase{"2M", "", true, 2e6, 6}, CLabelCase{"1K", "", true, 1e3, 3},
                      CLabelCase{"1E-3", "", true, 1e-3, 0}, CLabelCase{"1e3", "", true, 1e3, 0},
                      CLabelCase{"10^-3", "", true, 1e-3, 0}, CLabelCase{"10^(-3)", "", true, 1e-3, 0},
                      CLabelCase{"2x10^3", "", true, 2e3, 0}, CLabelCase{"10", "-3", true, 1e-3, 0},
                      CLabelCase{"10", "0", true, 1, 0}, CLabelCase{"5x10", "2", true, 500, 0},
                      // Not labels: two prefixes, a word, a base other than ten
                      // under an exponent, an exponent that is no number.
                      CLabelCase{"10mm", "", false, 0, 0}, CLabelCase{"VDS", "", false, 0, 0},
                      CLabelCase{"", "", false, 0, 0}, CLabelCase{"16", "2", false, 0, 0},
                      CLabelCase{"10", "-", false, 0, 0}, CLabelCase{"1.2.3", "", false, 0, 0},
                      CLabelCase{"10^", "", false, 0, 0}));

namespace {

struct CFitCase {
    const char *name;
    QList<double> lines;
    QList<CAxisLabel> labels;
    bool valuesRise;
    CAxisModel::Outcome outcome;
    bool log;
    int agreeing;
};

class AxisFit : public ::testing::TestWithParam<CFitCase> {};

QList<double> evenLines(double from, double step, int n)
{
    QList<double> l;
    for (int i = 0; i <= n; ++i)
        l.append(from + step * i);
    return l;
}

} // namespace

TEST_P(AxisFit, DecidesTheScale)
{
    const CFitCase &c = GetParam();
    const CAxisModel m = FitAxis(c.lines, c.labels, c.valuesRise);
    EXPECT_EQ(int(m.outcome), int(c.outcome));
    if (m.Fitted()) {
        EXPECT_EQ(m.log, c.log);
        EXPECT_EQ(m.agreeing.size(), c.agreeing);
        // The model puts every agreeing label on its line.
        for (const CAxisLabel &l : m.agreeing)
            EXPECT_NEAR(m.PixelOf(l.value), l.position, 0.05);
    }
}

INSTANTIATE_TEST_SUITE_P(
    , AxisFit,
    ::testing::Values(
        CFitCase{"linear", evenLines(100, 80, 5), {{101, 0, 0}, {181, 2, 0}, {259, 4, 0}, {340, 6, 0}, {420, 8, 0}},
                 true, CAxisModel::Outcome::Fitted, false, 5},
        CFitCase{"decades", evenLines(50, 150, 3), {{50, 1, 0}, {200, 10, 0}, {350, 100, 0}, {500, 1000, 0}},
                 true, CAxisModel::Outcome::Fitted, true, 4},
        // One misread label among agreeing ones is left out.
        CFitCase{"misread", evenLines(0, 50, 5), {{0, 0, 0}, {50, 10, 0}, {100, 20, 0}, {150, 80, 0}, {200, 40, 0}},
                 true, CAxisModel::Outcome::Fitted, false, 4},
        // Y runs downward in pixels, so values must fall with the pixel.
        CFitCase{"y axis", evenLines(20, 100, 3), {{20, 30, 0}, {120, 20, 0}, {220, 10, 0}, {320, 0, 0}}, false,
                 CAxisModel::Outcome::Fitted, false, 4},
        CFitCase{"lost minus", evenLines(20, 100, 3), {{20, 1e6, 0}, {120, 1e7, 0}, {220, 1e8, 0}, {320, 1e9, 0}},
                 false, CAxisModel::Outcome::Reversed, true, 4},
        CFitCase{"two labels", evenLines(0, 50, 4), {{0, 0, 0}, {200, 8, 0}}, true,
                 CAxisModel::Outcome::TooFewLabels, false, 0},
        CFitCase{"off the lines", evenLines(0, 50, 4), {{25, 0, 0}, {75, 1, 0}, {125, 2, 0}}, true,
                 CAxisModel::Outcome::TooFewLabels, false, 0},
        CFitCase{"no agreement", evenLines(0, 50, 4), {{0, 3, 0}, {50, 1, 0}, {100, 7, 0}, {150, 2, 0}}, true,
                 CAxisModel::Outcome::Inconsistent, false, 0},
        // 1, 2, 4 at equal steps fits neither scale by three labels; with a
        // fourth, 8, it is a logarithmic axis of base 2 steps, which log fits.
        CFitCase{"doubling", evenLines(0, 100, 3), {{0, 1, 0}, {100, 2, 0}, {200, 4, 0}, {300, 8, 0}}, true,
                 CAxisModel::Outcome::Fitted, true, 4}),
    [](const auto &info) {
        std::string n = info.param.name;
        for (char &ch : n)
            if (ch == ' ')
                ch = '_';
        return n;
    });
