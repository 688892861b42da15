#include "Quillmoor/InstrumentSetModel.h"

#include "Quillmoor/Instrument.h"
#include "Quillmoor/QuillmoorInstrumentSet.h"

#include <QAbstractItemModelTester>
#include <QTemporaryDir>
#include <QtTest>

class TestInstrumentSetModel : public QObject {
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QuillmoorInstrumentSet m_none{QDir(m_dir.path()), false};

private slots:
    void thereIsARowPerName()
    {
        QuillmoorInstrumentSet set(m_none);
        set.add(QStringLiteral("A"), Instrument(), QIcon());
        const InstrumentSetModel model(&set, nullptr);
        QCOMPARE(model.rowCount(), 2);
        QCOMPARE(model.rowCount(model.index(0)), 0);
        QCOMPARE(model.index(0).data().toString(), QStringLiteral("A"));
        QCOMPARE(model.index(1).data().toString(), QStringLiteral("None"));
    }

    void rolesAnswerNameIconAndInstrument()
    {
        QuillmoorInstrumentSet set(m_none);
        QPixmap pixmap(16, 16);
        pixmap.fill(Qt::red);
        const Instrument lute = Instrument::fromBytes(QStringLiteral("lute"), "{\"fadeout\":2}");
        set.add(QStringLiteral("Lute"), lute, QIcon(pixmap));
        const InstrumentSetModel model(&set, nullptr);
        const QModelIndex index = model.index(0);
        QCOMPARE(index.data(0), QVariant(QStringLiteral("Lute")));
        QCOMPARE(index.data(1).value<QIcon>().availableSizes(), QList<QSize>{QSize(16, 16)});
        const QVariant instrument = index.data(256);
        QCOMPARE(QByteArray(instrument.typeName()), QByteArray("Instrument"));
        QCOMPARE(instrument.value<Instrument>(), lute);
        for (const int role : {2, 3, 255, 257, -1})
            QCOMPARE(model.data(index, role), QVariant());
    }

    void aRowOutsideHasNoData()
    {
        const InstrumentSetModel model(&m_none, nullptr);
        QVERIFY(!model.data(QModelIndex()).isValid());
        QVERIFY(!model.data(model.index(1)).isValid());
        QuillmoorInstrumentSet two(m_none);
        two.add(QStringLiteral("B"), Instrument(), QIcon());
        const InstrumentSetModel larger(&two, nullptr);
        QVERIFY(!model.data(larger.index(1)).isValid());
        QCOMPARE(model.flags(larger.index(1)), Qt::ItemFlags());
    }

    void rowsCanBeSelected()
    {
        const InstrumentSetModel model(&m_none, nullptr);
        QCOMPARE(int(model.flags(model.index(0))), 33);
        QCOMPARE(model.flags(model.index(1)), Qt::ItemFlags());
        QCOMPARE(model.flags(QModelIndex()), Qt::ItemFlags());
    }

    void thereAreNoHeaders()
    {
        const InstrumentSetModel model(&m_none, nullptr);
        QCOMPARE(model.headerData(0, Qt::Horizontal), QVariant());
        QCOMPARE(model.headerData(0, Qt::Vertical, Qt::DisplayRole), QVariant());
    }

    void itIsASoundModel()
    {
        InstrumentSetModel model(&m_none, nullptr);
        const QAbstractItemModelTester tester(
            &model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    }
};

QTEST_MAIN(TestInstrumentSetModel)
#include "tst_InstrumentSetModel.moc"
