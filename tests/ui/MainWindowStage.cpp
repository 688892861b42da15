#include "MainWindowStage.h"

#include "model/FileNameCodec.h"
#include "model/Settings.h"
#include "ui/tracks/TrackWidget.h"

#include <QAbstractButton>
#include <QApplication>
#include <QBoxLayout>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QDropEvent>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QMimeData>
#include <QPixmap>
#include <QtEndian>
#include <QtTest>

QString text(const char *text)
{
    return QString::fromUtf8(text);
}

namespace {

QByteArray littleEndian(quint32 value, int bytes)
{
    QByteArray result(4, '\0');
    qToLittleEndian(value, result.data());
    return result.left(bytes);
}

/// A tenth of a second at full scale.
QByteArray waveFile()
{
    constexpr quint32 rate = 48000;
    const QByteArray samples = QByteArray::fromHex("ff7f0080").repeated(rate / 20);
    const auto size = static_cast<quint32>(samples.size());
    return "RIFF" + littleEndian(36 + size, 4) + "WAVEfmt " + littleEndian(16, 4)
        + littleEndian(1, 2) + littleEndian(1, 2) + littleEndian(rate, 4)
        + littleEndian(rate * 2, 4) + littleEndian(2, 2) + littleEndian(16, 2) + "data"
        + littleEndian(size, 4) + samples;
}

QByteArray tuning(const QByteArray &kind, int lowest, int highest)
{
    QByteArray notes;
    for (int note = lowest; note <= highest; ++note)
        notes += (notes.isEmpty() ? "\"" : ",\"") + QByteArray::number(note)
            + "\":{\"file\":\"/sfx/instruments/" + kind + "/" + kind + ".wav\",\"f\":440}";
    return "{\"mapping\":{" + notes + "}}";
}

QString idsOf(const QList<TrackWidget *> &rows, bool (TrackWidget::*isMeant)() const)
{
    QStringList ids;
    for (const TrackWidget *const row : rows) {
        if ((row->*isMeant)())
            ids.append(row->trackId());
    }
    return ids.join(QLatin1Char(' '));
}

} // namespace

QByteArray abc(const char *title, const char *rest)
{
    return QByteArray("X:1\nT:") + title + "\nM:4/4\nL:1/4\nQ:1/4=120\n" + rest + "\n";
}

/// The port is one that nobody listens at.
void prepareProcess()
{
    FileNameCodec::install();
    qputenv("QUILLMOOR_UPDATE_HOST", "127.0.0.1:1");
}

MainWindowStage::MainWindowStage()
{
    for (const Settings::Setting setting :
         {Settings::DirAbcOpen, Settings::DirAbcSave, Settings::DirMidiOpen, Settings::DirWavSave,
          Settings::DefaultInstrument})
        Settings::instance().setValue(setting, QString());
    makeGame();
    reopen();
}

MainWindowStage::~MainWindowStage() = default;

void MainWindowStage::reopen()
{
    m_window.reset();
    m_window = std::make_unique<Window>(QDir(dir()));
    m_window->onClearTracks(); // whose ids start anew for it
    m_window->show();
}

void MainWindowStage::makeGame() const
{
    makeInstrument("Drum", 60, 60);
    makeInstrument("Flute", 48, 72);
    makeInstrument("Lute", 48, 72);
}

void MainWindowStage::makeInstrument(const char *name, int lowest, int highest) const
{
    const QByteArray kind = QByteArray(name).toLower();
    const QByteArray sounds = "user/sfx/instruments/" + kind;
    const QByteArray items = "user/items/instruments";
    QDir(dir()).mkpath(text(sounds));
    QDir(dir()).mkpath(text(items));
    made(items + "/" + kind + ".instrument",
         QByteArray("{\"shortdescription\":\"") + name + "\",\"kind\":\"" + kind
             + "\",\"inventoryIcon\":\"icon.png\"}");
    made(sounds + "/tuning.config", tuning(kind, lowest, highest));
    made(sounds + "/" + kind + ".wav", waveFile());
    QPixmap icon(4, 4);
    icon.fill(Qt::red);
    icon.save(path((items + "/icon.png").constData()));
}

QString MainWindowStage::made(const QByteArray &name, const QByteArray &contents) const
{
    QString path = m_dir.filePath(FileNameCodec::decode(name));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(contents) != contents.size())
        qFatal("Could not make a file for the test.");
    return path;
}

QString MainWindowStage::tune(const char *title) const
{
    return made(QByteArray(title) + ".abc", abc(title, "K:C\nCDEF|"));
}

QString MainWindowStage::midi(const char *name) const
{
    const QByteArray events = QByteArray::fromHex("00903c4060803c0000ff2f00");
    return made(name,
                QByteArray::fromHex("4d546864000000060000000100604d54726b000000")
                    + static_cast<char>(events.size()) + events);
}

void MainWindowStage::paste(const QByteArray &abc)
{
    QApplication::clipboard()->setText(QString::fromUtf8(abc));
    trigger("actionImport_from_Clipboard");
}

void MainWindowStage::pasteTunes(int count)
{
    for (int i = 1; i <= count; ++i)
        paste(abc(QByteArray::number(i).constData(), "K:C\nCDEF|"));
}

QAction *MainWindowStage::action(const char *name) const
{
    auto *const action = m_window->findChild<QAction *>(text(name));
    if (action == nullptr)
        qFatal("There is no action %s.", name);
    return action;
}

QList<TrackWidget *> MainWindowStage::rows() const
{
    const auto *const layout = m_window->findChild<QBoxLayout *>(text("verticalLayout"));
    QList<TrackWidget *> rows;
    for (int i = 0; i < layout->count() - 1; ++i)
        rows.append(qobject_cast<TrackWidget *>(layout->itemAt(i)->widget()));
    return rows;
}

QStringList MainWindowStage::ids() const
{
    QStringList ids;
    for (const TrackWidget *const row : rows())
        ids.append(row->trackId());
    return ids;
}

QStringList MainWindowStage::titles() const
{
    QStringList titles;
    for (TrackWidget *const row : rows())
        titles.append(row->findChild<QLabel *>(text("lblTitle"))->text());
    return titles;
}

TrackWidget *MainWindowStage::row(const char *id) const
{
    for (TrackWidget *const row : rows()) {
        if (row->trackId() == text(id))
            return row;
    }
    qFatal("There is no row %s.", id);
}

QString MainWindowStage::selected() const
{
    return idsOf(rows(), &TrackWidget::isSelected);
}

QString MainWindowStage::muted() const
{
    return idsOf(rows(), &TrackWidget::isMuted);
}

void MainWindowStage::click(const char *id, const char *name) const
{
    QTest::mouseClick(control<QAbstractButton>(id, name), Qt::LeftButton);
}

void MainWindowStage::select(const QStringList &ids) const
{
    for (const TrackWidget *const row : rows()) {
        const QByteArray id = row->trackId().toUtf8();
        if (row->isSelected() != ids.contains(row->trackId()))
            click(id.constData(), "chkSelect");
    }
}

QString MainWindowStage::instrument(const char *id) const
{
    return control<QComboBox>(id, "cboInstrument")->currentText();
}

void MainWindowStage::choose(const char *id, const char *button, const char *entry) const
{
    for (QAction *const action : control<QWidget>(id, button)->actions()) {
        if (action->text() == text(entry)) {
            action->trigger();
            return;
        }
    }
    qFatal("%s has no entry %s.", button, entry);
}

void MainWindowStage::drop(const QStringList &paths)
{
    QMimeData data;
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls.append(QUrl::fromLocalFile(path));
    data.setUrls(urls);
    QDropEvent event(QPointF(20, 20), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    drop(event);
}

/// What is dropped is opened later.
void MainWindowStage::drop(QDropEvent &event)
{
    m_window->dropEvent(&event);
    QCoreApplication::processEvents();
}
