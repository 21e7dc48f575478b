#include "page/pageRoutes.h"

#include "page/pageFile.h"

#include <QByteArrayList>
#include <QRegularExpression>
#include <QSet>

#include <gtest/gtest.h>

namespace {

class Page : public ::testing::Test
{
protected:
    Page()
    {
        addPageRoutes(m_routes);
    }

    HttpResponse get(const QByteArray& path, const HttpRequest::Pairs& headers = {}) const
    {
        HttpRequest request;
        request.method = "GET";
        request.path = path;
        request.headers = headers;
        HttpResponse answered;
        m_routes.answer(request, [&](HttpResponse response) { answered = std::move(response); });
        return answered;
    }

    static QByteArray headerOf(const HttpResponse& response, const QByteArray& name)
    {
        for (const auto& [key, value] : response.headers)
            if (key == name) return value;
        return QByteArray();
    }

    HttpRoutes m_routes;
};

/// What the file names in its own folder: modules, style sheets, icons.
QSet<QString> namedFiles(const QString& text)
{
    static const QRegularExpression name(QLatin1String(
        "(?:from |import\\(|href=|src=|\\.src = )[\"'`](?:\\./)?([a-zA-Z.]+\\.(?:js|css|html))"));
    QSet<QString> names;
    for (auto matches = name.globalMatch(text); matches.hasNext();)
        names += matches.next().captured(1);
    return names;
}

TEST_F(Page, IsServedAtTheRootOfTheStation)
{
    const HttpResponse page = get("/");
    EXPECT_EQ(page.status, 200);
    EXPECT_EQ(page.contentType, "text/html; charset=utf-8");
    EXPECT_TRUE(page.body.startsWith("<!DOCTYPE html>"));
}

TEST_F(Page, GoesOutPackedToWhoTakesGzip)
{
    const HttpResponse packed = get("/main.js", {{"accept-encoding", "br, gzip;q=0.8"}});
    EXPECT_EQ(headerOf(packed, "Content-Encoding"), "gzip");
    EXPECT_TRUE(packed.body.startsWith("\x1f\x8b"));
    EXPECT_EQ(headerOf(packed, "Vary"), "Accept-Encoding");
    for (const char* refusing : {"", "identity", "gzip;q=0", "gzip; Q=0.000", "notgzip"}) {
        const HttpResponse plain = get("/main.js", {{"accept-encoding", refusing}});
        EXPECT_EQ(headerOf(plain, "Content-Encoding"), "") << refusing;
        EXPECT_TRUE(plain.body.contains("import ")) << refusing;
    }
}

TEST_F(Page, IsNotSentAgainToWhoHasIt)
{
    const QByteArray tag = headerOf(get("/main.js"), "ETag");
    const HttpResponse again = get("/main.js", {{"if-none-match", tag}});
    EXPECT_EQ(again.status, 304);
    EXPECT_TRUE(again.body.isEmpty());
    EXPECT_EQ(headerOf(again, "ETag"), tag);
    EXPECT_EQ(get("/model.js", {{"if-none-match", tag}}).status, 200);
}

TEST_F(Page, NeedsTheTokenButForItsLogin)
{
    for (const PageFile& file : pageFiles()) {
        const QByteArray name(file.name);
        const QByteArray path = name == "index.html" ? QByteArray("/") : '/' + name;
        const bool isLogin = name == "login.html" || name == "login.css" || name == "login.js";
        EXPECT_EQ(m_routes.isPublic(path), isLogin) << file.name;
    }
    EXPECT_TRUE(m_routes.isPublic(m_routes.loginPage()));
}

TEST_F(Page, NamesOnlyFilesThatItHas)
{
    int named = 0;
    for (const PageFile& file : pageFiles()) {
        if (QByteArray(file.name).startsWith("dygraph")) continue;
        const QString text =
            QString::fromUtf8(reinterpret_cast<const char*>(file.bytes), int(file.size));
        for (const QString& name : namedFiles(text)) {
            EXPECT_EQ(get('/' + name.toUtf8()).status, 200) << file.name << qPrintable(name);
            ++named;
        }
    }
    EXPECT_GT(named, 20);
}

TEST_F(Page, AsksNothingOfAnotherHost)
{
    static const QRegularExpression elsewhere(QLatin1String("(?:https?:)?//[a-z0-9.-]+\\.[a-z]"));
    for (const PageFile& file : pageFiles()) {
        if (QByteArray(file.name).startsWith("dygraph")) continue; // addresses in comments
        QString text = QString::fromUtf8(reinterpret_cast<const char*>(file.bytes), int(file.size));
        text.remove(QLatin1String("http://www.w3.org/2000/svg")); // a name, which is not fetched
        EXPECT_FALSE(text.contains(elsewhere)) << file.name;
    }
}

TEST_F(Page, HasNoScriptOrStyleOutsideItsFiles)
{
    static const QRegularExpression inlined(
        QLatin1String("<script>|<style|\\sstyle=|\\son[a-z]+=|javascript:"));
    for (const char* path : {"/", "/login.html"})
        EXPECT_FALSE(QString::fromUtf8(get(path).body).contains(inlined)) << path;
}

TEST_F(Page, IsLightForASlowLine)
{
    size_t bytes = 0, packed = 0;
    for (const PageFile& file : pageFiles()) {
        bytes += file.size;
        packed += file.packedSize;
    }
    std::cout << "page: " << bytes << " bytes, compressed " << packed << "\n";
    RecordProperty("bytes", std::to_string(bytes));
    RecordProperty("packed", std::to_string(packed));
    EXPECT_LE(bytes, 250000u);
    EXPECT_LE(packed, 90000u);
}

} // namespace
