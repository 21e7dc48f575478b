#ifndef API_FIXTURE_H
#define API_FIXTURE_H

#include "api/apiRoutes.h"
#include "plan/tagText.h"
#include "values/testClock.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <future>

/// The API of a station with two links that cannot be opened, without sockets:
///
///   left    level   MW100  float32:high  rw
///           count   MW102  uint16        ro
///   right   pump    MX0.0  bool          rw
class ApiTest : public testing::Test
{
protected:
    ApiTest()
        : m_links({m_clock,
                   m_events,
                   {},
                   QString::fromUtf8(KAKB_DRIVER_FILE),
                   QString::fromUtf8(KAKB_SIMULATOR_FILE)}),
          m_parts{QLatin1String("line 3"),
                  1700000000000,
                  m_areWritesAllowed,
                  m_links,
                  m_events,
                  m_clock}
    {
        m_links.apply({linkOf("left", {tagOf("level", "MW", "100", "float32:high", true),
                                       tagOf("count", "MW", "102", "uint16", false)}),
                       linkOf("right", {tagOf("pump", "MX", "0.0", "bool", true)})});
        m_parts.addresses = m_addresses.get();
        addApiRoutes(m_routes, m_parts);
    }

    std::future<HttpResponse> asked(const HttpRequest& request) const
    {
        const auto given = std::make_shared<std::promise<HttpResponse>>();
        m_routes.answer(request,
                        [given](HttpResponse response) { given->set_value(std::move(response)); });
        return given->get_future();
    }

    std::future<HttpResponse> posted(const QByteArray& path, const QByteArray& body) const
    {
        HttpRequest request;
        request.method = "POST";
        request.path = path;
        request.body = body;
        request.peer = QLatin1String("127.0.0.1:50000");
        return asked(request);
    }

    HttpResponse post(const QByteArray& path, const QByteArray& body) const
    {
        return posted(path, body).get();
    }

    HttpResponse get(const QByteArray& path, HttpRequest::Pairs query = {}) const
    {
        HttpRequest request;
        request.method = "GET";
        request.path = path;
        request.query = std::move(query);
        return asked(request).get();
    }

    /// "404 there is no link", or the status and the body of what is no error.
    static std::string summaryOf(const HttpResponse& response)
    {
        const QJsonObject object = QJsonDocument::fromJson(response.body).object();
        const QString error = object.value(QLatin1String("error")).toString();
        const QByteArray text = error.isEmpty() ? response.body : error.toUtf8();
        return std::to_string(response.status) + " " + text.toStdString();
    }

    const std::unique_ptr<DriverLibrary> m_addresses =
        loadDriverCopy(QString::fromUtf8(KAKB_DRIVER_FILE));
    std::atomic<bool> m_areWritesAllowed{true};
    TestClock m_clock;
    StationEvents m_events;
    StationLinks m_links;
    StationParts m_parts;
    HttpRoutes m_routes;

private:
    Tag tagOf(const char* name, const char* area, const char* address, const char* type,
              bool isWritable) const
    {
        Tag tag;
        tag.name = QLatin1String(name);
        tag.area = QLatin1String(area);
        tag.address = QLatin1String(address);
        takeType(QLatin1String(type), tag);
        tag.access = isWritable ? Tag::READ_WRITE : Tag::READ_ONLY;
        EXPECT_EQ(QString(), addressProblem(tag, *m_addresses)) << name;
        return tag;
    }

    static LinkConfig linkOf(const char* name, const std::vector<Tag>& tags)
    {
        LinkConfig config;
        config.name = QLatin1String(name);
        config.link = QLatin1String("serial:/no/such/port");
        config.tags = tags;
        return config;
    }
};

#endif
