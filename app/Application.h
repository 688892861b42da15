#pragma once

#include <QApplication>
#include <QString>

#include <mutex>

/// The application object, and the edge that no exception crosses.
///
/// What leaves a slot or an event handler, on whichever thread, is shown in a box on the
/// user-interface thread, and then the program ends. Only the first failure is shown: others may
/// follow from it, or be the same one again, as when a window fails each time it is painted.
class Application : public QApplication {
    Q_OBJECT

public:
    /// The status with which the program ends after a failure.
    static constexpr int FailureStatus = 1;

    /// As for QApplication: `argc` and `argv` must outlive the object.
    Application(int &argc, char **argv);

    bool notify(QObject *receiver, QEvent *event) override;

    /// To be called while an exception is caught, on any thread. A thrown QString is shown as
    /// "A fatal error occured:\n%1", anything else as "An unknown fatal error ocurred"; then
    /// all event loops of the user-interface thread end.
    void fail();
    bool hasFailed() const;

    /// Shows a failure that no event loop was there to show. Answers the status to end with:
    /// `status`, or FailureStatus after a failure.
    int finish(int status);

private:
    void showFailure();

    mutable std::mutex m_mutex;
    QString m_failure; // empty until there is one
    bool m_isShown = false;
};
