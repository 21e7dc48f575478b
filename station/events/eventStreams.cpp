#include "events/eventStreams.h"

#include "values/jsonText.h"

#include <algorithm>
#include <utility>

namespace {

const char* eventName(StationEvent::Kind kind)
{
    switch (kind) {
    case StationEvent::LINK:
        return "link";
    case StationEvent::WRITE:
        return "write";
    case StationEvent::RECIPE:
        return "recipe";
    }
    return "link";
}

std::shared_ptr<const FrameLog> framesOf(const std::vector<StreamedLink>& links,
                                         const QString& name)
{
    for (const StreamedLink& link : links) {
        if (link.values->name() == name) return link.frames;
    }
    return nullptr;
}

/// The document of an event with its time ahead: {"time":…,"id":…}. A client that comes back hears
/// of what has long happened.
QByteArray datedDocument(const StationEvent& event)
{
    return "{\"time\":" + QByteArray::number(event.time) + ',' + event.document.mid(1);
}

} // namespace

EventStreams::EventStreams(const Sources& sources, std::function<void()> wake)
    : m_sources(sources),
      m_wake(std::move(wake)),
      m_messages(std::make_shared<StreamSources>()),
      m_lastId(quint64(sources.clock.wall()) * 1000)
{
}

void EventStreams::addRoute(HttpRoutes& routes)
{
    routes.add(
        "GET", "/api/v1/events",
        [this](const HttpRequest& request, const HttpAnswer& answer) { connect(request, answer); });
}

void EventStreams::connect(const HttpRequest& request, const HttpAnswer& answer)
{
    std::shared_ptr<FrameChannel> channel;
    if (const std::optional<QByteArray> link = request.queried("frames")) {
        channel = channelOf(QString::fromUtf8(*link));
        if (!channel) {
            answer(errorResponse(404, QLatin1String("no such link")));
            return;
        }
    }
    const qint64 now = m_sources.clock.steady();
    dropClosed();
    if (m_clients.empty()) m_times.begin(now);
    sendEvents(m_sources.events.since(m_lastEvent), now); // what came before is no news to it
    const auto client = std::make_shared<StreamClient>(m_messages, placeOf(request), channel);
    m_clients.push_back(client);
    HttpResponse response;
    response.contentType = "text/event-stream";
    response.headers = {{"X-Accel-Buffering", "no"}};
    response.stream = client;
    answer(response);
    m_wake();
}

/// The frames of a link, for all who ask for them; null: there is no such link.
std::shared_ptr<FrameChannel> EventStreams::channelOf(const QString& link)
{
    std::shared_ptr<FrameChannel> channel = m_channels[link].lock();
    if (channel) return channel;
    const std::shared_ptr<const FrameLog> frames = framesOf(m_sources.links(), link);
    if (!frames) {
        m_channels.erase(link);
        return nullptr;
    }
    channel = std::make_shared<FrameChannel>(link);
    channel->start(frames);
    m_channels[link] = channel;
    return channel;
}

/// The id of the last message that the client knows.
quint64 EventStreams::placeOf(const HttpRequest& request)
{
    const QByteArray text = request.header("last-event-id");
    if (text.isEmpty()) return m_lastId;
    bool isNumber = false;
    const quint64 id = text.toULongLong(&isNumber);
    return isNumber && id <= m_lastId ? id : 0;
}

std::optional<qint64> EventStreams::turn(qint64 now)
{
    dropClosed();
    if (m_clients.empty()) {
        rest();
        return {};
    }
    for (const std::weak_ptr<StreamClient>& held : m_clients) {
        if (const std::shared_ptr<StreamClient> client = held.lock()) client->watch(now);
    }
    // Values are looked at after the events are taken and told before them: who hears of a
    // confirmed write has its value, unless the window of the last message is open.
    const std::vector<StationEvent> events = m_sources.events.since(m_lastEvent);
    m_isLossUntold = m_isLossUntold || isLossAmong(events);
    if (m_times.isLookDue(now, lookWanted())) look(now);
    sendEvents(events, now);
    const bool isBeatDue = m_times.isBeatDue(now);
    if (isBeatDue) beat(now);
    if (m_hasPlantNews.exchange(false) || isBeatDue || m_toldPlant.isEmpty()) sendPlant(now);
    m_messages->recent.forget(now);
    return m_times.next(lookWanted());
}

void EventStreams::tagChanged(const LinkValues&, int, const TagReading&)
{
    if (!m_hasNews.exchange(true)) m_wake();
}

void EventStreams::plantChanged()
{
    if (!m_hasPlantNews.exchange(true)) m_wake();
}

void EventStreams::dropClosed()
{
    const auto isClosed = [](const std::weak_ptr<StreamClient>& client) {
        return client.expired();
    };
    m_clients.erase(std::remove_if(m_clients.begin(), m_clients.end(), isClosed), m_clients.end());
}

/// No client is there.
void EventStreams::rest()
{
    m_hasNews = true;
    m_hasPlantNews = true;
    m_toldPlant.clear();
    m_isLossUntold = false;
    m_told.clear();
    m_messages->recent.clear();
    m_channels.clear();
}

/// Another link that was lost before makes a link that is back a loss here: it is told a moment
/// early.
bool EventStreams::isLossAmong(const std::vector<StationEvent>& events) const
{
    const bool isOfLink = std::any_of(events.begin(), events.end(), [](const StationEvent& event) {
        return event.kind == StationEvent::LINK;
    });
    if (!isOfLink) return false;
    const std::vector<StreamedLink> links = m_sources.links();
    return std::any_of(links.begin(), links.end(), [](const StreamedLink& link) {
        return link.values->state().standing == LINK_LOST;
    });
}

StreamTimes::Wanted EventStreams::lookWanted() const
{
    if (m_isLossUntold) return StreamTimes::URGENT;
    if (m_hasNews) return StreamTimes::WANTED;
    const bool isFullWanted = std::any_of(m_clients.begin(), m_clients.end(), [](const auto& held) {
        const std::shared_ptr<StreamClient> client = held.lock();
        return client && client->wantsFull();
    });
    return isFullWanted ? StreamTimes::WANTED : StreamTimes::NOT_WANTED;
}

void EventStreams::look(qint64 now)
{
    m_isLossUntold = false;
    m_hasNews = false; // before the look: what comes from now on wakes again
    const std::vector<StreamedLink> links = m_sources.links();
    ToldValues::Links values;
    for (const StreamedLink& link : links)
        values.push_back(link.values);
    if (m_told.setLinks(values, m_sources.areWritesAllowed())) {
        for (const std::weak_ptr<StreamClient>& held : m_clients) {
            if (const std::shared_ptr<StreamClient> client = held.lock()) client->fallBehind();
        }
    }
    const QByteArray changes = m_told.changes();
    if (!changes.isEmpty()) send("values", changes, now);
    const bool hasSentFull = sendFull();
    if (hasSentFull) m_toldPlant.clear(); // who comes or fell behind has missed it
    m_times.looked(now, hasSentFull || !changes.isEmpty());
    sendFrames(links, now);
}

/// Gives one full snapshot to all clients that need one. Whether there are any.
bool EventStreams::sendFull()
{
    SharedMessage full;
    for (const std::weak_ptr<StreamClient>& held : m_clients) {
        const std::shared_ptr<StreamClient> client = held.lock();
        if (!client || !client->wantsFull()) continue;
        if (!full) full = streamMessage(++m_lastId, "values", m_told.all());
        client->giveFull(full);
    }
    return full != nullptr;
}

void EventStreams::sendFrames(const std::vector<StreamedLink>& links, qint64 now)
{
    for (const auto& [link, held] : m_channels) {
        const std::shared_ptr<FrameChannel> channel = held.lock();
        if (!channel) continue;
        const QByteArray frames = channel->newFrames(framesOf(links, link));
        if (!frames.isEmpty()) channel->add(streamMessage(++m_lastId, "frame", frames), now);
    }
}

void EventStreams::sendEvents(const std::vector<StationEvent>& events, qint64 now)
{
    for (const StationEvent& event : events) {
        m_messages->events.add(send(eventName(event.kind), datedDocument(event), now), now);
        m_lastEvent = event.id;
    }
}

void EventStreams::beat(qint64 now)
{
    m_times.beaten(now);
    JsonText json;
    json.beginObject().key("time").integer(m_sources.clock.wall());
    json.key("seen").raw(m_told.seen()).endObject();
    send("beat", json.document(), now);
}

void EventStreams::sendPlant(qint64 now)
{
    if (!m_sources.plant) return;
    const QByteArray document = m_sources.plant();
    if (document == m_toldPlant) return;
    m_toldPlant = document;
    send("plant", document, now);
}

/// Sends a message to all clients that follow.
SharedMessage EventStreams::send(const char* name, const QByteArray& document, qint64 now)
{
    const SharedMessage message = streamMessage(++m_lastId, name, document);
    m_messages->recent.add(message, now);
    return message;
}
