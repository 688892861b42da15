#include "Sound/SpscRing.h"

#include <QtTest>

#include <cstdint>
#include <thread>
#include <vector>

namespace {

std::vector<int> popAll(SpscRing<int> &ring)
{
    std::vector<int> items;
    for (int item = 0; ring.pop(item);)
        items.push_back(item);
    return items;
}

} // namespace

class tst_SpscRing : public QObject {
    Q_OBJECT

private slots:
    void capacityIsAPowerOfTwo();
    void itemsComeOutInTheirOrder();
    void emptyRingGivesNothing();
    void fullRingTakesNothing();
    void orderIsKeptBeyondTheEnd();
    void twoThreadsLoseNothing_data();
    void twoThreadsLoseNothing();
};

void tst_SpscRing::capacityIsAPowerOfTwo()
{
    QCOMPARE(SpscRing<int>(0).capacity(), std::size_t{1});
    QCOMPARE(SpscRing<int>(1).capacity(), std::size_t{1});
    QCOMPARE(SpscRing<int>(5).capacity(), std::size_t{8});
    QCOMPARE(SpscRing<int>(65536).capacity(), std::size_t{65536});
}

void tst_SpscRing::itemsComeOutInTheirOrder()
{
    SpscRing<int> ring(4);
    for (const int item : {7, 8, 9})
        QVERIFY(ring.push(item));
    QVERIFY((popAll(ring) == std::vector<int>{7, 8, 9}));
}

void tst_SpscRing::emptyRingGivesNothing()
{
    SpscRing<int> ring(4);
    int item = 5;
    QVERIFY(!ring.pop(item));
    QCOMPARE(item, 5);
}

void tst_SpscRing::fullRingTakesNothing()
{
    SpscRing<int> ring(4);
    for (int i = 0; i < 4; ++i)
        QVERIFY(ring.push(i));
    QVERIFY(!ring.push(4));
    QVERIFY((popAll(ring) == std::vector<int>{0, 1, 2, 3}));
    QVERIFY(ring.push(5));
    QVERIFY((popAll(ring) == std::vector<int>{5}));
}

void tst_SpscRing::orderIsKeptBeyondTheEnd()
{
    SpscRing<int> ring(4);
    int item = 0;
    for (int i = 0; i < 1000; i += 3) {
        for (int j = i; j < i + 3; ++j)
            QVERIFY(ring.push(j));
        for (int j = i; j < i + 3; ++j) {
            QVERIFY(ring.pop(item));
            QCOMPARE(item, j);
        }
    }
}

void tst_SpscRing::twoThreadsLoseNothing_data()
{
    QTest::addColumn<int>("capacity");
    QTest::newRow("one item") << 1;
    QTest::newRow("few items") << 8;
    QTest::newRow("many items") << 4096;
}

void tst_SpscRing::twoThreadsLoseNothing()
{
    QFETCH(const int, capacity);
    constexpr std::uint64_t Count = 200000;
    struct Item {
        std::uint64_t number = 0;
        std::uint64_t square = 0;
    };
    SpscRing<Item> ring(static_cast<std::size_t>(capacity));
    std::thread pusher([&ring] {
        for (std::uint64_t i = 0; i < Count; ++i)
            while (!ring.push({i, i * i}))
                std::this_thread::yield();
    });
    std::uint64_t wrong = 0;
    for (std::uint64_t i = 0; i < Count; ++i) {
        Item item;
        while (!ring.pop(item))
            std::this_thread::yield();
        wrong += item.number == i && item.square == i * i ? 0 : 1;
    }
    pusher.join();
    QCOMPARE(wrong, std::uint64_t{0});
}

QTEST_APPLESS_MAIN(tst_SpscRing)
#include "tst_SpscRing.moc"
