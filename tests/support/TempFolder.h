// A real folder under the temporary directory, gone at the end of the test.
#pragma once

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

class TempFolder
{
public:
    TempFolder() { EXPECT_TRUE(m_dir.isValid()); }
    // In another folder: what lies in the temporary one is copied into a library, not linked.
    explicit TempFolder(const QString& parent)
        : m_dir(parent + "/corvelle-test-XXXXXX")
    {
        EXPECT_TRUE(m_dir.isValid());
    }

    // The real path: the temporary directory itself may be a link.
    QString path(const QString& below = {}) const
    {
        const QString root = QDir(m_dir.path()).canonicalPath();
        return below.isEmpty() ? root : root + "/" + below;
    }

    void makeFolder(const QString& below) const { EXPECT_TRUE(QDir().mkpath(path(below))); }

    void makeFile(const QString& below, const QByteArray& content = "words") const
    {
        QDir().mkpath(QFileInfo(path(below)).absolutePath());
        QFile file(path(below));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << file.fileName().toStdString();
        file.write(content);
    }

    QByteArray content(const QString& below) const
    {
        QFile file(path(below));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QTemporaryDir m_dir;
};
