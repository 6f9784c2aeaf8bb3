#include "library/zbsmartlistrules.h"

#include <QDate>
#include <QDateTime>

#include "predicate/zbpredicate.h"
#include "predicate/zbpredicatenode.h"

namespace
{
struct FieldInfo
{
    int tag;
    const char *key;
    ZBSmartListRules::ValueKind kind;
    const char *titleKey;
};

struct OperatorInfo
{
    int tag;
    ZBSmartListRules::ValueKind kind;
    const char *token;
    const char *titleKey;
};

using Kind = ZBSmartListRules::ValueKind;

constexpr FieldInfo Fields[] = {
    {ZBSmartListRules::FieldName, "Name", Kind::Text, "columnTitleName"},
    {ZBSmartListRules::FieldPath, "Path", Kind::Text, "columnTitlePath"},
    {ZBSmartListRules::FieldType, "Type", Kind::Text, "columnTitleType"},
    {ZBSmartListRules::FieldRating, "Rating", Kind::Number, "columnTitleRating"},
    {ZBSmartListRules::FieldPlayCount, "PlayCount", Kind::Number, "columnTitlePlayCount"},
    {ZBSmartListRules::FieldAdded, "Added", Kind::Date, "columnTitleAdded"},
    {ZBSmartListRules::FieldLastPlayed, "LastPlayed", Kind::Date, "columnTitleLastPlayed"},
    {ZBSmartListRules::FieldURL, "URL", Kind::Text, "columnTitleURL"},
};

// The date "is" entry needs a title of its own: "SmartListWindow_On" ("is
// on" a day) reads naturally next to "Early" and "Later", while the number
// field's "Is" would not.
constexpr OperatorInfo Operators[] = {
    {ZBSmartListRules::TextEquals, Kind::Text, "MATCHES[CD]", "SmartListWindow_Equals"},
    {ZBSmartListRules::TextContains, Kind::Text, "CONTAINS[CD]", "SmartListWindow_Contains"},
    {ZBSmartListRules::TextBeginsWith, Kind::Text, "BEGINSWITH[CD]", "SmartListWindow_BeginsWith"},
    {ZBSmartListRules::TextEndsWith, Kind::Text, "ENDSWITH[CD]", "SmartListWindow_EndsWith"},
    {ZBSmartListRules::NumberLess, Kind::Number, "<", "SmartListWindow_Less"},
    {ZBSmartListRules::NumberGreater, Kind::Number, ">", "SmartListWindow_Greather"},
    {ZBSmartListRules::NumberIs, Kind::Number, "==", "SmartListWindow_Is"},
    {ZBSmartListRules::DateEarlier, Kind::Date, "<", "SmartListWindow_Early"},
    {ZBSmartListRules::DateLater, Kind::Date, ">", "SmartListWindow_Later"},
    {ZBSmartListRules::DateIs, Kind::Date, "==", "SmartListWindow_On"},
};

const FieldInfo *findField(int tag)
{
    for (const FieldInfo &info : Fields)
    {
        if (info.tag == tag)
            return &info;
    }
    return nullptr;
}

const OperatorInfo *findOperator(int tag)
{
    for (const OperatorInfo &info : Operators)
    {
        if (info.tag == tag)
            return &info;
    }
    return nullptr;
}

const FieldInfo *findFieldByKey(const QString &key)
{
    for (const FieldInfo &info : Fields)
    {
        if (key == QLatin1String(info.key))
            return &info;
    }
    return nullptr;
}

// The operator of a kind that a parsed comparison stands for; 0 when none.
int operatorFor(Kind kind, ZBPredicateNode::Operator op)
{
    using Op = ZBPredicateNode::Operator;
    switch (kind)
    {
        case Kind::Text:
            switch (op)
            {
                case Op::Matches:
                    return ZBSmartListRules::TextEquals;
                case Op::Contains:
                    return ZBSmartListRules::TextContains;
                case Op::BeginsWith:
                    return ZBSmartListRules::TextBeginsWith;
                case Op::EndsWith:
                    return ZBSmartListRules::TextEndsWith;
                default:
                    return 0;
            }
        case Kind::Number:
        case Kind::Date:
        {
            const bool number = kind == Kind::Number;
            switch (op)
            {
                case Op::Less:
                    return number ? ZBSmartListRules::NumberLess : ZBSmartListRules::DateEarlier;
                case Op::Greater:
                    return number ? ZBSmartListRules::NumberGreater : ZBSmartListRules::DateLater;
                case Op::Equal:
                    return number ? ZBSmartListRules::NumberIs : ZBSmartListRules::DateIs;
                default:
                    return 0;
            }
        }
    }
    return 0;
}

QString kindName(Kind kind)
{
    switch (kind)
    {
        case Kind::Text:
            return QStringLiteral("text");
        case Kind::Number:
            return QStringLiteral("number");
        case Kind::Date:
            return QStringLiteral("date");
    }
    return {};
}

QString replaceAll(QString text, const QString &from, const QString &to)
{
    // One pass can leave a match behind: in "a OR OR b" the blank between the
    // two words belongs to the first match, so repeat until none is left.
    while (text.contains(from))
        text.replace(from, to);
    return text;
}
} // namespace

bool ZBSmartListRules::Row::operator==(const Row &other) const
{
    return field == other.field && op == other.op && value == other.value;
}

QList<int> ZBSmartListRules::fieldTags()
{
    QList<int> tags;
    for (const FieldInfo &info : Fields)
        tags.append(info.tag);
    return tags;
}

QList<int> ZBSmartListRules::operatorTags(ValueKind kind)
{
    QList<int> tags;
    for (const OperatorInfo &info : Operators)
    {
        if (info.kind == kind)
            tags.append(info.tag);
    }
    return tags;
}

bool ZBSmartListRules::isField(int tag)
{
    return findField(tag) != nullptr;
}

bool ZBSmartListRules::isOperator(int tag)
{
    return findOperator(tag) != nullptr;
}

ZBSmartListRules::ValueKind ZBSmartListRules::fieldKind(int fieldTag)
{
    const FieldInfo *info = findField(fieldTag);
    return info ? info->kind : ValueKind::Text;
}

ZBSmartListRules::ValueKind ZBSmartListRules::operatorKind(int operatorTag)
{
    const OperatorInfo *info = findOperator(operatorTag);
    return info ? info->kind : ValueKind::Text;
}

QString ZBSmartListRules::fieldKey(int fieldTag)
{
    const FieldInfo *info = findField(fieldTag);
    return info ? QString::fromLatin1(info->key) : QString();
}

QString ZBSmartListRules::fieldTitleKey(int fieldTag)
{
    const FieldInfo *info = findField(fieldTag);
    return info ? QString::fromLatin1(info->titleKey) : QString();
}

QString ZBSmartListRules::operatorToken(int operatorTag)
{
    const OperatorInfo *info = findOperator(operatorTag);
    return info ? QString::fromLatin1(info->token) : QString();
}

QString ZBSmartListRules::operatorTitleKey(int operatorTag)
{
    const OperatorInfo *info = findOperator(operatorTag);
    return info ? QString::fromLatin1(info->titleKey) : QString();
}

bool ZBSmartListRules::normaliseRow(int field, int op, const QVariant &value, Row *row)
{
    const FieldInfo *fieldInfo = findField(field);
    if (!fieldInfo)
    {
        m_lastError = QStringLiteral("Unknown rule field %1").arg(field);
        return false;
    }
    const OperatorInfo *opInfo = findOperator(op);
    if (!opInfo)
    {
        m_lastError = QStringLiteral("Unknown rule operator %1").arg(op);
        return false;
    }
    if (opInfo->kind != fieldInfo->kind)
    {
        m_lastError = QStringLiteral("The operator %1 (%2) does not apply to the %3 field %4")
                          .arg(op)
                          .arg(kindName(opInfo->kind), kindName(fieldInfo->kind), QLatin1String(fieldInfo->key));
        return false;
    }

    row->field = field;
    row->op = op;
    switch (fieldInfo->kind)
    {
        case ValueKind::Text:
            row->value = value.isValid() ? value.toString() : QString(QLatin1String(""));
            break;
        case ValueKind::Number:
            // Surrounding blanks would not survive a round trip through the
            // filter text; everything else is kept as typed.
            row->value = value.isValid() ? value.toString().trimmed() : QString(QLatin1String(""));
            break;
        case ValueKind::Date:
        {
            QDateTime date;
            if (value.typeId() == QMetaType::QDateTime)
                date = value.toDateTime();
            else if (value.typeId() == QMetaType::QDate)
                date = value.toDate().startOfDay(Qt::LocalTime);
            else if (value.typeId() == QMetaType::QString)
                date = QDate::fromString(value.toString(), Qt::ISODate).startOfDay(Qt::LocalTime);
            if (!date.isValid())
            {
                m_lastError = QStringLiteral("The %1 field needs a date, not '%2'")
                                  .arg(QLatin1String(fieldInfo->key), value.toString());
                return false;
            }
            row->value = date;
            break;
        }
    }
    return true;
}

void ZBSmartListRules::setDefaultPredicate()
{
    m_rows.clear();
    addEmptyRow();
}

bool ZBSmartListRules::addRow(int field, int op, const QVariant &value)
{
    Row row;
    if (!normaliseRow(field, op, value, &row))
        return false;
    m_rows.append(row);
    return true;
}

void ZBSmartListRules::addEmptyRow()
{
    insertEmptyRow(rowCount());
}

void ZBSmartListRules::insertEmptyRow(int index)
{
    Row row;
    row.field = defaultField();
    row.op = defaultOperator();
    row.value = QString(QLatin1String(""));
    m_rows.insert(qBound(0, index, rowCount()), row);
}

bool ZBSmartListRules::setRow(int index, const Row &row)
{
    if (index < 0 || index >= rowCount())
    {
        m_lastError = QStringLiteral("There is no rule row %1").arg(index);
        return false;
    }
    Row normalised;
    if (!normaliseRow(row.field, row.op, row.value, &normalised))
        return false;
    m_rows[index] = normalised;
    return true;
}

bool ZBSmartListRules::removeRow(int index)
{
    if (index < 0 || index >= rowCount())
    {
        m_lastError = QStringLiteral("There is no rule row %1").arg(index);
        return false;
    }
    m_rows.removeAt(index);
    return true;
}

void ZBSmartListRules::removeAllRows()
{
    m_rows.clear();
}

QString ZBSmartListRules::quoteText(const QString &value)
{
    // Backslashes are doubled as well as quotes escaped, otherwise a value
    // such as "C:\" or "a\n" would not read back as typed.
    QString text = value;
    text.replace(u'\\', QStringLiteral("\\\\"));
    text.replace(u'\'', QStringLiteral("\\'"));
    // The rewrite keeps a reader that splits on the words from taking part of
    // a value for a logical operator.
    text = replaceAll(text, QStringLiteral(" OR "), QStringLiteral(" or "));
    text = replaceAll(text, QStringLiteral(" AND "), QStringLiteral(" and "));
    return u'\'' + text + u'\'';
}

QString ZBSmartListRules::generatePredicate() const
{
    const QString joiner = m_matchAll ? QStringLiteral(" AND ") : QStringLiteral(" OR ");
    QString text;
    for (qsizetype i = 0; i < m_rows.size(); ++i)
    {
        const Row &row = m_rows[i];
        const FieldInfo *field = findField(row.field);
        const OperatorInfo *op = findOperator(row.op);
        if (!field || !op)
            continue;

        QString rowText = u'(' + QLatin1String(field->key) + u' ' + QLatin1String(op->token) + u' ';
        switch (field->kind)
        {
            case ValueKind::Date:
            {
                // Rows are normalised on the way in; an invalid date can only
                // come from a default-constructed value and is written as the
                // reference date rather than as a broken text.
                const QDateTime date = row.value.toDateTime();
                rowText += ZBPredicate::dateLiteral(date.isValid() ? date : ZBPredicate::referenceDate());
                break;
            }
            case ValueKind::Text:
                rowText += quoteText(row.value.toString());
                break;
            case ValueKind::Number:
                rowText += row.value.toString();
                break;
        }
        rowText += u')';

        if (!text.isEmpty())
            text += joiner;
        text += rowText;
    }
    return text;
}

bool ZBSmartListRules::rowFromNode(const ZBPredicateNode &node, const QString &text, Row *row)
{
    if (node.type() != ZBPredicateNode::Type::Comparison)
    {
        m_lastError = QStringLiteral("Rules are comparisons joined by only AND or only OR");
        return false;
    }
    // Only needed for a message; building it for every row would cost more
    // than reading the row.
    const auto description = [&node]
    {
        return node.description();
    };
    if (node.quantifier() != ZBPredicateNode::Quantifier::None || !node.left().isKeyPath())
    {
        m_lastError = QStringLiteral("%1 is not a rule: it must start with a field").arg(description());
        return false;
    }
    const FieldInfo *field = findFieldByKey(node.left().keyPath());
    if (!field)
    {
        m_lastError = QStringLiteral("%1 is not a rule: unknown field %2").arg(description(), node.left().keyPath());
        return false;
    }
    const int op = operatorFor(field->kind, node.comparisonOperator());
    if (op == 0)
    {
        m_lastError =
            QStringLiteral("%1 is not a rule: no %2 rule uses the operator %3")
                .arg(description(), kindName(field->kind), ZBPredicateNode::operatorText(node.comparisonOperator()));
        return false;
    }

    const ZBPredicateExpression &right = node.right();
    QVariant value;
    switch (field->kind)
    {
        case ValueKind::Text:
            if (!node.caseInsensitive() || !node.diacriticInsensitive())
            {
                m_lastError =
                    QStringLiteral("%1 is not a rule: text rules ignore case and diacritics ([cd])").arg(description());
                return false;
            }
            if (!right.isConstant() || right.constantValue().typeId() != QMetaType::QString)
            {
                m_lastError = QStringLiteral("%1 is not a rule: the value must be a quoted text").arg(description());
                return false;
            }
            value = right.constantValue().toString();
            break;
        case ValueKind::Number:
            if (node.caseInsensitive() || node.diacriticInsensitive())
            {
                m_lastError = QStringLiteral("%1 is not a rule: number rules take no modifiers").arg(description());
                return false;
            }
            // The value is kept as it was typed, so it is taken from the text
            // rather than from the parsed constant.
            value = text.mid(right.sourceStart(), right.sourceLength());
            break;
        case ValueKind::Date:
            if (node.caseInsensitive() || node.diacriticInsensitive() || !right.isConstant() ||
                right.constantValue().typeId() != QMetaType::QDateTime)
            {
                m_lastError =
                    QStringLiteral("%1 is not a rule: the value must be CAST(seconds, 'NSDate')").arg(description());
                return false;
            }
            value = right.constantValue().toDateTime().toLocalTime();
            break;
    }
    row->field = field->tag;
    row->op = op;
    row->value = value;
    return true;
}

bool ZBSmartListRules::fillRules(const QString &request)
{
    if (request.trimmed().isEmpty())
    {
        m_rows.clear();
        m_matchAll = true;
        m_lastError.clear();
        return true;
    }

    const ZBPredicate predicate = ZBPredicate::parse(request);
    if (!predicate.isValid())
    {
        m_lastError = predicate.errorString();
        return false;
    }

    const ZBPredicateNode *root = predicate.root();
    QList<const ZBPredicateNode *> comparisons;
    bool matchAll = true;
    if (root->type() == ZBPredicateNode::Type::And || root->type() == ZBPredicateNode::Type::Or)
    {
        matchAll = root->type() == ZBPredicateNode::Type::And;
        for (qsizetype i = 0; i < root->childCount(); ++i)
            comparisons.append(root->child(i));
    }
    else
    {
        comparisons.append(root);
    }

    QList<Row> rows;
    for (const ZBPredicateNode *node : std::as_const(comparisons))
    {
        Row row;
        if (!rowFromNode(*node, request, &row))
            return false;
        rows.append(row);
    }
    m_rows = rows;
    m_matchAll = matchAll;
    m_lastError.clear();
    return true;
}
