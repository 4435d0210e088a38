#pragma once
// CNodeVariable::FindPlace: where a variable's value lives, with the two
// common cases (a slot of the running call, a remembered entry of the main
// dictionary) answered inline; everything else goes to FindStorage.

#include "formula/rpnnodes.h"
#include "formula/rpntree.h"
#include "formula/rpnuserfunction.h"

inline CRpnData *CNodeVariable::FindPlace()
{
    CEquationTree *tree = m_tree;
    if (tree && !(m_marks & MarkConstant) && !m_column) {
        if (CRpnCallFrame *frame = tree->GetCallFrame()) {
            if (m_slotFunction == frame->GetFunction() && m_slot >= 0)
                return frame->Slot(m_slot);
        } else if (!tree->m_getVariable && !tree->GetLocalVariables()
                   && m_mainLayout == tree->GetVariables()->GetLayout()) {
            return m_mainSlot;
        }
    }
    return FindStorage();
}
