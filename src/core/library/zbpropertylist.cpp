#include "library/zbpropertylist.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include <QDateTime>
#include <QFile>
#include <QRegularExpression>
#include <QStringList>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

namespace
{
const QString DocType = QStringLiteral("<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                       "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">");

QString quoted(QStringView text)
{
    constexpr qsizetype Shown = 40;
    const QString shown = text.size() > Shown ? text.left(Shown).toString() + QStringLiteral("...") : text.toString();
    return u'"' + shown + u'"';
}

class Reader
{
public:
    explicit Reader(const QByteArray &document)
        : m_xml(document)
    {
    }

    std::optional<QVariant> document()
    {
        // A failing step has already said why; these messages only tell
        // a well-formed document that is not a property list.
        if (nextStructural() != QXmlStreamReader::StartElement)
            return failed(QStringLiteral("the document holds no elements"));
        if (m_xml.name() != u"plist")
            return failed(QStringLiteral("the root element is <%1>, not <plist>").arg(m_xml.name()));
        const QStringView version = m_xml.attributes().value(QStringLiteral("version"));
        if (!version.isNull() && version != u"1.0")
            return failed(QStringLiteral("property list version %1 is not known; only 1.0 is").arg(quoted(version)));

        if (nextStructural() != QXmlStreamReader::StartElement)
            return failed(QStringLiteral("<plist> holds no value"));
        std::optional<QVariant> value = this->value(1);
        if (!value)
            return std::nullopt;
        const QXmlStreamReader::TokenType after = nextStructural();
        if (after == QXmlStreamReader::StartElement)
            return failed(QStringLiteral("<plist> holds more than one value (another <%1>)").arg(m_xml.name()));
        if (after != QXmlStreamReader::EndElement)
            return failed(QString());
        // Whatever follows the root is not well-formed; reading on lets the
        // XML reader say so instead of the rest being ignored.
        if (nextStructural() != QXmlStreamReader::EndDocument)
            return failed(QString());
        return value;
    }

    QString error() const { return m_error; }

private:
    // The next start or end tag (or the end of the document), past
    // comments, processing instructions and the layout whitespace between
    // elements. Any other text there is not part of the format.
    QXmlStreamReader::TokenType nextStructural()
    {
        while (!m_xml.atEnd())
        {
            switch (m_xml.readNext())
            {
                case QXmlStreamReader::StartElement:
                case QXmlStreamReader::EndElement:
                case QXmlStreamReader::EndDocument:
                    return m_xml.tokenType();
                case QXmlStreamReader::Characters:
                    if (!m_xml.isWhitespace())
                    {
                        fail(QStringLiteral("text %1 stands outside any value element").arg(quoted(m_xml.text())));
                        return QXmlStreamReader::Invalid;
                    }
                    break;
                case QXmlStreamReader::EntityReference:
                    fail(unknownEntity());
                    return QXmlStreamReader::Invalid;
                case QXmlStreamReader::Invalid:
                    fail(QString());
                    return QXmlStreamReader::Invalid;
                default:
                    break;
            }
        }
        if (m_xml.hasError())
            fail(QString());
        return m_xml.hasError() ? QXmlStreamReader::Invalid : QXmlStreamReader::EndDocument;
    }

    // The text of the current element, which may hold nothing but text.
    std::optional<QString> text()
    {
        const QString element = m_xml.name().toString();
        // Empty, never null: an empty <string> is a value, and the library
        // tells "" from absent.
        QString result = QStringLiteral("");
        while (!m_xml.atEnd())
        {
            switch (m_xml.readNext())
            {
                case QXmlStreamReader::Characters:
                    result += m_xml.text();
                    break;
                case QXmlStreamReader::EndElement:
                    return result;
                case QXmlStreamReader::StartElement:
                    fail(QStringLiteral("<%1> may hold only text, not <%2>").arg(element, m_xml.name()));
                    return std::nullopt;
                case QXmlStreamReader::EntityReference:
                    // Left as it stands, the reference would silently vanish
                    // from the text.
                    fail(unknownEntity());
                    return std::nullopt;
                case QXmlStreamReader::Invalid:
                    fail(QString());
                    return std::nullopt;
                default:
                    break;
            }
        }
        fail(QString());
        return std::nullopt;
    }

    // The value whose start tag was just read.
    std::optional<QVariant> value(int depth)
    {
        if (depth > ZBPropertyList::MaximumDepth)
            return failed(QStringLiteral("values are nested more than %1 deep").arg(ZBPropertyList::MaximumDepth));
        const QString element = m_xml.name().toString();
        if (element == u"dict")
            return dictionary(depth);
        if (element == u"array")
            return array(depth);
        if (element == u"key")
            return failed(QStringLiteral("<key> stands outside a <dict>"));
        if (element != u"string" && element != u"integer" && element != u"real" && element != u"true" &&
            element != u"false" && element != u"date" && element != u"data")
            return failed(QStringLiteral("<%1> is not a property list element").arg(element));

        const std::optional<QString> content = text();
        if (!content)
            return std::nullopt;
        if (element == u"string")
            return QVariant(*content);
        const QString trimmed = content->trimmed();
        if (element == u"true" || element == u"false")
        {
            if (!trimmed.isEmpty())
                return failed(QStringLiteral("<%1/> holds text %2").arg(element, quoted(trimmed)));
            return QVariant(element == u"true");
        }
        if (element == u"integer")
            return integer(trimmed);
        if (element == u"real")
            return real(trimmed);
        if (element == u"date")
        {
            const QDateTime date = ZBPropertyList::dateFromText(trimmed);
            if (!date.isValid())
                return failed(
                    QStringLiteral("<date> holds %1, not a date like \"2024-03-05T14:05:09Z\"").arg(quoted(trimmed)));
            return QVariant(date);
        }
        // Base64 is wrapped and indented freely by writers.
        QByteArray base64 = content->toLatin1();
        base64.removeIf([](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
        const QByteArray::FromBase64Result decoded =
            QByteArray::fromBase64Encoding(base64, QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded)
            return failed(QStringLiteral("<data> does not hold base64 text"));
        return QVariant(*decoded);
    }

    std::optional<QVariant> dictionary(int depth)
    {
        QVariantMap result;
        while (true)
        {
            const QXmlStreamReader::TokenType token = nextStructural();
            if (token == QXmlStreamReader::EndElement)
                return QVariant(result);
            if (token != QXmlStreamReader::StartElement)
                return failed(QString());
            if (m_xml.name() != u"key")
                return failed(QStringLiteral("<%1> in a <dict> has no <key> before it").arg(m_xml.name()));
            const std::optional<QString> key = text();
            if (!key)
                return std::nullopt;
            // Which of two values a reader keeps is anybody's guess; better
            // to say the file is wrong than to pick one.
            if (result.contains(*key))
                return failed(QStringLiteral("the key %1 appears twice in one <dict>").arg(quoted(*key)));

            const QXmlStreamReader::TokenType next = nextStructural();
            if (next == QXmlStreamReader::EndElement ||
                (next == QXmlStreamReader::StartElement && m_xml.name() == u"key"))
                return failed(QStringLiteral("the key %1 has no value").arg(quoted(*key)));
            if (next != QXmlStreamReader::StartElement)
                return failed(QString());
            std::optional<QVariant> value = this->value(depth + 1);
            if (!value)
                return std::nullopt;
            result.insert(*key, *value);
        }
    }

    std::optional<QVariant> array(int depth)
    {
        QVariantList result;
        while (true)
        {
            const QXmlStreamReader::TokenType token = nextStructural();
            if (token == QXmlStreamReader::EndElement)
                return QVariant(result);
            if (token != QXmlStreamReader::StartElement)
                return failed(QString());
            std::optional<QVariant> value = this->value(depth + 1);
            if (!value)
                return std::nullopt;
            result.append(*value);
        }
    }

    std::optional<QVariant> integer(const QString &text)
    {
        QStringView digits = text;
        const bool negative = digits.startsWith(u'-');
        if (negative || digits.startsWith(u'+'))
            digits = digits.mid(1);
        int base = 10;
        if (digits.startsWith(u"0x", Qt::CaseInsensitive))
        {
            digits = digits.mid(2);
            base = 16;
        }
        // QString's own parsing would also take spaces and a second sign.
        const auto isDigit = [base](QChar c) {
            return c.isDigit() || (base == 16 && QStringLiteral("abcdefABCDEF").contains(c));
        };
        const bool wellFormed = !digits.isEmpty() && std::all_of(digits.begin(), digits.end(), isDigit);
        bool inRange = false;
        const qulonglong magnitude = wellFormed ? digits.toULongLong(&inRange, base) : 0;
        if (!wellFormed)
            return failed(QStringLiteral("<integer> holds %1, not a whole number").arg(quoted(text)));
        constexpr qulonglong LargestNegative = qulonglong(std::numeric_limits<qlonglong>::max()) + 1;
        if (!inRange || (negative && magnitude > LargestNegative))
            return failed(QStringLiteral("<integer> %1 is beyond 64 bits").arg(quoted(text)));
        if (negative)
            return QVariant(magnitude == LargestNegative ? std::numeric_limits<qlonglong>::min()
                                                         : -qlonglong(magnitude));
        if (magnitude > qulonglong(std::numeric_limits<qlonglong>::max()))
            return QVariant(magnitude);
        return QVariant(qlonglong(magnitude));
    }

    std::optional<QVariant> real(const QString &text)
    {
        const QString lower = text.toLower();
        if (lower == u"nan")
            return QVariant(std::numeric_limits<double>::quiet_NaN());
        if (lower == u"inf" || lower == u"+inf" || lower == u"infinity" || lower == u"+infinity")
            return QVariant(std::numeric_limits<double>::infinity());
        if (lower == u"-inf" || lower == u"-infinity")
            return QVariant(-std::numeric_limits<double>::infinity());
        bool ok = false;
        const double number = text.toDouble(&ok);
        if (!ok || text.isEmpty() || !std::isfinite(number))
            return failed(QStringLiteral("<real> holds %1, not a number").arg(quoted(text)));
        return QVariant(number);
    }

    QString unknownEntity() const
    {
        return QStringLiteral("the entity &%1; is not defined in the file").arg(m_xml.name());
    }

    void fail(const QString &message)
    {
        if (!m_error.isEmpty())
            return;
        QString why = message;
        if (why.isEmpty() && m_xml.hasError())
            why = QStringLiteral("not well-formed XML: %1").arg(m_xml.errorString());
        else if (why.isEmpty())
            why = QStringLiteral("the document ends too early");
        m_error = QStringLiteral("line %1, column %2: %3").arg(m_xml.lineNumber()).arg(m_xml.columnNumber()).arg(why);
    }

    std::nullopt_t failed(const QString &message)
    {
        fail(message);
        return std::nullopt;
    }

    QXmlStreamReader m_xml;
    QString m_error;
};

// The first character XML 1.0 has no way to carry, or -1. A lone surrogate
// counts: no encoding can write it.
qsizetype illegalCharacter(QStringView text)
{
    for (qsizetype i = 0; i < text.size(); ++i)
    {
        const char16_t c = text.at(i).unicode();
        if (QChar::isHighSurrogate(c) && i + 1 < text.size() && QChar::isLowSurrogate(text.at(i + 1).unicode()))
        {
            ++i;
            continue;
        }
        const bool allowed =
            c == 0x9 || c == 0xA || c == 0xD || (c >= 0x20 && c < 0xD800) || (c >= 0xE000 && c < 0xFFFE);
        if (!allowed)
            return i;
    }
    return -1;
}

class Writer
{
public:
    explicit Writer(QByteArray *document)
        : m_xml(document)
    {
        m_xml.setAutoFormatting(true);
        // Tabs, the way property list files are laid out by other writers.
        m_xml.setAutoFormattingIndent(-1);
    }

    bool document(const QVariant &value)
    {
        m_xml.writeStartDocument();
        m_xml.writeDTD(DocType);
        m_xml.writeStartElement(QStringLiteral("plist"));
        m_xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
        if (!write(value))
            return false;
        m_xml.writeEndElement();
        m_xml.writeEndDocument();
        if (m_xml.hasError())
            return fail(QStringLiteral("the document could not be composed"));
        return true;
    }

    QString error() const { return m_error; }

private:
    bool write(const QVariant &value)
    {
        switch (value.metaType().id())
        {
            case QMetaType::QVariantMap:
                return dictionary(value.toMap());
            case QMetaType::QVariantHash:
            {
                const QVariantHash hash = value.toHash();
                QVariantMap sorted;
                for (auto it = hash.cbegin(); it != hash.cend(); ++it)
                    sorted.insert(it.key(), it.value());
                return dictionary(sorted);
            }
            case QMetaType::QVariantList:
            case QMetaType::QStringList:
            {
                const QVariantList list = value.toList();
                if (list.isEmpty())
                {
                    m_xml.writeEmptyElement(QStringLiteral("array"));
                    return true;
                }
                m_xml.writeStartElement(QStringLiteral("array"));
                for (qsizetype i = 0; i < list.size(); ++i)
                {
                    m_place.append(QString::number(i));
                    if (!write(list.at(i)))
                        return false;
                    m_place.removeLast();
                }
                m_xml.writeEndElement();
                return true;
            }
            case QMetaType::QString:
                return text(QStringLiteral("string"), value.toString());
            case QMetaType::Bool:
                m_xml.writeEmptyElement(value.toBool() ? QStringLiteral("true") : QStringLiteral("false"));
                return true;
            case QMetaType::Int:
            case QMetaType::Short:
            case QMetaType::Long:
            case QMetaType::LongLong:
            case QMetaType::SChar:
                m_xml.writeTextElement(QStringLiteral("integer"), QString::number(value.toLongLong()));
                return true;
            case QMetaType::UInt:
            case QMetaType::UShort:
            case QMetaType::ULong:
            case QMetaType::ULongLong:
            case QMetaType::UChar:
                m_xml.writeTextElement(QStringLiteral("integer"), QString::number(value.toULongLong()));
                return true;
            case QMetaType::Double:
            case QMetaType::Float:
                m_xml.writeTextElement(QStringLiteral("real"), realText(value.toDouble()));
                return true;
            case QMetaType::QDateTime:
            {
                const QString date = ZBPropertyList::dateText(value.toDateTime());
                if (date.isEmpty())
                    return fail(value.toDateTime().isValid()
                                    ? QStringLiteral("the date lies outside the years 0 to 9999")
                                    : QStringLiteral("the date is not valid"));
                m_xml.writeTextElement(QStringLiteral("date"), date);
                return true;
            }
            case QMetaType::QByteArray:
                m_xml.writeTextElement(QStringLiteral("data"), QString::fromLatin1(value.toByteArray().toBase64()));
                return true;
            default:
                break;
        }
        if (!value.isValid())
            return fail(QStringLiteral("there is no value"));
        return fail(QStringLiteral("a value of type %1 has no property list form").arg(value.metaType().name()));
    }

    bool dictionary(const QVariantMap &map)
    {
        if (map.isEmpty())
        {
            m_xml.writeEmptyElement(QStringLiteral("dict"));
            return true;
        }
        m_xml.writeStartElement(QStringLiteral("dict"));
        for (auto it = map.cbegin(); it != map.cend(); ++it)
        {
            m_place.append(it.key());
            if (!text(QStringLiteral("key"), it.key()) || !write(it.value()))
                return false;
            m_place.removeLast();
        }
        m_xml.writeEndElement();
        return true;
    }

    bool text(const QString &element, const QString &content)
    {
        const qsizetype bad = illegalCharacter(content);
        if (bad >= 0)
        {
            const QString what = element == u"key" ? QStringLiteral("the key") : QStringLiteral("the text");
            return fail(QStringLiteral("%1 holds the character U+%2, which an XML file cannot carry")
                            .arg(what)
                            .arg(QString::number(content.at(bad).unicode(), 16).toUpper().rightJustified(4, u'0')));
        }
        m_xml.writeStartElement(element);
        // A carriage return written as it is comes back as a line feed (XML
        // normalises line ends), and the writer drops it besides; only a
        // character reference keeps it.
        const QStringList pieces = content.split(u'\r');
        for (qsizetype i = 0; i < pieces.size(); ++i)
        {
            if (i > 0)
                m_xml.writeEntityReference(QStringLiteral("#13"));
            // Even an empty piece, so that an empty text reads <string></string>.
            m_xml.writeCharacters(pieces.at(i));
        }
        m_xml.writeEndElement();
        return true;
    }

    static QString realText(double number)
    {
        if (std::isnan(number))
            return QStringLiteral("nan");
        if (std::isinf(number))
            return number > 0 ? QStringLiteral("+infinity") : QStringLiteral("-infinity");
        return QString::number(number, 'g', QLocale::FloatingPointShortest);
    }

    bool fail(const QString &message)
    {
        m_error = m_place.isEmpty() ? message : QStringLiteral("at %1: %2").arg(m_place.join(u'/'), message);
        return false;
    }

    QXmlStreamWriter m_xml;
    QStringList m_place;
    QString m_error;
};
} // namespace

std::optional<QVariant> ZBPropertyList::read(const QByteArray &document, QString *error)
{
    Reader reader(document);
    std::optional<QVariant> value = reader.document();
    if (error)
        *error = reader.error();
    return value;
}

std::optional<QVariant> ZBPropertyList::readFile(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
    {
        if (error)
            *error = QStringLiteral("cannot open %1: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    const QByteArray document = file.readAll();
    if (file.error() != QFileDevice::NoError)
    {
        if (error)
            *error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    std::optional<QVariant> value = read(document, error);
    if (!value && error)
        *error = path + QStringLiteral(", ") + *error;
    return value;
}

std::optional<QByteArray> ZBPropertyList::write(const QVariant &value, QString *error)
{
    QByteArray document;
    Writer writer(&document);
    const bool written = writer.document(value);
    if (error)
        *error = writer.error();
    if (!written)
        return std::nullopt;
    return document;
}

bool ZBPropertyList::writeFile(const QString &path, const QVariant &value, QString *error)
{
    const std::optional<QByteArray> document = write(value, error);
    if (!document)
        return false;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
    {
        if (error)
            *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    if (file.write(*document) != document->size() || !file.flush())
    {
        if (error)
            *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

QString ZBPropertyList::dateText(const QDateTime &date)
{
    if (!date.isValid())
        return QString();
    const QDateTime utc = date.toUTC();
    const int year = utc.date().year();
    if (year < 0 || year > 9999)
        return QString();
    const QTime time = utc.time();
    return QStringLiteral("%1-%2-%3T%4:%5:%6Z")
        .arg(year, 4, 10, QLatin1Char('0'))
        .arg(utc.date().month(), 2, 10, QLatin1Char('0'))
        .arg(utc.date().day(), 2, 10, QLatin1Char('0'))
        .arg(time.hour(), 2, 10, QLatin1Char('0'))
        .arg(time.minute(), 2, 10, QLatin1Char('0'))
        .arg(time.second(), 2, 10, QLatin1Char('0'));
}

QDateTime ZBPropertyList::dateFromText(QStringView text)
{
    static const QRegularExpression form(
        QStringLiteral("^(\\d{4})(?:-(\\d{2})(?:-(\\d{2})(?:T(\\d{2})(?::(\\d{2})(?::(\\d{2}))?)?)?)?)?Z$"));
    const QRegularExpressionMatch match = form.match(text.toString());
    if (!match.hasMatch())
        return QDateTime();
    const auto field = [&match](int index, int absent) {
        return match.capturedView(index).isEmpty() ? absent : match.capturedView(index).toInt();
    };
    const QDate date(field(1, 0), field(2, 1), field(3, 1));
    const QTime time(field(4, 0), field(5, 0), field(6, 0));
    if (!date.isValid() || !time.isValid())
        return QDateTime();
    return QDateTime(date, time, Qt::UTC);
}
