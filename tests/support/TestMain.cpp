#include <QCoreApplication>

#include <gtest/gtest.h>

#include <cstdlib>

// Tests need neither a display nor a session: a run must give the same result on a server as on a
// desktop.
int main(int argc, char** argv)
{
    ::setenv("LC_ALL", "C.UTF-8", 0);
    testing::InitGoogleTest(&argc, argv);
    const QCoreApplication app(argc, argv);
    return RUN_ALL_TESTS();
}
