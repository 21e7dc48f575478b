#include "topics/jsonNodeRoom.h"

#include <QFile>
#include <QTemporaryDir>

// What an earlier run of the station has published and this one does not use is cleared.

namespace {

class JsonTopicFileTest : public JsonNodeTest
{
protected:
    QString fileName() const
    {
        return folder.filePath(QLatin1String("mqtt-topics"));
    }

    /// The station starts with these devices; its states are out.
    void run(const std::vector<EdgeDevice>& devices)
    {
        start(devices);
        open();
    }

    void start(const std::vector<EdgeDevice>& devices)
    {
        JsonNodeSettings kept = settings;
        kept.topicFile = fileName();
        node = std::make_unique<JsonNode>(kept, session, commands, clock);
        session.listener = node.get();
        node->setDevices(devices);
        told = 0;
    }

    static std::vector<EdgeDevice> fewer()
    {
        std::vector<EdgeDevice> all = devices();
        all[0].tags.pop_back();
        all.pop_back();
        return all;
    }

    /// The topics that were cleared in the last session.
    Texts cleared()
    {
        Texts found;
        for (const std::string& text : news())
            if (text.back() == ' ') found.push_back(text.substr(0, text.size() - 1));
        return found;
    }

    std::string text() const
    {
        QFile file(fileName());
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "no file";
    }

    void putText(const QByteArray& text) const
    {
        QFile file(fileName());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(text.size(), file.write(text));
    }

    const QTemporaryDir folder;
};

} // namespace

TEST_F(JsonTopicFileTest, ListsTheTopicsBeforeTheyArePublished)
{
    start({devices()[1]});
    EXPECT_EQ("kakb/hall 1/left/2/availability\nkakb/hall 1/left/a_b\n", text());
    EXPECT_TRUE(session.published.empty());
}

TEST_F(JsonTopicFileTest, LetsTheNextRunClearWhatItDoesNotUse)
{
    run(devices());
    EXPECT_EQ(Texts(), cleared());
    run(fewer());
    EXPECT_EQ((Texts{"left/count", "right/1/availability", "right/level"}), cleared());
    for (const RecordedSession::Published& published : session.published)
        EXPECT_TRUE(published.message.isRetained);
}

TEST_F(JsonTopicFileTest, ForgetsWhatTheBrokerHasCleared)
{
    run(devices());
    run(fewer());
    session.acknowledge();
    EXPECT_EQ(std::string::npos, text().find("right")) << text();
    run(fewer());
    EXPECT_EQ(Texts(), cleared());
}

TEST_F(JsonTopicFileTest, KeepsWhatTheBrokerHasNotCleared)
{
    run(devices());
    run(fewer());
    run(fewer());
    EXPECT_EQ((Texts{"left/count", "right/1/availability", "right/level"}), cleared());
}

TEST_F(JsonTopicFileTest, KnowsWhatAReloadHasTakenOut)
{
    run(devices());
    node->setDevices(fewer()); // the station is killed before the broker has acknowledged anything
    run(fewer());
    EXPECT_EQ((Texts{"left/count", "right/1/availability", "right/level"}), cleared());
}

TEST_F(JsonTopicFileTest, ClearsNothingThatIsUsed)
{
    run(fewer());
    run(devices());
    EXPECT_EQ(Texts(), cleared());
}

// The folder of a station was copied to another machine, or somebody wrote into the file.
TEST_F(JsonTopicFileTest, ClearsNoTopicOfAnother)
{
    putText("kakb/hall 2/left/gone\nkakb/hall 1/left/gone\nkakb/hall 1/status\n"
            "kakb/hall 1/left/gone/set\nkakb/hall 1/left/gone/result\nkakb/hall 1/left/+\n"
            "kakb/hall 1/+/1/availability\nkakb/hall 1/#\nkakb/hall 1//\n\xff\xfe\n"
            "spBv1.0/STATE/scada\nkakb/hall 1/left/9/availability");
    run(devices());
    EXPECT_EQ((Texts{"left/9/availability", "left/gone"}), cleared());
}

TEST_F(JsonTopicFileTest, IsNotNeeded)
{
    ASSERT_TRUE(QFile::exists(folder.path()));
    JsonNodeSettings elsewhere = settings;
    elsewhere.topicFile = folder.filePath(QLatin1String("none/mqtt-topics"));
    node = std::make_unique<JsonNode>(elsewhere, session, commands, clock);
    session.listener = node.get();
    node->setDevices(devices());
    open();
    EXPECT_EQ("status online", news().back());
}
