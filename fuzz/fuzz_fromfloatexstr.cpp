// The number of an edit field with its unit suffix, on any text: a flag of 0
// always goes with the value 0, and what follows a character that no number
// or suffix holds never changes the value.
#include "tool/capture/numbertext.h"

#include <QString>
#include <cmath>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    int flag = -1;
    const double v = FromFloatExStr(text, flag);
    if (flag != 0 && flag != 1)
        std::abort();
    if (flag == 0 && v != 0)
        std::abort();

    int flag2 = -1;
    const double w = FromFloatExStr(text + QStringLiteral(";9k"), flag2);
    const bool same = v == w || (std::isnan(v) && std::isnan(w));
    if (!same || flag2 != flag)
        std::abort();
    return 0;
}
