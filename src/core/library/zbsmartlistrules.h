#pragma once

#include <QList>
#include <QString>
#include <QVariant>

class ZBPredicateNode;

// The rule rows of the smart-list editor and the filter text they stand for,
// without any widget: the editor window shows and edits these rows.
//
// A row is (field, operator, value). The value kind follows from the field:
// - text fields hold a QString;
// - number fields hold the QString as typed, without surrounding blanks (it
//   is written into the filter unchanged and not validated, so a value that
//   is not a number makes the filter unreadable);
// - date fields hold a QDateTime. A QDate given for a date field means local
//   midnight of that day, as the editor shows and edits dates as
//   "yyyy-MM-dd" in the user's time zone; dates read back by fillRules() are
//   local times.
class ZBSmartListRules
{
public:
    enum class ValueKind
    {
        Text,
        Number,
        Date
    };

    enum Field
    {
        FieldName = 9101,
        FieldPath = 9102,
        FieldType = 9103,
        FieldRating = 9104,
        FieldPlayCount = 9105,
        FieldAdded = 9106,
        FieldLastPlayed = 9107,
        FieldURL = 9108
    };

    enum Operator
    {
        TextEquals = 9201, // a whole-value regular expression match, not plain equality
        TextContains = 9202,
        TextBeginsWith = 9203,
        TextEndsWith = 9204,
        NumberLess = 9211,
        NumberGreater = 9212,
        NumberIs = 9213,
        DateEarlier = 9221,
        DateLater = 9222,
        DateIs = 9223
    };

    struct Row
    {
        int field = FieldName;
        int op = TextContains;
        QVariant value;

        bool operator==(const Row &other) const;
        bool operator!=(const Row &other) const { return !(*this == other); }
    };

    // The vocabulary, in menu order.
    static QList<int> fieldTags();
    static QList<int> operatorTags(ValueKind kind);
    static bool isField(int tag);
    static bool isOperator(int tag);
    static ValueKind fieldKind(int fieldTag);
    static ValueKind operatorKind(int operatorTag);
    // "Name", "Rating", ...; empty for an unknown tag.
    static QString fieldKey(int fieldTag);
    static QString fieldTitleKey(int fieldTag);
    // "CONTAINS[CD]", "<", ...; empty for an unknown tag.
    static QString operatorToken(int operatorTag);
    static QString operatorTitleKey(int operatorTag);
    static int defaultField() { return FieldName; }
    static int defaultOperator() { return TextContains; }

    // Replaces the rows by the single default row: Name contains "".
    void setDefaultPredicate();
    // Appends a row. False, with lastError() set and the rows unchanged, for
    // an unknown tag, an operator of another kind than the field, or a date
    // field whose value is not a date.
    bool addRow(int field, int op, const QVariant &value);
    bool addRow(const Row &row) { return addRow(row.field, row.op, row.value); }
    // Appends a row with the default field and operator and an empty value.
    void addEmptyRow();
    // Inserts such a row at index (clamped to the row range), as the "+"
    // button next to a row does.
    void insertEmptyRow(int index);
    bool setRow(int index, const Row &row);
    bool removeRow(int index);
    void removeAllRows();
    const QList<Row> &rows() const { return m_rows; }
    int rowCount() const { return static_cast<int>(m_rows.size()); }

    // "all" joins the rows with AND, "any" with OR.
    void setMatchAll(bool all) { m_matchAll = all; }
    bool matchAll() const { return m_matchAll; }

    QString generatePredicate() const;

    // Replaces the rows (and the all/any choice) by those a request stands
    // for; any text generatePredicate() writes is read back to the same rows,
    // except that the " OR " and " AND " rewrite of text values is not undone
    // (the words come back in lower case). The empty text gives no rows. With
    // fewer than two rows the text does not say all or any; the choice is
    // then set to all, as for a new list. Any other text returns false and
    // leaves everything unchanged; lastError() says why.
    bool fillRules(const QString &request);

    QString lastError() const { return m_lastError; }

    // How one value is written into a filter text.
    static QString quoteText(const QString &value);

private:
    bool normaliseRow(int field, int op, const QVariant &value, Row *row);
    bool rowFromNode(const ZBPredicateNode &node, const QString &text, Row *row);

    QList<Row> m_rows;
    bool m_matchAll = true;
    QString m_lastError;
};
