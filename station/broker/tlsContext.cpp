#include "broker/tlsContext.h"

#include <QFile>

#include <arpa/inet.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

namespace {

struct FreeContext
{
    void operator()(SSL_CTX* context) const
    {
        SSL_CTX_free(context);
    }
};

/// The last error of OpenSSL in this thread, in its words.
QString opensslReason()
{
    const unsigned long error = ERR_peek_last_error();
    const char* const reason = error != 0 ? ERR_reason_error_string(error) : nullptr;
    ERR_clear_error();
    return QString::fromLatin1(reason != nullptr ? reason : "TLS cannot begin");
}

[[noreturn]] void fail(const QString& what)
{
    throw TlsError((what + QLatin1String(": ") + opensslReason()).toStdString());
}

bool isIpAddress(const QByteArray& host)
{
    in6_addr unused;
    return inet_pton(AF_INET, host.constData(), &unused) == 1 ||
           inet_pton(AF_INET6, host.constData(), &unused) == 1;
}

/// A key with a passphrase is not usable: nobody is there to type it.
int noPassphrase(char*, int, int, void*)
{
    return 0;
}

} // namespace

struct TlsContext::State
{
    std::unique_ptr<SSL_CTX, FreeContext> context;
    QByteArray host;
    QString refusal;

    /// Only notes why; OpenSSL decides.
    static int checked(int isGood, X509_STORE_CTX* store)
    {
        const auto* const ssl = static_cast<SSL*>(
            X509_STORE_CTX_get_ex_data(store, SSL_get_ex_data_X509_STORE_CTX_idx()));
        auto* const state = static_cast<State*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(ssl)));
        if (isGood == 0 && state->refusal.isEmpty())
            state->refusal =
                QString::fromLatin1(X509_verify_cert_error_string(X509_STORE_CTX_get_error(store)));
        return isGood;
    }

    /// Ahead of its first message each connection gets the host's name to ask for: the MQTT library
    /// would ask for the address that it connects to. An IP address is no name to ask for.
    static void told(const SSL* ssl, int where, int)
    {
        if ((where & SSL_CB_HANDSHAKE_START) == 0) return;
        const auto* const state =
            static_cast<const State*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(ssl)));
        const char* const name = isIpAddress(state->host) ? nullptr : state->host.constData();
        (void)SSL_set_tlsext_host_name(const_cast<SSL*>(ssl), name);
    }

    void trust(const QString& ca) const
    {
        const int isRead =
            ca.isEmpty()
                ? SSL_CTX_set_default_verify_paths(context.get())
                : SSL_CTX_load_verify_file(context.get(), QFile::encodeName(ca).constData());
        if (isRead != 1) fail(ca.isEmpty() ? QLatin1String("the trusted authorities") : ca);
    }

    void show(const QString& certificate, const QString& key) const
    {
        if (certificate.isEmpty()) return;
        if (SSL_CTX_use_certificate_chain_file(context.get(),
                                               QFile::encodeName(certificate).constData()) != 1)
            fail(certificate);
        if (SSL_CTX_use_PrivateKey_file(context.get(), QFile::encodeName(key).constData(),
                                        SSL_FILETYPE_PEM) != 1)
            fail(key);
    }

    void expectHost() const
    {
        X509_VERIFY_PARAM* const expected = SSL_CTX_get0_param(context.get());
        X509_VERIFY_PARAM_set_hostflags(expected, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
        const int isSet = isIpAddress(host)
                              ? X509_VERIFY_PARAM_set1_ip_asc(expected, host.constData())
                              : X509_VERIFY_PARAM_set1_host(expected, host.constData(), 0);
        if (isSet != 1) fail(QString::fromUtf8(host));
    }
};

TlsContext::TlsContext(const TlsFiles& files, const QString& host)
    : m_state(std::make_unique<State>())
{
    ERR_clear_error();
    m_state->host = host.toUtf8();
    m_state->context.reset(SSL_CTX_new(TLS_client_method()));
    SSL_CTX* const context = m_state->context.get();
    if (context == nullptr) fail(QLatin1String("TLS"));
    SSL_CTX_set_app_data(context, m_state.get());
    SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION);
    SSL_CTX_set_mode(context, SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
    SSL_CTX_set_default_passwd_cb(context, noPassphrase);
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER, State::checked);
    SSL_CTX_set_info_callback(context, State::told);
    m_state->trust(files.ca);
    m_state->show(files.certificate, files.key);
    m_state->expectHost();
}

TlsContext::~TlsContext() = default;

SslContext* TlsContext::get() const
{
    return m_state->context.get();
}

QString TlsContext::refusal() const
{
    return m_state->refusal;
}
