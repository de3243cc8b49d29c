#pragma once

#include <QObject>

class DataModel;

// The application's start and end. Balances are kept in memory while the
// program runs; closing the main window (by its close button, the menu or
// Ctrl+Q) or quitting the application writes them to the asset table, once.
class AppDelegate final : public QObject {
public:
    explicit AppDelegate(DataModel& dm, QObject* parent = nullptr);

    void applicationDidFinishLaunching() {}
    // Closing the main window ends the application.
    static bool applicationShouldTerminateAfterLastWindowClosed() { return true; }
    // Writes every asset's balance; on failure says so in a message box, or
    // on standard error once the end was announced as unattended. Runs once:
    // later calls do nothing.
    void applicationWillTerminate();
    // The end comes from a signal or the session ending: nobody may be there
    // to dismiss a message box, and the session waits for the process, so
    // failures are printed instead of shown.
    void terminationIsUnattended() { unattended = true; }
    // Ends the program now, unattended: every open modal window (an editor,
    // a report, a message box, a file dialog) is closed as if cancelled,
    // innermost first, messages from then on are printed, and the event
    // loops end, after which applicationWillTerminate writes the balances.
    void terminateUnattended();
    // Runs applicationWillTerminate when this window closes, while the
    // event loop still runs so that a message can be shown.
    void watch(QObject* mainWindow);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    DataModel& DM;
    QObject* mainWindow = nullptr;
    bool terminated = false;
    bool unattended = false;
};
