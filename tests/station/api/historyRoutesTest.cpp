#include "apiFixture.h"

#include "history/history.h"

#include <QTemporaryDir>

#include <thread>

namespace {

class HistoryRoutes : public ApiTest
{
protected:
    /// The routes' thread may still read the history.
    ~HistoryRoutes() override
    {
        m_routes = HttpRoutes();
    }

    void keepHistory()
    {
        History::Settings settings;
        settings.file = m_folder.filePath(QLatin1String("history.sqlite"));
        m_history = std::make_unique<History>(settings, m_clock);
        m_parts.history = m_history.get();
    }

    const QTemporaryDir m_folder;
    std::unique_ptr<History> m_history;
};

} // namespace

TEST_F(HistoryRoutes, SayWhenThereIsNoHistory)
{
    const std::string none = "503 this station keeps no history: it runs with --no-history";
    EXPECT_EQ(none, summaryOf(get("/api/v1/history", {{"link", "left"}, {"tag", "level"}})));
    EXPECT_EQ(none, summaryOf(get("/api/v1/history.csv")));
}

// The thread that asks is that of all requests: it must not wait for the disk.
TEST_F(HistoryRoutes, ReadTheFileInAnotherThread)
{
    keepHistory();
    HttpRequest request;
    request.method = "GET";
    request.path = "/api/v1/history";
    request.query = {{"link", "left"}, {"tag", "level"}};
    std::promise<std::thread::id> answering;
    m_routes.answer(request, [&answering](const HttpResponse& response) {
        EXPECT_EQ(200, response.status);
        answering.set_value(std::this_thread::get_id());
    });
    EXPECT_NE(std::this_thread::get_id(), answering.get_future().get());
}

TEST_F(HistoryRoutes, LetTheRowsWaitForTheDiskInAnotherThread)
{
    keepHistory();
    const HttpResponse response = get("/api/v1/history.csv");
    ASSERT_TRUE(response.stream);
    char byte = 0;
    EXPECT_EQ(HttpBody::NOTHING_YET, response.stream->read(&byte, 1));
}
