// What holds the parts of an office file together (ECMA-376 Part 2): relationships and content
// types. A package part that is missing or damaged is as good as an empty one.
#pragma once

#include "documents/ZipArchive.h"

#include <QHash>
#include <QString>

#include <vector>

namespace corvelle {

// From one part to another, or to an address outside.
struct Relationship
{
    QString target, type;
    bool operator==(const Relationship&) const = default;
};

class Relationships
{
public:
    Relationships() = default;
    // Of a part; of the package itself for an empty name.
    static Relationships of(const ZipArchive& zip, const QString& part);

    // Null when there is none; of two with one id the later one.
    const Relationship* find(const QString& id) const;
    // The first one whose type ends in "/" and that word; null when there is none.
    const Relationship* firstOfType(QStringView word) const;
    const std::vector<Relationship>& all() const { return m_all; }

private:
    std::vector<Relationship> m_all; // as they stand in the file
    QHash<QString, qsizetype> m_byId;
};

class ContentTypes
{
public:
    static ContentTypes of(const ZipArchive& zip);
    // Of a part without its leading slash; a picture's by its extension when the package doesn't
    // say. Null for neither.
    QString typeOf(const QString& part) const;

private:
    QHash<QString, QString> m_defaults, m_overrides;
};

// The folder of a part, without a slash at its end.
QString folderOf(const QString& part);
// The part that a target of a relationship means, seen from a folder. Never leaves the package.
QString resolvedTarget(const QString& folder, const QString& target);

} // namespace corvelle
