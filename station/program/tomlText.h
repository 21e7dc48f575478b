#ifndef TOML_TEXT_H
#define TOML_TEXT_H

#include "program/configMistakes.h"
#include "program/configNode.h"

#include <QByteArray>

/// Reads TOML text. A line that is no TOML is noted and left out, so that all such lines are found.
/// @return the table of the whole text
ConfigNode readToml(QByteArray text, ConfigMistakes& mistakes);

#endif
