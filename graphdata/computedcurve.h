#pragma once
// Computed curves (origin 1) are compiled and evaluated by the formula
// library, which sits above this layer.  It registers an evaluator here;
// until one is registered, evaluation fails with text 41211.

#include <QString>
#include <functional>

class CGraphCurve;
class CCurveInfo;

// Fills curve.m_computedColumn from the formula in curve.m_colName over the
// graph's data.  On failure: false, with the error text and its position in
// the formula (-1 when it has none).
using ComputedCurveEvaluator =
    std::function<bool(CGraphCurve &graph, CCurveInfo &curve, QString &error, int &errorPosition)>;

// Installs an evaluator and returns the previous one.
ComputedCurveEvaluator SetComputedCurveEvaluator(ComputedCurveEvaluator evaluator);
bool HasComputedCurveEvaluator();
bool EvaluateComputedCurve(CGraphCurve &graph, CCurveInfo &curve, QString &error, int &errorPosition);
