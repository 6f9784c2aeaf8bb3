#pragma once

#include <QApplication>
#include <QTest>

#include "engines/flash/zbflashview.h"

// QTEST_MAIN for tests that create a Flash view: the web engine must be
// prepared before the application object exists.
#define NVK_FLASH_TEST_MAIN(TestClass)                                                                                 \
    int main(int argc, char *argv[])                                                                                   \
    {                                                                                                                  \
        ZBFlashView::prepareApplication();                                                                             \
        QApplication app(argc, argv);                                                                                  \
        app.setAttribute(Qt::AA_Use96Dpi, true);                                                                       \
        TestClass tc;                                                                                                  \
        QTEST_SET_MAIN_SOURCE_PATH                                                                                     \
        return QTest::qExec(&tc, argc, argv);                                                                          \
    }
