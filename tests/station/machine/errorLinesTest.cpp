#include "machine/errorLines.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <array>

// The record's lines at a reader that reads late, or never.

class ErrorLinesTest : public testing::Test
{
protected:
    ErrorLinesTest()
    {
        if (pipe2(pipe.data(), O_CLOEXEC) != 0) ADD_FAILURE() << "no pipe";
        fcntl(pipe[0], F_SETFL, O_NONBLOCK);
        lines = std::make_unique<ErrorLines>(pipe[1]);
    }
    ~ErrorLinesTest() override
    {
        close(pipe[0]);
        close(pipe[1]);
    }

    /// All that has been written and was not read yet.
    QByteArray taken() const
    {
        QByteArray all;
        std::array<char, 65536> some;
        for (ssize_t count = 0; (count = read(pipe[0], some.data(), some.size())) > 0;)
            all.append(some.data(), int(count));
        return all;
    }

    std::array<int, 2> pipe = {-1, -1};
    std::unique_ptr<ErrorLines> lines;
};

TEST_F(ErrorLinesTest, AreWrittenWhole)
{
    lines->put("one");
    lines->put("two");
    EXPECT_EQ("one\ntwo\n", taken().toStdString());
}

TEST_F(ErrorLinesTest, AreCutWhereAPipeWouldSplitThem)
{
    lines->put(QByteArray(5000, 'x'));
    const QByteArray written = taken();
    EXPECT_EQ(int(ErrorLines::LONGEST_LINE), int(written.size()));
    EXPECT_TRUE(written.endsWith("x\n"));
}

TEST_F(ErrorLinesTest, AreLeftOutAndCountedWhileNobodyReads)
{
    enum { MANY = 100 };
    for (int i = 0; i < MANY; ++i)
        lines->put(QByteArray(3000, 'x'));
    const int written = int(taken().count('\n'));
    ASSERT_LT(written, int(MANY));
    lines->put("again");
    EXPECT_EQ(std::to_string(MANY - written) +
                  " lines are missing here: there was no room to write them\nagain\n",
              taken().toStdString());
    lines->put("then");
    EXPECT_EQ("then\n", taken().toStdString());
}
