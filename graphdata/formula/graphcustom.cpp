#include "graphdata/formula/graphcustom.h"

#include "support/registry.h"

#include <memory>

namespace {

const QString kKey = QStringLiteral("UserFunction");

struct KindNames
{
    const char *count;
    const char *item;
};

bool kindNames(int kind, KindNames &out)
{
    switch (kind) {
    case CGraphCustom::KindPostProcess: out = {"PostProcessCount", "PostProcess%1"}; return true;
    case CGraphCustom::KindFunction: out = {"FunctionCount", "Function%1"}; return true;
    case CGraphCustom::KindFormula: out = {"FormulaCount", "Formula%1"}; return true;
    default: return false;
    }
}

std::unique_ptr<CGraphCustom> &instance()
{
    static std::unique_ptr<CGraphCustom> custom;
    return custom;
}

} // namespace

bool ParseItem(QString &text, bool blank, int &open, int &close, QString &head, QStringList *params)
{
    open = int(text.indexOf(u'{'));
    close = int(text.lastIndexOf(u'}'));
    if (open < 1 || close <= open)
        return false;
    head = text.left(open).trimmed();
    if (params) {
        params->clear();
        const int first = int(head.indexOf(u'('));
        const int last = int(head.lastIndexOf(u')'));
        if (first > 0 && last > 0) {
            const QString list = head.mid(first + 1, last - first - 1);
            for (const QString &p : list.split(u','))
                params->append(p.trimmed());
            head = head.left(first).trimmed();
        }
    }
    if (head.isEmpty())
        return false;
    if (blank) {
        for (int i = 0; i <= open; ++i) {
            if (text[i].unicode() > 32)
                text[i] = u' ';
        }
        text.truncate(close);
    }
    return true;
}

int CGraphCustom::LoadKind(int kind, QStringList &names, QStringList &bodies, QStringList *params)
{
    KindNames keys;
    if (!kindNames(kind, keys))
        return 0;
    names.clear();
    bodies.clear();
    if (params)
        params->clear();
    const QString countName = QString::fromLatin1(keys.count);
    // A count that is not there reads as the impossible value.
    const std::uint32_t missing = 0xFFFFFFFFu;
    const std::uint32_t count = RegistryGetDword(kKey, countName, missing);
    if (count == missing)
        return 0;
    for (std::uint32_t n = 1; n <= count && n < 100000; ++n) {
        QString text = RegistryGetString(kKey, QString::fromLatin1(keys.item).arg(n), QString());
        int open = 0, close = 0;
        QString head;
        QStringList itemParams;
        if (!ParseItem(text, false, open, close, head, params ? &itemParams : nullptr))
            continue;
        names.append(head);
        bodies.append(text.mid(open + 1, close - open - 1));
        if (params)
            params->append(itemParams.join(u','));
    }
    return 1;
}

void CGraphCustom::LoadAll()
{
    LoadKind(KindPostProcess, m_postProcessNames, m_postProcessBodies, &m_postProcessParams);
    LoadKind(KindFunction, m_functionNames, m_functionBodies);
    LoadKind(KindFormula, m_formulaNames, m_formulaBodies);
}

int CGraphCustom::GetFunctions(QStringList &names, QStringList &bodies) const
{
    names = m_functionNames;
    bodies = m_functionBodies;
    return int(names.size());
}

void CGraphCustom::SaveFunctions(const QStringList &items)
{
    KindNames keys;
    kindNames(KindFunction, keys);
    const QString countName = QString::fromLatin1(keys.count);
    const int oldCount = int(RegistryGetDword(kKey, countName, 0));
    for (int i = 0; i < items.size(); ++i)
        RegistrySetString(kKey, QString::fromLatin1(keys.item).arg(i + 1), items[i]);
    for (int n = int(items.size()) + 1; n <= oldCount; ++n)
        RegistryDeleteValue(kKey, QString::fromLatin1(keys.item).arg(n));
    RegistrySetDword(kKey, countName, std::uint32_t(items.size()));
    LoadKind(KindFunction, m_functionNames, m_functionBodies);
}

CGraphCustom &GetGraphCustom()
{
    std::unique_ptr<CGraphCustom> &custom = instance();
    if (!custom) {
        custom = std::make_unique<CGraphCustom>();
        custom->LoadAll();
    }
    return *custom;
}

void ResetGraphCustom()
{
    instance().reset();
}
