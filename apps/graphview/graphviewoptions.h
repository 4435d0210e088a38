#pragma once
// graphview's command line, read before the application object exists, so
// that --help and mistakes in the options need no display.

#include <QSize>
#include <QString>
#include <QStringList>

struct CGraphViewOptions
{
    QString file;       // empty: the demonstration
    bool logX = false, logY = false;
    bool axes = false;  // each curve on a Y axis of its own
    int legend = 0;     // 0 to 4
    bool bars = false, symbols = false, strip = false, box = false;
    bool hasTitle = false;
    QString title;
    QSize size{900, 600};
    QString screenshot; // empty: show the window
};

enum class GraphViewCommand {
    Run,   // show the window (or save its picture)
    Help,  // print `text` on standard output and end with 0
    Error, // print `text` on standard error and end with 1
};

// The largest side of the window: a picture of it must fit into memory.
constexpr int kGraphViewMaxSide = 16384;

class QCommandLineParser;

// Reads the arguments (the program's name first) with `parser`, to which
// others may have added options of their own before.
GraphViewCommand ParseGraphViewOptions(QCommandLineParser &parser, const QStringList &arguments,
                                       CGraphViewOptions &options, QString &text);
// The same with a parser of its own.
GraphViewCommand ParseGraphViewOptions(const QStringList &arguments, CGraphViewOptions &options, QString &text);
