// Sequences by ECMA-48 and the VT220 and xterm manuals.
#include "output/keyInput.h"

#include <gtest/gtest.h>

namespace {

std::vector<int> kindsOf(const std::vector<Key>& keys)
{
    std::vector<int> kinds;
    for (const Key& key : keys)
        kinds.push_back(key.kind);
    return kinds;
}

std::vector<int> kindsOf(const QByteArray& bytes)
{
    KeyReader reader;
    return kindsOf(reader.read(bytes));
}

using Kinds = std::vector<int>;

} // namespace

TEST(KeyInput, KeysWithoutACharacterAreSequences)
{
    const struct
    {
        const char* bytes;
        Key::Kind kind;
    } rows[] = {{"\x1b[A", Key::UP},    {"\x1b[B", Key::DOWN},     {"\x1bOA", Key::UP},
                {"\x1bOB", Key::DOWN},  {"\x1b[5~", Key::PAGE_UP}, {"\x1b[6~", Key::PAGE_DOWN},
                {"\x1b[H", Key::HOME},  {"\x1bOH", Key::HOME},     {"\x1b[1~", Key::HOME},
                {"\x1b[7~", Key::HOME}, {"\x1b[F", Key::END},      {"\x1bOF", Key::END},
                {"\x1b[4~", Key::END},  {"\x1b[8~", Key::END},     {"\r", Key::ENTER},
                {"\n", Key::ENTER},     {"\x7f", Key::BACKSPACE},  {"\b", Key::BACKSPACE},
                {"\x1b[C", Key::OTHER}, {"\x1b[15~", Key::OTHER},  {"\x1b[1;5A", Key::OTHER},
                {"\x01", Key::OTHER},   {"\t", Key::OTHER}};
    for (const auto& key : rows)
        EXPECT_EQ(Kinds{key.kind}, kindsOf(QByteArray(key.bytes))) << key.bytes + 1;
}

TEST(KeyInput, CharactersOfOneReadAreKeysInOrder)
{
    KeyReader reader;
    const std::vector<Key> keys = reader.read("q\x1b[Aw\xc3\xbc\xe2\x82\xac\xf0\x9f\x98\x80");
    ASSERT_EQ((Kinds{Key::TEXT, Key::UP, Key::TEXT, Key::TEXT, Key::TEXT, Key::TEXT}),
              kindsOf(keys));
    EXPECT_EQ("q", keys[0].text.toStdString());
    EXPECT_EQ("w", keys[2].text.toStdString());
    EXPECT_EQ("\xc3\xbc", keys[3].text.toStdString());
    EXPECT_EQ("\xe2\x82\xac", keys[4].text.toStdString());
    EXPECT_EQ("\xf0\x9f\x98\x80", keys[5].text.toStdString());
}

TEST(KeyInput, SequenceInPiecesIsOneKey)
{
    KeyReader reader;
    EXPECT_TRUE(reader.read("\x1b").empty());
    EXPECT_TRUE(reader.isIncomplete());
    EXPECT_TRUE(reader.read("[").empty());
    EXPECT_TRUE(reader.read("5").empty());
    EXPECT_EQ(Kinds{Key::PAGE_UP}, kindsOf(reader.read("~")));
    EXPECT_FALSE(reader.isIncomplete());
}

TEST(KeyInput, PauseBehindTheEscapeByteMakesItTheEscapeKey)
{
    KeyReader reader;
    EXPECT_TRUE(reader.read("\x1b").empty());
    EXPECT_EQ(Kinds{Key::ESCAPE}, kindsOf(reader.pause()));
    EXPECT_TRUE(reader.pause().empty());
}

TEST(KeyInput, EscapeKeyBeforeAnotherKeyIsBoth)
{
    EXPECT_EQ((Kinds{Key::ESCAPE, Key::TEXT}), kindsOf("\x1bq"));
    KeyReader reader;
    EXPECT_EQ(Kinds{Key::ESCAPE}, kindsOf(reader.read("\x1b\x1b")));
    EXPECT_EQ(Kinds{Key::ESCAPE}, kindsOf(reader.pause()));
}

TEST(KeyInput, BrokenSequenceIsDroppedAtThePause)
{
    KeyReader reader;
    EXPECT_TRUE(reader.read("\x1b[5").empty());
    EXPECT_TRUE(reader.pause().empty());
    EXPECT_EQ(Kinds{Key::TEXT}, kindsOf(reader.read("q")));
}

TEST(KeyInput, BytesThatAreNoUtf8AreNoText)
{
    EXPECT_EQ((Kinds{Key::OTHER, Key::TEXT}), kindsOf("\xffq"));
    EXPECT_EQ((Kinds{Key::OTHER, Key::TEXT}), kindsOf("\xc3q"));
    EXPECT_EQ(Kinds{Key::OTHER}, kindsOf("\xc2\x9b")); // CSI as one character
}

TEST(KeyInput, EveryByteSequenceEndsInKeysOrInALimitedRest)
{
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            KeyReader reader;
            reader.read(QByteArray(1, char(first)) + QByteArray(1, char(second)));
            reader.pause();
            EXPECT_FALSE(reader.isIncomplete());
        }
    }
    KeyReader reader;
    reader.read(QByteArray("\x1b[") + QByteArray(1000, '1'));
    EXPECT_FALSE(reader.read("q").empty());
}
