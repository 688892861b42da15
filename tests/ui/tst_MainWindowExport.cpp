#include "MainWindowStage.h"

#include "model/Settings.h"
#include "support/WidgetDriver.h"

#include <QDial>
#include <QLabel>
#include <QProgressBar>
#include <QProgressDialog>
#include <QPushButton>
#include <QWindow>
#include <QtEndian>

/// The export to a wave file, with the real renderer and real files.
class tst_MainWindowExport : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void theDialogIsAsDescribed();
    void aCancelledDialogChangesNothing();
    void theFileHoldsTheTracks();
    void mutedRowsAreLeftOut();
    void aFileOfNoTracksIsWritten();
    void volumeAndPanAreHeard();
    void theProgressIsShown();
    void escapeLeavesTheProgress();
    void closingLeavesTheProgress();
    void progressWithoutADialogIsIgnored();
    void hugeProgressStaysPositive();
    void anExportMustEndBeforeTheNext();
    void oneExportFollowsAnother();
    void aFailureIsShown();
    void aFailureEndsTheProgressBeforeItsBox();
    void aFailureLeavesTheWindowReady();
    void theWindowClosesWhileItExports();

private:
    /// Exports to the file and waits for the end.
    void exportTo(const char *name);
    void startExport(const char *name);
    bool isExporting() const { return dialog() != nullptr; }
    QProgressDialog *dialog() const { return m_stage->window().findChild<QProgressDialog *>(); }
    QByteArray bytes(const char *name) const;
    /// Of the two channels; 1 is full scale.
    std::pair<double, double> peaks(const char *name) const;

    std::unique_ptr<MainWindowStage> m_stage;
};

namespace {

/// Hours of music: nobody waits for its end.
const char *const Endless = "X:1\nT:Long\nM:4/4\nL:4/1\nQ:1/4=1\nK:C\n"
                            "C C C C C C C C C C C C C C C C C C C C C C C C C C C C C C C C C C\n";

constexpr int HeaderBytes = 80;

} // namespace

void tst_MainWindowExport::init()
{
    Settings::instance().setValue(Settings::DefaultInstrument, QString());
    m_stage = std::make_unique<MainWindowStage>();
    Settings::instance().setValue(Settings::DefaultInstrument, text("Flute"));
    m_stage->reopen();
}

void tst_MainWindowExport::cleanup()
{
    QVERIFY(m_stage->answers().isDone());
    m_stage.reset();
}

void tst_MainWindowExport::startExport(const char *name)
{
    m_stage->answers().choose(m_stage->path(name));
    m_stage->trigger("actionExport_to_Wav");
}

void tst_MainWindowExport::exportTo(const char *name)
{
    startExport(name);
    QTRY_VERIFY(!isExporting());
}

QByteArray tst_MainWindowExport::bytes(const char *name) const
{
    QFile file(m_stage->path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::pair<double, double> tst_MainWindowExport::peaks(const char *name) const
{
    const QByteArray samples = bytes(name).mid(HeaderBytes);
    int left = 0;
    int right = 0;
    for (int i = 0; i + 3 < samples.size(); i += 4) {
        left = qMax(left, qAbs(int{qFromLittleEndian<qint16>(samples.constData() + i)}));
        right = qMax(right, qAbs(int{qFromLittleEndian<qint16>(samples.constData() + i + 2)}));
    }
    return {left / 32768.0, right / 32768.0};
}

void tst_MainWindowExport::theDialogIsAsDescribed()
{
    m_stage->paste(abc("One", "K:C\nC"));
    exportTo("a.wav");
    m_stage->answers().cancel();
    m_stage->trigger("actionExport_to_Wav");
    QCOMPARE(
        m_stage->answers().seen(),
        QStringList(
            {text("chooser [Export tracks as wav...] Wave file (*.wav); in ") + QDir::currentPath(),
             text("chooser [Export tracks as wav...] Wave file (*.wav); in ") + m_stage->dir()}));
    QCOMPARE(Settings::instance().value(Settings::DirWavSave).toString(), m_stage->dir());
}

void tst_MainWindowExport::aCancelledDialogChangesNothing()
{
    Settings::instance().setValue(Settings::DirWavSave, text("/waves"));
    m_stage->answers().cancel();
    m_stage->trigger("actionExport_to_Wav");
    QVERIFY(!isExporting());
    QCOMPARE(Settings::instance().value(Settings::DirWavSave).toString(), text("/waves"));
}

/// The last of four quarters starts after a second and a half; its sound lasts 50 ms.
void tst_MainWindowExport::theFileHoldsTheTracks()
{
    m_stage->pasteTunes(1);
    exportTo("a.wav");
    const QByteArray file = bytes("a.wav");
    QVERIFY(file.startsWith("RIFF"));
    QVERIFY(file.size() > HeaderBytes + 48000 * 4 * 3 / 2);
    QVERIFY(file.size() < HeaderBytes + 48000 * 4 * 3);
    QVERIFY(peaks("a.wav").first > 0.4);
}

void tst_MainWindowExport::mutedRowsAreLeftOut()
{
    m_stage->pasteTunes(1);
    m_stage->paste(abc("Long", "K:C\nCDEFGABc"));
    m_stage->click("T2", "btnMute");
    exportTo("a.wav");
    QVERIFY(bytes("a.wav").size() < HeaderBytes + 48000 * 4 * 3);
}

void tst_MainWindowExport::aFileOfNoTracksIsWritten()
{
    m_stage->pasteTunes(1);
    m_stage->click("T1", "btnMute");
    exportTo("a.wav");
    QCOMPARE(bytes("a.wav").size(), HeaderBytes);
}

void tst_MainWindowExport::volumeAndPanAreHeard()
{
    m_stage->pasteTunes(1);
    exportTo("a.wav");
    m_stage->control<QDial>("T1", "dlVolume")->setValue(50);
    m_stage->control<QDial>("T1", "dlPan")->setValue(-10);
    exportTo("b.wav");
    QVERIFY(peaks("b.wav").first < 0.8 * peaks("a.wav").first);
    QVERIFY(peaks("b.wav").first > 0.2 * peaks("a.wav").first);
    QVERIFY(peaks("b.wav").second < 0.01);
}

void tst_MainWindowExport::theProgressIsShown()
{
    m_stage->paste(Endless);
    startExport("a.wav");
    QVERIFY(isExporting());
    QCOMPARE(dialog()->labelText(), text("Rendering to wav..."));
    QCOMPARE(dialog()->minimum(), 0);
    QCOMPARE(dialog()->maximum(), 1);
    QVERIFY(dialog()->findChildren<QPushButton *>().isEmpty());
    QVERIFY(dialog()->isVisible());
    QVERIFY(!dialog()->isModal());
    QTRY_COMPARE(dialog()->maximum(), 34 * 4 * 120960);
    QTRY_VERIFY(dialog()->value() > 0);
}

void tst_MainWindowExport::escapeLeavesTheProgress()
{
    m_stage->window().onRenderStarted();
    QVERIFY(WidgetDriver::show(*dialog()));
    const QSignalSpy left(dialog(), &QDialog::finished);
    WidgetDriver::press(Qt::Key_Escape);
    QCOMPARE(left.size(), 0); // what is hidden may come back with the next progress
    QVERIFY(dialog()->isVisible());
    m_stage->window().onRenderProgress(1, 2);
    QCOMPARE(dialog()->value(), 1);
    m_stage->window().onRenderFinished();
    QTRY_VERIFY(!isExporting());
}

void tst_MainWindowExport::closingLeavesTheProgress()
{
    m_stage->window().onRenderStarted();
    QVERIFY(WidgetDriver::show(*dialog()));
    QVERIFY(!dialog()->windowFlags().testFlag(Qt::WindowCloseButtonHint));
    dialog()->windowHandle()->close();
    QVERIFY(dialog()->isVisible());
    QVERIFY(!dialog()->wasCanceled());
    m_stage->window().onRenderFinished();
    QTRY_VERIFY(!isExporting());
}

void tst_MainWindowExport::progressWithoutADialogIsIgnored()
{
    m_stage->window().onRenderProgress(1, 2);
    m_stage->window().onRenderFinished();
    QVERIFY(!isExporting());
}

void tst_MainWindowExport::hugeProgressStaysPositive()
{
    m_stage->window().onRenderStarted();
    m_stage->window().onRenderProgress(quint64{1} << 40, quint64{1} << 41);
    QCOMPARE(dialog()->maximum(), 1 << 30);
    QCOMPARE(dialog()->value(), 1 << 29);
    m_stage->window().onRenderProgress(5, 4); // the last notes fade out
    QVERIFY(dialog()->isVisible());
    m_stage->window().onRenderFinished();
    QTRY_VERIFY(!isExporting());
}

void tst_MainWindowExport::anExportMustEndBeforeTheNext()
{
    m_stage->paste(Endless);
    startExport("a.wav");
    m_stage->answers().press("OK");
    m_stage->trigger("actionExport_to_Wav");
    QCOMPARE(m_stage->answers().seen().last(),
             text("warning [Renderer in use] You are already rendering to wav, please wait for it "
                  "to finish and try again. (OK)"));
    QVERIFY(isExporting());
}

void tst_MainWindowExport::oneExportFollowsAnother()
{
    m_stage->pasteTunes(1);
    exportTo("a.wav");
    exportTo("b.wav");
    QCOMPARE(bytes("a.wav"), bytes("b.wav"));
}

void tst_MainWindowExport::aFailureIsShown()
{
    m_stage->pasteTunes(1);
    m_stage->answers().choose(text("/proc/a.wav")).press("OK");
    m_stage->trigger("actionExport_to_Wav");
    QTRY_VERIFY(m_stage->answers().isDone());
    QCOMPARE(m_stage->answers().seen().last(),
             text("critical [Export to wave] Could not write /proc/a.wav: No such file or "
                  "directory (OK)"));
    QTRY_VERIFY(!isExporting());
}

void tst_MainWindowExport::aFailureEndsTheProgressBeforeItsBox()
{
    m_stage->pasteTunes(1);
    bool isProgressSeen = true;
    m_stage->answers().choose(text("/proc/a.wav")).visit([&](QWidget &box) {
        isProgressSeen = dialog() != nullptr && dialog()->isVisible();
        QTest::keyClick(&box, Qt::Key_Return);
    });
    m_stage->trigger("actionExport_to_Wav");
    QTRY_VERIFY(m_stage->answers().isDone());
    QVERIFY(!isProgressSeen);
}

/// The drum has one note only.
void tst_MainWindowExport::aFailureLeavesTheWindowReady()
{
    m_stage->pasteTunes(1);
    m_stage->row("T1")->setInstrumentIndex(0);
    m_stage->answers().choose(m_stage->path("a.wav")).press("OK");
    m_stage->trigger("actionExport_to_Wav");
    QTRY_VERIFY(m_stage->answers().isDone());
    QCOMPARE(m_stage->answers().seen().last(),
             text("critical [Export to wave] Invalid note index (OK)"));
    QTRY_VERIFY(!isExporting());
    QVERIFY(!QFile::exists(m_stage->path("a.wav")));
    m_stage->row("T1")->setInstrumentIndex(1);
    exportTo("a.wav");
    QVERIFY(QFile::exists(m_stage->path("a.wav")));
}

void tst_MainWindowExport::theWindowClosesWhileItExports()
{
    m_stage->paste(Endless);
    startExport("a.wav");
    QTRY_VERIFY(dialog()->value() > 0);
    m_stage->close();
    QCOMPARE(QDir(m_stage->dir()).entryList({text("*.wav*")}, QDir::Files | QDir::Hidden),
             QStringList());
    QCoreApplication::processEvents();
    m_stage->reopen();
}

MAIN_WINDOW_TEST_MAIN(tst_MainWindowExport)
#include "tst_MainWindowExport.moc"
