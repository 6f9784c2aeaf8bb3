#pragma once

#include <QtGlobal>

#include "library/zblibraryguard.h"

class ZBObjectContext;

// A record of the library graph. Setters report to the owning context, which
// writes every changed record in one transaction at the next save.
class ZBManagedObject
{
public:
    virtual ~ZBManagedObject() = default;

    qint64 rowId() const { return m_rowId; }
    // True once the record has been deleted from its context; callers that kept
    // a pointer (a playback list, a table) can still read it but must skip it.
    bool isDeleted() const { return m_deleted; }
    ZBObjectContext *context() const { return m_context; }

    // Setters call this before they write: a background read of the library
    // must be out of the way first.
    static void willChange() { ZBLibraryGuard::willWrite(); }

protected:
    // `valueBits`: which of a track's values changed (ZBItem::ValueBit); other
    // records leave it at "all".
    void didChange(quint32 valueBits = ~0u);

private:
    friend class ZBObjectContext;

    ZBObjectContext *m_context = nullptr;
    qint64 m_rowId = 0;
    bool m_deleted = false;
};
