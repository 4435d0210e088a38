#pragma once
// The record of a function defined in a script with FUNCTION: its name, its
// parameters with their defaults and flags, and its compiled body.  The
// scanner fills in the name and the parameters; the compiler adds the body.

#include "formula/rpndata.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <cstdint>

class CRpnNode;
class CEquationTree;

class CRpnUserFunction
{
public:
    enum : std::uint32_t { ParamByReference = 1 };

    CRpnUserFunction() = default;
    CRpnUserFunction(const CRpnUserFunction &) = delete;
    CRpnUserFunction &operator=(const CRpnUserFunction &) = delete;
    virtual ~CRpnUserFunction();

    int GetParameterCount() const { return int(m_parameterNames.size()); }
    bool IsByReference(int i) const { return (m_parameterFlags.value(i) & ParamByReference) != 0; }

    QString m_name;
    QStringList m_parameterNames;
    QList<CRpnData> m_defaults;         // the null value where none was written
    QList<std::uint32_t> m_parameterFlags;
    CRpnNode *m_body = nullptr;         // owned
    CEquationTree *m_owner = nullptr;   // not owned
};
