#pragma once

#include <QDialog>
#include <QList>

#include "library/zbsmartlistrules.h"

class QComboBox;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QScrollArea;
class QVBoxLayout;
class ZBSmartListRuleRow;

// The smart-list editor: a name, an all/any choice and rule rows, turned into
// a smart list's Request and back through ZBSmartListRules.
//
// Use: the main window sets the mode (setAddOrEdit), the name and either the
// default row (setDefaultPredicate, new list) or the rows of the existing
// Request (fillRules, editing), then runs the editor modally with exec(), the
// way the program has always asked for a smart list, and reads predicate()
// and playListName() once it has closed. Shown with show() it works
// modelessly just the same and reports through its signals.
//
// Closing:
// - OK (the button or Return anywhere in the window) first checks the input:
//   a blank name, a number rule whose value is not a number, a date rule
//   whose value is not a "yyyy-MM-dd" date a request can hold, or an "is"
//   text rule whose value is not a valid regular expression is refused with a
//   message in the window, focus goes to the field at fault and nothing
//   closes. Otherwise predicate() becomes generatePredicate()'s text, the
//   rows are cleared, the window closes with QDialog::Accepted and emits
//   smartListAccepted(name, predicate) and then smartListWindowClose().
// - Cancel (the button, Escape or the window's close button) sets predicate()
//   to "", clears the rows, closes with QDialog::Rejected and emits
//   smartListWindowClose().
// QDialog's accepted(), rejected() and finished() are emitted as usual,
// before these two. The caller changes nothing for an empty predicate().
//
// While shown the window holds at least one row, because the "+" that adds
// rows sits on each row: showing it without rows adds the default row, and
// the last row's "-" is unavailable.
class ZBSmartListWindow : public QDialog
{
    Q_OBJECT

public:
    explicit ZBSmartListWindow(QWidget *parent = nullptr);
    ~ZBSmartListWindow() override;

    // True for a new list, false when editing one; the caller's record only.
    void setAddOrEdit(bool add) { m_addOrEdit = add; }
    bool AddOrEdit() const { return m_addOrEdit; }
    void setPlayListName(const QString &name);
    // The name field as typed.
    QString playListName() const;
    // The text OK produced; "" before that, after Cancel and once the window
    // is shown again.
    QString predicate() const { return m_predicate; }

    // One row: Name contains "".
    void setDefaultPredicate();
    // Replaces the rows and the all/any choice by those of a Request. False,
    // with everything unchanged and lastError() saying why, for a text that
    // is not made of rules; the empty text gives no rows.
    bool fillRules(const QString &request);
    // Why the last fillRules() or addRow() failed; not meant for users (it
    // is the reader's own English).
    QString lastError() const { return m_lastError; }

    // Row maintenance. addRow() appends a row ZBSmartListRules accepts and
    // returns false (lastError() set, nothing added) for any other.
    bool addRow(const ZBSmartListRules::Row &row);
    // Appends, or inserts at index (clamped), a row with the default field
    // and operator and an empty value.
    void addEmptyRow();
    void insertEmptyRow(int index);
    bool removeRow(int index);
    void removeAllRows();
    int rowCount() const { return static_cast<int>(m_rows.size()); }
    ZBSmartListRuleRow *ruleRow(int index) const;

    // The all/any pop-up: all joins the rules with AND, any with OR.
    void setMatchAll(bool all);
    bool matchAll() const;

    // The rows as shown, read into ZBSmartListRules; a date rule whose text
    // is not a date is left out (OK refuses it).
    ZBSmartListRules rules() const;
    QString generatePredicate() const;

    // The message the last refused OK shows, "" when none is shown.
    QString validationMessage() const;

    // Wider than the rows need, so values have room to be read.
    QSize sizeHint() const override;

    QLineEdit *nameEdit() const { return m_nameEdit; }
    QComboBox *matchBox() const { return m_matchBox; }
    QPushButton *okButton() const { return m_okButton; }
    QPushButton *cancelButton() const { return m_cancelButton; }

public Q_SLOTS:
    void buttonOkClick();
    void buttonCancelClick();
    // Every way of closing comes through here: QDialog::Accepted checks the
    // input first and may keep the window open.
    void done(int result) override;

Q_SIGNALS:
    void smartListAccepted(const QString &name, const QString &predicate);
    void smartListWindowClose(ZBSmartListWindow *editor);

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    ZBSmartListRuleRow *insertRowWidget(int index, const ZBSmartListRules::Row &row);
    void rowsChanged();
    void growToFit();
    void scrollToLater(QWidget *widget);
    // The first fault of the input, with the widget to focus; "" when none.
    QString findFault(QWidget **culprit) const;
    void showMessage(const QString &message);

    bool m_addOrEdit = true;
    bool m_selectNameOnFocus = false;
    QString m_predicate;
    QString m_lastError;
    QList<ZBSmartListRuleRow *> m_rows;

    QLineEdit *m_nameEdit;
    QComboBox *m_matchBox;
    QScrollArea *m_scrollArea;
    QWidget *m_rowsWidget;
    QVBoxLayout *m_rowsLayout;
    QLabel *m_messageLabel;
    QDialogButtonBox *m_buttonBox;
    QPushButton *m_okButton;
    QPushButton *m_cancelButton;
};
