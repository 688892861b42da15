#include "Quillmoor/InstrumentSetModel.h"
#include "Quillmoor/QuillmoorInstrumentSet.h"
#include "ui/TrackColumn.h"
#include "ui/tracks/TrackWidget.h"

#include <QBoxLayout>
#include <QLabel>
#include <QTemporaryDir>
#include <QtTest>

class tst_TrackColumn : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_page.reset(); }

    void rowsComeBeforeTheSpacer();
    void knowsThePlaceOfARow();
    void movesWithinItsEnds();
    void aRemovedRowLivesOn();
    void strangersEndTheButtons();
    void withoutALayoutNothingHappens();

private:
    TrackWidget *row(const char *id);
    QString order() const;

    std::unique_ptr<QWidget> m_page;
    QTemporaryDir m_dir;
    QuillmoorInstrumentSet m_set{QDir(m_dir.path()), false};
    InstrumentSetModel m_model{&m_set, nullptr};
};

void tst_TrackColumn::init()
{
    m_page = std::make_unique<QWidget>();
    (new QVBoxLayout(m_page.get()))->addStretch();
}

TrackWidget *tst_TrackColumn::row(const char *id)
{
    return new TrackWidget(QString::fromUtf8(id), Track(), &m_model, m_page.get());
}

QString tst_TrackColumn::order() const
{
    QString order;
    for (int i = 0; i < m_page->layout()->count(); ++i) {
        const auto *const row = qobject_cast<TrackWidget *>(m_page->layout()->itemAt(i)->widget());
        order += row != nullptr ? row->trackId() : QStringLiteral("|");
    }
    return order;
}

void tst_TrackColumn::rowsComeBeforeTheSpacer()
{
    TrackColumn column(qobject_cast<QBoxLayout *>(m_page->layout()));
    column.append(row("a"));
    column.append(row("b"));
    QCOMPARE(order(), QStringLiteral("ab|"));
}

void tst_TrackColumn::knowsThePlaceOfARow()
{
    TrackColumn column(qobject_cast<QBoxLayout *>(m_page->layout()));
    TrackWidget *const a = row("a");
    TrackWidget *const b = row("b");
    column.append(a);
    column.append(b);
    QCOMPARE(column.rowIndex(a), 0);
    QCOMPARE(column.rowIndex(b), 1);
    QCOMPARE(column.rowIndex(row("c")), -1);
    QCOMPARE(column.rowIndex(nullptr), -1);
}

void tst_TrackColumn::movesWithinItsEnds()
{
    TrackColumn column(qobject_cast<QBoxLayout *>(m_page->layout()));
    TrackWidget *const a = row("a");
    TrackWidget *const b = row("b");
    TrackWidget *const c = row("c");
    for (TrackWidget *const each : {a, b, c})
        column.append(each);
    column.moveUp(a);
    column.moveDown(c);
    column.moveUp(row("d"));
    column.moveDown(row("d"));
    QCOMPARE(order(), QStringLiteral("abc|"));
    column.moveUp(c);
    QCOMPARE(order(), QStringLiteral("acb|"));
    column.moveDown(a);
    QCOMPARE(order(), QStringLiteral("cab|"));
}

void tst_TrackColumn::aRemovedRowLivesOn()
{
    TrackColumn column(qobject_cast<QBoxLayout *>(m_page->layout()));
    TrackWidget *const a = row("a");
    column.append(a);
    column.remove(a);
    QCOMPARE(order(), QStringLiteral("|"));
    QCOMPARE(a->parentWidget(), m_page.get());
}

void tst_TrackColumn::strangersEndTheButtons()
{
    TrackColumn column(qobject_cast<QBoxLayout *>(m_page->layout()));
    column.append(row("a"));
    qobject_cast<QBoxLayout *>(m_page->layout())->insertWidget(0, new QLabel);
    column.updateMoveButtons();
    QCOMPARE(order(), QStringLiteral("|a|"));
}

void tst_TrackColumn::withoutALayoutNothingHappens()
{
    TrackColumn column(nullptr);
    TrackWidget *const a = row("a");
    column.append(a);
    column.updateMoveButtons();
    column.moveUp(a);
    column.moveDown(a);
    column.remove(a);
    QVERIFY(!column.exists());
    QCOMPARE(column.rowIndex(a), -1);
}

QTEST_MAIN(tst_TrackColumn)
#include "tst_TrackColumn.moc"
