#ifdef QT_WIDGETS_LIB
#include <QApplication>
#else
#include <QGuiApplication>
#endif

#include <gtest/gtest.h>

#include <cstdlib>

// For what is drawn: fonts and windows without a display, the same on a server as on a desktop.
int main(int argc, char** argv)
{
    ::setenv("LC_ALL", "C.UTF-8", 0);
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    testing::InitGoogleTest(&argc, argv);
#ifdef QT_WIDGETS_LIB
    const QApplication app(argc, argv);
#else
    const QGuiApplication app(argc, argv);
#endif
    return RUN_ALL_TESTS();
}
