#ifndef FIGURES_TEXT_H
#define FIGURES_TEXT_H

#include "session/linkFigures.h"

#include <QJsonObject>

/// The link's figures in one line: the totals, and the rates of the whole run (figuresText) or of
/// the last ten seconds (liveFiguresText). The line begins with "link lost" when the link is lost.
QString figuresText(const LinkFigures& figures);
QString liveFiguresText(const LinkFigures& figures);

/// The figures of the whole run, with the names of LinkFigures; times have their unit behind their
/// name. The reply times are null before the first reply.
QJsonObject figuresJson(const LinkFigures& figures);

#endif
