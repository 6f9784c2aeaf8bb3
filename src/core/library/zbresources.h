#pragma once

#include <QString>

#include <optional>

#include "library/zbmanagedobject.h"

class ZBItem;

// One file of a captured resource: the resource itself (mainFile) or one of its
// companion files.
class ZBResources final : public ZBManagedObject
{
public:
    QString Path() const { return m_Path; }
    void setPath(const QString &value);
    std::optional<bool> mainFile() const { return m_mainFile; }
    void setMainFile(std::optional<bool> value);
    ZBItem *item() const { return m_item; }

private:
    friend class ZBObjectContext;

    QString m_Path;
    std::optional<bool> m_mainFile;
    ZBItem *m_item = nullptr;
};
