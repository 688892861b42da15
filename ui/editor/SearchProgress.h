#pragma once

#include <QElapsedTimer>
#include <QString>

#include <memory>

class QProgressDialog;
class QWidget;

/// Watches a search that goes on in the thread of the user interface. When it takes longer than a
/// second, a modal box comes up with which the user can end it, and the windows are kept alive.
class SearchProgress {
public:
    /// Thrown out of the search when the user ends it.
    struct Cancelled { };

    SearchProgress(QWidget *parent, const QString &title);
    ~SearchProgress();
    Q_DISABLE_COPY(SearchProgress)

    /// To be called again and again. Throws Cancelled.
    void check();

private:
    static bool takeEvents();
    void showBox();

    QWidget *m_parent;
    QString m_title;
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceEvents;
    std::unique_ptr<QProgressDialog> m_box;
};
