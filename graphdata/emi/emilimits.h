#pragma once
// The global list of limit lines that a spectrum graph can show: the built-in
// standards first, then the user's own limits kept in the settings under
// "Software\HELIOMAR\TARN\UserEMI" ("EMICount", and "EMI1", "EMI2"... each a
// text of name, label, pair count and the pairs, one per line).
//
// A limit is a CCurveInfo of source 0x102 whose columns hold the frequencies
// in Hz (ownX, and their log10 in ownXLog) and the levels in dB above one
// microvolt (displayColumn, and a copy in ownY and spectrumMagnitude).  The
// rows keep their given order: two equal frequencies make a vertical step.
// The list is used from the user-interface thread only.

#include "graphdata/curveinfo.h"

#include <QString>
#include <vector>

class CGraphCurve;

struct CEmiPair
{
    double frequency;
    double level;
};

struct CEmiBuiltIn
{
    const char *key;
    const char *label;
    std::vector<CEmiPair> pairs;
};

// The built-in standards, in list order.
const std::vector<CEmiBuiltIn> &EmiBuiltInTable();

// A new limit curve of the form above, at list position `index`.
CCurveInfo *BuildEmiLimit(const QString &key, const QString &label, const std::vector<CEmiPair> &pairs,
                          int index);
// The pairs of a limit curve, at most as many as both columns hold.
std::vector<CEmiPair> EmiLimitPairs(const CCurveInfo &limit);

// The list, built on the first call: the built-ins, then the user limits.
CCurveInfoArray &GetEmiLimits();
int EmiBuiltInCount();
bool EmiUserListChanged();
void SetEmiUserListChanged(bool changed);
// Drops the list, so that the next GetEmiLimits() reads the settings again.
void ForgetEmiLimits();

// Appends a user limit and marks the user list changed; its list index.
int AddUserLimit(const QString &key, const QString &label, const std::vector<CEmiPair> &pairs);
// Deletes user entry `index` of the list, renumbers those behind it and
// rewrites the settings.  False when `index` is not a user entry.
bool RemoveUserLimit(int index);
// Writes every user entry as "EMI1"...; with `writeCount`, also "EMICount",
// and deletes the numbered values beyond the new count.
void SaveUserLimits(bool writeCount);

// The settings text of one limit, and its reading.  Reading needs the three
// header lines and a pair count of at least 1; a short text keeps the pairs
// read so far.  False when no pair could be read.
QString FormatUserLimitText(const CCurveInfo &limit);
bool ParseUserLimitText(const QString &text, QString &key, QString &label, std::vector<CEmiPair> &pairs);

// Shows limit `index` of the list on `graph`: a curve of its own columns, in
// the limit's form, on the first axis.  The new curve's index, or -1.
int AddEmiLimitToGraph(CGraphCurve &graph, int index);
