#include "formula/rpnseams.h"

namespace {
// Set once at start-up and read afterwards, like the keyword table.
CRpnFormulaSupport *g_formulaSupport = nullptr;
CRpnXmlSupport *g_xmlSupport = nullptr;
} // namespace

void SetRpnFormulaSupport(CRpnFormulaSupport *support)
{
    g_formulaSupport = support;
}

void SetRpnXmlSupport(CRpnXmlSupport *support)
{
    g_xmlSupport = support;
}

CRpnFormulaSupport *GetRpnFormulaSupport()
{
    return g_formulaSupport;
}

CRpnXmlSupport *GetRpnXmlSupport()
{
    return g_xmlSupport;
}
