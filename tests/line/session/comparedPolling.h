#ifndef COMPARED_POLLING_H
#define COMPARED_POLLING_H

#include "sessionBench.h"

/// Every marker word of the model PLC holds a value of its own, so that a value of another word is
/// seen to be one.
inline int valueOfWord(int number)
{
    return (number * 31 + 7) & 0xFFFF;
}

inline std::vector<Tag> wordsApart(int count = 20)
{
    std::vector<Tag> tags;
    for (int i = 0; i < count; ++i)
        tags.push_back(tagOf("MW", 3000 + 200 * i));
    return tags;
}

inline std::vector<Tag> wordsSideBySide(int count)
{
    std::vector<Tag> tags;
    for (int i = 0; i < count; ++i)
        tags.push_back(tagOf("MW", 3000 + i));
    return tags;
}

/// A session that compares each value that it is told with the PLC's.
class ComparedPolling
{
public:
    ComparedPolling(const std::vector<Tag>& tags, qint64 timeOut, const LineTiming& timing)
        : bench(timeOut, timing), m_tags(tags)
    {
        for (int number = 3000; number <= 7095; ++number)
            bench.plc.station(1).holding[number] = valueOfWord(number);
        bench.sink.onValue = [this](int tag, const QByteArray& bytes) { compare(tag, bytes); };
        bench.poll(tags);
    }

    int readsIn(qint64 duration)
    {
        const int before = reads;
        bench.run(duration);
        return reads - before;
    }

    SessionBench bench;
    int reads = 0;
    int wrong = 0;

private:
    void compare(int tag, const QByteArray& bytes)
    {
        ++reads;
        const int value =
            static_cast<unsigned char>(bytes.at(0)) + 256 * static_cast<unsigned char>(bytes.at(1));
        if (value != valueOfWord(m_tags[size_t(tag)].number)) ++wrong;
    }

    const std::vector<Tag> m_tags;
};

#endif
