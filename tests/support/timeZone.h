#ifndef TIME_ZONE_H
#define TIME_ZONE_H

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

/// Sets the time zone of this program while it lives. The zone is one of POSIX, which needs no
/// files of the system: "JST-9" is nine hours ahead of UTC.
class TimeZone
{
public:
    explicit TimeZone(const char* posix)
    {
        if (const char* const before = std::getenv("TZ")) m_before = before;
        set(posix);
    }
    ~TimeZone()
    {
        set(m_before ? m_before->c_str() : nullptr);
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;

private:
    static void set(const char* zone)
    {
        if (zone != nullptr)
            setenv("TZ", zone, 1);
        else
            unsetenv("TZ");
        tzset();
    }

    std::optional<std::string> m_before;
};

#endif
