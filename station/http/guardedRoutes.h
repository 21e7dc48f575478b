#ifndef GUARDED_ROUTES_H
#define GUARDED_ROUTES_H

#include "http/accessToken.h"
#include "http/guessLimit.h"
#include "http/httpRoutes.h"
#include "http/requestGate.h"
#include "http/requestHandler.h"
#include "values/stationClock.h"

#include <mutex>

/// The station's routes behind the checks that every request has to pass, and the login.
///
///     Host  -->  token  -->  POST's own checks, where the path takes POST  -->  route
///
/// setAccess() may be called from any thread, everything else only from the HTTP thread.
class GuardedRoutes : public RequestHandler
{
public:
    /// @param routes  must outlive it
    GuardedRoutes(const HttpRoutes& routes, const StationClock& clock);

    /// @param token  empty: none is asked for
    void setAccess(const QByteArray& token, const QStringList& hostNames);

    std::optional<HttpResponse> refusal(const HttpRequest& withoutBody) override;
    bool mayGoOn(const HttpRequest& request) const override;
    void answer(const HttpRequest& request, const HttpAnswer& answer) override;

private:
    struct Access
    {
        std::optional<AccessToken> token; ///< empty: none is asked for
        QStringList hostNames;
    };

    bool isPublic(const HttpRequest& request) const;
    const HttpRoutes& routesOf(const HttpRequest& request) const;
    std::shared_ptr<const Access> access() const;
    std::optional<HttpResponse> tokenRefusal(const HttpRequest& request, const AccessToken& token);
    std::optional<HttpResponse> guessRefusal(const QByteArray& shown, const HttpRequest& request,
                                             const AccessToken& token);
    HttpResponse login(const HttpRequest& request);
    HttpResponse logout() const;

    const HttpRoutes& m_routes;
    const StationClock& m_clock;
    HttpRoutes m_ownRoutes; ///< login and logout
    GuessLimit m_guesses;   ///< of the HTTP thread
    mutable std::mutex m_mutex;
    std::shared_ptr<const Access> m_access; ///< guarded by m_mutex
};

#endif
