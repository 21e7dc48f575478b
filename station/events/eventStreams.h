#ifndef EVENT_STREAMS_H
#define EVENT_STREAMS_H

#include "events/streamClient.h"
#include "events/streamTimes.h"
#include "events/toldValues.h"
#include "http/httpRoutes.h"
#include "values/stationEvents.h"

#include <atomic>
#include <functional>
#include <map>
#include <optional>

/// A link as the stream sees it.
struct StreamedLink
{
    std::shared_ptr<const LinkValues> values;
    std::shared_ptr<const FrameLog> frames;
};

/// The stream of what happens, GET /api/v1/events: Server-Sent Events.
///
///   values  {"full","values":[…]}, see ToldValues
///   link, write, recipe  the station's events, each with its `time` as the first key
///   beat    {"time","seen":[[link,tag,time],…]} each second
///   plant   as GET /api/v1/plant, at a change of its states at once, of its figures with the beat
///   frame   with ?frames=LINK, see FrameChannel
///   gap     the end of a message that was cut short; its data is to be left unread
///
/// Ids count up by message. The first one is the time of the start in microseconds since 1970, so
/// that they count up from run to run, too: a Last-Event-ID of a run before is less than all ids of
/// this one. One that is greater than the newest id, which a clock set back can bring, or that is
/// no number, knows nothing of this run either.
///
/// All functions are of the HTTP thread, but for tagChanged() and plantChanged(). While no client
/// is there, nothing is done.
class EventStreams : public ValueListener
{
public:
    struct Sources
    {
        std::function<std::vector<StreamedLink>()> links; ///< of this moment
        std::function<bool()> areWritesAllowed;
        const StationEvents& events;
        const StationClock& clock;
        std::function<QByteArray()> plant = nullptr; ///< its document; null: no MQTT
    };

    /// @param wake  asks for a turn soon; any thread calls it, also with a link's values locked
    EventStreams(const Sources& sources, std::function<void()> wake);

    void addRoute(HttpRoutes& routes);

    /// Gives the clients what is due.
    /// @param now  StationClock::steady(), microseconds
    /// @return when it is due again; empty: after the next wake
    std::optional<qint64> turn(qint64 now);

    /// Asks for a turn, at most once for each look at the values. Any thread calls it.
    void tagChanged(const LinkValues& link, int tag, const TagReading& reading) override;

    /// The station stands in another way with its broker. Any thread calls it.
    void plantChanged();

private:
    void connect(const HttpRequest& request, const HttpAnswer& answer);
    std::shared_ptr<FrameChannel> channelOf(const QString& link);
    quint64 placeOf(const HttpRequest& request);
    void dropClosed();
    void rest();
    bool isLossAmong(const std::vector<StationEvent>& events) const;
    StreamTimes::Wanted lookWanted() const;
    void look(qint64 now);
    bool sendFull();
    void sendFrames(const std::vector<StreamedLink>& links, qint64 now);
    void sendEvents(const std::vector<StationEvent>& events, qint64 now);
    void beat(qint64 now);
    void sendPlant(qint64 now);
    SharedMessage send(const char* name, const QByteArray& document, qint64 now);

    const Sources m_sources;
    const std::function<void()> m_wake;
    const std::shared_ptr<StreamSources> m_messages;
    std::vector<std::weak_ptr<StreamClient>> m_clients;        ///< their connections own them
    std::map<QString, std::weak_ptr<FrameChannel>> m_channels; ///< by link
    ToldValues m_told;
    StreamTimes m_times;
    quint64 m_lastId;            ///< of the messages
    quint64 m_lastEvent = 0;     ///< of StationEvents
    bool m_isLossUntold = false; ///< a link is lost, and no look has told its values
    QByteArray m_toldPlant;      ///< the last document

    /// A change that no look has seen yet, of values and of the plant. It stays set while no client
    /// is there, so that nobody wakes the server for nothing.
    std::atomic<bool> m_hasNews{true}, m_hasPlantNews{true};
};

#endif
