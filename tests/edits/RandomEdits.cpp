#include "edits/RandomEdits.h"

#include "platform/FileMoves.h"

#include <sqlite3.h>

#include <cerrno>

using namespace corvelle;

namespace {

int faultAfter = -1; // disk steps until one fails
int faultError = 0;
int commitsLeft = -1; // until one fails

int faultyDisk(const char* step, const QByteArray&)
{
    if (faultAfter < 0 || faultAfter-- != 0)
        return 0;
    return faultError == EXDEV && qstrcmp(step, "rename") != 0 ? ENOSPC : faultError;
}

int faultyCommit(void*)
{
    return commitsLeft >= 0 && commitsLeft-- == 0;
}

QSet<QByteArray> contentsBelow(const QString& root)
{
    QSet<QByteArray> found;
    QDirIterator files(
        root, QDir::Files | QDir::Hidden | QDir::NoSymLinks, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (!file.fileName().contains("library.sqlite") && file.open(QIODevice::ReadOnly))
            found.insert(file.readAll());
    }
    return found;
}

} // namespace

std::map<QString, Told> toldTree(const Library& library)
{
    std::map<QString, Told> tree;
    library.tree().eachNode([&](const Node& node, const SeenFile&) {
        tree[node.id] = {node.title, node.parentID, word(node.color), library.isInTrash(node.id)};
    });
    return tree;
}

void PrintTo(const Told& told, std::ostream* out)
{
    *out << told.title.toStdString() << " (" << told.color.toStdString() << ") in "
         << told.parent.toStdString() << (told.inTrash ? ", in the Trash" : "");
}

RandomEdits::~RandomEdits()
{
    injectDiskFault(nullptr);
}

QByteArray RandomEdits::newContent()
{
    QByteArray content = "content " + QByteArray::number(++m_count) + " of " +
                         QByteArray::number(static_cast<quint64>(m_random()));
    m_contents.insert(content);
    return content;
}

QString RandomEdits::anyTitle()
{
    static const char* const titles[] = {"Taxes", "a/b", "..", "report.pdf", "Ω🎉", "old~", "~$x",
        "new.tmp", "Pods", "  spaced  ", "long long long long long long long name", "A", "a",
        "4913", ".hidden", "tail."};
    return QString::fromUtf8(titles[below(std::size(titles))]);
}

QString RandomEdits::anyLive(EditedLibrary& lib, bool folders)
{
    std::vector<QString> ids;
    lib.library.tree().eachNode([&](const Node& node, const SeenFile&) {
        if (!lib.library.isInTrash(node.id) && (!folders || node.kind == NodeKind::Folder))
            ids.push_back(node.id);
    });
    std::sort(ids.begin(), ids.end());
    return ids.empty() || (folders && below(4) == 0)
               ? QString()
               : ids[static_cast<size_t>(below(static_cast<int>(ids.size())))];
}

std::vector<QString> RandomEdits::some(EditedLibrary& lib)
{
    std::vector<QString> ids;
    for (int i = 1 + below(3); i > 0; --i)
        if (const QString id = anyLive(lib, false); !id.isEmpty())
            ids.push_back(id);
    return ids;
}

std::vector<QString> RandomEdits::inTrash(EditedLibrary& lib)
{
    std::vector<QString> ids;
    lib.library.tree().eachNode([&](const Node& node, const SeenFile&) {
        if (node.deletedAt)
            ids.push_back(node.id);
    });
    std::sort(ids.begin(), ids.end());
    if (ids.size() > 2) {
        std::shuffle(ids.begin(), ids.end(), m_random);
        ids.resize(2);
    }
    return ids;
}

// Other programs: a file is written, renamed or deleted without us.
void RandomEdits::meddle(EditedLibrary& lib)
{
    std::vector<QString> files;
    QDirIterator found(lib.library.root() + "/My Space", QDir::Files, QDirIterator::Subdirectories);
    while (found.hasNext())
        files.push_back(found.next());
    std::sort(files.begin(), files.end());
    const QString fresh = lib.library.root() + "/My Space/outside " + QString::number(m_count);
    const QString any = files.empty()
                            ? QString()
                            : files[static_cast<size_t>(below(static_cast<int>(files.size())))];
    switch (any.isEmpty() ? 0 : below(4)) {
    case 0: {
        QFile file(fresh);
        if (file.open(QIODevice::WriteOnly))
            file.write(newContent());
        break;
    }
    case 1:
        QFile::rename(any, fresh + " moved " + QString::number(below(10'000)));
        break;
    case 2: {
        QFile file(any);
        if (file.open(QIODevice::ReadWrite)) {
            m_contents.remove(file.readAll());
            file.resize(0);
            file.write(newContent());
        }
        break;
    }
    default: {
        QFile file(any);
        if (file.open(QIODevice::ReadOnly))
            m_contents.remove(file.readAll());
        file.remove();
    }
    }
}

void RandomEdits::armFaults(EditedLibrary& lib)
{
    static const int errors[] = {ENOSPC, EACCES, EIO, EXDEV, EXDEV};
    faultAfter = below(3) == 0 ? below(4) : -1;
    faultError = errors[below(std::size(errors))];
    commitsLeft = below(3) == 0 ? below(2) : -1;
    injectDiskFault(faultyDisk);
    sqlite3_commit_hook(lib.library.connection().handle(), faultyCommit, nullptr);
}

void RandomEdits::disarm(EditedLibrary& lib)
{
    injectDiskFault(nullptr);
    sqlite3_commit_hook(lib.library.connection().handle(), nullptr, nullptr);
}

void RandomEdits::one(EditedLibrary& lib, const Chances& chances)
{
    if (chances.outside && below(6) == 0) {
        meddle(lib);
        if (below(2) == 0) {
            ASSERT_TRUE(lib.look());
        }
    }
    if (chances.faults)
        armFaults(lib);
    int which = below(12);
    if (which == 11 && !chances.forGood)
        which = 0;
    if (chances.restores && below(4) == 0)
        (void)(below(3) ? lib.undo() : lib.redo());
    else
        edit(lib, which);
    if (which == 9 || which == 10) {
        ASSERT_TRUE(lib.settle());
    }
    disarm(lib);
    lib.done();
}

void RandomEdits::edit(EditedLibrary& lib, int which)
{
    Edits& edits = lib.edits;
    switch (which) {
    case 0:
    case 1:
        lib.folder(anyTitle(), anyLive(lib, true));
        break;
    case 2:
        lib.make(below(2) ? NodeKind::Page : NodeKind::Link, anyTitle(), anyLive(lib, true));
        break;
    case 3:
        edits.rename(anyLive(lib, false), anyTitle());
        break;
    case 4:
        edits.setColor(some(lib), allNodeColors[static_cast<size_t>(below(9))]);
        break;
    case 5:
        if (const QString id = anyLive(lib, false); !id.isEmpty())
            edits.savePositions({{id, QPointF(below(2000), below(2000))}});
        break;
    case 6:
        edits.moveTo(some(lib), anyLive(lib, true), QPointF(below(500), 0));
        break;
    case 7:
        edits.trash(some(lib));
        break;
    case 8:
        edits.restore(inTrash(lib));
        break;
    case 9:
        lib.duplicates.duplicate(some(lib));
        break;
    case 10: {
        const QString name = "in " + QString::number(m_count);
        m_outside.makeFile(name + "/file.txt", newContent());
        const QByteArray content = m_outside.content(name + "/file.txt");
        lib.addFiles.add({m_outside.path(name)}, anyLive(lib, true), {});
        // What stayed outside, because a fault kept it from coming in, is not ours.
        lib.settle();
        if (!contentsBelow(lib.library.root()).contains(content))
            m_contents.remove(content);
        break;
    }
    default: {
        const auto ids = inTrash(lib);
        QSet<QByteArray> before = contentsBelow(lib.library.root());
        edits.deleteForGood(ids);
        lib.settle();
        m_contents.subtract(before.subtract(contentsBelow(lib.library.root())));
    }
    }
}

void RandomEdits::check(const QString& root, const QSet<QByteArray>& contents, const char* stage)
{
    EditedLibrary lib(root);
    ASSERT_TRUE(lib.look()) << stage;
    QString integrity;
    ASSERT_TRUE(lib.library.connection().each(
        "PRAGMA integrity_check", {}, [&](const SQLRow& row) { integrity += row.text(0); }));
    EXPECT_EQ(integrity, "ok") << stage;

    QSet<QByteArray> missing = contents;
    missing.subtract(contentsBelow(root));
    for (const QByteArray& content : missing)
        ADD_FAILURE() << stage << ": lost " << content.toStdString();

    std::map<QString, int> nodes; // live paths
    lib.library.tree().eachNode([&](const Node& node, const SeenFile&) {
        if (node.path.isNull() || node.isLinked() || lib.library.isInTrash(node.id))
            return;
        ++nodes[node.path];
        EXPECT_TRUE(QFileInfo::exists(root + "/" + node.path))
            << stage << ": no file for " << node.path.toStdString();
        const Node* parent = lib.library.node(node.parentID);
        EXPECT_EQ(QFileInfo(node.path).path(), parent ? parent->path : "My Space")
            << stage << ": another parent than its folder";
    });
    QDirIterator found(root + "/My Space", QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot,
        QDirIterator::Subdirectories);
    while (found.hasNext()) {
        const QString path = found.next().mid(root.size() + 1);
        EXPECT_EQ(nodes[path], 1) << stage << ": cards of " << path.toStdString();
    }
}
