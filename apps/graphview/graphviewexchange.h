#pragma once
// The spectrum and export options of graphview:
//   --spectrum [--from T0 --to T1]   show the spectrum of every curve
//   --export FILE                    write what would be shown to FILE
//                                    (.txt, .csv, .fra, .fft, .mat, .mrd)
//                                    and quit without a window
// and the window's command to switch between time and spectrum.

#include <QCommandLineOption>
#include <QString>

class CGraphCurve;
class CGraphWnd;
class QCommandLineParser;
class QMainWindow;

class CGraphviewExchange
{
public:
    // Adds the options to the parser.
    explicit CGraphviewExchange(QCommandLineParser &parser);

    // Before the application object: an export needs no display, so it
    // runs on the offscreen platform unless one was chosen.
    static void PrepareHeadless(int argc, char **argv);
    // True when the program writes a file and quits: nobody answers boxes.
    bool Headless() const;

    // After the options were read and the graph set up: enters spectrum
    // mode when asked (without a box), and writes the export when asked.
    // Returns the exit code of the program when it is done (an export, or
    // a failure), -1 to go on and show the window.
    int Run(CGraphCurve &graph, const QString &shownName);

    // The kind of export a file name asks for on the command line, where the
    // extension is all the user says: ".txt", ".fra" and ".fft" fixed
    // columns (the spectrum file in spectrum mode), ".csv" comma separated,
    // ".tsv" tab separated, ".mat" a mat-file, ".mrd" the graph data file;
    // -1 for any other extension.
    static int ExportKindOfName(const QString &path);

    // Adds the switch command (menu "View", Ctrl+F) to the window.
    void SetUpWindow(QMainWindow &window, CGraphWnd &graphWnd, const QString &shownName);

private:
    QCommandLineParser &m_parser;
    QCommandLineOption m_spectrum;
    QCommandLineOption m_from;
    QCommandLineOption m_to;
    QCommandLineOption m_export;
};
