#pragma once
// Edits of a point text that leave it the master copy: one point is moved or
// removed by rewriting only the group that holds it, so every other group
// keeps its characters (and its digits) as the user or a click wrote them.

#include <QString>
#include <QStringView>

// The pairs of the text, in order, as ParsePointText reads them.
int PointTextCount(QStringView text);

// The text with pair `index` replaced by (x, y), written as a click writes a
// point.  A group that holds more pairs than one is rewritten as one group a
// pair.  An index outside the pairs leaves the text as it was.
QString ReplacePointInText(const QString &text, int index, double x, double y);

// The text without pair `index`; an index outside the pairs leaves it as it was.
QString RemovePointFromText(const QString &text, int index);

// The pairs of the text as tab-separated lines "x<TAB>y", one a point, each
// line ended by a line feed: what a spreadsheet takes as two columns.
QString PointTextAsColumns(QStringView text);
