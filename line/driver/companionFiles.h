#ifndef COMPANION_FILES_H
#define COMPANION_FILES_H

#include <QString>

// The files that belong to this program. They are found by their place relative to the program, in
// the build tree or in the installed tree. An installed tree may be moved as a whole. The functions
// need a QCoreApplication.

/// The driver's file. When the tree has none: its bare name, which the system's library search
/// resolves.
QString companionDriver();

/// The program file of the simulated PLC.
QString companionSimulator();

/// The tag file for the simulated PLC: tags of its demo signals, and tags of every area and type.
QString companionTagFile();

#endif
