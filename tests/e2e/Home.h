// What one person has: a library, and places of their own for everything that a program keeps
// elsewhere.
//
// All of it lies in one temporary folder and is gone at the end of the test.
#pragma once

#include "support/TempFolder.h"

#include <QString>

#include <filesystem>

#include <sys/stat.h>
#include <unistd.h>

class Home
{
public:
    Home()
    {
        for (const char* below : {"run", "config", "data", "home"})
            folder.makeFolder(below);
        ::chmod(QFile::encodeName(path("run")).constData(), 0700);
    }
    // Also takes what is too deep for a path.
    ~Home() { std::filesystem::remove_all(path("library").toStdString()); }

    QString path(const QString& below) const { return folder.path(below); }
    QString library(const QString& below = {}) const
    {
        return path(below.isEmpty() ? "library" : "library/" + below);
    }
    // In the folder of the first space, where the person's files are.
    QString space(const QString& below = {}) const
    {
        return library(below.isEmpty() ? "My Space" : "My Space/" + below);
    }

    void givenFile(const QString& below, const QByteArray& content = "words") const
    {
        folder.makeFile("library/My Space/" + below, content);
    }
    void givenFolder(const QString& below) const { EXPECT_TRUE(QDir().mkpath(space(below))); }
    void givenLink(const QString& below, const QByteArray& target) const
    {
        EXPECT_EQ(::symlink(target.constData(), QFile::encodeName(space(below)).constData()), 0);
    }

    // As a person's own programs do it. Both names are places in the space, or absolute.
    void moves(const QString& from, const QString& to) const
    {
        const auto absolute = [&](const QString& name) {
            return name.startsWith('/') ? name : space(name);
        };
        const int done = ::rename(QFile::encodeName(absolute(from)).constData(),
            QFile::encodeName(absolute(to)).constData());
        EXPECT_EQ(done, 0) << from.toStdString() << " to " << to.toStdString();
    }
    void removes(const QString& below) const
    {
        std::filesystem::remove_all(space(below).toStdString());
    }

    // The choice that the program remembers.
    void remembers(const QString& libraryPath) const
    {
        folder.makeFile("config/Corvelle/Corvelle.conf",
            "[General]\nlibraryPath=" + libraryPath.toUtf8() + "\n");
    }

    TempFolder folder;
};
