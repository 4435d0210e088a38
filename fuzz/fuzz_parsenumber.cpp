// The number readers on arbitrary text: what they take lies inside the text,
// nothing taken means the value 0, and a STRING value reads the same number.
#include "formula/rpndata.h"
#include "formula/rpnnumber.h"

#include <QString>
#include <cmath>
#include <cstdint>
#include <cstdlib>

namespace {

void check(bool ok)
{
    if (!ok)
        std::abort();
}

bool same(double a, double b)
{
    return a == b || (std::isnan(a) && std::isnan(b));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    int consumed = -1, exponent = 99;
    const double v = ParseNumber(text, consumed, &exponent);
    check(consumed >= 0 && consumed <= text.size());
    check(consumed > 0 || (v == 0.0 && exponent == 0));
    check(exponent >= -12 && exponent <= 12);
    check(same(CRpnData(text).GetDouble(), v));

    int ok = -1;
    const double checked = CRpnData(text).GetDoubleChecked(ok);
    check(ok == (consumed > 0 && consumed == text.size() ? 1 : 0));
    check(ok ? same(checked, v) : checked == 0.0);

    int taken = -1;
    const std::complex<double> c = ParseComplexText(text, taken);
    check(taken >= 0 && taken <= text.size());
    check(taken > 0 || c == std::complex<double>());

    // The printed form of what was read reads back as the same number.
    if (consumed > 0 && std::isfinite(v)) {
        CRpnData value(v);
        int again = 0;
        check(ParseNumber(value.GetText(17), again) == v);
    }
    return 0;
}
