#ifndef LINK_STATE_H
#define LINK_STATE_H

#include "session/linkFigures.h"
#include "values/replyHistogram.h"

#include <QString>

#include <vector>

enum LinkStanding { LINK_OPENING, LINK_UP, LINK_LOST };

/// "opening", "up" or "lost".
const char* linkStandingText(LinkStanding standing);

/// A station that the link's tags name. It is silent until its first answer on a connection.
struct StationStanding
{
    int station = 0;
    bool answers = false;
    qint64 since = 0; ///< ms since 1970
    QString trouble;  ///< why it is silent; empty: it answers
};

/// The state of a link, for people and for monitoring.
struct LinkState
{
    LinkStanding standing = LINK_OPENING;
    QString trouble;  ///< the reason of a loss; else empty
    qint64 since = 0; ///< of `standing`, ms since 1970
    LinkFigures figures;
    ReplyHistogram replies;
    std::vector<StationStanding> stations; ///< by number
};

/// The event of a change of the link: {"link","state","since","trouble"}; `trouble` is null unless
/// the link is lost.
QByteArray linkEventDocument(const QString& link, const LinkState& state);

#endif
