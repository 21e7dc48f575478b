#include "program/tokenFile.h"

#include "program/stationStatus.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace {

class TokenFile : public testing::Test
{
protected:
    void write(const QByteArray& bytes, mode_t mode = S_IRUSR | S_IWUSR)
    {
        QFile file(m_name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
        file.close();
        ASSERT_EQ(0, chmod(QFile::encodeName(m_name).constData(), mode));
    }

    /// Why the file cannot be used, without its name.
    std::string problem() const
    {
        return tokenFileProblem(m_name).remove(m_name + QLatin1String(": ")).toStdString();
    }

    mode_t mode() const
    {
        struct stat found = {};
        stat(QFile::encodeName(m_name).constData(), &found);
        return found.st_mode & 07777U;
    }

    const QTemporaryDir m_folder;
    const QString m_name = m_folder.filePath(QLatin1String("token"));
};

const char* const OTHERS_CAN =
    "others can read or change the token file; allow its owner only: chmod 600";
const char* const WRONG_BYTES = "a token has letters, digits and -._~+/= only, on one line";

} // namespace

TEST_F(TokenFile, HoldsTheTokenOfItsLine)
{
    write("s3cret-Token._~+/=\n");
    EXPECT_EQ("", problem());
    EXPECT_EQ("s3cret-Token._~+/=", tokenOf(m_name).toStdString());
}

TEST_F(TokenFile, AMissingOneIsMadeForTheOwnerAlone)
{
    EXPECT_EQ("", problem());
    const mode_t before = umask(0);
    const QByteArray token = tokenOf(m_name);
    umask(before);
    EXPECT_EQ(64, int(token.size()));
    EXPECT_EQ(mode_t(0600), mode());
    EXPECT_EQ(token, tokenOf(m_name));
    EXPECT_EQ(1, int(QDir(m_folder.path()).entryList(QDir::Files | QDir::Hidden).size()));
}

TEST_F(TokenFile, EachMadeTokenIsAnother)
{
    const QByteArray token = tokenOf(m_name);
    QFile::remove(m_name);
    EXPECT_NE(token, tokenOf(m_name));
}

TEST_F(TokenFile, OneThatOthersCanReadIsRefused)
{
    for (const mode_t mode : {0640U, 0604U, 0660U, 0602U, 0610U}) {
        write("secret\n", mode);
        EXPECT_EQ(OTHERS_CAN, problem()) << mode;
        EXPECT_THROW(tokenOf(m_name), StationFailure);
    }
    write("secret\n", 0400);
    EXPECT_EQ("", problem());
}

TEST_F(TokenFile, AnEmptyOneIsRefused)
{
    for (const char* const bytes : {"", "\n", "  \n\n"}) {
        write(bytes);
        EXPECT_EQ("the token file is empty", problem());
        EXPECT_THROW(tokenOf(m_name), StationFailure);
    }
}

TEST_F(TokenFile, ATokenHasOnlyWhatAHeaderTakes)
{
    for (const char* const bytes : {"two words", "one\ntwo", "semi;colon", "\xc3\xbc", "a\tb"}) {
        write(bytes);
        EXPECT_EQ(WRONG_BYTES, problem()) << bytes;
    }
    write(QByteArray("a\0b", 3));
    EXPECT_EQ(WRONG_BYTES, problem());
}

TEST_F(TokenFile, ALongOneEndsAt4096Bytes)
{
    write(QByteArray(4096, 'a'));
    EXPECT_EQ("", problem());
    write(QByteArray(4097, 'a'));
    EXPECT_EQ("the token file is longer than 4096 bytes", problem());
}

TEST_F(TokenFile, AFolderOrAPipeIsRefusedAndNotWaitedFor)
{
    ASSERT_EQ(0, mkfifo(QFile::encodeName(m_name).constData(), 0600));
    EXPECT_EQ("the token file is no regular file", problem());
    EXPECT_EQ("the token file is no regular file",
              tokenFileProblem(m_folder.path()).section(QLatin1String(": "), 1).toStdString());
}

TEST_F(TokenFile, OneThatCannotBeMadeIsAFailure)
{
    EXPECT_THROW(tokenOf(m_folder.filePath(QLatin1String("no/token"))), StationFailure);
}

TEST_F(TokenFile, OneOfAnotherUserIsRefused)
{
    if (geteuid() != 0) GTEST_SKIP() << "only root gives a file away";
    write("secret\n");
    ASSERT_EQ(0, chown(QFile::encodeName(m_name).constData(), 12345, 12345));
    EXPECT_EQ("the token file belongs to another user", problem());
}
