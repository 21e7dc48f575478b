#ifndef SCRIPTED_LINK_H
#define SCRIPTED_LINK_H

#include "links/link.h"

#include <sys/eventfd.h>

#include <unistd.h>

#include <deque>
#include <string>

/// A link that brings the bytes of its script, a portion at each read, and is then gone, or stays
/// open and silent. It is there at once: nothing of it takes time.
class ScriptedLink : public Link
{
public:
    enum End { IS_LOST, STAYS_SILENT };

    /// @param trouble  said of the loss
    ScriptedLink(const std::deque<QByteArray>& portions, End end,
                 const std::string& trouble = "unplugged")
        : m_portions(portions),
          m_end(end),
          m_trouble(trouble),
          m_event(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
    {
        if (end == IS_LOST || !portions.empty()) eventfd_write(m_event, 1);
    }
    ~ScriptedLink() override
    {
        close(m_event);
    }
    ScriptedLink(const ScriptedLink&) = delete;
    ScriptedLink& operator=(const ScriptedLink&) = delete;

    void write(const QByteArray&) override {}

    QByteArray read() override
    {
        if (m_portions.empty()) throw LinkError(m_trouble);
        const QByteArray bytes = m_portions.front();
        m_portions.pop_front();
        eventfd_t count = 0;
        if (m_portions.empty() && m_end == STAYS_SILENT) eventfd_read(m_event, &count);
        return bytes;
    }

    int descriptor() const override
    {
        return m_event;
    }

private:
    std::deque<QByteArray> m_portions;
    const End m_end;
    const std::string m_trouble;
    const int m_event; ///< readable as long as there is something to read, or the loss to see
};

#endif
