#include "formulatest.h"

#include "formula/rpnexception.h"
#include "formula/rpntree.h"
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

int MessageIdOf(const QString &text)
{
    static const int ids[] = {41655, 41656, 41657, 41658, 41659, 41830, 43027, 43028, 43029, 43030, 43031,
                              43032, 43034, 43035, 43047, 43166, 43167, 43170, 43192, 43198, 43217, 43241,
                              43242, 43243, 43300, 43301, 43302};
    for (int id : ids) {
        const QString prefix = GetMessageText(id).section(u'%', 0, 0);
        if (!prefix.isEmpty() && text.startsWith(prefix))
            return id;
    }
    return 0;
}

std::string CompileAndRun(CEquationTree &t, const QString &text, const std::function<std::string()> &error)
{
    if (!t.Compile(text, nullptr, true))
        return error();
    CRpnData value;
    try {
        if (t.Run(value) != 1)
            return error();
    } catch (const CRpnException &) {
        return error();
    }
    return Describe(value);
}

std::string Calculate(const QString &text, CEquationTree *tree)
{
    CEquationTree fresh;
    CEquationTree &t = tree ? *tree : fresh;
    auto error = [&t] {
        return QStringLiteral("E%1@%2,%3")
            .arg(MessageIdOf(t.GetErrorMessage()))
            .arg(t.GetErrorRow())
            .arg(t.GetErrorCol())
            .toStdString();
    };
    return CompileAndRun(t, text, error);
}

namespace {

class EnglishTexts : public ::testing::Environment
{
public:
    void SetUp() override { ASSERT_TRUE(LoadLanguageFile(EnglishLanguageFile())); }
};

const auto *const g_englishTexts = ::testing::AddGlobalTestEnvironment(new EnglishTexts);

} // namespace
