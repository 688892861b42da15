#include "model/Settings.h"
#include "support/SettingsSandbox.h"
#include "ui/pianoroll/PianoRollScene.h"

#include <QGraphicsItem>
#include <QPainter>
#include <QtTest>

#include <memory>

class tst_PianoRollScene : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { m_sandbox = std::make_unique<SettingsSandbox>(); }
    void cleanupTestCase() { m_sandbox.reset(); }
    void cleanup();
    void itStartsAsAnEmptyMeasure();
    void aNoteIsARectangle();
    void onlyNotesAreShown();
    void theSceneIsAsLongAsTheTrack();
    void notesHaveAGradientOfTheNoteColour();
    void aNewNoteColourIsShownAtOnce();
    void aColourThatIsNoneIsTheDefault();
    void aPressedNoteIsBrighter();
    void aNoteOfNoLengthIsALine();
    void releaseAllReleasesEveryNote();
    void eventsThatAreNoNotesCannotBePressed();
    void aLongTrackIsShownInSlices();
    void moreThanTenThousandNotesAreASlice_data();
    void moreThanTenThousandNotesAreASlice();
    void aNewTrackEndsTheSlicesOfTheOldOne();
    void aShorterTrackMayFollowALongOne();
    void notesNotYetShownCannotBePressed();
    void pressedNotesAreForgottenWithTheTrack();
    void hugeTimesDoNotHurt_data();
    void hugeTimesDoNotHurt();
    void aGreatChordOfLongNotesDoesNotFillTheMemory();

private:
    std::unique_ptr<SettingsSandbox> m_sandbox;
};

namespace {

const QColor normalBottom = QColor(32, 96, 255).darker(115);
const QColor normalTop = QColor(32, 96, 255).lighter(115);
const QColor pressedBottom = QColor(32, 96, 255).lighter(115);
const QColor pressedTop = QColor(32, 96, 255).lighter(150);

Track trackOf(int notes, quint64 duration = 30240)
{
    Track track;
    for (int i = 0; i < notes; ++i)
        track.addEvent(TrackEvent::makeNote(60 + static_cast<quint32>(i) % 12,
                                            static_cast<quint64>(i) * 30240, duration));
    track.sortEvents();
    return track;
}

/// The scene at 16 pixels a semitone and 96 a quarter note, pitch 61 at the top.
QImage picture(PianoRollScene &scene, quint64 start = 0)
{
    QImage image(400, 32, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    scene.render(&painter, image.rect(), QRectF(static_cast<qreal>(start), 60, 400 * 315, 2),
                 Qt::IgnoreAspectRatio);
    return image;
}

/// render() does not turn the picture upside down: pitch 60 is above, and each note's lower edge.
struct Note {
    explicit Note(PianoRollScene &scene)
        : image(picture(scene))
    {
    }
    QColor bottom() const { return image.pixelColor(40, 1); }
    QColor top() const { return image.pixelColor(40, 15); }
    QImage image;
};

bool isNear(const QColor &one, const QColor &other)
{
    const int most = 12; // two rows of sixteen
    return std::abs(one.red() - other.red()) <= most
        && std::abs(one.green() - other.green()) <= most
        && std::abs(one.blue() - other.blue()) <= most;
}

int itemCount(const PianoRollScene &scene)
{
    return scene.items().size();
}

/// How many notes there are after each turn of the event loop that has added some.
QVector<int> slicesOf(PianoRollScene &scene, const Track &track)
{
    scene.setTrack(track);
    QVector<int> counts{itemCount(scene)};
    while (counts.last() < track.noteCount()) {
        QTest::qWait(1);
        if (itemCount(scene) != counts.last())
            counts << itemCount(scene);
    }
    return counts;
}

} // namespace

void tst_PianoRollScene::cleanup()
{
    Settings::instance().setValue(Settings::NoteColor, QColor(32, 96, 255));
}

void tst_PianoRollScene::itStartsAsAnEmptyMeasure()
{
    const PianoRollScene scene;
    QCOMPARE(scene.sceneRect(), QRectF(0, 20, 120960, 89));
    QCOMPARE(scene.itemIndexMethod(), QGraphicsScene::BspTreeIndex);
    QCOMPARE(itemCount(scene), 0);
    QCOMPARE(scene.track(), Track());
}

void tst_PianoRollScene::aNoteIsARectangle()
{
    Track track;
    track.addEvent(TrackEvent::makeNote(64, 30240, 15120));
    track.sortEvents();
    PianoRollScene scene;
    scene.setTrack(track);
    QCOMPARE(itemCount(scene), 1);
    const auto *item = dynamic_cast<QGraphicsRectItem *>(scene.items().first());
    QVERIFY(item != nullptr);
    QCOMPARE(item->rect(), QRectF(30240, 64, 15120, 1));
    QCOMPARE(scene.track(), track);
}

void tst_PianoRollScene::onlyNotesAreShown()
{
    Track track = trackOf(3);
    track.addEvent(TrackEvent::makeTempo(1, 1, 4, 90));
    track.addEvent(TrackEvent::makeMeter(2, 3, 4));
    track.sortEvents();
    PianoRollScene scene;
    scene.setTrack(track);
    QCOMPARE(itemCount(scene), 3);
}

void tst_PianoRollScene::theSceneIsAsLongAsTheTrack()
{
    PianoRollScene scene;
    scene.setTrack(trackOf(9));
    QCOMPARE(scene.sceneRect(), QRectF(0, 20, 272160, 89));
    scene.setTrack(Track());
    QCOMPARE(scene.sceneRect(), QRectF(0, 20, 0, 89));
    QCOMPARE(itemCount(scene), 0);
}

void tst_PianoRollScene::notesHaveAGradientOfTheNoteColour()
{
    PianoRollScene scene;
    scene.setTrack(trackOf(1));
    const Note note(scene);
    QVERIFY(isNear(note.bottom(), normalBottom));
    QVERIFY(isNear(note.top(), normalTop));
    QCOMPARE(note.image.pixelColor(0, 8), QColor(Qt::black));
    QCOMPARE(note.image.pixelColor(96, 8), QColor(Qt::black));
    QCOMPARE(note.image.pixelColor(40, 0), QColor(Qt::black));
    QCOMPARE(note.image.pixelColor(40, 16), QColor(Qt::black));
    QCOMPARE(note.image.pixelColor(97, 8), QColor(Qt::white));
}

void tst_PianoRollScene::aNewNoteColourIsShownAtOnce()
{
    PianoRollScene scene;
    scene.setTrack(trackOf(1));
    Settings::instance().setValue(Settings::NoteColor, QColor(200, 100, 0));
    QTRY_VERIFY(isNear(Note(scene).bottom(), QColor(200, 100, 0).darker(115)));
}

void tst_PianoRollScene::aColourThatIsNoneIsTheDefault()
{
    Settings::instance().setValue(Settings::NoteColor, QStringLiteral("sort of blue"));
    PianoRollScene scene;
    scene.setTrack(trackOf(1));
    QVERIFY(isNear(Note(scene).bottom(), normalBottom));
    QCoreApplication::processEvents();
    QVERIFY(isNear(Note(scene).bottom(), normalBottom));
    Settings::instance().setValue(Settings::NoteColor, QStringLiteral("#c86400"));
    scene.setTrack(trackOf(1));
    QVERIFY(isNear(Note(scene).bottom(), QColor(200, 100, 0).darker(115)));
}

void tst_PianoRollScene::aPressedNoteIsBrighter()
{
    PianoRollScene scene;
    scene.setTrack(trackOf(2));
    scene.pressNote(0);
    QVERIFY(isNear(Note(scene).bottom(), pressedBottom));
    QVERIFY(isNear(Note(scene).top(), pressedTop));
    scene.releaseNote(0);
    QVERIFY(isNear(Note(scene).bottom(), normalBottom));
}

void tst_PianoRollScene::aNoteOfNoLengthIsALine()
{
    PianoRollScene scene;
    scene.setTrack(trackOf(1, 0));
    scene.pressNote(0);
    QCOMPARE(picture(scene).pixelColor(0, 8), QColor(Qt::black));
    QCOMPARE(picture(scene).pixelColor(1, 8), QColor(Qt::white));
}

void tst_PianoRollScene::releaseAllReleasesEveryNote()
{
    PianoRollScene scene;
    scene.setTrack(trackOf(2));
    const QImage before = picture(scene);
    scene.pressNote(0);
    scene.pressNote(1);
    QVERIFY(picture(scene) != before);
    scene.releaseAll();
    QCOMPARE(picture(scene), before);
}

void tst_PianoRollScene::eventsThatAreNoNotesCannotBePressed()
{
    Track track = trackOf(1);
    track.addEvent(TrackEvent::makeTempo(0, 1, 4, 90));
    track.sortEvents();
    PianoRollScene scene;
    scene.pressNote(0);
    scene.releaseNote(0);
    scene.setTrack(track);
    const QImage before = picture(scene);
    for (const uint index : {0u, 2u, 1000000u, 0x80000000u, 0xffffffffu}) {
        scene.pressNote(index);
        QCOMPARE(picture(scene), before);
        scene.releaseNote(index);
    }
    scene.releaseAll();
    QCOMPARE(picture(scene), before);
}

void tst_PianoRollScene::aLongTrackIsShownInSlices()
{
    PianoRollScene scene;
    QCOMPARE(slicesOf(scene, trackOf(25000)), QVector<int>({10001, 20002, 25000}));
}

void tst_PianoRollScene::moreThanTenThousandNotesAreASlice_data()
{
    QTest::addColumn<int>("notes");
    QTest::addColumn<QVector<int>>("slices");
    QTest::newRow("10000") << 10000 << QVector<int>{10000};
    QTest::newRow("10001") << 10001 << QVector<int>{10001};
    QTest::newRow("10002") << 10002 << QVector<int>{10001, 10002};
}

void tst_PianoRollScene::moreThanTenThousandNotesAreASlice()
{
    QFETCH(int, notes);
    PianoRollScene scene;
    QTEST(slicesOf(scene, trackOf(notes)), "slices");
}

void tst_PianoRollScene::aNewTrackEndsTheSlicesOfTheOldOne()
{
    PianoRollScene scene;
    scene.setTrack(trackOf(25000));
    scene.setTrack(trackOf(3));
    QCOMPARE(itemCount(scene), 3);
    QTest::qWait(20);
    QCOMPARE(itemCount(scene), 3);
    scene.setTrack(trackOf(25000));
    QCOMPARE(slicesOf(scene, trackOf(25000)), QVector<int>({10001, 20002, 25000}));
}

void tst_PianoRollScene::aShorterTrackMayFollowALongOne()
{
    PianoRollScene scene;
    slicesOf(scene, trackOf(12000));
    scene.pressNote(11000);
    scene.setTrack(trackOf(3));
    scene.releaseNote(11000);
    scene.releaseAll();
    scene.pressNote(2);
    QCOMPARE(itemCount(scene), 3);
}

void tst_PianoRollScene::notesNotYetShownCannotBePressed()
{
    PianoRollScene scene;
    scene.setTrack(trackOf(10002));
    scene.pressNote(10001);
    scene.releaseNote(10001);
    QTRY_COMPARE(itemCount(scene), 10002);
}

void tst_PianoRollScene::pressedNotesAreForgottenWithTheTrack()
{
    PianoRollScene scene;
    scene.setTrack(trackOf(1));
    scene.pressNote(0);
    scene.setTrack(trackOf(1));
    QVERIFY(isNear(Note(scene).bottom(), normalBottom));
}

void tst_PianoRollScene::hugeTimesDoNotHurt_data()
{
    QTest::addColumn<quint64>("time");
    QTest::addColumn<quint64>("duration");
    constexpr quint64 most = std::numeric_limits<quint64>::max();
    QTest::newRow("long") << quint64{0} << (quint64{1} << 53);
    QTest::newRow("as long as can be") << quint64{0} << most;
    QTest::newRow("late") << (quint64{1} << 53) << quint64{30240};
    QTest::newRow("as late as can be") << most << quint64{0};
    QTest::newRow("late and long") << most << most;
}

void tst_PianoRollScene::hugeTimesDoNotHurt()
{
    QFETCH(quint64, time);
    QFETCH(quint64, duration);
    Track track = trackOf(1);
    track.addEvent(TrackEvent::makeNote(61, time, duration));
    track.sortEvents();
    PianoRollScene scene;
    scene.setTrack(track);
    scene.pressNote(0);
    scene.pressNote(1);
    const QImage image = picture(scene);
    QVERIFY(isNear(image.pixelColor(40, 1), pressedBottom));
    QCOMPARE(image.pixelColor(200, 24) != QColor(Qt::white), time == 0);
    scene.releaseAll();
    QCOMPARE(itemCount(scene), 2);
}

/// Each note listed in all columns of a fine tree would take gigabytes.
void tst_PianoRollScene::aGreatChordOfLongNotesDoesNotFillTheMemory()
{
    Track track;
    for (int i = 0; i < 20000; ++i)
        track.addEvent(TrackEvent::makeNote(60, 0, 10000 * quint64{120960}));
    track.sortEvents();
    PianoRollScene scene;
    QCOMPARE(slicesOf(scene, track), QVector<int>({10001, 20000}));
    QCOMPARE(scene.bspTreeDepth(), 4);
    slicesOf(scene, trackOf(20000));
    QCOMPARE(scene.bspTreeDepth(), 16);
}

QTEST_MAIN(tst_PianoRollScene)
#include "tst_PianoRollScene.moc"
