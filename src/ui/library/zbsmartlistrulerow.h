#pragma once

#include <QDateTime>
#include <QWidget>

#include "library/zbsmartlistrules.h"

class QCalendarWidget;
class QComboBox;
class QLineEdit;
class QMenu;
class QPushButton;
class QStackedWidget;
class QToolButton;
class ZBStarRatingEditor;

// One rule of the smart-list editor: field and operator pop-ups, the value
// editor the field calls for, and the "-" and "+" buttons.
//
// Value editors: a line edit for Name, Path and URL, an editable pop-up of
// the media types for Type, a line edit for PlayCount (checked by the window
// on OK, not here), stars for Rating and, for Added and LastPlayed, a line
// edit taking the date as "yyyy-MM-dd" with a button that opens a calendar.
// Dates are typed as plain text rather than in a QDateEdit because its
// sections jump ahead on their own, so typing "2024-03-05" as shown there
// gives 2024-11-03. Each editor keeps its value while another field is
// chosen, so trying a field and going back loses nothing.
//
// A value the editors cannot show exactly (a rating such as "2.5" or "7", a
// date that is not local midnight) is handed back unchanged by row() until
// the user picks another rating or day.
class ZBSmartListRuleRow : public QWidget
{
    Q_OBJECT

public:
    explicit ZBSmartListRuleRow(QWidget *parent = nullptr);

    // The row must be one ZBSmartListRules accepts (the window normalises it
    // there first); an operator of another kind than the field is replaced by
    // that kind's first operator.
    void setRow(const ZBSmartListRules::Row &row);
    // A date field's value is the kept date or else the text as typed:
    // ZBSmartListRules reads "yyyy-MM-dd" as local midnight and refuses
    // anything else.
    ZBSmartListRules::Row row() const;

    int field() const;
    int op() const;
    // As if chosen from the pop-ups. A field of another kind brings that
    // kind's operators, the first one chosen; unknown tags are ignored.
    void setField(int fieldTag);
    void setOperator(int operatorTag);

    // The editor the current field uses, the one to focus for it.
    QWidget *valueEditor() const;
    // The value as the user sees it, for messages.
    QString valueText() const;

    // Unavailable while the row is the only one: with no rows left there
    // would be no "+" to add one.
    void setRemoveEnabled(bool enabled);

    // The row's focusable widgets in Tab order, hidden editors included (Qt
    // skips them while hidden).
    QList<QWidget *> tabChain() const;

    QComboBox *fieldBox() const { return m_fieldBox; }
    QComboBox *operatorBox() const { return m_operatorBox; }
    QLineEdit *textEdit() const { return m_textEdit; }
    QComboBox *typeBox() const { return m_typeBox; }
    QLineEdit *numberEdit() const { return m_numberEdit; }
    ZBStarRatingEditor *ratingEditor() const { return m_ratingEditor; }
    QLineEdit *dateEdit() const { return m_dateEdit; }
    QToolButton *dateButton() const { return m_dateButton; }
    // Null until the date button first opens it.
    QCalendarWidget *calendar() const { return m_calendar; }
    QPushButton *removeButton() const { return m_removeButton; }
    QPushButton *addButton() const { return m_addButton; }

    static QString dateFormat() { return QStringLiteral("yyyy-MM-dd"); }

Q_SIGNALS:
    void addRequested();
    void removeRequested();
    // Any change of field, operator or value, by the user or by the setters.
    void changed();

private:
    void fillOperators(ZBSmartListRules::ValueKind kind);
    void showEditorForField();
    void openCalendar();

    QComboBox *m_fieldBox;
    QComboBox *m_operatorBox;
    QStackedWidget *m_valueStack;
    QLineEdit *m_textEdit;
    QComboBox *m_typeBox;
    QLineEdit *m_numberEdit;
    QWidget *m_ratingPage;
    ZBStarRatingEditor *m_ratingEditor;
    QWidget *m_datePage;
    QLineEdit *m_dateEdit;
    QToolButton *m_dateButton;
    QMenu *m_calendarMenu = nullptr;
    QCalendarWidget *m_calendar = nullptr;
    QPushButton *m_removeButton;
    QPushButton *m_addButton;

    // See the class comment; null or invalid when the editor shows the value
    // exactly.
    QString m_keptRating;
    int m_keptRatingStars = 0;
    QDateTime m_keptDate;
    QString m_keptDateText;
};
