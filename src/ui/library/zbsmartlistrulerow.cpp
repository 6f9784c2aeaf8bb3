#include "ui/library/zbsmartlistrulerow.h"

#include <QCalendarWidget>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QStackedWidget>
#include <QToolButton>
#include <QWidgetAction>

#include "localization/zblocalizer.h"
#include "playback/zbmediatypes.h"
#include "predicate/zbpredicate.h"
#include "ui/widgets/zbstarratingeditor.h"

namespace
{
using Rules = ZBSmartListRules;

QString text(const QString &key)
{
    return ZBLocalizer::localizedStringForKey(key);
}

QStringList typeChoices()
{
    // "'APPL'" is how open panels name applications; a track of that kind
    // has the type "exe", which the list holds already.
    QStringList types;
    for (const QString &type : ZBMediaTypes::getSupportedFileTypes())
    {
        if (!type.startsWith(u'\''))
            types.append(type);
    }
    types.sort(Qt::CaseInsensitive);
    return types;
}

// A stored request writes a date as seconds since 2001 and readers refuse
// more than 10^11 of them; a later date would make the request unreadable.
QDate lastReadableDate()
{
    return ZBPredicate::dateFromReferenceSeconds(9.9e10).date();
}

// A push button no wider than it is high: the style's minimum width for
// text buttons is meant for words, not for "+" and "-".
QPushButton *smallButton(const QString &title, const QString &descriptionKey, QWidget *parent)
{
    auto *button = new QPushButton(title, parent);
    button->setAutoDefault(false);
    button->setDefault(false);
    const int side = button->sizeHint().height();
    button->setFixedWidth(qMax(side, button->fontMetrics().horizontalAdvance(title) + 12));
    button->setToolTip(text(descriptionKey));
    button->setAccessibleName(text(descriptionKey));
    return button;
}
} // namespace

ZBSmartListRuleRow::ZBSmartListRuleRow(QWidget *parent)
    : QWidget(parent)
    , m_fieldBox(new QComboBox(this))
    , m_operatorBox(new QComboBox(this))
    , m_valueStack(new QStackedWidget(this))
    , m_textEdit(new QLineEdit(m_valueStack))
    , m_typeBox(new QComboBox(m_valueStack))
    , m_numberEdit(new QLineEdit(m_valueStack))
    , m_ratingPage(new QWidget(m_valueStack))
    , m_ratingEditor(new ZBStarRatingEditor(m_ratingPage))
    , m_datePage(new QWidget(m_valueStack))
    , m_dateEdit(new QLineEdit(m_datePage))
    , m_dateButton(new QToolButton(m_datePage))
    , m_removeButton(smallButton(QStringLiteral("-"), QStringLiteral("SmartListWindow_RemoveRule"), this))
    , m_addButton(smallButton(QStringLiteral("+"), QStringLiteral("SmartListWindow_AddRule"), this))
{
    for (int tag : Rules::fieldTags())
        m_fieldBox->addItem(text(Rules::fieldTitleKey(tag)), tag);
    m_fieldBox->setAccessibleName(text(QStringLiteral("SmartListWindow_Field")));

    // Wide enough for every kind's titles, so the value column lines up in
    // every row whatever its kind.
    for (auto kind : {Rules::ValueKind::Text, Rules::ValueKind::Number, Rules::ValueKind::Date})
    {
        for (int tag : Rules::operatorTags(kind))
            m_operatorBox->addItem(text(Rules::operatorTitleKey(tag)), tag);
    }
    m_operatorBox->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_operatorBox->setMinimumWidth(m_operatorBox->sizeHint().width());
    m_operatorBox->setAccessibleName(text(QStringLiteral("SmartListWindow_Operator")));
    fillOperators(Rules::fieldKind(Rules::defaultField()));

    m_typeBox->setEditable(true);
    m_typeBox->setInsertPolicy(QComboBox::NoInsert);
    // Inline completion would quietly turn a typed "f" into "flv", the wrong
    // value for a "contains" or "begins with" rule.
    m_typeBox->setCompleter(nullptr);
    m_typeBox->addItems(typeChoices());
    m_typeBox->setCurrentIndex(-1);
    m_typeBox->setEditText(QString());

    auto *ratingLayout = new QHBoxLayout(m_ratingPage);
    ratingLayout->setContentsMargins(0, 0, 0, 0);
    ratingLayout->addWidget(m_ratingEditor);
    ratingLayout->addStretch(1);
    m_ratingPage->setFocusProxy(m_ratingEditor);
    m_ratingEditor->setAccessibleName(text(Rules::fieldTitleKey(Rules::FieldRating)));

    m_dateEdit->setText(QDate::currentDate().toString(dateFormat()));
    m_dateEdit->setPlaceholderText(text(QStringLiteral("SmartListWindow_DatePlaceholder")));
    m_dateButton->setArrowType(Qt::DownArrow);
    m_dateButton->setToolTip(text(QStringLiteral("SmartListWindow_ChooseDate")));
    m_dateButton->setAccessibleName(text(QStringLiteral("SmartListWindow_ChooseDate")));
    auto *dateLayout = new QHBoxLayout(m_datePage);
    dateLayout->setContentsMargins(0, 0, 0, 0);
    dateLayout->setSpacing(2);
    dateLayout->addWidget(m_dateEdit, 1);
    dateLayout->addWidget(m_dateButton);
    m_datePage->setFocusProxy(m_dateEdit);

    const QString valueName = text(QStringLiteral("SmartListWindow_Value"));
    m_textEdit->setAccessibleName(valueName);
    m_typeBox->setAccessibleName(valueName);
    m_numberEdit->setAccessibleName(valueName);
    m_dateEdit->setAccessibleName(valueName);

    m_valueStack->addWidget(m_textEdit);
    m_valueStack->addWidget(m_typeBox);
    m_valueStack->addWidget(m_numberEdit);
    m_valueStack->addWidget(m_ratingPage);
    m_valueStack->addWidget(m_datePage);
    m_valueStack->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_fieldBox);
    layout->addWidget(m_operatorBox);
    layout->addWidget(m_valueStack, 1);
    layout->addSpacing(4);
    layout->addWidget(m_removeButton);
    layout->addWidget(m_addButton);

    connect(m_fieldBox, &QComboBox::currentIndexChanged, this,
            [this]
            {
                const auto kind = Rules::fieldKind(field());
                if (Rules::operatorKind(op()) != kind)
                    fillOperators(kind);
                showEditorForField();
                Q_EMIT changed();
            });
    connect(m_operatorBox, &QComboBox::currentIndexChanged, this, &ZBSmartListRuleRow::changed);
    connect(m_textEdit, &QLineEdit::textChanged, this, &ZBSmartListRuleRow::changed);
    connect(m_typeBox, &QComboBox::currentTextChanged, this, &ZBSmartListRuleRow::changed);
    connect(m_numberEdit, &QLineEdit::textChanged, this, &ZBSmartListRuleRow::changed);
    connect(m_ratingEditor, &ZBStarRatingEditor::ratingChanged, this, &ZBSmartListRuleRow::changed);
    connect(m_dateEdit, &QLineEdit::textChanged, this, &ZBSmartListRuleRow::changed);
    connect(m_dateButton, &QToolButton::clicked, this, &ZBSmartListRuleRow::openCalendar);
    connect(m_removeButton, &QPushButton::clicked, this, &ZBSmartListRuleRow::removeRequested);
    connect(m_addButton, &QPushButton::clicked, this, &ZBSmartListRuleRow::addRequested);

    showEditorForField();
}

void ZBSmartListRuleRow::fillOperators(ZBSmartListRules::ValueKind kind)
{
    const QSignalBlocker blocker(m_operatorBox);
    m_operatorBox->clear();
    for (int tag : Rules::operatorTags(kind))
        m_operatorBox->addItem(text(Rules::operatorTitleKey(tag)), tag);
    m_operatorBox->setCurrentIndex(0);
}

void ZBSmartListRuleRow::showEditorForField()
{
    QWidget *page = valueEditor();
    if (page == m_ratingEditor)
        page = m_ratingPage;
    else if (page == m_dateEdit)
        page = m_datePage;
    m_valueStack->setCurrentWidget(page);
}

void ZBSmartListRuleRow::openCalendar()
{
    if (!m_calendarMenu)
    {
        m_calendarMenu = new QMenu(this);
        m_calendar = new QCalendarWidget(m_calendarMenu);
        m_calendar->setMaximumDate(lastReadableDate());
        // Month and day names in the program's language, not the system's.
        m_calendar->setLocale(ZBLocalizer::locale());
        auto *action = new QWidgetAction(m_calendarMenu);
        action->setDefaultWidget(m_calendar);
        m_calendarMenu->addAction(action);
        const auto pick = [this](QDate date)
        {
            m_dateEdit->setText(date.toString(dateFormat()));
            m_calendarMenu->hide();
            m_dateEdit->setFocus(Qt::PopupFocusReason);
        };
        // clicked for the mouse, activated for Return and double clicks.
        connect(m_calendar, &QCalendarWidget::clicked, this, pick);
        connect(m_calendar, &QCalendarWidget::activated, this, pick);
    }
    const QDate typed = QDate::fromString(m_dateEdit->text().trimmed(), Qt::ISODate);
    m_calendar->setSelectedDate(typed.isValid() ? typed : QDate::currentDate());
    m_calendarMenu->popup(m_dateButton->mapToGlobal(QPoint(0, m_dateButton->height())));
    m_calendar->setFocus(Qt::PopupFocusReason);
}

int ZBSmartListRuleRow::field() const
{
    return m_fieldBox->currentData().toInt();
}

int ZBSmartListRuleRow::op() const
{
    return m_operatorBox->currentData().toInt();
}

void ZBSmartListRuleRow::setField(int fieldTag)
{
    const int index = m_fieldBox->findData(fieldTag);
    if (index >= 0)
        m_fieldBox->setCurrentIndex(index);
}

void ZBSmartListRuleRow::setOperator(int operatorTag)
{
    const int index = m_operatorBox->findData(operatorTag);
    if (index >= 0)
        m_operatorBox->setCurrentIndex(index);
}

QWidget *ZBSmartListRuleRow::valueEditor() const
{
    switch (field())
    {
        case Rules::FieldType:
            return m_typeBox;
        case Rules::FieldRating:
            return m_ratingEditor;
        case Rules::FieldPlayCount:
            return m_numberEdit;
        case Rules::FieldAdded:
        case Rules::FieldLastPlayed:
            return m_dateEdit;
        default:
            return m_textEdit;
    }
}

void ZBSmartListRuleRow::setRow(const ZBSmartListRules::Row &row)
{
    {
        const QSignalBlocker fieldBlocker(m_fieldBox);
        const QSignalBlocker operatorBlocker(m_operatorBox);
        const int fieldIndex = m_fieldBox->findData(row.field);
        if (fieldIndex >= 0)
            m_fieldBox->setCurrentIndex(fieldIndex);
        fillOperators(Rules::fieldKind(field()));
        const int operatorIndex = m_operatorBox->findData(row.op);
        if (operatorIndex >= 0)
            m_operatorBox->setCurrentIndex(operatorIndex);
    }
    showEditorForField();

    QSignalBlocker valueBlocker(this);
    m_keptRating.clear();
    m_keptDate = QDateTime();
    switch (field())
    {
        case Rules::FieldType:
            m_typeBox->setEditText(row.value.toString());
            break;
        case Rules::FieldPlayCount:
            m_numberEdit->setText(row.value.toString());
            break;
        case Rules::FieldRating:
        {
            const QString written = row.value.toString();
            bool whole = false;
            const int stars = written.toInt(&whole);
            if (whole && stars >= 0 && stars <= ZBStarRatingEditor::MaximumRating)
            {
                m_ratingEditor->setRating(stars);
            }
            else
            {
                // Shown as the nearest number of stars, but written back as it
                // was unless the user picks a rating.
                m_ratingEditor->setRating(qRound(written.toDouble()));
                m_keptRating = written;
                m_keptRatingStars = m_ratingEditor->rating();
            }
            break;
        }
        case Rules::FieldAdded:
        case Rules::FieldLastPlayed:
        {
            QDateTime date = row.value.toDateTime();
            if (!date.isValid() && row.value.typeId() == QMetaType::QDate)
                date = row.value.toDate().startOfDay(Qt::LocalTime);
            if (!date.isValid())
                break;
            date = date.toLocalTime();
            m_dateEdit->setText(date.date().toString(dateFormat()));
            if (date != date.date().startOfDay(Qt::LocalTime))
            {
                m_keptDate = date;
                m_keptDateText = m_dateEdit->text();
            }
            break;
        }
        default:
            m_textEdit->setText(row.value.toString());
            break;
    }
    valueBlocker.unblock();
    Q_EMIT changed();
}

ZBSmartListRules::Row ZBSmartListRuleRow::row() const
{
    ZBSmartListRules::Row row;
    row.field = field();
    row.op = op();
    switch (row.field)
    {
        case Rules::FieldType:
            row.value = m_typeBox->currentText();
            break;
        case Rules::FieldPlayCount:
            row.value = m_numberEdit->text();
            break;
        case Rules::FieldRating:
            if (!m_keptRating.isNull() && m_ratingEditor->rating() == m_keptRatingStars)
                row.value = m_keptRating;
            else
                row.value = QString::number(m_ratingEditor->rating());
            break;
        case Rules::FieldAdded:
        case Rules::FieldLastPlayed:
            if (m_keptDate.isValid() && m_dateEdit->text() == m_keptDateText)
                row.value = m_keptDate;
            else
                row.value = m_dateEdit->text().trimmed();
            break;
        default:
            row.value = m_textEdit->text();
            break;
    }
    return row;
}

QString ZBSmartListRuleRow::valueText() const
{
    if (valueEditor() == m_dateEdit)
        return m_dateEdit->text();
    return row().value.toString();
}

void ZBSmartListRuleRow::setRemoveEnabled(bool enabled)
{
    m_removeButton->setEnabled(enabled);
}

QList<QWidget *> ZBSmartListRuleRow::tabChain() const
{
    return {m_fieldBox,     m_operatorBox, m_textEdit,   m_typeBox,      m_numberEdit,
            m_ratingEditor, m_dateEdit,    m_dateButton, m_removeButton, m_addButton};
}
