#include "ui/editor/SearchProgress.h"

#include <QEventLoop>
#include <QProgressDialog>

namespace {

constexpr int Patience = 1000;
constexpr int BetweenEvents = 50;

} // namespace

SearchProgress::SearchProgress(QWidget *parent, const QString &title)
    : m_parent(parent)
    , m_title(title)
{
    m_sinceStart.start();
    m_sinceEvents.start();
}

SearchProgress::~SearchProgress() = default;

void SearchProgress::check()
{
    if (m_sinceEvents.elapsed() < BetweenEvents || m_sinceStart.elapsed() < Patience)
        return;
    showBox();
    const bool goesOn = takeEvents();
    m_sinceEvents.start();
    if (!goesOn || m_box->wasCanceled())
        throw Cancelled();
}

/// In an event loop, though it is left at once: who must not disturb a call that goes on asks how
/// many loops there are. False when the program ends.
bool SearchProgress::takeEvents()
{
    QEventLoop loop;
    QMetaObject::invokeMethod(&loop, "quit", Qt::QueuedConnection);
    return loop.exec() == 0;
}

// How far the search is cannot be told, so the bar just moves.
void SearchProgress::showBox()
{
    if (m_box != nullptr) {
        m_box->setValue(0);
        return;
    }
    m_box = std::make_unique<QProgressDialog>(m_parent);
    m_box->setWindowTitle(m_title);
    m_box->setLabelText(QProgressDialog::tr("Searching..."));
    m_box->setRange(0, 0);
    m_box->setWindowModality(Qt::ApplicationModal);
    m_box->setAutoClose(false);
    m_box->show();
}
