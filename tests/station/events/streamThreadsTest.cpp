#include "events/eventStreams.h"
#include "events/streamReader.h"
#include "events/streamedStation.h"

#include <condition_variable>
#include <thread>

namespace {

/// The server's loop in the test's thread: waits until a turn is due or somebody wakes it.
class Loop
{
public:
    void wake()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isWoken = true;
        m_condition.notify_one();
    }

    void waitUntil(std::optional<qint64> due, qint64 now)
    {
        const qint64 longest = due ? std::max<qint64>(0, *due - now) : 1000;
        std::unique_lock<std::mutex> lock(m_mutex);
        m_condition.wait_for(lock, std::chrono::microseconds(longest),
                             [this] { return m_isWoken; });
        m_isWoken = false;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_condition;
    bool m_isWoken = false; ///< guarded by m_mutex
};

} // namespace

TEST(StreamThreads, LoseNoChangeOfALinksThread)
{
    enum { LAST = 20000, TAGS = 3 };
    SystemClock clock;
    Loop loop;
    StationEvents events([&loop] { loop.wake(); });
    std::vector<StreamedLink> links;
    EventStreams streams({[&links] { return links; }, [] { return false; }, events, clock},
                         [&loop] { loop.wake(); });
    TestLink link(QLatin1String("plc"), TAGS, clock, &streams);
    links = {{link.values, link.frames}};
    HttpRoutes routes;
    streams.addRoute(routes);
    HttpRequest request;
    request.method = "GET";
    request.path = "/api/v1/events";
    request.query = {{"frames", "plc"}};
    TestClient client;
    routes.answer(request,
                  [&client](const HttpResponse& response) { client.body = response.stream; });

    std::thread linkThread([&] {
        for (int value = 1; value <= LAST; ++value) {
            link.answer(value % TAGS, value, clock);
            link.frames->add(clock.wall(), FrameRecord::SENT, QByteArray("\x01\x03", 2));
            if (value % 100 == 0) events.add(StationEvent::WRITE, clock.wall(), "{\"id\":1}");
        }
    });
    const QByteArray last = "\"value\":" + QByteArray::number(int(LAST));
    const qint64 patience = clock.steady() + 20000000;
    int writes = 0;
    bool isThere = false;
    while ((!isThere || writes < LAST / 100) && clock.steady() < patience) {
        const std::optional<qint64> due = streams.turn(clock.steady());
        for (const ReceivedMessage& message : client.take()) {
            writes += message.name == "write" ? 1 : 0;
            isThere = isThere || (message.name == "values" && message.data.contains(last));
        }
        loop.waitUntil(due, clock.steady());
    }
    linkThread.join();
    EXPECT_TRUE(isThere);
    EXPECT_EQ(LAST / 100, writes);
}
