#ifndef COMPANION_FILES_H
#define COMPANION_FILES_H

#include <QString>

/// What belongs to this program, at its place in the tree that the program is in: a build's, or an
/// installed one, which may have been moved as a whole. They need a QCoreApplication.

/// The driver; without one in the tree the name that the system's search for libraries takes.
QString companionDriver();

/// The program of the simulated PLC.
QString companionSimulator();

/// The tags that the simulated PLC's demo signals make move, and others of every area and type.
QString companionTagFile();

#endif
