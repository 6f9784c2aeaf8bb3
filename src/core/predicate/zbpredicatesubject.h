#pragma once

#include <QString>
#include <QVariant>

// What a filter text is evaluated against. A library track implements it; tests
// may use a plain map.
//
// valueForKeyPath() answers a plain attribute key ("Name", "Added") or a dotted
// path. A path that crosses a to-many relationship ("Playlist.PlaylistUUID")
// answers a QVariantList with one value per related record. Absent values are
// an invalid QVariant. Dates are QDateTime, numbers int/qint64/double, booleans
// bool, text QString.
class ZBPredicateSubject
{
public:
    virtual ~ZBPredicateSubject() = default;

    virtual QVariant valueForKeyPath(const QString &keyPath) const = 0;

    // The text value of a plain key folded the way ZBTextFold::fold() does for
    // these flags. Subjects that are evaluated often (tracks) cache the result;
    // the default folds on every call.
    //
    // Only text values answer: a null QString (isNull()) means "no text
    // here", the value is absent, a list, a number, a date. The evaluator then
    // falls back to valueForKeyPath(), so answering null is always safe, while
    // answering text for a number would make it compare as text. An empty
    // text that is present should be an empty but non-null string.
    virtual QString foldedValueForKey(const QString &key, bool caseInsensitive, bool diacriticInsensitive) const;

    // The same text without a copy, for subjects that keep it: a pointer
    // valid until the subject changes, or nullptr to make the evaluator call
    // foldedValueForKey() instead. Scanning a whole library, not copying
    // spares touching every track's text when only its presence or length
    // matters ("Name like[cd] '*'", "URL == ''"). The default answers nullptr.
    virtual const QString *cachedFoldedValueForKey(const QString &key, bool caseInsensitive,
                                                   bool diacriticInsensitive) const;

    // A hint to start loading the memory an evaluation of this subject reads.
    // Filtering a whole library is bound by memory latency, not by the
    // comparisons: ZBPredicate::filter() calls this a few subjects ahead so
    // that the loads overlap. The default does nothing.
    virtual void prefetch() const;
};
