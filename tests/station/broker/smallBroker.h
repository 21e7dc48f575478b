#ifndef SMALL_BROKER_H
#define SMALL_BROKER_H

#include "broker/barePeer.h"

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <set>
#include <thread>
#include <utility>
#include <vector>

/// A broker of MQTT 3.1.1, in a thread of its own: it grants everything, passes nothing on, and
/// counts what is published. Any thread asks it.
class SmallBroker
{
public:
    SmallBroker() : m_port(QHostAddress(QHostAddress::LocalHost), 0), m_thread([this] { run(); }) {}
    ~SmallBroker()
    {
        m_isEnding = true;
        m_thread.join();
    }
    SmallBroker(const SmallBroker&) = delete;
    SmallBroker& operator=(const SmallBroker&) = delete;

    quint16 port() const
    {
        return m_port.port();
    }

    /// Waits until so many messages have come on topics with this part.
    bool awaitMessages(const QByteArray& part, int count)
    {
        return await([&] { return messages(part) >= count; });
    }

    bool awaitClient(const QByteArray& id)
    {
        return await([&] { return m_ids.count(id) != 0; });
    }

    /// Waits until so many clients have said that they go.
    bool awaitDisconnects(int clients)
    {
        return await([&] { return m_disconnects >= clients; });
    }

private:
    enum Packet { CONNECT = 1, PUBLISH = 3, SUBSCRIBE = 8, PING = 12, DISCONNECT = 14 };
    enum { PATIENCE_S = 20, TURN_MS = 2 };
    enum { ID_AT = 10 }; ///< in a CONNECT, behind the protocol, the flags and the keep-alive

    struct Client
    {
        BareClient bytes;
        int done = 0; ///< of the bytes taken
    };

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
            takeClients();
            for (Client& client : m_clients) {
                client.bytes.read();
                while (takePacket(client)) {
                }
            }
        }
    }

    void takeClients()
    {
        for (Client next; next.bytes.comeFrom(m_port); next = Client())
            m_clients.push_back(std::move(next));
    }

    /// @return false: there is no whole packet
    bool takePacket(Client& client)
    {
        const QByteArray bytes = client.bytes.taken().mid(client.done);
        int size = 0, at = 1;
        for (int shift = 0;; shift += 7, ++at) {
            if (at >= bytes.size()) return false;
            size |= (bytes.at(at) & 0x7f) << shift;
            if ((bytes.at(at) & 0x80) == 0) break;
        }
        if (bytes.size() < at + 1 + size) return false;
        client.done += at + 1 + size;
        answer(client.bytes, bytes.at(0), bytes.mid(at + 1, size));
        return true;
    }

    void answer(BareClient& client, char head, const QByteArray& rest)
    {
        switch ((head >> 4) & 0xf) {
        case CONNECT:
            note([&] { m_ids.insert(rest.mid(ID_AT + 2, length(rest, ID_AT))); });
            return client.send(QByteArray::fromHex("20020000"));
        case SUBSCRIBE:
            return grant(client, rest);
        case PING:
            return client.send(QByteArray::fromHex("d000"));
        case PUBLISH:
            return take(client, head, rest);
        case DISCONNECT:
            note([this] { ++m_disconnects; });
        }
    }

    /// The topics stand behind the number, each with its length and the QoS.
    static void grant(BareClient& client, const QByteArray& rest)
    {
        QByteArray grants;
        for (int at = 2; at + 1 < rest.size(); at += 3 + length(rest, at))
            grants.append('\1');
        client.send(QByteArray(1, '\x90') + char(2 + grants.size()) + rest.left(2) + grants);
    }

    void take(BareClient& client, char head, const QByteArray& rest)
    {
        const QByteArray topic = rest.mid(2, length(rest, 0));
        note([&] { ++m_topics[topic]; });
        if ((head & 0x06) == 0) return;
        client.send(QByteArray::fromHex("4002") + rest.mid(2 + topic.size(), 2));
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

    const ListeningSocket m_port;
    std::vector<Client> m_clients; ///< of the broker's thread
    std::atomic<bool> m_isEnding{false};

    std::mutex m_mutex;
    std::condition_variable m_came;
    std::map<QByteArray, int> m_topics; ///< guarded by m_mutex
    std::set<QByteArray> m_ids;         ///< guarded by m_mutex
    int m_disconnects = 0;              ///< guarded by m_mutex

    std::thread m_thread;
};

#endif
