#include "functionstest.h"

#include "formulatest.h"

#include "functions/rpnfunctions.h"
#include "formula/rpndictionary.h"
#include "formula/rpnexception.h"
#include "formula/rpntree.h"

#include <gtest/gtest.h>

std::string Eval(const QString &text, CEquationTree *tree, int angleMode)
{
    CEquationTree fresh;
    fresh.m_angleMode = angleMode;
    CEquationTree &t = tree ? *tree : fresh;
    auto error = [&t] {
        return "E:" + t.GetErrorMessage().toStdString() + "@" + std::to_string(t.GetErrorRow()) + ","
            + std::to_string(t.GetErrorCol());
    };
    return CompileAndRun(t, text, error);
}

CRpnData Value(const char *utf8, CEquationTree *tree)
{
    CEquationTree fresh;
    CEquationTree &t = tree ? *tree : fresh;
    CRpnData value;
    EXPECT_EQ(t.Compile(QString::fromUtf8(utf8), nullptr, true), 1) << utf8;
    EXPECT_EQ(t.Run(value), 1) << utf8 << ": " << t.GetErrorMessage().toStdString();
    return value;
}

void ExpectCases(const std::vector<ScriptCase> &cases)
{
    for (const ScriptCase &c : cases) {
        CEquationTree tree;
        tree.GetVariables()->SetAt(QStringLiteral("g"), Empty(RPN_CURVE));
        if (*c.setup) {
            const std::string setup = Eval(c.setup, &tree);
            EXPECT_NE(setup.rfind("E:", 0), 0u) << c.setup << " gave " << setup;
        }
        EXPECT_EQ(Eval(c.text, &tree), c.expect) << c.setup << " | " << c.text;
    }
}

std::string FunctionMessage(const std::string &text)
{
    return "E:" + text + "@1,0";
}

std::string Message(int id)
{
    return GetMessageText(id).toStdString();
}

namespace {

class FunctionLibrary : public ::testing::Environment
{
public:
    void SetUp() override { RegisterFunctionLibrary(); }
};
const auto *const g_library = ::testing::AddGlobalTestEnvironment(new FunctionLibrary);

} // namespace
