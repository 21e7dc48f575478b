#include "output/tableView.h"

#include <gtest/gtest.h>

namespace {

enum { PAGE = 4 };

/// A view with keys of rows a, b, c, ...; "no" is the one value that the judge refuses.
class TableViewTest : public testing::Test
{
protected:
    TableViewTest()
    {
        addRows("abcdefghij");
        m_view.setPage(PAGE);
    }

    void addRows(const char* names)
    {
        for (const char* name = names; *name != '\0'; ++name) {
            WatchRow row;
            row.name = QString(QLatin1Char(*name));
            row.address = QString(QLatin1String("MW%1")).arg(200 + 2 * int(m_rows.size()));
            row.label = row.name + QLatin1String(" (") + row.address + QLatin1Char(')');
            row.good = true;
            m_rows.push_back(row);
        }
        m_view.update(m_rows);
    }

    WatchRow& row(int tag)
    {
        return m_rows[std::size_t(tag)];
    }

    void update()
    {
        m_view.update(m_rows);
    }

    void press(Key::Kind kind)
    {
        Key key;
        key.kind = kind;
        m_view.press(key);
    }

    void type(const char* text)
    {
        for (const char* at = text; *at != '\0'; ++at)
            m_view.press({Key::TEXT, QString(QLatin1Char(*at))});
    }

    std::string order() const
    {
        std::string names;
        for (const int tag : m_view.order())
            names += m_rows[std::size_t(tag)].name.toStdString();
        return names;
    }

    std::string bottom() const
    {
        return m_view.bottomLine().toStdString();
    }

    std::vector<WatchRow> m_rows;
    TableView m_view{TableView::WITH_KEYS, [](int, const QString& value) {
                         return value == QLatin1String("no")
                                    ? QString(QLatin1String("no value of the type"))
                                    : QString();
                     }};
};

} // namespace

TEST_F(TableViewTest, QEndsTheWatch)
{
    EXPECT_FALSE(m_view.isOver());
    type("q");
    EXPECT_TRUE(m_view.isOver());
}

TEST_F(TableViewTest, ArrowsMoveTheMarkAndStopAtTheEnds)
{
    EXPECT_EQ(0, m_view.marked());
    press(Key::UP);
    EXPECT_EQ(0, m_view.marked());
    press(Key::DOWN);
    press(Key::DOWN);
    EXPECT_EQ(2, m_view.marked());
    press(Key::UP);
    EXPECT_EQ(1, m_view.marked());
    press(Key::END);
    press(Key::DOWN);
    EXPECT_EQ(9, m_view.marked());
    press(Key::HOME);
    EXPECT_EQ(0, m_view.marked());
}

TEST_F(TableViewTest, TableScrollsOnlyAsFarAsTheMarkNeeds)
{
    for (int i = 0; i < PAGE - 1; ++i)
        press(Key::DOWN);
    EXPECT_EQ(0, m_view.top());
    press(Key::DOWN);
    EXPECT_EQ(1, m_view.top());
    press(Key::UP);
    EXPECT_EQ(1, m_view.top());
    press(Key::END);
    EXPECT_EQ(10 - PAGE, m_view.top());
    press(Key::HOME);
    EXPECT_EQ(0, m_view.top());
}

TEST_F(TableViewTest, PageKeysMoveByAPage)
{
    press(Key::PAGE_DOWN);
    EXPECT_EQ(PAGE, m_view.marked());
    press(Key::PAGE_DOWN);
    press(Key::PAGE_DOWN);
    EXPECT_EQ(9, m_view.marked());
    press(Key::PAGE_UP);
    EXPECT_EQ(9 - PAGE, m_view.marked());
}

TEST_F(TableViewTest, MarkStaysOnTheScreenWhenItBecomesSmaller)
{
    press(Key::DOWN);
    press(Key::DOWN);
    press(Key::DOWN);
    m_view.setPage(2);
    EXPECT_EQ(2, m_view.top());
    m_view.setPage(0);
    EXPECT_EQ(3, m_view.top());
    m_view.setPage(20);
    EXPECT_EQ(0, m_view.top());
}

TEST_F(TableViewTest, FilterAppliesAsYouTypeToNamesAndAddresses)
{
    type("/");
    EXPECT_EQ("filter (Enter keeps, Esc clears): _", bottom());
    type("mw20");
    EXPECT_EQ("abcde", order());
    type("4");
    EXPECT_EQ("c", order());
    press(Key::BACKSPACE);
    EXPECT_EQ("abcde", order());
    EXPECT_EQ("filter (Enter keeps, Esc clears): mw20_", bottom());
}

TEST_F(TableViewTest, EnterKeepsTheFilterAndEscapeClearsIt)
{
    type("/C");
    press(Key::ENTER);
    EXPECT_EQ("c", order());
    EXPECT_EQ(TableView::BROWSING, m_view.mode());
    EXPECT_EQ("1-1 of 1  filter C  ? keys  q end  / filter  s sort  w write", bottom());
    type("/");
    press(Key::ESCAPE);
    EXPECT_EQ("abcdefghij", order());
    EXPECT_EQ(TableView::BROWSING, m_view.mode());
}

TEST_F(TableViewTest, LettersOfAFilterAreNoCommands)
{
    type("/qsw?");
    EXPECT_FALSE(m_view.isOver());
    EXPECT_EQ("qsw?", m_view.filter().toStdString());
    EXPECT_EQ("", order());
}

TEST_F(TableViewTest, MarkIsOnAShownRowWheneverThereIsOne)
{
    press(Key::END);
    type("/c");
    EXPECT_EQ(2, m_view.marked());
    type("x");
    EXPECT_EQ(-1, m_view.marked());
    press(Key::ENTER);
    EXPECT_EQ("no rows  filter cx  ? keys  q end  / filter  s sort  w write", bottom());
    type("w");
    EXPECT_EQ("no tag is marked", bottom());
    press(Key::ESCAPE);
    EXPECT_EQ(0, m_view.marked());
}

TEST_F(TableViewTest, SCyclesThroughTheOrders)
{
    row(0).name = QString(QLatin1Char('z'));
    row(2).changedAt = 10;
    row(1).changedAt = 20;
    row(5).good = false;
    update();
    EXPECT_EQ("zbcdefghij", order());
    type("s");
    EXPECT_EQ("bcdefghijz", order());
    EXPECT_EQ("sorted by name", bottom());
    type("s");
    EXPECT_EQ("bczdefghij", order());
    EXPECT_EQ("sorted by latest change", bottom());
    type("s");
    EXPECT_EQ("fzbcdeghij", order());
    EXPECT_EQ("sorted by trouble", bottom());
    type("s");
    EXPECT_EQ("zbcdefghij", order());
    EXPECT_EQ("sorted by file order", bottom());
}

TEST_F(TableViewTest, MarkFollowsItsTagWhenTheOrderChanges)
{
    press(Key::DOWN);
    type("ss");
    row(9).changedAt = 10;
    update();
    EXPECT_EQ("jabcdefghi", order());
    EXPECT_EQ(1, m_view.marked());
    row(1).changedAt = 20;
    update();
    EXPECT_EQ("bjacdefghi", order());
    EXPECT_EQ(1, m_view.marked());
}

TEST_F(TableViewTest, WriteNeedsAValueAndAYes)
{
    press(Key::DOWN);
    type("w");
    EXPECT_EQ("value for b (MW202): _", bottom());
    type("21.5");
    EXPECT_EQ("value for b (MW202): 21.5_", bottom());
    EXPECT_FALSE(m_view.takeWrite());
    press(Key::ENTER);
    EXPECT_EQ("write 21.5 into b (MW202)? y/n", bottom());
    EXPECT_FALSE(m_view.takeWrite());
    type("y");
    const std::optional<TableView::Write> write = m_view.takeWrite();
    ASSERT_TRUE(write);
    EXPECT_EQ(1, write->tag);
    EXPECT_EQ("21.5", write->value.toStdString());
    EXPECT_FALSE(m_view.takeWrite());
    EXPECT_EQ(TableView::BROWSING, m_view.mode());
}

TEST_F(TableViewTest, OnlyYWrites)
{
    type("w7");
    press(Key::ENTER);
    press(Key::ENTER);
    type("YqNx");
    press(Key::DOWN);
    EXPECT_EQ("write 7 into a (MW200)? y/n", bottom());
    type("n");
    EXPECT_EQ("not written", bottom());
    EXPECT_FALSE(m_view.takeWrite());
    EXPECT_FALSE(m_view.isOver());
}

TEST_F(TableViewTest, EscapeAndAnEmptyValueDropTheWrite)
{
    type("w7");
    press(Key::ESCAPE);
    EXPECT_EQ("not written", bottom());
    type("w7");
    press(Key::ENTER);
    press(Key::ESCAPE);
    EXPECT_EQ("not written", bottom());
    type("w  ");
    press(Key::ENTER);
    EXPECT_EQ("not written", bottom());
    EXPECT_FALSE(m_view.takeWrite());
}

TEST_F(TableViewTest, ValueThatDoesNotFitIsRefusedInWords)
{
    type("wno");
    press(Key::ENTER);
    EXPECT_EQ("no value of the type", bottom());
    EXPECT_EQ(TableView::BROWSING, m_view.mode());
}

TEST_F(TableViewTest, TagThatCannotBeWrittenSaysWhy)
{
    row(0).writeProblem = QString::fromLatin1("area IW is read-only");
    update();
    type("w");
    EXPECT_EQ("a (MW200) cannot be written: area IW is read-only", bottom());
    EXPECT_EQ(TableView::BROWSING, m_view.mode());
}

TEST_F(TableViewTest, WriteConcernsTheTagThatWasMarkedAtItsStart)
{
    type("ss");
    type("w7");
    row(4).changedAt = 10;
    update();
    press(Key::ENTER);
    type("y");
    EXPECT_EQ(0, m_view.takeWrite()->tag);
}

TEST_F(TableViewTest, OutcomeStaysUntilTheNextKey)
{
    type("/");
    m_view.tell(QString::fromLatin1("a (MW200) = 7 confirmed"));
    type("c");
    press(Key::ENTER);
    EXPECT_EQ("a (MW200) = 7 confirmed", bottom());
    press(Key::DOWN);
    EXPECT_EQ("1-1 of 1  filter c", bottom().substr(0, 18));
}

TEST_F(TableViewTest, TypedTextHasALimit)
{
    type("/");
    for (int i = 0; i < 1000; ++i)
        type("x");
    EXPECT_EQ(TableView::LONGEST_INPUT, m_view.filter().size());
}

TEST_F(TableViewTest, QuestionMarkShowsTheKeysUntilTheNextKey)
{
    type("?");
    EXPECT_EQ(TableView::SHOWING_KEYS, m_view.mode());
    type("q");
    EXPECT_EQ(TableView::BROWSING, m_view.mode());
    EXPECT_FALSE(m_view.isOver());
}

TEST_F(TableViewTest, TableWithoutRowsAcceptsEveryKey)
{
    TableView empty(TableView::WITH_KEYS, [](int, const QString&) { return QString(); });
    empty.update({});
    empty.setPage(0);
    for (int kind = Key::TEXT; kind <= Key::OTHER; ++kind) {
        Key key;
        key.kind = Key::Kind(kind);
        empty.press(key);
    }
    EXPECT_EQ(-1, empty.marked());
    EXPECT_EQ(0, empty.top());
}
