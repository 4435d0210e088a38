#pragma once
// CFourierTransform: the discrete Fourier transform of one fixed length,
//   X[k] = sum over j of x[j] * exp(-2 pi i j k / N),
// made once for a length and run as often as needed (the curves of a graph
// share one grid, so they share one object).
//
// Two methods.  The mixed-radix one splits the length by its smallest prime
// factors (radix 8 and 4 while they divide what is left, then 2, 3, 5 and
// the other primes), recursing depth first so that the inner levels run in the
// cache.  Every twiddle factor comes from one table of exp(-2 pi i k / N)
// built for the whole length, where a level of length n finds the factor of
// exponent m at entry (N / n) * m; the factors each level uses are copied
// out of it in the order that level reads them, so that a level walks its
// factors in sequence instead of striding through N of them.
// A prime factor p costs p / 2 complex products for each value at its level,
// so a length with a large prime factor (a prime length costs N squared)
// goes to the chirp-z method instead: the transform as a convolution with a
// chirp, done by three mixed-radix transforms of a power of two of at least
// 2N - 1 points.  That keeps every length in O(N log N).
//
// The smallest prime factor of each length split so far is kept in a
// process-wide cache, so that the many curves of one length factor it once.

#include <complex>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

class CFourierTransform
{
public:
    enum class Method { Automatic, MixedRadix, ChirpZ };
    // Told the finished fraction (0..1) now and then; returning false
    // cancels the transform.
    using Progress = std::function<bool(double fraction)>;

    // A transform of `length` points (at least 1).  Automatic picks the
    // chirp-z form when the largest prime factor of the length exceeds
    // kLargestDirectFactor.  Throws std::bad_alloc when memory runs out.
    explicit CFourierTransform(std::int64_t length, Method method = Method::Automatic);
    ~CFourierTransform();
    CFourierTransform(const CFourierTransform &) = delete;
    CFourierTransform &operator=(const CFourierTransform &) = delete;

    static constexpr int kLargestDirectFactor = 61;

    std::int64_t Length() const { return m_length; }
    Method UsedMethod() const { return m_method; }
    // The radices of the mixed-radix split, outermost first (empty for the
    // chirp-z method).
    const std::vector<int> &Radices() const { return m_radices; }

    // Transforms `data` (Length() values) in place.  False when the progress
    // callback cancelled; the data are then undefined.
    bool Forward(std::complex<double> *data, const Progress &progress = {});

    // The smallest prime factor of n (n itself for a prime, 1 for n <= 1),
    // through the cache.
    static std::int64_t SmallestFactor(std::int64_t n);
    // The largest prime factor of n.
    static std::int64_t LargestFactor(std::int64_t n);

private:
    struct Cx
    {
        double re, im;
    };

    void buildTable();
    void buildChirp();
    bool mixedRadix(Cx *in, Cx *out, const Progress &progress);
    struct Level
    {
        int p;              // radix
        std::int64_t m;     // length of each of the p parts
        std::int64_t table; // first factor of this level in m_twiddles
        std::int64_t units; // first of the p roots exp(-2 pi i q / p) in m_units
    };
    void work(Cx *out, const Cx *in, std::int64_t fstride, const Level *level, bool top);
    void workSorted(Cx *out, Cx *in, Cx *spare, const Level *level, bool top);
    void butterflies(Cx *out, const Level &level);
    void butterfly2(Cx *out, const Level &level);
    void butterfly3(Cx *out, const Level &level);
    void butterfly4(Cx *out, const Level &level);
    void butterfly5(Cx *out, const Level &level);
    void butterfly8(Cx *out, const Level &level);
    void butterflyOdd(Cx *out, const Level &level);
    void account(std::int64_t values);

    std::int64_t m_length;
    Method m_method;
    std::vector<int> m_radices;
    std::vector<Level> m_levels;
    std::vector<Cx> m_twiddles;   // per level: exp(-2 pi i j k / n), j = 1..p-1, for each k < m
    std::vector<Cx> m_units;      // roots of unity of the odd radices
    std::vector<Cx> m_scratch;    // N values
    std::vector<Cx> m_spare;      // N values, for the sorting of long levels
    std::vector<Cx> m_oddScratch; // generic odd radices

    // chirp-z form
    std::unique_ptr<CFourierTransform> m_inner; // power-of-two length M
    std::vector<Cx> m_chirp;                    // exp(-i pi k^2 / N), k < N
    std::vector<Cx> m_chirpSpectrum;            // transform of the conjugate chirp, / M
    std::vector<Cx> m_work;                     // M values

    // progress of one run
    const Progress *m_progress = nullptr;
    double m_totalWork = 0;
    double m_doneWork = 0;
    double m_nextReport = 0;
    double m_workOffset = 0, m_workScale = 1;
    bool m_cancelled = false;
};
