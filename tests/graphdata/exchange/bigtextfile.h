#pragma once
// A data text of many rows with comments, blank lines and bad cells
// scattered through them, big enough to be read in parallel blocks.

#include <QByteArray>

namespace bigtextfile {

inline const int kBigRows = 400000;

inline QByteArray bigFile()
{
    QByteArray text = "# a long file\nt,u,v\n";
    for (int i = 0; i < kBigRows; ++i) {
        if (i % 9973 == 0)
            text += "# a note in the middle\n\n";
        if (i % 7919 == 0)
            text += QByteArray::number(i) + ",nan,\n";
        else
            text += QByteArray::number(i) + ',' + QByteArray::number(i * 0.5, 'g', 17) + ',' +
                    QByteArray::number(-i * 1e-3, 'g', 17) + "\r\n";
    }
    return text;
}

} // namespace bigtextfile
