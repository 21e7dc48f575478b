#include "broker/hostLookup.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <sys/socket.h>

#include <thread>

namespace {

struct FreeAddresses
{
    void operator()(addrinfo* list) const
    {
        freeaddrinfo(list);
    }
};

QString numericText(const addrinfo& address)
{
    char text[NI_MAXHOST] = "";
    if (getnameinfo(address.ai_addr, address.ai_addrlen, text, sizeof text, nullptr, 0,
                    NI_NUMERICHOST) != 0)
        return QString();
    return QString::fromLatin1(text);
}

} // namespace

/// May wait for minutes.
HostLookup::Found HostLookup::bySystem(const QByteArray& name)
{
    addrinfo wish = {};
    wish.ai_socktype = SOCK_STREAM;
    addrinfo* list = nullptr;
    const int failure = getaddrinfo(name.constData(), nullptr, &wish, &list);
    const std::unique_ptr<addrinfo, FreeAddresses> owner(list);
    Found found;
    for (const addrinfo* one = failure == 0 ? list : nullptr; one; one = one->ai_next) {
        const QString text = numericText(*one);
        if (!text.isEmpty()) found.addresses << text;
    }
    if (found.addresses.isEmpty())
        found.problem = QString(QLatin1String("the name \"%1\" has no address: %2"))
                            .arg(QString::fromUtf8(name),
                                 failure ? QString::fromLocal8Bit(gai_strerror(failure))
                                         : QLatin1String("none of its addresses is usable"));
    return found;
}

HostLookup::HostLookup(const QString& host, const Resolve& resolve)
    : m_answer(std::make_shared<Answer>())
{
    const QByteArray name = host.toUtf8();
    in6_addr unused;
    if (inet_pton(AF_INET, name.constData(), &unused) == 1 ||
        inet_pton(AF_INET6, name.constData(), &unused) == 1) {
        m_answer->found = Found{{host}, QString()};
        m_answer->wakeup.wake();
        return;
    }
    std::thread([answer = m_answer, resolve, name] {
        const Found found = resolve(name);
        const std::lock_guard<std::mutex> guard(answer->mutex);
        answer->found = found;
        answer->wakeup.wake();
    }).detach();
}

std::optional<HostLookup::Found> HostLookup::found() const
{
    const std::lock_guard<std::mutex> guard(m_answer->mutex);
    return m_answer->found;
}

int HostLookup::descriptor() const
{
    return m_answer->wakeup.descriptor();
}
