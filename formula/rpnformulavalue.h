#pragma once
// Formulas as values: the arithmetic that defers to a formula, and the
// support object through which values reach compiled trees.

class CRpnNode;
class CRpnData;

// A new FORMULA whose expression is a copy of `node` over `operands`: a
// FORMULA operand gives a copy of its tree's expression, any other value a
// constant.  The new tree takes over the settings and the variables of the
// first formula operand's tree.
void MakeFormulaOfNode(const CRpnNode *node, const CRpnData *operands, int count, CRpnData &result);

// Registers the equation tree with the values (once; the first tree does it).
void RegisterFormulaSupport();
