#include "platform/Volume.h"

#include "base/Ids.h"
#include "platform/Directory.h"

#include <QDir>

#include <fcntl.h>
#include <unistd.h>

namespace corvelle {

namespace {

// ASCII letters only: which other letters a volume pairs differs from one to the next.
QByteArray inOtherCase(const QByteArray& name)
{
    QByteArray other = name;
    for (char& c : other)
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'))
            c = static_cast<char>(c ^ 0x20);
    return other;
}

bool isSameFile(const QByteArray& path, const QByteArray& otherPath)
{
    const auto facts = fileFacts(path);
    const auto other = fileFacts(otherPath);
    return facts && other && facts->identity == other->identity && facts->device == other->device;
}

// The first name in the folder that satisfies the question; empty when none does.
template<class Question>
QByteArray firstName(const QByteArray& folder, Question question)
{
    Result<Directory> directory = Directory::open(folder);
    if (!directory)
        return {};
    while (const auto name = directory->nextName())
        if (question(*name))
            return name->toByteArray();
    return {};
}

NameCase caseOfChild(const QByteArray& folder, const QByteArray& name)
{
    const QByteArray other = inOtherCase(name);
    if (!isSameFile(folder + '/' + name, folder + '/' + other))
        return NameCase::Kept;
    // Two names that are listed both are two links to one file, on a volume that keeps them apart.
    const QByteArray link =
        firstName(folder, [&](QByteArrayView listed) { return listed == other; });
    return link.isEmpty() ? NameCase::Ignored : NameCase::Kept;
}

bool hasLetter(QByteArrayView name)
{
    const QByteArray bytes = name.toByteArray();
    return inOtherCase(bytes) != bytes;
}

} // namespace

NameCase probeNameCase(const QString& folder)
{
    const QByteArray path = folder.toUtf8();
    const QByteArray name = "case-" + newID().toUtf8();
    const QByteArray file = path + '/' + name;
    const int fd =
        ::open(file.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0)
        return NameCase::Kept;
    ::close(fd);
    const NameCase answer = caseOfChild(path, name);
    ::unlink(file.constData());
    return answer;
}

NameCase lookUpNameCase(const QString& folder)
{
    const QString clean = QDir::cleanPath(folder);
    const QByteArray path = clean.toUtf8();
    const QByteArray name = firstName(path, hasLetter);
    if (!name.isEmpty())
        return caseOfChild(path, name);

    // The folder's own name lies in its parent, which tells about the same volume only if both are
    // on it.
    const QByteArray parent = parentPath(clean).toUtf8();
    const auto facts = fileFacts(path);
    const auto parentFacts = fileFacts(parent.isEmpty() ? QByteArray("/") : parent);
    const QByteArray own = lastComponent(clean).toUtf8();
    if (!facts || !parentFacts || facts->device != parentFacts->device || !hasLetter(own))
        return NameCase::Kept;
    return caseOfChild(parent, own);
}

} // namespace corvelle
