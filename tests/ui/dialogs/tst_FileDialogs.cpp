#include "support/DialogAnswers.h"
#include "support/SettingsSandbox.h"
#include "support/WidgetDriver.h"
#include "ui/dialogs/FileDialogs.h"

#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QtTest>

using namespace WidgetDriver;

namespace {

const QString caption = QStringLiteral("Save it as..");
const QString filter = QStringLiteral("ABC Files (*.abc)");

QString stored(Settings::Setting setting)
{
    return Settings::instance().value(setting).toString();
}

} // namespace

class TestFileDialogs : public QObject {
    Q_OBJECT

private:
    QString path(const char *name) const { return m_dir->filePath(QString::fromUtf8(name)); }

    static void makeFile(const QString &name)
    {
        QFile file(name);
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

    static QString save(const QString &proposal = {})
    {
        return FileDialogs::saveFile(nullptr, caption, filter, proposal, Settings::DirAbcSave,
                                     Settings::DirWavSave);
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

    void saveAnswersWhatWasChosen()
    {
        DialogAnswers answers;
        answers.choose(path("tune.abc"));
        QCOMPARE(save(), path("tune.abc"));
        QCOMPARE(answers.seen(),
                 QStringList(QStringLiteral("chooser [Save it as..] ABC Files (*.abc); in %1")
                                 .arg(m_dir->path())));
    }

    void saveStoresTheChosenDirectoryInTheOtherSetting()
    {
        QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("songs")));
        DialogAnswers answers;
        answers.choose(path("songs/tune.abc"));
        save();
        QCOMPARE(stored(Settings::DirWavSave), path("songs"));
        QCOMPARE(stored(Settings::DirAbcSave), m_dir->path());
    }

    void saveCancelledAnswersNothing()
    {
        DialogAnswers answers;
        answers.cancel();
        QCOMPARE(save(QStringLiteral("tune.abc")), QString());
        QCOMPARE(stored(Settings::DirWavSave), QString());
    }

    void saveAddsTheSuffix_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("name");
        QTest::newRow("none") << QStringLiteral("tune") << QStringLiteral("tune.abc");
        QTest::newRow("the usual one") << QStringLiteral("tune.abc") << QStringLiteral("tune.abc");
        QTest::newRow("another") << QStringLiteral("tune.txt") << QStringLiteral("tune.txt");
    }
    void saveAddsTheSuffix()
    {
        QFETCH(const QString, typed);
        QFETCH(const QString, name);
        DialogAnswers answers;
        answers.choose(typed);
        QCOMPARE(save(), m_dir->filePath(name));
    }

    void saveAsksAboutTheFileWithTheSuffix()
    {
        makeFile(path("tune.abc"));
        DialogAnswers answers;
        answers.choose(QStringLiteral("tune")).press("Yes");
        QCOMPARE(save(), path("tune.abc"));
        QCOMPARE(answers.seen().value(1),
                 QStringLiteral("warning [Save it as..] tune.abc already exists.\n"
                                "Do you want to replace it? (Yes,No)"));
    }

    /// Enter for the name may come twice.
    void enterDoesNotReplaceAFile()
    {
        makeFile(path("tune.abc"));
        DialogAnswers answers;
        answers.choose(QStringLiteral("tune")).visit([](QWidget &) { press(Qt::Key_Return); });
        answers.cancel();
        QCOMPARE(save(), QString());
        QVERIFY(answers.isDone());
    }

    void aNameOfAnExistingFileIsNoMarkup()
    {
        makeFile(path("<b>x<b>.abc"));
        Qt::TextFormat format = Qt::AutoText;
        DialogAnswers answers;
        answers.choose(path("<b>x<b>.abc")).visit([&](QWidget &box) {
            format = qobject_cast<QMessageBox *>(&box)->textFormat();
            press(Qt::Key_Escape);
        });
        answers.cancel();
        QCOMPARE(save(), QString());
        QCOMPARE(format, Qt::PlainText);
    }

    void saveStaysOpenWhenAFileShallNotBeReplaced()
    {
        makeFile(path("tune.abc"));
        DialogAnswers answers;
        answers.choose(QStringLiteral("tune")).press("No").cancel();
        QCOMPARE(save(), QString());
        QVERIFY(answers.isDone());
    }

    void saveTakesTheProposalOnEnter()
    {
        DialogAnswers answers;
        answers.visit([](QWidget &) { press(Qt::Key_Return); });
        QCOMPARE(save(QStringLiteral("José.abc")), path("José.abc"));
    }

    void aTypedNameTakesThePlaceOfTheProposal()
    {
        DialogAnswers answers;
        answers.visit([](QWidget &) {
            type(QStringLiteral("other"));
            press(Qt::Key_Return);
        });
        QCOMPARE(save(QStringLiteral("tune.abc")), path("other.abc"));
    }

    void saveOpensSomewhereWhenTheDirectoryIsGone()
    {
        Settings::instance().setValue(Settings::DirAbcSave, path("gone"));
        DialogAnswers answers;
        answers.choose(path("tune.abc"));
        QCOMPARE(save(), path("tune.abc"));
    }
};

QTEST_MAIN(TestFileDialogs)
#include "tst_FileDialogs.moc"
