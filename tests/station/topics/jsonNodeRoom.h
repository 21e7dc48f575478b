#ifndef JSON_NODE_ROOM_H
#define JSON_NODE_ROOM_H

#include "broker/recordedSession.h"
#include "plant/recordedCommands.h"
#include "topics/jsonNode.h"
#include "values/testClock.h"

#include <gtest/gtest.h>

/// A JSON node with a broker that the test plays:
///
///   left    station 1   level  float32  rw
///           station 1   count  uint16   ro
///           station 2   a/b    bool     rw
///   right   station 1   level  int16    rw
class JsonNodeTest : public testing::Test
{
protected:
    explicit JsonNodeTest(bool takesCommands = true)
        : settings{QLatin1String("hall 1"),
                   {*brokerAddress(QLatin1String("mqtt://a")),
                    *brokerAddress(QLatin1String("mqtt://b"))},
                   takesCommands},
          node(std::make_unique<JsonNode>(settings, session, commands, clock))
    {
        session.listener = node.get();
        node->setDevices(devices());
    }

    static Tag tagOf(const char* name, Tag::Type type, Tag::Access access = Tag::READ_WRITE)
    {
        Tag tag;
        tag.name = QString::fromUtf8(name);
        tag.type = type;
        tag.access = access;
        return tag;
    }

    static std::vector<EdgeDevice> devices()
    {
        const QString left = QLatin1String("left");
        return {{left, 1, {tagOf("level", Tag::FLOAT32), tagOf("count", Tag::UINT16)}},
                {left, 2, {tagOf("a/b", Tag::BOOL)}},
                {QLatin1String("right"), 1, {tagOf("level", Tag::INT16)}}};
    }

    Sample reading(const char* link, const char* tag, double value, Quality quality = GOOD)
    {
        Sample sample;
        sample.link = QString::fromUtf8(link);
        sample.tag = QString::fromUtf8(tag);
        sample.time = clock.wall();
        sample.value = value;
        sample.hasValue = true;
        sample.quality = quality;
        return sample;
    }

    Sample unread(const char* link, const char* tag)
    {
        Sample sample = reading(link, tag, 0, BAD);
        sample.hasValue = false;
        return sample;
    }

    Sample standing(const char* link, int station, bool answers)
    {
        Sample sample;
        sample.kind = Sample::STANDING;
        sample.link = QString::fromUtf8(link);
        sample.station = station;
        sample.answers = answers;
        sample.time = clock.wall();
        return sample;
    }

    void take(const std::vector<Sample>& samples)
    {
        node->take(samples);
        turns();
    }

    /// Turns until nothing is due any more.
    void turns()
    {
        for (int turn = 0; turn < 1000 && node->turn() <= clock.steady(); ++turn) {
        }
    }

    /// A session whose states are out.
    void open()
    {
        turns();
        session.accept();
        if (settings.takesCommands) session.grant();
        turns();
    }

    /// What went out since the last call, "TOPIC PAYLOAD"; the prefix is left out.
    std::vector<std::string> news()
    {
        std::vector<std::string> texts;
        for (; told < session.published.size(); ++told) {
            const BrokerMessage& message = session.published[told].message;
            texts.push_back((message.topic.mid(int(sizeof "kakb/hall 1/") - 1) + QLatin1Char(' ') +
                             QString::fromUtf8(message.payload))
                                .toStdString());
        }
        return texts;
    }

    void set(const char* topic, const char* payload, bool isRetained = false)
    {
        session.send(QString::fromUtf8(topic), QByteArray(payload), isRetained);
        turns();
    }

    using Texts = std::vector<std::string>;

    TestClock clock;
    RecordedSession session;
    RecordedCommands commands;
    const JsonNodeSettings settings;
    std::unique_ptr<JsonNode> node;
    size_t told = 0; ///< messages of the MQTT session
};

#endif
