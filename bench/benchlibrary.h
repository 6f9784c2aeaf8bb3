#pragma once

#include <QString>

class ZBLibraryController;

namespace nvkbench
{
// Fills an open library with `size` generated tracks in one transaction
// (names of two words and a number, a dozen types, a quarter with a URL,
// every fiftieth in the plain playlist "Favourites"); the same tracks every
// run.
void populateLibrary(ZBLibraryController &library, int size);
// A user smart list of five rules over those tracks; its UUID.
QString addFiveRuleList(ZBLibraryController &library);

// "[tracks] [--keep DIR]", as both library benchmarks take them; false after
// printing the usage line for `program`.
bool parseArguments(int argc, char *argv[], const char *program, int *tracks, QString *keep);
} // namespace nvkbench
