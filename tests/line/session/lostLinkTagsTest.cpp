#include "builtDriver.h"
#include "scriptedLink.h"
#include "session/linkThread.h"
#include "session/sharedValues.h"

#include <gtest/gtest.h>

#include <string>

// The tags of a link that is lost, or cannot be opened.

namespace {

enum { WAIT_MS = 100, MOST_WAITS = 200 };

Tag someTag(int number)
{
    Tag tag;
    tag.station = 1;
    tag.area = QLatin1String("MW");
    tag.number = number;
    return tag;
}

/// A host that polls nothing and knows two tags.
class LostLinkTagsTest : public testing::Test
{
protected:
    LostLinkTagsTest() : shared(2, false) {}

    /// @return whether both tags come to have the trouble while the host runs
    bool showTrouble(const LinkThread::OpenLink& openLink, const std::string& trouble)
    {
        LinkThread::Settings settings;
        settings.firstPauseMs = 1;
        settings.openLink = openLink;
        LinkThread thread(driver(), settings, shared);
        thread.know({someTag(3000), someTag(3001)}, {});
        thread.start();
        for (int waits = 0; waits < MOST_WAITS; ++waits) {
            if (haveTrouble(trouble)) return true;
            shared.waitForNews(WAIT_MS);
            shared.takeNews();
        }
        return false;
    }

    SharedValues shared;

private:
    bool haveTrouble(const std::string& trouble) const
    {
        for (const TagState& state : shared.tags()) {
            if (state.good || state.trouble.toStdString() != trouble) return false;
        }
        return true;
    }
};

} // namespace

TEST_F(LostLinkTagsTest, AreBadWithTheReasonWhenTheLinkIsLost)
{
    const auto isLost = [] {
        return std::make_unique<ScriptedLink>(std::deque<QByteArray>(), ScriptedLink::IS_LOST);
    };
    EXPECT_TRUE(showTrouble(isLost, "link lost: unplugged"));
}

TEST_F(LostLinkTagsTest, AreBadWithTheReasonWhenTheLinkCannotBeOpened)
{
    const auto isMissing = []() -> std::unique_ptr<Link> { throw LinkError("no such port"); };
    EXPECT_TRUE(showTrouble(isMissing, "link lost: no such port"));
}

TEST_F(LostLinkTagsTest, HaveTheReasonOfTheLatestLoss)
{
    int openings = 0;
    const auto isLostAgain = [&openings] {
        const std::string trouble = ++openings < 3 ? "first reason" : "later reason";
        return std::make_unique<ScriptedLink>(std::deque<QByteArray>(), ScriptedLink::IS_LOST,
                                              trouble);
    };
    EXPECT_TRUE(showTrouble(isLostAgain, "link lost: later reason"));
}
