#include "model/FileNameCodec.h"
#include "ui/DroppedFiles.h"

#include <QtTest>

Q_DECLARE_METATYPE(DroppedFiles::Kind)

class tst_DroppedFiles : public QObject {
    Q_OBJECT

private slots:
    void theEndOfTheNameDecides_data();
    void theEndOfTheNameDecides();
    void oneUnsuitableFileSpoilsAll();
    void theNameMayBeAnyBytes();
};

void tst_DroppedFiles::theEndOfTheNameDecides_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<DroppedFiles::Kind>("kind");
    const auto add = [](const char *url, DroppedFiles::Kind kind) {
        QTest::newRow(url) << QString::fromUtf8(url) << kind;
    };
    add("file:///a/tune.abc", DroppedFiles::Abc);
    add("file:///a/TUNE.ABC", DroppedFiles::Abc);
    add("file:///a/song.mid", DroppedFiles::Midi);
    add("file:///a/Song.Mid", DroppedFiles::Midi);
    add("file:///a/tune%2Eabc", DroppedFiles::Abc);
    add("file:///a/100%25.abc", DroppedFiles::Abc);
    add("file:///a/song.midi", DroppedFiles::Other);
    add("file:///a/tune.txt", DroppedFiles::Other);
    add("file:///a/tune.abc/", DroppedFiles::Other);
    add("file:///a/tune.txt?x=.abc", DroppedFiles::Other);
    add("https://a.example/tune.abc", DroppedFiles::Other);
    add("tune.abc", DroppedFiles::Other);
}

void tst_DroppedFiles::theEndOfTheNameDecides()
{
    QFETCH(QString, url);
    QTEST(DroppedFiles::kind(QUrl(url)), "kind");
}

void tst_DroppedFiles::oneUnsuitableFileSpoilsAll()
{
    const QUrl abc(QStringLiteral("file:///a.ABC"));
    const QUrl midi(QStringLiteral("file:///b.mid"));
    const QUrl text(QStringLiteral("file:///c.txt"));
    QVERIFY(DroppedFiles::areSuitable({abc, midi}));
    QVERIFY(!DroppedFiles::areSuitable({abc, text}));
    QVERIFY(!DroppedFiles::areSuitable({}));
}

void tst_DroppedFiles::theNameMayBeAnyBytes()
{
    const auto path = [](const char *url) {
        return FileNameCodec::encode(DroppedFiles::path(QUrl::fromEncoded(url)));
    };
    QCOMPARE(path("file:///a/%C3%9Cbung%20100%25.abc"),
             QByteArray("/a/\xC3\x9C"
                        "bung 100%.abc"));
    QCOMPARE(path("file:///a/%FF%23.abc"), QByteArray("/a/\xFF#.abc"));
}

QTEST_APPLESS_MAIN(tst_DroppedFiles)
#include "tst_DroppedFiles.moc"
