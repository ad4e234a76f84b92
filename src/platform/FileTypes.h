#pragma once

#include <QHash>
#include <QString>

namespace corvelle {

// Tells the type of a file by its name, never by its contents. Keeps what it learnt about each
// ending, so that it is fast over many files. One thread at a time.
class FileTypes
{
public:
    // Such as "application/pdf"; "application/octet-stream" for a name that tells nothing.
    QString mimeOf(const QString& fileName);

private:
    QHash<QString, QString> m_byEnding;
};

} // namespace corvelle
