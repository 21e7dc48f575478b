#ifndef FIGURES_TEXT_H
#define FIGURES_TEXT_H

#include "output/watchView.h"

#include <QJsonObject>

/// The link's figures in one line, "link lost" first when it is not connected.
QString figuresText(const LinkFigures& figures);

/// The same with LinkFigures' names and units; the reply times are null before the first reply.
QJsonObject figuresJson(const LinkFigures& figures);

#endif
