#ifndef FIGURES_TEXT_H
#define FIGURES_TEXT_H

#include "session/linkFigures.h"

#include <QJsonObject>

/// The link's figures in one line, "link lost" first when it is not connected: the totals, and the
/// rates of the whole run or those of late.
QString figuresText(const LinkFigures& figures);
QString liveFiguresText(const LinkFigures& figures);

/// Those of the whole run with LinkFigures' names and units; the reply times are null before the
/// first reply.
QJsonObject figuresJson(const LinkFigures& figures);

#endif
