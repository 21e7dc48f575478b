// What is owed to the broker, and what marks prove.
#include "listedLog.h"

#include "links/descriptor.h"
#include "plant/deliveryLedger.h"

#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include <map>
#include <memory>

namespace {

class DeliveryLedgerTest : public testing::Test
{
private:
    const QTemporaryDir m_folder; // outlives the ledger

protected:
    DeliveryLedgerTest()
    {
        start();
    }

    QString fileName() const
    {
        return m_folder.filePath(QLatin1String("cursor"));
    }

    void start()
    {
        ledger = std::make_unique<DeliveryLedger>(fileName(), &log);
    }

    /// A new process, behind a kill.
    void restart()
    {
        ledger.reset();
        log.restart();
        start();
    }

    /// Rows of a tag, such as "a"; "b1" is a tag of the device b.
    void note(const char* tag, int rows = 1)
    {
        Sample sample;
        sample.link = QLatin1String("plc");
        sample.tag = QLatin1String(tag);
        for (int i = 0; i < rows; ++i) {
            sample.time = ++m_time;
            last = log.note(sample);
        }
    }

    void commit()
    {
        log.commit(m_time + 1000);
    }

    /// Sends all that is owed of devices that are born. @return the sequences, such as "1 2 5"
    std::string history(const char* silent = "", int most = 3)
    {
        QStringList sequences;
        const auto isBorn = [silent](const Sample& sample) {
            return *silent == 0 || !sample.tag.startsWith(QLatin1String(silent));
        };
        while (true) {
            const std::vector<LoggedRow> rows = ledger->owed(most, isBorn);
            if (rows.empty()) break;
            EXPECT_LE(int(rows.size()), most);
            for (const LoggedRow& row : rows)
                sequences << QString::number(row.sequence);
            ledger->owedSent();
        }
        return sequences.join(QLatin1Char(' ')).toStdString();
    }

    /// A mark goes out and is acknowledged. @return its sequence; -1: there is none
    qint64 prove()
    {
        const auto mark = ledger->nextMark();
        if (!mark) return -1;
        ledger->proven(*mark);
        ledger->awaitStored();
        return mark->sequence;
    }

    ListedLog log;
    std::unique_ptr<DeliveryLedger> ledger;
    quint64 last = 0; ///< number of the last row

private:
    qint64 m_time = 0;
};

} // namespace

TEST_F(DeliveryLedgerTest, OwesWhatWasNotedBeforeTheBirths)
{
    note("a", 5);
    commit();
    EXPECT_EQ(5, ledger->behind());
    ledger->born(last);
    EXPECT_EQ("1 2 3 4 5", history());
    EXPECT_EQ(0, ledger->behind());
    EXPECT_EQ("", history());
}

TEST_F(DeliveryLedgerTest, WaitsForTheCommit)
{
    note("a", 3);
    ledger->born(last);
    EXPECT_EQ("", history());
    EXPECT_FALSE(ledger->nextMark());
    commit();
    note("a", 2);
    ledger->sent(last);
    EXPECT_EQ("1 2 3", history());
    EXPECT_EQ(3, prove());
    EXPECT_FALSE(ledger->nextMark());
    commit();
    EXPECT_EQ(5, prove());
}

TEST_F(DeliveryLedgerTest, OwesNothingThatAMarkHasProven)
{
    ledger->born(0);
    note("a", 4);
    ledger->sent(last);
    commit();
    EXPECT_EQ(4, prove());
    note("a", 2);
    ledger->sent(last);
    commit();
    ledger->ended();
    EXPECT_EQ(2, ledger->behind());
    ledger->born(last);
    EXPECT_EQ("5 6", history());
}

TEST_F(DeliveryLedgerTest, TellsWhatWouldBeOwedIfTheSessionEndedNow)
{
    note("a", 3);
    commit();
    ledger->born(last);
    EXPECT_EQ("1 2 3", history());
    note("a", 2);
    ledger->sent(last);
    note("a", 4);
    commit();
    EXPECT_EQ(0, ledger->behind());
    EXPECT_EQ(9, ledger->unproven()) << "history, live values, and rows that nobody sent yet";
    EXPECT_EQ(5, prove());
    EXPECT_EQ(4, ledger->unproven());
    ledger->ended();
    EXPECT_EQ(4, ledger->behind());
    EXPECT_EQ(4, ledger->unproven());
}

TEST_F(DeliveryLedgerTest, OwesAgainWhatNoMarkHasProven)
{
    note("a", 4);
    commit();
    ledger->born(last);
    EXPECT_EQ("1 2 3 4", history());
    ledger->ended();
    ledger->born(last);
    EXPECT_EQ("1 2 3 4", history());
    EXPECT_EQ(4, prove());
    ledger->ended();
    ledger->born(last);
    EXPECT_EQ("", history());
}

TEST_F(DeliveryLedgerTest, TakesNoProofFromTheSessionBefore)
{
    note("a", 4);
    commit();
    ledger->born(last);
    history();
    const auto mark = ledger->nextMark();
    ledger->ended();
    ledger->born(last);
    ledger->proven(*mark);
    EXPECT_EQ("1 2 3 4", history());
}

TEST_F(DeliveryLedgerTest, ProvesOnlyWhatWasSentBeforeTheMark)
{
    note("a", 6);
    commit();
    ledger->born(last);
    const auto all = [](const Sample&) { return true; };
    ASSERT_EQ(2u, ledger->owed(2, all).size());
    ledger->owedSent();
    const auto mark = ledger->nextMark();
    ASSERT_TRUE(mark);
    EXPECT_EQ(2, mark->sequence);
    EXPECT_EQ(2, mark->time);
    ledger->owed(2, all);
    ledger->owedSent();
    ledger->proven(*mark);
    ledger->ended();
    ledger->born(last);
    EXPECT_EQ("3 4 5 6", history());
}

TEST_F(DeliveryLedgerTest, CountsRowsAsSentOnlyWhenTheyWere)
{
    note("a", 2);
    commit();
    ledger->born(last);
    const auto all = [](const Sample&) { return true; };
    EXPECT_EQ(2u, ledger->owed(5, all).size());
    EXPECT_EQ(2u, ledger->owed(5, all).size());
    EXPECT_EQ(2, ledger->behind());
    EXPECT_FALSE(ledger->nextMark());
}

TEST_F(DeliveryLedgerTest, SaysWhenTheRowOfAMarkWasNotedAtTheLatest)
{
    ledger->born(0);
    note("a", 4);
    ledger->sent(last);
    commit();
    const auto mark = ledger->nextMark();
    ASSERT_TRUE(mark);
    EXPECT_EQ(4, mark->sequence);
    EXPECT_EQ(1004, mark->time);
}

TEST_F(DeliveryLedgerTest, OwesRowsThatWereMissed)
{
    ledger->born(0);
    note("a", 5);
    ledger->missed(2, 3);
    ledger->sent(last);
    commit();
    EXPECT_EQ("2 3", history());
    ledger->missed(5, 5);
    EXPECT_EQ("5", history());
    EXPECT_EQ(5, prove());
    ledger->ended();
    ledger->born(last);
    EXPECT_EQ("", history());
}

TEST_F(DeliveryLedgerTest, GoesOnBehindARestart)
{
    ledger->born(0);
    note("a", 3);
    ledger->sent(last);
    commit();
    EXPECT_EQ(3, prove());
    note("a", 2);
    ledger->sent(last);
    commit();
    restart();
    note("a", 1);
    commit();
    ledger->born(last);
    EXPECT_EQ("4 5 6", history());
}

TEST_F(DeliveryLedgerTest, WaitsBehindARestartForTheFirstCommit)
{
    note("a", 3);
    commit();
    ledger->born(last);
    EXPECT_EQ(3, ledger->behind());
    ledger->ended();
    restart();
    ledger->born(0);
    EXPECT_EQ("", history());
    EXPECT_FALSE(ledger->nextMark());
    commit();
    EXPECT_EQ("1 2 3", history());
}

TEST_F(DeliveryLedgerTest, KeepsBehindARestartWhatWasSentAsHistory)
{
    note("a", 5);
    commit();
    ledger->born(last);
    const auto all = [](const Sample&) { return true; };
    ledger->owed(2, all);
    ledger->owedSent();
    note("a", 1);
    ledger->sent(last);
    commit();
    EXPECT_EQ(2, prove());
    restart();
    commit();
    ledger->born(0);
    EXPECT_EQ("3 4 5", history());
}

TEST_F(DeliveryLedgerTest, HoldsRowsOfASilentDeviceUntilItIsBorn)
{
    note("a");
    note("b");
    note("a");
    note("b");
    commit();
    ledger->born(last);
    EXPECT_EQ("1 3", history("b"));
    EXPECT_EQ(2, ledger->behind());
    note("a");
    ledger->sent(last);
    commit();
    EXPECT_EQ(5, prove());
    ledger->ended();
    restart();
    commit();
    ledger->born(0);
    EXPECT_EQ("", history("b"));
    EXPECT_EQ("2 4", history());
    EXPECT_EQ(0, ledger->behind());
}

TEST_F(DeliveryLedgerTest, SendsHeldRowsBeforeLaterOnesOfTheTag)
{
    note("b", 2);
    note("a");
    commit();
    ledger->born(last);
    EXPECT_EQ("3", history("b"));
    ledger->ended();
    note("b", 2);
    commit();
    ledger->born(last);
    EXPECT_EQ("1 2 3 4 5", history());
}

TEST_F(DeliveryLedgerTest, HoldsNoRowThatWasSentBetween)
{
    note("b1");
    note("a");
    commit();
    ledger->born(last);
    EXPECT_EQ("2", history("b"));
    note("b1");
    ledger->sent(last);
    note("b1");
    ledger->missed(last, last);
    ledger->sent(last);
    commit();
    EXPECT_EQ("", history("b"));
    EXPECT_EQ(4, prove());
    EXPECT_EQ("1 4", history());
}

TEST_F(DeliveryLedgerTest, CountsWhatTheCapDropped)
{
    note("a", 6);
    commit();
    log.drop(0);
    log.drop(0);
    log.drop(1); // row 4
    ledger->born(last);
    EXPECT_EQ("3 5 6", history());
    EXPECT_EQ(3, ledger->dropped());
    EXPECT_EQ(6, prove());
    restart();
    EXPECT_EQ(3, ledger->dropped());
}

TEST_F(DeliveryLedgerTest, CountsHeldRowsThatTheCapDropped)
{
    note("b", 3);
    note("a");
    commit();
    ledger->born(last);
    EXPECT_EQ("4", history("b"));
    log.drop(1);
    EXPECT_EQ("1 3", history());
    EXPECT_EQ(1, ledger->dropped());
    EXPECT_EQ(0, ledger->behind());
}

TEST_F(DeliveryLedgerTest, DropsNothingWhenTheFileCannotBeRead)
{
    note("a", 4);
    commit();
    ledger->born(last);
    log.failures = 4;
    EXPECT_EQ("", history());
    log.failures = 0;
    EXPECT_EQ("1 2 3 4", history());
    EXPECT_EQ(0, ledger->dropped());
}

TEST_F(DeliveryLedgerTest, CountsWhatWasOwedInAFileThatIsGone)
{
    note("a", 3);
    commit();
    EXPECT_EQ(3, ledger->behind());
    log.changeFile();
    note("a", 2);
    commit();
    ledger->born(last);
    EXPECT_EQ("1 2", history());
    EXPECT_EQ(3, ledger->dropped());
    EXPECT_EQ(0, ledger->behind());
}

TEST_F(DeliveryLedgerTest, CountsAMissedRowWhoseFileIsGone)
{
    ledger->born(0);
    note("a", 3);
    ledger->sent(last);
    commit();
    ledger->behind();
    log.changeFile();
    note("a");
    commit();
    ledger->behind();
    ledger->missed(2, 3);
    EXPECT_EQ(2, ledger->dropped());
}

TEST_F(DeliveryLedgerTest, CountsWhatWasInFlightWhenTheFileWentOnlyWhenItIsLost)
{
    ledger->born(0);
    note("a", 3);
    ledger->sent(last);
    commit();
    ASSERT_TRUE(ledger->nextMark());
    log.changeFile();
    note("a", 2);
    ledger->sent(last);
    commit();
    EXPECT_EQ(2, prove());
    ledger->ended();
    EXPECT_EQ(0, ledger->dropped());
    ledger->born(last);
    note("a", 4);
    ledger->sent(last);
    commit();
    ASSERT_TRUE(ledger->nextMark());
    log.changeFile();
    commit();
    ledger->behind();
    ledger->ended();
    EXPECT_EQ(4, ledger->dropped());
}

TEST_F(DeliveryLedgerTest, CountsTheFileOfTheRunBefore)
{
    note("a", 3);
    commit();
    ledger->born(0);
    ledger->sent(last);
    EXPECT_EQ(3, prove());
    note("a", 2);
    commit();
    ledger->behind();
    ledger->ended();
    restart();
    log.changeFile();
    note("a");
    commit();
    ledger->born(last);
    EXPECT_EQ("1", history());
    EXPECT_EQ(2, ledger->dropped());
}

TEST_F(DeliveryLedgerTest, OwesNewRowsWhoseSequencesWereProvenForLostOnes)
{
    ledger->born(0);
    note("a", 6);
    ledger->sent(last);
    commit();
    EXPECT_EQ(6, prove());
    log.loseNewest(2); // a loss of power
    restart();
    note("a", 3);
    commit();
    ledger->born(last);
    EXPECT_EQ("5 6 7", history());
    EXPECT_EQ(0, ledger->dropped());
}

TEST_F(DeliveryLedgerTest, OwesNoNewRowForALostOne)
{
    note("a", 6);
    commit();
    ledger->born(last);
    EXPECT_EQ("1 2 3 4 5 6", history());
    ledger->ended();
    log.loseNewest(2);
    restart();
    commit();
    ledger->born(0);
    EXPECT_EQ(2, (ledger->behind(), ledger->dropped()));
    note("a", 2);
    ledger->sent(last);
    commit();
    EXPECT_EQ("1 2 3 4", history());
    EXPECT_EQ(6, prove());
}

TEST_F(DeliveryLedgerTest, SendsHeldRowsFirstAlsoOfVeryManyTags)
{
    const int tags = 1200;
    for (int i = 0; i < tags; ++i)
        note(("b" + std::to_string(i)).c_str());
    note("a");
    commit();
    ledger->born(last);
    EXPECT_EQ(std::to_string(tags + 1), history("b", 500));
    ledger->ended();
    for (int i = 0; i < tags; ++i)
        note(("b" + std::to_string(i)).c_str());
    commit();
    ledger->born(last);
    const QStringList sent = QString::fromStdString(history("", 5 * tags)).split(QLatin1Char(' '));
    EXPECT_EQ(2 * tags + 1, sent.size());
    std::map<int, int> places;
    for (int place = 0; place < sent.size(); ++place)
        places[sent[place].toInt()] = place;
    EXPECT_EQ(size_t(2 * tags + 1), places.size());
    int outOfOrder = 0;
    for (int row = 1; row <= tags; ++row)
        outOfOrder += places[row] < places[row + tags + 1] ? 0 : 1;
    EXPECT_EQ(0, outOfOrder);
}

TEST_F(DeliveryLedgerTest, OwesTheWholeHistoryWhenAByteOfTheCursorIsAnother)
{
    const int byteOfTop = 14 + 32 + 8 + 7;
    ledger->born(0);
    note("a", 4);
    ledger->sent(last);
    commit();
    prove();
    QFile file(fileName());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.seek(byteOfTop));
    ASSERT_EQ(1, file.write("\x03", 1));
    file.close();
    testing::internal::CaptureStderr();
    restart();
    EXPECT_FALSE(testing::internal::GetCapturedStderr().empty());
    commit();
    ledger->born(0);
    EXPECT_EQ("1 2 3 4", history());
}

TEST_F(DeliveryLedgerTest, OwesTheWholeHistoryWhenTheCursorIsMissing)
{
    ledger->born(0);
    note("a", 4);
    ledger->sent(last);
    commit();
    prove();
    log.drop(0);
    QFile::remove(fileName());
    restart();
    commit();
    ledger->born(0);
    EXPECT_EQ("2 3 4", history());
    EXPECT_EQ(0, ledger->dropped());
}

TEST_F(DeliveryLedgerTest, OwesTheWholeHistoryWhenTheCursorIsTornAndSaysSo)
{
    ledger->born(0);
    note("a", 4);
    ledger->sent(last);
    commit();
    prove();
    QFile file(fileName());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.resize(file.size() - 1));
    file.close();
    testing::internal::CaptureStderr();
    restart();
    commit();
    ledger->born(0);
    EXPECT_EQ("1 2 3 4", history());
    const std::string told = testing::internal::GetCapturedStderr();
    EXPECT_NE(std::string::npos, told.find("does not say which rows the broker has")) << told;
}

TEST_F(DeliveryLedgerTest, SaysOnceThatTheCursorCannotBeStored)
{
    ledger = std::make_unique<DeliveryLedger>(fileName() + QLatin1String("/none/cursor"), &log);
    testing::internal::CaptureStderr();
    for (int i = 0; i < 3; ++i) {
        ledger->born(last);
        ledger->ended();
        ledger->awaitStored();
    }
    const std::string told = testing::internal::GetCapturedStderr();
    const size_t first = told.find("cannot be stored");
    EXPECT_NE(std::string::npos, first) << told;
    EXPECT_EQ(std::string::npos, told.find("cannot be stored", first + 1)) << told;
}

TEST_F(DeliveryLedgerTest, GoesOnWhileTheDiskHangs)
{
    ledger->born(0);
    note("a", 4);
    ledger->sent(last);
    commit();
    const auto first = ledger->nextMark();
    ledger->awaitStored();
    const QByteArray work = QFile::encodeName(fileName()) + ".new";
    ASSERT_EQ(0, ::mkfifo(work.constData(), S_IRUSR | S_IWUSR));
    testing::internal::CaptureStderr();
    ledger->proven(*first);
    EXPECT_TRUE(ledger->isStoring());
    note("a", 2);
    ledger->sent(last);
    commit();
    EXPECT_EQ(6, ledger->nextMark()->sequence);
    const Descriptor disk(::open(work.constData(), O_RDONLY | O_CLOEXEC));
    ledger->awaitStored();
    EXPECT_FALSE(testing::internal::GetCapturedStderr().empty());
}

TEST_F(DeliveryLedgerTest, CountsWithoutAHistoryWhatWasNotSent)
{
    ledger = std::make_unique<DeliveryLedger>(fileName(), nullptr);
    ledger->born(5);
    ledger->missed(7, 8);
    ledger->sent(9);
    EXPECT_EQ(7, ledger->dropped());
    EXPECT_FALSE(ledger->nextMark());
    EXPECT_EQ("", history());
    EXPECT_EQ(0, ledger->behind());
    ledger->ended();
    ledger->born(12);
    EXPECT_EQ(10, ledger->dropped());
}

TEST_F(DeliveryLedgerTest, ReadsLittleForRowsThatLieFarApart)
{
    ledger->born(0);
    note("a", 100000);
    ledger->missed(1, 1);
    ledger->missed(50000, 50000);
    ledger->missed(99999, 99999);
    ledger->sent(last);
    commit();
    EXPECT_EQ("1 50000 99999", history());
    EXPECT_LT(log.rowsRead, 1000);
}
