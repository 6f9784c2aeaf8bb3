#include "library/zbitem.h"

#include <QHash>
#include <QMutex>

#include "library/zbobjectcontext.h"
#include "library/zbplaylist.h"
#include "predicate/zbtextfold.h"

namespace
{
template <typename T>
bool assign(T &field, const T &value)
{
    if (field == value)
        return false;
    ZBManagedObject::willChange();
    field = value;
    return true;
}

// A null string and an empty one are different values in the library (an
// absent URL against a local file's ''), so == alone cannot tell a change.
bool assign(QString &field, const QString &value)
{
    if (field == value && field.isNull() == value.isNull())
        return false;
    ZBManagedObject::willChange();
    field = value;
    return true;
}

std::optional<qint32> toOptionalInt(const QVariant &value)
{
    if (!value.isValid() || value.isNull())
        return std::nullopt;
    bool ok = false;
    const qint32 number = value.toInt(&ok);
    return ok ? std::optional<qint32>(number) : std::nullopt;
}

std::optional<bool> toOptionalBool(const QVariant &value)
{
    if (!value.isValid() || value.isNull())
        return std::nullopt;
    return value.toBool();
}

QVariant fromOptional(const std::optional<qint32> &value)
{
    return value ? QVariant(*value) : QVariant();
}

QVariant fromOptional(const std::optional<bool> &value)
{
    return value ? QVariant(*value) : QVariant();
}

QVariant fromString(const QString &value)
{
    return value.isNull() ? QVariant() : QVariant(value);
}

QVariant fromDate(const QDateTime &value)
{
    return value.isValid() ? QVariant(value) : QVariant();
}
} // namespace

void ZBItem::forgetFolds(int field)
{
    if (field >= KeptFoldCount)
        return;
    m_foldValid &= quint8(~(1u << field));
    // Dropped now, not at the next read: a renamed track of a large library
    // should not hold two texts.
    m_folds[size_t(field)] = QString();
}

void ZBItem::setItemUUID(const QString &value)
{
    if (m_ItemUUID == value && m_ItemUUID.isNull() == value.isNull())
        return;
    willChange();
    if (context())
        context()->itemKeyWillChange(this, QStringLiteral("ItemUUID"), m_ItemUUID, value);
    m_ItemUUID = value;
    forgetFolds(ItemUUIDField);
    didChange(ItemUUIDValue);
}

void ZBItem::setName(const QString &value)
{
    if (!assign(m_Name, value))
        return;
    forgetFolds(NameField);
    didChange(NameValue);
}

void ZBItem::setPath(const QString &value)
{
    if (m_Path == value && m_Path.isNull() == value.isNull())
        return;
    willChange();
    if (context())
        context()->itemKeyWillChange(this, QStringLiteral("Path"), m_Path, value);
    m_Path = value;
    forgetFolds(PathField);
    didChange(PathValue);
}

void ZBItem::setURL(const QString &value)
{
    if (m_URL == value && m_URL.isNull() == value.isNull())
        return;
    willChange();
    if (context())
        context()->itemKeyWillChange(this, QStringLiteral("URL"), m_URL, value);
    m_URL = value;
    forgetFolds(URLField);
    didChange(URLValue);
}

void ZBItem::setType(const QString &value)
{
    if (!assign(m_Type, value))
        return;
    forgetFolds(TypeField);
    didChange(TypeValue);
}

void ZBItem::setRating(std::optional<qint32> value)
{
    if (assign(m_Rating, value))
        didChange(RatingValue);
}

void ZBItem::setLength(std::optional<qint32> value)
{
    if (assign(m_Length, value))
        didChange(LengthValue);
}

void ZBItem::setPlayCount(std::optional<qint32> value)
{
    if (assign(m_PlayCount, value))
        didChange(PlayCountValue);
}

void ZBItem::setAdded(const QDateTime &value)
{
    if (m_Added.isValid() != value.isValid() || m_Added != value)
    {
        willChange();
        m_Added = value;
        didChange(AddedValue);
    }
}

void ZBItem::setLastPlayed(const QDateTime &value)
{
    if (m_LastPlayed.isValid() != value.isValid() || m_LastPlayed != value)
    {
        willChange();
        m_LastPlayed = value;
        didChange(LastPlayedValue);
    }
}

void ZBItem::setSourcePageTitle(const QString &value)
{
    if (!assign(m_SourcePageTitle, value))
        return;
    forgetFolds(SourcePageTitleField);
    didChange(SourcePageTitleValue);
}

void ZBItem::setIsValid(std::optional<bool> value)
{
    if (assign(m_isValid, value))
        didChange(IsValidValue);
}

void ZBItem::setIsAvailable(std::optional<bool> value)
{
    if (assign(m_isAvailable, value))
        didChange(IsAvailableValue);
}

QVariant ZBItem::getUntypedValueByName(const QString &key) const
{
    if (key.isNull())
        return QVariant();
    if (key == u"ItemUUID")
        return fromString(m_ItemUUID);
    if (key == u"Name")
        return fromString(m_Name);
    if (key == u"Path")
        return fromString(m_Path);
    if (key == u"URL")
        return fromString(m_URL);
    if (key == u"Type")
        return fromString(m_Type);
    if (key == u"Rating")
        return fromOptional(m_Rating);
    if (key == u"Length")
        return fromOptional(m_Length);
    if (key == u"PlayCount")
        return fromOptional(m_PlayCount);
    if (key == u"Added")
        return fromDate(m_Added);
    if (key == u"LastPlayed")
        return fromDate(m_LastPlayed);
    if (key == u"SourcePageTitle")
        return fromString(m_SourcePageTitle);
    if (key == u"isValid")
        return fromOptional(m_isValid);
    if (key == u"isAvailable")
        return fromOptional(m_isAvailable);
    return QVariant();
}

bool ZBItem::setUntypedValueByName(const QString &key, const QVariant &value)
{
    const bool absent = !value.isValid() || value.isNull();
    const QString text = absent ? QString() : value.toString();
    if (key == u"ItemUUID")
        setItemUUID(text);
    else if (key == u"Name")
        setName(text);
    else if (key == u"Path")
        setPath(text);
    else if (key == u"URL")
        setURL(text);
    else if (key == u"Type")
        setType(text);
    else if (key == u"Rating")
        setRating(toOptionalInt(value));
    else if (key == u"Length")
        setLength(toOptionalInt(value));
    else if (key == u"PlayCount")
        setPlayCount(toOptionalInt(value));
    else if (key == u"Added")
        setAdded(absent ? QDateTime() : value.toDateTime());
    else if (key == u"LastPlayed")
        setLastPlayed(absent ? QDateTime() : value.toDateTime());
    else if (key == u"SourcePageTitle")
        setSourcePageTitle(text);
    else if (key == u"isValid")
        setIsValid(toOptionalBool(value));
    else if (key == u"isAvailable")
        setIsAvailable(toOptionalBool(value));
    else
        return false;
    return true;
}

QVariant ZBItem::valueForKeyPath(const QString &keyPath) const
{
    const qsizetype dot = keyPath.indexOf(QLatin1Char('.'));
    if (dot < 0)
        return getUntypedValueByName(keyPath);

    const QStringView head = QStringView(keyPath).left(dot);
    const QString rest = keyPath.mid(dot + 1);
    QVariantList values;
    if (head == u"Playlist")
    {
        for (const ZBPlaylist *playlist : Playlist())
            values.append(playlist->valueForKeyPath(rest));
    }
    else if (head == u"Resource")
    {
        for (const ZBResources *resource : Resource())
        {
            if (rest == u"Path")
                values.append(resource->Path());
            else if (rest == u"mainFile" && resource->mainFile())
                values.append(*resource->mainFile());
        }
    }
    else
    {
        return QVariant();
    }
    return values;
}

quint32 ZBItem::valueBit(QStringView key)
{
    static const std::array<std::pair<QStringView, quint32>, ValueBitCount> bits{{
        {u"ItemUUID", ItemUUIDValue},
        {u"Name", NameValue},
        {u"Path", PathValue},
        {u"URL", URLValue},
        {u"Type", TypeValue},
        {u"Rating", RatingValue},
        {u"Length", LengthValue},
        {u"PlayCount", PlayCountValue},
        {u"Added", AddedValue},
        {u"LastPlayed", LastPlayedValue},
        {u"SourcePageTitle", SourcePageTitleValue},
        {u"isValid", IsValidValue},
        {u"isAvailable", IsAvailableValue},
    }};
    for (const auto &[name, bit] : bits)
    {
        if (key == name)
            return bit;
    }
    return 0;
}

int ZBItem::textFieldIndex(const QString &key)
{
    if (key == u"Name")
        return NameField;
    if (key == u"Type")
        return TypeField;
    if (key == u"URL")
        return URLField;
    if (key == u"Path")
        return PathField;
    if (key == u"SourcePageTitle")
        return SourcePageTitleField;
    if (key == u"ItemUUID")
        return ItemUUIDField;
    return -1;
}

const QString *ZBItem::textField(const QString &key, int *index) const
{
    *index = textFieldIndex(key);
    return *index < 0 ? nullptr : &textAt(*index);
}

const QString *ZBItem::cachedFold(int index, const QString &field) const
{
    if (!(m_foldValid & (1u << index)))
    {
        m_folds[index] = ZBTextFold::fold(field, true, true);
        // A library holds a handful of types over many tracks: sharing one
        // copy of each keeps a scan of the whole library on fewer cache lines.
        // A library scan may run on two threads at once (each track on one of
        // them), so the shared pool is locked; it is only reached on a miss.
        if (index == TypeField)
        {
            static QHash<QString, QString> pool;
            static QMutex poolLock;
            const QMutexLocker locker(&poolLock);
            auto pooled = pool.constFind(m_folds[index]);
            if (pooled == pool.cend())
                pooled = pool.insert(m_folds[index], m_folds[index]);
            m_folds[index] = *pooled;
        }
        // A present but empty text must stay present: '' is not absent.
        if (m_folds[index].isNull() && !field.isNull())
            m_folds[index] = QString(QLatin1String(""));
        m_foldValid |= quint8(1u << index);
    }
    return &m_folds[index];
}

QString ZBItem::foldedValueForKey(const QString &key, bool caseInsensitive, bool diacriticInsensitive) const
{
    int index = 0;
    const QString *field = textField(key, &index);
    if (!field)
        return ZBPredicateSubject::foldedValueForKey(key, caseInsensitive, diacriticInsensitive);
    if (field->isNull())
        return QString();
    if (!(caseInsensitive && diacriticInsensitive))
    {
        const QString folded = ZBTextFold::fold(*field, caseInsensitive, diacriticInsensitive);
        return folded.isNull() ? QString(QLatin1String("")) : folded;
    }
    if (index >= KeptFoldCount)
    {
        const QString folded = ZBTextFold::fold(*field, true, true);
        return folded.isNull() ? QString(QLatin1String("")) : folded;
    }
    return *cachedFold(index, *field);
}

const QString *ZBItem::cachedFoldedValueForKey(const QString &key, bool caseInsensitive,
                                               bool diacriticInsensitive) const
{
    int index = 0;
    const QString *field = textField(key, &index);
    if (!field || field->isNull())
        return nullptr;
    // Without modifiers the folded text is the text itself.
    if (!caseInsensitive && !diacriticInsensitive)
        return field;
    if (!(caseInsensitive && diacriticInsensitive) || index >= KeptFoldCount)
        return nullptr;
    return cachedFold(index, *field);
}

void ZBItem::prefetch() const
{
    __builtin_prefetch(this);
    __builtin_prefetch(reinterpret_cast<const char *>(this) + 64);
    // The texts searches and the standard lists read.
    for (const int index : {int(NameField), int(TypeField), int(URLField)})
    {
        if (m_foldValid & (1u << index))
            __builtin_prefetch(m_folds[index].constData());
    }
}
