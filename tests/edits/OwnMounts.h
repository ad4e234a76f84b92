// Tests that mount disks run in a process with mounts of its own.
#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>
#include <QProcessEnvironment>

// Runs the disabled tests that the filter names, with `unshare` and these options. They find the
// library's folder in CORVELLE_CHILD_LIBRARY; it must outlive the mounts, which nobody could remove
// it with. False when this system doesn't allow it.
inline bool runWithOwnMounts(const char* options, const QString& filter, const QString& library)
{
    if (QProcess::execute("unshare", {options, "true"}) != 0)
        return false;
    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("CORVELLE_CHILD_LIBRARY", library);
    child.setProcessEnvironment(environment);
    child.setProcessChannelMode(QProcess::ForwardedChannels);
    child.start("unshare", {options, QCoreApplication::applicationFilePath(),
                               "--gtest_filter=" + filter, "--gtest_also_run_disabled_tests"});
    EXPECT_TRUE(child.waitForFinished(60'000));
    EXPECT_EQ(child.exitCode(), 0);
    return true;
}
