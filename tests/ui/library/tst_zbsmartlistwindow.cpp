#include <QApplication>
#include <QCalendarWidget>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QToolButton>
#include <QtTest>

#include "library/zbsmartlistrules.h"
#include "localization/zblocalizer.h"
#include "predicate/zbpredicate.h"
#include "ui/library/zbsmartlistrulerow.h"
#include "ui/library/zbsmartlistwindow.h"
#include "ui/widgets/zbstarratingeditor.h"

namespace
{
using Rules = ZBSmartListRules;

bool choose(QComboBox *box, int tag)
{
    box->setCurrentIndex(box->findData(tag));
    return box->currentData() == tag;
}

QString dateLiteral(QDate date)
{
    return ZBPredicate::dateLiteral(date.startOfDay(Qt::LocalTime));
}

QString shownValue(const ZBSmartListRuleRow *row)
{
    QWidget *editor = row->valueEditor();
    if (editor == row->typeBox())
        return row->typeBox()->currentText();
    if (editor == row->ratingEditor())
        return QString::number(row->ratingEditor()->rating());
    auto *edit = qobject_cast<QLineEdit *>(editor);
    return edit ? edit->text() : QStringLiteral("<no editor>");
}

void replaceText(QLineEdit *edit, const QString &text)
{
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Backspace);
    QTest::keyClicks(edit, text);
}

// Typed, or for ratings a click on that star, as a user enters a value.
void enterValue(ZBSmartListRuleRow *row, const QString &value)
{
    QWidget *editor = row->valueEditor();
    if (editor == row->ratingEditor())
    {
        QTest::mouseClick(editor, Qt::LeftButton, {}, row->ratingEditor()->starRect(value.toInt()).center());
        return;
    }
    // Only a focused type box completes what is typed.
    editor->setFocus();
    QTRY_VERIFY(editor->hasFocus());
    replaceText(editor == row->typeBox() ? row->typeBox()->lineEdit() : qobject_cast<QLineEdit *>(editor), value);
}

void showAndActivate(QWidget &window)
{
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
}

} // namespace

class TestZBSmartListWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { ZBLocalizer::setLanguage(QStringLiteral("English")); }

    void existingRequestsAreShownKeptOrRefused()
    {
        ZBSmartListWindow window;
        window.show();
        const QString every = QStringLiteral("(Path ENDSWITH[CD] '.mov') AND (PlayCount > 2) AND (Rating == 5) AND "
                                             "(LastPlayed < %1) AND (Type MATCHES[CD] 'rm|rv')")
                                  .arg(dateLiteral(QDate(2020, 1, 31)));
        QVERIFY2(window.fillRules(every), qPrintable(window.lastError()));
        QStringList shown;
        for (int i = 0; i < window.rowCount(); ++i)
            shown << shownValue(window.ruleRow(i));
        QCOMPARE(shown, (QStringList{".mov", "2", "5", "2020-01-31", "rm|rv"}));
        QCOMPARE(window.generatePredicate(), every);

        // What the editors cannot show (half stars, a time of day) is kept as
        // long as the user leaves that row alone; then the new value counts.
        const QString beyond = QStringLiteral("(Rating > 2.5) OR (Added > %1)")
                                   .arg(ZBPredicate::dateLiteral(QDateTime(QDate(2022, 6, 1), QTime(13, 45, 10))));
        QVERIFY(window.fillRules(beyond));
        QVERIFY(!window.matchAll());
        QCOMPARE(shownValue(window.ruleRow(0)) + u' ' + shownValue(window.ruleRow(1)), QStringLiteral("3 2022-06-01"));
        QCOMPARE(window.generatePredicate(), beyond);
        enterValue(window.ruleRow(0), QStringLiteral("4"));
        replaceText(window.ruleRow(1)->dateEdit(), QStringLiteral("2022-06-02"));
        const QString edited = QStringLiteral("(Rating > 4) OR (Added > %1)").arg(dateLiteral(QDate(2022, 6, 2)));
        QCOMPARE(window.generatePredicate(), edited);

        // What the rows cannot hold is refused and the rows stay as they were.
        for (const char *text : {"(Name CONTAINS[CD] 'a') AND (Path CONTAINS[CD] 'b') OR (URL == 'c')", "(Length > 10)",
                                 "(Name CONTAINS 'a')", "(Name CONTAINS[CD] 'a'"})
        {
            QVERIFY2(!window.fillRules(QLatin1String(text)), text);
            QVERIFY(!window.lastError().isEmpty());
            QCOMPARE(window.generatePredicate(), edited);
        }
        QVERIFY(!window.addRow({Rules::FieldAdded, Rules::DateLater, QStringLiteral("yesterday")}));
        // One rule says neither; it is read as "all", as for a new list.
        QVERIFY(window.fillRules(QStringLiteral("(Name CONTAINS[CD] 'a')")));
        QVERIFY(window.matchAll());
    }

    void rulesEditedByMouseAndKeyboard()
    {
        ZBSmartListWindow window;
        window.setDefaultPredicate();
        showAndActivate(window);
        QVERIFY(!window.ruleRow(0)->removeButton()->isEnabled());
        QTest::keyClicks(window.ruleRow(0)->textEdit(), QStringLiteral("a"));
        QTest::mouseClick(window.ruleRow(0)->addButton(), Qt::LeftButton);
        QTest::keyClicks(window.ruleRow(1)->textEdit(), QStringLiteral("c"));
        // Space on "+" puts a new rule right below its own row, not at the
        // end, and carries the focus into it.
        window.ruleRow(0)->addButton()->setFocus();
        QTRY_VERIFY(window.ruleRow(0)->addButton()->hasFocus());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.ruleRow(1)->fieldBox()));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("new"));
        QCOMPARE(window.generatePredicate(), QStringLiteral("(Name CONTAINS[CD] 'a') AND (Name CONTAINS[CD] 'new') AND "
                                                            "(Name CONTAINS[CD] 'c')"));
        // Space on "-" removes; the focus goes to the rule now in its place,
        // or for the last rule to the one above.
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.ruleRow(1)->fieldBox()));
        QCOMPARE(shownValue(window.ruleRow(1)), QStringLiteral("c"));
        window.ruleRow(1)->removeButton()->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.ruleRow(0)->fieldBox()));
        QCOMPARE(window.generatePredicate(), QStringLiteral("(Name CONTAINS[CD] 'a')"));

        ZBSmartListRuleRow *row = window.ruleRow(0);
        QVERIFY(choose(row->operatorBox(), Rules::TextBeginsWith));
        replaceText(row->textEdit(), QStringLiteral("abc"));
        // Same kind: operator and value stay; another kind brings its own
        // operators, the first one chosen, and each editor keeps its value.
        QVERIFY(choose(row->fieldBox(), Rules::FieldPath));
        QCOMPARE(window.generatePredicate(), QStringLiteral("(Path BEGINSWITH[CD] 'abc')"));
        QVERIFY(choose(row->fieldBox(), Rules::FieldPlayCount));
        QVERIFY(choose(row->fieldBox(), Rules::FieldName));
        QCOMPARE(window.generatePredicate(), QStringLiteral("(Name MATCHES[CD] 'abc')"));

        QVERIFY(choose(row->fieldBox(), Rules::FieldAdded));
        replaceText(row->dateEdit(), QStringLiteral("2024-02-28"));
        row->dateButton()->setFocus();
        QTest::keyClick(row->dateButton(), Qt::Key_Space);
        QTRY_VERIFY(row->calendar() && row->calendar()->isVisible());
        // It opens on the typed day, with the keyboard in it.
        QCOMPARE(row->calendar()->selectedDate(), QDate(2024, 2, 28));
        QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget *>(row->calendar()->focusWidget()));
        for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Right, Qt::Key_Return})
            QTest::keyClick(QApplication::focusWidget(), key);
        QTRY_VERIFY(!row->calendar()->isVisible());
        QCOMPARE(window.generatePredicate(), QStringLiteral("(Added < %1)").arg(dateLiteral(QDate(2024, 3, 1))));
        // Return chose the day; it did not close the window.
        QVERIFY(window.isVisible());
    }

    // A second rule entered the way a user does, then OK.
    void okTakesTheRulesOrRefusesBadInput_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("field");
        QTest::addColumn<int>("op");
        QTest::addColumn<QString>("typed");
        // Refused with this message ("*": any); empty: taken as `rule`.
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("rule");
        const QString number = ZBLocalizer::localizedStringForKey(QStringLiteral("SmartListWindow_ErrorNumber"))
                                   .arg(QStringLiteral("2"), QStringLiteral("abc"));
        const int count = Rules::FieldPlayCount, name = Rules::FieldName, added = Rules::FieldAdded;
        // -1: left as a new row has it. A typed type prefix stays as typed:
        // "fl" must not be completed to "flv".
        const std::tuple<const char *, const char *, int, int, const char *, QString, const char *> rows[] = {
            {"new row", "Plays", -1, -1, "rock AND roll", "", "(Name CONTAINS[CD] 'rock and roll')"},
            {"quoted", "Plays", name, Rules::TextEquals, "it's", "", "(Name MATCHES[CD] 'it\\'s')"},
            {"type prefix", "Plays", Rules::FieldType, Rules::TextBeginsWith, "fl", "", "(Type BEGINSWITH[CD] 'fl')"},
            {"count", "Plays", count, Rules::NumberGreater, " 12 ", "", "(PlayCount > 12)"},
            {"negative fraction", "Plays", count, Rules::NumberGreater, "-2.5", "", "(PlayCount > -2.5)"},
            {"plain text for contains", "Plays", name, Rules::TextContains, "a(", "", "(Name CONTAINS[CD] 'a(')"},
            {"word", "Plays", count, Rules::NumberGreater, "abc", number, ""},
            {"no such day", "Plays", added, Rules::DateLater, "2024-02-30", "*", ""},
            {"beyond a request", "Plays", added, Rules::DateLater, "9000-01-01", "*", ""},
            {"bad pattern for is", "Plays", name, Rules::TextEquals, "a(", "*", ""},
            {"blank name", "   ", name, Rules::TextContains, "x", "*", ""}};
        for (const auto &[tag, name, field, op, typed, message, rule] : rows)
            QTest::newRow(tag) << QString::fromUtf8(name) << field << op << QString::fromUtf8(typed) << message
                               << QString::fromUtf8(rule);
    }

    void okTakesTheRulesOrRefusesBadInput()
    {
        QFETCH(QString, name);
        QFETCH(int, field);
        QFETCH(int, op);
        QFETCH(QString, typed);
        QFETCH(QString, message);
        QFETCH(QString, rule);
        ZBSmartListWindow window;
        window.setPlayListName(name);
        QVERIFY(window.addRow({Rules::FieldPath, Rules::TextContains, QStringLiteral("(")}));
        window.addEmptyRow();
        ZBSmartListRuleRow *row = window.ruleRow(1);
        QVERIFY(field < 0 || (choose(row->fieldBox(), field) && choose(row->operatorBox(), op)));
        showAndActivate(window);
        enterValue(row, typed);
        QSignalSpy accepted(&window, &ZBSmartListWindow::smartListAccepted);
        QTest::mouseClick(window.okButton(), Qt::LeftButton);
        QCOMPARE(accepted.count(), message.isEmpty() ? 1 : 0);
        if (message.isEmpty())
        {
            QCOMPARE(window.predicate(), QStringLiteral("(Path CONTAINS[CD] '(') AND ") + rule);
            return;
        }
        if (message != u"*")
            QCOMPARE(window.validationMessage(), message);
        const auto *label = window.findChild<QLabel *>(QStringLiteral("messageLabel"));
        QVERIFY(!window.validationMessage().isEmpty() && label->isVisible());
        QWidget *culprit = name.trimmed().isEmpty() ? window.nameEdit() : row->valueEditor();
        QCOMPARE(QApplication::focusWidget(), culprit);
        // Nothing typed is lost, and the message goes once the input changes.
        QCOMPARE(shownValue(row), typed);
        QTest::keyClick(culprit, Qt::Key_1);
        QVERIFY(!label->isVisible());
    }

    // OK, Cancel, the close box, and Return (OK) or Escape (Cancel) wherever
    // the focus is; the "+" button must not add a row on the way out.
    void closing()
    {
        const std::tuple<const char *, int, const char *> ways[] = {
            {"ok", Rules::FieldRating, ""},        {"cancel", Rules::FieldName, ""},
            {"close", Rules::FieldName, ""},       {"Return", Rules::FieldName, "add"},
            {"Return", Rules::FieldType, "value"}, {"Return", Rules::FieldAdded, "value"},
            {"Escape", Rules::FieldType, "value"}, {"Escape", Rules::FieldName, "match"}};
        for (const auto &[how, field, focus] : ways)
        {
            const QByteArray way(how), tag = way + " in " + focus + " of " + QByteArray::number(field);
            const bool accept = way == "ok" || way == "Return";
            ZBSmartListWindow window;
            window.setPlayListName(QStringLiteral("Flash"));
            window.setDefaultPredicate();
            ZBSmartListRuleRow *row = window.ruleRow(0);
            QVERIFY(choose(row->fieldBox(), field));
            row->numberEdit()->setText(QStringLiteral("1"));
            showAndActivate(window);
            QSignalSpy accepted(&window, &ZBSmartListWindow::smartListAccepted);
            QSignalSpy closed(&window, &ZBSmartListWindow::smartListWindowClose);
            QWidget *target = QByteArray(focus) == "match" ? window.matchBox()
                              : QByteArray(focus) == "add" ? row->addButton()
                                                           : row->valueEditor();
            if (way == "ok")
                enterValue(row, QStringLiteral("5"));
            if (way == "ok" || way == "cancel")
                QTest::mouseClick(way == "ok" ? window.okButton() : window.cancelButton(), Qt::LeftButton);
            else if (way == "close")
                QVERIFY(window.close());
            else
            {
                target->setFocus();
                QTRY_VERIFY(target->hasFocus());
                QTest::keyClick(QApplication::focusWidget(), way == "Return" ? Qt::Key_Return : Qt::Key_Escape);
            }
            QTRY_VERIFY2(!window.isVisible(), tag);
            QCOMPARE(closed.count(), 1);
            // One rule, not one more from "+".
            QVERIFY2(accept != (window.predicate().isEmpty() || window.predicate().contains(QStringLiteral(" AND "))),
                     tag);
            const QList<QVariantList> expected{{QStringLiteral("Flash"), window.predicate()}};
            QCOMPARE(accepted, accept ? expected : QList<QVariantList>());
        }
    }

    void runsModallyAndStartsFreshWhenShownAgain()
    {
        ZBSmartListWindow window;
        window.setPlayListName(QStringLiteral("Modal"));
        window.setDefaultPredicate();
        QVERIFY(choose(window.ruleRow(0)->fieldBox(), Rules::FieldPlayCount));
        int refusals = 0;
        // A refused OK keeps the modal run going until the input is put right.
        QTimer::singleShot(0, &window,
                           [&]
                           {
                               window.okButton()->click();
                               refusals += window.isVisible() ? 1 : 0;
                               window.ruleRow(0)->numberEdit()->setText(QStringLiteral("4"));
                               window.okButton()->click();
                           });
        QCOMPARE(window.exec(), int(QDialog::Accepted));
        QCOMPARE(refusals, 1);
        QCOMPARE(window.predicate(), QStringLiteral("(PlayCount < 4)"));

        // Shown again without rows it offers one, so "+" is there to press.
        showAndActivate(window);
        QCOMPARE(window.ruleRow(0)->row(), Rules::Row({Rules::FieldName, Rules::TextContains, QString()}));
        QTRY_COMPARE(window.nameEdit()->selectedText(), QStringLiteral("Modal"));
    }

    // The star editor of rating rules, by mouse and by keyboard.
    void starsByMouseAndKeyboard()
    {
        // Right to left, start, button, where: 1 to 5 on that star, 0 before
        // the first star, negative for the gap just after that star, which
        // belongs to it; then the rating it gives.
        const std::tuple<bool, int, Qt::MouseButton, int, int> clicks[] = {
            {false, 0, Qt::LeftButton, 3, 3}, {false, 5, Qt::LeftButton, -2, 2}, {false, 1, Qt::LeftButton, 1, 0},
            {false, 4, Qt::LeftButton, 0, 0}, {false, 0, Qt::RightButton, 4, 0}, {true, 0, Qt::LeftButton, 2, 2},
            {true, 3, Qt::LeftButton, 0, 0}};
        for (const auto &[rtl, start, button, star, expected] : clicks)
        {
            ZBStarRatingEditor stars;
            stars.setLayoutDirection(rtl ? Qt::RightToLeft : Qt::LeftToRight);
            stars.resize(stars.sizeHint());
            stars.show();
            stars.setRating(start);
            const int middle = stars.height() / 2;
            const QPoint at = star > 0   ? stars.starRect(star).center()
                              : star < 0 ? QPoint(stars.starRect(-star).right() + 2, middle)
                                         : QPoint(rtl ? stars.width() - 2 : 1, middle);
            QTest::mouseClick(&stars, button, {}, at);
            QCOMPARE(stars.rating(), expected);
        }
        // Right to left, start, key, modifiers, the rating it gives; -1: left
        // to the window (Return is OK).
        // The fourth: with Ctrl.
        const std::tuple<bool, int, int, bool, int> keys[] = {
            {false, 5, Qt::Key_Right, false, 5}, {false, 0, Qt::Key_Left, false, 0},
            {false, 3, Qt::Key_Up, false, 4},    {false, 4, Qt::Key_Minus, false, 3},
            {false, 4, Qt::Key_Home, false, 0},  {false, 2, Qt::Key_End, false, 5},
            {false, 0, Qt::Key_2, false, 2},     {false, 1, Qt::Key_9, false, -1},
            {true, 0, Qt::Key_Left, false, 1},   {false, 1, Qt::Key_Return, false, -1},
            {false, 1, Qt::Key_3, true, -1}};
        for (const auto &[rtl, start, key, ctrl, expected] : keys)
        {
            ZBStarRatingEditor stars;
            stars.setLayoutDirection(rtl ? Qt::RightToLeft : Qt::LeftToRight);
            stars.setRating(start);
            QSignalSpy edited(&stars, &ZBStarRatingEditor::ratingEdited);
            QKeyEvent press(QEvent::KeyPress, key, ctrl ? Qt::ControlModifier : Qt::NoModifier);
            QApplication::sendEvent(&stars, &press);
            QVERIFY2(press.isAccepted() == (expected >= 0), qPrintable(QKeySequence(key).toString()));
            QCOMPARE(stars.rating(), expected < 0 ? start : expected);
            QCOMPARE(edited.count(), expected < 0 || expected == start ? 0 : 1);
        }
        // Dragged with the button down; moving without it is only hovering.
        ZBStarRatingEditor stars;
        stars.show();
        for (const auto &[star, buttons] : {std::pair{4, Qt::LeftButton}, {2, Qt::NoButton}})
        {
            const QPoint at = stars.starRect(star).center();
            QMouseEvent move(QEvent::MouseMove, at, stars.mapToGlobal(at), Qt::NoButton, buttons, Qt::NoModifier);
            QApplication::sendEvent(&stars, &move);
            QCOMPARE(stars.rating(), 4);
        }
    }
};

QTEST_MAIN(TestZBSmartListWindow)
#include "tst_zbsmartlistwindow.moc"
