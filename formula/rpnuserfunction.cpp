#include "formula/rpnuserfunction.h"

#include "formula/rpnnode.h"

CRpnUserFunction::~CRpnUserFunction()
{
    delete m_body;
}
