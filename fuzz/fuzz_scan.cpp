// The scanner on arbitrary text: it must not crash, and its items must lie
// inside the text in rising order with sane rows and columns.  Definitions
// found go through the parameter reader too.
#include "formula/rpnexception.h"
#include "formula/rpnscanner.h"
#include "formula/rpnuserfunction.h"

#include <QString>
#include <cstdint>
#include <cstdlib>

namespace {

void check(bool ok)
{
    if (!ok)
        std::abort();
}

void checkList(const CRpnParserItemArray &list, const QString &text, int &lastEnd)
{
    for (const CRpnParserItem *item : list.m_items) {
        check(item->m_position >= lastEnd);
        check(item->m_length > 0);
        check(item->m_position + item->m_length <= text.size());
        check(item->m_row >= 1 && item->m_col >= 0);
        check(item->m_significant == (item->m_kind >= RPN_TOKEN_BLANK && item->m_kind != RPN_TOKEN_OTHER ? 0 : 1));
        lastEnd = item->m_position + item->m_length;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    // The host claims words that start with "Col".
    const CRpnVariableMatcher matcher = [](QStringView rest, int &index) {
        index = 1;
        return rest.startsWith(u"Col") ? 3 : 0;
    };
    CRpnErrorFields errors;
    CRpnParserItemArray root, functions;
    const int result = Scan(&errors, text, root, functions, matcher);
    check(result == 1 || errors.HasError());
    if (result != 1)
        return 0;
    int lastEnd = 0;
    checkList(root, text, lastEnd);
    for (const CRpnParserItem *f : functions.m_items) {
        const CRpnParserFunction *fn = f->AsFunction();
        check(fn && IsValidFunctionName(fn->m_name));
        int end = 0;
        checkList(fn->m_parameters, text, end);
        checkList(fn->m_body, text, end);
        CRpnUserFunction record;
        CRpnErrorFields paramErrors;
        if (ParseParameterList(&paramErrors, text, *fn, record))
            check(record.m_defaults.size() == record.m_parameterNames.size());
        else
            check(paramErrors.HasError());
    }
    return 0;
}
