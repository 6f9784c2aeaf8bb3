#pragma once

#include <array>

#include <QHash>
#include <QString>
#include <QVarLengthArray>
#include <QVariant>

#include "predicate/zbpredicatesubject.h"

// A predicate subject backed by a small set of named values: records read
// from a playlist file, captured resources, tests and benchmarks.
//
// A dotted key path walks into nested maps; when it meets a list, the rest of
// the path is applied to every element and the answer is the list of results
// (so "Playlist.PlaylistUUID" over a list of playlist maps answers their
// UUIDs). Folded texts are computed on demand, or once for all text values by
// cacheFoldedValues() when the subject will be evaluated many times.
class ZBVariantMapSubject : public ZBPredicateSubject
{
public:
    ZBVariantMapSubject() = default;
    explicit ZBVariantMapSubject(const QVariantHash &values);

    QVariantHash values() const;
    QVariant value(const QString &key) const;
    void setValue(const QString &key, const QVariant &value);
    void removeValue(const QString &key);

    // Folds every top-level text value for the three flag combinations. Later
    // setValue() calls keep the cache in step.
    void cacheFoldedValues();

    QVariant valueForKeyPath(const QString &keyPath) const override;
    QString foldedValueForKey(const QString &key, bool caseInsensitive, bool diacriticInsensitive) const override;
    const QString *cachedFoldedValueForKey(const QString &key, bool caseInsensitive,
                                           bool diacriticInsensitive) const override;
    void prefetch() const override;

    // The key path walk on any value, for callers without a subject.
    static QVariant valueForKeyPath(const QVariant &root, QStringView keyPath);

private:
    // Records have a handful of keys and are scanned over whole libraries, so
    // the layout is chosen for few cache misses per lookup: the entries live
    // inside the object, a compact fingerprint per key finds the right one,
    // and all folded texts of the record sit in one buffer, those folded for
    // case and diacritics (what searches and smart lists ask for) first.
    struct Entry
    {
        QString key;
        // Views into m_arena, see foldIndex(); all null when not text.
        std::array<QString, 4> folded;
        QVariant value;
    };

    static quint32 fingerprint(const QString &key);
    static size_t foldIndex(bool caseInsensitive, bool diacriticInsensitive);
    const Entry *find(const QString &key) const;
    void rebuildFolds();

    // Never changed in place, only replaced, so copies of the subject that
    // share it keep valid views. First, so that prefetch() finds it in the
    // object's first cache line.
    QString m_arena;
    bool m_cacheFolds = false;
    QVarLengthArray<quint32, 8> m_fingerprints;
    QVarLengthArray<Entry, 8> m_entries;
};
