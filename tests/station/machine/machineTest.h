#ifndef MACHINE_TEST_H
#define MACHINE_TEST_H

#include "machine/controlledPlc.h"
#include "machine/stationLinks.h"
#include "plan/tagValue.h"
#include "plan/typedAddress.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <future>

/// Wakes the test when something is new.
class News : public ValueListener
{
public:
    void tagChanged(const LinkValues&, int, const TagReading&) override
    {
        tell();
    }

    void tell()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_count;
        m_isNew.notify_all();
    }

    /// Waits until the condition holds.
    /// @return false: it does not within the time that a test has patience for
    template <typename Condition> bool await(Condition condition)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(PATIENCE_S);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) return false;
            std::unique_lock<std::mutex> lock(m_mutex);
            const int count = m_count;
            m_isNew.wait_for(lock, std::chrono::milliseconds(GLANCE_MS),
                             [&] { return m_count != count; });
        }
        return true;
    }

    enum { PATIENCE_S = 30, GLANCE_MS = 10 };

private:
    std::mutex m_mutex;
    std::condition_variable m_isNew;
    int m_count = 0; ///< guarded by m_mutex
};

/// Links of a station with simulated PLCs, on the system's clock. What the audit writes is kept.
class MachineTest : public testing::Test
{
protected:
    MachineTest()
        : copies(QString::fromUtf8(KAKB_DRIVER_FILE)),
          audit(events, clock,
                [this](const QByteArray& line) {
                    const std::lock_guard<std::mutex> lock(m_mutex);
                    m_lines.push_back(line.toStdString());
                }),
          surroundings{clock,
                       events,
                       {&news},
                       QString::fromUtf8(KAKB_DRIVER_FILE),
                       QString::fromUtf8(KAKB_SIMULATOR_FILE)},
          m_addresses(loadDriverCopy(QString::fromUtf8(KAKB_DRIVER_FILE)))
    {
    }

    /// A tag as kakb-host takes it: "MW100:float32:high".
    Tag tag(const char* address) const
    {
        return tagFromAddress(QLatin1String(address), *m_addresses);
    }
    std::vector<Tag> tags(std::initializer_list<const char*> addresses) const
    {
        std::vector<Tag> all;
        for (const char* const address : addresses)
            all.push_back(tag(address));
        return all;
    }

    static LinkConfig config(const QString& link, std::vector<Tag> tags)
    {
        LinkConfig config;
        config.name = QLatin1String("plc");
        config.link = link;
        config.tags = std::move(tags);
        config.timeoutMs = 200;
        config.paceMs = 20;
        config.pauseMs = 50;
        return config;
    }

    std::shared_ptr<MachineLink> link(const LinkConfig& config)
    {
        return std::make_shared<MachineLink>(config, surroundings, copies, audit);
    }

    /// The link, started, with all its values read.
    std::shared_ptr<MachineLink> liveLink(const LinkConfig& config)
    {
        const std::shared_ptr<MachineLink> live = link(config);
        live->start();
        EXPECT_TRUE(news.await([&] { return areAllGood(*live); }));
        return live;
    }

    static bool areAllGood(const MachineLink& link)
    {
        for (const TagReading& reading : link.values().readings()) {
            if (reading.quality != GOOD) return false;
        }
        return true;
    }

    static std::string shown(const MachineLink& link, int tag)
    {
        const TagReading reading = link.values().reading(tag);
        return tagValueText(link.tags()[size_t(tag)], reading.bytes).toStdString();
    }

    static std::future<WriteEnd> startWrite(MachineLink& link, int tag, const char* value)
    {
        const auto end = std::make_shared<std::promise<WriteEnd>>();
        link.write(tag, bytesOf(link.tags()[size_t(tag)], value), QLatin1String("127.0.0.1:50000"),
                   [end](const WriteEnd& ended) { end->set_value(ended); });
        return end->get_future();
    }
    static WriteEnd write(MachineLink& link, int tag, const char* value)
    {
        return endOf(startWrite(link, tag, value));
    }

    static std::future<RecipeEnd> startRecipe(MachineLink& link, const RecipeRequest& request)
    {
        const auto end = std::make_shared<std::promise<RecipeEnd>>();
        link.transfer(request, QLatin1String("127.0.0.1:50000"),
                      [end](const RecipeEnd& ended) { end->set_value(ended); });
        return end->get_future();
    }
    static RecipeEnd transfer(MachineLink& link, const RecipeRequest& request)
    {
        return endOf(startRecipe(link, request));
    }

    /// The end; a failed one without a reason when it does not come.
    template <typename End> static End endOf(std::future<End> end)
    {
        const auto patience = std::chrono::seconds(News::PATIENCE_S);
        if (end.wait_for(patience) == std::future_status::ready) return end.get();
        ADD_FAILURE() << "it does not end";
        return End();
    }

    static QByteArray bytesOf(const Tag& tag, const char* value)
    {
        return tagValueBytes(tag, QLatin1String(value)).value();
    }

    /// "confirmed", or "failed: reason".
    static std::string summaryOf(const WriteEnd& end)
    {
        const std::string outcome = writeOutcomeText(end.outcome);
        return end.reason.isEmpty() ? outcome : outcome + ": " + end.reason.toStdString();
    }

    /// "done", or "failed at BLOCK: reason".
    static std::string summaryOf(const RecipeEnd& end)
    {
        std::string text = recipeOutcomeText(end.outcome);
        if (!end.block.isEmpty()) text += " at " + end.block.toStdString();
        return end.reason.isEmpty() ? text : text + ": " + end.reason.toStdString();
    }

    std::vector<std::string> lines() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_lines;
    }

    SystemClock clock;
    News news;
    StationEvents events;
    DriverCopies copies;

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_lines; ///< guarded by m_mutex

protected:
    JobAudit audit;
    const LinkSurroundings surroundings;

private:
    const std::unique_ptr<DriverLibrary> m_addresses;
};

#endif
