#include "graphdata/spectrum/spectrumtransform.h"

#include "graphdata/spectrum/resample.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

int SpectrumLength(int gridCount, const std::vector<int> &preferred)
{
    const int n = gridCount;
    if (n < 2001 || preferred.empty())
        return n;
    auto nearest = [&](long long target) {
        int best = preferred.front();
        for (int p : preferred)
            if (std::llabs(p - target) < std::llabs(best - target))
                best = p;
        return best;
    };
    // A candidate length: its power of two (and for long grids a factor 10)
    // kept, its odd part moved to the nearest preferred value.
    auto fit = [&](long long candidate, long long &difference) {
        long long twos = 1, odd = candidate;
        while (odd % 2 == 0) {
            odd /= 2;
            twos *= 2;
        }
        long long tens = 1;
        if (candidate > 2000001) {
            odd = (odd + 5) / 10;
            tens = 10;
        }
        const int p = nearest(odd);
        difference = std::llabs(p - odd);
        return p * tens * twos;
    };
    long long difference;
    long long best = fit(n, difference);
    // Then up to six further even candidates above n, keeping the length
    // closest to n.
    long long candidate = n;
    for (int tries = 0; tries < 6 && difference > 15; ++tries) {
        candidate += candidate % 2 == 0 ? 2 : 1;
        const long long length = fit(candidate, difference);
        if (std::llabs(length - n) < std::llabs(best - n))
            best = length;
    }
    return best > 1 && best <= 2LL * n ? int(best) : n;
}

void PackAmplitudes(const std::complex<double> *c, int n, double *a)
{
    a[0] = c[0].real();
    for (int k = 1; k <= (n + 1) / 2 - 1; ++k) {
        a[2 * k - 1] = 2 * c[k].real();
        a[2 * k] = -2 * c[k].imag();
    }
    if (n % 2 == 0)
        a[n - 1] = c[n / 2].real();
}

namespace {

CGraphColumnPtr makeResult(int rows, const QString &name, std::uint32_t kind)
{
    CGraphColumnPtr c = CGraphColumnPtr::Adopt(CGraphColumn::Create(rows, name));
    c->m_kind = kind;
    return c;
}

void makeAll(int rows, const QString &name, CGraphColumnPtr &magnitude, CGraphColumnPtr &angle,
             CGraphColumnPtr &real, CGraphColumnPtr &imag)
{
    magnitude = makeResult(rows, name, KindSpectrumMagnitude);
    angle = makeResult(rows, name + QStringLiteral("_Angle"), KindSpectrumAngle);
    real = makeResult(rows, name + QStringLiteral("_Real"), KindSpectrumReal);
    imag = makeResult(rows, name + QStringLiteral("_Img"), KindSpectrumImag);
}

void setRow(CGraphColumn *c, int row, double v)
{
    c->m_values[row] = v;
    c->m_valid[row] = 1;
    if (row == 0 || v < c->m_minValue)
        c->m_minValue = v;
    if (row == 0 || v > c->m_maxValue)
        c->m_maxValue = v;
}

} // namespace

void EmptySpectrum(int rows, const QString &name, CGraphColumnPtr &magnitude, CGraphColumnPtr &angle,
                   CGraphColumnPtr &real, CGraphColumnPtr &imag)
{
    makeAll(std::max(rows, 0), name, magnitude, angle, real, imag);
}

int Spectrum(int first, int n, int stride, const CGraphColumn *samples, CGraphColumnPtr &magnitude,
             CGraphColumnPtr &angle, CGraphColumnPtr &real, CGraphColumnPtr &imag,
             const CFourierTransform::Progress &progress, CFourierTransform *transform)
{
    magnitude.reset();
    angle.reset();
    real.reset();
    imag.reset();
    if (!samples || n < 2 || first < 0 || stride < 1)
        return -1;

    std::vector<std::complex<double>> x(static_cast<std::size_t>(n), 0.0);
    int count = 0;
    double lo = 0, hi = 0;
    for (long long row = first; count < n && row < samples->m_count; row += stride, ++count) {
        const std::uint8_t byte = samples->m_valid[row];
        if (byte == 2)
            break;
        const double v = byte == 1 ? samples->m_values[row] : 0.0;
        x[count] = v;
        if (count == 0 || v < lo)
            lo = v;
        if (count == 0 || v > hi)
            hi = v;
    }
    if (count < 2)
        return -1;

    const int bins = SpectrumBins(n);
    makeAll(bins, samples->m_name, magnitude, angle, real, imag);
    CGraphColumn *mag = magnitude.Get(), *ang = angle.Get(), *re = real.Get(), *im = imag.Get();

    if (lo == hi) {
        // A constant: its value at DC, nothing elsewhere.
        setRow(mag, 0, x[0].real());
        setRow(re, 0, x[0].real());
        setRow(ang, 0, 0);
        setRow(im, 0, 0);
        for (int k = 1; k < bins; ++k) {
            setRow(mag, k, 0);
            setRow(re, k, 0);
            setRow(ang, k, 0);
            setRow(im, k, 0);
        }
        return 0;
    }

    std::unique_ptr<CFourierTransform> own;
    if (!transform || transform->Length() != n) {
        own = std::make_unique<CFourierTransform>(n);
        transform = own.get();
    }
    if (!transform->Forward(x.data(), progress)) {
        magnitude.reset();
        angle.reset();
        real.reset();
        imag.reset();
        return -1;
    }
    const double scale = 1.0 / n;
    for (auto &c : x)
        c *= scale;
    std::vector<double> a(static_cast<std::size_t>(n));
    PackAmplitudes(x.data(), n, a.data());

    const double dc = std::abs(a[0]);
    setRow(mag, 0, dc);
    setRow(re, 0, dc);
    setRow(ang, 0, 0);
    setRow(im, 0, 0);
    for (int k = 1; k < bins; ++k) {
        const double c = a[2 * k - 1], s = a[2 * k];
        const double m = std::sqrt(c * c + s * s);
        if (!std::isfinite(m))
            break; // this row and the rest stay empty
        setRow(mag, k, m);
        setRow(ang, k, c == 0 && s == 0 ? 0.0 : std::atan2(c, s));
        setRow(re, k, s);
        setRow(im, k, c);
    }
    return 1;
}
