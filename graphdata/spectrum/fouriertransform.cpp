#include "graphdata/spectrum/fouriertransform.h"

#include <cmath>
#include <cstring>
#include <mutex>
#include <numbers>
#include <unordered_map>

namespace {

std::mutex g_factorLock;
std::unordered_map<std::int64_t, std::int64_t> g_smallestFactor;

// Twiddle factors at or past this many values report progress.
const std::int64_t kReportLevel = 1 << 12;

// Levels of this many values or more sort their input first (workSorted).
const std::int64_t kSortLevel = 1 << 15;

} // namespace

std::int64_t CFourierTransform::SmallestFactor(std::int64_t n)
{
    if (n <= 1)
        return 1;
    if (n % 2 == 0)
        return 2;
    {
        std::lock_guard<std::mutex> guard(g_factorLock);
        auto it = g_smallestFactor.find(n);
        if (it != g_smallestFactor.end())
            return it->second;
    }
    std::int64_t p = n;
    for (std::int64_t d = 3; d * d <= n; d += 2) {
        if (n % d == 0) {
            p = d;
            break;
        }
    }
    std::lock_guard<std::mutex> guard(g_factorLock);
    g_smallestFactor.emplace(n, p);
    return p;
}

std::int64_t CFourierTransform::LargestFactor(std::int64_t n)
{
    std::int64_t largest = 1;
    while (n > 1) {
        const std::int64_t p = SmallestFactor(n);
        largest = std::max(largest, p);
        n /= p;
    }
    return largest;
}

CFourierTransform::CFourierTransform(std::int64_t length, Method method)
    : m_length(length < 1 ? 1 : length), m_method(method)
{
    if (m_method == Method::Automatic)
        m_method = LargestFactor(m_length) > kLargestDirectFactor ? Method::ChirpZ : Method::MixedRadix;
    if (m_method == Method::ChirpZ && m_length > 1) {
        buildChirp();
        return;
    }
    m_method = Method::MixedRadix;
    // Radix 8, then 4, while they divide what is left (fewer passes over
    // the data than radix 2), then the smallest prime factor level by level.
    std::int64_t n = m_length;
    while (n % 8 == 0 && n > 8) {
        m_radices.push_back(8);
        n /= 8;
    }
    while (n % 4 == 0 && n > 4) {
        m_radices.push_back(4);
        n /= 4;
    }
    while (n > 1) {
        const std::int64_t p = SmallestFactor(n);
        m_radices.push_back(int(p));
        n /= p;
    }
    int largestOdd = 0;
    for (int p : m_radices)
        if (p > 5)
            largestOdd = std::max(largestOdd, p);
    m_oddScratch.resize(std::size_t(3 * largestOdd));
    buildTable();
    m_scratch.resize(std::size_t(m_length));
    if (m_length >= kSortLevel)
        m_spare.resize(std::size_t(m_length));
}

CFourierTransform::~CFourierTransform() = default;

void CFourierTransform::buildTable()
{
    const std::int64_t n = m_length;
    std::vector<Cx> full(static_cast<std::size_t>(n));
    // One sine and cosine per entry of the first eighth; the rest by the
    // symmetries of the circle when eight divides the length, so that the
    // table is as exact as its first eighth.
    const double step = 2 * std::numbers::pi / double(n);
    if (n % 8 == 0) {
        const std::int64_t e = n / 8;
        for (std::int64_t k = 0; k <= e; ++k) {
            const double c = std::cos(step * double(k)), s = std::sin(step * double(k));
            full[k] = {c, -s};         // angle a
            full[2 * e - k] = {s, -c}; // pi/2 - a
        }
        for (std::int64_t k = 0; k < 2 * e; ++k) {
            const Cx t = full[k];
            full[k + 2 * e] = {t.im, -t.re}; // a + pi/2: times -i
        }
        for (std::int64_t k = 0; k < 4 * e; ++k) {
            const Cx t = full[k];
            full[k + 4 * e] = {-t.re, -t.im}; // a + pi
        }
    } else {
        for (std::int64_t k = 0; k < n; ++k)
            full[k] = {std::cos(step * double(k)), -std::sin(step * double(k))};
    }

    // Level by level: a level of length l = p m needs exp(-2 pi i j k / l)
    // for j = 1..p-1 and k < m, that is entry (N / l) j k of the table.
    std::int64_t size = 0, unitCount = 0, l = n;
    for (int p : m_radices) {
        const std::int64_t m = l / p;
        m_levels.push_back({p, m, size, unitCount});
        size += (p - 1) * m;
        if (p > 5)
            unitCount += p;
        l = m;
    }
    m_twiddles.resize(std::size_t(size));
    m_units.resize(std::size_t(unitCount));
    l = n;
    for (const Level &level : m_levels) {
        const std::int64_t stride = n / l;
        Cx *t = m_twiddles.data() + level.table;
        for (std::int64_t k = 0; k < level.m; ++k)
            for (int j = 1; j < level.p; ++j)
                *t++ = full[std::size_t((stride * j * k) % n)];
        if (level.p > 5) {
            for (int q = 0; q < level.p; ++q)
                m_units[level.units + q] = full[std::size_t(q * (n / level.p))];
        }
        l = level.m;
    }
}

void CFourierTransform::buildChirp()
{
    const std::int64_t n = m_length;
    std::int64_t m = 1;
    while (m < 2 * n - 1)
        m *= 2;
    m_inner = std::make_unique<CFourierTransform>(m, Method::MixedRadix);
    // exp(-i pi k^2 / N) with k^2 reduced modulo 2N in integers, so that the
    // angle keeps its precision for large k.
    m_chirp.resize(std::size_t(n));
    const std::int64_t twoN = 2 * n;
    const double unit = std::numbers::pi / double(n);
    std::int64_t sq = 0; // k^2 mod 2N
    for (std::int64_t k = 0; k < n; ++k) {
        const double a = unit * double(sq);
        m_chirp[k] = {std::cos(a), -std::sin(a)};
        sq = (sq + 2 * k + 1) % twoN;
    }
    m_work.assign(std::size_t(m), Cx{0, 0});
    m_chirpSpectrum.assign(std::size_t(m), Cx{0, 0});
    m_chirpSpectrum[0] = {m_chirp[0].re, -m_chirp[0].im};
    for (std::int64_t k = 1; k < n; ++k) {
        const Cx c = {m_chirp[k].re, -m_chirp[k].im};
        m_chirpSpectrum[k] = c;
        m_chirpSpectrum[m - k] = c;
    }
    m_inner->Forward(reinterpret_cast<std::complex<double> *>(m_chirpSpectrum.data()));
    const double scale = 1.0 / double(m);
    for (Cx &c : m_chirpSpectrum) {
        c.re *= scale;
        c.im *= scale;
    }
}

bool CFourierTransform::Forward(std::complex<double> *data, const Progress &progress)
{
    static_assert(sizeof(Cx) == sizeof(std::complex<double>));
    Cx *x = reinterpret_cast<Cx *>(data);
    const std::int64_t n = m_length;
    if (n == 1)
        return !progress || progress(1.0);
    if (m_method == Method::MixedRadix) {
        std::memcpy(m_scratch.data(), x, sizeof(Cx) * std::size_t(n));
        return mixedRadix(m_scratch.data(), x, progress);
    }

    // Chirp-z: X[k] = w[k] * sum_j (x[j] w[j]) conj(w[k - j]), with
    // w[k] = exp(-i pi k^2 / N); the sum is a cyclic convolution of length M.
    const std::int64_t m = m_inner->Length();
    for (std::int64_t k = 0; k < n; ++k) {
        const Cx a = x[k], w = m_chirp[k];
        m_work[k] = {a.re * w.re - a.im * w.im, a.re * w.im + a.im * w.re};
    }
    std::fill(m_work.begin() + n, m_work.end(), Cx{0, 0});
    Progress stage;
    int part = 0;
    if (progress)
        stage = [&](double f) { return progress((part + f) / 2); };
    std::complex<double> *w = reinterpret_cast<std::complex<double> *>(m_work.data());
    if (!m_inner->Forward(w, stage))
        return false;
    // Product with the chirp's spectrum, conjugated, so that a second
    // forward transform gives the conjugate of the inverse one.
    for (std::int64_t k = 0; k < m; ++k) {
        const Cx a = m_work[k], b = m_chirpSpectrum[k];
        m_work[k] = {a.re * b.re - a.im * b.im, -(a.re * b.im + a.im * b.re)};
    }
    part = 1;
    if (!m_inner->Forward(w, stage))
        return false;
    for (std::int64_t k = 0; k < n; ++k) {
        const Cx a = {m_work[k].re, -m_work[k].im}, c = m_chirp[k];
        x[k] = {a.re * c.re - a.im * c.im, a.re * c.im + a.im * c.re};
    }
    return true;
}

bool CFourierTransform::mixedRadix(Cx *in, Cx *out, const Progress &progress)
{
    m_progress = progress ? &progress : nullptr;
    m_cancelled = false;
    // Levels of kReportLevel values or more report, and the top one.
    int levels = 0;
    for (std::size_t i = 0; i < m_levels.size(); ++i)
        if (m_levels[i].p * m_levels[i].m >= kReportLevel || i == 0)
            ++levels;
    m_totalWork = double(m_length) * levels;
    m_doneWork = 0;
    m_nextReport = m_totalWork / 50;
    workSorted(out, in, m_spare.data(), m_levels.data(), true);
    m_progress = nullptr;
    if (!m_cancelled && progress)
        return progress(1.0);
    return !m_cancelled;
}

void CFourierTransform::account(std::int64_t values)
{
    m_doneWork += double(values);
    if (m_progress && m_doneWork >= m_nextReport) {
        m_nextReport = m_doneWork + m_totalWork / 50;
        if (!(*m_progress)(m_doneWork / m_totalWork))
            m_cancelled = true;
    }
}

namespace {

struct C
{
    double re, im;
};
inline C mul(C a, C b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
inline C add(C a, C b) { return {a.re + b.re, a.im + b.im}; }
inline C sub(C a, C b) { return {a.re - b.re, a.im - b.im}; }

// The four-point transform of a0..a3.
inline void dft4(C a0, C a1, C a2, C a3, C &y0, C &y1, C &y2, C &y3)
{
    const C t0 = add(a0, a2), t1 = sub(a0, a2), t2 = add(a1, a3), t3 = sub(a1, a3);
    y0 = add(t0, t2);
    y2 = sub(t0, t2);
    y1 = {t1.re + t3.im, t1.im - t3.re};
    y3 = {t1.re - t3.im, t1.im + t3.re};
}

// The eight-point transform of a[0..7], written to y[0], y[m], ... y[7m]:
// two four-point transforms of the even and odd values, joined with the
// eighth roots of unity.
inline void dft8(const C *a, C *y, std::int64_t m)
{
    const double h = 0.70710678118654752; // sqrt(1/2)
    C e0, e1, e2, e3, o0, o1, o2, o3;
    dft4(a[0], a[2], a[4], a[6], e0, e1, e2, e3);
    dft4(a[1], a[3], a[5], a[7], o0, o1, o2, o3);
    const C w1 = {h * (o1.re + o1.im), h * (o1.im - o1.re)};  // (1 - i) / sqrt 2
    const C w2 = {o2.im, -o2.re};                             // -i
    const C w3 = {h * (o3.im - o3.re), -h * (o3.re + o3.im)}; // (-1 - i) / sqrt 2
    y[0] = add(e0, o0);
    y[4 * m] = sub(e0, o0);
    y[m] = add(e1, w1);
    y[5 * m] = sub(e1, w1);
    y[2 * m] = add(e2, w2);
    y[6 * m] = sub(e2, w2);
    y[3 * m] = add(e3, w3);
    y[7 * m] = sub(e3, w3);
}

const double kC1 = 0.30901699437494745;  // cos(2 pi / 5)
const double kC2 = -0.80901699437494734; // cos(4 pi / 5)
const double kS1 = 0.95105651629515353;  // sin(2 pi / 5)
const double kS2 = 0.58778525229247325;  // sin(4 pi / 5)

inline void dft5(C a0, C a1, C a2, C a3, C a4, C *y, std::int64_t m)
{
    const C sa = add(a1, a4), da = sub(a1, a4), sb = add(a2, a3), db = sub(a2, a3);
    const C m1 = {a0.re + kC1 * sa.re + kC2 * sb.re, a0.im + kC1 * sa.im + kC2 * sb.im};
    const C m2 = {a0.re + kC2 * sa.re + kC1 * sb.re, a0.im + kC2 * sa.im + kC1 * sb.im};
    const C n1 = {kS1 * da.re + kS2 * db.re, kS1 * da.im + kS2 * db.im};
    const C n2 = {kS2 * da.re - kS1 * db.re, kS2 * da.im - kS1 * db.im};
    y[0] = {a0.re + sa.re + sb.re, a0.im + sa.im + sb.im};
    y[m] = {m1.re + n1.im, m1.im - n1.re};
    y[4 * m] = {m1.re - n1.im, m1.im + n1.re};
    y[2 * m] = {m2.re + n2.im, m2.im - n2.re};
    y[3 * m] = {m2.re - n2.im, m2.im + n2.re};
}

} // namespace

#define AS_C(p) reinterpret_cast<C *>(p)

// One level: `out` receives the transform of length p * m of the values
// in[0], in[fstride], in[2 fstride] ...
void CFourierTransform::work(Cx *o, const Cx *i, std::int64_t fstride, const Level *level, bool top)
{
    if (m_cancelled)
        return;
    const int p = level->p;
    const std::int64_t m = level->m;
    if (m == 1) {
        // The last level: a plain transform of p values, no twiddles.
        C *out = AS_C(o);
        const C *in = reinterpret_cast<const C *>(i);
        if (p == 4) {
            dft4(in[0], in[fstride], in[2 * fstride], in[3 * fstride], out[0], out[1], out[2], out[3]);
            return;
        }
        if (p == 8) {
            C a[8];
            for (int j = 0; j < 8; ++j)
                a[j] = in[j * fstride];
            dft8(a, out, 1);
            return;
        }
        if (p == 2) {
            const C a = in[0], b = in[fstride];
            out[0] = add(a, b);
            out[1] = sub(a, b);
            return;
        }
        if (p == 5) {
            dft5(in[0], in[fstride], in[2 * fstride], in[3 * fstride], in[4 * fstride], out, 1);
            return;
        }
        for (int j = 0; j < p; ++j)
            out[j] = in[j * fstride];
    } else {
        const std::int64_t step = fstride * p;
        for (int j = 0; j < p; ++j)
            work(o + j * m, i + j * fstride, step, level + 1, false);
        if (m_cancelled)
            return;
    }
    butterflies(o, *level);
    if (p * m >= kReportLevel || top)
        account(p * m);
}

// A level of many values first sorts its (contiguous) input into its p
// parts, one after the other, so that the levels below read in sequence
// instead of striding across all of memory; `spare` is as long as the
// input and may be overwritten, and so may `in`.
void CFourierTransform::workSorted(Cx *out, Cx *in, Cx *spare, const Level *level, bool top)
{
    if (m_cancelled)
        return;
    const int p = level->p;
    const std::int64_t m = level->m;
    if (p * m < kSortLevel || m == 1) {
        work(out, in, 1, level, top);
        return;
    }
    for (std::int64_t i = 0; i < m; ++i)
        for (int j = 0; j < p; ++j)
            spare[j * m + i] = in[i * p + j];
    for (int j = 0; j < p; ++j)
        workSorted(out + j * m, spare + j * m, in + j * m, level + 1, false);
    if (m_cancelled)
        return;
    butterflies(out, *level);
    account(p * m);
}

void CFourierTransform::butterflies(Cx *out, const Level &level)
{
    switch (level.p) {
    case 2: butterfly2(out, level); break;
    case 3: butterfly3(out, level); break;
    case 4: butterfly4(out, level); break;
    case 5: butterfly5(out, level); break;
    case 8: butterfly8(out, level); break;
    default: butterflyOdd(out, level); break;
    }
}

void CFourierTransform::butterfly2(Cx *o, const Level &level)
{
    C *out = AS_C(o);
    const C *tw = reinterpret_cast<const C *>(m_twiddles.data() + level.table);
    const std::int64_t m = level.m;
    for (std::int64_t k = 0; k < m; ++k) {
        const C a = out[k], b = mul(out[k + m], tw[k]);
        out[k] = add(a, b);
        out[k + m] = sub(a, b);
    }
}

void CFourierTransform::butterfly3(Cx *o, const Level &level)
{
    C *out = AS_C(o);
    const C *tw = reinterpret_cast<const C *>(m_twiddles.data() + level.table);
    const std::int64_t m = level.m;
    const double h = std::numbers::sqrt3 / 2;
    for (std::int64_t k = 0; k < m; ++k, tw += 2) {
        const C a0 = out[k];
        const C a1 = mul(out[k + m], tw[0]);
        const C a2 = mul(out[k + 2 * m], tw[1]);
        const C s = add(a1, a2), d = sub(a1, a2);
        const C mid = {a0.re - 0.5 * s.re, a0.im - 0.5 * s.im};
        out[k] = add(a0, s);
        out[k + m] = {mid.re + h * d.im, mid.im - h * d.re};
        out[k + 2 * m] = {mid.re - h * d.im, mid.im + h * d.re};
    }
}

void CFourierTransform::butterfly4(Cx *o, const Level &level)
{
    C *out = AS_C(o);
    const C *tw = reinterpret_cast<const C *>(m_twiddles.data() + level.table);
    const std::int64_t m = level.m;
    for (std::int64_t k = 0; k < m; ++k, tw += 3) {
        const C a0 = out[k];
        const C a1 = mul(out[k + m], tw[0]);
        const C a2 = mul(out[k + 2 * m], tw[1]);
        const C a3 = mul(out[k + 3 * m], tw[2]);
        dft4(a0, a1, a2, a3, out[k], out[k + m], out[k + 2 * m], out[k + 3 * m]);
    }
}

void CFourierTransform::butterfly8(Cx *o, const Level &level)
{
    C *out = AS_C(o);
    const C *tw = reinterpret_cast<const C *>(m_twiddles.data() + level.table);
    const std::int64_t m = level.m;
    for (std::int64_t k = 0; k < m; ++k, tw += 7) {
        C a[8];
        a[0] = out[k];
        for (int j = 1; j < 8; ++j)
            a[j] = mul(out[k + j * m], tw[j - 1]);
        dft8(a, out + k, m);
    }
}

void CFourierTransform::butterfly5(Cx *o, const Level &level)
{
    C *out = AS_C(o);
    const C *tw = reinterpret_cast<const C *>(m_twiddles.data() + level.table);
    const std::int64_t m = level.m;
    for (std::int64_t k = 0; k < m; ++k, tw += 4) {
        const C a0 = out[k];
        const C a1 = mul(out[k + m], tw[0]);
        const C a2 = mul(out[k + 2 * m], tw[1]);
        const C a3 = mul(out[k + 3 * m], tw[2]);
        const C a4 = mul(out[k + 4 * m], tw[3]);
        dft5(a0, a1, a2, a3, a4, out + k, m);
    }
}

// Any odd prime p: outputs r and p - r share the sums and differences of
// the inputs j and p - j, which halves the products.
void CFourierTransform::butterflyOdd(Cx *o, const Level &level)
{
    C *out = AS_C(o);
    const C *tw = reinterpret_cast<const C *>(m_twiddles.data() + level.table);
    const int p = level.p;
    const std::int64_t m = level.m;
    const int h = (p - 1) / 2;
    C *sums = AS_C(m_oddScratch.data());
    C *diffs = sums + p;
    // cos and sin of 2 pi q / p
    C *unit = diffs + p;
    for (int q = 0; q < p; ++q) {
        const Cx u = m_units[level.units + q];
        unit[q] = {u.re, -u.im};
    }
    for (std::int64_t k = 0; k < m; ++k, tw += p - 1) {
        const C a0 = out[k];
        C total = a0;
        for (int j = 1; j <= h; ++j) {
            const C a = mul(out[k + j * m], tw[j - 1]);
            const C b = mul(out[k + (p - j) * m], tw[p - j - 1]);
            sums[j] = add(a, b);
            diffs[j] = sub(a, b);
            total = add(total, sums[j]);
        }
        for (int r = 1; r <= h; ++r) {
            C c = a0, s = {0, 0};
            int q = 0;
            for (int j = 1; j <= h; ++j) {
                q += r;
                if (q >= p)
                    q -= p;
                const double cs = unit[q].re, sn = unit[q].im;
                c.re += cs * sums[j].re;
                c.im += cs * sums[j].im;
                s.re += sn * diffs[j].re;
                s.im += sn * diffs[j].im;
            }
            // y[r] = c - i s, y[p - r] = c + i s
            out[k + r * m] = {c.re + s.im, c.im - s.re};
            out[k + (p - r) * m] = {c.re - s.im, c.im + s.re};
        }
        out[k] = total;
    }
}
