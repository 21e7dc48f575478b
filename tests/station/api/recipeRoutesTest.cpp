#include "apiFixture.h"

namespace {

/// A row that lies on the writable tag "level".
const char LEVEL[] = R"({"name":"level","station":1,"area":"MW","address":"100",)"
                     R"("type":"float32:high","value":21.5})";

class RecipeRoutes : public ApiTest
{
protected:
    std::string answer(const char* kind, const QByteArray& rows,
                       const QByteArray& further = QByteArray()) const
    {
        return summaryOf(post(QByteArray("/api/v1/recipes/") + kind,
                              "{\"link\":\"left\",\"rows\":" + rows + further + '}'));
    }

    std::string compared(const QByteArray& row) const
    {
        return answer("compare", '[' + row + ']');
    }

    static QByteArray rowOf(const char* area, const char* address, const char* type,
                            const char* value)
    {
        return QByteArray(R"({"name":"x","station":1,"area":")") + area + R"(","address":")" +
               address + R"(","type":")" + type + R"(","value":)" + value + '}';
    }
};

} // namespace

TEST_F(RecipeRoutes, TakeOneObjectWithRows)
{
    const QByteArray path = "/api/v1/recipes/compare";
    EXPECT_EQ("400 the request has no text \"link\"", summaryOf(post(path, R"({"rows":[]})")));
    EXPECT_EQ("400 the request has no array \"rows\"", summaryOf(post(path, R"({"link":"left"})")));
    EXPECT_EQ("422 the recipe has no rows", answer("compare", "[]"));
    EXPECT_EQ("400 row 1 is no JSON object", answer("compare", "[1]"));
    EXPECT_EQ("400 row 1 has the unknown key \"rate\"", compared(R"({"name":"x","rate":1})"));
    EXPECT_EQ("400 row 1 has no text \"name\"", compared("{}"));
    EXPECT_EQ("400 row 1 \"x\" has no number \"station\"",
              compared(R"({"name":"x","station":"1"})"));
    EXPECT_EQ("400 \"verify\" is neither true nor false",
              answer("download", QByteArray("[") + LEVEL + ']', ",\"verify\":1"));
    EXPECT_EQ("404 there is no link \"up\"",
              summaryOf(post(path, QByteArray(R"({"link":"up","rows":[)") + LEVEL + "]}")));
}

TEST_F(RecipeRoutes, NameTheRowThatIsWrong)
{
    EXPECT_EQ("422 row 1 \"x\": station \"248\" is no number from 1 to 247",
              compared(R"({"name":"x","station":248})"));
    EXPECT_EQ("422 row 1 \"x\": 70000 does not fit uint16: 0 to 65535",
              compared(rowOf("MW", "100", "uint16", "70000")));
    EXPECT_EQ("422 row 1 \"x\": area IW is read-only", compared(rowOf("IW", "0", "uint16", "1")));
    EXPECT_EQ("422 row 1 \"x\": MW holds words, which are not of type bool",
              compared(rowOf("MW", "100", "bool", "1")));
    EXPECT_EQ(0u,
              compared(rowOf("MW", "100000", "uint16", "1")).find("422 row 1 \"x\": MW100000: "));
    EXPECT_EQ(0u, compared(rowOf("XY", "1", "uint16", "1")).find("422 row 1 \"x\": "));
    EXPECT_EQ(0u, compared(rowOf("MW", "1", "word", "1")).find("422 row 1 \"x\": type \"word\""));
    EXPECT_EQ("422 row 1 \"x\": the value is missing",
              compared(R"({"name":"x","station":1,"area":"MW","address":"2","type":"uint16"})"));
}

TEST_F(RecipeRoutes, RefuseTwoRowsOfOneNameOrOneMemory)
{
    const QByteArray first = rowOf("MW", "100", "uint32", "1");
    EXPECT_EQ("422 row 2: an earlier row has the name \"x\"",
              answer("compare", '[' + first + ',' + rowOf("MW", "200", "uint16", "1") + ']'));
    QByteArray second = rowOf("MW", "102", "uint16", "1");
    second.replace("\"x\"", "\"y\"");
    EXPECT_EQ("422 row 2 \"y\": it shares memory with row 1 \"x\"",
              answer("compare", '[' + first + ',' + second + ']'));
}

TEST_F(RecipeRoutes, DownloadOnlyWhatATagLetsAClientWrite)
{
    EXPECT_EQ("403 row 1 \"x\": no tag of the link with access \"rw\" has its place and type",
              answer("download", '[' + rowOf("MW", "200", "uint16", "1") + ']'));
    EXPECT_EQ("403 row 1 \"x\": no tag of the link with access \"rw\" has its place and type",
              answer("download", '[' + rowOf("MW", "102", "uint16", "1") + ']'));
    EXPECT_EQ("403 row 1 \"x\": no tag of the link with access \"rw\" has its place and type",
              answer("download", '[' + rowOf("MW", "100", "float32:low", "1") + ']'));
    m_areWritesAllowed = false;
    EXPECT_EQ("403 this station writes nothing: it runs without --allow-writes",
              answer("download", QByteArray("[") + LEVEL + ']'));
}
