#pragma once
// graphview's program: its command line, and its main window with the
// graph window in it.  main() makes the application object between the
// two steps, so that --help and mistakes in the options need no display;
// tests drive the same object on their own application.
//
//   graphview [options] [FILE]
//
// FILE is a graph data file (.mrd) or a data text file (see
// graphdata/exchange/textformat.h).  Without a file a generated
// demonstration is shown.  The file is read on a worker thread under the
// busy box while the window stands; File > Open reads another one into the
// same window.  The options set up the view, so that every kind of picture can
// be looked at (and saved with --screenshot); --spectrum and --export are
// graphviewexchange.h's, --scope and --live graphviewscope.h's, --curve
// graphviewcurves.h's.

#include "graphviewcurves.h"
#include "graphviewexchange.h"
#include "graphviewload.h"
#include "graphviewoptions.h"
#include "graphviewscope.h"

#include "support/controls/userprompts.h"

#include <QCommandLineParser>
#include <QMainWindow>
#include <QTimer>
#include <memory>

class CGraphData;
class CGraphWnd;
class QLabel;

class CGraphviewProgram
{
public:
    CGraphviewProgram();
    ~CGraphviewProgram();
    CGraphviewProgram(const CGraphviewProgram &) = delete;
    CGraphviewProgram &operator=(const CGraphviewProgram &) = delete;

    // Reads the arguments (the program's name first).
    GraphViewCommand Parse(const QStringList &arguments, QString &text);
    // With the application object and the texts loaded: builds the window
    // and starts what the options ask for on the event loop.  The program
    // ends by QApplication::exit with its exit code (an export, a failure,
    // a saved picture) or when the window is closed.
    void Start();
    // Reads the file under the busy box and shows it in place of what the
    // window shows; a reading that is cancelled or fails (with its message)
    // leaves the window as it was.  Returns when the reading has ended.
    CGraphviewInput::Outcome OpenFile(const QString &path);
    // How long a reading must take before the busy box shows.
    void SetBusyBoxDelay(int milliseconds) { m_busyDelay = milliseconds; }

    // Ends the live writer and waits for it.
    void Stop();
    // Stop, and the window goes: called before the application object goes.
    void End();

    const CGraphViewOptions &Options() const { return m_options; }
    // Valid once started.
    QMainWindow &Window() { return *m_window; }
    CGraphWnd &GraphWindow() { return *m_graphWnd; }
    CGraphviewScope &Scope() { return m_scope; }

private:
    // For --screenshot and exports: nobody is there to answer a box.
    class CSilentPrompts : public CUserPrompts
    {
    public:
        PromptAnswer Message(const CMessagePrompt &prompt) override;
    };

    void buildWindow();
    void showData(const CGraphData &data, bool demonstration);
    // The file named on the command line ends the program when it cannot
    // be read.
    CGraphviewInput::Outcome openFile(const QString &path, bool atStart);
    void setShown(const QString &name);
    void saveScreenshot();

    QCommandLineParser m_parser;
    CGraphviewExchange m_exchange;
    CGraphviewScope m_scope;
    CGraphviewCurves m_curves;
    CGraphViewOptions m_options;
    CSilentPrompts m_silent;
    bool m_promptsSet = false;
    QString m_shown;

    std::unique_ptr<QMainWindow> m_window; // made by Start, after the application object
    CGraphWnd *m_graphWnd = nullptr;
    QLabel *m_cellsLabel = nullptr;
    bool m_windowSetUp = false; // the commands of the exchange and the curves are in the menus
    int m_busyDelay = 400;
};
