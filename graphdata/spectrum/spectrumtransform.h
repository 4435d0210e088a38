#pragma once
// From samples on an even grid to the four result columns of a spectrum:
// magnitude, phase (radians), and the sine and cosine amplitudes.

#include "graphdata/graphcolumn.h"
#include "graphdata/spectrum/fouriertransform.h"

#include <complex>
#include <vector>

// Kinds of the four result columns.
enum : std::uint32_t {
    KindSpectrumMagnitude = 4,
    KindSpectrumAngle = 20,
    KindSpectrumReal = 132,
    KindSpectrumImag = 164,
};

// The transform length for a grid of `gridCount` points.  Lengths of 2001 or
// more move to a close product of the preferred odd lengths when a list is
// given: the power of two is split off (and above 2000001 a factor 10 with
// the odd part rounded to a multiple of 10), the nearest preferred value is
// taken, and while it is more than 15 away up to six further even
// candidates are tried, keeping the closest.  With an empty list the length
// is the grid count.
int SpectrumLength(int gridCount, const std::vector<int> &preferred = {});

// The real amplitude form a[0..N-1] of c = (transform / N): a[0] = c[0].re,
// a[2k-1] = 2 c[k].re and a[2k] = -2 c[k].im for k = 1 .. (N+1)/2 - 1, and
// for even N a[N-1] = c[N/2].re, not doubled.
void PackAmplitudes(const std::complex<double> *c, int n, double *a);

// The spectrum of up to n samples of `samples`, taken at rows first, first +
// stride, ... (a missing row counts as 0; an invalid one ends the samples,
// the rest counting as 0).  The four columns are made with
// SpectrumBins(n) rows, named after the samples ("_Angle", "_Real", "_Img"
// appended), and filled:
//   magnitude[0] = |a[0]|, real[0] = magnitude[0], angle[0] = imag[0] = 0;
//   magnitude[k] = sqrt(a[2k-1]^2 + a[2k]^2), angle[k] = atan2(a[2k-1],
//   a[2k]), real[k] = a[2k] (sine amplitude), imag[k] = a[2k-1] (cosine).
// A magnitude that is not finite leaves that row and the rest empty.
// Returns 1 when transformed; 0 for a constant input, which gives the DC
// value alone (the columns are filled); -1 when there are fewer than two
// samples or the progress callback cancelled (no columns).
// `transform` may be given to reuse a transform of length n.
int Spectrum(int first, int n, int stride, const CGraphColumn *samples, CGraphColumnPtr &magnitude,
             CGraphColumnPtr &angle, CGraphColumnPtr &real, CGraphColumnPtr &imag,
             const CFourierTransform::Progress &progress = {}, CFourierTransform *transform = nullptr);

// Four columns of `rows` missing rows with the kinds of the results and the
// names made from `name`: what stands in for a spectrum that failed.
void EmptySpectrum(int rows, const QString &name, CGraphColumnPtr &magnitude, CGraphColumnPtr &angle,
                   CGraphColumnPtr &real, CGraphColumnPtr &imag);
