#include "formulatest.h"

#include "support/languagestring.h"

#include <gtest/gtest.h>

QString EnglishLanguageFile()
{
    return QStringLiteral(TARN_SOURCE_DIR "/lang/en.lang");
}

CRpnData RealItems(std::initializer_list<double> values)
{
    CRpnData a;
    a.SetArray(int(values.size()));
    int i = 0;
    for (double v : values)
        a.SetAt(i++, CRpnData(v));
    return a;
}

CRpnData RealBlock(std::initializer_list<double> values)
{
    CRpnData a;
    a.SetRealArray(int(values.size()));
    int i = 0;
    for (double v : values)
        a.SetRealAt(i++, v);
    return a;
}

CRpnData Text(const char *utf8)
{
    return CRpnData(QString::fromUtf8(utf8));
}

CRpnData Empty(std::uint32_t kind)
{
    CRpnData v;
    if (kind == RPN_ARRAY)
        v.SetArray(0);
    else if (kind == RPN_DICTIONARY)
        v.SetDictionary();
    else if (kind == RPN_CURVE)
        v.SetCurve(nullptr);
    return v;
}

std::string Describe(const CRpnData &v)
{
    return (CRpnData::KindName(v.GetKind()) + u':' + v.GetText(RPN_TEXT_BRACES)).toStdString();
}

namespace {

class EnglishTexts : public ::testing::Environment
{
public:
    void SetUp() override { ASSERT_TRUE(LoadLanguageFile(EnglishLanguageFile())); }
};

const auto *const g_englishTexts = ::testing::AddGlobalTestEnvironment(new EnglishTexts);

} // namespace
