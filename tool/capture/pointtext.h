#pragma once
// The text form of a traced curve, "(x,y)(x,y)(x,y)".  The text is the master
// copy of the points: clicks append to it, and the pairs are always parsed
// back out of it.

#include <QString>
#include <QStringView>

class CMyDoubleArray;

// Appends the group of one clicked point, "(%.5g,%.5g)".  A click keeps five
// significant digits, whatever the picture would allow.
void AppendPointText(QString &text, double x, double y);

// The text of `count` pairs (x0, y0, x1, y1, ... in `pairs`), each "(%G,%G)";
// used when a record is loaded and when the axes are exchanged.
QString FormatPointText(const double *pairs, int count);

// Reads the pairs out of a point text, one character at a time:
//  - "(" and "[" open a group; "," and blanks separate numbers in it;
//    ")" and "]" close it; characters outside a group are ignored.
//  - A group of two numbers is a pair; a group of one number is dropped.
//    Longer groups are read two numbers at a time, so "(1,2,3,4)" gives the
//    pairs (1,2) and (3,4), and the 5 of "(1,2,3,4,5)" is dropped.
//  - With `useUnitSuffixes`, a number may carry a unit letter: "(1k,2m)" is
//    (1000, 0.002).
// `count` comes in as a size hint and leaves as the number of pairs found.
// `pairs` is replaced by a new block of x, y doubles, holding at least
// 2 * count values: it starts at ten pairs more than the hint when the hint is
// from 1 to 99, else at ten pairs, and grows by ten pairs at a time.
void ParsePointText(QStringView text, int &count, CMyDoubleArray &pairs, bool useUnitSuffixes);
