#include "http/httpServer.h"

#include "http/servedSocket.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstring>

namespace {

/// The answers that a route has not given yet. Every thread uses it.
class KeptAnswers
{
public:
    HttpFunction route()
    {
        return [this](const HttpRequest&, const HttpAnswer& answer) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_answers.push_back(answer);
            m_came.notify_all();
        };
    }

    /// Takes the next one, and waits for it.
    HttpAnswer next()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_came.wait(lock, [this] { return !m_answers.empty(); });
        const HttpAnswer answer = m_answers.front();
        m_answers.erase(m_answers.begin());
        return answer;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_came;
    std::vector<HttpAnswer> m_answers;
};

/// A stream's body that sends what a test puts into it.
class FedBody : public HttpBody
{
public:
    qint64 read(char* to, size_t size) override
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_coming.isEmpty()) return m_isEnded ? qint64(END) : qint64(NOTHING_YET);
        const int count = int(std::min(size, size_t(m_coming.size())));
        std::memcpy(to, m_coming.constData(), size_t(count));
        m_coming.remove(0, count);
        return count;
    }

    void feed(const QByteArray& bytes)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_coming += bytes;
    }

    void end()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_isEnded = true;
    }

private:
    std::mutex m_mutex;
    QByteArray m_coming;
    bool m_isEnded = false;
};

/// A server on a free port with the routes of a test.
class HttpServers : public testing::Test
{
protected:
    ServedSocket connected()
    {
        return ServedSocket(server->port());
    }

    void start(HttpServer::Turn turn = nullptr)
    {
        HttpServer::Settings settings;
        settings.port = 0;
        server = std::make_unique<HttpServer>(settings, routes, std::move(turn));
        server->start();
    }

    HttpRoutes routes;
    KeptAnswers kept;
    std::unique_ptr<HttpServer> server;
};

/// A path with a stream of the body.
HttpFunction streaming(const std::shared_ptr<HttpBody>& body)
{
    return [body](const HttpRequest&, const HttpAnswer& answer) {
        HttpResponse response;
        response.stream = body;
        answer(response);
    };
}

} // namespace

TEST_F(HttpServers, AnAnswerMayComeLaterFromAnotherThread)
{
    routes.add("GET", "/later", kept.route());
    start();
    ServedSocket client = connected();
    for (int i = 0; i < 100; ++i) {
        client.ask("/later");
        std::thread([answer = kept.next(), i] {
            answer(jsonResponse(QByteArray::number(i)));
        }).join();
        EXPECT_EQ(QByteArray::number(i), client.body());
    }
}

TEST_F(HttpServers, ConnectionsWaitForTheirOwnAnswers)
{
    routes.add("GET", "/later", kept.route());
    start();
    ServedSocket first = connected();
    ServedSocket second = connected();
    first.ask("/later");
    const HttpAnswer answerFirst = kept.next();
    second.ask("/later");
    const HttpAnswer answerSecond = kept.next();
    answerSecond(jsonResponse("second"));
    EXPECT_EQ("second", second.body());
    answerFirst(jsonResponse("first"));
    EXPECT_EQ("first", first.body());
}

TEST_F(HttpServers, TheFirstAnswerCounts)
{
    routes.add("GET", "/twice", [](const HttpRequest&, const HttpAnswer& answer) {
        answer(jsonResponse("one"));
        answer(jsonResponse("two"));
    });
    start();
    ServedSocket client = connected();
    for (int i = 0; i < 3; ++i) {
        client.ask("/twice");
        EXPECT_EQ("one", client.body());
    }
}

TEST_F(HttpServers, AForgottenAnswerIsAnError)
{
    routes.add("GET", "/forgotten", [](const HttpRequest&, const HttpAnswer&) {});
    start();
    ServedSocket client = connected();
    client.ask("/forgotten");
    EXPECT_TRUE(client.body().contains("without an answer"));
}

TEST_F(HttpServers, AClientMayLeaveBeforeItsAnswer)
{
    routes.add("GET", "/later", kept.route());
    start();
    std::vector<HttpAnswer> answers;
    for (int i = 0; i < 20; ++i) {
        ServedSocket client = connected();
        client.ask("/later");
        answers.push_back(kept.next());
    }
    for (const HttpAnswer& answer : answers)
        answer(jsonResponse("too late"));
    ServedSocket client = connected();
    client.ask("/later");
    kept.next()(jsonResponse("served"));
    EXPECT_EQ("served", client.body());
}

TEST_F(HttpServers, AnAnswerMayOutliveTheServer)
{
    routes.add("GET", "/later", kept.route());
    start();
    ServedSocket client = connected();
    client.ask("/later");
    const HttpAnswer answer = kept.next();
    server.reset();
    EXPECT_TRUE(client.isClosed());
    answer(jsonResponse("too late"));
}

TEST_F(HttpServers, AStreamSendsWhatComesAfterAWake)
{
    const auto body = std::make_shared<FedBody>();
    routes.add("GET", "/stream", streaming(body));
    start();
    ServedSocket client = connected();
    client.ask("/stream");
    for (int i = 0; i < 50; ++i) {
        body->feed("piece " + QByteArray::number(i));
        server->wake();
        EXPECT_EQ("piece " + QByteArray::number(i), client.chunk());
    }
    body->end();
    server->wake();
    EXPECT_EQ("", client.chunk());
    client.ask("/none");
    EXPECT_TRUE(client.body().contains("no such path"));
}

TEST_F(HttpServers, AServerEndsAtOnceWithStreamsOpenAndAnswersDue)
{
    const auto body = std::make_shared<FedBody>();
    routes.add("GET", "/later", kept.route());
    routes.add("GET", "/stream", streaming(body));
    start();
    ServedSocket stream = connected();
    stream.ask("/stream");
    body->feed("piece");
    server->wake();
    EXPECT_EQ("piece", stream.chunk());
    ServedSocket waiting = connected();
    waiting.ask("/later");
    const HttpAnswer answer = kept.next();
    server.reset();
    EXPECT_TRUE(stream.isClosed());
    EXPECT_TRUE(waiting.isClosed());
    EXPECT_EQ(2, body.use_count()) << "besides the test only the route still has the body";
}

TEST_F(HttpServers, ATurnIsTakenWhenItIsDueAndAfterAWake)
{
    std::atomic<int> turns{0};
    start([&turns](qint64 now) -> std::optional<qint64> {
        // Three turns follow each other by themselves; then only a wake brings one.
        return ++turns < 3 ? std::optional<qint64>(now + 1000) : std::nullopt;
    });
    while (turns < 3)
        std::this_thread::yield();
    server->wake();
    while (turns < 4)
        std::this_thread::yield();
    EXPECT_LE(4, turns);
}

TEST_F(HttpServers, APortInUseIsSaid)
{
    start();
    HttpServer::Settings settings;
    settings.port = server->port();
    try {
        const HttpServer second(settings, routes, nullptr);
        FAIL() << "two servers on one port";
    } catch (const HttpError& error) {
        EXPECT_NE(std::string::npos, std::string(error.what()).find("127.0.0.1:"));
    }
}

TEST_F(HttpServers, TheNamesAndTheTokenMayChange)
{
    routes.add("GET", "/open",
               [](const HttpRequest&, const HttpAnswer& answer) { answer(jsonResponse("in")); });
    start();
    ServedSocket client = connected();
    client.ask("/open", "Host: press7\r\n");
    EXPECT_TRUE(client.body().contains("--host-name"));
    server->setAccess("", {QLatin1String("press7")});
    client.ask("/open", "Host: press7\r\n");
    EXPECT_EQ("in", client.body());
    server->setAccess("secret", {QLatin1String("press7")});
    client.ask("/open", "Host: press7\r\n");
    EXPECT_TRUE(client.body().contains("asks for its token"));
    client.ask("/open", "Host: press7\r\nAuthorization: Bearer secret\r\n");
    EXPECT_EQ("in", client.body());
}

TEST_F(HttpServers, AStreamEndsWithTheRightToIt)
{
    const auto quiet = std::make_shared<FedBody>();
    const auto lasting = std::make_shared<FedBody>();
    routes.add("GET", "/quiet", streaming(quiet));
    routes.add("GET", "/lasting", streaming(lasting));
    start();
    ServedSocket without = connected();
    without.ask("/quiet");
    ServedSocket with = connected();
    with.ask("/lasting", "Host: localhost\r\nAuthorization: Bearer secret\r\n");
    quiet->feed("first");
    lasting->feed("first");
    server->wake();
    EXPECT_EQ("first", without.chunk());
    EXPECT_EQ("first", with.chunk());
    server->setAccess("secret", {});
    EXPECT_TRUE(without.isClosed());
    lasting->feed("second");
    server->wake();
    EXPECT_EQ("second", with.chunk());
    server->setAccess("next", {});
    EXPECT_TRUE(with.isClosed());
    while (server->clients() > 0)
        std::this_thread::yield();
    EXPECT_EQ(2, quiet.use_count()) << "besides the test only the route still has the body";
}
