#include "ABC/ABCFile.h"
#include "Quillmoor/InstrumentSetModel.h"
#include "Quillmoor/QuillmoorInstrumentSet.h"
#include "icons/Icons.h"
#include "model/Settings.h"
#include "support/DialogAnswers.h"
#include "support/SettingsSandbox.h"
#include "support/WidgetDriver.h"
#include "ui/editor/ABCEditor.h"
#include "ui/pianoroll/PianoRollView.h"
#include "ui/tracks/TrackVisualizationWidget.h"
#include "ui/tracks/TrackWidget.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDial>
#include <QFile>
#include <QLabel>
#include <QLayout>
#include <QMenu>
#include <QMetaMethod>
#include <QPlainTextEdit>
#include <QPointer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QToolButton>
#include <QToolTip>
#include <QWheelEvent>
#include <QtTest>

#include <memory>

using namespace WidgetDriver;

namespace {

const char *const NotSelected =
    "TrackWidget { border: 1px solid black; border-radius: 4px; \tbackground: "
    "qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #DADADA, stop: 0.4 #CDCDCD, "
    "stop: 0.5 #C8C8C8, stop: 1.0 #B0B0B0); }";
const char *const Selected =
    "TrackWidget { border: 1px solid black; border-radius: 4px; background: "
    "qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #EAEA9A, stop: 0.4 #DDDD8D, "
    "stop: 0.5 #D8D888, stop: 1.0 #C0C070); }";

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(no file)");
}

Track titled(const char *title)
{
    Track track;
    track.setHeader(QStringLiteral("T"), text(title));
    return track;
}

QVector<quint32> pitches(const Track &track)
{
    QVector<quint32> pitches;
    for (const TrackEvent &event : track.events()) {
        if (event.isNote())
            pitches.append(event.note());
    }
    return pitches;
}

Track withPitches(std::initializer_list<quint32> pitches)
{
    Track track;
    quint64 time = 0;
    for (const quint32 pitch : pitches)
        track.addEvent(TrackEvent::makeNote(pitch, time += 15120, 15120));
    track.sortEvents();
    return track;
}

/// The file that the icon is made of.
QString pictureName(const QIcon &icon)
{
    QByteArray stored;
    QDataStream writing(&stored, QIODevice::WriteOnly);
    writing << icon;
    // A list of entries follows the engine's name; each begins with its file's name.
    QDataStream reading(stored);
    QString engine;
    QString name;
    int count = 0;
    QPixmap pixmap;
    reading >> engine >> count >> pixmap >> name;
    return name;
}

ABCEditor *openEditor()
{
    for (QWidget *const window : QApplication::topLevelWidgets()) {
        if (auto *const editor = qobject_cast<ABCEditor *>(window))
            return editor;
    }
    return nullptr;
}

} // namespace

class TestTrackWidget : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<SettingsSandbox> m_home;
    std::unique_ptr<QuillmoorInstrumentSet> m_set;
    std::unique_ptr<InstrumentSetModel> m_model;
    QPointer<TrackWidget> m_row;

    TrackWidget *makeRow(const Track &track = Track())
    {
        delete m_row;
        m_row = new TrackWidget(QStringLiteral("T7"), track, m_model.get(), nullptr);
        return m_row;
    }

    template <typename Widget> Widget *find(const char *name) const
    {
        return m_row->findChild<Widget *>(text(name));
    }

    QDial *dial(const char *name) const { return find<QDial>(name); }
    QComboBox *instruments() const { return find<QComboBox>("cboInstrument"); }
    TrackVisualizationWidget *strip() const { return find<TrackVisualizationWidget>("wVis"); }
    QString title() const { return find<QLabel>("lblTitle")->text(); }

    /// Of a context menu, as "Text [bold] -> sub-menu" and "|".
    static QStringList entries(const QWidget *menu)
    {
        QStringList entries;
        for (const QAction *const action : menu->actions()) {
            if (action->isSeparator())
                entries << QStringLiteral("|");
            else
                entries << action->text() + (action->font().bold() ? text(" (bold)") : QString());
        }
        return entries;
    }

    QAction *entry(const char *menu, const char *name) const
    {
        for (QAction *const action : find<QWidget>(menu)->actions()) {
            if (action->text() == text(name))
                return action;
            const QList<QAction *> nested =
                action->menu() != nullptr ? action->menu()->actions() : QList<QAction *>();
            for (QAction *const inner : nested) {
                if (inner->text() == text(name))
                    return inner;
            }
        }
        return nullptr;
    }

    static QPlainTextEdit *editorText() { return openEditor()->findChild<QPlainTextEdit *>(); }
    static void edit(const QString &tune)
    {
        editorText()->selectAll();
        editorText()->insertPlainText(tune);
    }
    static PianoRollView *pianoRoll() { return openEditor()->findChild<PianoRollView *>(); }

    static QString positionLabel()
    {
        for (const QLabel *const label : openEditor()->findChildren<QLabel *>()) {
            if (label->text().startsWith(QStringLiteral("Pos: ")))
                return label->text();
        }
        return {};
    }

    QString saved(const char *name) const { return m_home->path() + QLatin1Char('/') + text(name); }

private slots:
    void initTestCase()
    {
        Icons::load();
        m_home = std::make_unique<SettingsSandbox>();
        m_set = std::make_unique<QuillmoorInstrumentSet>(QDir(saved("none")), false);
        for (const char *name : {"Flute", "Lute", "Viola"})
            m_set->add(text(name), Instrument::fromBytes(text(name), "{}"), QIcon());
        m_model = std::make_unique<InstrumentSetModel>(m_set.get(), nullptr);
    }

    void init()
    {
        Settings::instance().setValue(Settings::DirAbcSave, m_home->path());
        Settings::instance().setValue(Settings::PianoRollVisible, false);
        makeRow();
    }

    void cleanup()
    {
        delete m_row;
        QVERIFY(openEditor() == nullptr);
    }

    void cleanupTestCase() { m_home.reset(); }

    // The form

    void signalsAndSlotsAreThese()
    {
        const QMetaObject &meta = TrackWidget::staticMetaObject;
        QStringList methods;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            methods << text(meta.method(i).methodSignature());
        QCOMPARE(methods,
                 texts({"trackRemoved()",
                        "trackChanged()",
                        "trackSelected(bool)",
                        "trackMuteChanged()",
                        "trackSolo()",
                        "trackInstrumentChanged()",
                        "trackVolumeChanged()",
                        "trackPanChanged()",
                        "trackMoveUp()",
                        "trackMoveDown()",
                        "trackSeek(qulonglong)",
                        "trackPlay()",
                        "trackStop()",
                        "onSave()",
                        "onSaveAs()",
                        "onSelectChanged()",
                        "onMuteClicked()",
                        "onRemoveClicked()",
                        "onEditABCClicked()",
                        "onTrackChanged()",
                        "onTransposeUp()",
                        "onTransposeDown()"}));
    }

    void textsAreThese_data()
    {
        QTest::addColumn<QString>("toolTip");
        QTest::addColumn<QString>("statusTip");
        QTest::addColumn<QString>("name");
        const auto row = [](const char *widget, const char *tool, const char *status,
                            const char *name) {
            QTest::newRow(widget) << text(tool) << text(status) << text(name);
        };
        row("chkSelect", "Select track", "Select track", "Select track");
        row("btnDelete", "Delete track", "Delete track", "Delete track");
        row("btnEdit", "Edit track", "Edit track", "Edit track");
        row("btnUp", "Move up", "Move track up", "Move up");
        row("btnDown", "Move down", "Move track down", "Move down");
        row("btnMute", "(Un)mute", "(Un)mute track", "(Un)mute");
        row("dlVolume", "Playback Volume", "The playback volume for this track", "Playback Volume");
        row("dlPan", "Playback Pan", "The playback pan position for this track", "Playback Pan");
        row("cboInstrument", "", "Instrument for this track", "Instrument for this track");
    }
    void textsAreThese()
    {
        auto *const widget = find<QWidget>(QTest::currentDataTag());
        QTEST(widget->toolTip(), "toolTip");
        QTEST(widget->statusTip(), "statusTip");
        QTEST(widget->accessibleName(), "name");
    }

    void styleSheetsAreThese()
    {
        QCOMPARE(m_row->styleSheet(), text(NotSelected));
        QCOMPARE(find<QWidget>("chkSelect")->styleSheet(),
                 text("QCheckBox\n{\n\tmargin: 0px;\n\tpadding: 0px;\n}\nQCheckBox::indicator\n{\n"
                      "\tsubcontrol-position: center center;\n\tsubcontrol-origin: margin;\n"
                      "\tposition: absolute;\n}"));
        QCOMPARE(find<QWidget>("btnMute")->styleSheet(),
                 text("QCheckBox::indicator\n{\n\tsubcontrol-position: center center;\n}\n"
                      "QCheckBox::indicator:checked\n{\n\timage: url(:/icons/mutectx.png);\n}\n"
                      "QCheckBox::indicator:unchecked\n{\n"
                      "\timage: url(:/icons/soundctx.png);\n}"));
        QCOMPARE(find<QWidget>("frVisContainer")->styleSheet(),
                 text("QFrame#frVisContainer\n{\n\tborder: 2px solid black;\n"
                      "\tborder-radius: 4px;\n\tbackground-color: black;\n}"));
    }

    void sizesAreThese()
    {
        QVERIFY(show(*m_row));
        for (const char *name :
             {"chkSelect", "btnDelete", "btnEdit", "btnUp", "btnDown", "btnMute"})
            QCOMPARE(find<QWidget>(name)->size(), QSize(24, 24));
        QCOMPARE(dial("dlVolume")->size(), QSize(50, 50));
        QCOMPARE(dial("dlPan")->size(), QSize(50, 50));
        QCOMPARE(find<QWidget>("lblTitle")->width(), 200);
        QVERIFY(instruments()->width() >= 200);
        QCOMPARE(m_row->layout()->objectName(), QStringLiteral("horizontalLayout"));
        QCOMPARE(m_row->layout()->spacing(), 0);
        QCOMPARE(m_row->layout()->contentsMargins(), QMargins(2, 2, 2, 2));
        QCOMPARE(m_row->frameShadow(), QFrame::Raised);
    }

    void everyPartIsThere()
    {
        for (const char *name :
             {"gridLayout", "gridLayout_2", "verticalLayout", "verticalLayout_3"})
            QVERIFY2(m_row->findChild<QLayout *>(text(name)) != nullptr, name);
        for (const char *name : {"line", "line_2", "line_3", "frVisContainer"})
            QVERIFY2(find<QFrame>(name) != nullptr, name);
        for (const char *name : {"label", "label_2"})
            QVERIFY2(find<QLabel>(name) != nullptr, name);
        QCOMPARE(find<QWidget>("frVisContainer")->layout()->contentsMargins(), QMargins());
        QCOMPARE(strip()->parentWidget(), find<QWidget>("frVisContainer"));
    }

    void onlyTheStripGrows()
    {
        m_row->resize(700, m_row->sizeHint().height());
        QVERIFY(show(*m_row));
        const int before = strip()->width();
        m_row->resize(900, m_row->height());
        QCoreApplication::processEvents();
        QCOMPARE(strip()->width(), before + 200);
        QCOMPARE(m_row->sizePolicy().verticalPolicy(), QSizePolicy::Fixed);
    }

    void theTabKeyGoesFromLeftToRight()
    {
        QVERIFY(show(*m_row));
        find<QWidget>("chkSelect")->setFocus();
        QCOMPARE(tabOrder(),
                 texts({"chkSelect", "btnDelete", "btnEdit", "btnMute", "btnUp", "btnDown",
                        "dlVolume", "dlPan", "cboInstrument"}));
    }

    void menusAreThese()
    {
        for (const char *name : {"btnEdit", "btnMute"})
            QCOMPARE(find<QWidget>(name)->contextMenuPolicy(), Qt::ActionsContextMenu);
        QCOMPARE(
            entries(find<QWidget>("btnEdit")),
            texts({"Open ABC Editor (bold)", "|", "Save", "Save As...", "|", "Quick Transpose"}));
        const QMenu *const transpose = entry("btnEdit", "Quick Transpose")->menu();
        QCOMPARE(entries(transpose),
                 texts({"Transpose one octave up", "Transpose one octave down"}));
        QCOMPARE(entries(find<QWidget>("btnMute")), texts({"(Un)mute (bold)", "Solo"}));
    }

    void aRightClickOpensTheMenu()
    {
        QVERIFY(show(*m_row));
        QString seen;
        const auto look = [&] {
            auto *const menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            QVERIFY(menu != nullptr);
            seen = entries(menu).join(QLatin1Char(','));
            menu->close();
        };
        QMetaObject::invokeMethod(this, look, Qt::QueuedConnection);
        auto *const button = find<QWidget>("btnMute");
        QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5),
                                button->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(button, &event);
        QTRY_COMPARE(seen, QStringLiteral("(Un)mute (bold),Solo"));
    }

    void buttonsHaveTheirPictures_data()
    {
        QTest::addColumn<QString>("icon");
        QTest::newRow("btnDelete") << ":/icons/deletetrack.png";
        QTest::newRow("btnEdit") << ":/icons/edittrack.png";
        QTest::newRow("btnUp") << ":/icons/moveup.png";
        QTest::newRow("btnDown") << ":/icons/movedown.png";
    }
    void buttonsHaveTheirPictures()
    {
        const QIcon icon = find<QToolButton>(QTest::currentDataTag())->icon();
        QTEST(pictureName(icon), "icon");
    }

    void dialsHaveTheirPictures()
    {
        QCOMPARE(find<QLabel>("label")->pixmap(Qt::ReturnByValue).toImage(),
                 QPixmap(QStringLiteral(":/icons/speaker-volume.png")).toImage());
        QCOMPARE(find<QLabel>("label_2")->pixmap(Qt::ReturnByValue).toImage(),
                 QPixmap(QStringLiteral(":/icons/speaker-panning.png")).toImage());
    }

    void entriesHaveTheirPictures_data()
    {
        QTest::addColumn<QString>("menu");
        QTest::addColumn<QString>("icon");
        QTest::newRow("Open ABC Editor") << "btnEdit"
                                         << ":/icons/editdoc.png";
        QTest::newRow("Save") << "btnEdit"
                              << ":/icons/save.png";
        QTest::newRow("Save As...") << "btnEdit"
                                    << ":/icons/saveas.png";
        QTest::newRow("Transpose one octave up") << "btnEdit"
                                                 << ":/icons/transposeup.png";
        QTest::newRow("Transpose one octave down") << "btnEdit"
                                                   << ":/icons/transposedown.png";
        QTest::newRow("(Un)mute") << "btnMute"
                                  << ":/icons/mute.png";
        QTest::newRow("Solo") << "btnMute"
                              << ":/icons/solo.png";
    }
    void entriesHaveTheirPictures()
    {
        QFETCH(const QString, menu);
        const QAction *const action = entry(qPrintable(menu), QTest::currentDataTag());
        QTEST(pictureName(action->icon()), "icon");
    }

    // State

    void aNewRowIsAsDescribed()
    {
        QCOMPARE(m_row->trackId(), QStringLiteral("T7"));
        QVERIFY(!m_row->isSelected());
        QVERIFY(!m_row->isMuted());
        QCOMPARE(m_row->volume(), 1.0F);
        QCOMPARE(m_row->pan(), 0.0F);
        QCOMPARE(dial("dlVolume")->minimum(), 0);
        QCOMPARE(dial("dlVolume")->maximum(), 100);
        QCOMPARE(dial("dlPan")->minimum(), -10);
        QCOMPARE(dial("dlPan")->maximum(), 10);
        QVERIFY(dial("dlVolume")->notchesVisible());
        QVERIFY(dial("dlPan")->notchesVisible());
        QVERIFY(find<QCheckBox>("btnMute")->isCheckable());
        QCOMPARE(instruments()->focusPolicy(), Qt::StrongFocus);
    }

    void theTitleIsTheTracksOrUntitled()
    {
        QCOMPARE(title(), QStringLiteral("Untitled"));
        makeRow(titled("Old <b>Bear</b>"));
        QCOMPARE(title(), QStringLiteral("Old <b>Bear</b>"));
        QCOMPARE(find<QLabel>("lblTitle")->textFormat(), Qt::PlainText);
        m_row->track().setHeader(QStringLiteral("T"), QStringLiteral("New"));
        m_row->onTrackChanged();
        QCOMPARE(title(), QStringLiteral("New"));
    }

    void theRowHasATrackOfItsOwn()
    {
        Track track = titled("A");
        makeRow(track);
        QCOMPARE(m_row->track(), track);
        track.setHeader(QStringLiteral("T"), QStringLiteral("B"));
        QCOMPARE(m_row->track().header(QStringLiteral("T")), QStringLiteral("A"));
    }

    void volumeAndPanAreTheDials()
    {
        dial("dlVolume")->setValue(50);
        QCOMPARE(m_row->volume(), 0.5F);
        dial("dlPan")->setValue(-3);
        QCOMPARE(m_row->pan(), -0.3F);
    }

    void everyDialStepComesBack()
    {
        for (int step = 0; step <= 100; ++step) {
            dial("dlVolume")->setValue(step);
            const float volume = m_row->volume();
            dial("dlVolume")->setValue(0);
            m_row->setVolume(volume);
            QCOMPARE(dial("dlVolume")->value(), step);
        }
        for (int step = -10; step <= 10; ++step) {
            dial("dlPan")->setValue(step);
            const float pan = m_row->pan();
            dial("dlPan")->setValue(0);
            m_row->setPan(pan);
            QCOMPARE(dial("dlPan")->value(), step);
        }
    }

    void volumeAndPanStayWithinTheDials()
    {
        m_row->setVolume(1e30F);
        QCOMPARE(m_row->volume(), 1.0F);
        m_row->setVolume(-5.0F);
        QCOMPARE(m_row->volume(), 0.0F);
        m_row->setPan(-1e30F);
        QCOMPARE(m_row->pan(), -1.0F);
        m_row->setPan(std::numeric_limits<float>::quiet_NaN());
        QCOMPARE(m_row->pan(), 0.0F);
    }

    void dialsReportTheirChanges()
    {
        const QSignalSpy volume(m_row, &TrackWidget::trackVolumeChanged);
        const QSignalSpy pan(m_row, &TrackWidget::trackPanChanged);
        QVERIFY(show(*m_row));
        dial("dlVolume")->setFocus();
        press(Qt::Key_Left);
        QCOMPARE(m_row->volume(), 0.99F);
        QCOMPARE(volume.count(), 1);
        QCOMPARE(pan.count(), 0);
        dial("dlPan")->setFocus();
        press(Qt::Key_Right);
        QCOMPARE(m_row->pan(), 0.1F);
        QCOMPARE(volume.count(), 1);
        QCOMPARE(pan.count(), 1);
    }

    void theInstrumentIsTheChosenOne()
    {
        const QSignalSpy spy(m_row, &TrackWidget::trackInstrumentChanged);
        m_row->setInstrumentIndex(1);
        QCOMPARE(instruments()->currentText(), QStringLiteral("Lute"));
        QCOMPARE(m_row->instrument().name(), QStringLiteral("Lute"));
        QCOMPARE(spy.count(), 1);
        QVERIFY(show(*m_row));
        instruments()->setFocus();
        press(Qt::Key_End);
        QCOMPARE(m_row->instrument().name(), QStringLiteral("Viola"));
        QCOMPARE(spy.count(), 2);
    }

    void anInstrumentThatIsNotThereIsNone()
    {
        m_row->setInstrumentIndex(99);
        QCOMPARE(m_row->instrument(), Instrument());
        m_row->setInstrumentIndex(0);
        QCOMPARE(m_row->instrument().name(), QStringLiteral("Flute"));
    }

    void aLongInstrumentNameDoesNotWidenTheRow()
    {
        QuillmoorInstrumentSet set(QDir(saved("none")), false);
        set.add(QString(5000, QLatin1Char('x')), Instrument(), QIcon());
        InstrumentSetModel model(&set, nullptr);
        TrackWidget row(QStringLiteral("T1"), Track(), &model, nullptr);
        QCOMPARE(row.sizeHint().width(), m_row->sizeHint().width());
    }

    // Selection and muting

    void aClickSelects()
    {
        const QSignalSpy spy(m_row, &TrackWidget::trackSelected);
        QVERIFY(show(*m_row));
        click(find<QWidget>("chkSelect"));
        QVERIFY(m_row->isSelected());
        QCOMPARE(m_row->styleSheet(), text(Selected));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.last(), QVariantList() << true);
        press(Qt::Key_Space);
        QVERIFY(!m_row->isSelected());
        QCOMPARE(m_row->styleSheet(), text(NotSelected));
        QCOMPARE(spy.last(), QVariantList() << false);
    }

    void selectionIsSetWithoutASignal()
    {
        const QSignalSpy spy(m_row, &TrackWidget::trackSelected);
        m_row->setSelected(true);
        QVERIFY(m_row->isSelected());
        QVERIFY(find<QCheckBox>("chkSelect")->isChecked());
        QCOMPARE(m_row->styleSheet(), text(Selected));
        m_row->setSelected(false);
        QCOMPARE(m_row->styleSheet(), text(NotSelected));
        QCOMPARE(spy.count(), 0);
    }

    void aClickMutes()
    {
        const QSignalSpy spy(m_row, &TrackWidget::trackMuteChanged);
        QVERIFY(show(*m_row));
        click(find<QWidget>("btnMute"));
        QVERIFY(m_row->isMuted());
        QCOMPARE(spy.count(), 1);
        click(find<QWidget>("btnMute"));
        QVERIFY(!m_row->isMuted());
        QCOMPARE(spy.count(), 2);
    }

    void theMuteEntryIsAClick()
    {
        const QSignalSpy spy(m_row, &TrackWidget::trackMuteChanged);
        entry("btnMute", "(Un)mute")->trigger();
        QVERIFY(m_row->isMuted());
        QCOMPARE(spy.count(), 1);
        entry("btnMute", "(Un)mute")->trigger();
        QVERIFY(!m_row->isMuted());
    }

    void muteIsSetWithOrWithoutASignal()
    {
        const QSignalSpy spy(m_row, &TrackWidget::trackMuteChanged);
        m_row->setMuted(true, false);
        QVERIFY(m_row->isMuted());
        QCOMPARE(spy.count(), 0);
        m_row->setMuted(true, true);
        QCOMPARE(spy.count(), 1);
        m_row->setMuted(false, true);
        QVERIFY(!m_row->isMuted());
        QCOMPARE(spy.count(), 2);
    }

    void mutedNotesAreGrey_data()
    {
        QTest::addColumn<bool>("byClick");
        QTest::newRow("by a click") << true;
        QTest::newRow("by the window") << false;
    }
    void mutedNotesAreGrey()
    {
        QFETCH(const bool, byClick);
        Settings::instance().setValue(Settings::DrawOctaveLines, false);
        Track track;
        track.addEvent(TrackEvent::makeNote(65, 0, 120960));
        track.sortEvents();
        makeRow(track);
        m_row->setMaxLength(120960);
        const auto colors = [this] {
            const QImage image = strip()->grab().toImage();
            QSet<QRgb> found;
            for (int y = 0; y < image.height(); ++y)
                found.insert(image.pixel(20, y));
            return found;
        };
        QVERIFY(colors().contains(qRgb(32, 96, 255)));
        if (byClick)
            find<QCheckBox>("btnMute")->click();
        else
            m_row->setMuted(true, false);
        QVERIFY(colors().contains(qRgb(64, 64, 64)));
        QVERIFY(!colors().contains(qRgb(32, 96, 255)));
    }

    void soloIsReported()
    {
        const QSignalSpy spy(m_row, &TrackWidget::trackSolo);
        entry("btnMute", "Solo")->trigger();
        QCOMPARE(spy.count(), 1);
        QVERIFY(!m_row->isMuted());
    }

    // Moving and removing

    void buttonsMoveTheRow()
    {
        const QSignalSpy up(m_row, &TrackWidget::trackMoveUp);
        const QSignalSpy down(m_row, &TrackWidget::trackMoveDown);
        QVERIFY(show(*m_row));
        click(find<QWidget>("btnUp"));
        QCOMPARE(up.count(), 1);
        QCOMPARE(down.count(), 0);
        click(find<QWidget>("btnDown"));
        QCOMPARE(down.count(), 1);
        m_row->setMoveEnabled(false, true);
        QVERIFY(!find<QWidget>("btnUp")->isEnabled());
        QVERIFY(find<QWidget>("btnDown")->isEnabled());
        m_row->setMoveEnabled(true, false);
        QVERIFY(find<QWidget>("btnUp")->isEnabled());
        QVERIFY(!find<QWidget>("btnDown")->isEnabled());
    }

    void aRemovedRowGoesAfterItHasReported()
    {
        int reports = 0;
        connect(m_row, &TrackWidget::trackRemoved, this, [&] {
            ++reports;
            QCOMPARE(m_row->trackId(), QStringLiteral("T7"));
        });
        QVERIFY(show(*m_row));
        click(find<QWidget>("btnDelete"));
        QTRY_VERIFY(m_row.isNull());
        QCOMPARE(reports, 1);
    }

    // The strip

    void theStripSeeks()
    {
        m_row->setMaxLength(120960);
        strip()->resize(400, 60);
        const QSignalSpy spy(m_row, &TrackWidget::trackSeek);
        QTest::mouseClick(strip(), Qt::LeftButton, Qt::NoModifier, QPoint(300, 20));
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.first(), QVariantList() << quint64(90720));
    }

    void theStripShowsPlayingAndPosition()
    {
        m_row->setMaxLength(120960);
        m_row->setPlaying(true);
        m_row->setPosition(30240);
        QVERIFY(strip()->isPlaying());
        QCOMPARE(strip()->position(), quint64(30240));
        m_row->setPlaying(false);
        QVERIFY(!strip()->isPlaying());
    }

    void theStripShowsTheChangedTrack()
    {
        Settings::instance().setValue(Settings::DrawOctaveLines, false);
        m_row->setMaxLength(120960);
        const QImage empty = strip()->grab().toImage();
        const QSignalSpy spy(m_row, &TrackWidget::trackChanged);
        m_row->track() = withPitches({60});
        m_row->onTrackChanged();
        QCOMPARE(spy.count(), 1);
        QVERIFY(strip()->grab().toImage() != empty);
    }

    // The wheel

    void theWheelDoesNotChangeTheInstrument()
    {
        QVERIFY(show(*m_row));
        QWheelEvent wheel(QPointF(10, 10), instruments()->mapToGlobal(QPoint(10, 10)), QPoint(),
                          QPoint(0, -120), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        wheel.accept();
        for (const bool hasFocus : {false, true}) {
            if (hasFocus)
                instruments()->setFocus();
            QApplication::sendEvent(instruments(), &wheel);
            QCOMPARE(instruments()->currentIndex(), 0);
            QVERIFY(!wheel.isAccepted());
        }
    }

    void onlyTheBoxIsKeptFromTheWheel()
    {
        QWheelEvent wheel(QPointF(10, 10), QPointF(10, 10), QPoint(), QPoint(0, -120), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        wheel.accept();
        QVERIFY(!m_row->eventFilter(dial("dlPan"), &wheel));
        QVERIFY(wheel.isAccepted());
        QVERIFY(m_row->eventFilter(instruments(), &wheel));
        QVERIFY(!wheel.isAccepted());
        instruments()->setFocusPolicy(Qt::WheelFocus);
        QVERIFY(!m_row->eventFilter(instruments(), &wheel));
        QVERIFY(wheel.isAccepted());
        QEvent other(QEvent::Enter);
        QVERIFY(!m_row->eventFilter(instruments(), &other));
    }

    void theWheelChangesABoxThatAsksForIt()
    {
        QVERIFY(show(*m_row));
        instruments()->setFocusPolicy(Qt::WheelFocus);
        QWheelEvent wheel(QPointF(10, 10), instruments()->mapToGlobal(QPoint(10, 10)), QPoint(),
                          QPoint(0, -120), Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(instruments(), &wheel);
        QCOMPARE(instruments()->currentIndex(), 1);
        QVERIFY(wheel.isAccepted());
    }

    // Saving

    void saveWritesTheTextAsItStands()
    {
        Track track = titled("A");
        track.setAbc(text("X:1\nT:A\nK:C\nC D % caf\xc3\xa9\n"));
        track.setFileName(saved("a.abc"));
        makeRow(track);
        const QSignalSpy spy(m_row, &TrackWidget::trackChanged);
        m_row->onSave();
        QCOMPARE(contents(saved("a.abc")), QByteArray("X:1\nT:A\nK:C\nC D % caf\xc3\xa9\n"));
        QCOMPARE(spy.count(), 0);
    }

    void aTrackWithoutTextIsGenerated()
    {
        Track track = withPitches({60, 64});
        track.setFileName(saved("b.abc"));
        makeRow(track);
        entry("btnEdit", "Save")->trigger();
        QVERIFY(contents(saved("b.abc")).startsWith("X: 1\n"));
        QCOMPARE(pitches(loadABCFile(saved("b.abc"))), (QVector<quint32>{60, 64}));
    }

    void saveAsksForANameWhenThereIsNone()
    {
        makeRow(titled("Old <b>Bear</b> %1"));
        DialogAnswers answers;
        answers.choose(saved("c.abc"));
        m_row->onSave();
        QCOMPARE(answers.seen(),
                 QStringList()
                     << QStringLiteral(
                            "chooser [Save track 'Old <b>Bear</b> %1' as..] ABC Files (*.abc); in ")
                         + m_home->path());
        QCOMPARE(m_row->track().fileName(), saved("c.abc"));
        QVERIFY(contents(saved("c.abc")).contains("T: Old <b>Bear</b> %1\n"));
    }

    void aTrackWithoutTitleIsSavedAsUntitled()
    {
        DialogAnswers answers;
        answers.cancel();
        entry("btnEdit", "Save As...")->trigger();
        QVERIFY(answers.seen().value(0).startsWith(
            QStringLiteral("chooser [Save track 'Untitled' as..] ")));
    }

    void aLongTitleDoesNotOverflowTheCaption()
    {
        makeRow(titled(QByteArray(1000000, 'x').constData()));
        DialogAnswers answers;
        answers.cancel();
        m_row->onSaveAs();
        QVERIFY(answers.seen().value(0).size() < 1000);
    }

    void saveAsKeepsTheDirectory()
    {
        QVERIFY(QDir(m_home->path()).mkpath(QStringLiteral("songs")));
        DialogAnswers answers;
        answers.choose(saved("songs/d.abc"));
        m_row->onSaveAs();
        QCOMPARE(Settings::instance().value(Settings::DirAbcSave).toString(), saved("songs"));
    }

    void aCancelledSaveAsChangesNothing()
    {
        Track track = titled("A");
        track.setFileName(saved("e.abc"));
        makeRow(track);
        DialogAnswers answers;
        answers.cancel();
        m_row->onSaveAs();
        QVERIFY(answers.isDone());
        QCOMPARE(m_row->track().fileName(), saved("e.abc"));
        QCOMPARE(Settings::instance().value(Settings::DirAbcSave).toString(), m_home->path());
        QVERIFY(!QFile::exists(saved("e.abc")));
    }

    void aFileThatCannotBeOpenedIsReported()
    {
        Track track = titled("A");
        track.setFileName(saved("no/such/folder/f.abc"));
        makeRow(track);
        DialogAnswers answers;
        answers.press("OK");
        m_row->onSave();
        QCOMPARE(answers.seen(),
                 texts({"warning [Quillmoor Composer] Could not open the file for saving. (OK)"}));
        QCOMPARE(m_row->track().fileName(), saved("no/such/folder/f.abc"));
    }

    void aNameThatCannotBeWrittenToStaysSet()
    {
        DialogAnswers answers;
        answers.choose(QStringLiteral("/proc/version.abc")).press("OK");
        m_row->onSaveAs();
        QCOMPARE(answers.seen().value(1),
                 text("warning [Quillmoor Composer] Could not open the file for saving. (OK)"));
        QCOMPARE(m_row->track().fileName(), QStringLiteral("/proc/version.abc"));
    }

    // Octaves

    void anOctaveUpMovesWhatStaysOnThePiano()
    {
        makeRow(withPitches({60, 100, 96, 97, 21}));
        const QSignalSpy spy(m_row, &TrackWidget::trackChanged);
        entry("btnEdit", "Transpose one octave up")->trigger();
        QCOMPARE(pitches(m_row->track()), (QVector<quint32>{72, 100, 108, 97, 33}));
        QCOMPARE(spy.count(), 1);
    }

    void anOctaveDownMovesWhatStaysOnThePiano()
    {
        makeRow(withPitches({30, 45, 33, 32, 108}));
        const QSignalSpy spy(m_row, &TrackWidget::trackChanged);
        entry("btnEdit", "Transpose one octave down")->trigger();
        QCOMPARE(pitches(m_row->track()), (QVector<quint32>{30, 33, 21, 32, 96}));
        QCOMPARE(spy.count(), 1);
    }

    void anOctaveLeavesTempoAndHeaders()
    {
        Track track = withPitches({60});
        track.setTicksPerMinute(1000000);
        track.setMeasure(90720, 3);
        track.setAbc(QStringLiteral("X:1\n"));
        track.setFileName(saved("g.abc"));
        track.addHeader(QStringLiteral("T"), QStringLiteral("First"));
        track.addHeader(QStringLiteral("T"), QStringLiteral("Last"));
        makeRow(track);
        m_row->onTransposeUp();
        QCOMPARE(m_row->track().ticksPerMinute(), quint64(1000000));
        QCOMPARE(m_row->track().headers(QStringLiteral("T")), texts({"Last", "First"}));
        QCOMPARE(m_row->track().measureLength(), 120960U);
        QCOMPARE(m_row->track().beatsPerMeasure(), 4U);
        QCOMPARE(m_row->track().fileName(), QString());
        QCOMPARE(title(), QStringLiteral("Last"));
        QCOMPARE(pitches(m_row->track()), (QVector<quint32>{72}));
        QVERIFY(m_row->track().abc().contains(QStringLiteral("c")));
    }

    void aTransposedTrackIsSavedUnderANewName()
    {
        Track track = titled("A");
        track.setFileName(saved("h.abc"));
        makeRow(track);
        m_row->onTransposeDown();
        DialogAnswers answers;
        answers.cancel();
        m_row->onSave();
        QVERIFY(answers.isDone());
        QVERIFY(!QFile::exists(saved("h.abc")));
    }

    // The editor

    void theEditorIsOpenedOnceAndRaised_data()
    {
        QTest::addColumn<bool>("byEntry");
        QTest::newRow("by the button") << false;
        QTest::newRow("by the menu") << true;
    }
    void theEditorIsOpenedOnceAndRaised()
    {
        QFETCH(const bool, byEntry);
        QVERIFY(show(*m_row));
        const auto open = [&] {
            if (byEntry)
                entry("btnEdit", "Open ABC Editor")->trigger();
            else
                find<QToolButton>("btnEdit")->click();
        };
        QVERIFY(openEditor() == nullptr);
        open();
        const QPointer<ABCEditor> editor = openEditor();
        QVERIFY(editor != nullptr);
        QVERIFY(editor->isVisible());
        QVERIFY(editor->parentWidget() == nullptr);
        editor->showMinimized();
        open();
        QCOMPARE(openEditor(), editor.data());
        QVERIFY(!editor->isMinimized());
        QTRY_VERIFY(editor->isActiveWindow());
    }

    void aClosedEditorIsOpenedAnew()
    {
        m_row->onEditABCClicked();
        const QPointer<ABCEditor> editor = openEditor();
        editor->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(editor.isNull());
        m_row->setPlaying(true);
        m_row->setPosition(5);
        m_row->setNoteState(0, true);
        m_row->onEditABCClicked();
        QVERIFY(openEditor() != nullptr);
    }

    void theEditorDoesNotKeepTheProgramRunning()
    {
        m_row->onEditABCClicked();
        QVERIFY(!openEditor()->testAttribute(Qt::WA_QuitOnClose));
    }

    void theEditorsSignalsAreTheRows()
    {
        m_row->onEditABCClicked();
        const QSignalSpy changed(m_row, &TrackWidget::trackChanged);
        const QSignalSpy play(m_row, &TrackWidget::trackPlay);
        const QSignalSpy stop(m_row, &TrackWidget::trackStop);
        m_row->track() = titled("Edited");
        emit openEditor()->trackChanged();
        QCOMPARE(changed.count(), 1);
        QCOMPARE(title(), QStringLiteral("Edited"));
        emit openEditor()->trackPlay();
        QCOMPARE(play.count(), 1);
        QCOMPARE(stop.count(), 0);
        emit openEditor()->trackStop();
        QCOMPARE(stop.count(), 1);
    }

    void whatIsAppliedInTheEditorIsInTheRow()
    {
        makeRow(titled("Old"));
        m_row->onEditABCClicked();
        const QSignalSpy changed(m_row, &TrackWidget::trackChanged);
        edit(QStringLiteral("X:1\nT:New\nL:1/4\nK:C\nC E G\n"));
        QCOMPARE(title(), QStringLiteral("Old"));
        QTRY_VERIFY(openEditor()->isActiveWindow());
        press(Qt::Key_F6);
        QCOMPARE(changed.count(), 1);
        QCOMPARE(title(), QStringLiteral("New"));
        QCOMPARE(pitches(m_row->track()), (QVector<quint32>{60, 64, 67}));
    }

    void aTransposedTrackIsReloadedByTheEditor()
    {
        makeRow(withPitches({60}));
        m_row->onEditABCClicked();
        m_row->onTransposeUp();
        QCOMPARE(editorText()->toPlainText(), m_row->track().abc());
        QVERIFY(!editorText()->document()->isModified());
        QVERIFY(editorText()->toPlainText().contains(QLatin1Char('c')));
    }

    void theEditorsTitleFollowsTheFileName()
    {
        m_row->onEditABCClicked();
        DialogAnswers answers;
        answers.choose(saved("named.abc"));
        m_row->onSaveAs();
        QCOMPARE(openEditor()->windowTitle(),
                 QStringLiteral("ABC Editor (named.abc) - Quillmoor Composer"));
    }

    void theRowSavesItsTrackAndNotWhatTheEditorHasNotApplied()
    {
        Track track = titled("A");
        track.setAbc(QStringLiteral("X:1\nT:A\nK:C\nC\n"));
        track.setFileName(saved("unapplied.abc"));
        makeRow(track);
        m_row->onEditABCClicked();
        edit(QStringLiteral("X:1\nT:A\nK:C\nD\n"));
        m_row->onSave();
        QCOMPARE(contents(saved("unapplied.abc")), QByteArray("X:1\nT:A\nK:C\nC\n"));
        QVERIFY(editorText()->document()->isModified());
    }

    void theEditorIsToldWhereThePlayerIs()
    {
        m_row->onEditABCClicked();
        m_row->setPlaying(true);
        m_row->setPosition(45360);
        QCOMPARE(positionLabel(), QStringLiteral("Pos: 1:02:50"));
        m_row->setPlaying(false);
        QCOMPARE(positionLabel(), QStringLiteral("Pos: 1:01:00"));
    }

    void aNewEditorIsToldWhetherTheTrackPlays()
    {
        Settings::instance().setValue(Settings::PianoRollVisible, true);
        QImage seen[2];
        for (const bool isPlaying : {false, true}) {
            makeRow(withPitches({60}));
            m_row->setPlaying(isPlaying);
            m_row->onEditABCClicked();
            m_row->setPosition(30240);
            seen[int(isPlaying)] = pianoRoll()->grab().toImage();
        }
        QVERIFY(seen[0] != seen[1]);
    }

    void theEditorShowsWhichNotesSound()
    {
        Settings::instance().setValue(Settings::PianoRollVisible, true);
        makeRow(withPitches({108, 107}));
        m_row->onEditABCClicked();
        QTRY_VERIFY(pianoRoll()->isVisible());
        const auto seen = [] { return pianoRoll()->grab().toImage(); };
        const QImage silent = seen();
        m_row->setNoteState(1, true);
        QVERIFY(seen() != silent);
        m_row->setNoteState(1, false);
        QCOMPARE(seen(), silent);
    }

    void notesWithoutAnEditorAreDropped()
    {
        m_row->setNoteState(0, true);
        m_row->setNoteState(4000000000U, false);
        QVERIFY(openEditor() == nullptr);
    }

    void theEditorGoesWithTheRow()
    {
        m_row->onEditABCClicked();
        const QPointer<ABCEditor> editor = openEditor();
        delete m_row;
        QVERIFY(editor.isNull());
    }

    void theEditorGoesWithARemovedRow()
    {
        m_row->onEditABCClicked();
        const QPointer<ABCEditor> editor = openEditor();
        m_row->onRemoveClicked();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(m_row.isNull());
        QVERIFY(editor.isNull());
    }

    void theEditorOfARemovedRowLeavesThePianoRollOn()
    {
        Settings::instance().setValue(Settings::PianoRollVisible, true);
        m_row->onEditABCClicked();
        QTRY_VERIFY(pianoRoll()->isVisible());
        delete m_row;
        QVERIFY(Settings::instance().value(Settings::PianoRollVisible).toBool());
    }

    void aRowMayGoWhileItsEditorIsCalling()
    {
        m_row->onEditABCClicked();
        const QPointer<ABCEditor> editor = openEditor();
        connect(m_row, &TrackWidget::trackChanged, this, [this] { delete m_row; });
        edit(QStringLiteral("X:1\nT:New\nL:1/4\nK:C\nC E G\n"));
        QVERIFY(editor->onApply());
        QVERIFY(m_row.isNull());
        QVERIFY(!editor.isNull());
        QVERIFY(!editor->isVisible());
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(editor.isNull());
    }

    void aRowMayGoWhileItIsTransposed()
    {
        m_row->onEditABCClicked();
        connect(m_row, &TrackWidget::trackChanged, this, [this] { delete m_row; });
        m_row->onTransposeUp();
        QVERIFY(m_row.isNull());
        QVERIFY(openEditor() == nullptr);
    }

    // The title

    void theTitleStandsOutOnADarkDesktop()
    {
        const QPalette light = QApplication::palette();
        QApplication::setPalette(QPalette(QColor(53, 53, 53), QColor(42, 42, 42)));
        makeRow(titled("Dark"));
        const auto *const label = find<QLabel>("lblTitle");
        QCOMPARE(label->palette().color(label->foregroundRole()), QColor(Qt::black));
        QApplication::setPalette(light);
    }

    void aLongTitleIsShownByATip()
    {
        makeRow(titled(QByteArray(300, 'W').constData()));
        QVERIFY(show(*m_row));
        auto *const label = find<QLabel>("lblTitle");
        QHelpEvent event(QEvent::ToolTip, QPoint(5, 5), label->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(label, &event);
        QCOMPARE(QToolTip::text(), QStringLiteral("<p>%1</p>").arg(QString(300, QLatin1Char('W'))));
        QToolTip::hideText();
    }

    void aTipIsNoMarkup()
    {
        makeRow(titled("<b>Bold</b> & other words that do not find a place in the row"));
        QVERIFY(show(*m_row));
        auto *const label = find<QLabel>("lblTitle");
        QHelpEvent event(QEvent::ToolTip, QPoint(5, 5), label->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(label, &event);
        QVERIFY(QToolTip::text().startsWith(text("<p>&lt;b&gt;Bold&lt;/b&gt; &amp; other")));
        QToolTip::hideText();
    }

    void aShortTitleNeedsNoTip()
    {
        makeRow(titled("Short"));
        QVERIFY(show(*m_row));
        auto *const label = find<QLabel>("lblTitle");
        QHelpEvent event(QEvent::ToolTip, QPoint(5, 5), label->mapToGlobal(QPoint(5, 5)));
        QApplication::sendEvent(label, &event);
        QCOMPARE(QToolTip::text(), QString());
    }

    void anEndlessTitleIsShownAtOnce()
    {
        makeRow(titled(QByteArray(20000000, 'W').constData()));
        QVERIFY(show(*m_row));
        QVERIFY(m_row->grab().width() < 2000);
    }
};

QTEST_MAIN(TestTrackWidget)
#include "tst_TrackWidget.moc"
