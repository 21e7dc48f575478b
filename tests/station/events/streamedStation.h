#ifndef STREAMED_STATION_H
#define STREAMED_STATION_H

#include "events/eventStreams.h"
#include "events/streamReader.h"
#include "values/testClock.h"

#include <gtest/gtest.h>

#include <algorithm>

/// A link of the test, with tags "t0", "t1" and so on that a test reads as the PLC's answers would.
struct TestLink
{
    TestLink(const QString& name, int tags, const StationClock& clock, ValueListener* listener)
        : values(std::make_shared<LinkValues>(name, words(tags), clock)),
          frames(std::make_shared<FrameLog>())
    {
        values->setTurns(std::vector<std::optional<qint64>>(size_t(tags), 100000));
        values->addListener(listener);
        values->linkChanged(true, QString(), clock.steady());
    }

    static std::vector<Tag> words(int count)
    {
        std::vector<Tag> tags(static_cast<size_t>(count));
        for (int at = 0; at < count; ++at) {
            Tag& tag = tags[size_t(at)];
            tag.name = QLatin1String("t") + QString::number(at);
            tag.area = QLatin1String("MW");
            tag.number = 3000 + at;
            tag.address = QString::number(at);
            tag.access = Tag::READ_WRITE;
        }
        return tags;
    }

    void answer(int tag, int value, const StationClock& clock)
    {
        const char bytes[] = {char(value & 0xFF), char(value >> 8)};
        values->tagRead(tag, QByteArray(bytes, 2), clock.steady());
    }

    std::shared_ptr<LinkValues> values;
    std::shared_ptr<FrameLog> frames;
};

/// A client of the stream, as a browser is one.
struct TestClient
{
    std::vector<ReceivedMessage> take()
    {
        return body ? reader.readAll(*body) : std::vector<ReceivedMessage>();
    }

    /// The messages of a name that it has now.
    std::vector<ReceivedMessage> take(const char* name)
    {
        std::vector<ReceivedMessage> messages = take();
        const auto isOther = [name](const ReceivedMessage& message) {
            return message.name != name;
        };
        messages.erase(std::remove_if(messages.begin(), messages.end(), isOther), messages.end());
        return messages;
    }

    int status = 0;
    std::shared_ptr<HttpBody> body;
    StreamReader reader;
};

/// The streams with all around them, and time that passes as in the server's loop: a turn comes
/// when it is due or was asked for.
class StreamedStation
{
public:
    explicit StreamedStation(const std::function<QByteArray()>& plant = nullptr)
        : streams({[this] { return streamed(); }, [this] { return areWritesAllowed; }, events,
                   clock, plant},
                  [this] {
                      isWoken = true;
                      ++wakes;
                  })
    {
        streams.addRoute(routes);
    }

    TestLink& addLink(const char* name, int tags)
    {
        links.push_back(std::make_unique<TestLink>(QLatin1String(name), tags, clock, &streams));
        return *links.back();
    }

    TestClient connect(const HttpRequest::Pairs& query = {}, const QByteArray& lastEventId = {})
    {
        HttpRequest request;
        request.method = "GET";
        request.path = "/api/v1/events";
        request.query = query;
        if (!lastEventId.isEmpty()) request.headers = {{"last-event-id", lastEventId}};
        TestClient client;
        routes.answer(request, [&client](const HttpResponse& response) {
            client.status = response.status;
            client.body = response.stream;
        });
        run();
        return client;
    }

    /// Takes the turns that are due now.
    void run()
    {
        while (isWoken || (due && *due <= clock.steady())) {
            isWoken = false;
            ++turns;
            due = streams.turn(clock.steady());
            ASSERT_TRUE(!due || *due > clock.steady());
        }
    }

    void passMs(int ms)
    {
        for (int passed = 0; passed < ms; ++passed) {
            clock.passMs(1);
            run();
        }
    }

    std::vector<StreamedLink> streamed() const
    {
        std::vector<StreamedLink> all;
        for (const std::unique_ptr<TestLink>& link : links)
            all.push_back({link->values, link->frames});
        return all;
    }

    TestClock clock;
    StationEvents events{[this] { isWoken = true; }};
    bool areWritesAllowed = false;
    bool isWoken = false;
    int wakes = 0;
    int turns = 0;
    std::optional<qint64> due;
    std::vector<std::unique_ptr<TestLink>> links;
    HttpRoutes routes;
    EventStreams streams;
};

#endif
