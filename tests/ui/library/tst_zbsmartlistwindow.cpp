#include <QApplication>
#include <QCalendarWidget>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
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

// What the row's visible value editor shows, whatever its kind.
QString shownValue(const ZBSmartListRuleRow *row)
{
    QWidget *editor = row->valueEditor();
    if (editor == row->textEdit())
        return row->textEdit()->text();
    if (editor == row->typeBox())
        return row->typeBox()->currentText();
    if (editor == row->numberEdit())
        return row->numberEdit()->text();
    if (editor == row->ratingEditor())
        return QString::number(row->ratingEditor()->rating());
    if (editor == row->dateEdit())
        return row->dateEdit()->text();
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
} // namespace

class TestZBSmartListWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void defaultRowIsNameContainsNothing();
    void textRowsToPredicate_data();
    void textRowsToPredicate();
    void typeRowOffersMediaTypesWithoutCompleting();
    void numberRowToPredicate_data();
    void numberRowToPredicate();
    void ratingRowByMouse();
    void dateRowTypedAsYearMonthDay();
    void dateRowFromCalendar();
    void mixedKindsEachInTheirForm();

    void fillRulesShowsEachKind_data();
    void fillRulesShowsEachKind();
    void fillRulesKeepsWhatTheEditorsCannotShow();
    void fillRulesRefusesOtherTextsAndKeepsTheRows();
    void matchAllOrAny();

    void addingAndRemovingRows();
    void rowsByKeyboard();
    void addRowRefusesAMismatchedOperator();
    void changingTheFieldKeepsEachEditorsValue();

    void invalidNumbersAreRefused_data();
    void invalidNumbersAreRefused();
    void invalidDatesAreRefused_data();
    void invalidDatesAreRefused();
    void invalidPatternIsRefusedOnlyForIs();
    void blankNameIsRefused();
    void messageGoesWhenTheInputChanges();

    void okStoresThePredicateAndClears();
    void cancelStoresNothing();
    void closingTheWindowCancels();
    void showingAgainStartsFresh();
    void runsModallyWithExec();
    void returnIsOkAndEscapeIsCancel_data();
    void returnIsOkAndEscapeIsCancel();
    void tabFollowsTheRowsOnScreen();

    void starsByMouse();
    void starsByDragging();
    void starsByKeyboard();
    void starsLeaveOtherKeysToTheWindow();
    void starsMirroredRightToLeft();
    void starsSetRatingClampsAndIsNoEdit();

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

void TestZBSmartListWindow::defaultRowIsNameContainsNothing()
{
    ZBSmartListWindow window;
    window.setMatchAll(false);
    window.setDefaultPredicate();
    QCOMPARE(window.rowCount(), 1);
    ZBSmartListRuleRow *row = window.ruleRow(0);
    QCOMPARE(row->field(), int(Rules::FieldName));
    QCOMPARE(row->op(), int(Rules::TextContains));
    QCOMPARE(row->fieldBox()->currentText(), localized("columnTitleName"));
    QCOMPARE(row->operatorBox()->currentText(), localized("SmartListWindow_Contains"));
    QVERIFY(window.matchAll());

    QTest::keyClicks(row->textEdit(), QStringLiteral("abc"));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Name CONTAINS[CD] 'abc')"));
}

void TestZBSmartListWindow::textRowsToPredicate_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<int>("op");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("expected");

    QTest::newRow("name contains") << int(Rules::FieldName) << int(Rules::TextContains) << "abc"
                                   << "(Name CONTAINS[CD] 'abc')";
    QTest::newRow("path begins with") << int(Rules::FieldPath) << int(Rules::TextBeginsWith) << "/media/films"
                                      << "(Path BEGINSWITH[CD] '/media/films')";
    QTest::newRow("URL ends with") << int(Rules::FieldURL) << int(Rules::TextEndsWith) << ".flv"
                                   << "(URL ENDSWITH[CD] '.flv')";
    QTest::newRow("name is, quoted") << int(Rules::FieldName) << int(Rules::TextEquals) << "it's"
                                     << "(Name MATCHES[CD] 'it\\'s')";
    QTest::newRow("logical words") << int(Rules::FieldName) << int(Rules::TextContains) << "rock AND roll"
                                   << "(Name CONTAINS[CD] 'rock and roll')";
}

void TestZBSmartListWindow::textRowsToPredicate()
{
    QFETCH(int, field);
    QFETCH(int, op);
    QFETCH(QString, typed);
    QFETCH(QString, expected);

    ZBSmartListWindow window;
    window.setDefaultPredicate();
    ZBSmartListRuleRow *row = window.ruleRow(0);
    QVERIFY(choose(row->fieldBox(), field));
    QVERIFY(choose(row->operatorBox(), op));
    QCOMPARE(row->valueEditor(), static_cast<QWidget *>(row->textEdit()));
    QTest::keyClicks(row->textEdit(), typed);
    QCOMPARE(window.generatePredicate(), expected);
}

void TestZBSmartListWindow::typeRowOffersMediaTypesWithoutCompleting()
{
    ZBSmartListWindow window;
    window.setDefaultPredicate();
    showAndActivate(window);
    ZBSmartListRuleRow *row = window.ruleRow(0);
    QVERIFY(choose(row->fieldBox(), Rules::FieldType));
    QCOMPARE(row->valueEditor(), static_cast<QWidget *>(row->typeBox()));
    QVERIFY(row->typeBox()->isVisible());
    QVERIFY(!row->textEdit()->isVisible());

    QStringList offered;
    for (int i = 0; i < row->typeBox()->count(); ++i)
        offered << row->typeBox()->itemText(i);
    QVERIFY(offered.contains(QStringLiteral("swf")));
    QVERIFY(offered.contains(QStringLiteral("flv")));
    QVERIFY(offered.contains(QStringLiteral("exe")));
    for (const QString &type : offered)
        QVERIFY2(!type.startsWith(u'\''), qPrintable(type));

    QVERIFY(choose(row->operatorBox(), Rules::TextEquals));
    row->typeBox()->setCurrentIndex(row->typeBox()->findText(QStringLiteral("swf")));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Type MATCHES[CD] 'swf')"));

    // A typed prefix stays as typed: "fl" must not become "flv". Only
    // a focused field completes, hence the focus.
    QVERIFY(choose(row->operatorBox(), Rules::TextBeginsWith));
    row->typeBox()->setFocus();
    QTRY_VERIFY(row->typeBox()->hasFocus());
    replaceText(row->typeBox()->lineEdit(), QStringLiteral("fl"));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Type BEGINSWITH[CD] 'fl')"));
}

void TestZBSmartListWindow::numberRowToPredicate_data()
{
    QTest::addColumn<int>("op");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("expected");

    QTest::newRow("less") << int(Rules::NumberLess) << "3"
                          << "(PlayCount < 3)";
    QTest::newRow("greater, blanks dropped") << int(Rules::NumberGreater) << " 12 "
                                             << "(PlayCount > 12)";
    QTest::newRow("is") << int(Rules::NumberIs) << "0"
                        << "(PlayCount == 0)";
}

void TestZBSmartListWindow::numberRowToPredicate()
{
    QFETCH(int, op);
    QFETCH(QString, typed);
    QFETCH(QString, expected);

    ZBSmartListWindow window;
    window.setDefaultPredicate();
    ZBSmartListRuleRow *row = window.ruleRow(0);
    QVERIFY(choose(row->fieldBox(), Rules::FieldPlayCount));
    QCOMPARE(row->valueEditor(), static_cast<QWidget *>(row->numberEdit()));
    QVERIFY(choose(row->operatorBox(), op));
    QCOMPARE(row->operatorBox()->count(), int(Rules::operatorTags(Rules::ValueKind::Number).size()));
    QTest::keyClicks(row->numberEdit(), typed);
    QCOMPARE(window.generatePredicate(), expected);
}

void TestZBSmartListWindow::ratingRowByMouse()
{
    ZBSmartListWindow window;
    window.setDefaultPredicate();
    window.show();
    ZBSmartListRuleRow *row = window.ruleRow(0);
    QVERIFY(choose(row->fieldBox(), Rules::FieldRating));
    QVERIFY(choose(row->operatorBox(), Rules::NumberGreater));
    QCOMPARE(row->valueEditor(), static_cast<QWidget *>(row->ratingEditor()));
    QVERIFY(row->ratingEditor()->isVisible());
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Rating > 0)"));

    QTest::mouseClick(row->ratingEditor(), Qt::LeftButton, {}, starCentre(row->ratingEditor(), 4));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Rating > 4)"));
    QTest::mouseClick(row->ratingEditor(), Qt::LeftButton, {}, starCentre(row->ratingEditor(), 2));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Rating > 2)"));
}

void TestZBSmartListWindow::dateRowTypedAsYearMonthDay()
{
    ZBSmartListWindow window;
    window.setDefaultPredicate();
    ZBSmartListRuleRow *row = window.ruleRow(0);
    QVERIFY(choose(row->fieldBox(), Rules::FieldAdded));
    QCOMPARE(row->valueEditor(), static_cast<QWidget *>(row->dateEdit()));
    QCOMPARE(row->operatorBox()->currentText(), localized("SmartListWindow_Early"));
    // A new date rule starts at today, shown the way it is typed.
    QCOMPARE(row->dateEdit()->text(), QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd")));

    QVERIFY(choose(row->operatorBox(), Rules::DateLater));
    replaceText(row->dateEdit(), QStringLiteral("2024-03-05"));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Added > %1)").arg(dateLiteral(QDate(2024, 3, 5))));

    QVERIFY(choose(row->fieldBox(), Rules::FieldLastPlayed));
    QVERIFY(choose(row->operatorBox(), Rules::DateIs));
    QCOMPARE(row->operatorBox()->currentText(), localized("SmartListWindow_On"));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(LastPlayed == %1)").arg(dateLiteral(QDate(2024, 3, 5))));
}

void TestZBSmartListWindow::dateRowFromCalendar()
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
    // The calendar opens on the typed day, with the keyboard in it.
    QCOMPARE(row->calendar()->selectedDate(), QDate(2024, 2, 28));
    QTRY_COMPARE(QApplication::focusWidget(), static_cast<QWidget *>(row->calendar()->focusWidget()));

    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Right);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QTRY_VERIFY(!row->calendar()->isVisible());
    QCOMPARE(row->dateEdit()->text(), QStringLiteral("2024-03-01"));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Added < %1)").arg(dateLiteral(QDate(2024, 3, 1))));
    // Choosing a day closes only the calendar; the window stays open.
    QVERIFY(window.isVisible());
}

void TestZBSmartListWindow::mixedKindsEachInTheirForm()
{
    ZBSmartListWindow window;
    QVERIFY(window.addRow({Rules::FieldName, Rules::TextContains, QStringLiteral("live")}));
    QVERIFY(window.addRow({Rules::FieldPlayCount, Rules::NumberGreater, QStringLiteral("2")}));
    QVERIFY(window.addRow({Rules::FieldRating, Rules::NumberIs, QStringLiteral("5")}));
    QVERIFY(window.addRow({Rules::FieldAdded, Rules::DateEarlier, QDate(2020, 1, 31)}));
    QVERIFY(window.addRow({Rules::FieldType, Rules::TextEquals, QStringLiteral("swf")}));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Name CONTAINS[CD] 'live') AND (PlayCount > 2) AND "
                                                        "(Rating == 5) AND (Added < %1) AND (Type MATCHES[CD] 'swf')")
                                             .arg(dateLiteral(QDate(2020, 1, 31))));
    // The window and the rule logic agree on every row.
    Rules rules;
    QVERIFY(rules.fillRules(window.generatePredicate()));
    QCOMPARE(rules.rows(), window.rules().rows());
}

void TestZBSmartListWindow::fillRulesShowsEachKind_data()
{
    QTest::addColumn<QString>("request");
    QTest::addColumn<int>("field");
    QTest::addColumn<int>("op");
    QTest::addColumn<QString>("fieldTitleKey");
    QTest::addColumn<QString>("shown");

    QTest::newRow("text") << "(Path ENDSWITH[CD] '.mov')" << int(Rules::FieldPath) << int(Rules::TextEndsWith)
                          << "columnTitlePath"
                          << ".mov";
    QTest::newRow("type") << "(Type MATCHES[CD] 'rm|rv')" << int(Rules::FieldType) << int(Rules::TextEquals)
                          << "columnTitleType"
                          << "rm|rv";
    QTest::newRow("number") << "(PlayCount == 12)" << int(Rules::FieldPlayCount) << int(Rules::NumberIs)
                            << "columnTitlePlayCount"
                            << "12";
    QTest::newRow("rating") << "(Rating < 3)" << int(Rules::FieldRating) << int(Rules::NumberLess)
                            << "columnTitleRating"
                            << "3";
    QTest::newRow("date") << QStringLiteral("(LastPlayed > %1)").arg(dateLiteral(QDate(2023, 12, 31)))
                          << int(Rules::FieldLastPlayed) << int(Rules::DateLater) << "columnTitleLastPlayed"
                          << "2023-12-31";
}

void TestZBSmartListWindow::fillRulesShowsEachKind()
{
    QFETCH(QString, request);
    QFETCH(int, field);
    QFETCH(int, op);
    QFETCH(QString, fieldTitleKey);
    QFETCH(QString, shown);

    ZBSmartListWindow window;
    window.setDefaultPredicate();
    window.show();
    QVERIFY2(window.fillRules(request), qPrintable(window.lastError()));
    QCOMPARE(window.rowCount(), 1);
    ZBSmartListRuleRow *row = window.ruleRow(0);
    QCOMPARE(row->field(), field);
    QCOMPARE(row->op(), op);
    QCOMPARE(row->fieldBox()->currentText(), ZBLocalizer::localizedStringForKey(fieldTitleKey));
    QCOMPARE(row->operatorBox()->currentText(), ZBLocalizer::localizedStringForKey(Rules::operatorTitleKey(op)));
    QCOMPARE(row->operatorBox()->count(), int(Rules::operatorTags(Rules::fieldKind(field)).size()));
    QVERIFY(row->valueEditor()->isVisible());
    QCOMPARE(shownValue(row), shown);
    // Nothing changed, so the same text comes back.
    QCOMPARE(window.generatePredicate(), request);
}

void TestZBSmartListWindow::fillRulesKeepsWhatTheEditorsCannotShow()
{
    ZBSmartListWindow window;
    const QDateTime afternoon(QDate(2022, 6, 1), QTime(13, 45, 10));
    const QString request = QStringLiteral("(Rating > 2.5) AND (Added > %1)").arg(ZBPredicate::dateLiteral(afternoon));
    QVERIFY2(window.fillRules(request), qPrintable(window.lastError()));
    ZBSmartListRuleRow *rating = window.ruleRow(0);
    ZBSmartListRuleRow *added = window.ruleRow(1);
    QCOMPARE(rating->ratingEditor()->rating(), 3);
    QCOMPARE(added->dateEdit()->text(), QStringLiteral("2022-06-01"));
    QCOMPARE(window.generatePredicate(), request);

    // Once the user picks a rating or a day, that is what counts.
    window.show();
    QTest::mouseClick(rating->ratingEditor(), Qt::LeftButton, {}, starCentre(rating->ratingEditor(), 4));
    replaceText(added->dateEdit(), QStringLiteral("2022-06-02"));
    QCOMPARE(window.generatePredicate(),
             QStringLiteral("(Rating > 4) AND (Added > %1)").arg(dateLiteral(QDate(2022, 6, 2))));
}

void TestZBSmartListWindow::fillRulesRefusesOtherTextsAndKeepsTheRows()
{
    ZBSmartListWindow window;
    QVERIFY(window.fillRules(QStringLiteral("(Name CONTAINS[CD] 'a') OR (PlayCount > 1)")));
    const QString before = window.generatePredicate();

    const QStringList refused{QStringLiteral("(Name CONTAINS[CD] 'a') AND (Path CONTAINS[CD] 'b') OR (URL == 'c')"),
                              QStringLiteral("(Length > 10)"), QStringLiteral("(Name CONTAINS 'a')"),
                              QStringLiteral("(Name CONTAINS[CD] 'a'")};
    for (const QString &text : refused)
    {
        QVERIFY2(!window.fillRules(text), qPrintable(text));
        QVERIFY(!window.lastError().isEmpty());
        QCOMPARE(window.rowCount(), 2);
        QVERIFY(!window.matchAll());
        QCOMPARE(window.generatePredicate(), before);
    }
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
    QCOMPARE(window.generatePredicate(), anyText);
    // One rule says neither; it is read as "all", as for a new list.
    QVERIFY(window.fillRules(QStringLiteral("(Name CONTAINS[CD] 'a')")));
    QVERIFY(window.matchAll());
}

void TestZBSmartListWindow::addingAndRemovingRows()
{
    ZBSmartListWindow window;
    window.setDefaultPredicate();
    window.show();
    QVERIFY(!window.ruleRow(0)->removeButton()->isEnabled());

    QTest::keyClicks(window.ruleRow(0)->textEdit(), QStringLiteral("a"));
    QTest::mouseClick(window.ruleRow(0)->addButton(), Qt::LeftButton);
    QCOMPARE(window.rowCount(), 2);
    QVERIFY(window.ruleRow(0)->removeButton()->isEnabled());
    QVERIFY(window.ruleRow(1)->removeButton()->isEnabled());
    QVERIFY(window.ruleRow(1)->isVisible());
    QTest::keyClicks(window.ruleRow(1)->textEdit(), QStringLiteral("c"));

    // "+" puts the new rule right below its own row, not at the end.
    QTest::mouseClick(window.ruleRow(0)->addButton(), Qt::LeftButton);
    QCOMPARE(window.rowCount(), 3);
    QCOMPARE(window.ruleRow(1)->row().field, int(Rules::defaultField()));
    QCOMPARE(window.ruleRow(1)->row().op, int(Rules::defaultOperator()));
    QCOMPARE(shownValue(window.ruleRow(1)), QString());
    QTest::keyClicks(window.ruleRow(1)->textEdit(), QStringLiteral("b"));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Name CONTAINS[CD] 'a') AND (Name CONTAINS[CD] 'b') AND "
                                                        "(Name CONTAINS[CD] 'c')"));

    ZBSmartListRuleRow *middle = window.ruleRow(1);
    QTest::mouseClick(middle->removeButton(), Qt::LeftButton);
    QCOMPARE(window.rowCount(), 2);
    QVERIFY(!middle->isVisible());
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Name CONTAINS[CD] 'a') AND (Name CONTAINS[CD] 'c')"));

    QTest::mouseClick(window.ruleRow(0)->removeButton(), Qt::LeftButton);
    QCOMPARE(window.rowCount(), 1);
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Name CONTAINS[CD] 'c')"));
    QVERIFY(!window.ruleRow(0)->removeButton()->isEnabled());

    window.insertEmptyRow(0);
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Name CONTAINS[CD] '') AND (Name CONTAINS[CD] 'c')"));
    QVERIFY(window.removeRow(1));
    QVERIFY(!window.removeRow(1));
    QCOMPARE(window.rowCount(), 1);
    window.removeAllRows();
    QCOMPARE(window.rowCount(), 0);
    QCOMPARE(window.generatePredicate(), QString());
}

void TestZBSmartListWindow::rowsByKeyboard()
{
    ZBSmartListWindow window;
    window.setPlayListName(QStringLiteral("Keys"));
    QVERIFY(window.addRow({Rules::FieldName, Rules::TextContains, QStringLiteral("a")}));
    QVERIFY(window.addRow({Rules::FieldName, Rules::TextContains, QStringLiteral("b")}));
    showAndActivate(window);

    // Space on a focused "+" adds below and carries the focus into the new
    // rule, so the keyboard user goes on from there.
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

    // Space on "-" removes that rule; the focus goes to the one now in its
    // place.
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.ruleRow(1)->removeButton()));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    QCOMPARE(window.rowCount(), 2);
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.ruleRow(1)->fieldBox()));
    QCOMPARE(shownValue(window.ruleRow(1)), QStringLiteral("b"));
    // Removing the last rule leaves the focus on the one above.
    window.ruleRow(1)->removeButton()->setFocus();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    QCOMPARE(window.rowCount(), 1);
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.ruleRow(0)->fieldBox()));
    QVERIFY(window.isVisible());
}

void TestZBSmartListWindow::addRowRefusesAMismatchedOperator()
{
    ZBSmartListWindow window;
    window.setDefaultPredicate();
    QVERIFY(!window.addRow({Rules::FieldName, Rules::NumberLess, QStringLiteral("3")}));
    QVERIFY(!window.lastError().isEmpty());
    QVERIFY(!window.addRow({Rules::FieldAdded, Rules::DateLater, QStringLiteral("yesterday")}));
    QCOMPARE(window.rowCount(), 1);
    QVERIFY(window.addRow({Rules::FieldAdded, Rules::DateLater, QStringLiteral("2024-01-02")}));
    QCOMPARE(window.rowCount(), 2);
    QCOMPARE(shownValue(window.ruleRow(1)), QStringLiteral("2024-01-02"));
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
    QCOMPARE(row->op(), int(Rules::NumberLess));
    QTest::keyClicks(row->numberEdit(), QStringLiteral("9"));
    QVERIFY(choose(row->fieldBox(), Rules::FieldRating));
    QCOMPARE(row->op(), int(Rules::NumberLess));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Rating < 0)"));

    QVERIFY(choose(row->fieldBox(), Rules::FieldName));
    QCOMPARE(row->op(), int(Rules::TextEquals));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(Name MATCHES[CD] 'abc')"));
    QVERIFY(choose(row->fieldBox(), Rules::FieldPlayCount));
    QCOMPARE(window.generatePredicate(), QStringLiteral("(PlayCount < 9)"));
}

void TestZBSmartListWindow::invalidNumbersAreRefused_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("accepted");

    QTest::newRow("word") << "abc" << false;
    QTest::newRow("nothing") << "" << false;
    QTest::newRow("two numbers") << "3 4" << false;
    QTest::newRow("two points") << "1.2.3" << false;
    QTest::newRow("a field") << "Rating" << false;
    QTest::newRow("whole") << "7" << true;
    QTest::newRow("negative") << "-2" << true;
    QTest::newRow("fraction") << "2.5" << true;
}

void TestZBSmartListWindow::invalidNumbersAreRefused()
{
    QFETCH(QString, typed);
    QFETCH(bool, accepted);

    ZBSmartListWindow window;
    window.setPlayListName(QStringLiteral("Often played"));
    QVERIFY(window.addRow({Rules::FieldName, Rules::TextContains, QStringLiteral("x")}));
    QVERIFY(window.addRow({Rules::FieldPlayCount, Rules::NumberGreater, QString()}));
    showAndActivate(window);
    QTest::keyClicks(window.ruleRow(1)->numberEdit(), typed);
    QSignalSpy acceptedSpy(&window, &ZBSmartListWindow::smartListAccepted);
    QSignalSpy closeSpy(&window, &ZBSmartListWindow::smartListWindowClose);

    QTest::mouseClick(window.okButton(), Qt::LeftButton);
    if (accepted)
    {
        QVERIFY(!window.isVisible());
        QCOMPARE(acceptedSpy.count(), 1);
        QCOMPARE(window.predicate(), QStringLiteral("(Name CONTAINS[CD] 'x') AND (PlayCount > %1)").arg(typed));
        return;
    }
    QVERIFY(window.isVisible());
    QCOMPARE(window.validationMessage(), localized("SmartListWindow_ErrorNumber").arg(QStringLiteral("2"), typed));
    QVERIFY(window.findChild<QLabel *>(QStringLiteral("messageLabel"))->isVisible());
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.ruleRow(1)->numberEdit()));
    QCOMPARE(acceptedSpy.count(), 0);
    QCOMPARE(closeSpy.count(), 0);
    QCOMPARE(window.predicate(), QString());
    // Nothing typed is lost.
    QCOMPARE(window.rowCount(), 2);
    QCOMPARE(window.ruleRow(1)->numberEdit()->text(), typed);
}

void TestZBSmartListWindow::invalidDatesAreRefused_data()
{
    QTest::addColumn<QString>("typed");

    QTest::newRow("no such day") << "2024-02-30";
    QTest::newRow("other order") << "05.03.2024";
    QTest::newRow("empty") << "";
    QTest::newRow("beyond what a request can hold") << "9000-01-01";
}

void TestZBSmartListWindow::invalidDatesAreRefused()
{
    QFETCH(QString, typed);

    ZBSmartListWindow window;
    window.setPlayListName(QStringLiteral("Recent"));
    QVERIFY(window.addRow({Rules::FieldAdded, Rules::DateLater, QDate(2024, 1, 1)}));
    showAndActivate(window);
    replaceText(window.ruleRow(0)->dateEdit(), typed);

    QTest::mouseClick(window.okButton(), Qt::LeftButton);
    QVERIFY(window.isVisible());
    QCOMPARE(window.validationMessage(),
             localized("SmartListWindow_ErrorDate")
                 .arg(QStringLiteral("1"), typed, QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd"))));
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.ruleRow(0)->dateEdit()));
    QCOMPARE(window.ruleRow(0)->dateEdit()->text(), typed);
}

void TestZBSmartListWindow::invalidPatternIsRefusedOnlyForIs()
{
    ZBSmartListWindow window;
    window.setPlayListName(QStringLiteral("Brackets"));
    QVERIFY(window.addRow({Rules::FieldPath, Rules::TextContains, QStringLiteral("(")}));
    QVERIFY(window.addRow({Rules::FieldName, Rules::TextEquals, QStringLiteral("a(")}));
    showAndActivate(window);

    window.buttonOkClick();
    QVERIFY(window.isVisible());
    QCOMPARE(window.validationMessage(),
             localized("SmartListWindow_ErrorPattern")
                 .arg(QStringLiteral("2"), QStringLiteral("a("), localized("SmartListWindow_Equals")));
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.ruleRow(1)->textEdit()));

    // The same value is plain text for "contains".
    QVERIFY(choose(window.ruleRow(1)->operatorBox(), Rules::TextContains));
    window.buttonOkClick();
    QVERIFY(!window.isVisible());
    QCOMPARE(window.predicate(), QStringLiteral("(Path CONTAINS[CD] '(') AND (Name CONTAINS[CD] 'a(')"));
}

void TestZBSmartListWindow::blankNameIsRefused()
{
    ZBSmartListWindow window;
    window.setPlayListName(QStringLiteral("   "));
    window.setDefaultPredicate();
    showAndActivate(window);
    window.ruleRow(0)->textEdit()->setFocus();
    QTest::mouseClick(window.okButton(), Qt::LeftButton);
    QVERIFY(window.isVisible());
    QCOMPARE(window.validationMessage(), localized("SmartListWindow_ErrorName"));
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.nameEdit()));

    QTest::keyClicks(window.nameEdit(), QStringLiteral("Named"));
    QTest::mouseClick(window.okButton(), Qt::LeftButton);
    QVERIFY(!window.isVisible());
    QCOMPARE(window.playListName(), QStringLiteral("Named"));
}

void TestZBSmartListWindow::messageGoesWhenTheInputChanges()
{
    ZBSmartListWindow window;
    window.setPlayListName(QStringLiteral("Plays"));
    QVERIFY(window.addRow({Rules::FieldPlayCount, Rules::NumberIs, QStringLiteral("x")}));
    showAndActivate(window);
    auto *label = window.findChild<QLabel *>(QStringLiteral("messageLabel"));
    QVERIFY(label);
    QVERIFY(!label->isVisible());

    window.buttonOkClick();
    QVERIFY(label->isVisible());
    QCOMPARE(label->text(), window.validationMessage());
    QVERIFY(!window.validationMessage().isEmpty());

    QTest::keyClick(window.ruleRow(0)->numberEdit(), Qt::Key_Backspace);
    QCOMPARE(window.validationMessage(), QString());
    QVERIFY(!label->isVisible());
}

void TestZBSmartListWindow::okStoresThePredicateAndClears()
{
    ZBSmartListWindow window;
    window.setAddOrEdit(false);
    window.setPlayListName(QStringLiteral("Flash"));
    QVERIFY(window.fillRules(QStringLiteral("(Type MATCHES[CD] 'swf') OR (Rating > 3)")));
    showAndActivate(window);
    QSignalSpy acceptedSpy(&window, &ZBSmartListWindow::smartListAccepted);
    QSignalSpy closeSpy(&window, &ZBSmartListWindow::smartListWindowClose);
    QSignalSpy finishedSpy(&window, &QDialog::finished);

    QTest::mouseClick(window.ruleRow(1)->ratingEditor(), Qt::LeftButton, {},
                      starCentre(window.ruleRow(1)->ratingEditor(), 5));
    QTest::mouseClick(window.okButton(), Qt::LeftButton);

    const QString expected = QStringLiteral("(Type MATCHES[CD] 'swf') OR (Rating > 5)");
    QVERIFY(!window.isVisible());
    QCOMPARE(window.result(), int(QDialog::Accepted));
    QCOMPARE(window.predicate(), expected);
    QCOMPARE(window.playListName(), QStringLiteral("Flash"));
    QVERIFY(!window.AddOrEdit());
    QCOMPARE(window.rowCount(), 0);
    QCOMPARE(acceptedSpy.count(), 1);
    QCOMPARE(acceptedSpy.at(0).at(0).toString(), QStringLiteral("Flash"));
    QCOMPARE(acceptedSpy.at(0).at(1).toString(), expected);
    QCOMPARE(closeSpy.count(), 1);
    QCOMPARE(closeSpy.at(0).at(0).value<ZBSmartListWindow *>(), &window);
    QCOMPARE(finishedSpy.count(), 1);
}

void TestZBSmartListWindow::cancelStoresNothing()
{
    ZBSmartListWindow window;
    window.setPlayListName(QStringLiteral("Kept"));
    QVERIFY(window.fillRules(QStringLiteral("(Name CONTAINS[CD] 'a')")));
    showAndActivate(window);
    QSignalSpy acceptedSpy(&window, &ZBSmartListWindow::smartListAccepted);
    QSignalSpy closeSpy(&window, &ZBSmartListWindow::smartListWindowClose);
    QTest::keyClicks(window.ruleRow(0)->textEdit(), QStringLiteral("bc"));

    QTest::mouseClick(window.cancelButton(), Qt::LeftButton);
    QVERIFY(!window.isVisible());
    QCOMPARE(window.result(), int(QDialog::Rejected));
    QCOMPARE(window.predicate(), QString());
    QCOMPARE(window.rowCount(), 0);
    QCOMPARE(acceptedSpy.count(), 0);
    QCOMPARE(closeSpy.count(), 1);
}

void TestZBSmartListWindow::closingTheWindowCancels()
{
    ZBSmartListWindow window;
    window.setPlayListName(QStringLiteral("Closed"));
    window.setDefaultPredicate();
    showAndActivate(window);
    QSignalSpy acceptedSpy(&window, &ZBSmartListWindow::smartListAccepted);
    QSignalSpy closeSpy(&window, &ZBSmartListWindow::smartListWindowClose);
    QVERIFY(window.close());
    QCOMPARE(window.result(), int(QDialog::Rejected));
    QCOMPARE(window.predicate(), QString());
    QCOMPARE(acceptedSpy.count(), 0);
    QCOMPARE(closeSpy.count(), 1);
}

void TestZBSmartListWindow::showingAgainStartsFresh()
{
    ZBSmartListWindow window;
    window.setPlayListName(QStringLiteral("Again"));
    window.setDefaultPredicate();
    showAndActivate(window);
    window.buttonOkClick();
    QCOMPARE(window.predicate(), QStringLiteral("(Name CONTAINS[CD] '')"));
    QCOMPARE(window.rowCount(), 0);

    // Shown without rows it still offers one, so "+" is there to press.
    showAndActivate(window);
    QCOMPARE(window.predicate(), QString());
    QCOMPARE(window.rowCount(), 1);
    QCOMPARE(window.ruleRow(0)->row(), Rules::Row({Rules::FieldName, Rules::TextContains, QString()}));
    QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(window.nameEdit()));
    QTRY_COMPARE(window.nameEdit()->selectedText(), QStringLiteral("Again"));
}

void TestZBSmartListWindow::runsModallyWithExec()
{
    ZBSmartListWindow window;
    window.setPlayListName(QStringLiteral("Modal"));
    window.setDefaultPredicate();
    bool wasModal = false;
    bool sawRows = false;
    QTimer::singleShot(0, &window,
                       [&]
                       {
                           wasModal = QApplication::activeModalWidget() == &window;
                           sawRows = window.rowCount() == 1;
                           QTest::keyClicks(window.ruleRow(0)->textEdit(), QStringLiteral("z"));
                           window.okButton()->click();
                       });
    QCOMPARE(window.exec(), int(QDialog::Accepted));
    QVERIFY(wasModal);
    QVERIFY(sawRows);
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
}

void TestZBSmartListWindow::returnIsOkAndEscapeIsCancel_data()
{
    QTest::addColumn<int>("field");
    QTest::addColumn<QString>("where");

    QTest::newRow("name field") << int(Rules::FieldName) << "name";
    QTest::newRow("all/any") << int(Rules::FieldName) << "match";
    QTest::newRow("field pop-up") << int(Rules::FieldName) << "field";
    QTest::newRow("operator pop-up") << int(Rules::FieldName) << "operator";
    QTest::newRow("text") << int(Rules::FieldName) << "value";
    QTest::newRow("type") << int(Rules::FieldType) << "value";
    QTest::newRow("number") << int(Rules::FieldPlayCount) << "value";
    QTest::newRow("stars") << int(Rules::FieldRating) << "value";
    QTest::newRow("date") << int(Rules::FieldAdded) << "value";
    QTest::newRow("add button") << int(Rules::FieldName) << "add";
}

void TestZBSmartListWindow::returnIsOkAndEscapeIsCancel()
{
    QFETCH(int, field);
    QFETCH(QString, where);

    ZBSmartListWindow window;
    window.setPlayListName(QStringLiteral("Keys"));
    for (Qt::Key key : {Qt::Key_Return, Qt::Key_Escape})
    {
        window.setDefaultPredicate();
        showAndActivate(window);
        ZBSmartListRuleRow *row = window.ruleRow(0);
        QVERIFY(choose(row->fieldBox(), field));
        if (field == Rules::FieldPlayCount)
            row->numberEdit()->setText(QStringLiteral("1"));
        QWidget *target = where == QLatin1String("name")       ? window.nameEdit()
                          : where == QLatin1String("match")    ? window.matchBox()
                          : where == QLatin1String("field")    ? row->fieldBox()
                          : where == QLatin1String("operator") ? row->operatorBox()
                          : where == QLatin1String("add")      ? row->addButton()
                                                               : row->valueEditor();
        target->setFocus();
        QTRY_VERIFY(target->hasFocus());
        QTest::keyClick(QApplication::focusWidget(), key);
        QTRY_VERIFY(!window.isVisible());
        QCOMPARE(window.result(), int(key == Qt::Key_Return ? QDialog::Accepted : QDialog::Rejected));
        QCOMPARE(window.predicate().isEmpty(), key == Qt::Key_Escape);
        // Return on a focused "+" must not have added a row on the way out.
        if (key == Qt::Key_Return)
            QVERIFY(!window.predicate().contains(QStringLiteral(" AND ")));
    }
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
    QCOMPARE(window.rowCount(), 3);
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
    for (int i = 1; i < expected.size() + 1; ++i)
    {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        visited << QApplication::focusWidget();
    }
    // Around once and back to the name.
    QCOMPARE(visited.takeLast(), static_cast<QWidget *>(window.nameEdit()));
    QCOMPARE(visited, expected);
}

void TestZBSmartListWindow::starsByMouse()
{
    ZBStarRatingEditor stars;
    stars.show();
    QSignalSpy edited(&stars, &ZBStarRatingEditor::ratingEdited);

    QTest::mouseClick(&stars, Qt::LeftButton, {}, starCentre(&stars, 3));
    QCOMPARE(stars.rating(), 3);
    QTest::mouseClick(&stars, Qt::LeftButton, {}, starCentre(&stars, 5));
    QCOMPARE(stars.rating(), 5);
    // The gap after a star belongs to it.
    QTest::mouseClick(&stars, Qt::LeftButton, {}, QPoint(stars.starRect(2).right() + 2, stars.height() / 2));
    QCOMPARE(stars.rating(), 2);
    QTest::mouseClick(&stars, Qt::LeftButton, {}, starCentre(&stars, 1));
    QCOMPARE(stars.rating(), 1);
    // Again on the only lit star: unrated.
    QTest::mouseClick(&stars, Qt::LeftButton, {}, starCentre(&stars, 1));
    QCOMPARE(stars.rating(), 0);
    stars.setRating(4);
    QTest::mouseClick(&stars, Qt::LeftButton, {}, QPoint(1, stars.height() / 2));
    QCOMPARE(stars.rating(), 0);
    // Other buttons do nothing.
    QTest::mouseClick(&stars, Qt::RightButton, {}, starCentre(&stars, 4));
    QCOMPARE(stars.rating(), 0);

    QCOMPARE(edited.count(), 6);
    QCOMPARE(edited.at(0).at(0).toInt(), 3);
    QCOMPARE(edited.last().at(0).toInt(), 0);
}

void TestZBSmartListWindow::starsByDragging()
{
    ZBStarRatingEditor stars;
    stars.show();
    QTest::mousePress(&stars, Qt::LeftButton, {}, starCentre(&stars, 1));
    QCOMPARE(stars.rating(), 1);
    QMouseEvent move(QEvent::MouseMove, starCentre(&stars, 4), stars.mapToGlobal(starCentre(&stars, 4)), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&stars, &move);
    QCOMPARE(stars.rating(), 4);
    QTest::mouseRelease(&stars, Qt::LeftButton, {}, starCentre(&stars, 4));
    QCOMPARE(stars.rating(), 4);

    // Moving without a button pressed is only hovering.
    QMouseEvent hover(QEvent::MouseMove, starCentre(&stars, 2), stars.mapToGlobal(starCentre(&stars, 2)), Qt::NoButton,
                      Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(&stars, &hover);
    QCOMPARE(stars.rating(), 4);
}

void TestZBSmartListWindow::starsByKeyboard()
{
    ZBStarRatingEditor stars;
    QVERIFY(stars.focusPolicy() & Qt::TabFocus);
    QSignalSpy edited(&stars, &ZBStarRatingEditor::ratingEdited);

    QTest::keyClick(&stars, Qt::Key_Right);
    QTest::keyClick(&stars, Qt::Key_Right);
    QCOMPARE(stars.rating(), 2);
    QTest::keyClick(&stars, Qt::Key_End);
    QCOMPARE(stars.rating(), ZBStarRatingEditor::MaximumRating);
    const int editsAtTop = edited.count();
    QTest::keyClick(&stars, Qt::Key_Right);
    QCOMPARE(stars.rating(), ZBStarRatingEditor::MaximumRating);
    QCOMPARE(edited.count(), editsAtTop);
    QTest::keyClick(&stars, Qt::Key_Left);
    QCOMPARE(stars.rating(), 4);
    QTest::keyClick(&stars, Qt::Key_Down);
    QCOMPARE(stars.rating(), 3);
    QTest::keyClick(&stars, Qt::Key_Up);
    QCOMPARE(stars.rating(), 4);
    QTest::keyClick(&stars, Qt::Key_Minus);
    QCOMPARE(stars.rating(), 3);
    QTest::keyClick(&stars, Qt::Key_Plus);
    QCOMPARE(stars.rating(), 4);
    QTest::keyClick(&stars, Qt::Key_Home);
    QCOMPARE(stars.rating(), 0);
    QTest::keyClick(&stars, Qt::Key_Left);
    QCOMPARE(stars.rating(), 0);
    QTest::keyClick(&stars, Qt::Key_2);
    QCOMPARE(stars.rating(), 2);
    QTest::keyClick(&stars, Qt::Key_0);
    QCOMPARE(stars.rating(), 0);
    // Beyond the scale: not a rating.
    QTest::keyClick(&stars, Qt::Key_9);
    QCOMPARE(stars.rating(), 0);
}

void TestZBSmartListWindow::starsLeaveOtherKeysToTheWindow()
{
    ZBStarRatingEditor stars;
    for (Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Escape, Qt::Key_Tab, Qt::Key_A, Qt::Key_9})
    {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
        QApplication::sendEvent(&stars, &press);
        QVERIFY2(!press.isAccepted(), qPrintable(QKeySequence(key).toString()));
    }
    QKeyEvent right(QEvent::KeyPress, Qt::Key_Right, Qt::NoModifier);
    QApplication::sendEvent(&stars, &right);
    QVERIFY(right.isAccepted());
    // Shortcuts with digits are not ratings either.
    QKeyEvent ctrlDigit(QEvent::KeyPress, Qt::Key_3, Qt::ControlModifier);
    QApplication::sendEvent(&stars, &ctrlDigit);
    QVERIFY(!ctrlDigit.isAccepted());
    QCOMPARE(stars.rating(), 1);
}

void TestZBSmartListWindow::starsMirroredRightToLeft()
{
    ZBStarRatingEditor stars;
    stars.setLayoutDirection(Qt::RightToLeft);
    stars.resize(stars.sizeHint());
    stars.show();
    QVERIFY(stars.starRect(1).x() > stars.starRect(5).x());
    QTest::mouseClick(&stars, Qt::LeftButton, {}, starCentre(&stars, 2));
    QCOMPARE(stars.rating(), 2);
    QTest::mouseClick(&stars, Qt::LeftButton, {}, QPoint(stars.width() - 2, stars.height() / 2));
    QCOMPARE(stars.rating(), 0);
    QTest::keyClick(&stars, Qt::Key_Left);
    QCOMPARE(stars.rating(), 1);
    QTest::keyClick(&stars, Qt::Key_Right);
    QCOMPARE(stars.rating(), 0);
}

void TestZBSmartListWindow::starsSetRatingClampsAndIsNoEdit()
{
    ZBStarRatingEditor stars;
    QSignalSpy changed(&stars, &ZBStarRatingEditor::ratingChanged);
    QSignalSpy edited(&stars, &ZBStarRatingEditor::ratingEdited);
    stars.setRating(9);
    QCOMPARE(stars.rating(), ZBStarRatingEditor::MaximumRating);
    stars.setRating(-3);
    QCOMPARE(stars.rating(), 0);
    stars.setRating(0);
    QCOMPARE(changed.count(), 2);
    QCOMPARE(edited.count(), 0);
    QCOMPARE(stars.property("rating").toInt(), 0);
}

QTEST_MAIN(TestZBSmartListWindow)
#include "tst_zbsmartlistwindow.moc"
