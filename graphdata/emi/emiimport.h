#pragma once
// Reading a user limit from a text file of the initialisation-file form:
//
//   [<section>]          Name=<key>  Label=<display name>  Count=<pairs>
//   [Data]               Freq1=...  Value1=...  Freq2=...  Value2=...
//
// Values are cut at 250 characters; lines starting with ';' are comments.

#include "graphdata/emi/emilimits.h"

#include <QString>
#include <vector>

struct CEmiImport
{
    QString key;
    QString label;
    std::vector<CEmiPair> pairs;
    QString message; // why the file was refused, empty on success
};

// Reads the limit of `path` whose header lies in `section`.  Refuses a file
// that cannot be read, lacks a header key, has a pair without a number, has a
// frequency below the one before it, or names a limit that `existing` holds
// already (by key or display name); the message then says which.
bool ImportEmiLimit(const QString &path, const QString &section, const CCurveInfoArray &existing,
                    CEmiImport &result);
