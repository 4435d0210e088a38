#include "formula/rpnseams.h"

namespace {
// Set once at start-up and read afterwards, like the keyword table.
CRpnFormulaSupport *g_formulaSupport = nullptr;
} // namespace

void SetRpnFormulaSupport(CRpnFormulaSupport *support)
{
    g_formulaSupport = support;
}

CRpnFormulaSupport *GetRpnFormulaSupport()
{
    return g_formulaSupport;
}
