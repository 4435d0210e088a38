#include "graphviewoptions.h"

#include <QCommandLineParser>
#include <QRegularExpression>

#include <algorithm>

GraphViewCommand ParseGraphViewOptions(const QStringList &arguments, CGraphViewOptions &options, QString &text)
{
    QCommandLineParser parser;
    return ParseGraphViewOptions(parser, arguments, options, text);
}

GraphViewCommand ParseGraphViewOptions(QCommandLineParser &parser, const QStringList &arguments,
                                       CGraphViewOptions &options, QString &text)
{
    parser.setApplicationDescription(
        QStringLiteral("Shows a data text file, or a demonstration, in a graph window.\n"
                       "The file holds one row of numbers per line, split by blanks, tabs, commas or\n"
                       "semicolons, with an optional header line of names and comment lines.\n"
                       "Column 0 is X; every other column is a curve."));
    const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("Shows this help."));
    parser.addOption(help);
    parser.addPositionalArgument(QStringLiteral("file"), QStringLiteral("A graph data file (.mrd) or a data text file."));
    const QCommandLineOption logX(QStringLiteral("logx"), QStringLiteral("Logarithmic X axis."));
    const QCommandLineOption logY(QStringLiteral("logy"), QStringLiteral("Logarithmic Y axis."));
    const QCommandLineOption axes(QStringLiteral("axes"), QStringLiteral("Each curve on a Y axis of its own."));
    const QCommandLineOption legend(QStringLiteral("legend"), QStringLiteral("Legend position 0 to 4."),
                                    QStringLiteral("position"), QStringLiteral("0"));
    const QCommandLineOption bars(QStringLiteral("bars"), QStringLiteral("The bar demonstration."));
    const QCommandLineOption symbols(QStringLiteral("symbols"), QStringLiteral("Marks on the points."));
    const QCommandLineOption strip(QStringLiteral("strip"), QStringLiteral("One strip per curve."));
    const QCommandLineOption box(QStringLiteral("box"), QStringLiteral("The three-dimensional view."));
    // Not "title": on X11 the application object takes that one for itself.
    const QCommandLineOption title(QStringLiteral("heading"), QStringLiteral("Title of the graph."), QStringLiteral("text"));
    const QCommandLineOption size(QStringLiteral("size"), QStringLiteral("Window size."), QStringLiteral("WxH"),
                                  QStringLiteral("900x600"));
    const QCommandLineOption screenshot(QStringLiteral("screenshot"),
                                        QStringLiteral("Save the window as a picture (PNG unless the name says "
                                                       "otherwise) and quit; the exit status tells whether it worked."),
                                        QStringLiteral("file"));
    // Taken before the window starts (graphviewmrd.h); here for the help.
    const QCommandLineOption save(QStringLiteral("save"),
                                  QStringLiteral("Write the file as a graph data file (.mrd), without a window."),
                                  QStringLiteral("file"));
    parser.addOptions({logX, logY, axes, legend, bars, symbols, strip, box, title, size, screenshot, save});

    if (!parser.parse(arguments)) {
        text = parser.errorText();
        return GraphViewCommand::Error;
    }
    if (parser.isSet(help)) {
        // No application object names the program yet.
        text = parser.helpText().replace(QStringLiteral("<executable_name>"), QStringLiteral("graphview"));
        return GraphViewCommand::Help;
    }
    const QStringList files = parser.positionalArguments();
    if (files.size() > 1) {
        text = QStringLiteral("Give one file at most.");
        return GraphViewCommand::Error;
    }
    options.file = files.value(0);
    options.logX = parser.isSet(logX);
    options.logY = parser.isSet(logY);
    options.axes = parser.isSet(axes);
    bool ok = false;
    options.legend = std::clamp(parser.value(legend).toInt(&ok), 0, 4);
    if (!ok) {
        text = QStringLiteral("The legend position is a number from 0 to 4, not \"%1\".").arg(parser.value(legend));
        return GraphViewCommand::Error;
    }
    options.bars = parser.isSet(bars);
    options.symbols = parser.isSet(symbols);
    options.strip = parser.isSet(strip);
    options.box = parser.isSet(box);
    options.hasTitle = parser.isSet(title);
    options.title = parser.value(title);
    options.screenshot = parser.value(screenshot);

    static const QRegularExpression sizePattern(QStringLiteral("^(\\d{1,9})x(\\d{1,9})$"));
    const QRegularExpressionMatch m = sizePattern.match(parser.value(size));
    const int w = m.hasMatch() ? m.captured(1).toInt() : 0;
    const int h = m.hasMatch() ? m.captured(2).toInt() : 0;
    if (w < 100 || h < 100 || w > kGraphViewMaxSide || h > kGraphViewMaxSide) {
        text = QStringLiteral("The window size \"%1\" is not possible: give WIDTHxHEIGHT, each from 100 to %2 "
                              "pixels.")
                   .arg(parser.value(size))
                   .arg(kGraphViewMaxSide);
        return GraphViewCommand::Error;
    }
    options.size = QSize(w, h);
    return GraphViewCommand::Run;
}
