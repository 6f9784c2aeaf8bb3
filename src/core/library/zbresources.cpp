#include "library/zbresources.h"

void ZBResources::setPath(const QString &value)
{
    willChange();
    m_Path = value;
    didChange();
}

void ZBResources::setMainFile(std::optional<bool> value)
{
    willChange();
    m_mainFile = value;
    didChange();
}
