#include "program/configFile.h"

#include "builtDriver.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

/// A folder with a configuration and its tag files.
class ConfigFile : public testing::Test
{
protected:
    void SetUp() override
    {
        write("tags.csv", "name,station,area,address,type\nlevel,1,MW,100,uint16\n");
    }

    void write(const char* name, const QByteArray& bytes)
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    QString path(const char* name) const
    {
        return m_folder.filePath(QLatin1String(name));
    }

    StationConfig read(const QByteArray& toml)
    {
        ConfigMistakes mistakes(QLatin1String("station.toml"));
        const StationConfig config = readConfig(toml, path("station.toml"), driver(), mistakes);
        m_mistakes = mistakes.text().replace(m_folder.path() + QLatin1Char('/'), QString());
        return config;
    }

    /// What is wrong with a configuration that has a good link beside these lines.
    std::string mistakesOf(const QByteArray& lines)
    {
        read(lines + "\n[[link]]\nname = \"a\"\nlink = \"tcp:\"\ntags = \"tags.csv\"\n");
        return m_mistakes.toStdString();
    }

    /// What is wrong with these lines of a link.
    std::string mistakesOfLink(const QByteArray& lines)
    {
        read("[[link]]\n" + lines);
        return m_mistakes.toStdString();
    }

    QTemporaryDir m_folder;
    QString m_mistakes;
};

} // namespace

TEST_F(ConfigFile, TakesEachKey)
{
    const StationConfig config = read(R"(
name = "mixing plant"
listen = "0.0.0.0:80"
allow_writes = true
token_file = "token"
host_names = ["panel.example", "other"]
state = "/var/lib/station"
[history]
cap = "64MiB"
override = "5m"
[[link]]
name = "line 1"
link = "tcp:10.0.0.7,502"
tags = "tags.csv"
pace = "250ms"
timeout_ms = 300
attempts = 2
pause_ms = 1000
)");
    EXPECT_EQ("", m_mistakes.toStdString());
    EXPECT_EQ("mixing plant", config.name.toStdString());
    EXPECT_TRUE(config.listen == *listenAddress(QLatin1String("0.0.0.0:80")));
    EXPECT_EQ(3, config.listenLine);
    EXPECT_TRUE(config.allowWrites);
    EXPECT_EQ(path("token"), config.tokenFile);
    EXPECT_EQ("panel.example other", config.hostNames.join(QLatin1Char(' ')).toStdString());
    EXPECT_EQ("/var/lib/station", config.stateFolder.toStdString());
    EXPECT_EQ(qint64(64) * 1024 * 1024, config.history.capBytes);
    EXPECT_EQ(300000, config.history.overrideMs);
    ASSERT_EQ(1U, config.links.size());
    const LinkConfig& link = config.links.front();
    EXPECT_EQ("line 1", link.name.toStdString());
    EXPECT_EQ("tcp:10.0.0.7,502", link.link.toStdString());
    EXPECT_EQ(1U, link.tags.all().size());
    EXPECT_EQ(250, link.paceMs);
    EXPECT_EQ(300, link.timeoutMs);
    EXPECT_EQ(2, link.attempts);
    EXPECT_EQ(1000, link.pauseMs);
}

TEST_F(ConfigFile, MissingKeysHaveDefaults)
{
    const StationConfig config =
        read("[[link]]\nname = \"a\"\nlink = \"tcp:\"\ntags = \"tags.csv\"\n");
    EXPECT_EQ("", m_mistakes.toStdString());
    EXPECT_TRUE(config.listen == *listenAddress(QLatin1String("127.0.0.1:8480")));
    EXPECT_FALSE(config.allowWrites);
    EXPECT_EQ("", config.tokenFile.toStdString());
    EXPECT_EQ(qint64(256) * 1024 * 1024, config.history.capBytes);
    EXPECT_EQ(600000, config.history.overrideMs);
    ASSERT_EQ(1U, config.links.size());
    EXPECT_FALSE(config.links.front().paceMs);
    EXPECT_EQ(500, config.links.front().timeoutMs);
}

TEST_F(ConfigFile, ALinkNeedsNameAndLinkAndTags)
{
    EXPECT_EQ("station.toml: line 1: [[link]] has no key name\n"
              "station.toml: line 1: [[link]] has no key link",
              mistakesOfLink(""));
    EXPECT_EQ("station.toml: line 1: [[link]] has no key tags",
              mistakesOfLink("name = \"a\"\nlink = \"tcp:\"\n"));
    read("name = \"no link\"\n");
    EXPECT_EQ("station.toml: line 1: there is no link: add a table [[link]]",
              m_mistakes.toStdString());
}

TEST_F(ConfigFile, EachUnknownKeyIsAMistake)
{
    EXPECT_EQ("station.toml: line 1: \"nmae\" is no key; the keys are name, listen, allow_writes, "
              "token_file, host_names, state, history, mqtt, link",
              mistakesOf("nmae = \"a\""));
    EXPECT_EQ("station.toml: line 2: \"size\" is no key of [history]; the keys are cap, override",
              mistakesOf("[history]\nsize = \"1MiB\""));
    EXPECT_EQ("station.toml: line 4: \"speed\" is no key of [[link]]; the keys are name, link, "
              "tags, pace, timeout_ms, attempts, pause_ms",
              mistakesOfLink("name=\"a\"\nlink=\"tcp:\"\nspeed=1\ntags=\"tags.csv\"\n"));
}

TEST_F(ConfigFile, EachKeyWantsItsOwnKindOfValue)
{
    EXPECT_EQ("station.toml: line 1: name: a text in quotes is wanted", mistakesOf("name = 1"));
    EXPECT_EQ("station.toml: line 1: allow_writes: true or false is wanted",
              mistakesOf("allow_writes = \"yes\""));
    EXPECT_EQ("station.toml: line 1: host_names: a list of texts in brackets is wanted",
              mistakesOf("host_names = \"a\""));
    EXPECT_EQ("station.toml: line 2: host_names: a text in quotes is wanted",
              mistakesOf("host_names = [\"a\",\n1]"));
    EXPECT_EQ("station.toml: line 1: history: a table [history] is wanted",
              mistakesOf("history = true"));
    read("link = \"tcp:\"\n");
    EXPECT_EQ("station.toml: line 1: link: tables [[link]] are wanted", m_mistakes.toStdString());
}

TEST_F(ConfigFile, ANumberHasARange)
{
    const QByteArray link = "name=\"a\"\nlink=\"tcp:\"\ntags=\"tags.csv\"\n";
    const struct
    {
        const char* key;
        int lowest, highest;
    } ranges[] = {{"timeout_ms", 10, 60000}, {"attempts", 1, 20}, {"pause_ms", 10, 30000}};
    for (const auto& range : ranges) {
        const auto problem = [&](int number) {
            return mistakesOfLink(link + range.key + "=" + QByteArray::number(number));
        };
        EXPECT_EQ("", problem(range.lowest));
        EXPECT_EQ("", problem(range.highest));
        const std::string wanted = std::string("station.toml: line 5: ") + range.key +
                                   ": a whole number from " + std::to_string(range.lowest) +
                                   " to " + std::to_string(range.highest) + " is wanted";
        EXPECT_EQ(wanted, problem(range.lowest - 1));
        EXPECT_EQ(wanted, problem(range.highest + 1));
    }
    EXPECT_NE("", mistakesOfLink(link + "attempts = 9223372036854775807"));
    EXPECT_NE("", mistakesOfLink(link + "attempts = 2.0"));
}

TEST_F(ConfigFile, HistoryHasALeastCapAndAnOverrideWithinADay)
{
    EXPECT_EQ("", mistakesOf("[history]\ncap = \"4MiB\"\noverride = \"1s\""));
    EXPECT_EQ("", mistakesOf("[history]\noverride = \"1440m\""));
    EXPECT_EQ("station.toml: line 2: cap: 4095KiB is too small: the smallest is 4MiB",
              mistakesOf("[history]\ncap = \"4095KiB\""));
    EXPECT_EQ("station.toml: line 2: cap: \"4\" is no size such as 256MiB, from 4MiB to 1024GiB",
              mistakesOf("[history]\ncap = \"4\""));
    EXPECT_EQ("station.toml: line 2: override: 999ms is not from 1s to 1440m",
              mistakesOf("[history]\noverride = \"999ms\""));
    EXPECT_EQ("station.toml: line 2: override: 10 is no duration such as 500ms, 10s or 5m",
              mistakesOf("[history]\noverride = \"10\""));
}

TEST_F(ConfigFile, TwoLinksHaveNeitherOneNameNorOneSerialPort)
{
    read(R"([[link]]
name = "a"
link = "serial:/dev/null"
tags = "tags.csv"
[[link]]
name = "a"
link = "serial:/dev/../dev/null,9600"
tags = "tags.csv"
[[link]]
name = "b"
link = "serial:/dev/zero"
tags = "tags.csv"
)");
    EXPECT_EQ("station.toml: line 6: name: the link on line 2 has the name \"a\" already\n"
              "station.toml: line 7: link: the link \"a\" on line 3 has the serial port "
              "/dev/../dev/null already",
              m_mistakes.toStdString());
}

TEST_F(ConfigFile, LinksWithOneTagFileShareItsTags)
{
    write("other.csv", "name,station,area,address,type\nflow,1,MW,102,uint16\n");
    const StationConfig config = read(R"([[link]]
name = "a"
link = "tcp:10.0.0.1"
tags = "tags.csv"
[[link]]
name = "b"
link = "tcp:10.0.0.2"
tags = "./tags.csv"
[[link]]
name = "c"
link = "tcp:10.0.0.3"
tags = "other.csv"
)");
    ASSERT_EQ("", m_mistakes.toStdString());
    ASSERT_EQ(3U, config.links.size());
    EXPECT_EQ(&config.links[0].tags.all(), &config.links[1].tags.all());
    EXPECT_EQ("level", config.links[1].tags.all()[0].name.toStdString());
    EXPECT_EQ("flow", config.links[2].tags.all()[0].name.toStdString());
}

TEST_F(ConfigFile, MistakesOfTheTagFilesComeBehindAndOnce)
{
    write("bad.csv", "name,station,area,address,type\na,1,ZZ,1,bool\nb,999,MW,0,uint16\n");
    write("empty.csv", "name,station,area,address,type\n");
    read(R"([[link]]
name = "a"
link = "tcp:"
tags = "bad.csv"
pace = "fast"
[[link]]
name = "b"
link = "tcp:"
tags = "empty.csv"
[[link]]
name = "c"
link = "tcp:"
tags = "missing.csv"
[[link]]
name = "d"
link = "tcp:"
tags = "bad.csv"
)");
    EXPECT_EQ("station.toml: line 5: pace: fast is no duration such as 500ms, 10s or 5m\n"
              "station.toml: line 13: tags: cannot read missing.csv: No such file or directory\n"
              "bad.csv: line 2: there is no area \"ZZ\"; the areas are MW, IW, QW, MX, IX, QX\n"
              "bad.csv: line 3: station \"999\" is no number from 1 to 247\n"
              "empty.csv: the file has no tags",
              m_mistakes.toStdString());
}

TEST_F(ConfigFile, EachLineThatIsNoTomlIsNamedAndTheOthersAreStillRead)
{
    read("= 3\nname = \"a\nlisten = \"x\"\n[[link]]\nname = \"a\"\nname = \"b\"\n");
    const QStringList lines = m_mistakes.split(QLatin1Char('\n'));
    ASSERT_EQ(4, int(lines.size())) << m_mistakes.toStdString();
    for (int line = 1; line <= 3; ++line)
        EXPECT_TRUE(lines.at(line - 1).startsWith(
            QString(QLatin1String("station.toml: line %1: ")).arg(line)))
            << lines.at(line - 1).toStdString();
    EXPECT_TRUE(lines.at(3).startsWith(QLatin1String("station.toml: line 6: ")));
}

TEST_F(ConfigFile, AnyBytesAreRefusedWithoutACrash)
{
    read(QByteArray("\0\xff\xfe", 3));
    EXPECT_NE("", m_mistakes.toStdString());
    read(QByteArray(100000, '['));
    EXPECT_NE("", m_mistakes.toStdString());
    read("a = \"\"\"\nnever ends");
    EXPECT_NE("", m_mistakes.toStdString());
    read("");
    EXPECT_NE("", m_mistakes.toStdString());
}
