// The table reader on any text and each type: it ends with a table or a
// message, the table's sizes agree with its arrays, and lookups anywhere in
// and around it stay inside the arrays.
#include "functions/rpntablefunctions.h"
#include "support/languagestring.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    // A refusal's message is a numbered text: the reader needs the texts,
    // as it has them in the programs.
    static const bool texts = LoadLanguageFile(QStringLiteral(TARN_EN_LANG));
    if (!texts)
        std::abort();
    if (size == 0)
        return 0;
    // The first byte picks the type, the rest is the text.
    const int types[] = {CRpnTableRecord::XY, CRpnTableRecord::Interpolation2D, CRpnTableRecord::Integer2D,
                         CRpnTableRecord::Interpolation3D};
    const int type = types[data[0] % 4];
    const std::string_view text(reinterpret_cast<const char *>(data + 1), size - 1);
    CRpnTableRecord table;
    QString error;
    if (!ParseTableText(text, type, table, error)) {
        if (error.isEmpty())
            std::abort(); // a refusal always says why
        return 0;
    }
    if (type == CRpnTableRecord::XY) {
        if (table.axis1.size() != std::size_t(table.count1) || table.axis2.size() != table.axis1.size())
            std::abort();
    } else if (!table.slices.empty()) {
        for (const auto &slice : table.slices)
            if (slice.size() != std::size_t(table.count1) * std::size_t(table.count2))
                std::abort();
    }
    const double probes[] = {-1e300, -1, 0, 0.5, 1, 2.51, 1e300, NAN};
    for (double x : probes)
        for (double y : probes)
            (void)table.ValueAt(x, y, x);
    return 0;
}
