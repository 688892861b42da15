#include "icons/Icons.h"

#include <QDir>
#include <QImage>
#include <QRegularExpression>
#include <QtTest>

class TestIcons : public QObject {
    Q_OBJECT

private:
    static QDir drawings() { return {QFINDTESTDATA("../../icons/src")}; }

    /// The size that a drawing gives itself.
    static QSize sizeOf(const QString &drawing)
    {
        QFile file(drawings().filePath(drawing));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        static const QRegularExpression size(
            QStringLiteral("<svg [^>]*\\bwidth=\"(\\d+)\" height=\"(\\d+)\""));
        const QRegularExpressionMatch match = size.match(QString::fromUtf8(file.readAll()));
        return {match.captured(1).toInt(), match.captured(2).toInt()};
    }

    static QImage picture(const QString &name)
    {
        return QImage(QStringLiteral(":/icons/%1.png").arg(name));
    }

    static QStringList namesIn(const QDir &folder, const QString &suffix)
    {
        QStringList names;
        for (const QString &file : folder.entryList({QLatin1Char('*') + suffix}, QDir::Files))
            names << file.chopped(suffix.size());
        return names;
    }

    static bool isEmpty(const QImage &image)
    {
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (qAlpha(image.pixel(x, y)) > 0)
                    return false;
        return true;
    }

private slots:
    void initTestCase() { Icons::load(); }

    void everyDrawingIsCompiledInAtBothDensities_data()
    {
        QTest::addColumn<QSize>("size");
        for (const QString &name : namesIn(drawings(), QStringLiteral(".svg")))
            QTest::newRow(qPrintable(name)) << sizeOf(name + QStringLiteral(".svg"));
    }
    void everyDrawingIsCompiledInAtBothDensities()
    {
        QFETCH(const QSize, size);
        const QString name = QString::fromUtf8(QTest::currentDataTag());
        QVERIFY(!size.isEmpty());
        QCOMPARE(picture(name).size(), size);
        QCOMPARE(picture(name + QStringLiteral("@2x")).size(), 2 * size);
        QVERIFY(!isEmpty(picture(name)));
        QVERIFY(!isEmpty(picture(name + QStringLiteral("@2x"))));
    }

    void everyPictureHasADrawing()
    {
        static const QRegularExpression variant(QStringLiteral("(@2x|-\\d+)$"));
        QStringList names = namesIn(QDir(QStringLiteral(":/icons")), QStringLiteral(".png"));
        names.replaceInStrings(variant, QString());
        names.removeDuplicates();
        QCOMPARE(names, namesIn(drawings(), QStringLiteral(".svg")));
    }

    void theWarningHasNoBlurredEdgeOrMark()
    {
        const QImage image = picture(QStringLiteral("exclamation"));
        QCOMPARE(qAlpha(image.pixel(8, 13)), 255);
        QCOMPARE(qAlpha(image.pixel(8, 14)), 0);
        const QColor mark(0x2d, 0x24, 0x16);
        const QColor ground(0xe8, 0xa0, 0x20);
        for (int y = 4; y < 14; ++y) {
            const bool isMarked = (y >= 5 && y < 10) || (y >= 11 && y < 13);
            QCOMPARE(image.pixelColor(7, y), isMarked ? mark : ground);
            QCOMPARE(image.pixelColor(8, y), isMarked ? mark : ground);
        }
    }

    void thePicturesInUseAreThere_data()
    {
        QTest::addColumn<QSize>("size");
        for (const char *name : {"about",        "apply",        "applyinstrument",
                                 "autoscroll",   "bug",          "clipboard",
                                 "color-swatch", "copy",         "cut",
                                 "deletetrack",  "donate",       "duplicatetrack",
                                 "editdoc",      "edittrack",    "exclamation",
                                 "exit",         "export",       "find",
                                 "forum",        "import",       "instrument",
                                 "key",          "merge",        "midiimport",
                                 "movedown",     "moveup",       "mute",
                                 "mutectx",      "newtrack",     "open",
                                 "paste",        "piano",        "play",
                                 "preferences",  "preview",      "quickrealign",
                                 "realign",      "redo",         "removeone",
                                 "removetrack",  "revert",       "save",
                                 "saveall",      "saveas",       "selectall",
                                 "solo",         "sound",        "soundctx",
                                 "stop",         "transpose",    "transposedown",
                                 "transposeup",  "undo",         "unitlength",
                                 "update",       "zoom-default", "zoom-in",
                                 "zoom-out"})
            QTest::newRow(name) << QSize(16, 16);
        for (const char *name : {"speaker-panning", "speaker-volume"})
            QTest::newRow(name) << QSize(32, 16);
        QTest::newRow("appicon") << QSize(64, 64);
    }
    void thePicturesInUseAreThere()
    {
        QFETCH(const QSize, size);
        QCOMPARE(picture(QString::fromUtf8(QTest::currentDataTag())).size(), size);
    }

    void theProgramsIconIsSharpInEverySize_data()
    {
        QTest::addColumn<int>("size");
        for (const int size : {16, 32, 48, 64, 128, 256})
            QTest::addRow("%d", size) << size;
    }
    void theProgramsIconIsSharpInEverySize()
    {
        QFETCH(const int, size);
        const QString name =
            size == 64 ? QStringLiteral("appicon") : QStringLiteral("appicon-%1").arg(size);
        const QImage shown = Icons::application().pixmap(QSize(size, size)).toImage();
        QCOMPARE(shown, picture(name).convertToFormat(shown.format()));
        QCOMPARE(shown.size(), QSize(size, size));
    }
};

QTEST_MAIN(TestIcons)
#include "tst_Icons.moc"
