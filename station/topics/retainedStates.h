#ifndef RETAINED_STATES_H
#define RETAINED_STATES_H

#include "broker/brokerSession.h"
#include "samples/sample.h"
#include "topics/jsonTopics.h"

#include <deque>
#include <map>
#include <memory>
#include <set>

/// A tag of the configuration, and the topic of its state.
struct StatedTag
{
    QString link;
    Tag tag;
    QString topic;
};

/// The retained messages of the JSON dialect: what they have to say, and which of them are due.
///
///     sendAll()     all tags, all stations, status                       next()
///     take()        tag, tag, station, tag ...                           from the front
///     setDevices()  topics that are no longer used                       ahead of all these
///
/// Each due message stands in the queue once, and says what holds when it goes out: the last state
/// wins.
///
/// Invariants:
/// - A station is said to be online only while it answers, behind the first good value since it
///   does, and behind the states that were due by then.
/// - The status goes out behind all that was due when the session began.
/// - A topic that is no longer used is cleared, in each session anew, until the broker has
///   acknowledged it. At most MOST_CLEARINGS wait for that: the numbers of messages are 16 bits.
class RetainedStates
{
public:
    enum { MOST_CLEARINGS = 1000 };

    /// @param node  as configured
    explicit RetainedStates(QString node);

    BrokerMessage status(bool isOnline) const;

    /// The devices of the configuration. What is known of those that stay is kept; samples may come
    /// before their device.
    void setDevices(const std::vector<EdgeDevice>& devices);
    void take(const Sample& sample);

    /// What an earlier run has published: the next devices tell what of it is no longer used.
    /// Topics that are not of this node's states and availabilities are left alone: another station
    /// may have them, when the folder of this one was copied.
    void wasPublished(const std::set<QString>& topics);

    /// Topics that the broker may hold, or will.
    std::set<QString> topicsAtBroker() const;

    /// A session begins: everything is due, the status last.
    void sendAll();

    /// The next message; empty: none is due.
    std::optional<BrokerMessage> next();

    /// The last messages of a session: each station that is not said to be offline is, then the
    /// status. What is due does not matter any more.
    std::vector<BrokerMessage> farewell();

    /// Whether the status went out since sendAll().
    bool isStatusOut() const
    {
        return m_isStatusOut;
    }

    /// A message of next() with QoS 1 went out as this request, and the broker has it.
    void sent(int request, const BrokerMessage& message);
    /// @return whether the last topic that is no longer used is cleared now
    bool delivered(int request);

    /// Null: no tag has this topic.
    const StatedTag* tagAt(const QString& topic) const;

    /// The JSON of the tag's last value; null where no tag has this topic.
    QByteArray valueAt(const QString& topic) const;

    const JsonTopics& topics() const
    {
        return m_topics;
    }

private:
    struct Station
    {
        QString topic; ///< empty: not configured
        bool answers = false;
        bool wasGood = false; ///< a value was good since it answers
        bool isDue = false;
        std::optional<bool> said; ///< in the MQTT session: whether it is online
        quint64 onlineBehind = 0; ///< the number of an entry of the queue

        bool isOnline() const
        {
            return answers && wasGood;
        }
    };

    struct TagState
    {
        StatedTag stated;                 ///< its topic is empty: not configured
        std::shared_ptr<Station> station; ///< null: not configured
        Sample last;                      ///< the last reading; of time 0: none came yet
        bool isDue = false;
    };

    /// One of these; none of them: the status.
    struct Entry
    {
        std::shared_ptr<TagState> tag;
        std::shared_ptr<Station> station;
        quint64 number = 0;
    };

    using TagPointer = std::shared_ptr<TagState>;
    using StationPointer = std::shared_ptr<Station>;
    using Tags = QHash<QPair<QString, QString>, TagPointer>;     ///< by link and name
    using Stations = QHash<QPair<QString, int>, StationPointer>; ///< by link and number

    std::set<QString> usedTopics() const;
    StationPointer configureStation(const EdgeDevice& device, Stations& old);
    void configureTag(const QString& link, const Tag& tag, const StationPointer& station,
                      Tags& old);
    void clearUnused(const std::set<QString>& before);
    void forgetUnused(const QString& topic);

    void takeReading(const Sample& sample);
    void takeStanding(const Sample& sample);
    void noteGood(const StationPointer& station);
    void noteOnline(const StationPointer& station, bool wasOnline);

    void put(Entry entry);
    void putTag(const TagPointer& tag);
    void putStation(const StationPointer& station);
    std::optional<BrokerMessage> messageOf(const Entry& entry);
    std::optional<BrokerMessage> nextClearing();
    static bool isFit(const Tag& tag, const Sample& reading);
    static std::optional<BrokerMessage> stateOf(TagState& tag);
    std::optional<BrokerMessage> availabilityOf(const Entry& entry);

    const QString m_node;
    JsonTopics m_topics;
    Tags m_tags;
    Stations m_stations;
    QHash<QString, TagPointer> m_byTopic;
    std::vector<TagPointer> m_tagOrder;         ///< the configured ones
    std::vector<StationPointer> m_stationOrder; ///< the configured ones

    std::deque<Entry> m_queue;
    quint64 m_lastEntry = 0;
    std::set<QString> m_published;      ///< by an earlier run, until the devices are known
    std::set<QString> m_unused;         ///< topics that the broker may still hold
    std::deque<QString> m_toClear;      ///< those of them whose clearing is due; others, too
    std::map<int, QString> m_clearings; ///< by request, of the MQTT session
    bool m_isStatusOut = false;
};

#endif
