// The real functions: the failing ones, the complex forms of sqrt and sqr,
// and the angle unit.

#include "functions/rpnrealfunctions.h"

#include "functions/rpnfunctionbase.h"
#include "formula/rpnkeywords.h"
#include "formula/rpntree.h"

#include <complex>

namespace {

constexpr int kMsgNegativeRoot = 41656;
constexpr int kMsgLogarithm = 41657;
constexpr int kMsgLogarithm10 = 41658;

double fail(CRpnNode *node, unsigned char &status, int id)
{
    ReportFunctionFailure(node, status, GetMessageText(id));
    return 0.0;
}

} // namespace

// --- sqrt -------------------------------------------------------------------------------------

double CNodeSqrt::ApplyReal(double a, double, unsigned char &status)
{
    if (a < 0.0)
        return fail(this, status, kMsgNegativeRoot);
    return std::sqrt(a);
}

void CNodeSqrt::ApplyComplex(CRpnData &result, const CRpnData &a, const CRpnData &, unsigned char &)
{
    // Half the angle, the root of the magnitude.
    const std::complex<double> z = a.GetComplex();
    const double r = std::sqrt(z.real() * z.real() + z.imag() * z.imag());
    const double t = std::atan2(z.imag(), z.real());
    result.SetComplex(std::polar(std::pow(r, 0.5), t * 0.5));
}

// The fast paths of the failing functions leave a bad argument to the
// ordinary evaluation, which reports it.
bool CNodeSqrt::EvaluateFast(double &out)
{
    double a;
    if (!m_operand || !m_operand->EvaluateFast(a) || a < 0.0)
        return false;
    out = std::sqrt(a);
    return true;
}

// --- sqr --------------------------------------------------------------------------------------

void CNodeSqr::ApplyComplex(CRpnData &result, const CRpnData &a, const CRpnData &, unsigned char &)
{
    const std::complex<double> z = a.GetComplex();
    result.SetComplex(z.real() * z.real() - z.imag() * z.imag(), 2.0 * z.real() * z.imag());
}

// --- logarithms ---------------------------------------------------------------------------------

double CNodeLog::ApplyReal(double a, double, unsigned char &status)
{
    if (a <= 0.0)
        return fail(this, status, kMsgLogarithm);
    return std::log(a);
}

bool CNodeLog::EvaluateFast(double &out)
{
    double a;
    if (!m_operand || !m_operand->EvaluateFast(a) || a <= 0.0)
        return false;
    out = std::log(a);
    return true;
}

double CNodeLog10::ApplyReal(double a, double, unsigned char &status)
{
    if (a <= 0.0)
        return fail(this, status, kMsgLogarithm10);
    return std::log10(a);
}

bool CNodeLog10::EvaluateFast(double &out)
{
    double a;
    if (!m_operand || !m_operand->EvaluateFast(a) || a <= 0.0)
        return false;
    out = std::log10(a);
    return true;
}

// --- prototypes ------------------------------------------------------------------------------------

void ProvideRealFunctions(CRpnPrototypeArray &prototypes)
{
    CRpnNode *const nodes[] = {
        new CNodeSqrt, new CNodeSqr, new CNodeSin, new CNodeCos, new CNodeTan, new CNodeAsin, new CNodeAcos,
        new CNodeAtan, new CNodeSinH, new CNodeCosH, new CNodeTanH, new CNodeSinD, new CNodeCosD,
        new CNodeTanD, new CNodeAsinD, new CNodeAcosD, new CNodeAtanD, new CNodeExp, new CNodeLog,
        new CNodeLog10, new CNodeCeil, new CNodeFloor, new CNodeSign, new CNodeAtan2, new CNodeAtan2D,
    };
    for (CRpnNode *node : nodes)
        prototypes.SetAt(node->GetKind(), node);
}
