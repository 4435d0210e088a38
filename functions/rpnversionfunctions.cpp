#include "functions/rpnversionfunctions.h"

#include "formula/rpnkeywords.h"
#include "functions/rpnfunctionbase.h"

#include <cmath>

void CNode_GetVersion::Evaluate(CRpnData &result, unsigned char &status)
{
    const int count = std::min(GetOperandCount(), 5);
    for (int i = 0; i < count; ++i) {
        if (m_children[std::size_t(i)])
            WriteBackParameter(m_children[std::size_t(i)], CRpnData(kTarnVersionParts[i]), status);
    }
    if (status == 0) {
        result.SetNull();
        return;
    }
    result.SetText(QStringLiteral("%1.%2.%3.%4")
                       .arg(kTarnVersionParts[0])
                       .arg(kTarnVersionParts[1])
                       .arg(kTarnVersionParts[2])
                       .arg(kTarnVersionParts[3]));
}

void CNode_IsVersion_GE::Evaluate(CRpnData &result, unsigned char &status)
{
    (void)status;
    int answer = 1;
    const int count = std::min(GetOperandCount(), 4);
    for (int i = 0; i < count; ++i) {
        CRpnNode *child = m_children[std::size_t(i)];
        if (!child)
            continue;
        unsigned char own = 1;
        CRpnData value;
        child->Evaluate(value, own);
        if (own == 0)
            continue;
        const double part = value.GetDouble();
        if (std::isnan(part))
            continue;
        const int wanted = int(part);
        if (wanted > kTarnVersionParts[i]) {
            answer = 0;
            break;
        }
        if (wanted < kTarnVersionParts[i])
            break;
    }
    result = CRpnData(answer);
}

void ProvideVersionFunctions(CRpnPrototypeArray &prototypes)
{
    prototypes.SetAt(RPN_NODE_GET_VERSION, new CNode_GetVersion);
    prototypes.SetAt(RPN_NODE_IS_VERSION_GE, new CNode_IsVersion_GE);
}
