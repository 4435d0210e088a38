// The point-text parser on any text: it must neither crash nor read or write
// out of bounds, and what it finds must survive being written and read again.
#include "support/myarrays.h"
#include "tool/capture/pointtext.h"

#include <QString>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    // The first byte is the caller's size hint and the suffix switch.
    const int hint = data[0] >> 1;
    const bool suffixes = data[0] & 1;
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data + 1), qsizetype(size - 1));

    int count = hint;
    CMyDoubleArray pairs;
    ParsePointText(text, count, pairs, suffixes);
    if (count < 0 || 2 * count > pairs.GetSize())
        std::abort();

    const QString again = FormatPointText(pairs.GetData(), count);
    int countAgain = 0;
    CMyDoubleArray pairsAgain;
    ParsePointText(again, countAgain, pairsAgain, suffixes);
    if (countAgain != count)
        std::abort();
    return 0;
}
