#include "http/requestFraming.h"

#include <gtest/gtest.h>

namespace {

/// The status that a head with these headers is refused with; 0: it is not.
int refused(const HttpRequest::Pairs& headers, size_t bytes = 100,
            const QByteArray& version = "HTTP/1.1")
{
    const RequestHead head{"POST", "/", version, headers, bytes};
    const auto refusal = framingRefusal(head);
    return refusal ? refusal->status : 0;
}

} // namespace

TEST(RequestFraming, TakesABodyOfOneLengthOrInChunks)
{
    EXPECT_EQ(0, refused({}));
    EXPECT_EQ(0, refused({{"content-length", "0"}}));
    EXPECT_EQ(0, refused({{"content-length", "65536"}}));
    EXPECT_EQ(0, refused({{"transfer-encoding", "Chunked"}}));
}

TEST(RequestFraming, RefusesTwoWaysToEndABody)
{
    EXPECT_EQ(400, refused({{"content-length", "2"}, {"transfer-encoding", "chunked"}}));
    EXPECT_EQ(400, refused({{"transfer-encoding", "chunked"}, {"content-length", "2"}}));
    EXPECT_EQ(400, refused({{"content-length", "2"}, {"content-length", "2"}}));
    EXPECT_EQ(400, refused({{"transfer-encoding", "chunked"}, {"transfer-encoding", "chunked"}}));
    EXPECT_EQ(400, refused({{"content-length", "99999999"}, {"content-length", "2"}}));
}

TEST(RequestFraming, RefusesALengthThatIsNoNumber)
{
    for (const char* const length :
         {"", " ", "-1", "+1", "1 1", "1,1", "0x1", "1.0", "one", "9999999999999999999"})
        EXPECT_EQ(400, refused({{"content-length", length}})) << length;
}

TEST(RequestFraming, RefusesOtherEncodings)
{
    for (const char* const encoding : {"", "gzip", "identity", "gzip, chunked", "chunked, chunked"})
        EXPECT_EQ(400, refused({{"transfer-encoding", encoding}})) << encoding;
    EXPECT_EQ(400, refused({{"transfer-encoding", "chunked"}}, 100, "HTTP/1.0"));
}

TEST(RequestFraming, RefusesHeadersThatReadersTakeDifferently)
{
    EXPECT_EQ(0, refused({{"x-a_b.c!#$%&'*+^`|~9", "a\tb \xc3\xa4"}}));
    EXPECT_EQ(400, refused({{"", "a"}}));
    for (const char* const name : {"content-length ", "content-length\t", "a b", "a(b", "a\x80"})
        EXPECT_EQ(400, refused({{name, "2"}})) << name;
    EXPECT_EQ(400, refused({{QByteArray("a\0b", 3), "2"}}));
    for (const char* const value : {"a\x01", "a\rb", "a\nb", "\x7f"})
        EXPECT_EQ(400, refused({{"a", value}})) << value;
    EXPECT_EQ(400, refused({{"a", QByteArray("a\0b", 3)}}));
}

TEST(RequestFraming, RefusesWhatIsTooLarge)
{
    EXPECT_EQ(0, refused({}, 8192));
    EXPECT_EQ(431, refused({}, 8193));
    EXPECT_EQ(413, refused({{"content-length", "65537"}}));
    EXPECT_EQ(413, refused({{"content-length", "999999999999999999"}}));
}
