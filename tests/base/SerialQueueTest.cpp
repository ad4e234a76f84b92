#include "base/SerialQueue.h"

#include <QEventLoop>

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

using namespace corvelle;

namespace {

void turnEventLoop()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents();
}

} // namespace

TEST(SerialQueue, keepsTheOrderAndDrainsAtItsEnd)
{
    std::vector<int> seen;
    {
        SerialQueue queue("corvelle.test");
        for (int i = 0; i < 1000; ++i)
            queue.async([&seen, i] { seen.push_back(i); });
    }
    ASSERT_EQ(seen.size(), 1000u);
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
}

TEST(SerialQueue, bringsResultsBackOnlyToALivingReceiver)
{
    SerialQueue queue("corvelle.test");
    int got = 0;
    QObject living;
    auto gone = std::make_unique<QObject>();
    queue.run([] { return 7; }, &living, [&got](int value) { got += value; });
    queue.run([] { return 100; }, gone.get(), [&got](int value) { got += value; });
    queue.drain();
    gone.reset();
    turnEventLoop();
    EXPECT_EQ(got, 7);
}

TEST(SerialQueue, syncWaitsForTheWorkAndAllBeforeIt)
{
    SerialQueue queue("corvelle.test");
    std::atomic<int> done = 0;
    queue.async([&done] { ++done; });
    queue.sync([&done] { ++done; });
    EXPECT_EQ(done, 2);
    EXPECT_TRUE(queue.isIdle());
}
