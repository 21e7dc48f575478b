// The times of changes of quality, from the value model to the messages of both dialects. The value
// stays 20.5 all the time.

#include "history/historyIntake.h"
#include "history/historyRoom.h"
#include "sparkplug/bornBench.h"
#include "topics/jsonNode.h"

#include <gtest/gtest.h>

namespace {

enum { LIMIT_MS = 2000 }; ///< a value without an answer is good so long

const qint64 BEGIN = 1700000000000;

/// The link "oven" with one tag at both dialects; its value was read at BEGIN.
class QualityTimes : public testing::Test, public ValueListener, public RowListener
{
protected:
    QualityTimes()
        : json({QLatin1String("hall"), {*brokerAddress(QLatin1String("mqtt://a"))}}, session,
               bench.commands, bench.clock),
          tag(tagOf("temperature", 1, Tag::FLOAT32)),
          link(std::make_shared<LinkValues>(QLatin1String("oven"), std::vector<Tag>{tag},
                                            bench.clock)),
          intake({HistoryRoom::OVERRIDE_MS, 1000}, bench.clock)
    {
        link->setTurns({100000});
        link->addListener(this);
        intake.setRowListener(this);
        session.listener = &json;
        const std::vector<EdgeDevice> devices{{QLatin1String("oven"), 1, {tag}}};
        bench.node.setDevices(devices);
        json.setDevices(devices);
        bench.beBorn();
        json.turn();
        session.accept();
        take(bench.standing("oven", 1, true));
        answer();
        news();
        states();
    }

    void tagChanged(const LinkValues& values, int at, const TagReading& reading) override
    {
        intake.tagChanged(values, at, reading);
    }

    void rowNoted(const Sample& reading) override
    {
        take(reading);
    }

    void take(const Sample& sample)
    {
        bench.take({sample});
        json.take({sample});
        json.turn();
    }

    /// The PLC tells the value again.
    void answer()
    {
        link->tagRead(0, answerBytes(tag, 20.5), bench.clock.steady());
    }

    void refuse()
    {
        link->tagsBad({0}, QLatin1String("refused"), bench.clock.steady());
    }

    /// Nobody answers for so long, which is noticed at the end.
    void silence(qint64 ms)
    {
        bench.clock.passMs(ms);
        intake.look({link});
    }

    /// What the edge node has said since the last call, such as "DDATA 20.5 500 +2000": value,
    /// quality, ms since BEGIN.
    std::vector<std::string> news()
    {
        std::vector<std::string> texts;
        for (; told < bench.mark(); ++told) {
            const Told& one = bench.session.told[told];
            for (const ReceivedMetric& metric : one.payload.metrics)
                texts.push_back(text(one, metric));
        }
        return texts;
    }

    static std::string text(const Told& one, const ReceivedMetric& metric)
    {
        return (one.kind + QLatin1Char(' ') + QString::number(metric.number(9)) + QLatin1Char(' ') +
                QString::number(metric.quality.value_or(-1)) + QLatin1String(" +") +
                QString::number(metric.time.value_or(0) - BEGIN))
            .toStdString();
    }

    /// The states that the JSON dialect has published since the last call.
    std::vector<std::string> states()
    {
        std::vector<std::string> texts;
        for (; published < session.published.size(); ++published) {
            const BrokerMessage& message = session.published[published].message;
            if (message.topic == QLatin1String("kakb/hall/oven/temperature"))
                texts.push_back(message.payload.toStdString());
        }
        return texts;
    }

    using Texts = std::vector<std::string>;

    EdgeBench bench;
    RecordedSession session; ///< of the JSON dialect
    JsonNode json;
    const Tag tag;
    const std::shared_ptr<LinkValues> link;
    HistoryIntake intake;
    size_t told = 0, published = 0;
};

} // namespace

TEST_F(QualityTimes, AValueThatGrewOldHasTheTimeAtWhichItDid)
{
    silence(LIMIT_MS + 700);
    EXPECT_EQ(Texts{"DDATA 20.5 500 +2000"}, news());
    EXPECT_EQ(Texts{R"({"v":20.5,"q":"stale","t":1700000002000})"}, states());
}

TEST_F(QualityTimes, ABadValueHasTheTimeAtWhichItBecameBad)
{
    bench.clock.passMs(300);
    refuse();
    EXPECT_EQ(Texts{"DDATA 20.5 0 +300"}, news());
    EXPECT_EQ(Texts{R"({"v":20.5,"q":"bad","t":1700000000300})"}, states());
}

TEST_F(QualityTimes, AStaleValueThatBecomesBadAndGoodAgainHasTheTimeOfEachChange)
{
    silence(LIMIT_MS + 700);
    bench.clock.passMs(300);
    refuse();
    bench.clock.passMs(400);
    answer();
    EXPECT_EQ((Texts{"DDATA 20.5 500 +2000", "DDATA 20.5 0 +3000", "DDATA 20.5 192 +3400"}),
              news());
    EXPECT_EQ((Texts{R"({"v":20.5,"q":"stale","t":1700000002000})",
                     R"({"v":20.5,"q":"bad","t":1700000003000})",
                     R"({"v":20.5,"q":"good","t":1700000003400})"}),
              states());
}

TEST_F(QualityTimes, AStaleValueThatIsAnsweredHasTheTimeOfTheAnswer)
{
    silence(LIMIT_MS + 500);
    bench.clock.passMs(100);
    answer();
    EXPECT_EQ((Texts{"DDATA 20.5 500 +2000", "DDATA 20.5 192 +2600"}), news());
    EXPECT_EQ((Texts{R"({"v":20.5,"q":"stale","t":1700000002000})",
                     R"({"v":20.5,"q":"good","t":1700000002600})"}),
              states());
}

TEST_F(QualityTimes, TimeThatPassesIsNoChange)
{
    silence(LIMIT_MS + 500);
    news();
    states();
    for (int second = 0; second < 5; ++second)
        silence(1000);
    EXPECT_EQ(Texts(), news());
    EXPECT_EQ(Texts(), states());
    refuse();
    news();
    states();
    bench.clock.passMs(800);
    refuse();
    EXPECT_EQ(Texts(), news());
    EXPECT_EQ(Texts(), states());
}

TEST_F(QualityTimes, BirthsAndTheNextSessionTellTheTimeOfTheLastChange)
{
    silence(LIMIT_MS + 700);
    bench.clock.passMs(200);
    news();
    states();
    bench.command("NCMD", QString(), rebirthBytes());
    EXPECT_EQ("DBIRTH 20.5 500 +2000", news().back());
    session.end("lost");
    published = 0;
    bench.clock.passMs(1000);
    json.turn();
    session.accept();
    json.turn();
    EXPECT_EQ(Texts{R"({"v":20.5,"q":"stale","t":1700000002000})"}, states());
}
