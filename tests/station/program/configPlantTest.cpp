#include "program/configPlant.h"

#include "program/tomlText.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

/// A folder with a configuration's table [mqtt] and its files.
class ConfigPlant : public testing::Test
{
protected:
    QString path(const char* name) const
    {
        return m_folder.filePath(QLatin1String(name));
    }

    void write(const char* name, const QByteArray& bytes, QFile::Permissions permissions)
    {
        QFile file(path(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        ASSERT_TRUE(file.setPermissions(permissions));
    }

    /// The settings of the lines of [mqtt], which begin on line 2.
    StationConfig read(const QByteArray& lines, bool areWritesAllowed = false)
    {
        ConfigMistakes mistakes(QLatin1String("s.toml"));
        const ConfigNode whole = readToml("[mqtt]\n" + lines, mistakes);
        StationConfig config;
        config.name = QLatin1String("mixing");
        config.allowWrites = areWritesAllowed;
        config.hasPlant = true;
        config.plantLine = 1;
        config.plant = configuredPlant(whole.keys.at(0).value, m_folder.path(), mistakes);
        checkPlant(config, mistakes);
        m_mistakes = mistakes.text().replace(m_folder.path(), QLatin1String("DIR"));
        return config;
    }

    std::string mistakesOf(const QByteArray& lines)
    {
        read(lines);
        return m_mistakes.toStdString();
    }

    QTemporaryDir m_folder;
    QString m_mistakes;
};

const QFile::Permissions OWNER = QFile::ReadOwner | QFile::WriteOwner;
const char SERVER[] = "servers = [\"mqtt://broker\"]\n";

} // namespace

TEST_F(ConfigPlant, TakesEachKey)
{
    write("password", "open sesame\n", OWNER);
    for (const char* const name : {"ca.pem", "own.pem", "own.key"})
        write(name, "x", OWNER);
    const PlantSettings settings = read(R"(servers = ["mqtt://a", "mqtts://b:8884"]
client_id = "mixer 7"
group = "north"
node = "mixer"
dialects = ["json", "sparkplug"]
primary_host = "scada"
commands = true
user = "u"
password_file = "password"
ca = "ca.pem"
certificate = "own.pem"
key = "own.key"
keep_alive = "2m"
)",
                                        true)
                                       .plant;
    EXPECT_EQ("", m_mistakes.toStdString());
    ASSERT_EQ(2U, settings.servers.size());
    EXPECT_EQ("mqtt://a:1883", settings.servers[0].text().toStdString());
    EXPECT_EQ("mqtts://b:8884", settings.servers[1].text().toStdString());
    EXPECT_EQ("mixer 7", settings.clientId.toStdString());
    EXPECT_EQ("north", settings.group.toStdString());
    EXPECT_EQ("mixer", settings.node.toStdString());
    EXPECT_TRUE(settings.speaksJson);
    EXPECT_TRUE(settings.speaksSparkplug);
    EXPECT_EQ("scada", settings.primaryHost.toStdString());
    EXPECT_TRUE(settings.takesCommands);
    EXPECT_EQ("u", settings.user.toStdString());
    EXPECT_EQ("open sesame", settings.password.toStdString());
    EXPECT_EQ(path("ca.pem"), settings.ca);
    EXPECT_EQ(path("own.pem"), settings.certificate);
    EXPECT_EQ(path("own.key"), settings.key);
    EXPECT_EQ(120, settings.keepAliveS);
}

TEST_F(ConfigPlant, NodeIsTheStationsNameUnlessItIsNamed)
{
    const PlantSettings settings = read(SERVER).plant;
    EXPECT_EQ("", m_mistakes.toStdString());
    EXPECT_EQ("mixing", settings.node.toStdString());
    EXPECT_EQ("kakb", settings.group.toStdString());
    EXPECT_TRUE(settings.speaksSparkplug);
    EXPECT_FALSE(settings.speaksJson);
    EXPECT_FALSE(settings.takesCommands);
    EXPECT_EQ(30, settings.keepAliveS);
}

TEST_F(ConfigPlant, NamesEachMistakeWithItsLine)
{
    const std::string text = mistakesOf("servers = [\"ftp://x\"]\n"
                                        "group = \"a/b\"\n"
                                        "dialects = [\"xml\"]\n"
                                        "keep_alive = \"1s\"\n"
                                        "ca = \"missing.pem\"\n"
                                        "colour = \"red\"\n");
    for (const char* const part :
         {"line 2: servers: ", "line 3: group: \"a/b\" is no id",
          "line 4: dialects: \"xml\" is no dialect",
          "line 5: keep_alive: 1s is no whole number of seconds",
          "line 6: ca: DIR/missing.pem: cannot read it", "line 7: \"colour\" is no key of [mqtt]"})
        EXPECT_NE(std::string::npos, text.find(part)) << part << " in\n" << text;
}

TEST_F(ConfigPlant, NeedsAServer)
{
    EXPECT_EQ("s.toml: line 1: [mqtt]: no server is named: key servers, or --mqtt",
              mistakesOf("group = \"a\"\n"));
}

TEST_F(ConfigPlant, CommandsNeedThatWritesAreAllowed)
{
    EXPECT_NE("", mistakesOf(SERVER + QByteArray("commands = true\n")));
    read(SERVER + QByteArray("commands = true\n"), true);
    EXPECT_EQ("", m_mistakes.toStdString());
}

TEST_F(ConfigPlant, KeysThatNeedEachOtherAreWantedTogether)
{
    write("file", "x", OWNER);
    const QByteArray encrypted = "servers = [\"mqtts://broker\"]\n";
    EXPECT_NE("", mistakesOf(SERVER + QByteArray("password_file = \"file\"\n")));
    EXPECT_NE("", mistakesOf(encrypted + "certificate = \"file\"\n"));
    EXPECT_NE("", mistakesOf(encrypted + "key = \"file\"\n"));
    EXPECT_NE("", mistakesOf(SERVER + QByteArray("ca = \"file\"\n")));
    EXPECT_NE("", mistakesOf(SERVER + QByteArray("dialects = [\"json\"]\nprimary_host = \"h\"\n")));
    EXPECT_EQ("", mistakesOf(encrypted + "certificate = \"file\"\nkey = \"file\"\n"));
}

TEST_F(ConfigPlant, PasswordThatOthersCanReadIsRefused)
{
    write("password", "secret", OWNER | QFile::ReadOther);
    const std::string text =
        mistakesOf(SERVER + QByteArray("user = \"u\"\npassword_file = \"password\"\n"));
    EXPECT_NE(std::string::npos, text.find("others can read or change the password file")) << text;
}

TEST_F(ConfigPlant, PasswordIsTheLineOfItsFileWithItsBlanks)
{
    const QByteArray lines = SERVER + QByteArray("user = \"u\"\npassword_file = \"password\"\n");
    for (const char* const text : {" a word ", " a word \n", " a word \r\n"}) {
        write("password", text, OWNER);
        EXPECT_EQ(" a word ", read(lines).plant.password);
        EXPECT_EQ("", m_mistakes.toStdString());
    }
}

TEST_F(ConfigPlant, PasswordFileThatHoldsNoPasswordIsRefused)
{
    const QByteArray lines = SERVER + QByteArray("user = \"u\"\npassword_file = \"password\"\n");
    for (const QByteArray& text :
         {QByteArray(), QByteArray("\n"), QByteArray("a\nb\n"), QByteArray("a\0b", 3)}) {
        write("password", text, OWNER);
        EXPECT_NE(std::string::npos, mistakesOf(lines).find("has to hold one line"))
            << text.toStdString();
    }
}

TEST_F(ConfigPlant, StationsNameThatIsNoIdNeedsANode)
{
    ConfigMistakes mistakes{QString()};
    StationConfig config;
    config.name = QLatin1String("a/b");
    config.plant.servers.push_back({});
    checkPlant(config, mistakes);
    EXPECT_NE(std::string::npos, mistakes.text().toStdString().find("--mqtt: node: \"a/b\""));
}

TEST_F(ConfigPlant, TagsThatHostsCannotTellApartAreRefused)
{
    StationConfig config;
    config.name = QLatin1String("mixing");
    config.plant.servers.push_back({});
    LinkConfig link;
    link.name = QLatin1String("oven");
    std::vector<Tag> tags(2);
    tags[0].name = QLatin1String("Door");
    tags[1].name = QLatin1String("door");
    link.tags = tags;
    config.links.push_back(link);
    ConfigMistakes mistakes{QString()};
    checkPlant(config, mistakes);
    EXPECT_NE(std::string::npos, mistakes.text().toStdString().find(
                                     "link oven, station 1: \"Door\" and \"door\" differ"));
    config.plant.speaksSparkplug = false;
    config.plant.speaksJson = true;
    ConfigMistakes none{QString()};
    checkPlant(config, none);
    EXPECT_EQ("", none.text().toStdString());
}
