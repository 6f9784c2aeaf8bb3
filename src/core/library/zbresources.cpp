#include "library/zbresources.h"

void ZBResources::setPath(const QString &value)
{
    m_Path = value;
    didChange();
}

void ZBResources::setMainFile(std::optional<bool> value)
{
    m_mainFile = value;
    didChange();
}
