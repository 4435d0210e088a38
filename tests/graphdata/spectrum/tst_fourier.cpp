#include "graphdata/spectrum/fouriertransform.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numbers>
#include <vector>

namespace {

using Cd = std::complex<double>;

std::vector<Cd> signal(int n, unsigned seed)
{
    std::vector<Cd> x(static_cast<std::size_t>(n));
    unsigned s = seed;
    for (auto &v : x) {
        s = s * 1103515245u + 12345u;
        const double re = double((s >> 8) % 20001) / 10000.0 - 1;
        s = s * 1103515245u + 12345u;
        const double im = double((s >> 8) % 20001) / 10000.0 - 1;
        v = {re, im};
    }
    return x;
}

// The definition, summed in long double.
std::vector<Cd> directSum(const std::vector<Cd> &x)
{
    const std::size_t n = x.size();
    std::vector<Cd> y(n);
    for (std::size_t k = 0; k < n; ++k) {
        long double re = 0, im = 0;
        for (std::size_t j = 0; j < n; ++j) {
            const long double a = -2.0L * std::numbers::pi_v<long double> * (long double)((j * k) % n) / n;
            re += x[j].real() * std::cos(a) - x[j].imag() * std::sin(a);
            im += x[j].real() * std::sin(a) + x[j].imag() * std::cos(a);
        }
        y[k] = {double(re), double(im)};
    }
    return y;
}

// Largest difference relative to the largest value of `expected`.
double relativeError(const std::vector<Cd> &got, const std::vector<Cd> &expected)
{
    double scale = 0, worst = 0;
    for (std::size_t k = 0; k < expected.size(); ++k) {
        scale = std::max(scale, std::abs(expected[k]));
        worst = std::max(worst, std::abs(got[k] - expected[k]));
    }
    return scale > 0 ? worst / scale : worst;
}

struct LengthCase
{
    int n;
    const char *shape;
};

class FourierAgainstDefinition : public ::testing::TestWithParam<LengthCase>
{
};

} // namespace

TEST_P(FourierAgainstDefinition, BothMethodsMatchTheDirectSum)
{
    const int n = GetParam().n;
    const std::vector<Cd> x = signal(n, unsigned(n));
    const std::vector<Cd> expected = directSum(x);
    for (auto method : {CFourierTransform::Method::MixedRadix, CFourierTransform::Method::ChirpZ}) {
        std::vector<Cd> y = x;
        CFourierTransform t(n, method);
        ASSERT_TRUE(t.Forward(y.data()));
        EXPECT_LT(relativeError(y, expected), 1e-12)
            << GetParam().shape << ", " << (method == CFourierTransform::Method::ChirpZ ? "chirp-z" : "mixed radix");
    }
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, FourierAgainstDefinition,
    ::testing::Values(LengthCase{1, "one point"}, LengthCase{2, "two"}, LengthCase{3, "three"},
                      LengthCase{4, "four"}, LengthCase{5, "five"}, LengthCase{7, "seven, odd prime"},
                      LengthCase{8, "four then two"}, LengthCase{32, "power of two, odd exponent"},
                      LengthCase{64, "power of four"}, LengthCase{27, "power of three"},
                      LengthCase{125, "power of five"}, LengthCase{49, "square of seven"},
                      LengthCase{60, "2^2 3 5"}, LengthCase{210, "2 3 5 7"}, LengthCase{143, "11 13"},
                      LengthCase{255, "3 5 17"}, LengthCase{61, "largest direct prime"},
                      LengthCase{67, "prime past the direct limit"}, LengthCase{202, "2 times prime 101"},
                      LengthCase{1000, "2^3 5^3"}, LengthCase{1009, "prime near 1000"}),
    [](const ::testing::TestParamInfo<LengthCase> &info) { return std::string("N").append(std::to_string(info.param.n)); });

TEST(Fourier, AutomaticMethodFollowsTheLargestPrimeFactor)
{
    const struct
    {
        std::int64_t n;
        CFourierTransform::Method method;
        std::int64_t largest;
    } cases[] = {
        {1 << 20, CFourierTransform::Method::MixedRadix, 2},
        {1000000, CFourierTransform::Method::MixedRadix, 5},
        {255255, CFourierTransform::Method::MixedRadix, 17},
        {999983, CFourierTransform::Method::ChirpZ, 999983},
        {2 * 67, CFourierTransform::Method::ChirpZ, 67},
        {61 * 61, CFourierTransform::Method::MixedRadix, 61},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(CFourierTransform::LargestFactor(c.n), c.largest) << c.n;
        if (c.n <= 1000000 || c.method == CFourierTransform::Method::MixedRadix) {
            // Making a transform builds its tables; keep that to the small ones.
            if (c.n <= 4000) {
                CFourierTransform t(c.n);
                EXPECT_EQ(t.UsedMethod(), c.method) << c.n;
            }
        }
    }
    CFourierTransform mixed(1000);
    EXPECT_EQ(mixed.Radices(), (std::vector<int>{8, 5, 5, 5}));
}

// The chirp-z form agrees with mixed radix on lengths both can run, where
// the direct sum would be slow.
TEST(Fourier, ChirpZAgreesWithMixedRadixOnLongLengths)
{
    for (int n : {255255, 3 * 5 * 7 * 11 * 13, 65536 + 1 /* 2^16 + 1 = 65537 is prime */}) {
        const std::vector<Cd> x = signal(n, 7);
        std::vector<Cd> a = x, b = x;
        CFourierTransform mixed(n, CFourierTransform::Method::MixedRadix);
        CFourierTransform chirp(n, CFourierTransform::Method::ChirpZ);
        if (n == 65537) {
            // A prime: mixed radix would sum N^2 terms; check a few bins
            // against the definition instead.
            ASSERT_TRUE(chirp.Forward(b.data()));
            for (int k : {0, 1, 4321, 65536}) {
                long double re = 0, im = 0;
                for (int j = 0; j < n; ++j) {
                    const long double ang =
                        -2.0L * std::numbers::pi_v<long double> * (long double)((long long)j * k % n) / n;
                    re += x[j].real() * std::cos(ang) - x[j].imag() * std::sin(ang);
                    im += x[j].real() * std::sin(ang) + x[j].imag() * std::cos(ang);
                }
                EXPECT_LT(std::abs(b[k] - Cd(double(re), double(im))), 1e-9 * std::sqrt(double(n))) << k;
            }
            continue;
        }
        ASSERT_TRUE(mixed.Forward(a.data()));
        ASSERT_TRUE(chirp.Forward(b.data()));
        EXPECT_LT(relativeError(b, a), 1e-9) << n;
    }
}

TEST(Fourier, ProgressRisesAndCancelStops)
{
    for (auto method : {CFourierTransform::Method::MixedRadix, CFourierTransform::Method::ChirpZ}) {
        const int n = 1 << 16;
        std::vector<Cd> x = signal(n, 3);
        CFourierTransform t(n, method);
        std::vector<double> seen;
        ASSERT_TRUE(t.Forward(x.data(), [&](double f) {
            seen.push_back(f);
            return true;
        }));
        ASSERT_GE(seen.size(), 3u);
        EXPECT_DOUBLE_EQ(seen.back(), 1.0);
        for (std::size_t i = 1; i < seen.size(); ++i)
            EXPECT_LE(seen[i - 1], seen[i]);

        int calls = 0;
        EXPECT_FALSE(t.Forward(x.data(), [&](double) { return ++calls < 2; }));
        EXPECT_EQ(calls, 2);
    }
}
