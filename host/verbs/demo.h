#ifndef DEMO_H
#define DEMO_H

class DriverLibrary;
class Exchange;

/// The driver's whole work against one PLC, told line by line on standard output: polls words and
/// bits and prints the changes, writes a word and a bit, downloads and uploads a recipe, and ends
/// with a line of figures.
/// @return true when every write was confirmed and the recipe came back as it was sent
bool runDemo(const DriverLibrary& driver, Exchange& exchange);

#endif
