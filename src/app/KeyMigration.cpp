#include "app/KeyMigration.h"

#include <QFile>
#include <QSaveFile>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace corvelle {

namespace {

constexpr qint64 mostBytes = 1 << 20; // of a file that a person writes by hand

QString withoutQuotes(QString text)
{
    const auto isQuote = [](QChar c) { return c == u'"' || c == u'\''; };
    while (!text.isEmpty() && isQuote(text.front()))
        text.remove(0, 1);
    while (!text.isEmpty() && isQuote(text.back()))
        text.chop(1);
    return text;
}

} // namespace

KeysFile readKeysFile(const QByteArray& content)
{
    KeysFile result;
    QList<QByteArray>
        rest; // as bytes: the file may hold other things than UTF-8, and they are the person's
    for (const QByteArray& bytes : content.split('\n')) {
        const QString line = QString::fromUtf8(bytes);
        const qsizetype equals = line.indexOf(u'=');
        const QString name = line.left(std::max<qsizetype>(equals, 0)).trimmed();
        if (equals >= 0 && (name == u"ANTHROPIC_API_KEY" || name == u"export ANTHROPIC_API_KEY")) {
            const QString key = withoutQuotes(line.mid(equals + 1).trimmed());
            if (!key.isEmpty()) {
                result.key = key;
                continue;
            }
        }
        rest.append(bytes);
    }
    while (!rest.isEmpty() && QString::fromUtf8(rest.back()).trimmed().isEmpty())
        rest.removeLast();
    if (!rest.isEmpty())
        result.rest = rest.join('\n') + '\n';
    return result;
}

void migrateKey(const QString& path, const std::function<Result<void>(const QString& key)>& save)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > mostBytes)
        return;
    const KeysFile keys = readKeysFile(file.readAll());
    file.close();
    if (keys.key.isEmpty() || !save(keys.key))
        return;
    if (keys.rest.isEmpty()) {
        file.remove();
        return;
    }
    QSaveFile kept(path);
    if (!kept.open(QIODevice::WriteOnly))
        return;
    kept.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    kept.write(keys.rest);
    kept.commit();
}

QString keysFilePath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) +
           u"/Corvelle/keys.env"_s;
}

} // namespace corvelle
