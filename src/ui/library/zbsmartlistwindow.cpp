#include "ui/library/zbsmartlistwindow.h"

#include <QComboBox>
#include <QDate>
#include <QDialogButtonBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

#include "localization/zblocalizer.h"
#include "predicate/zbpredicate.h"
#include "ui/library/zbsmartlistrulerow.h"

namespace
{
using Rules = ZBSmartListRules;

QString text(const char *key)
{
    return ZBLocalizer::localizedStringForKey(QLatin1String(key));
}

bool isNumberConstant(const ZBPredicateExpression &expression)
{
    if (!expression.isConstant())
        return false;
    const int type = expression.constantValue().typeId();
    return type == QMetaType::LongLong || type == QMetaType::Double || type == QMetaType::Int;
}
} // namespace

ZBSmartListWindow::ZBSmartListWindow(QWidget *parent)
    : QDialog(parent)
    , m_nameEdit(new QLineEdit(this))
    , m_matchBox(new QComboBox(this))
    , m_scrollArea(new QScrollArea(this))
    , m_rowsWidget(new QWidget)
    , m_rowsLayout(new QVBoxLayout(m_rowsWidget))
    , m_messageLabel(new QLabel(this))
    , m_buttonBox(new QDialogButtonBox(this))
    , m_okButton(nullptr)
    , m_cancelButton(nullptr)
{
    setWindowTitle(text("SmartListWindow_Title"));

    auto *nameLabel = new QLabel(text("SmartListWindow_Name"), this);
    nameLabel->setBuddy(m_nameEdit);
    auto *nameLayout = new QHBoxLayout;
    nameLayout->addWidget(nameLabel);
    nameLayout->addWidget(m_nameEdit, 1);

    // The joiner is read from the entry's data, not from its title, so a
    // translation that happens to spell both entries alike still works.
    m_matchBox->addItem(text("smartWindowRuleAll"), true);
    m_matchBox->addItem(text("smartWindowRuleAny"), false);
    auto *matchLabel = new QLabel(text("SmartListWindow_Match"), this);
    matchLabel->setBuddy(m_matchBox);
    auto *rulesLabel = new QLabel(text("SmartListWindow_OfTheFollowingRules"), this);
    auto *matchLayout = new QHBoxLayout;
    matchLayout->addWidget(matchLabel);
    matchLayout->addWidget(m_matchBox);
    matchLayout->addWidget(rulesLabel);
    matchLayout->addStretch(1);

    m_rowsLayout->setContentsMargins(6, 6, 6, 6);
    m_rowsLayout->setSpacing(4);
    m_rowsLayout->addStretch(1);
    m_scrollArea->setWidget(m_rowsWidget);
    m_scrollArea->setWidgetResizable(true);
    m_scrollArea->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scrollArea->setFocusPolicy(Qt::NoFocus);
    {
        // Rows never scroll sideways, so the area must be wide enough for
        // one, scroll bar included; and it never shrinks below one row.
        const ZBSmartListRuleRow probe;
        const int frame = 2 * m_scrollArea->frameWidth();
        const QMargins margins = m_rowsLayout->contentsMargins();
        m_scrollArea->setMinimumWidth(probe.sizeHint().width() + margins.left() + margins.right() + frame +
                                      m_scrollArea->verticalScrollBar()->sizeHint().width());
        m_scrollArea->setMinimumHeight(probe.sizeHint().height() + margins.top() + margins.bottom() + frame);
    }

    m_messageLabel->setObjectName(QStringLiteral("messageLabel"));
    m_messageLabel->setWordWrap(true);
    m_messageLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // A red that stays readable on light and on dark window colours.
    QPalette warning = m_messageLabel->palette();
    const bool dark = warning.color(QPalette::Window).lightness() < 128;
    warning.setColor(QPalette::WindowText, dark ? QColor(0xff, 0x7a, 0x7a) : QColor(0xb0, 0x1e, 0x1e));
    m_messageLabel->setPalette(warning);
    m_messageLabel->hide();

    m_okButton = m_buttonBox->addButton(ZBLocalizer::okButtonTitle(), QDialogButtonBox::AcceptRole);
    m_cancelButton = m_buttonBox->addButton(ZBLocalizer::cancelButtonTitle(), QDialogButtonBox::RejectRole);
    // Return means OK wherever the focus is, Space presses a focused button;
    // an auto-default button would take Return for itself while focused.
    m_cancelButton->setAutoDefault(false);
    m_okButton->setDefault(true);
    connect(m_okButton, &QPushButton::clicked, this, &ZBSmartListWindow::buttonOkClick);
    connect(m_cancelButton, &QPushButton::clicked, this, &ZBSmartListWindow::buttonCancelClick);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(nameLayout);
    layout->addLayout(matchLayout);
    layout->addWidget(m_scrollArea, 1);
    layout->addWidget(m_messageLabel);
    layout->addWidget(m_buttonBox);

    connect(m_nameEdit, &QLineEdit::textChanged, this, [this] { showMessage(QString()); });
    m_nameEdit->installEventFilter(this);

    setTabOrder(m_nameEdit, m_matchBox);
}

ZBSmartListWindow::~ZBSmartListWindow() = default;

QSize ZBSmartListWindow::sizeHint() const
{
    QSize size = QDialog::sizeHint();
    size.setWidth(qMax(size.width(), fontMetrics().averageCharWidth() * 105));
    return size;
}

void ZBSmartListWindow::setPlayListName(const QString &name)
{
    m_nameEdit->setText(name);
}

QString ZBSmartListWindow::playListName() const
{
    return m_nameEdit->text();
}

void ZBSmartListWindow::setMatchAll(bool all)
{
    m_matchBox->setCurrentIndex(m_matchBox->findData(all));
}

bool ZBSmartListWindow::matchAll() const
{
    return m_matchBox->currentData().toBool();
}

ZBSmartListRuleRow *ZBSmartListWindow::ruleRow(int index) const
{
    return index >= 0 && index < rowCount() ? m_rows[index] : nullptr;
}

void ZBSmartListWindow::setDefaultPredicate()
{
    Rules rules;
    rules.setDefaultPredicate();
    removeAllRows();
    for (const Rules::Row &row : rules.rows())
        insertRowWidget(rowCount(), row);
    // A new list starts as the program always offered it: match all.
    setMatchAll(true);
}

bool ZBSmartListWindow::fillRules(const QString &request)
{
    Rules rules;
    if (!rules.fillRules(request))
    {
        m_lastError = rules.lastError();
        return false;
    }
    m_lastError.clear();
    removeAllRows();
    for (const Rules::Row &row : rules.rows())
        insertRowWidget(rowCount(), row);
    setMatchAll(rules.matchAll());
    return true;
}

bool ZBSmartListWindow::addRow(const ZBSmartListRules::Row &row)
{
    Rules rules;
    if (!rules.addRow(row))
    {
        m_lastError = rules.lastError();
        return false;
    }
    m_lastError.clear();
    insertRowWidget(rowCount(), rules.rows().constFirst());
    return true;
}

void ZBSmartListWindow::addEmptyRow()
{
    insertEmptyRow(rowCount());
}

void ZBSmartListWindow::insertEmptyRow(int index)
{
    Rules rules;
    rules.addEmptyRow();
    insertRowWidget(qBound(0, index, rowCount()), rules.rows().constFirst());
}

ZBSmartListRuleRow *ZBSmartListWindow::insertRowWidget(int index, const ZBSmartListRules::Row &row)
{
    auto *widget = new ZBSmartListRuleRow(m_rowsWidget);
    widget->setRow(row);
    m_rows.insert(index, widget);
    m_rowsLayout->insertWidget(index, widget);
    widget->show();

    connect(widget, &ZBSmartListRuleRow::addRequested, this,
            [this, widget]
            {
                const int next = static_cast<int>(m_rows.indexOf(widget)) + 1;
                insertEmptyRow(next);
                m_rows[next]->fieldBox()->setFocus(Qt::TabFocusReason);
                scrollToLater(m_rows[next]);
            });
    connect(widget, &ZBSmartListRuleRow::removeRequested, this,
            [this, widget]
            {
                const int index = static_cast<int>(m_rows.indexOf(widget));
                if (rowCount() < 2 || !removeRow(index))
                    return;
                // Keyboard users carry on from the row that took its place.
                ZBSmartListRuleRow *next = m_rows[qMin(index, rowCount() - 1)];
                next->fieldBox()->setFocus(Qt::TabFocusReason);
                scrollToLater(next);
            });
    connect(widget, &ZBSmartListRuleRow::changed, this, [this] { showMessage(QString()); });

    rowsChanged();
    return widget;
}

void ZBSmartListWindow::scrollToLater(QWidget *widget)
{
    // A row just added has no place yet; the layout gives it one before the
    // queued call runs.
    QMetaObject::invokeMethod(
        this,
        [this, target = QPointer<QWidget>(widget)]
        {
            if (target)
                m_scrollArea->ensureWidgetVisible(target);
        },
        Qt::QueuedConnection);
}

bool ZBSmartListWindow::removeRow(int index)
{
    if (index < 0 || index >= rowCount())
        return false;
    ZBSmartListRuleRow *widget = m_rows.takeAt(index);
    m_rowsLayout->removeWidget(widget);
    widget->hide();
    // Later, not now: the request may come from the row's own "-" button,
    // which is still inside its click handling.
    widget->deleteLater();
    rowsChanged();
    return true;
}

void ZBSmartListWindow::removeAllRows()
{
    while (rowCount() > 0)
        removeRow(rowCount() - 1);
}

void ZBSmartListWindow::rowsChanged()
{
    for (ZBSmartListRuleRow *row : std::as_const(m_rows))
        row->setRemoveEnabled(rowCount() > 1);

    // Rows inserted in the middle were created last; without this, Tab would
    // visit them after all the others. The buttons keep their place after
    // the rows: the button box orders them and hands its focus to the first.
    QWidget *previous = m_matchBox;
    for (ZBSmartListRuleRow *row : std::as_const(m_rows))
    {
        for (QWidget *widget : row->tabChain())
        {
            setTabOrder(previous, widget);
            previous = widget;
        }
    }
    // Also grows the window to fit the rows.
    showMessage(QString());
}

void ZBSmartListWindow::growToFit()
{
    // Grow with the rows (up to the scroll area's own limit) and the
    // message, but never shrink a window the user made larger.
    if (!isVisible())
        return;
    layout()->activate();
    const int wanted = sizeHint().height();
    if (height() < wanted)
        resize(width(), wanted);
}

ZBSmartListRules ZBSmartListWindow::rules() const
{
    Rules rules;
    rules.setMatchAll(matchAll());
    for (const ZBSmartListRuleRow *row : m_rows)
        rules.addRow(row->row());
    return rules;
}

QString ZBSmartListWindow::generatePredicate() const
{
    return rules().generatePredicate();
}

QString ZBSmartListWindow::findFault(QWidget **culprit) const
{
    if (m_nameEdit->text().trimmed().isEmpty())
    {
        *culprit = m_nameEdit;
        return text("SmartListWindow_ErrorName");
    }
    for (int i = 0; i < rowCount(); ++i)
    {
        const ZBSmartListRuleRow *widget = m_rows[i];
        const Rules::Row row = widget->row();
        const Rules::ValueKind kind = Rules::fieldKind(row.field);

        // The rule is read back the way the store will read it, so what is
        // refused here is exactly what would not work there.
        Rules single;
        const bool taken = single.addRow(row);
        const ZBPredicate predicate = taken ? ZBPredicate::parse(single.generatePredicate()) : ZBPredicate();
        const ZBPredicateNode *node = predicate.root();
        const bool comparison = node && node->type() == ZBPredicateNode::Type::Comparison;
        const QString number = QString::number(i + 1);

        QString fault;
        switch (kind)
        {
            case Rules::ValueKind::Date:
                if (!comparison)
                {
                    fault = text("SmartListWindow_ErrorDate")
                                .arg(number, widget->valueText(),
                                     QDate::currentDate().toString(ZBSmartListRuleRow::dateFormat()));
                }
                break;
            case Rules::ValueKind::Number:
                if (!comparison || !isNumberConstant(node->right()))
                    fault = text("SmartListWindow_ErrorNumber").arg(number, widget->valueText());
                break;
            case Rules::ValueKind::Text:
                // Only "is" reads its value as a regular expression.
                if (row.op == Rules::TextEquals && (!comparison || !node->regularExpression().isValid()))
                {
                    fault = text("SmartListWindow_ErrorPattern")
                                .arg(number, widget->valueText(),
                                     ZBLocalizer::localizedStringForKey(Rules::operatorTitleKey(row.op)));
                }
                break;
        }
        if (!fault.isEmpty())
        {
            *culprit = widget->valueEditor();
            return fault;
        }
    }
    return QString();
}

void ZBSmartListWindow::showMessage(const QString &message)
{
    m_messageLabel->setText(message);
    m_messageLabel->setVisible(!message.isEmpty());
    growToFit();
}

QString ZBSmartListWindow::validationMessage() const
{
    return m_messageLabel->text();
}

void ZBSmartListWindow::buttonOkClick()
{
    done(QDialog::Accepted);
}

void ZBSmartListWindow::buttonCancelClick()
{
    done(QDialog::Rejected);
}

void ZBSmartListWindow::done(int result)
{
    if (result == QDialog::Accepted)
    {
        QWidget *culprit = nullptr;
        const QString fault = findFault(&culprit);
        if (!fault.isEmpty())
        {
            showMessage(fault);
            if (culprit)
            {
                m_scrollArea->ensureWidgetVisible(culprit);
                culprit->setFocus(Qt::OtherFocusReason);
                if (auto *edit = qobject_cast<QLineEdit *>(culprit))
                    edit->selectAll();
            }
            return;
        }
        m_predicate = generatePredicate();
    }
    else
    {
        m_predicate.clear();
    }
    const QString name = playListName();
    removeAllRows();
    showMessage(QString());
    QDialog::done(result);
    if (result == QDialog::Accepted)
        Q_EMIT smartListAccepted(name, m_predicate);
    Q_EMIT smartListWindowClose(this);
}

void ZBSmartListWindow::showEvent(QShowEvent *event)
{
    m_predicate.clear();
    if (rowCount() == 0)
        addEmptyRow();
    QDialog::showEvent(event);
    // Selected so that typing replaces the proposed name. Done on the first
    // focus-in: the line edit drops its selection when the window that last
    // showed it went away, and the platform hands out focus only once the
    // window is active.
    m_selectNameOnFocus = true;
    m_nameEdit->setFocus(Qt::OtherFocusReason);
    if (m_nameEdit->hasFocus())
    {
        m_nameEdit->selectAll();
        m_selectNameOnFocus = false;
    }
}

bool ZBSmartListWindow::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_nameEdit && event->type() == QEvent::FocusIn && m_selectNameOnFocus)
    {
        m_selectNameOnFocus = false;
        // After the line edit's own handling, which may place the cursor.
        QMetaObject::invokeMethod(m_nameEdit, &QLineEdit::selectAll, Qt::QueuedConnection);
    }
    return QDialog::eventFilter(watched, event);
}
