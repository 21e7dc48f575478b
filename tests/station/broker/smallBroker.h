#ifndef SMALL_BROKER_H
#define SMALL_BROKER_H

#include "broker/barePeer.h"

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <thread>

/// A broker of MQTT 3.1.1 for one client, in a thread of its own: it grants everything, passes
/// nothing on, and counts what is published. Any thread asks it.
class SmallBroker
{
public:
    SmallBroker() : m_thread([this] { run(); }) {}
    ~SmallBroker()
    {
        m_isEnding = true;
        m_thread.join();
    }
    SmallBroker(const SmallBroker&) = delete;
    SmallBroker& operator=(const SmallBroker&) = delete;

    quint16 port() const
    {
        return m_peer.port();
    }

    /// Waits until so many messages have come on topics with this part.
    bool awaitMessages(const QByteArray& part, int count)
    {
        return await([&] { return messages(part) >= count; });
    }

    bool awaitDisconnect()
    {
        return await([&] { return m_isDisconnected; });
    }

private:
    enum Packet { CONNECT = 1, PUBLISH = 3, SUBSCRIBE = 8, PING = 12, DISCONNECT = 14 };
    enum { PATIENCE_S = 20, TURN_MS = 2 };

    template <typename Condition> bool await(Condition condition)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_came.wait_for(lock, std::chrono::seconds(PATIENCE_S), condition);
    }

    /// With the lock held.
    int messages(const QByteArray& part) const
    {
        int all = 0;
        for (const auto& [topic, count] : m_topics)
            if (topic.contains(part)) all += count;
        return all;
    }

    void run()
    {
        while (!m_isEnding) {
            ::poll(nullptr, 0, TURN_MS);
            m_peer.read();
            while (takePacket()) {
            }
        }
    }

    /// @return false: there is no whole packet
    bool takePacket()
    {
        const QByteArray bytes = m_peer.taken().mid(m_done);
        int size = 0, at = 1;
        for (int shift = 0;; shift += 7, ++at) {
            if (at >= bytes.size()) return false;
            size |= (bytes.at(at) & 0x7f) << shift;
            if ((bytes.at(at) & 0x80) == 0) break;
        }
        if (bytes.size() < at + 1 + size) return false;
        m_done += at + 1 + size;
        answer(bytes.at(0), bytes.mid(at + 1, size));
        return true;
    }

    void answer(char head, const QByteArray& rest)
    {
        switch ((head >> 4) & 0xf) {
        case CONNECT:
            return m_peer.send(QByteArray::fromHex("20020000"));
        case SUBSCRIBE:
            return grant(rest);
        case PING:
            return m_peer.send(QByteArray::fromHex("d000"));
        case PUBLISH:
            return take(head, rest);
        case DISCONNECT:
            note([this] { m_isDisconnected = true; });
        }
    }

    /// The topics stand behind the number, each with its length and the QoS.
    void grant(const QByteArray& rest)
    {
        QByteArray grants;
        for (int at = 2; at + 1 < rest.size(); at += 3 + length(rest, at))
            grants.append('\1');
        m_peer.send(QByteArray(1, '\x90') + char(2 + grants.size()) + rest.left(2) + grants);
    }

    void take(char head, const QByteArray& rest)
    {
        const QByteArray topic = rest.mid(2, length(rest, 0));
        note([&] { ++m_topics[topic]; });
        if ((head & 0x06) == 0) return;
        m_peer.send(QByteArray::fromHex("4002") + rest.mid(2 + topic.size(), 2));
    }

    static int length(const QByteArray& bytes, int at)
    {
        return quint8(bytes.at(at)) << 8 | quint8(bytes.at(at + 1));
    }

    template <typename Change> void note(Change change)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        change();
        m_came.notify_all();
    }

    BarePeer m_peer; ///< but for its port, of the broker's thread
    int m_done = 0;  ///< of the bytes taken; of the broker's thread
    std::atomic<bool> m_isEnding{false};

    std::mutex m_mutex;
    std::condition_variable m_came;
    std::map<QByteArray, int> m_topics; ///< guarded by m_mutex
    bool m_isDisconnected = false;      ///< guarded by m_mutex

    std::thread m_thread;
};

#endif
