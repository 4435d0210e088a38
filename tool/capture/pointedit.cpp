#include "tool/capture/pointedit.h"

#include "support/myarrays.h"
#include "tool/capture/pointtext.h"

#include <QList>

namespace {

// One bracketed group of the text and the pairs it holds.
struct PointGroup {
    qsizetype start = 0;
    qsizetype length = 0;
    int firstPair = 0;
    int pairs = 0;
};

void parse(QStringView text, int &count, CMyDoubleArray &pairs)
{
    count = 0;
    ParsePointText(text, count, pairs, true);
}

QList<PointGroup> groups(QStringView text)
{
    QList<PointGroup> out;
    int pairsSoFar = 0;
    qsizetype open = -1;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == u'(' || c == u'[') {
            if (open < 0)
                open = i;
        } else if ((c == u')' || c == u']') && open >= 0) {
            PointGroup g;
            g.start = open;
            g.length = i + 1 - open;
            g.firstPair = pairsSoFar;
            CMyDoubleArray pairs;
            parse(text.mid(g.start, g.length), g.pairs, pairs);
            pairsSoFar += g.pairs;
            if (g.pairs > 0)
                out << g;
            open = -1;
        }
    }
    return out;
}

// Rewrites the group holding pair `index`; `replace` false drops the pair.
QString rewrite(const QString &text, int index, bool replace, double x, double y)
{
    for (const PointGroup &g : groups(text)) {
        if (index < g.firstPair || index >= g.firstPair + g.pairs)
            continue;
        int count = 0;
        CMyDoubleArray pairs;
        parse(QStringView(text).mid(g.start, g.length), count, pairs);
        QString group;
        for (int k = 0; k < count; ++k) {
            if (g.firstPair + k == index) {
                if (replace)
                    AppendPointText(group, x, y);
            } else {
                AppendPointText(group, pairs[2 * k], pairs[2 * k + 1]);
            }
        }
        QString out = text;
        out.replace(g.start, g.length, group);
        return out;
    }
    return text;
}

} // namespace

int PointTextCount(QStringView text)
{
    int count = 0;
    CMyDoubleArray pairs;
    parse(text, count, pairs);
    return count;
}

QString ReplacePointInText(const QString &text, int index, double x, double y)
{
    return rewrite(text, index, true, x, y);
}

QString RemovePointFromText(const QString &text, int index)
{
    return rewrite(text, index, false, 0, 0);
}

QString PointTextAsColumns(QStringView text)
{
    int count = 0;
    CMyDoubleArray pairs;
    parse(text, count, pairs);
    QString out;
    for (int i = 0; i < count; ++i)
        out += QString::number(pairs[2 * i], 'g', 10) + u'\t' + QString::number(pairs[2 * i + 1], 'g', 10) + u'\n';
    return out;
}
