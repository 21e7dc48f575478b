#include "values/linkState.h"

#include "values/jsonText.h"

const char* linkStandingText(LinkStanding standing)
{
    switch (standing) {
    case LINK_OPENING:
        return "opening";
    case LINK_UP:
        return "up";
    case LINK_LOST:
        return "lost";
    }
    return "lost";
}

QByteArray linkEventDocument(const QString& link, const LinkState& state)
{
    JsonText json;
    json.beginObject().key("link").text(link);
    json.key("state").word(linkStandingText(state.standing));
    json.key("since").integer(state.since).key("trouble").textOrNull(state.trouble);
    return json.endObject().document();
}
