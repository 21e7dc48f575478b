#ifndef RECORDED_COMMANDS_H
#define RECORDED_COMMANDS_H

#include "plant/plantCommands.h"

#include <vector>

/// Commands that the test ends.
class RecordedCommands : public PlantCommands
{
public:
    struct Write
    {
        QString link, tag;
        MetricValue value;
        QString from;
        Ended ended;
    };

    struct Refusal
    {
        QString what, reason, from;
    };

    std::vector<Write> writes;
    std::vector<Refusal> refusals;

    void write(const QString& link, const QString& tag, const MetricValue& value,
               const QString& from, Ended ended) override
    {
        writes.push_back({link, tag, value, from, std::move(ended)});
    }

    void refused(const QString& what, const QString& reason, const QString& from) override
    {
        refusals.push_back({what, reason, from});
    }

    /// Ends the write with what the tag holds now.
    void end(size_t index, WriteEnd::Outcome outcome, const QByteArray& held = QByteArray(),
             const char* reason = "")
    {
        WriteEnd end;
        end.id = index + 1;
        end.outcome = outcome;
        end.reason = QString::fromUtf8(reason);
        end.held.bytes = held;
        writes[index].ended(end);
    }
};

#endif
