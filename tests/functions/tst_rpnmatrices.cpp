// Matrices: the forms of Matrix and their messages, Eye, Zeros, Transpose,
// the cofactor family against hand results and against Eigen for random
// matrices, and the host routines on known eigenvalues and singular input.

#include "functions/rpnmatrixfunctions.h"
#include "functions/rpnscripthost.h"
#include "formula/rpnexception.h"

#include "formulatest.h"
#include "functionstest.h"

#include <Eigen/Dense>
#include <gtest/gtest.h>
#include <algorithm>
#include <cmath>
#include <complex>
#include <random>

namespace {

std::string failure(const char *call, const QString &text)
{
    return FunctionMessage(std::string(call) + " " + text.toStdString());
}

} // namespace

TEST(RpnMatrices, MakingMatricesAndTheirMessages)
{
    const char *dim = "Determinant";
    const std::vector<ScriptCase> cases = {
        {"", "Matrix({{1,2},{3,4}})", "ARRAY:{{1,2},{3,4}}"},
        {"", "Matrix({1,2,3})", "ARRAY:{{1,2,3}}"},
        {"", "Matrix(2, 1, {5, 6})", "ARRAY:{{5},{6}}"},
        {"", "Matrix(1, 3, {5, 6, 7})", "ARRAY:{{5,6,7}}"},
        {"", "Matrix(2, 2, {{1,2},{3,4}})", "ARRAY:{{1,2},{3,4}}"},
        {"", "Matrix(2, 2)", "ARRAY:{{,},{,}}"},
        {"", "Matrix()", failure("Matrix()", RpnMessage(43420))},
        {"", "Matrix(\"a\")", failure("Matrix(\"a\")", RpnMessage(43421))},
        {"", "Matrix({1}, 2)", failure("Matrix({1}, 2)", RpnMessage(43421))},
        {"", "Matrix(2, {1})", failure("Matrix(2, {1})", RpnMessage(43422))},
        {"", "Matrix(2, 2, 3)", failure("Matrix(2, 2, 3)", RpnMessage(43421))},
        {"", "Matrix({1,{2}})", failure("Matrix({1,{2}})", RpnMessage(43422))},
        {"", "Matrix(3)", failure("Matrix(3)", RpnMessage(43424))},
        {"", "Matrix(3, 3, {{1,2},{3,4}})", failure("Matrix(3, 3, {{1,2},{3,4}})", RpnMessage(43423))},
        {"", "Matrix(3, 2, {{1,2},{3,4}})", failure("Matrix(3, 2, {{1,2},{3,4}})", RpnMessage(43424))},
        {"", "Matrix({{1,2},{3}})", failure("Matrix({{1,2},{3}})", RpnMessage(43425, {1}))},
        {"", "Eye(2, 3)", "ARRAY:{{1,0,0},{0,1,0}}"},
        {"", "Zeros(2)", "ARRAY:{{0,0},{0,0}}"},
        {"", "Eye()", failure("Eye()", RpnMessage(43429, {"Eye", "Eye"}))},
        {"", "Zeros(\"x\")", failure("Zeros(\"x\")", RpnMessage(43432, {"Zeros", "Zeros"}))},
        {"", "Eye(2, \"x\")", failure("Eye(2, \"x\")", RpnMessage(43433, {"Eye", "Eye"}))},
        {"", "Transpose({{1,2,3},{4,5,6}})", "ARRAY:{{1,4},{2,5},{3,6}}"},
        {"", "Transpose({1,2})", failure("Transpose({1,2})", RpnMessage(43426))},
        {"", "Transpose({{1,2}}, 1)", failure("Transpose({{1,2}}, 1)", RpnMessage(43427))},
        {"", "Transpose({{1,2},{3}})", failure("Transpose({{1,2},{3}})", RpnMessage(43428, {1}))},
        // A literal array of arrays is no matrix; the same data through Matrix is.
        {"", "Determinant({{1,2},{3,4}})", failure("Determinant({{1,2},{3,4}})", RpnMessage(43434, {dim, dim}))},
        {"", "Determinant(Matrix({{1,2},{3,4}}))", "REAL:-2"},
        {"", "Determinant(Eye(2), 1)", failure("Determinant(Eye(2), 1)", RpnMessage(43435, {dim, dim}))},
        {"", "Determinant(Eye(2, 3))", failure("Determinant(Eye(2, 3))", RpnMessage(43436, {dim, 2, 3}))},
        {"", "DDeterminant(Matrix({{2,0,1},{1,3,2},{1,1,2}}))", "REAL:6"},
        {"", "Determinant(Matrix({{2,0,1},{1,3,2},{1,1,1}}))", "REAL:0"},
        {"", "Cofactor(Matrix({{1,2},{3,4}}))", "ARRAY:{{4,-3},{-2,1}}"},
        {"", "Adjugate(Matrix({{1,2},{3,4}}))", "ARRAY:{{4,-2},{-3,1}}"},
        {"", "DAdjoint(Matrix({{1,2},{3,4}}))", "ARRAY:{{4,-2},{-3,1}}"},
        {"", "Inverse(Matrix({{4,2},{2,2}}))", "ARRAY:{{0.5,-0.5},{-0.5,1}}"},
        {"", "DInverse(Matrix({{4,2},{2,2}}))", "ARRAY:{{0.5,-0.5},{-0.5,1}}"},
        // Complex cells through the value arithmetic.
        {"", "Determinant(Matrix({{complex(0,1),0},{0,complex(0,1)}}))", "COMPLEX:-1+0j"},
        // A singular matrix: cells that are not finite, and no error.
        {"", "IsNull(Inverse(Matrix({{1,2},{2,4}})))", "INT:0"},
        // The host routines: a singular matrix fails instead of giving infinite cells.
        {"", "inverseCH({{1,2},{2,4}})", "E:inverseCH({{1,2},{2,4}}) @1,0"},
        {"", "inverseCH({{2,0},{0,4}})", "ARRAY:{{0.5,0},{0,0.25}}"},
        {"", "determinantCH(2, {1,2,3,4})", "REAL:-2"},
        // A complex cell in a later row takes the complex path.
        {"", "determinantCH({{1,0},{0,complex(0,2)}})", "COMPLEX:0+2j"},
        {"", "eigen({{2,0},{0,3}})", "ARRAY:{2+0j,3+0j}"},
        {"", "determinantCH(0, {1})", "E:determinantCH(0, {1}) @1,0"},
    };
    ExpectCases(cases);
}

TEST(RpnMatrices, ExpansionAgreesWithEigenOnRandomMatrices)
{
    std::mt19937 random(21);
    std::uniform_real_distribution<double> cell(-5, 5);
    for (int n = 2; n <= 6; ++n) {
        for (int trial = 0; trial < 5; ++trial) {
            Eigen::MatrixXd a(n, n);
            std::vector<double> flat(static_cast<std::size_t>(n * n));
            for (int r = 0; r < n; ++r)
                for (int c = 0; c < n; ++c)
                    flat[std::size_t(r * n + c)] = a(r, c) = cell(random);
            const double det = a.determinant();
            EXPECT_NEAR(RpnLaplaceDeterminant(n, flat.data()), det, 1e-9 * std::max(1.0, std::abs(det))) << n;
            double viaHost = 0;
            ASSERT_EQ(get_determinant(n, flat.data(), &viaHost), 0);
            EXPECT_NEAR(viaHost, det, 1e-9 * std::max(1.0, std::abs(det)));
            std::vector<double> inv(flat.size()), invHost(flat.size());
            RpnLaplaceInverse(n, flat.data(), inv.data());
            ASSERT_EQ(get_inverse(n, flat.data(), invHost.data()), 0);
            const Eigen::MatrixXd expected = a.inverse();
            for (int r = 0; r < n; ++r)
                for (int c = 0; c < n; ++c) {
                    EXPECT_NEAR(inv[std::size_t(r * n + c)], expected(r, c), 1e-8) << n << " " << r << " " << c;
                    EXPECT_NEAR(invHost[std::size_t(r * n + c)], expected(r, c), 1e-8);
                }
        }
    }
}

TEST(RpnMatrices, EigenvaluesOfKnownMatrices)
{
    using C = std::complex<double>;
    struct Case {
        int n;
        std::vector<double> re, im;
        std::vector<C> values;
    } cases[] = {
        {2, {2, 1, 1, 2}, {0, 0, 0, 0}, {C(1, 0), C(3, 0)}},
        {2, {0, -1, 1, 0}, {0, 0, 0, 0}, {C(0, -1), C(0, 1)}},      // a rotation: a complex pair
        {3, {1, 2, 3, 0, 4, 5, 0, 0, 6}, std::vector<double>(9), {C(1, 0), C(4, 0), C(6, 0)}},
        {2, {1, 0, 0, 1}, {1, 0, 0, -1}, {C(1, -1), C(1, 1)}},      // complex cells
    };
    auto order = [](const C &a, const C &b) { return a.real() != b.real() ? a.real() < b.real() : a.imag() < b.imag(); };
    for (const Case &c : cases) {
        std::vector<double> eRe(std::size_t(c.n)), eIm(static_cast<std::size_t>(c.n)), vRe(c.re.size()), vIm(c.re.size());
        ASSERT_EQ(get_ceigen(c.n, c.re.data(), c.im.data(), eRe.data(), eIm.data(), vRe.data(), vIm.data()), 0);
        std::vector<C> got;
        for (int i = 0; i < c.n; ++i)
            got.emplace_back(eRe[std::size_t(i)], eIm[std::size_t(i)]);
        std::sort(got.begin(), got.end(), order);
        for (int i = 0; i < c.n; ++i)
            EXPECT_LT(std::abs(got[std::size_t(i)] - c.values[std::size_t(i)]), 1e-9) << c.n << " value " << i;
        // Each column k of the vectors satisfies A v = lambda v.
        for (int k = 0; k < c.n; ++k) {
            const C lambda(eRe[std::size_t(k)], eIm[std::size_t(k)]);
            for (int r = 0; r < c.n; ++r) {
                C sum = 0;
                for (int j = 0; j < c.n; ++j)
                    sum += C(c.re[std::size_t(r * c.n + j)], c.im[std::size_t(r * c.n + j)])
                        * C(vRe[std::size_t(j * c.n + k)], vIm[std::size_t(j * c.n + k)]);
                EXPECT_LT(std::abs(sum - lambda * C(vRe[std::size_t(r * c.n + k)], vIm[std::size_t(r * c.n + k)])),
                          1e-9);
            }
        }
    }
    // Singular and nearly singular input: a status, never a NaN.
    const double singular[] = {1, 2, 2, 4};
    const double nearly[] = {1, 2, 1, 2 + 1e-17};
    const double withNaN[] = {1, NAN, 0, 1};
    double out[4] = {0, 0, 0, 0};
    EXPECT_NE(get_inverse(2, singular, out), 0);
    EXPECT_NE(get_inverse(2, nearly, out), 0);
    EXPECT_NE(get_inverse(2, withNaN, out), 0);
    EXPECT_NE(get_determinant(2, withNaN, out), 0);
    EXPECT_EQ(get_determinant(2, singular, out), 0);
    EXPECT_EQ(out[0], 0.0);
}
