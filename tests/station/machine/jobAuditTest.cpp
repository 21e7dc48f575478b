#include "machine/jobAudit.h"

#include "values/testClock.h"

#include <gtest/gtest.h>

// What the record and the events say of each write and recipe. The clock stands at 1700000000000
// ms.

class JobAuditTest : public testing::Test
{
protected:
    JobAuditTest() : audit(events, clock, [this](const QByteArray& line) { lines.push_back(line); })
    {
        tag.name = QLatin1String("setpoint");
        tag.area = QLatin1String("MW");
        tag.type = Tag::INT16;
    }

    static JobAsked asked(quint64 id, const char* link = "plc")
    {
        return {id, QString::fromUtf8(link), QLatin1String("10.0.0.7:50000")};
    }

    std::string line() const
    {
        return lines.empty() ? std::string() : lines.back().toStdString();
    }
    std::string document() const
    {
        return events.since(0).back().document.toStdString();
    }

    const QByteArray five = QByteArray("\x05\x00", 2);
    TestClock clock;
    StationEvents events;
    std::vector<QByteArray> lines;
    JobAudit audit;
    Tag tag;
};

TEST_F(JobAuditTest, CountsItsJobsFromOne)
{
    EXPECT_EQ(1u, audit.nextId());
    EXPECT_EQ(2u, audit.nextId());
}

TEST_F(JobAuditTest, SaysWhenFromWhereWhatAndTheOutcome)
{
    WriteEnd end;
    end.outcome = WriteEnd::CONFIRMED;
    end.held.bytes = five;
    audit.writeEnded(asked(7), tag, five, end);
    EXPECT_EQ("2023-11-14T22:13:20.000Z from 10.0.0.7:50000: write 7 of \"plc\" \"setpoint\" = 5: "
              "confirmed, it holds 5",
              line());
    EXPECT_EQ("{\"id\":7,\"link\":\"plc\",\"tag\":\"setpoint\",\"value\":5,"
              "\"outcome\":\"confirmed\",\"reason\":null,\"held\":5}",
              document());
    EXPECT_EQ(StationEvent::WRITE, events.since(0).back().kind);
    EXPECT_EQ(clock.wall(), events.since(0).back().time);
}

TEST_F(JobAuditTest, SaysWhyAWriteFailedAndWhatTheTagHolds)
{
    WriteEnd end;
    end.reason = QLatin1String("not sent: the link is lost");
    audit.writeEnded(asked(8), tag, five, end);
    EXPECT_EQ("2023-11-14T22:13:20.000Z from 10.0.0.7:50000: write 8 of \"plc\" \"setpoint\" = 5: "
              "failed: not sent: the link is lost, it holds null",
              line());
    EXPECT_EQ("{\"id\":8,\"link\":\"plc\",\"tag\":\"setpoint\",\"value\":5,\"outcome\":\"failed\","
              "\"reason\":\"not sent: the link is lost\",\"held\":null}",
              document());
}

TEST_F(JobAuditTest, KeepsANameFromBeingAnotherLineOrAnotherPart)
{
    tag.name = QString::fromUtf8("a\" = 5: confirmed\nb\xc2\x9b\xe2\x80\xa8");
    audit.writeEnded(asked(9, "x\r\ny\x1b[2J"), tag, five, WriteEnd());
    EXPECT_EQ("2023-11-14T22:13:20.000Z from 10.0.0.7:50000: write 9 of \"x??y?[2J\" "
              "\"a\\\" = 5: confirmed?b??\" = 5: failed, it holds null",
              line());
}

TEST_F(JobAuditTest, SaysWhereARecipeFailed)
{
    RecipeRequest request;
    request.rows.resize(40);
    RecipeEnd end;
    end.block = QLatin1String("MW200 of station 1");
    end.reason = QLatin1String("refused by the PLC");
    audit.recipeEnded(asked(3), request, end);
    EXPECT_EQ("2023-11-14T22:13:20.000Z from 10.0.0.7:50000: recipe 3 of \"plc\", download of 40 "
              "values: failed at MW200 of station 1: refused by the PLC",
              line());
    EXPECT_EQ("{\"id\":3,\"link\":\"plc\",\"kind\":\"download\",\"outcome\":\"failed\","
              "\"block\":\"MW200 of station 1\",\"reason\":\"refused by the PLC\",\"rows\":40,"
              "\"differences\":0}",
              document());
}

TEST_F(JobAuditTest, CountsTheDifferencesOfAComparison)
{
    RecipeRequest request;
    request.kind = RecipeRequest::COMPARE;
    request.rows.resize(2);
    RecipeEnd end;
    end.outcome = RecipeEnd::DIFFERS;
    end.differences = {{0, five}, {1, five}};
    audit.recipeEnded(asked(4), request, end);
    EXPECT_EQ("2023-11-14T22:13:20.000Z from 10.0.0.7:50000: recipe 4 of \"plc\", compare of 2 "
              "values: differs, 2 values differ",
              line());
}

TEST_F(JobAuditTest, TellsTheProgressAsAnEventOnly)
{
    audit.recipeProgress(asked(5), RecipeRequest::UPLOAD, 3, 10);
    EXPECT_TRUE(lines.empty());
    EXPECT_EQ("{\"id\":5,\"link\":\"plc\",\"kind\":\"upload\",\"done\":3,\"blocks\":10}",
              document());
    EXPECT_EQ(StationEvent::RECIPE, events.since(0).back().kind);
}

TEST_F(JobAuditTest, HasALineForAWriteThatNoLinkWasAskedFor)
{
    const JobAsked by = {8, QLatin1String("plc"), QLatin1String("mqtt://10.0.0.1:1883 a/b\"/set")};
    audit.writeRefused(by, QLatin1String("up\": x"), QLatin1String("tag \"up\" is\nread-only"));
    EXPECT_EQ("2023-11-14T22:13:20.000Z from \"mqtt://10.0.0.1:1883 a/b\\\"/set\": write 8 of "
              "\"plc\" \"up\\\": x\": refused: tag \"up\" is?read-only",
              line());
    EXPECT_EQ(0u, audit.writes(WriteEnd::REFUSED));
    EXPECT_TRUE(events.since(0).empty());
}

TEST_F(JobAuditTest, HasALineForARecipeThatNoLinkWasAskedFor)
{
    RecipeRequest request;
    request.rows.resize(3);
    audit.recipeRefused(asked(9), request, QLatin1String("row 2 \"a\nb\" is read-only"));
    EXPECT_EQ("2023-11-14T22:13:20.000Z from 10.0.0.7:50000: recipe 9 of \"plc\", download of 3 "
              "values: refused: row 2 \"a?b\" is read-only",
              line());
    EXPECT_TRUE(events.since(0).empty());
}

TEST_F(JobAuditTest, HasALineForWhatNamesNoTag)
{
    audit.refused(QLatin1String("mqtt://10.0.0.1:1883"), QString::fromUtf8("a\"\x1b[2J"),
                  QLatin1String("it is not JSON"));
    EXPECT_EQ("2023-11-14T22:13:20.000Z from mqtt://10.0.0.1:1883: command \"a\\\"?[2J\": "
              "refused: it is not JSON",
              line());
}

TEST_F(JobAuditTest, SaysThatASimulatedPlcHasEnded)
{
    audit.simulatorEnded(QLatin1String("press\n7"));
    EXPECT_EQ(
        "2023-11-14T22:13:20.000Z link \"press?7\": the simulated PLC has ended, it is started "
        "again",
        line());
    EXPECT_TRUE(events.since(0).empty());
}
