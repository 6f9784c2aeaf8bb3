// Gives the engine interface's signals a home for moc.
#include "engines/zbplaybackengine.h"
