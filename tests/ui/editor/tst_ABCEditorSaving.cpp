#include "EditorStage.h"
#include "model/Settings.h"
#include "support/DialogAnswers.h"
#include "support/SettingsSandbox.h"
#include "support/SizeLimit.h"
#include "support/WidgetDriver.h"
#include "ui/editor/ABCCodeEditor.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace WidgetDriver;

namespace {

const QString notOpened =
    QStringLiteral("warning [ABC Editor] Could not open the file for saving. (OK)");
const QString tooLarge =
    QStringLiteral("warning [ABC Editor] Could not write the file: File too large (OK)");
const QString badTextBox =
    QStringLiteral("critical [ABC Editor] Could not parse ABC: Unknown token found in ABC body at "
                   "line 3, column 2. (OK)");

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(not there)");
}

void makeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("could not write the test's file");
}

QString stored(Settings::Setting setting)
{
    return Settings::instance().value(setting).toString();
}

/// The administrator may write everywhere; the tests are for everyone else.
class OrdinaryUser {
public:
    OrdinaryUser() { m_isAdministrator = geteuid() == 0 && seteuid(Nobody) == 0; }
    ~OrdinaryUser()
    {
        if (m_isAdministrator && seteuid(0) != 0)
            qFatal("could not become the administrator again");
    }
    Q_DISABLE_COPY(OrdinaryUser)

private:
    static constexpr uid_t Nobody = 65534;
    bool m_isAdministrator = false;
};

} // namespace

class TestABCEditorSaving : public QObject {
    Q_OBJECT

private:
    QString path(const char *name = "tune.abc") const
    {
        return m_dir->filePath(QString::fromUtf8(name));
    }
    QStringList listing() const
    {
        return QDir(m_dir->path()).entryList(QDir::Files | QDir::Hidden);
    }

    SettingsSandbox m_sandbox;
    QScopedPointer<QTemporaryDir> m_dir;

private slots:
    void init()
    {
        m_dir.reset(new QTemporaryDir);
        Settings::instance().setValue(Settings::DirAbcSave, m_dir->path());
        Settings::instance().setValue(Settings::DirWavSave, QString());
    }

    void saveWritesTheTextAndAppliesIt()
    {
        EditorStage stage(EditorStage::shortTune(), path());
        QVERIFY(stage.show());
        QSignalSpy changed(stage.editor, &ABCEditor::trackChanged);
        press(Qt::Key_End, Qt::ControlModifier);
        type(QStringLiteral("D"));
        press(Qt::Key_S, Qt::ControlModifier);
        QCOMPARE(contentsOf(path()), (EditorStage::shortTune() + QLatin1Char('D')).toUtf8());
        QCOMPARE(stage.pitches(), QStringLiteral("60 62"));
        QCOMPARE(changed.size(), 1);
        QVERIFY(!stage.isModified());
        QCOMPARE(stage.track.fileName(), path());
        QCOMPARE(listing(), texts({"tune.abc"}));
    }

    void saveWritesUnmodifiedTextToo()
    {
        EditorStage stage(EditorStage::shortTune(), path());
        QSignalSpy changed(stage.editor, &ABCEditor::trackChanged);
        stage.trigger("actionSave");
        QCOMPARE(contentsOf(path()), EditorStage::shortTune().toUtf8());
        QCOMPARE(changed.size(), 0);
    }

    void saveWritesUtf8()
    {
        EditorStage stage(QStringLiteral("X:1\nT:José\nK:C\nC"), path());
        stage.trigger("actionSave");
        QCOMPARE(contentsOf(path()), QByteArray("X:1\nT:Jos\xC3\xA9\nK:C\nC"));
    }

    void saveReplacesALongerFile()
    {
        makeFile(path(), QByteArray(5000, 'x'));
        EditorStage stage(EditorStage::shortTune(), path());
        stage.trigger("actionSave");
        QCOMPARE(contentsOf(path()), EditorStage::shortTune().toUtf8());
    }

    void aTextThatCannotBeReadIsSavedAndNotApplied()
    {
        EditorStage stage(EditorStage::shortTune(), path());
        stage.replaceText(QStringLiteral("X:1\nK:C\nC*"));
        DialogAnswers answers;
        answers.press("OK");
        stage.trigger("actionSave");
        QCOMPARE(answers.seen(), QStringList(badTextBox));
        QCOMPARE(contentsOf(path()), QByteArray("X:1\nK:C\nC*"));
        QCOMPARE(stage.pitches(), QStringLiteral("60"));
        QVERIFY(stage.isModified());
    }

    void saveAsksForAMissingName()
    {
        EditorStage stage;
        DialogAnswers answers;
        answers.choose(path());
        stage.trigger("actionSave");
        QCOMPARE(answers.seen(),
                 QStringList(QStringLiteral("chooser [Save ABC as..] ABC Files (*.abc); in %1")
                                 .arg(m_dir->path())));
        QCOMPARE(contentsOf(path()), EditorStage::shortTune().toUtf8());
    }

    void saveAsTakesTheNewName()
    {
        EditorStage stage(EditorStage::shortTune(), path());
        QVERIFY(stage.show());
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("songs")));
        DialogAnswers answers;
        answers.choose(path("songs/other.abc"));
        press(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
        QVERIFY(answers.isDone());
        QCOMPARE(contentsOf(path("songs/other.abc")), EditorStage::shortTune().toUtf8());
        QVERIFY(!QFile::exists(path()));
        QCOMPARE(stage.track.fileName(), path("songs/other.abc"));
        QCOMPARE(stage.editor->windowTitle(),
                 QStringLiteral("ABC Editor (other.abc) - Quillmoor Composer"));
    }

    void saveAsStoresItsDirectoryAsThatOfWaves()
    {
        EditorStage stage;
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("songs")));
        DialogAnswers answers;
        answers.choose(path("songs/other.abc"));
        stage.trigger("actionSaveAs");
        QCOMPARE(stored(Settings::DirWavSave), path("songs"));
        QCOMPARE(stored(Settings::DirAbcSave), m_dir->path());
    }

    void saveAsAppliesToo()
    {
        EditorStage stage;
        stage.replaceText(EditorStage::shortTune() + QStringLiteral("D"));
        DialogAnswers answers;
        answers.choose(path());
        stage.trigger("actionSaveAs");
        QCOMPARE(stage.pitches(), QStringLiteral("60 62"));
        QCOMPARE(stage.track.fileName(), path());
        QVERIFY(!stage.isModified());
    }

    void saveAsProposesTheNameThatItHas()
    {
        EditorStage stage(EditorStage::shortTune(), QStringLiteral("/elsewhere/José.abc"));
        DialogAnswers answers;
        answers.visit([](QWidget &) { press(Qt::Key_Return); });
        stage.trigger("actionSaveAs");
        QCOMPARE(stage.track.fileName(), path("José.abc"));
        QCOMPARE(contentsOf(path("José.abc")), EditorStage::shortTune().toUtf8());
    }

    void saveAsCancelledChangesNothing()
    {
        EditorStage stage(EditorStage::shortTune(), QStringLiteral("/elsewhere/tune.abc"));
        stage.replaceText(EditorStage::shortTune() + QStringLiteral("D"));
        DialogAnswers answers;
        answers.cancel();
        stage.trigger("actionSaveAs");
        QVERIFY(answers.isDone());
        QCOMPARE(stage.track.fileName(), QStringLiteral("/elsewhere/tune.abc"));
        QCOMPARE(stage.pitches(), QStringLiteral("60"));
        QVERIFY(stage.isModified());
        QCOMPARE(stored(Settings::DirWavSave), QString());
    }

    void aFileThatCannotBeOpenedIsTold()
    {
        EditorStage stage(EditorStage::shortTune(), QStringLiteral("/nonexistent/tune.abc"));
        QSignalSpy changed(stage.editor, &ABCEditor::trackChanged);
        stage.replaceText(EditorStage::shortTune() + QStringLiteral("D"));
        DialogAnswers answers;
        answers.press("OK");
        stage.trigger("actionSave");
        QCOMPARE(answers.seen(), QStringList(notOpened));
        QCOMPARE(stage.pitches(), QStringLiteral("60"));
        QVERIFY(stage.isModified());
        QCOMPARE(changed.size(), 0);
    }

    void saveAsThatFailsKeepsTheNewName()
    {
        EditorStage stage;
        stage.replaceText(EditorStage::shortTune() + QStringLiteral("D"));
        DialogAnswers answers;
        answers.choose(path("gone/tune.abc")).press("OK");
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("gone")));
        QCOMPARE(chmod(QFile::encodeName(path("gone")).constData(), 0555), 0);
        QCOMPARE(chmod(QFile::encodeName(m_dir->path()).constData(), 0755), 0);
        {
            const OrdinaryUser user;
            stage.trigger("actionSaveAs");
        }
        QCOMPARE(answers.seen().value(1), notOpened);
        QCOMPARE(stage.track.fileName(), path("gone/tune.abc"));
        QCOMPARE(stage.editor->windowTitle(),
                 QStringLiteral("ABC Editor (tune.abc) - Quillmoor Composer"));
        QVERIFY(stage.isModified());
    }

    void aReadOnlyFileIsTold()
    {
        makeFile(path(), "older");
        QCOMPARE(chmod(QFile::encodeName(path()).constData(), 0444), 0);
        QCOMPARE(chmod(QFile::encodeName(m_dir->path()).constData(), 0777), 0);
        EditorStage stage(EditorStage::shortTune(), path());
        DialogAnswers answers;
        answers.press("OK");
        {
            const OrdinaryUser user;
            stage.trigger("actionSave");
        }
        QCOMPARE(answers.seen(), QStringList(notOpened));
        QCOMPARE(contentsOf(path()), QByteArray("older"));
    }

    void aFullDiskIsToldAndLeavesTheOlderFile()
    {
        makeFile(path(), "older");
        EditorStage stage(EditorStage::shortTune(), path());
        stage.replaceText(EditorStage::longTune(4000));
        DialogAnswers answers;
        answers.press("OK");
        {
            const SizeLimit limit(1000);
            stage.trigger("actionSave");
        }
        QCOMPARE(answers.seen(), QStringList(tooLarge));
        QCOMPARE(contentsOf(path()), QByteArray("older"));
        QCOMPARE(listing(), texts({"tune.abc"}));
        QVERIFY(stage.isModified());
        QCOMPARE(stage.pitches(), QStringLiteral("60"));
    }

    void aFullDeviceIsTold()
    {
        EditorStage stage(EditorStage::shortTune(), QStringLiteral("/dev/full"));
        DialogAnswers answers;
        answers.press("OK");
        stage.trigger("actionSave");
        QCOMPARE(answers.seen(),
                 QStringList(QStringLiteral("warning [ABC Editor] Could not write the file: No "
                                            "space left on device (OK)")));
    }

    void aSavedFileCanBeSavedAgainAfterAFailure()
    {
        EditorStage stage(EditorStage::shortTune(), path("missing/tune.abc"));
        DialogAnswers answers;
        answers.press("OK");
        stage.trigger("actionSave");
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("missing")));
        stage.trigger("actionSave");
        QCOMPARE(contentsOf(path("missing/tune.abc")), EditorStage::shortTune().toUtf8());
    }

    void aNewNameFromElsewhereIsInTheTitle()
    {
        EditorStage stage;
        stage.track.setFileName(path("named by the row.abc"));
        stage.editor->updateTitle();
        QCOMPARE(stage.editor->windowTitle(),
                 QStringLiteral("ABC Editor (named by the row.abc) - Quillmoor Composer"));
        stage.trigger("actionSave");
        QCOMPARE(listing(), texts({"named by the row.abc"}));
    }
};

QTEST_MAIN(TestABCEditorSaving)
#include "tst_ABCEditorSaving.moc"
