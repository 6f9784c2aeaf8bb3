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
    if (index < 0)
        return false;
    box->setCurrentIndex(index);
    return true;
}

QString dateLiteral(QDate date)
{
    return ZBPredicate::dateLiteral(date.startOfDay(Qt::LocalTime));
}

QString today()
{
    return QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd"));
}

QString shownValue(const ZBSmartListRuleRow *row)
{
    QWidget *editor = row->valueEditor();
    if (editor == row->typeBox())
        return row->typeBox()->currentText();
    if (editor == row->ratingEditor())
        return QString::number(row->ratingEditor()->rating());
    if (auto *edit = qobject_cast<QLineEdit *>(editor))
        return edit->text();
    return QStringLiteral("<no editor>");
}

void replaceText(QLineEdit *edit, const QString &text)
{
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Backspace);
    QTest::keyClicks(edit, text);
}

QPoint starCentre(const ZBStarRatingEditor *editor, int star)
{
    return editor->starRect(star).center();
}

// Enters `value` the way a user does in whichever editor the row shows: typed,
// or for ratings a click on that star.
void enterValue(ZBSmartListRuleRow *row, const QString &value)
{
    QWidget *editor = row->valueEditor();
    if (editor == row->ratingEditor())
    {
        QTest::mouseClick(row->ratingEditor(), Qt::LeftButton, {}, starCentre(row->ratingEditor(), value.toInt()));
        return;
    }
    // Only a focused type box completes what is typed, so it gets the focus.
    editor->setFocus();
    QTRY_VERIFY(editor->hasFocus());
    replaceText(editor == row->typeBox() ? row->typeBox()->lineEdit() : qobject_cast<QLineEdit *>(editor), value);
}
} // namespace

class TestZBSmartListWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void rowsBecomeTheRequest_data();
    void rowsBecomeTheRequest();
    void existingRequestsAreShownAndKept_data();
    void existingRequestsAreShownAndKept();
    void otherRequestsAreRefusedAndKeepTheRows();
    void matchAllOrAny();

    void addingAndRemovingRowsByMouse();
    void rowsByKeyboard();
    void changingTheFieldKeepsEachEditorsValue();
    void dateFromTheCalendar();
    void tabFollowsTheRowsOnScreen();

    void okRefusesBadInput_data();
    void okRefusesBadInput();
    void closing_data();
    void closing();
    void runsModallyAndStartsFreshWhenShownAgain();

    void starsByMouse_data();
    void starsByMouse();
    void starsByKeyboard_data();
    void starsByKeyboard();
    void starsByDraggingAndByProgram();

private:
    void showAndActivate(ZBSmartListWindow &window);
};

void TestZBSmartListWindow::initTestCase()
{
    ZBLocalizer::setLanguage(QStringLiteral("English"));
}

void TestZBSmartListWindow::showAndActivate(ZBSmartListWindow &window)
{
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
}

void TestZBSmartListWindow::rowsBecomeTheRequest_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<int>("op");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");
    // -1: left as a new list's row has it.
    QTest::newRow("new row") << -1 << -1 << "abc" << "(Name CONTAINS[CD] 'abc')";
    QTest::newRow("path begins with") << int(Rules::FieldPath) << int(Rules::TextBeginsWith) << "/media/films"
                                      << "(Path BEGINSWITH[CD] '/media/films')";
    QTest::newRow("URL ends with") << int(Rules::FieldURL) << int(Rules::TextEndsWith) << ".flv"
                                   << "(URL ENDSWITH[CD] '.flv')";
    QTest::newRow("name is, quoted") << int(Rules::FieldName) << int(Rules::TextEquals) << "it's"
                                     << "(Name MATCHES[CD] 'it\\'s')";
    QTest::newRow("logical words") << -1 << -1 << "rock AND roll" << "(Name CONTAINS[CD] 'rock and roll')";
    QTest::newRow("type is") << int(Rules::FieldType) << int(Rules::TextEquals) << "swf" << "(Type MATCHES[CD] 'swf')";
    // A typed prefix stays as typed: "fl" must not be completed to "flv".
    QTest::newRow("type begins with") << int(Rules::FieldType) << int(Rules::TextBeginsWith) << "fl"
                                      << "(Type BEGINSWITH[CD] 'fl')";
    QTest::newRow("count less") << int(Rules::FieldPlayCount) << int(Rules::NumberLess) << "3" << "(PlayCount < 3)";
    QTest::newRow("count greater, blanks dropped")
        << int(Rules::FieldPlayCount) << int(Rules::NumberGreater) << " 12 " << "(PlayCount > 12)";
    QTest::newRow("count is") << int(Rules::FieldPlayCount) << int(Rules::NumberIs) << "0" << "(PlayCount == 0)";
    QTest::newRow("rating by a star") << int(Rules::FieldRating) << int(Rules::NumberGreater) << "4" << "(Rating > 4)";
    QTest::newRow("added later") << int(Rules::FieldAdded) << int(Rules::DateLater) << "2024-03-05"
                                 << QStringLiteral("(Added > %1)").arg(dateLiteral(QDate(2024, 3, 5)));
    QTest::newRow("played on") << int(Rules::FieldLastPlayed) << int(Rules::DateIs) << "2024-03-05"
                               << QStringLiteral("(LastPlayed == %1)").arg(dateLiteral(QDate(2024, 3, 5)));
}

void TestZBSmartListWindow::rowsBecomeTheRequest()
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
    {
        QVERIFY(choose(row->fieldBox(), field));
        QVERIFY(choose(row->operatorBox(), op));
    }
    QCOMPARE(row->operatorBox()->count(), int(Rules::operatorTags(Rules::fieldKind(row->field())).size()));
    QVERIFY(row->valueEditor()->isVisible());
    if (row->valueEditor() == row->dateEdit())
        QCOMPARE(row->dateEdit()->text(), today());
    if (row->valueEditor() == row->typeBox())
    {
        // The media types, without the quoted Mac file types.
        for (const char *type : {"swf", "flv", "exe"})
            QVERIFY(row->typeBox()->findText(QLatin1String(type)) >= 0);
        for (int i = 0; i < row->typeBox()->count(); ++i)
            QVERIFY2(!row->typeBox()->itemText(i).startsWith(u'\''), qPrintable(row->typeBox()->itemText(i)));
    }
    enterValue(row, value);
    QCOMPARE(window.generatePredicate(), expected);
}

void TestZBSmartListWindow::existingRequestsAreShownAndKept_data()
{
    QTest::addColumn<QString>("request");
    QTest::addColumn<QString>("shown");
    QTest::newRow("text") << "(Path ENDSWITH[CD] '.mov')" << ".mov";
    QTest::newRow("type") << "(Type MATCHES[CD] 'rm|rv')" << "rm|rv";
    QTest::newRow("number") << "(PlayCount == 12)" << "12";
    QTest::newRow("rating") << "(Rating < 3)" << "3";
    QTest::newRow("date") << QStringLiteral("(LastPlayed > %1)").arg(dateLiteral(QDate(2023, 12, 31))) << "2023-12-31";
    QTest::newRow("every kind") << QStringLiteral("(Name CONTAINS[CD] 'live') AND (PlayCount > 2) AND (Rating == 5) "
                                                  "AND (Added < %1) AND (Type MATCHES[CD] 'swf')")
                                       .arg(dateLiteral(QDate(2020, 1, 31)))
                                << "live";
    // What the editors cannot show (half stars, a time of day) is kept as
    // long as the user leaves that row alone.
    QTest::newRow("beyond the editors")
        << QStringLiteral("(Rating > 2.5) AND (Added > %1)")
               .arg(ZBPredicate::dateLiteral(QDateTime(QDate(2022, 6, 1), QTime(13, 45, 10))))
        << "3";
}

void TestZBSmartListWindow::existingRequestsAreShownAndKept()
{
    QFETCH(QString, request);
    QFETCH(QString, shown);

    ZBSmartListWindow window;
    window.setDefaultPredicate();
    window.show();
    QVERIFY2(window.fillRules(request), qPrintable(window.lastError()));
    Rules rules;
    QVERIFY(rules.fillRules(request));
    QCOMPARE(window.rules().rows(), rules.rows());
    QCOMPARE(window.rowCount(), int(rules.rows().size()));
    ZBSmartListRuleRow *row = window.ruleRow(0);
    QCOMPARE(row->fieldBox()->currentText(), ZBLocalizer::localizedStringForKey(Rules::fieldTitleKey(row->field())));
    QCOMPARE(row->operatorBox()->currentText(), ZBLocalizer::localizedStringForKey(Rules::operatorTitleKey(row->op())));
    QVERIFY(row->valueEditor()->isVisible());
    QCOMPARE(shownValue(row), shown);
    QCOMPARE(window.generatePredicate(), request);

    if (QTest::currentDataTag() == QLatin1String("beyond the editors"))
    {
        QCOMPARE(shownValue(window.ruleRow(1)), QStringLiteral("2022-06-01"));
        // Once the user picks a rating or a day, that is what counts.
        enterValue(window.ruleRow(0), QStringLiteral("4"));
        replaceText(window.ruleRow(1)->dateEdit(), QStringLiteral("2022-06-02"));
        QCOMPARE(window.generatePredicate(),
                 QStringLiteral("(Rating > 4) AND (Added > %1)").arg(dateLiteral(QDate(2022, 6, 2))));
    }
}

void TestZBSmartListWindow::otherRequestsAreRefusedAndKeepTheRows()
{
    ZBSmartListWindow window;
    QVERIFY(window.fillRules(QStringLiteral("(Name CONTAINS[CD] 'a') OR (PlayCount > 1)")));
    const QString before = window.generatePredicate();
    for (const char *text : {"(Name CONTAINS[CD] 'a') AND (Path CONTAINS[CD] 'b') OR (URL == 'c')", "(Length > 10)",
                             "(Name CONTAINS 'a')", "(Name CONTAINS[CD] 'a'"})
    {
        QVERIFY2(!window.fillRules(QLatin1String(text)), text);
        QVERIFY(!window.lastError().isEmpty());
        QCOMPARE(window.rowCount(), 2);
        QVERIFY(!window.matchAll());
        QCOMPARE(window.generatePredicate(), before);
    }
    // Rows the rules cannot hold are refused the same way.
    QVERIFY(!window.addRow({Rules::FieldName, Rules::NumberLess, QStringLiteral("3")}));
    QVERIFY(!window.addRow({Rules::FieldAdded, Rules::DateLater, QStringLiteral("yesterday")}));
    QCOMPARE(window.rowCount(), 2);
}

void TestZBSmartListWindow::matchAllOrAny()
{
    ZBSmartListWindow window;
    QVERIFY(window.addRow({Rules::FieldRating, Rules::NumberGreater, QStringLiteral("3")}));
    QVERIFY(window.addRow({Rules::FieldAdded, Rules::DateLater, QDate(2021, 5, 4)}));
    const QString literal = dateLiteral(QDate(2021, 5, 4));
    QCOMPARE(window.matchBox()->currentText(), localized("smartWindowRuleAll"));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Rating > 3) AND (Added > %1)").arg(literal));

    window.matchBox()->setCurrentIndex(window.matchBox()->findText(localized("smartWindowRuleAny")));
    QVERIFY(!window.matchAll());
    const QString anyText = QStringLiteral("(Rating > 3) OR (Added > %1)").arg(literal);
    QCOMPARE(window.generatePredicate(), anyText);

    QVERIFY(window.fillRules(QStringLiteral("(Name CONTAINS[CD] 'a') AND (Path CONTAINS[CD] 'b')")));
    QCOMPARE(window.matchBox()->currentText(), localized("smartWindowRuleAll"));
    QVERIFY(window.fillRules(anyText));
    QCOMPARE(window.matchBox()->currentText(), localized("smartWindowRuleAny"));
    // One rule says neither; it is read as "all", as for a new list.
    QVERIFY(window.fillRules(QStringLiteral("(Name CONTAINS[CD] 'a')")));
    QVERIFY(window.matchAll());
}

void TestZBSmartListWindow::addingAndRemovingRowsByMouse()
{
    ZBSmartListWindow window;
    window.setDefaultPredicate();
    window.show();
    QVERIFY(!window.ruleRow(0)->removeButton()->isEnabled());

    QTest::keyClicks(window.ruleRow(0)->textEdit(), QStringLiteral("a"));
    QTest::mouseClick(window.ruleRow(0)->addButton(), Qt::LeftButton);
    QCOMPARE(window.rowCount(), 2);
    QVERIFY(window.ruleRow(0)->removeButton()->isEnabled());
    QVERIFY(window.ruleRow(1)->isVisible());
    QTest::keyClicks(window.ruleRow(1)->textEdit(), QStringLiteral("c"));

    // "+" puts a new default rule right below its own row, not at the end.
    QTest::mouseClick(window.ruleRow(0)->addButton(), Qt::LeftButton);
    QCOMPARE(window.ruleRow(1)->row(), Rules::Row({Rules::FieldName, Rules::TextContains, QString()}));
    QTest::keyClicks(window.ruleRow(1)->textEdit(), QStringLiteral("b"));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Name CONTAINS[CD] 'a') AND (Name CONTAINS[CD] 'b') AND "
                                                        "(Name CONTAINS[CD] 'c')"));

    ZBSmartListRuleRow *middle = window.ruleRow(1);
    QTest::mouseClick(middle->removeButton(), Qt::LeftButton);
    QVERIFY(!middle->isVisible());
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Name CONTAINS[CD] 'a') AND (Name CONTAINS[CD] 'c')"));
    QTest::mouseClick(window.ruleRow(0)->removeButton(), Qt::LeftButton);
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Name CONTAINS[CD] 'c')"));
    QVERIFY(!window.ruleRow(0)->removeButton()->isEnabled());
}

void TestZBSmartListWindow::rowsByKeyboard()
{
    ZBSmartListWindow window;
    window.setPlayListName(QStringLiteral("Keys"));
    QVERIFY(window.addRow({Rules::FieldName, Rules::TextContains, QStringLiteral("a")}));
    QVERIFY(window.addRow({Rules::FieldName, Rules::TextContains, QStringLiteral("b")}));
    showAndActivate(window);

    // Space on "+" adds below and carries the focus into the new rule.
    window.ruleRow(0)->addButton()->setFocus();
    QTRY_VERIFY(window.ruleRow(0)->addButton()->hasFocus());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    QCOMPARE(window.rowCount(), 3);
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.ruleRow(1)->fieldBox()));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("new"));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Name CONTAINS[CD] 'a') AND (Name CONTAINS[CD] 'new') AND "
                                                        "(Name CONTAINS[CD] 'b')"));

    // Space on "-" removes; the focus goes to the rule now in its place, or
    // for the last rule to the one above.
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.ruleRow(1)->removeButton()));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.ruleRow(1)->fieldBox()));
    QCOMPARE(shownValue(window.ruleRow(1)), QStringLiteral("b"));
    window.ruleRow(1)->removeButton()->setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    QCOMPARE(window.rowCount(), 1);
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.ruleRow(0)->fieldBox()));
    QVERIFY(window.isVisible());
}

void TestZBSmartListWindow::changingTheFieldKeepsEachEditorsValue()
{
    ZBSmartListWindow window;
    window.setDefaultPredicate();
    ZBSmartListRuleRow *row = window.ruleRow(0);
    QVERIFY(choose(row->operatorBox(), Rules::TextBeginsWith));
    QTest::keyClicks(row->textEdit(), QStringLiteral("abc"));

    // Same kind: operator and value stay.
    QVERIFY(choose(row->fieldBox(), Rules::FieldPath));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Path BEGINSWITH[CD] 'abc')"));

    // Another kind brings its own operators, the first one chosen.
    QVERIFY(choose(row->fieldBox(), Rules::FieldPlayCount));
    QTest::keyClicks(row->numberEdit(), QStringLiteral("9"));
    QVERIFY(choose(row->fieldBox(), Rules::FieldRating));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Rating < 0)"));
    QVERIFY(choose(row->fieldBox(), Rules::FieldName));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Name MATCHES[CD] 'abc')"));
    QVERIFY(choose(row->fieldBox(), Rules::FieldPlayCount));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(PlayCount < 9)"));
}

void TestZBSmartListWindow::dateFromTheCalendar()
{
    ZBSmartListWindow window;
    window.setDefaultPredicate();
    showAndActivate(window);
    ZBSmartListRuleRow *row = window.ruleRow(0);
    QVERIFY(choose(row->fieldBox(), Rules::FieldAdded));
    replaceText(row->dateEdit(), QStringLiteral("2024-02-28"));

    row->dateButton()->setFocus();
    QTest::keyClick(row->dateButton(), Qt::Key_Space);
    QVERIFY(row->calendar());
    QTRY_VERIFY(row->calendar()->isVisible());
    // It opens on the typed day, with the keyboard in it.
    QCOMPARE(row->calendar()->selectedDate(), QDate(2024, 2, 28));
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget *>(row->calendar()->focusWidget()));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QTRY_VERIFY(!row->calendar()->isVisible());
    QCOMPARE(row->dateEdit()->text(), QStringLiteral("2024-03-01"));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Added < %1)").arg(dateLiteral(QDate(2024, 3, 1))));
    // Return chose the day; it did not close the window.
    QVERIFY(window.isVisible());
}

void TestZBSmartListWindow::tabFollowsTheRowsOnScreen()
{
    ZBSmartListWindow window;
    window.setPlayListName(QStringLiteral("Tabs"));
    QVERIFY(window.addRow({Rules::FieldName, Rules::TextContains, QStringLiteral("a")}));
    QVERIFY(window.addRow({Rules::FieldRating, Rules::NumberGreater, QStringLiteral("2")}));
    showAndActivate(window);
    // The row made last sits in the middle.
    QTest::mouseClick(window.ruleRow(0)->addButton(), Qt::LeftButton);
    QVERIFY(choose(window.ruleRow(1)->fieldBox(), Rules::FieldAdded));

    QList<QWidget *> expected{window.nameEdit(), window.matchBox()};
    const auto rowWidgets = [](ZBSmartListRuleRow *row, QList<QWidget *> values)
    {
        QList<QWidget *> widgets{row->fieldBox(), row->operatorBox()};
        widgets += values;
        widgets << row->removeButton() << row->addButton();
        return widgets;
    };
    expected += rowWidgets(window.ruleRow(0), {window.ruleRow(0)->textEdit()});
    expected += rowWidgets(window.ruleRow(1), {window.ruleRow(1)->dateEdit(), window.ruleRow(1)->dateButton()});
    expected += rowWidgets(window.ruleRow(2), {window.ruleRow(2)->ratingEditor()});
    QList<QWidget *> buttons{window.okButton(), window.cancelButton()};
    std::sort(buttons.begin(), buttons.end(), [](QWidget *a, QWidget *b) { return a->x() < b->x(); });
    expected += buttons;

    window.nameEdit()->setFocus();
    QTRY_VERIFY(window.nameEdit()->hasFocus());
    QList<QWidget *> visited{QApplication::focusWidget()};
    for (int i = 0; i < expected.size(); ++i)
    {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        visited << QApplication::focusWidget();
    }
    // Around once and back to the name.
    QCOMPARE(visited.takeLast(), static_cast<QWidget *>(window.nameEdit()));
    QCOMPARE(visited, expected);
}

void TestZBSmartListWindow::okRefusesBadInput_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("field");
    QTest::addColumn<int>("op");
    QTest::addColumn<QString>("typed");
    // Empty: accepted.
    QTest::addColumn<QString>("message");

    const QString plays = QStringLiteral("Plays");
    const auto number = [](const char *typed)
    { return localized("SmartListWindow_ErrorNumber").arg(QStringLiteral("2"), QLatin1String(typed)); };
    const auto date = [](const char *typed)
    { return localized("SmartListWindow_ErrorDate").arg(QStringLiteral("2"), QLatin1String(typed), today()); };
    const int count = Rules::FieldPlayCount;
    const int greater = Rules::NumberGreater;
    QTest::newRow("word") << plays << count << greater << "abc" << number("abc");
    QTest::newRow("no number") << plays << count << greater << "" << number("");
    QTest::newRow("two numbers") << plays << count << greater << "3 4" << number("3 4");
    QTest::newRow("two points") << plays << count << greater << "1.2.3" << number("1.2.3");
    QTest::newRow("a field's name") << plays << count << greater << "Rating" << number("Rating");
    QTest::newRow("whole") << plays << count << greater << "7" << "";
    QTest::newRow("negative") << plays << count << greater << "-2" << "";
    QTest::newRow("fraction") << plays << count << greater << "2.5" << "";
    const int added = Rules::FieldAdded;
    const int later = Rules::DateLater;
    QTest::newRow("no such day") << plays << added << later << "2024-02-30" << date("2024-02-30");
    QTest::newRow("other order") << plays << added << later << "05.03.2024" << date("05.03.2024");
    QTest::newRow("no date") << plays << added << later << "" << date("");
    QTest::newRow("beyond a request") << plays << added << later << "9000-01-01" << date("9000-01-01");
    QTest::newRow("bad pattern for is")
        << plays << int(Rules::FieldName) << int(Rules::TextEquals) << "a("
        << localized("SmartListWindow_ErrorPattern")
               .arg(QStringLiteral("2"), QStringLiteral("a("), localized("SmartListWindow_Equals"));
    QTest::newRow("plain text for contains")
        << plays << int(Rules::FieldName) << int(Rules::TextContains) << "a(" << "";
    QTest::newRow("blank name") << "   " << int(Rules::FieldName) << int(Rules::TextContains) << "x"
                                << localized("SmartListWindow_ErrorName");
}

void TestZBSmartListWindow::okRefusesBadInput()
{
    QFETCH(QString, name);
    QFETCH(int, field);
    QFETCH(int, op);
    QFETCH(QString, typed);
    QFETCH(QString, message);

    ZBSmartListWindow window;
    window.setPlayListName(name);
    QVERIFY(window.addRow({Rules::FieldPath, Rules::TextContains, QStringLiteral("(")}));
    window.addEmptyRow();
    ZBSmartListRuleRow *row = window.ruleRow(1);
    QVERIFY(choose(row->fieldBox(), field));
    QVERIFY(choose(row->operatorBox(), op));
    showAndActivate(window);
    enterValue(row, typed);
    QSignalSpy accepted(&window, &ZBSmartListWindow::smartListAccepted);
    QSignalSpy closed(&window, &ZBSmartListWindow::smartListWindowClose);
    auto *label = window.findChild<QLabel *>(QStringLiteral("messageLabel"));
    QVERIFY(label && !label->isVisible());

    QTest::mouseClick(window.okButton(), Qt::LeftButton);
    if (message.isEmpty())
    {
        QVERIFY(!window.isVisible());
        QCOMPARE(accepted.count(), 1);
        QVERIFY(window.predicate().startsWith(QStringLiteral("(Path CONTAINS[CD] '(') AND (")));
        QVERIFY2(window.predicate().contains(typed), qPrintable(window.predicate()));
        return;
    }
    QVERIFY(window.isVisible());
    QCOMPARE(window.validationMessage(), message);
    QVERIFY(label->isVisible());
    QCOMPARE(label->text(), message);
    QWidget *culprit = name.trimmed().isEmpty() ? window.nameEdit() : row->valueEditor();
    QCOMPARE(QApplication::focusWidget(), culprit);
    QCOMPARE(accepted.count(), 0);
    QCOMPARE(closed.count(), 0);
    QCOMPARE(window.predicate(), QString());
    // Nothing typed is lost.
    QCOMPARE(window.rowCount(), 2);
    QCOMPARE(shownValue(row), typed);
    // The message goes as soon as the input changes.
    QTest::keyClick(culprit, Qt::Key_1);
    QCOMPARE(window.validationMessage(), QString());
    QVERIFY(!label->isVisible());
}

void TestZBSmartListWindow::closing_data()
{
    QTest::addColumn<QString>("how");
    QTest::addColumn<int>("field");
    QTest::addColumn<QString>("focus");
    QTest::newRow("OK button") << "ok" << int(Rules::FieldRating) << "";
    QTest::newRow("Cancel button") << "cancel" << int(Rules::FieldName) << "";
    QTest::newRow("window closed") << "close" << int(Rules::FieldName) << "";
    // Return is OK and Escape Cancel wherever the focus is; the "+" button
    // must not add a row on the way out.
    for (const char *key : {"Return", "Escape"})
    {
        for (const auto &[field, focus] : {std::pair{int(Rules::FieldName), "name"}, {int(Rules::FieldName), "match"},
                                           {int(Rules::FieldName), "field"}, {int(Rules::FieldName), "operator"},
                                           {int(Rules::FieldName), "value"}, {int(Rules::FieldType), "value"},
                                           {int(Rules::FieldPlayCount), "value"}, {int(Rules::FieldRating), "value"},
                                           {int(Rules::FieldAdded), "value"}, {int(Rules::FieldName), "add"}})
        {
            const QString tag = QStringLiteral("%1 in %2 of %3").arg(QLatin1String(key), QLatin1String(focus)).arg(field);
            QTest::newRow(qPrintable(tag)) << QString::fromLatin1(key) << field << QString::fromLatin1(focus);
        }
    }
}

void TestZBSmartListWindow::closing()
{
    QFETCH(QString, how);
    QFETCH(int, field);
    QFETCH(QString, focus);

    const bool byKey = how == u"Return" || how == u"Escape";
    ZBSmartListWindow window;
    window.setAddOrEdit(false);
    window.setPlayListName(QStringLiteral("Flash"));
    if (byKey)
        window.setDefaultPredicate();
    else
        QVERIFY(window.fillRules(QStringLiteral("(Type MATCHES[CD] 'swf') OR (Rating > 3)")));
    ZBSmartListRuleRow *row = window.ruleRow(window.rowCount() - 1);
    QVERIFY(choose(row->fieldBox(), field));
    if (field == Rules::FieldPlayCount)
        row->numberEdit()->setText(QStringLiteral("1"));
    showAndActivate(window);
    QSignalSpy accepted(&window, &ZBSmartListWindow::smartListAccepted);
    QSignalSpy closed(&window, &ZBSmartListWindow::smartListWindowClose);
    QSignalSpy finished(&window, &QDialog::finished);

    const bool accept = how == u"ok" || how == u"Return";
    if (how == u"ok")
    {
        enterValue(row, QStringLiteral("5"));
        QTest::mouseClick(window.okButton(), Qt::LeftButton);
    }
    else if (how == u"cancel")
    {
        QTest::keyClicks(row->textEdit(), QStringLiteral("bc"));
        QTest::mouseClick(window.cancelButton(), Qt::LeftButton);
    }
    else if (how == u"close")
    {
        QVERIFY(window.close());
    }
    else
    {
        QWidget *target = focus == u"name"       ? window.nameEdit()
                          : focus == u"match"    ? window.matchBox()
                          : focus == u"field"    ? row->fieldBox()
                          : focus == u"operator" ? row->operatorBox()
                          : focus == u"add"      ? row->addButton()
                                                 : row->valueEditor();
        target->setFocus();
        QTRY_VERIFY(target->hasFocus());
        QTest::keyClick(QApplication::focusWidget(), how == u"Return" ? Qt::Key_Return : Qt::Key_Escape);
    }
    QTRY_VERIFY(!window.isVisible());
    QCOMPARE(window.result(), int(accept ? QDialog::Accepted : QDialog::Rejected));
    QCOMPARE(finished.count(), 1);
    QCOMPARE(closed.count(), 1);
    QCOMPARE(closed.at(0).at(0).value<ZBSmartListWindow *>(), &window);
    QCOMPARE(accepted.count(), accept ? 1 : 0);
    QCOMPARE(window.rowCount(), 0);
    if (!accept)
    {
        QCOMPARE(window.predicate(), QString());
        return;
    }
    QCOMPARE(accepted.at(0).at(0).toString(), QStringLiteral("Flash"));
    QCOMPARE(accepted.at(0).at(1).toString(), window.predicate());
    QVERIFY(!window.AddOrEdit());
    if (byKey)
        QVERIFY2(!window.predicate().contains(QStringLiteral(" AND ")), qPrintable(window.predicate()));
    else
        QCOMPARE(window.predicate(), QStringLiteral("(Type MATCHES[CD] 'swf') OR (Rating > 5)"));
}

void TestZBSmartListWindow::runsModallyAndStartsFreshWhenShownAgain()
{
    ZBSmartListWindow window;
    window.setPlayListName(QStringLiteral("Modal"));
    window.setDefaultPredicate();
    bool wasModal = false;
    QTimer::singleShot(0, &window,
                       [&]
                       {
                           wasModal = QApplication::activeModalWidget() == &window;
                           QTest::keyClicks(window.ruleRow(0)->textEdit(), QStringLiteral("z"));
                           window.okButton()->click();
                       });
    QCOMPARE(window.exec(), int(QDialog::Accepted));
    QVERIFY(wasModal);
    QCOMPARE(window.predicate(), QStringLiteral("(Name CONTAINS[CD] 'z')"));

    // A refused OK keeps the modal run going until the input is put right.
    window.setDefaultPredicate();
    QVERIFY(choose(window.ruleRow(0)->fieldBox(), Rules::FieldPlayCount));
    int refusals = 0;
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
    QCOMPARE(window.predicate(), QString());
    QCOMPARE(window.ruleRow(0)->row(), Rules::Row({Rules::FieldName, Rules::TextContains, QString()}));
    QCOMPARE(window.rowCount(), 1);
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.nameEdit()));
    QTRY_COMPARE(window.nameEdit()->selectedText(), QStringLiteral("Modal"));
}

void TestZBSmartListWindow::starsByMouse_data()
{
    QTest::addColumn<bool>("rightToLeft");
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("button");
    // A star from 1 to 5, or 0 for the strip before the first star.
    QTest::addColumn<int>("star");
    // Just after the star rather than on it: the gap belongs to the star.
    QTest::addColumn<bool>("gap");
    QTest::addColumn<int>("expected");
    QTest::newRow("a star") << false << 0 << int(Qt::LeftButton) << 3 << false << 3;
    QTest::newRow("a higher star") << false << 3 << int(Qt::LeftButton) << 5 << false << 5;
    QTest::newRow("the gap after a star") << false << 5 << int(Qt::LeftButton) << 2 << true << 2;
    QTest::newRow("the only lit star again") << false << 1 << int(Qt::LeftButton) << 1 << false << 0;
    QTest::newRow("before the first star") << false << 4 << int(Qt::LeftButton) << 0 << false << 0;
    QTest::newRow("another button") << false << 0 << int(Qt::RightButton) << 4 << false << 0;
    QTest::newRow("right to left") << true << 0 << int(Qt::LeftButton) << 2 << false << 2;
    QTest::newRow("right to left, before the first") << true << 3 << int(Qt::LeftButton) << 0 << false << 0;
}

void TestZBSmartListWindow::starsByMouse()
{
    QFETCH(bool, rightToLeft);
    QFETCH(int, start);
    QFETCH(int, button);
    QFETCH(int, star);
    QFETCH(bool, gap);
    QFETCH(int, expected);

    ZBStarRatingEditor stars;
    if (rightToLeft)
        stars.setLayoutDirection(Qt::RightToLeft);
    stars.resize(stars.sizeHint());
    stars.show();
    stars.setRating(start);
    QSignalSpy edited(&stars, &ZBStarRatingEditor::ratingEdited);
    QPoint at = star > 0 ? starCentre(&stars, star) : QPoint(rightToLeft ? stars.width() - 2 : 1, stars.height() / 2);
    if (gap)
        at = QPoint(stars.starRect(star).right() + 2, stars.height() / 2);
    QTest::mouseClick(&stars, Qt::MouseButton(button), {}, at);
    QCOMPARE(stars.rating(), expected);
    QCOMPARE(edited.count(), expected == start ? 0 : 1);
}

void TestZBSmartListWindow::starsByKeyboard_data()
{
    QTest::addColumn<bool>("rightToLeft");
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<int>("expected");
    // Keys the stars leave to the window (Return is OK, Tab moves on).
    QTest::addColumn<bool>("passedOn");
    const int none = Qt::NoModifier;
    QTest::newRow("right") << false << 0 << int(Qt::Key_Right) << none << 1 << false;
    QTest::newRow("right at the top") << false << 5 << int(Qt::Key_Right) << none << 5 << false;
    QTest::newRow("left") << false << 5 << int(Qt::Key_Left) << none << 4 << false;
    QTest::newRow("left at the bottom") << false << 0 << int(Qt::Key_Left) << none << 0 << false;
    QTest::newRow("down") << false << 4 << int(Qt::Key_Down) << none << 3 << false;
    QTest::newRow("up") << false << 3 << int(Qt::Key_Up) << none << 4 << false;
    QTest::newRow("minus") << false << 4 << int(Qt::Key_Minus) << none << 3 << false;
    QTest::newRow("plus") << false << 3 << int(Qt::Key_Plus) << none << 4 << false;
    QTest::newRow("home") << false << 4 << int(Qt::Key_Home) << none << 0 << false;
    QTest::newRow("end") << false << 2 << int(Qt::Key_End) << none << 5 << false;
    QTest::newRow("digit") << false << 0 << int(Qt::Key_2) << none << 2 << false;
    QTest::newRow("zero") << false << 2 << int(Qt::Key_0) << none << 0 << false;
    QTest::newRow("digit beyond the scale") << false << 1 << int(Qt::Key_9) << none << 1 << true;
    QTest::newRow("digit with Ctrl") << false << 1 << int(Qt::Key_3) << int(Qt::ControlModifier) << 1 << true;
    QTest::newRow("letter") << false << 1 << int(Qt::Key_A) << none << 1 << true;
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape, Qt::Key_Tab})
        QTest::newRow(qPrintable(QKeySequence(key).toString())) << false << 1 << int(key) << none << 1 << true;
    QTest::newRow("left, right to left") << true << 0 << int(Qt::Key_Left) << none << 1 << false;
    QTest::newRow("right, right to left") << true << 1 << int(Qt::Key_Right) << none << 0 << false;
}

void TestZBSmartListWindow::starsByKeyboard()
{
    QFETCH(bool, rightToLeft);
    QFETCH(int, start);
    QFETCH(int, key);
    QFETCH(int, modifiers);
    QFETCH(int, expected);
    QFETCH(bool, passedOn);

    ZBStarRatingEditor stars;
    QVERIFY(stars.focusPolicy() & Qt::TabFocus);
    if (rightToLeft)
        stars.setLayoutDirection(Qt::RightToLeft);
    stars.setRating(start);
    QSignalSpy edited(&stars, &ZBStarRatingEditor::ratingEdited);
    QKeyEvent press(QEvent::KeyPress, key, Qt::KeyboardModifiers(modifiers));
    QApplication::sendEvent(&stars, &press);
    QCOMPARE(press.isAccepted(), !passedOn);
    QCOMPARE(stars.rating(), expected);
    QCOMPARE(edited.count(), expected == start ? 0 : 1);
}

void TestZBSmartListWindow::starsByDraggingAndByProgram()
{
    ZBStarRatingEditor stars;
    stars.show();
    const auto move = [&stars](int star, Qt::MouseButtons buttons)
    {
        QMouseEvent event(QEvent::MouseMove, starCentre(&stars, star), stars.mapToGlobal(starCentre(&stars, star)),
                          Qt::NoButton, buttons, Qt::NoModifier);
        QApplication::sendEvent(&stars, &event);
    };
    QTest::mousePress(&stars, Qt::LeftButton, {}, starCentre(&stars, 1));
    move(4, Qt::LeftButton);
    QCOMPARE(stars.rating(), 4);
    QTest::mouseRelease(&stars, Qt::LeftButton, {}, starCentre(&stars, 4));
    // Moving without a button pressed is only hovering.
    move(2, Qt::NoButton);
    QCOMPARE(stars.rating(), 4);

    // Set by the program: kept within the scale, and no edit of the user's.
    QSignalSpy changed(&stars, &ZBStarRatingEditor::ratingChanged);
    QSignalSpy edited(&stars, &ZBStarRatingEditor::ratingEdited);
    stars.setRating(9);
    QCOMPARE(stars.rating(), ZBStarRatingEditor::MaximumRating);
    stars.setRating(-3);
    QCOMPARE(stars.rating(), 0);
    stars.setRating(0);
    QCOMPARE(changed.count(), 2);
    QCOMPARE(edited.count(), 0);
}

QTEST_MAIN(TestZBSmartListWindow)
#include "tst_zbsmartlistwindow.moc"
