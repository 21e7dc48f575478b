#include "sparkplug/birthSequenceFile.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <sys/stat.h>

namespace {

class BirthSequenceFileTest : public testing::Test
{
protected:
    QTemporaryDir folder;
    const QString name = folder.filePath(QLatin1String("bdseq"));

    void write(const QByteArray& bytes) const
    {
        QFile file(name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    QByteArray text() const
    {
        QFile file(name);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return file.readAll();
    }
    int taken() const
    {
        return int(BirthSequenceFile(name).take().value_or(255));
    }
};

} // namespace

TEST_F(BirthSequenceFileTest, BeginsWithZeroAndGoesOnOverRestarts)
{
    EXPECT_EQ(0, taken());
    EXPECT_EQ(1, taken());
    BirthSequenceFile sequence(name);
    EXPECT_EQ(2, sequence.take().value_or(99));
    EXPECT_EQ(3, sequence.take().value_or(99));
    EXPECT_EQ(4, taken());
}

TEST_F(BirthSequenceFileTest, Follows255With0)
{
    write("254\n");
    BirthSequenceFile sequence(name);
    EXPECT_EQ(255, sequence.take().value_or(1));
    EXPECT_EQ(0, sequence.take().value_or(1));
    EXPECT_EQ(1, sequence.take().value_or(99));
}

TEST_F(BirthSequenceFileTest, ANumberIsOnTheDiskBeforeItIsGivenOut)
{
    BirthSequenceFile sequence(name);
    ASSERT_TRUE(sequence.take());
    EXPECT_EQ("0\n", text());
    ASSERT_TRUE(sequence.take());
    EXPECT_EQ("1\n", text());
}

TEST_F(BirthSequenceFileTest, ANumberThatIsGivenBackIsGivenOutAgainAlsoBehindARestart)
{
    BirthSequenceFile sequence(name);
    ASSERT_EQ(0, sequence.take().value_or(9));
    sequence.giveBack();
    EXPECT_EQ(0, sequence.take().value_or(9));
    EXPECT_EQ(1, sequence.take().value_or(9));
    sequence.giveBack();
    EXPECT_EQ(1, taken());
}

TEST_F(BirthSequenceFileTest, TheFirstNumberThatIsGivenBackLeavesNoMemory)
{
    {
        BirthSequenceFile sequence(name);
        ASSERT_EQ(0, sequence.take().value_or(9));
        sequence.giveBack();
    }
    EXPECT_EQ(0, taken());
}

TEST_F(BirthSequenceFileTest, AForeignFileIsNoMemory)
{
    for (const char* const foreign : {"", "-1\n", "256\n", "abc", "1 2", "99999999999999999999"}) {
        write(foreign);
        EXPECT_EQ(0, taken()) << foreign;
    }
}

TEST_F(BirthSequenceFileTest, WhatCannotBeStoredIsNotGivenOut)
{
    BirthSequenceFile nowhere(folder.filePath(QLatin1String("missing/bdseq")));
    EXPECT_FALSE(nowhere.take());

    write("7\n");
    BirthSequenceFile sequence(name);
    ASSERT_EQ(8, sequence.take().value_or(9));
    ASSERT_TRUE(QDir().mkdir(name + QLatin1String(".new"))); // in the way of the new file
    EXPECT_FALSE(sequence.take());
    EXPECT_EQ("8\n", text()) << "the old number stays whole";
    ASSERT_TRUE(QDir().rmdir(name + QLatin1String(".new")));
    EXPECT_EQ(9, sequence.take().value_or(0));
}

TEST_F(BirthSequenceFileTest, AFileThatCannotBeReadIsNotTakenForNone)
{
    ASSERT_TRUE(QDir().mkdir(name)); // it opens, and cannot be read
    EXPECT_FALSE(BirthSequenceFile(name).take());
}
