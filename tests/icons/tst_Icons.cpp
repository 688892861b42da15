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

    void thePicturesInUseAreThere_data()
    {
        QTest::addColumn<QSize>("size");
        for (const char *name : {"exclamation", "open", "midiimport", "exit", "save"})
            QTest::newRow(name) << QSize(16, 16);
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
