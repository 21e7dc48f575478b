#ifndef TLS_CONTEXT_H
#define TLS_CONTEXT_H

#include <QByteArray>
#include <QString>

#include <memory>
#include <stdexcept>

using SslContext = struct ssl_ctx_st;

/// The PEM files of TLS.
struct TlsFiles
{
    QString ca;               ///< empty: the authorities that the system trusts
    QString certificate, key; ///< empty: the client shows none
};

/// Why TLS cannot begin, in words.
class TlsError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// How a TLS connection to one host begins: the broker has to show a certificate of its name, or of
/// its IP address, from an authority that is trusted, and is told the name that it is wanted by.
///
/// It outlives the connections that are made of it.
class TlsContext
{
public:
    /// Reads the files.
    /// @throws TlsError
    TlsContext(const TlsFiles& files, const QString& host);
    ~TlsContext();
    TlsContext(const TlsContext&) = delete;
    TlsContext& operator=(const TlsContext&) = delete;

    SslContext* get() const;

    /// Why the broker's certificate was refused; empty: it was not.
    QString refusal() const;

private:
    struct State;
    const std::unique_ptr<State> m_state;
};

#endif
