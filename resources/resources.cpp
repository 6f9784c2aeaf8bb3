// Anchors the embedded resources in a library of their own so that every
// executable linking the core gets the string tables.
#include <QtGlobal>

void nvkInitResources()
{
}
