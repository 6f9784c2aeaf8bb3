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

QString localized(const char *key)
{
    return ZBLocalizer::localizedStringForKey(QLatin1String(key));
}

bool choose(QComboBox *box, int tag)
{
    const int index = box->findData(tag);
    if (index >= 0)
        box->setCurrentIndex(index);
    return index >= 0;
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

QWidget *focused()
{
    return QApplication::focusWidget();
}
} // namespace

class TestZBSmartListWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { ZBLocalizer::setLanguage(QStringLiteral("English")); }

    void rowsBecomeTheRequest_data()
    {
        QTest::addColumn<int>("field");
        QTest::addColumn<int>("op");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("expected");
        const QString added = QStringLiteral("(Added > %1)").arg(dateLiteral(QDate(2024, 3, 5)));
        // -1: left as a new list's row has it. A typed type prefix stays as
        // typed: "fl" must not be completed to "flv".
        const std::tuple<const char *, int, int, const char *, QString> rows[] = {
            {"new row", -1, -1, "rock AND roll", "(Name CONTAINS[CD] 'rock and roll')"},
            {"path", Rules::FieldPath, Rules::TextBeginsWith, "/media", "(Path BEGINSWITH[CD] '/media')"},
            {"quoted", Rules::FieldName, Rules::TextEquals, "it's", "(Name MATCHES[CD] 'it\\'s')"},
            {"type prefix", Rules::FieldType, Rules::TextBeginsWith, "fl", "(Type BEGINSWITH[CD] 'fl')"},
            {"count", Rules::FieldPlayCount, Rules::NumberGreater, " 12 ", "(PlayCount > 12)"},
            {"rating by a star", Rules::FieldRating, Rules::NumberIs, "4", "(Rating == 4)"},
            {"date", Rules::FieldAdded, Rules::DateLater, "2024-03-05", added}};
        for (const auto &[tag, field, op, value, expected] : rows)
            QTest::newRow(tag) << field << op << QString::fromUtf8(value) << expected;
    }

    void rowsBecomeTheRequest()
    {
        QFETCH(int, field);
        QFETCH(int, op);
        QFETCH(QString, value);
        QFETCH(QString, expected);
        ZBSmartListWindow window;
        window.setMatchAll(false);
        window.setDefaultPredicate();
        QVERIFY(window.matchAll());
        showAndActivate(window);
        ZBSmartListRuleRow *row = window.ruleRow(0);
        if (field >= 0)
            QVERIFY(choose(row->fieldBox(), field) && choose(row->operatorBox(), op));
        QCOMPARE(row->operatorBox()->count(), int(Rules::operatorTags(Rules::fieldKind(row->field())).size()));
        if (row->valueEditor() == row->dateEdit())
            QCOMPARE(row->dateEdit()->text(), QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd")));
        if (row->valueEditor() == row->typeBox())
        {
            // The media types, without the quoted Mac file types.
            QVERIFY(row->typeBox()->findText(QStringLiteral("swf")) >= 0);
            for (int i = 0; i < row->typeBox()->count(); ++i)
                QVERIFY2(!row->typeBox()->itemText(i).startsWith(u'\''), qPrintable(row->typeBox()->itemText(i)));
        }
        enterValue(row, value);
        QCOMPARE(window.generatePredicate(), expected);
    }

    void existingRequestsAreShownAndKept()
    {
        ZBSmartListWindow window;
        window.show();
        const QString every = QStringLiteral("(Path ENDSWITH[CD] '.mov') AND (PlayCount > 2) AND (Rating == 5) AND "
                                             "(LastPlayed < %1) AND (Type MATCHES[CD] 'rm|rv')")
                                  .arg(dateLiteral(QDate(2020, 1, 31)));
        QVERIFY2(window.fillRules(every), qPrintable(window.lastError()));
        QStringList shown;
        for (int i = 0; i < window.rowCount(); ++i)
        {
            const ZBSmartListRuleRow *row = window.ruleRow(i);
            shown << row->fieldBox()->currentText() + u' ' + row->operatorBox()->currentText() + u' ' + shownValue(row);
            QCOMPARE(shown.last(), ZBLocalizer::localizedStringForKey(Rules::fieldTitleKey(row->field())) + u' ' +
                                       ZBLocalizer::localizedStringForKey(Rules::operatorTitleKey(row->op())) + u' ' +
                                       shownValue(row));
            QVERIFY(row->valueEditor()->isVisible());
        }
        QCOMPARE(shown.size(), 5);
        for (const char *value : {".mov", " 2", " 5", "2020-01-31", "rm|rv"})
            QVERIFY2(shown.join(u'|').contains(QLatin1String(value)), value);
        QCOMPARE(window.generatePredicate(), every);

        // What the editors cannot show (half stars, a time of day) is kept as
        // long as the user leaves that row alone; then the new value counts.
        const QString beyond = QStringLiteral("(Rating > 2.5) AND (Added > %1)")
                                   .arg(ZBPredicate::dateLiteral(QDateTime(QDate(2022, 6, 1), QTime(13, 45, 10))));
        QVERIFY(window.fillRules(beyond));
        QCOMPARE(shownValue(window.ruleRow(0)) + u' ' + shownValue(window.ruleRow(1)), QStringLiteral("3 2022-06-01"));
        QCOMPARE(window.generatePredicate(), beyond);
        enterValue(window.ruleRow(0), QStringLiteral("4"));
        replaceText(window.ruleRow(1)->dateEdit(), QStringLiteral("2022-06-02"));
        QCOMPARE(window.generatePredicate(),
                 QStringLiteral("(Rating > 4) AND (Added > %1)").arg(dateLiteral(QDate(2022, 6, 2))));
    }

    void matchAllOrAnyAndRefusedRequests()
    {
        ZBSmartListWindow window;
        QVERIFY(window.addRow({Rules::FieldRating, Rules::NumberGreater, QStringLiteral("3")}));
        QVERIFY(window.addRow({Rules::FieldPlayCount, Rules::NumberLess, QStringLiteral("2")}));
        QCOMPARE(window.matchBox()->currentText(), localized("smartWindowRuleAll"));
        QCOMPARE(window.generatePredicate(), QStringLiteral("(Rating > 3) AND (PlayCount < 2)"));
        window.matchBox()->setCurrentIndex(window.matchBox()->findText(localized("smartWindowRuleAny")));
        const QString any = QStringLiteral("(Rating > 3) OR (PlayCount < 2)");
        QCOMPARE(window.generatePredicate(), any);
        // One rule says neither; it is read as "all", as for a new list.
        QVERIFY(window.fillRules(QStringLiteral("(Name CONTAINS[CD] 'a')")));
        QVERIFY(window.matchAll());
        QVERIFY(window.fillRules(any));
        QCOMPARE(window.matchBox()->currentText(), localized("smartWindowRuleAny"));

        // What the rows cannot hold is refused and the rows stay as they were.
        for (const char *text : {"(Name CONTAINS[CD] 'a') AND (Path CONTAINS[CD] 'b') OR (URL == 'c')", "(Length > 10)",
                                 "(Name CONTAINS 'a')", "(Name CONTAINS[CD] 'a'"})
        {
            QVERIFY2(!window.fillRules(QLatin1String(text)), text);
            QVERIFY(!window.lastError().isEmpty());
            QCOMPARE(window.generatePredicate(), any);
        }
        QVERIFY(!window.addRow({Rules::FieldName, Rules::NumberLess, QStringLiteral("3")}));
        QVERIFY(!window.addRow({Rules::FieldAdded, Rules::DateLater, QStringLiteral("yesterday")}));
        QCOMPARE(window.rowCount(), 2);
    }

    void rowsAddedAndRemovedByMouseAndKeyboard()
    {
        ZBSmartListWindow window;
        window.setDefaultPredicate();
        showAndActivate(window);
        QVERIFY(!window.ruleRow(0)->removeButton()->isEnabled());
        QTest::keyClicks(window.ruleRow(0)->textEdit(), QStringLiteral("a"));
        QTest::mouseClick(window.ruleRow(0)->addButton(), Qt::LeftButton);
        QTest::keyClicks(window.ruleRow(1)->textEdit(), QStringLiteral("c"));
        // "+" puts a new default rule right below its own row, not at the end.
        QTest::mouseClick(window.ruleRow(0)->addButton(), Qt::LeftButton);
        QCOMPARE(window.ruleRow(1)->row(), Rules::Row({Rules::FieldName, Rules::TextContains, QString()}));
        QCOMPARE(shownValue(window.ruleRow(2)), QStringLiteral("c"));
        // Back to two rules, by mouse.
        ZBSmartListRuleRow *middle = window.ruleRow(1);
        QTest::mouseClick(middle->removeButton(), Qt::LeftButton);
        QVERIFY(!middle->isVisible());
        // Space on "+" adds below and carries the focus into the new rule.
        window.ruleRow(0)->addButton()->setFocus();
        QTRY_VERIFY(window.ruleRow(0)->addButton()->hasFocus());
        QTest::keyClick(focused(), Qt::Key_Space);
        QCOMPARE(focused(), static_cast<QWidget *>(window.ruleRow(1)->fieldBox()));
        QTest::keyClick(focused(), Qt::Key_Tab);
        QTest::keyClick(focused(), Qt::Key_Tab);
        QTest::keyClicks(focused(), QStringLiteral("new"));
        QCOMPARE(window.generatePredicate(), QStringLiteral("(Name CONTAINS[CD] 'a') AND (Name CONTAINS[CD] 'new') AND "
                                                            "(Name CONTAINS[CD] 'c')"));
        // Space on "-" removes; the focus goes to the rule now in its place,
        // or for the last rule to the one above.
        QTest::keyClick(focused(), Qt::Key_Tab);
        QTest::keyClick(focused(), Qt::Key_Space);
        QCOMPARE(focused(), static_cast<QWidget *>(window.ruleRow(1)->fieldBox()));
        QCOMPARE(shownValue(window.ruleRow(1)), QStringLiteral("c"));
        window.ruleRow(1)->removeButton()->setFocus();
        QTest::keyClick(focused(), Qt::Key_Space);
        QCOMPARE(focused(), static_cast<QWidget *>(window.ruleRow(0)->fieldBox()));
        QCOMPARE(window.generatePredicate(), QStringLiteral("(Name CONTAINS[CD] 'a')"));
        QVERIFY(!window.ruleRow(0)->removeButton()->isEnabled());
        QVERIFY(window.isVisible());
    }

    void editorsKeepTheirValuesAndTheCalendarPicksADay()
    {
        ZBSmartListWindow window;
        window.setDefaultPredicate();
        showAndActivate(window);
        ZBSmartListRuleRow *row = window.ruleRow(0);
        QVERIFY(choose(row->operatorBox(), Rules::TextBeginsWith));
        QTest::keyClicks(row->textEdit(), QStringLiteral("abc"));
        // Same kind: operator and value stay; another kind brings its own
        // operators, the first one chosen, and each editor keeps its value.
        QVERIFY(choose(row->fieldBox(), Rules::FieldPath));
        QCOMPARE(window.generatePredicate(), QStringLiteral("(Path BEGINSWITH[CD] 'abc')"));
        QVERIFY(choose(row->fieldBox(), Rules::FieldPlayCount));
        QTest::keyClicks(row->numberEdit(), QStringLiteral("9"));
        QVERIFY(choose(row->fieldBox(), Rules::FieldName));
        QCOMPARE(window.generatePredicate(), QStringLiteral("(Name MATCHES[CD] 'abc')"));
        QVERIFY(choose(row->fieldBox(), Rules::FieldPlayCount));
        QCOMPARE(window.generatePredicate(), QStringLiteral("(PlayCount < 9)"));

        QVERIFY(choose(row->fieldBox(), Rules::FieldAdded));
        replaceText(row->dateEdit(), QStringLiteral("2024-02-28"));
        row->dateButton()->setFocus();
        QTest::keyClick(row->dateButton(), Qt::Key_Space);
        QVERIFY(row->calendar());
        QTRY_VERIFY(row->calendar()->isVisible());
        // It opens on the typed day, with the keyboard in it.
        QCOMPARE(row->calendar()->selectedDate(), QDate(2024, 2, 28));
        QTRY_COMPARE(focused(), static_cast<QWidget *>(row->calendar()->focusWidget()));
        QTest::keyClick(focused(), Qt::Key_Right);
        QTest::keyClick(focused(), Qt::Key_Right);
        QTest::keyClick(focused(), Qt::Key_Return);
        QTRY_VERIFY(!row->calendar()->isVisible());
        QCOMPARE(window.generatePredicate(), QStringLiteral("(Added < %1)").arg(dateLiteral(QDate(2024, 3, 1))));
        // Return chose the day; it did not close the window.
        QVERIFY(window.isVisible());
    }

    void okRefusesBadInput_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("field");
        QTest::addColumn<int>("op");
        QTest::addColumn<QString>("typed");
        // Empty: accepted; "*": any message.
        QTest::addColumn<QString>("message");
        const QString number = localized("SmartListWindow_ErrorNumber").arg(QStringLiteral("2"), QStringLiteral("abc"));
        const int count = Rules::FieldPlayCount;
        const std::tuple<const char *, const char *, int, int, const char *, QString> rows[] = {
            {"word", "Plays", count, Rules::NumberGreater, "abc", number},
            {"no number", "Plays", count, Rules::NumberGreater, "", "*"},
            {"two numbers", "Plays", count, Rules::NumberGreater, "3 4", "*"},
            {"negative fraction", "Plays", count, Rules::NumberGreater, "-2.5", ""},
            {"no such day", "Plays", Rules::FieldAdded, Rules::DateLater, "2024-02-30", "*"},
            {"beyond a request", "Plays", Rules::FieldAdded, Rules::DateLater, "9000-01-01", "*"},
            {"bad pattern for is", "Plays", Rules::FieldName, Rules::TextEquals, "a(", "*"},
            {"plain text for contains", "Plays", Rules::FieldName, Rules::TextContains, "a(", ""},
            {"blank name", "   ", Rules::FieldName, Rules::TextContains, "x", localized("SmartListWindow_ErrorName")}};
        for (const auto &[tag, name, field, op, typed, message] : rows)
            QTest::newRow(tag) << QString::fromUtf8(name) << field << op << QString::fromUtf8(typed) << message;
    }

    void okRefusesBadInput()
    {
        QFETCH(QString, name);
        QFETCH(int, field);
        QFETCH(int, op);
        QFETCH(QString, typed);
        // "*": any message; the wording is checked once above.
        QFETCH(QString, message);
        ZBSmartListWindow window;
        window.setPlayListName(name);
        QVERIFY(window.addRow({Rules::FieldPath, Rules::TextContains, QStringLiteral("(")}));
        window.addEmptyRow();
        ZBSmartListRuleRow *row = window.ruleRow(1);
        QVERIFY(choose(row->fieldBox(), field) && choose(row->operatorBox(), op));
        showAndActivate(window);
        enterValue(row, typed);
        QSignalSpy accepted(&window, &ZBSmartListWindow::smartListAccepted);
        auto *label = window.findChild<QLabel *>(QStringLiteral("messageLabel"));
        QVERIFY(label && !label->isVisible());
        QTest::mouseClick(window.okButton(), Qt::LeftButton);
        if (message.isEmpty())
        {
            QCOMPARE(accepted.count(), 1);
            QVERIFY2(window.predicate().startsWith(QStringLiteral("(Path CONTAINS[CD] '(') AND (")) &&
                         window.predicate().contains(typed),
                     qPrintable(window.predicate()));
            return;
        }
        QVERIFY(window.isVisible());
        if (message != u"*")
            QCOMPARE(window.validationMessage(), message);
        QVERIFY(!window.validationMessage().isEmpty());
        QVERIFY(label->isVisible());
        QCOMPARE(label->text(), window.validationMessage());
        QWidget *culprit = name.trimmed().isEmpty() ? window.nameEdit() : row->valueEditor();
        QCOMPARE(focused(), culprit);
        QCOMPARE(accepted.count(), 0);
        QCOMPARE(window.predicate(), QString());
        // Nothing typed is lost, and the message goes once the input changes.
        QCOMPARE(window.rowCount(), 2);
        QCOMPARE(shownValue(row), typed);
        QTest::keyClick(culprit, Qt::Key_1);
        QCOMPARE(window.validationMessage(), QString());
        QVERIFY(!label->isVisible());
    }

    // OK, Cancel, the close box, and Return (OK) or Escape (Cancel) wherever
    // the focus is; the "+" button must not add a row on the way out.
    void closing()
    {
        const std::tuple<const char *, int, const char *> ways[] = {
            {"ok", Rules::FieldRating, ""},         {"cancel", Rules::FieldName, ""},
            {"close", Rules::FieldName, ""},        {"Return", Rules::FieldName, "add"},
            {"Return", Rules::FieldType, "value"},  {"Return", Rules::FieldRating, "value"},
            {"Return", Rules::FieldAdded, "value"}, {"Escape", Rules::FieldType, "value"},
            {"Escape", Rules::FieldName, "match"}};
        for (const auto &[how, field, focus] : ways)
        {
            const QByteArray tag = QByteArray(how) + " in " + focus + " of " + QByteArray::number(field);
            const bool accept = how == QByteArray("ok") || how == QByteArray("Return");
            ZBSmartListWindow window;
            window.setPlayListName(QStringLiteral("Flash"));
            window.setDefaultPredicate();
            ZBSmartListRuleRow *row = window.ruleRow(0);
            QVERIFY(choose(row->fieldBox(), field));
            row->numberEdit()->setText(QStringLiteral("1"));
            showAndActivate(window);
            QSignalSpy accepted(&window, &ZBSmartListWindow::smartListAccepted);
            QSignalSpy closed(&window, &ZBSmartListWindow::smartListWindowClose);
            if (how == QByteArray("ok"))
            {
                enterValue(row, QStringLiteral("5"));
                QTest::mouseClick(window.okButton(), Qt::LeftButton);
            }
            else if (how == QByteArray("cancel"))
            {
                QTest::mouseClick(window.cancelButton(), Qt::LeftButton);
            }
            else if (how == QByteArray("close"))
            {
                QVERIFY(window.close());
            }
            else
            {
                QWidget *target = focus == QByteArray("match") ? window.matchBox()
                                  : focus == QByteArray("add") ? row->addButton()
                                                               : row->valueEditor();
                target->setFocus();
                QTRY_VERIFY(target->hasFocus());
                QTest::keyClick(focused(), how == QByteArray("Return") ? Qt::Key_Return : Qt::Key_Escape);
            }
            QTRY_VERIFY2(!window.isVisible(), tag);
            QVERIFY2(window.result() == (accept ? QDialog::Accepted : QDialog::Rejected), tag);
            QCOMPARE(closed.count(), 1);
            QCOMPARE(closed.at(0).at(0).value<ZBSmartListWindow *>(), &window);
            QVERIFY2(accepted.count() == (accept ? 1 : 0), tag);
            QCOMPARE(window.rowCount(), 0);
            QVERIFY2(accept != (window.predicate().isEmpty() || window.predicate().contains(QStringLiteral(" AND "))),
                     tag);
            if (accept)
                QCOMPARE(accepted.at(0), QVariantList({QStringLiteral("Flash"), window.predicate()}));
        }
    }

    void runsModallyAndStartsFreshWhenShownAgain()
    {
        ZBSmartListWindow window;
        window.setPlayListName(QStringLiteral("Modal"));
        window.setDefaultPredicate();
        QVERIFY(choose(window.ruleRow(0)->fieldBox(), Rules::FieldPlayCount));
        bool wasModal = false;
        int refusals = 0;
        // A refused OK keeps the modal run going until the input is put right.
        QTimer::singleShot(0, &window,
                           [&]
                           {
                               wasModal = QApplication::activeModalWidget() == &window;
                               window.okButton()->click();
                               refusals += window.isVisible() ? 1 : 0;
                               window.ruleRow(0)->numberEdit()->setText(QStringLiteral("4"));
                               window.okButton()->click();
                           });
        QCOMPARE(window.exec(), int(QDialog::Accepted));
        QVERIFY(wasModal);
        QCOMPARE(refusals, 1);
        QCOMPARE(window.predicate(), QStringLiteral("(PlayCount < 4)"));

        // Shown again without rows it offers one, so "+" is there to press.
        showAndActivate(window);
        QCOMPARE(window.predicate(), QString());
        QCOMPARE(window.rowCount(), 1);
        QCOMPARE(window.ruleRow(0)->row(), Rules::Row({Rules::FieldName, Rules::TextContains, QString()}));
        QCOMPARE(focused(), static_cast<QWidget *>(window.nameEdit()));
        QTRY_COMPARE(window.nameEdit()->selectedText(), QStringLiteral("Modal"));
    }

    // The star editor of rating rules, by mouse and by keyboard.
    void starsByMouseAndKeyboard()
    {
        struct Click
        {
            bool rightToLeft;
            int start;
            Qt::MouseButton button;
            // 1 to 5 on that star, 0 before the first star, negative for the
            // gap just after that star, which belongs to it.
            int star;
            int expected;
        };
        for (const Click &click : {Click{false, 0, Qt::LeftButton, 3, 3}, Click{false, 5, Qt::LeftButton, -2, 2},
                                   Click{false, 1, Qt::LeftButton, 1, 0}, Click{false, 4, Qt::LeftButton, 0, 0},
                                   Click{false, 0, Qt::RightButton, 4, 0}, Click{true, 0, Qt::LeftButton, 2, 2},
                                   Click{true, 3, Qt::LeftButton, 0, 0}})
        {
            ZBStarRatingEditor stars;
            stars.setLayoutDirection(click.rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
            stars.resize(stars.sizeHint());
            stars.show();
            stars.setRating(click.start);
            const int middle = stars.height() / 2;
            const QPoint at = click.star > 0   ? stars.starRect(click.star).center()
                              : click.star < 0 ? QPoint(stars.starRect(-click.star).right() + 2, middle)
                                               : QPoint(click.rightToLeft ? stars.width() - 2 : 1, middle);
            QTest::mouseClick(&stars, click.button, {}, at);
            QCOMPARE(stars.rating(), click.expected);
        }
        struct Key
        {
            bool rightToLeft;
            int start;
            int key;
            Qt::KeyboardModifiers modifiers;
            // -1: left to the window (Return is OK, Tab moves on).
            int expected;
        };
        for (const Key &key :
             {Key{false, 5, Qt::Key_Right, {}, 5}, Key{false, 0, Qt::Key_Left, {}, 0}, Key{false, 3, Qt::Key_Up, {}, 4},
              Key{false, 4, Qt::Key_Minus, {}, 3}, Key{false, 4, Qt::Key_Home, {}, 0},
              Key{false, 2, Qt::Key_End, {}, 5}, Key{false, 0, Qt::Key_2, {}, 2}, Key{false, 1, Qt::Key_9, {}, -1},
              Key{false, 1, Qt::Key_3, Qt::ControlModifier, -1}, Key{false, 1, Qt::Key_Return, {}, -1},
              Key{false, 1, Qt::Key_Tab, {}, -1}, Key{true, 0, Qt::Key_Left, {}, 1},
              Key{true, 1, Qt::Key_Right, {}, 0}})
        {
            ZBStarRatingEditor stars;
            QVERIFY(stars.focusPolicy() & Qt::TabFocus);
            stars.setLayoutDirection(key.rightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
            stars.setRating(key.start);
            QSignalSpy edited(&stars, &ZBStarRatingEditor::ratingEdited);
            QKeyEvent press(QEvent::KeyPress, key.key, key.modifiers);
            QApplication::sendEvent(&stars, &press);
            const QString tag = QKeySequence(key.key).toString();
            QVERIFY2(press.isAccepted() == (key.expected >= 0), qPrintable(tag));
            QCOMPARE(stars.rating(), key.expected < 0 ? key.start : key.expected);
            QCOMPARE(edited.count(), key.expected < 0 || key.expected == key.start ? 0 : 1);
        }
        // Dragged with the button down; moving without it is only hovering.
        ZBStarRatingEditor stars;
        stars.show();
        const auto move = [&stars](int star, Qt::MouseButtons buttons)
        {
            const QPoint at = stars.starRect(star).center();
            QMouseEvent event(QEvent::MouseMove, at, stars.mapToGlobal(at), Qt::NoButton, buttons, Qt::NoModifier);
            QApplication::sendEvent(&stars, &event);
        };
        QTest::mousePress(&stars, Qt::LeftButton, {}, stars.starRect(1).center());
        move(4, Qt::LeftButton);
        QCOMPARE(stars.rating(), 4);
        QTest::mouseRelease(&stars, Qt::LeftButton, {}, stars.starRect(4).center());
        move(2, Qt::NoButton);
        QCOMPARE(stars.rating(), 4);
    }
};

QTEST_MAIN(TestZBSmartListWindow)
#include "tst_zbsmartlistwindow.moc"
