#include "graphdata/computedcurve.h"

#include "support/languagestring.h"

#include <mutex>

namespace {
std::mutex g_evaluatorLock;
ComputedCurveEvaluator g_evaluator;
const int kMessageNotAvailable = 41211;
} // namespace

ComputedCurveEvaluator SetComputedCurveEvaluator(ComputedCurveEvaluator evaluator)
{
    std::lock_guard<std::mutex> guard(g_evaluatorLock);
    std::swap(g_evaluator, evaluator);
    return evaluator;
}

bool HasComputedCurveEvaluator()
{
    std::lock_guard<std::mutex> guard(g_evaluatorLock);
    return bool(g_evaluator);
}

bool EvaluateComputedCurve(CGraphCurve &graph, CCurveInfo &curve, QString &error, int &errorPosition)
{
    ComputedCurveEvaluator evaluator;
    {
        std::lock_guard<std::mutex> guard(g_evaluatorLock);
        evaluator = g_evaluator;
    }
    error.clear();
    errorPosition = -1;
    if (!evaluator) {
        error = LanguageString(kMessageNotAvailable);
        return false;
    }
    return evaluator(graph, curve, error, errorPosition);
}
