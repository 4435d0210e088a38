#pragma once
// CTraceliftToolApp: the start of the digitiser.  It needs the application
// object (QApplication) to exist already.

#include <QString>
#include <QStringList>

class CTraceliftToolApp
{
public:
    // The command line: `tracelift [picture]`.  A picture file given opens
    // at once, as if it had been pasted.  False, with the text to print in
    // `usage`, for --help or anything else than one optional file name;
    // m_exitCode then says how the program ends (0 for --help, 2 else).
    bool ParseArguments(const QStringList &arguments, QString &usage);
    QString m_pictureFile;

    // Names the settings ("HELIOMAR", "Tracelift"), loads the language texts
    // from the program's folder (without en.lang it shows a stop box and
    // ends), and runs the dialog modally.  Returns false in every case: all
    // the work is done when it returns, and no event loop is to follow.
    bool InitInstance();

    // 0 after a normal run, 1 when the language texts were missing.
    int m_exitCode = 0;
};

// The text shown when not even the English language file can be found.  It
// cannot come from a language file, so it is the program's own.
extern const char *const MissingLanguageFileText;
